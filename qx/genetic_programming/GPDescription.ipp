#pragma once

// Definitions of GeneticProgramming.h: what it is, for people.

#include <qx/genetic_programming/GeneticProgramming.h>
#include <qx/platform/Text.h>

#include <cmath>
#include <string>

namespace qx::generics {

template <class T>
std::string TQXCustomGeneticProgramming<T>::NameWithComment(const TInstruction& Instruction) {
  const std::string& Comment = Instruction.Comment();
  return Comment.empty() ? Instruction.DisplayName() : Instruction.DisplayName() + " (" + Comment + ")";
}

template <class T>
std::string TQXCustomGeneticProgramming<T>::DescribeMutation() const {
  std::string Text;
  for (std::size_t I = 0; I < FSettings.MutationWeights.size(); ++I) {
    const int Sum = FSettings.MutationWeightSum;
    const double Share = Sum != 0 ? static_cast<double>(FSettings.MutationWeights[I]) / Sum : 0;
    Text += I > 0 ? ", " : "";
    Text += std::string(EnumName(static_cast<TGPMutationMethod>(I))) + "(" + PercentText(Share) + ")";
  }
  return Text;
}

template <class T>
void TQXCustomGeneticProgramming<T>::DescribeInstructions(TStrings& Strings, std::string_view TabStr) const {
  const std::string Tab(TabStr);
  Strings.Add(Tab + "Terminals (" + std::to_string(TerminalsCount()) + ")");
  std::string Names;
  for (const TInstruction* const Terminal : FTerminals) {
    Names += (Names.empty() ? "" : ", ") + NameWithComment(*Terminal);
  }
  Strings.Add(Tab + Tab + Names);
  Strings.Add(Tab + "Functions (" + std::to_string(FunctionsCount()) + ")");
  for (const TInstruction* const Function : FFunctions) {
    Strings.Add(Tab + Tab + NameWithComment(*Function));
  }
}

template <class T>
void TQXCustomGeneticProgramming<T>::Describe(TStrings& Strings, std::string_view TabStr) const {
  const auto Add = [&](std::string_view Label, std::string_view Value) {
    this->AddDescription(Strings, TabStr, Label, Value);
  };
  this->DescribeOperators(Strings, TabStr);
  Add("Mutation Distribution", DescribeMutation());
  Add("Selection Method", EnumName(this->SelectionMethod()));
  Add("Selection Non-terminals Probability", PercentText(FSettings.NonTerminals));
  if (FSettings.BloatStrategy != bsNone) {
    Add("Anti-Bloating Strategy", EnumName(FSettings.BloatStrategy));
    Add("Anti-Bloating Limit", std::to_string(FSettings.BloatLimit));
  }
  DescribeInstructions(Strings, TabStr);
  Strings.Add("Initial Conditions");
  Add("Population", std::to_string(this->InitialPopulation()));
  if (FSettings.InitializationDepth != 0) {
    Add("Initial Tree Depth", "Max of " + std::to_string(FSettings.InitializationDepth));
  } else {
    Strings.Add(std::string(TabStr) + "Initial Tree Depth is based on number of operations");
  }
  Add("Initialization Method", EnumName(FSettings.InitializationMethod));
  this->DescribeTermination(Strings, TabStr);
}

template <class T>
long double TQXCustomGeneticProgramming<T>::SearchSpaceSize(std::uint32_t Level) const {
  auto Size = static_cast<long double>(FFunctions.size());
  for (std::uint32_t Reached = 0; Reached < Level; ++Reached) {
    const long double Arguments = Size + static_cast<long double>(FTerminals.size());
    long double Next = 0;
    for (const TInstruction* const Function : FFunctions) {
      Next += std::pow(Arguments, static_cast<long double>(Function->Arity()));
    }
    if (Next == Size) { // and so at every level above
      break;
    }
    Size = Next;
  }
  return Size;
}

} // namespace qx::generics
