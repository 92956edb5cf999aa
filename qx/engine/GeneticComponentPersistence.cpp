// The genetic component's documents, files, streams and description.

#include <qx/engine/GeneticComponent.h>
#include <qx/engine/LoadScope.h>
#include <qx/foundation/FloatPriorityQueue.h>
#include <qx/platform/Filer.h>
#include <qx/platform/Files.h>
#include <qx/platform/Text.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <unordered_set>
#include <utility>

namespace qx {

namespace {

// Whether a generation has the individual, which may be gone.
bool Holds(const TQXPopulation* Generation, const TQXIndividual* Individual) {
  return Generation != nullptr &&
         std::any_of(Generation->begin(), Generation->end(),
                     [&](const TQXIndividual& Member) { return &Member == Individual; });
}

} // namespace

template <class T>
void TQXCustomGeneticComponent::Apply(std::string_view Name, const T& Wanted, const T& Stored,
                                      void (TSelf::*Setter)(T)) {
  (this->*Setter)(Wanted);
  FLoad->WarnIfMoved(Name, Wanted, Stored);
}

// What would keep the next generation busy for hours.
void TQXCustomGeneticComponent::RequireCount(int Count) {
  if (Count > DefaultXMLLimits.Count) {
    throw std::out_of_range("holds " + std::to_string(Count) + ", which is more than the " +
                            std::to_string(DefaultXMLLimits.Count) +
                            " that a document or stream may ask for (DefaultXMLLimits.Count)");
  }
}

void TQXCustomGeneticComponent::RequireCount(const TXMLNode& Element, int Count) {
  try {
    RequireCount(Count);
  } catch (const std::out_of_range& Error) {
    Element.Refuse(Error.what());
  }
}

// --- XML ---------------------------------------------------------------------------------------------------

void TQXCustomGeneticComponent::SaveToXML(const TXMLGeneticDocumentType& Document) {
  if (std::isnan(FitnessCutoff())) {
    throw std::invalid_argument("FitnessCutoff must be a number to be saved, not NaN");
  }
  Document.SetDiversityLimit(DiversityLimit());
  Document.SetFitnessCutoff(FitnessCutoff());
  Document.SetFitnessMethod(EnumName(FitnessMethod()));
  Document.SetGeneration(Generation());
  Document.SetUseDiversityLimit(UseDiversityLimit());
  Document.SetUseFitnessCutoff(UseFitnessCutoff());
  Document.SetGenerationLimit(GenerationLimit());
  Document.SetUseGenerationLimit(UseGenerationLimit());
  Document.SetAvgFitness(AvgFitness());
  Document.SetMaxFitness(MaxFitness());
  Document.SetMinFitness(MinFitness());
}

void TQXCustomGeneticComponent::LoadFromXML(const TXMLGeneticDocumentType& Document) {
  const TXMLReadScope Reading(Document);
  TLoadScope Load(this);
  Apply("DiversityLimit", Document.DiversityLimit(), FSettings.DiversityLimit, &TSelf::SetDiversityLimit);
  SetFitnessCutoff(Document.FitnessCutoff());
  SetFitnessMethod(Load.ValueOr("FitnessMethod", Document.FitnessMethod(), FitnessMethod()));
  SetGeneration(Document.Generation());
  SetUseDiversityLimit(Document.UseDiversityLimit());
  SetUseFitnessCutoff(Document.UseFitnessCutoff());
  // The limit 0 of a component that never had another comes back as it is; otherwise 0 is moved to 1.
  const std::int64_t Limit = Document.GenerationLimit();
  if (!Document.HasChild("GenerationLimit") || Limit != GenerationLimit()) {
    SetGenerationLimit(static_cast<int>(std::clamp<std::int64_t>(Limit, 0, std::numeric_limits<int>::max())));
    Load.WarnIfMoved<double>("GenerationLimit", static_cast<double>(Limit), GenerationLimit());
  }
  SetUseGenerationLimit(Document.UseGenerationLimit());
  Load.Done();
}

void TQXCustomGeneticComponent::SaveReproduction(const TXMLReproductionType& Reproduction) const {
  Reproduction.SetCrossoverProbability(CrossoverProbability());
  Reproduction.SetInversionProbability(InversionProbability());
  Reproduction.SetMutationProbability(MutationProbability());
  const TXMLReproductionType_SelectionMethod Selection = Reproduction.SelectionMethod();
  Selection.SetMethod(EnumName(SelectionMethod()));
  Selection.SetElitistPercent(ElitistPct());
  Selection.SetTournamentField(TournamentField());
}

void TQXCustomGeneticComponent::LoadReproduction(const TXMLReproductionType& Reproduction) {
  TLoadScope Load(this);
  Apply("CrossoverProbability", Reproduction.CrossoverProbability(), FSettings.CrossoverProbability,
        &TSelf::SetCrossoverProbability);
  Apply("InversionProbability", Reproduction.InversionProbability(), FSettings.InversionProbability,
        &TSelf::SetInversionProbability);
  Apply("MutationProbability", Reproduction.MutationProbability(), FSettings.MutationProbability,
        &TSelf::SetMutationProbability);
  const TXMLReproductionType_SelectionMethod Selection = Reproduction.SelectionMethod();
  SetSelectionMethod(Load.ValueOr("Method", Selection.Method(), SelectionMethod()));
  Apply("ElitistPercent", Selection.ElitistPercent(), FSettings.ElitistPct, &TSelf::SetElitistPct);
  RequireCount(Selection.FindChild("TournamentField"), Selection.TournamentField());
  Apply("TournamentField", Selection.TournamentField(), FSettings.TournamentField,
        &TSelf::SetTournamentField);
  Load.Done();
}

void TQXCustomGeneticComponent::InitializeEmpty() {
  if (FSettings.Initialized) {
    return;
  }
  struct TWithoutIndividuals {
    explicit TWithoutIndividuals(int& Count) : FCount(Count), FBefore(std::exchange(Count, 0)) {}
    ~TWithoutIndividuals() { FCount = FBefore; }
    int& FCount;
    int FBefore;
  } const Without(FSettings.InitialPopulation);
  const int Generation = FSettings.Generation;
  Initialize();
  FSettings.Generation = Generation;
  --FStarts; // the run goes on
}

void TQXCustomGeneticComponent::SetAsideGenerations(TLoadScope& Load) {
  Load.SetAside(Population());
  if (FPreviousGeneration != nullptr) {
    Load.SetAside(*FPreviousGeneration);
  }
  SetAsideBestEver(Load);
}

void TQXCustomGeneticComponent::SetAsideBestEver(TLoadScope& Load) {
  if (FBestEver != nullptr) {
    const auto Former = std::make_shared<std::unique_ptr<TQXPopulation>>(std::move(FBestEver));
    Load.OnFailure([this, Former] { FBestEver = std::move(*Former); });
  }
}

void TQXCustomGeneticComponent::Remember(TLoadScope& Load) {
  Load.OnFailure([this, Settings = FSettings, Fitnesses = FFitnesses, Weighted = FWeightedFitnesses,
                  Fittest = FFittestIndividual, Due = FStatisticsDue, Cursor = FSelectionCursor,
                  Shares = FCumulativeFitnesses, LastShare = FLastShare,
                  Elite = FElite != nullptr ? std::make_shared<TElite>(*FElite) : nullptr,
                  Selection = TQXSelectionEvent(OnSelection), Current = &Population(),
                  Previous = FPreviousGeneration.get()] {
    if (FPopulation.get() != Current && FPreviousGeneration.get() == Current) { // a handler has evolved
      FPopulation.swap(FPreviousGeneration);
    }
    if (Previous == nullptr) {
      FPreviousGeneration.reset();
    }
    OnSelection.BindTo(Selection);
    ForgetSelection();
    FSettings = Settings;
    FFitnesses = Fitnesses;
    FWeightedFitnesses = Weighted;
    FFittestIndividual =
        Holds(FPopulation.get(), Fittest) || Holds(FPreviousGeneration.get(), Fittest) ? Fittest : nullptr;
    FStatisticsDue = Due;
    FSelectionCursor = Cursor;
    FCumulativeFitnesses = Shares;
    FLastShare = LastShare;
    RestoreElite(Elite);
  });
}

// The ranking as it was, unless one of its individuals has gone for good.
void TQXCustomGeneticComponent::RestoreElite(const std::shared_ptr<TElite>& Former) {
  if (Former == nullptr) {
    return;
  }
  std::unordered_set<const TQXIndividual*> Members;
  for (const TQXPopulation* Generation : {FPopulation.get(), FPreviousGeneration.get()}) {
    for (int I = 0; Generation != nullptr && I < Generation->Count(); ++I) {
      Members.insert(&Generation->Items(I));
    }
  }
  for (int I = 0; I < Former->Count(); ++I) {
    if (!Members.contains(&(*Former)[I])) {
      return;
    }
  }
  FElite = std::make_unique<TElite>(std::move(*Former));
}

// --- Streams and files -------------------------------------------------------------------------------------

void TQXCustomGeneticComponent::SaveToStream(std::ostream& Stream) {
  const TXMLGeneticDocumentType Document = NewGeneticDocument();
  SaveToXML(Document);
  Document.Document().Write(Stream);
}

void TQXCustomGeneticComponent::LoadFromStream(std::istream& Stream) {
  LoadFromXML(GetGeneticDocument(TXMLDocument::Read(Stream)));
}

// The document is complete before the file is touched.
void TQXCustomGeneticComponent::SaveToFile(const std::string& FileName) {
  std::ostringstream Stream;
  SaveToStream(Stream);
  ReplaceFile(FileName, Stream.view());
}

void TQXCustomGeneticComponent::LoadFromFile(const std::string& FileName) {
  LoadFromXML(LoadGeneticDocument(FileName));
}

// --- Component stream --------------------------------------------------------------------------------------

void TQXCustomGeneticComponent::DefineProperties(TFiler& Filer) {
  TComponent::DefineProperties(Filer);
  const TSettings Defaults;
  const auto Define = [&](std::string_view Name, const auto& Value, const auto& Default, auto Setter) {
    Filer.Property(Name, Value, Value != Default,
                   [&](const auto& Read) { Apply(Name, Read, Value, Setter); });
  };
  const auto DefineCount = [&](std::string_view Name, const int& Value, int Default, auto Setter) {
    Filer.Property(Name, Value, Value != Default, [&](int Read) {
      if (!Filer.Exact()) {
        RequireCount(Read);
      }
      Apply(Name, Read, Value, Setter);
    });
  };
  const TSettings& S = FSettings;
  DefineCount("InitialPopulation", S.InitialPopulation, Defaults.InitialPopulation,
              &TSelf::SetInitialPopulation);
  DefineCount("InitialDuplicatesRetries", S.InitialDuplicatesRetries, Defaults.InitialDuplicatesRetries,
              &TSelf::SetInitialDuplicatesRetries);
  Define("SelectionMethod", S.SelectionMethod, Defaults.SelectionMethod, &TSelf::SetSelectionMethod);
  DefineCount("TournamentField", S.TournamentField, Defaults.TournamentField, &TSelf::SetTournamentField);
  Define("EliteCount", S.EliteCount, Defaults.EliteCount, &TSelf::SetEliteCount);
  Define("Operations", S.Operations, Defaults.Operations, &TSelf::SetOperations);
  Define("FitnessMethod", S.FitnessMethod, Defaults.FitnessMethod, &TSelf::SetFitnessMethod);
  Define("Generation", S.Generation, Defaults.Generation, &TSelf::SetGeneration);
  Filer.Property("GenerationLimit", S.GenerationLimit, S.GenerationLimit != Defaults.GenerationLimit,
                 [&](int Read) {
                   if (Filer.Exact() && Read == 0) { // never set, and what no setter writes
                     FSettings.GenerationLimit = 0;
                   } else {
                     Apply("GenerationLimit", Read, S.GenerationLimit, &TSelf::SetGenerationLimit);
                   }
                 });
  Define("UseFitnessCutoff", S.UseFitnessCutoff, Defaults.UseFitnessCutoff, &TSelf::SetUseFitnessCutoff);
  Define("UseDiversityLimit", S.UseDiversityLimit, Defaults.UseDiversityLimit, &TSelf::SetUseDiversityLimit);
  Define("UseGenerationLimit", S.UseGenerationLimit, Defaults.UseGenerationLimit,
         &TSelf::SetUseGenerationLimit);
  const auto DefineReal = [&](std::string_view Name, const double& Value, bool Stored, auto Setter) {
    Filer.Property(Name, Value, Stored, [&](double Read) { Apply(Name, Read, Value, Setter); });
  };
  DefineReal("FitnessCutoff", S.FitnessCutoff, IsFitnessCutoffStored(), &TSelf::SetFitnessCutoff);
  DefineReal("DiversityLimit", S.DiversityLimit, IsDiversityLimitStored(), &TSelf::SetDiversityLimit);
  DefineReal("ElitistPct", S.ElitistPct, IsElitistPctStored(), &TSelf::SetElitistPct);
  DefineReal("CrossoverProbability", S.CrossoverProbability, IsCrossoverProbabilityStored(),
             &TSelf::SetCrossoverProbability);
  DefineReal("InversionProbability", S.InversionProbability, IsInversionProbabilityStored(),
             &TSelf::SetInversionProbability);
  DefineReal("MutationProbability", S.MutationProbability, IsMutationProbabilityStored(),
             &TSelf::SetMutationProbability);
}

void TQXCustomGeneticComponent::Loading(TAction Load) {
  TLoadScope Scope(this);
  TComponent::Loading(Load);
  Scope.Done();
}

// --- Description -------------------------------------------------------------------------------------------

void TQXCustomGeneticComponent::Describe(TStrings& Strings, std::string_view TabStr) const {
  DescribeOperators(Strings, TabStr);
  AddDescription(Strings, TabStr, "Selection Method", EnumName(SelectionMethod()));
  Strings.Add("Initial Conditions");
  AddDescription(Strings, TabStr, "Population", std::to_string(InitialPopulation()));
  DescribeTermination(Strings, TabStr);
}

void TQXCustomGeneticComponent::DescribeOperators(TStrings& Strings, std::string_view TabStr) const {
  Strings.Add("Operating Conditions");
  AddDescription(Strings, TabStr, "Fitness Method", EnumName(FitnessMethod()));
  AddDescription(Strings, TabStr, "Crossover Probability", PercentText(CrossoverProbability()));
  AddDescription(Strings, TabStr, "Inversion Probability", PercentText(InversionProbability()));
  AddDescription(Strings, TabStr, "Mutation Probability", PercentText(MutationProbability()));
}

void TQXCustomGeneticComponent::DescribeTermination(TStrings& Strings, std::string_view TabStr) const {
  if (!UseGenerationLimit() && !UseFitnessCutoff() && !UseDiversityLimit()) {
    Strings.Add("There are no Termination Conditions");
    return;
  }
  Strings.Add("Termination Conditions");
  const std::string Tab(TabStr);
  if (UseFitnessCutoff()) {
    Strings.Add(Tab + (Maximizing() ? "Fitness >= " : "Fitness <= ") + GeneralText(FitnessCutoff()));
  }
  if (UseDiversityLimit()) {
    Strings.Add(Tab + "Diversity less than " + PercentText(DiversityLimit()));
  }
  if (UseGenerationLimit()) {
    AddDescription(Strings, TabStr, "Maximum number of generations", std::to_string(GenerationLimit()));
  }
}

void TQXCustomGeneticComponent::AddDescription(TStrings& Strings, std::string_view TabStr,
                                               std::string_view Label, std::string_view Value) {
  std::string Line(TabStr);
  Line.append(Label).append(" = ").append(Value);
  Strings.Add(Line);
}

std::string TQXCustomGeneticComponent::ToString() const {
  TStrings Lines;
  Describe(Lines, "   ");
  std::string Text = Lines.Text();
  Text.pop_back(); // line breaks stand between the lines
  return Text;
}

} // namespace qx
