#pragma once

// Definitions of GeneticProgramming.h: documents, files and streams.

#include <qx/engine/LoadScope.h>
#include <qx/engine/NamedItemsReload.h>
#include <qx/foundation/EnumPropertyText.h>
#include <qx/genetic_programming/GeneticProgramming.h>
#include <qx/platform/Filer.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qx::generics {

// --- Settings document -------------------------------------------------------------------------------------

template <class T>
void TQXCustomGeneticProgramming<T>::SaveToXML(const TXMLGeneticProgram& Document) {
  SaveToXML(static_cast<const TXMLGeneticDocumentType&>(Document));
  const TXMLGPReproductionType Reproduction = Document.Reproduction();
  this->SaveReproduction(Reproduction);
  Reproduction.SetCrossoverMethod(EnumName(FSettings.CrossoverMethod));
  Reproduction.SetInitializationMethod(EnumName(FSettings.InitializationMethod));
  Reproduction.SetInitializationDepth(FSettings.InitializationDepth);
  const auto Weights = Reproduction.MutationWeights();
  for (std::size_t I = 0; I < FSettings.MutationWeights.size(); ++I) {
    Weights.SetWeight(EnumName(static_cast<TGPMutationMethod>(I)), FSettings.MutationWeights[I]);
  }
  Reproduction.SetSelectionNonterminalsProbability(FSettings.NonTerminals);
  Reproduction.SetPointMutationMethod(EnumName(FSettings.PointMutationMethod));
  Reproduction.SetPointMutationProbability(FSettings.PointMutationProbability);
  SaveToXML(Document.Domain());
}

template <class T>
void TQXCustomGeneticProgramming<T>::LoadFromXML(const TXMLGeneticProgram& Document) {
  const TXMLReadScope Reading(Document);
  TLoadScope Load(this);
  LoadFromXML(static_cast<const TXMLGeneticDocumentType&>(Document));
  const TXMLGPReproductionType Reproduction = Document.Reproduction();
  TSettings& S = FSettings;
  S.CrossoverMethod = Load.ValueOr("CrossoverMethod", Reproduction.CrossoverMethod(), S.CrossoverMethod);
  this->LoadReproduction(Reproduction);
  S.InitializationMethod =
      Load.ValueOr("InitializationMethod", Reproduction.InitializationMethod(), S.InitializationMethod);
  this->RequireCount(Reproduction.FindChild("InitializationDepth"), Reproduction.InitializationDepth());
  SetInitializationDepth(Reproduction.InitializationDepth());
  Load.WarnIfMoved("InitializationDepth", Reproduction.InitializationDepth(), S.InitializationDepth);
  const auto Weights = Reproduction.MutationWeights();
  for (std::size_t I = 0; I < S.MutationWeights.size(); ++I) { // past the setters: the sum stays as it is
    const int Weight = Weights.Weight(EnumName(static_cast<TGPMutationMethod>(I)));
    S.MutationWeights[I] = static_cast<std::uint8_t>(Weight);
  }
  S.NonTerminals = Reproduction.SelectionNonterminalsProbability();
  S.PointMutationMethod =
      Load.ValueOr("PointMutationMethod", Reproduction.PointMutationMethod(), S.PointMutationMethod);
  S.PointMutationProbability = Reproduction.PointMutationProbability();
  LoadFromXML(Document.Domain());
  Load.Done();
}

template <class T>
void TQXCustomGeneticProgramming<T>::SaveToStream(std::ostream& Stream) {
  const TXMLGeneticProgram Document = NewGeneticProgram();
  SaveToXML(Document);
  Document.Document().Write(Stream);
}

template <class T>
void TQXCustomGeneticProgramming<T>::LoadFromStream(std::istream& Stream) {
  LoadFromXML(GetGeneticProgram(TXMLDocument::Read(Stream)));
}

template <class T>
void TQXCustomGeneticProgramming<T>::LoadFromFile(const std::string& FileName) {
  LoadFromXML(LoadGeneticProgram(FileName));
}

// --- Domain ------------------------------------------------------------------------------------------------

template <class T>
void TQXCustomGeneticProgramming<T>::SaveToXML(const TXMLGPDomainType& Domain) {
  Domain.Clear();
  SaveToXML(Domain.Instructions());
  if (TIndividual* const Fittest = this->FittestIndividual()) {
    Fittest->SaveToXML(Domain.FittestIndividual());
  }
  this->Population().SaveToXML(Domain.Population());
}

// The instructions come back before the individuals, which they would send away.
template <class T>
void TQXCustomGeneticProgramming<T>::LoadFromXML(const TXMLGPDomainType& Domain) {
  const TXMLReadScope Reading(Domain);
  TLoadScope Load(this);
  this->SetAsideGenerations(Load);
  this->InitializeEmpty();
  LoadFromXML(Domain.Instructions());
  this->Population().LoadFromXML(Domain.Population());
  this->SetPreviousGeneration(this->Population());
  this->SetInitialized();
  Load.Done();
}

template <class T>
void TQXCustomGeneticProgramming<T>::SaveToXML(const TXMLGPInstructions& Instructions) {
  this->Instructions().SaveToXML(Instructions);
}

template <class T>
void TQXCustomGeneticProgramming<T>::LoadFromXML(const TXMLGPInstructions& Instructions) {
  const TXMLReadScope Reading(Instructions);
  this->RequireNoUse("LoadFromXML");
  // What does not read must not get as far as a change, which would send the programs away.
  TQXGPInstructions<T> Trial(nullptr, this->Instructions().ItemClass());
  Trial.Assign(this->Instructions());
  Trial.LoadFromXML(Instructions);
  TLoadScope Load(this);
  const int Unnamed = CountUnnamed();
  this->MergeInstructions(Instructions, Load);
  if (CountUnnamed() > Unnamed) {
    Load.Warn("Instructions: " + std::to_string(CountUnnamed() - Unnamed) +
              " without a name came in addition to those that were there, as by each load: give them names");
  }
  for (const TInstruction* const Instruction : this->InstructionsWithoutHandler()) {
    Load.Warn("Instructions: the function \"" + Instruction->DisplayName() +
              "\" has no handler of OnExecute, so it evaluates to nothing but the default value");
  }
  Load.Done();
}

template <class T>
int TQXCustomGeneticProgramming<T>::CountUnnamed() {
  const TQXGPInstructions<T>& Set = this->Instructions();
  return static_cast<int>(std::count_if(
      Set.begin(), Set.end(), [](const TInstruction& Instruction) { return Instruction.Name().empty(); }));
}

// --- Component stream --------------------------------------------------------------------------------------

template <class T>
bool TQXCustomGeneticProgramming<T>::IsSelectionNonTerminalsProbabilityStored() const {
  return FSettings.NonTerminals != NONTERMINALS_SELECTION_PROBABILITY;
}

template <class T>
bool TQXCustomGeneticProgramming<T>::IsParsimonyCoefficientStored() const {
  return FSettings.ParsimonyCoefficient != DEFAULT_PARSIMONY_COEFFICIENT;
}

template <class T>
bool TQXCustomGeneticProgramming<T>::IsPointMutationProbabilityStored() const {
  return FSettings.PointMutationProbability != TSettings().PointMutationProbability;
}

template <class T>
bool TQXCustomGeneticProgramming<T>::IsTarpeianProbabilityStored() const {
  return FSettings.TarpeianProbability != DEFAULT_TARPEIAN_PROBABILITY;
}

template <class T>
void TQXCustomGeneticProgramming<T>::DefineProperties(TFiler& Filer) {
  using TThis = TQXCustomGeneticProgramming;
  TBase::DefineProperties(Filer);
  const TSettings Defaults;
  const TSettings& S = FSettings;
  const auto Define = [&](std::string_view Name, const auto& Value, const auto& Default, auto Setter) {
    Filer.Property(Name, Value, Value != Default, [&](const auto& Read) { (this->*Setter)(Read); });
  };
  Define("CrossoverMethod", S.CrossoverMethod, Defaults.CrossoverMethod, &TThis::SetCrossoverMethod);
  Filer.Property("InitializationDepth", S.InitializationDepth,
                 S.InitializationDepth != Defaults.InitializationDepth, [&](int Read) {
                   if (!Filer.Exact()) {
                     this->RequireCount(Read);
                   }
                   SetInitializationDepth(Read);
                 });
  Define("InitializationMethod", S.InitializationMethod, Defaults.InitializationMethod,
         &TThis::SetInitializationMethod);
  Define("BuildSizeLimit", S.BuildSizeLimit, Defaults.BuildSizeLimit, &TThis::SetBuildSizeLimit);
  Define("DuplicatesBuildLimit", S.DuplicatesBuildLimit, Defaults.DuplicatesBuildLimit,
         &TThis::SetDuplicatesBuildLimit);
  Define("PointMutationMethod", S.PointMutationMethod, Defaults.PointMutationMethod,
         &TThis::SetPointMutationMethod);
  Define("BloatStrategy", S.BloatStrategy, Defaults.BloatStrategy, &TThis::SetBloatStrategy);
  Define("BloatLimit", S.BloatLimit, Defaults.BloatLimit, &TThis::SetBloatLimit);
  const auto DefineWeight = [&](std::string_view Name, TGPMutationMethod Method) {
    Filer.Property(Name, MutateWeights(Method), MutateWeights(Method) != DefaultMutationWeights[Method],
                   [this, Method](int Read) { SetMutateWeights(Method, Read); });
  };
  DefineWeight("MutateSubtreeWeight", mmSubtree);
  DefineWeight("MutateReplacementWeight", mmReplacement);
  DefineWeight("MutateConstantWeight", mmConstant);
  DefineWeight("MutateShrinkWeight", mmShrink);
  DefineWeight("MutateHoistWeight", mmHoist);
  DefineWeight("MutatePointWeight", mmPoint);
  const auto DefineReal = [&](std::string_view Name, double& Value, bool Stored) {
    Filer.Property(Name, Value, Stored, [&Value](double Read) { Value = Read; });
  };
  DefineReal("SelectionNonTerminalsProbability", FSettings.NonTerminals,
             IsSelectionNonTerminalsProbabilityStored());
  DefineReal("ParsimonyCoefficient", FSettings.ParsimonyCoefficient, IsParsimonyCoefficientStored());
  DefineReal("PointMutationProbability", FSettings.PointMutationProbability,
             IsPointMutationProbabilityStored());
  DefineReal("TarpeianProbability", FSettings.TarpeianProbability, IsTarpeianProbabilityStored());
  DefineInstructions(Filer);
  if constexpr (HasPropertyText<T>) {
    this->DefinePopulation(Filer);
  }
}

// The individuals go first: they refer to the instructions.
template <class T>
void TQXCustomGeneticProgramming<T>::DefineInstructions(TFiler& Filer) {
  TQXGPInstructions<T>& Set = this->Instructions();
  std::optional<TNamedItemsReload<TQXGPInstructions<T>, TInstruction, TInstructionContent<T>>> Reload;
  std::optional<TUpdateScope<TQXGPInstructions<T>>> Update;
  Filer.Items(
      "Instructions", Set,
      [&](int /*Count*/) {
        TLoadScope& Load = *this->CurrentLoad();
        this->SetAsideGenerations(Load);
        Reload.emplace(Set, Load);
        Update.emplace(Set);
      },
      [&](std::string_view Name) -> TCollectionItem& {
        if (!Filer.Exact() && !Name.empty() && Set.FindItemName(Name) != nullptr) {
          throw std::invalid_argument(std::string(SInstructionNotUnique));
        }
        return Reload->Add(Name);
      });
  if (Update) {
    Update->End();
  }
}

template <class T>
void TQXCustomGeneticProgramming<T>::DefineState(TFiler& Filer) {
  TBase::DefineState(Filer);
  Filer.Field("MutationWeightSum", FSettings.MutationWeightSum);
  DefineOrder(Filer, "Functions", FFunctions);
  DefineOrder(Filer, "Terminals", FTerminals);
  TProgramStatistics& S = FStatistics;
  Filer.Field("MinProgramSize", S.MinSize);
  Filer.Field("MaxProgramSize", S.MaxSize);
  Filer.Field("AvgProgramSize", S.AvgSize);
  Filer.Field("MinProgramDepth", S.MinDepth);
  Filer.Field("MaxProgramDepth", S.MaxDepth);
  Filer.Field("AvgProgramDepth", S.AvgDepth);
  Filer.Field("DiscardDue", FDiscardDue);
  Filer.Field("InitialDuplicates", FInitialDuplicates);
}

// The order in which instructions came to a list is what draws choose by.
template <class T>
void TQXCustomGeneticProgramming<T>::DefineOrder(TFiler& Filer, std::string_view Name,
                                                 TInstructionList& List) {
  std::vector<int> Places(List.size());
  std::transform(List.begin(), List.end(), Places.begin(),
                 [](const TInstruction* Instruction) { return Instruction->Index(); });
  Filer.Property(Name, Places, true, [&](const std::vector<int>& Read) {
    std::vector<int> Sorted = Read;
    std::sort(Sorted.begin(), Sorted.end());
    std::sort(Places.begin(), Places.end());
    if (Sorted != Places) {
      throw std::invalid_argument("these are not the places of the instructions that are " +
                                  std::string(Name));
    }
    std::transform(Read.begin(), Read.end(), List.begin(),
                   [this](int Place) { return &this->Instructions()[Place]; });
  });
}

template <class T>
void TQXCustomGeneticProgramming<T>::Remember(TLoadScope& Load) {
  TBase::Remember(Load);
  Load.OnFailure([this, Settings = FSettings, Statistics = FStatistics, Functions = FFunctions,
                  Terminals = FTerminals, Due = FDiscardDue, Duplicates = FInitialDuplicates] {
    FInitialDuplicates = Duplicates;
    FSettings = Settings;
    FStatistics = Statistics;
    FFunctions = Functions;
    FTerminals = Terminals;
    FDiscardDue = Due;
  });
}

} // namespace qx::generics
