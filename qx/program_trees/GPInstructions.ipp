#pragma once

// Definitions of GPInstructions.h.

#include <qx/foundation/QXCommon.h>
#include <qx/platform/Strings.h>
#include <qx/program_trees/GPInstruction.ipp>
#include <qx/program_trees/GPInstructions.h>
#include <qx/program_trees/QXGPDomainXML.h>

#include <algorithm>
#include <string>

namespace qx::generics {

template <class T>
TQXGPInstructions<T>::TQXGPInstructions(TPersistent* Owner, TItemClass<TQXGPInstruction<T>> ItemClass)
    : TBase(Owner, ItemClass), FEngine(dynamic_cast<IQXGeneticProgramEngine<T>*>(Owner)) {}

// The items die after this part of the set.
template <class T>
TQXGPInstructions<T>::~TQXGPInstructions() {
  for (TQXGPInstruction<T>& Instruction : *this) {
    Instruction.FSet = nullptr;
  }
}

template <class T>
int TQXGPInstructions<T>::IndexOf(std::string_view Name) const {
  const auto* const Found = FindItemName(Name);
  return Found != nullptr ? Found->Index() : -1;
}

template <class T>
TQXGPInstruction<T>* TQXGPInstructions<T>::FindItemName(std::string_view Name) const {
  if (Name.empty()) {
    const auto HasNone = [](const TQXGPInstruction<T>& Instruction) { return Instruction.Name().empty(); };
    const auto Unnamed = std::find_if(this->begin(), this->end(), HasNone);
    return Unnamed != this->end() ? const_cast<TQXGPInstruction<T>*>(&*Unnamed) : nullptr;
  }
  const auto [First, Last] = FIndex.equal_range(Name);
  const auto Found = std::min_element(
      First, Last, [](const auto* Left, const auto* Right) { return Left->Index() < Right->Index(); });
  return Found != Last ? *Found : nullptr;
}

template <class T>
TQXGPInstruction<T>& TQXGPInstructions<T>::GetItemByName(std::string_view Name) const {
  TQXGPInstruction<T>* const Found = FindItemName(Name);
  if (Found == nullptr) {
    throw EGPException(FormatText(SUnknownInstruction, {Name}));
  }
  return *Found;
}

template <class T>
TQXGPInstruction<T>& TQXGPInstructions<T>::Counterpart(const TQXGPInstruction<T>& Foreign) const {
  if (Foreign.Collection() != nullptr && Foreign.Index() < this->Count()) {
    const TQXGPInstruction<T>& AtSamePosition = this->Items(Foreign.Index());
    if (AtSamePosition.Name() == Foreign.Name()) {
      return const_cast<TQXGPInstruction<T>&>(AtSamePosition);
    }
  }
  return GetItemByName(Foreign.Name());
}

template <class T>
void TQXGPInstructions<T>::Move(int From, int To) {
  RequireChangeable("Move");
  TBase::Move(From, To);
}

template <class T>
void TQXGPInstructions<T>::AssignAll(const TPersistent& Source) {
  const auto* const Set = this->template SourceAs<TQXGPInstructions>(Source);
  if (Set == nullptr || Set == this) {
    return;
  }
  RequireChangeable("AssignAll");
  TUpdateScope Update(*this);
  this->Clear();
  for (int I = 0; I < Set->Count(); ++I) { // what hears of the copies may change the source
    TQXGPInstruction<T>& Copy = this->Add();
    Copy.Assign(Set->Items(I));
    Copy.AssignEvents(Set->Items(I));
  }
  Update.End();
}

template <class T>
void TQXGPInstructions<T>::InstructionOperationUpdate(TQXGPInstruction<T>& Instruction) {
  if (FEngine != nullptr) {
    FEngine->InstructionOperationUpdate(Instruction);
  }
}

template <class T>
void TQXGPInstructions<T>::LoadFromXML(const TXMLGPInstructions& Element) {
  const TXMLReadScope Reading(Element);
  const auto Functions = Element.Function();
  for (const TXMLFunctionInstructionType& Function : Functions) {
    static_cast<void>(Function.Arity()); // may be none; then nothing has changed
  }
  RequireChangeable("LoadFromXML");
  TUpdateScope Update(*this);
  const auto Load = [this](const auto& List) {
    for (const auto& Item : List) {
      LoadItemFromXML(Item);
    }
  };
  Load(Functions);
  Load(Element.Variable());
  Load(Element.Constant());
  Load(Element.FloatConstant());
  Load(Element.VariantConstant());
  Update.End();
}

template <class T>
void TQXGPInstructions<T>::LoadItemFromXML(const TXMLInstructionType& Element) {
  TQXGPInstruction<T>* const Known = FindItemName(Element.Name());
  (Known != nullptr ? *Known : this->Add()).LoadFromXML(Element);
}

template <class T>
void TQXGPInstructions<T>::SaveToXML(const TXMLGPInstructions& Element) {
  for (const TQXGPInstruction<T>& Instruction : *this) { // before anything is written
    TXMLFunctionInstructionType::RequireArity(Instruction.DisplayName(), Instruction.Arity());
  }
  for (TQXGPInstruction<T>& Instruction : *this) {
    Instruction.SaveToXML(Element);
  }
}

template <class T>
void TQXGPInstructions<T>::AssignTo(TPersistent& Dest) const {
  auto* const Lines = dynamic_cast<TStrings*>(&Dest);
  if (Lines == nullptr) {
    TBase::AssignTo(Dest);
    return;
  }
  TUpdateScope Update(*Lines);
  Lines->Clear();
  for (int I = 0; I < this->Count(); ++I) {
    // A list may hand out what it refers to for writing.
    auto& Instruction = const_cast<TQXGPInstruction<T>&>(this->Items(I));
    Lines->AddObject(Instruction.DisplayName(), &Instruction);
  }
  Update.End();
}

template <class T>
void TQXGPInstructions<T>::RequireInsertable() const {
  RequireChangeable("Insert");
}

template <class T>
void TQXGPInstructions<T>::RequireRemovable(const char* Call) const {
  RequireChangeable(Call);
}

template <class T>
void TQXGPInstructions<T>::Notify(TCollectionItem& Item, TCollectionNotification Action) {
  TBase::Notify(Item, Action);
  if (FEngine != nullptr) {
    FEngine->InstructionNotify(static_cast<TQXGPInstruction<T>&>(Item), Action);
  }
}

template <class T>
void TQXGPInstructions<T>::Update(TCollectionItem* Item) {
  TBase::Update(Item);
  if (FEngine != nullptr) {
    FEngine->InstructionUpdate(static_cast<TQXGPInstruction<T>*>(Item));
  }
}

template <class T>
std::size_t TQXGPInstructions<T>::THash::operator()(std::string_view Name) const {
  constexpr unsigned char CaseBit = 0x20;
  constexpr std::size_t Multiplier = 0x9e3779b97f4a7c15;
  std::size_t Hash = Name.size();
  for (const char C : Name) { // letters of either case are alike in these bits
    Hash = (Hash ^ (static_cast<unsigned char>(C) | CaseBit)) * Multiplier;
  }
  return Hash ^ Hash >> (sizeof Hash * 4);
}

template <class T>
auto TQXGPInstructions<T>::PlaceInIndex(const TQXGPInstruction<T>& Instruction) const ->
    typename TIndex::const_iterator {
  const auto [First, Last] = FIndex.equal_range(std::string_view(Instruction.Name()));
  return std::find(First, Last, &Instruction);
}

// Raises, and leaves the old name, when the index has no room for one more.
template <class T>
void TQXGPInstructions<T>::Rename(TQXGPInstruction<T>& Instruction, std::string Name) {
  auto Place =
      Instruction.FName.empty() ? typename TIndex::node_type() : FIndex.extract(PlaceInIndex(Instruction));
  Instruction.FName.swap(Name);
  if (!Place.empty() && !Instruction.FName.empty()) {
    FIndex.insert(std::move(Place));
  } else if (!Instruction.FName.empty()) {
    try {
      FIndex.insert(&Instruction);
    } catch (...) {
      Instruction.FName.swap(Name);
      throw;
    }
  }
}

} // namespace qx::generics
