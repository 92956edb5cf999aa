#pragma once

// Definitions of GPExecutor.h.

#include <qx/genetic_programming/GPExecutor.h>
#include <qx/platform/Files.h>

#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>

namespace qx::generics {

template <class T>
void TQXCustomGeneticProgrammingExecutor<T>::SetGPProgram(const TNode& Value) {
  RequireChangeable("SetGPProgram");
  TNodePointer Copy = Value.Clone();
  Copy->BindTo(this->Instructions());
  StoreProgram(std::move(Copy));
}

template <class T>
void TQXCustomGeneticProgrammingExecutor<T>::StoreProgram(TNodePointer Program) {
  FGPProgram = std::move(Program);
  FGPProgramLines.Clear();
}

template <class T>
T TQXCustomGeneticProgrammingExecutor<T>::Execute(TQXGPContext<T>* Context) const {
  struct TExecuting {
    explicit TExecuting(int& Count) : FCount(Count) { ++FCount; }
    ~TExecuting() { --FCount; }
    int& FCount;
  } const Executing(FExecuting);
  return FGPProgram != nullptr ? FGPProgram->Execute(Context) : T();
}

template <class T>
void TQXCustomGeneticProgrammingExecutor<T>::RequireChangeable(const char* Call) const {
  if (FExecuting > 0) {
    throw std::logic_error(std::string(Call) + " is refused while the program of the " + this->ClassName() +
                           " runs");
  }
}

template <class T>
void TQXCustomGeneticProgrammingExecutor<T>::Assign(const TPersistent& Source) {
  const auto* const Executor = this->template SourceAs<TQXCustomGeneticProgrammingExecutor>(Source);
  if (Executor == nullptr) {
    TBase::Assign(Source);
    return;
  }
  if (Executor == this) {
    return;
  }
  RequireChangeable("Assign");
  this->CopyInstructions(*Executor, &TQXGPInstructions<T>::AssignAll);
  if (Executor->FGPProgram != nullptr) {
    SetGPProgram(*Executor->FGPProgram);
  } else {
    StoreProgram(nullptr);
  }
}

// --- Lines and documents -----------------------------------------------------------------------------------

template <class T>
const TStrings& TQXCustomGeneticProgrammingExecutor<T>::GPProgramLines() {
  if (FGPProgramLines.Count() == 0 && FGPProgram != nullptr) {
    GenerateXML();
  }
  return FGPProgramLines;
}

template <class T>
void TQXCustomGeneticProgrammingExecutor<T>::GenerateXML() {
  const TXMLGPDomain Domain = NewGPDomain();
  SaveToXML(Domain);
  std::istringstream Text(Domain.Document().Text());
  for (std::string Line; std::getline(Text, Line);) {
    FGPProgramLines.Add(Line);
  }
}

template <class T>
void TQXCustomGeneticProgrammingExecutor<T>::Parse() {
  TStrings Lines; // a program that is read discards those that it is read from
  Lines.Assign(FGPProgramLines);
  LoadFromXML(GetGPDomain(TXMLDocument::Parse(Lines.Text())));
  FGPProgramLines.Assign(Lines);
}

template <class T>
void TQXCustomGeneticProgrammingExecutor<T>::SaveToXML(const TXMLGPDomainType& Domain) {
  Domain.Clear();
  this->Instructions().SaveToXML(Domain.Instructions());
  if (FGPProgram != nullptr) {
    FGPProgram->SaveToXML(Domain.Population().AddIndividual().DNA());
  }
}

template <class T>
void TQXCustomGeneticProgrammingExecutor<T>::LoadFromXML(const TXMLGPDomainType& Domain) {
  RequireChangeable("LoadFromXML");
  const TXMLReadScope Reading(Domain);
  TLoadScope Load(nullptr);
  this->MergeInstructions(Domain.Instructions(), Load);
  if (this->Instructions().Count() > 0) {
    const auto Individuals = Domain.Population().Individual();
    TNodePointer Program;
    if (Individuals.Count() > 0 && Individuals[0].HasChild("DNA")) {
      Program = this->CreateNode(&this->Instructions()[0]); // by which it finds the others
      Program->LoadFromXML(Individuals[0].DNA());
    }
    StoreProgram(std::move(Program));
  }
  Load.Done();
}

template <class T>
void TQXCustomGeneticProgrammingExecutor<T>::SaveToStream(std::ostream& Stream) {
  const TXMLGeneticProgram Document = NewGeneticProgram();
  SaveToXML(Document);
  Document.Document().Write(Stream);
}

template <class T>
void TQXCustomGeneticProgrammingExecutor<T>::LoadFromStream(std::istream& Stream) {
  LoadFromXML(GetGeneticProgram(TXMLDocument::Read(Stream)));
}

template <class T>
void TQXCustomGeneticProgrammingExecutor<T>::SaveToFile(const std::string& FileName) {
  std::ostringstream Stream;
  SaveToStream(Stream);
  ReplaceFile(FileName, Stream.view());
}

template <class T>
void TQXCustomGeneticProgrammingExecutor<T>::LoadFromFile(const std::string& FileName) {
  LoadFromXML(LoadGeneticProgram(FileName));
}

template <class T>
void TQXCustomGeneticProgrammingExecutor<T>::InstructionNotify(TInstruction& Instruction,
                                                               TCollectionNotification Action) {
  if (Action != cnAdded && FGPProgram != nullptr) {
    FGPProgram->ForEach([&](TNode& Node) {
      if (Node.Instruction() == &Instruction) {
        Node.SetInstruction(nullptr);
      }
    });
  }
}

} // namespace qx::generics
