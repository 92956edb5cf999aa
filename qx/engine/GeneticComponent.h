#pragma once

#include <qx/engine/FitnessStatistics.h>
#include <qx/engine/GeneticEvents.h>
#include <qx/engine/Population.h>
#include <qx/engine/QXGeneticDocumentXML.h>
#include <qx/foundation/FitnessOrder.h>
#include <qx/foundation/QXGAConsts.h>
#include <qx/platform/Component.h>
#include <qx/platform/Strings.h>

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qx {

template <class TObject>
class TFloatPriorityQueue;
class TLoadScope;

/// The abstract engine of every evolving component: it owns the current population and the previous
/// generation, runs generations, keeps the statistics and fires the events.
///
/// A host sets properties, assigns `OnEvaluateFitness` and calls `Evolve`. A descendant overrides
/// `CreatePopulation`, `DoInitialize`, `DoCrossover`, `DoMutate` and `DoInvert` for its representation.
///
/// One generation: the two generations change places; for each pair of places of the new one, two parents are
/// selected from the previous generation and reproduced over the individuals that stand there; fitness and
/// statistics are evaluated. All random choices are made by `Random`, in the order that the operations tell.
/// Everything runs on the caller's thread. An exception of a handler reaches the caller; the population may
/// be partly overwritten then, `Generation` has not changed, and the component can be used on.
///
/// A handler may do anything but one: what would free individuals, or change what they are made of, is
/// refused by std::logic_error, which names the call, while individuals are made, selected, changed or
/// evaluated. It changes nothing then. Handlers of `OnInitialization` and `OnEvolve` may do that too.
///
/// Writing NaN to a setting that is clamped raises std::invalid_argument; an enumeration value that does not
/// exist raises std::out_of_range. Both name the property.
class TQXCustomGeneticComponent : public TComponent {
public:
  explicit TQXCustomGeneticComponent(TComponent* Owner = nullptr);
  ~TQXCustomGeneticComponent() override;

  // --- Settings -----------------------------------------------------------------------------------------

  /// Individuals that `Initialize` fills the population up to. Default 100; negative values become 0.
  int InitialPopulation() const { return FSettings.InitialPopulation; }
  void SetInitialPopulation(int Value);
  /// Attempts to replace duplicates among the initial individuals. Default 10; negative values become 0.
  int InitialDuplicatesRetries() const { return FSettings.InitialDuplicatesRetries; }
  void SetInitialDuplicatesRetries(int Value);
  /// Chance that a pair of parents is crossed. Default 0.98, clamped to 0..1.
  TGAProbability CrossoverProbability() const { return FSettings.CrossoverProbability; }
  void SetCrossoverProbability(TGAProbability Value);
  /// Default 0.01, clamped to 0..1.
  TGAProbability MutationProbability() const { return FSettings.MutationProbability; }
  void SetMutationProbability(TGAProbability Value);
  /// Chance that a child is inverted. Default 0.1, clamped to 0..1.
  TGAProbability InversionProbability() const { return FSettings.InversionProbability; }
  void SetInversionProbability(TGAProbability Value);
  /// The operators that reproduction applies. Default all three.
  TGAGeneticOperations Operations() const { return FSettings.Operations; }
  void SetOperations(TGAGeneticOperations Value);
  /// How parents are chosen. Default smStochasticTournament. A new method binds the matching built-in
  /// selection to `OnSelection`; smCustom clears it.
  TGASelectionMethod SelectionMethod() const { return FSettings.SelectionMethod; }
  void SetSelectionMethod(TGASelectionMethod Value);
  bool IsCustomSelection() const { return FSettings.SelectionMethod == smCustom; }
  /// Contestants of a tournament. Default 2; smaller values become 2.
  int TournamentField() const { return FSettings.TournamentField; }
  void SetTournamentField(int Value);
  /// Share of the population that elitist selection cycles through. Default 0.1, clamped to 0..1.
  TGAProbability ElitistPct() const { return FSettings.ElitistPct; }
  void SetElitistPct(TGAProbability Value);
  /// Individuals that a generation keeps: the best of the last one by raw fitness, of equal ones those in
  /// front, take the first places as they are. Nothing is selected, drawn, reported or evaluated for them.
  /// Default 0; negative values become 0.
  int EliteCount() const { return FSettings.EliteCount; }
  void SetEliteCount(int Value);
  /// Which fitness is better, and which one drives selection. Default fmMinimize.
  TGAFitnessMethod FitnessMethod() const { return FSettings.FitnessMethod; }
  void SetFitnessMethod(TGAFitnessMethod Value);

  /// Raw fitness at which a run is finished. Default 1.
  TGAFitness FitnessCutoff() const { return FSettings.FitnessCutoff; }
  void SetFitnessCutoff(TGAFitness Value) { FSettings.FitnessCutoff = Value; }
  bool UseFitnessCutoff() const { return FSettings.UseFitnessCutoff; }
  void SetUseFitnessCutoff(bool Value) { FSettings.UseFitnessCutoff = Value; }
  /// `Diversity` below which a run is finished. Default 0.02, clamped to 0..1.
  TGAProbability DiversityLimit() const { return FSettings.DiversityLimit; }
  void SetDiversityLimit(TGAProbability Value);
  bool UseDiversityLimit() const { return FSettings.UseDiversityLimit; }
  void SetUseDiversityLimit(bool Value) { FSettings.UseDiversityLimit = Value; }
  /// Generations after which a run is finished. Starts at 0; every write below 1 gives 1.
  int GenerationLimit() const { return FSettings.GenerationLimit; }
  void SetGenerationLimit(int Value);
  bool UseGenerationLimit() const { return FSettings.UseGenerationLimit; }
  void SetUseGenerationLimit(bool Value) { FSettings.UseGenerationLimit = Value; }
  int Generation() const { return FSettings.Generation; }
  void SetGeneration(int Value) { FSettings.Generation = Value; }
  /// Set by a host, inside an event say, to end `Evolve(Generations)` after the generation under way.
  bool Halt() const { return FSettings.Halt; }
  void SetHalt(bool Value) { FSettings.Halt = Value; }

  // --- Populations and results --------------------------------------------------------------------------

  /// The current generation.
  TQXPopulation& Population();
  const TQXPopulation& Population() const {
    return const_cast<TQXCustomGeneticComponent*>(this)->Population();
  }
  /// Copies the contents of `Value` into the current generation.
  void SetPopulation(const TQXPopulation& Value) { Population().Assign(Value); }
  /// The generation that parents are selected from; nullptr until there is one.
  TQXPopulation* PreviousGeneration() { return FPreviousGeneration.get(); }
  const TQXPopulation* PreviousGeneration() const { return FPreviousGeneration.get(); }
  /// Copies the contents of `Value` into the previous generation, which is created first if need be.
  void SetPreviousGeneration(const TQXPopulation& Value);
  bool Initialized() const { return FSettings.Initialized; }
  /// The best individual of the current population by raw fitness, or nullptr.
  TQXIndividual* FittestIndividual() { return FFittestIndividual; }
  const TQXIndividual* FittestIndividual() const { return FFittestIndividual; }
  /// A copy of the best individual by raw fitness that an evaluation has found since the run began, the first
  /// one of several; nullptr when there is none. It is in neither generation. Documents do not hold it,
  /// checkpoints do; a load begins without one.
  TQXIndividual* BestEver();
  const TQXIndividual* BestEver() const;

  TGAFitness MaxFitness() const { return FFitnesses.Max; }
  TGAFitness MinFitness() const { return FFitnesses.Min; }
  TGAFitness AvgFitness() const;
  TGAFitness MaxWeightedFitness() const { return FWeightedFitnesses.Max; }
  TGAFitness MinWeightedFitness() const { return FWeightedFitnesses.Min; }
  TGAFitness AvgWeightedFitness() const;
  /// `AvgFitness` / `MaxFitness`; infinite when the maximum is 0.
  TGAFitness Diversity() const;

  // --- Running ------------------------------------------------------------------------------------------

  /// Prepares generation 0: fills the population, lets `OnInitialization` or `DoInitialize` make the
  /// individuals, evaluates them and copies them into the previous generation.
  virtual void Initialize();
  /// Runs one generation, initializing first if need be, then fires `OnEvolve`. Does nothing but fire when
  /// the run is finished or the population empty. Raises EGAException without a fitness handler.
  virtual void Evolve();
  /// Runs up to `Generations` generations until the run is finished or `Halt` is set; returns by how much
  /// `Generation` grew: since the call, or since the component last started anew during it.
  int Evolve(int Generations);
  /// Whether one of the termination conditions that are in use holds.
  virtual bool IsFinished();
  /// Exchanges the population and the previous generation; nothing is copied.
  void SwapGenerations();
  /// Copies settings, statistics and populations from another genetic component; `InitialPopulation`,
  /// `Operations`, `Halt` and the handlers stay. No object is shared afterwards.
  void Assign(const TPersistent& Source) override;

  // --- Fitness ------------------------------------------------------------------------------------------

  /// Evaluates the population and recomputes all statistics.
  virtual void EvaluateFitness();
  /// The fitness of one individual as the handlers give it: raw, or weighted. 0 without a handler.
  virtual TGAFitness EvaluateFitness(TQXIndividual& Item, bool Weighted);
  /// -1 when the first is better, +1 when the second is, else 0; by raw fitness when that is asked for, else
  /// by the fitness that the method uses.
  int CompareFitness(TQXIndividual& Parent1, TQXIndividual& Parent2, bool UsePureFitness) {
    const bool Weighted = !UsePureFitness && UsesWeightedFitness();
    const TGAFitness First = Weighted ? Parent1.WeightedFitness() : Parent1.Fitness();
    const TGAFitness Second = Weighted ? Parent2.WeightedFitness() : Parent2.Fitness();
    return CompareFitnesses(First, Second, Maximizing());
  }
  /// The better of two; the first one when neither is.
  virtual TQXIndividual& Fittest(TQXIndividual& Parent1, TQXIndividual& Parent2, bool UsePureFitness);
  TGAFitness GetAdjustedFitness(TGAFitness Value) const;
  TGAFitness GetNormalizedFitness(TGAFitness Value) const;
  TGAFitness GetNormalizedWeightedFitness(TGAFitness Value) const;
  /// The fitness given to an individual that is to be ruled out.
  virtual TGAFitness UnfitFitness();

  // --- Selection ----------------------------------------------------------------------------------------

  /// Chooses a parent by the selection handler. Raises EGAException when none is bound and std::logic_error
  /// when the handler leaves no parent.
  virtual TQXIndividual& SelectParent(TQXPopulation& Population);
  /// Uniform. One integer draw. Raises std::out_of_range for an empty population, as all methods do.
  void SelectRandom(TQXCustomGeneticComponent& Sender, TQXPopulation& Population, TQXIndividual*& Parent);
  /// In proportion to fitness (Holland 1975). One real draw, or one integer draw when all are equal.
  virtual void SelectRoulette(TQXCustomGeneticComponent& Sender, TQXPopulation& Population,
                              TQXIndividual*& Parent);
  /// The best of `TournamentField` uniform draws (Goldberg and Deb 1991).
  virtual void SelectTournament(TQXCustomGeneticComponent& Sender, TQXPopulation& Population,
                                TQXIndividual*& Parent);
  /// As the tournament, but the challengers are drawn by roulette.
  virtual void SelectStochasticTournament(TQXCustomGeneticComponent& Sender, TQXPopulation& Population,
                                          TQXIndividual*& Parent);
  /// The best individuals in turn. Draws only when all are equal.
  virtual void SelectElitist(TQXCustomGeneticComponent& Sender, TQXPopulation& Population,
                             TQXIndividual*& Parent);
  /// Fills the cumulative shares that roulette draws from, over the current population; while children are
  /// being made, over their parents. The same holds for `PrioritizePopulation`.
  void CalculateCumulativeNormalizedFitnesses();
  /// Ranks the current population for elitist selection.
  virtual void PrioritizePopulation();

  // --- Reproduction -------------------------------------------------------------------------------------

  /// Overwrites one or two children by the offspring of two parents, then fires `OnReproduction` for each.
  /// The result tells whether some operator changed something, or what the handlers made of that.
  virtual bool Reproduce(TQXIndividual& Parent1, TQXIndividual& Parent2, TQXIndividual& Child1);
  virtual bool Reproduce(TQXIndividual& Parent1, TQXIndividual& Parent2, TQXIndividual& Child1,
                         TQXIndividual& Child2);
  /// Copies the first parent into the child, then fires `OnInitializeChild`.
  virtual void InitializeChild(TQXIndividual& Parent1, TQXIndividual& Parent2, TQXIndividual& Child);
  /// Crosses with `CrossoverProbability`. One real draw, whatever comes of it.
  virtual bool Crossover(TQXIndividual& Parent1, TQXIndividual& Parent2, TQXIndividual& Child1);
  virtual bool Crossover(TQXIndividual& Parent1, TQXIndividual& Parent2, TQXIndividual& Child1,
                         TQXIndividual& Child2);
  /// Mutates with `MutationProbability`. One real draw, whatever comes of it.
  virtual bool Mutate(TQXIndividual& Item);
  /// Inverts with `InversionProbability`. One real draw, whatever comes of it.
  virtual bool Invert(TQXIndividual& Item);

  // --- Documents ----------------------------------------------------------------------------------------
  // A save builds the whole document before it touches the stream or the file. A load that raises leaves the
  // component as it was, populations included, and the objects that a host may hold are the same ones.

  /// Writes the settings and the statistics into the element. Raises std::invalid_argument when
  /// `FitnessCutoff` is NaN.
  virtual void SaveToXML(const TXMLGeneticDocumentType& Document);
  /// Reads the settings through their setters; what is missing reads as 0 or false, and a fitness method that
  /// is no value's name changes nothing. Statistics are not read: the next evaluation makes them.
  virtual void LoadFromXML(const TXMLGeneticDocumentType& Document);
  /// What the last load kept or moved: one line for each name that it did not know and each value out of
  /// bounds.
  const std::vector<std::string>& LoadWarnings() const { return FLoadWarnings; }
  virtual void SaveToStream(std::ostream& Stream);
  /// Reads the stream to its end; see `TXMLDocument::Read` for what it raises.
  virtual void LoadFromStream(std::istream& Stream);
  /// The file is replaced as a whole, or not at all; see `ReplaceFile`.
  virtual void SaveToFile(const std::string& FileName);
  virtual void LoadFromFile(const std::string& FileName);

  // --- Checkpoints --------------------------------------------------------------------------------------
  // See also `TCheckpoints`, which writes them while a run goes on.

  /// Writes all that the run goes on from: settings, domain, both generations with their fitnesses,
  /// statistics, what selection has prepared, and the state of the process-wide random generator. Handlers,
  /// and a source that stands in for the generator, are the host's. Raises std::logic_error inside
  /// `Initialize`, a generation, an evaluation of all individuals, or a load; what a stream or file raises.
  void SaveCheckpoint(std::ostream& Stream);
  /// The file is replaced as a whole, or not at all; see `ReplaceFile`.
  void SaveCheckpoint(const std::string& FileName);
  /// Takes up a run where a checkpoint was written, in this process or another: it goes on exactly as if it
  /// had not stopped, provided that the component is of the same class and the handlers do the same. What the
  /// host has declared by the same names (genes, instructions with their handlers) remains the same objects.
  /// Assign handlers before: one for fitness that comes later marks all individuals as stale. No handler is
  /// called. IDs of items are given anew. Raises EPropertyError for what is no such checkpoint,
  /// std::system_error for a file that cannot be read, std::logic_error as `SaveCheckpoint`; everything is as
  /// it was then, the random generator included.
  void LoadCheckpoint(std::istream& Stream);
  void LoadCheckpoint(const std::string& FileName);

  // Whether a component stream (see `WriteComponent`) holds the setting: when it is not the default.
  bool IsFitnessCutoffStored() const { return FitnessCutoff() != DEFAULT_FITNESS_CUTOFF; }
  bool IsDiversityLimitStored() const { return DiversityLimit() != DEFAULT_DIVERSITY_LIMIT; }
  bool IsElitistPctStored() const { return ElitistPct() != DEFAULT_ELITIST_PCT; }
  bool IsCrossoverProbabilityStored() const { return CrossoverProbability() != CROSSOVER_PROBABILITY; }
  bool IsInversionProbabilityStored() const { return InversionProbability() != INVERSION_PROBABILITY; }
  bool IsMutationProbabilityStored() const { return MutationProbability() != MUTATION_PROBABILITY; }

  /// Appends a description of the settings for people, one text a line. `TabStr` begins every line that is no
  /// heading. Numbers have the decimal point of the global `std::locale`.
  virtual void Describe(TStrings& Strings, std::string_view TabStr) const;
  /// The description as one text, lines beginning with three blanks.
  std::string ToString() const;

  // --- Events -------------------------------------------------------------------------------------------

  TQXInitializationEvent OnInitialization;

private:
  class TFitnessSlot final : public TQXFitnessEvent {
  public:
    explicit TFitnessSlot(TQXCustomGeneticComponent& Component) : FComponent(Component) {}
    using TQXFitnessEvent::operator=;
    TFitnessSlot(const TFitnessSlot&) = delete; // a saved handler is a TQXFitnessEvent
    TFitnessSlot& operator=(const TFitnessSlot& Source) {
      TQXFitnessEvent::operator=(Source);
      return *this;
    }

  private:
    void HandlerChanged(bool WasAssigned) override { FComponent.FitnessHandlerChanged(WasAssigned); }
    TQXCustomGeneticComponent& FComponent;
  };

  class TSelectionSlot final : public TQXSelectionEvent {
  public:
    explicit TSelectionSlot(TQXCustomGeneticComponent& Component) : FComponent(Component) {}
    using TQXSelectionEvent::operator=;
    TSelectionSlot(const TSelectionSlot&) = delete; // a saved handler is a TQXSelectionEvent
    TSelectionSlot& operator=(const TSelectionSlot& Source) {
      TQXSelectionEvent::operator=(Source);
      return *this;
    }

  private:
    friend class TQXCustomGeneticComponent; // binds the built-in selections
    friend class TLoadScope;
    using TQXSelectionEvent::Bind;
    using TQXSelectionEvent::BindTo;
    using TQXSelectionEvent::Unbind;
    void HandlerChanged(bool WasAssigned) override { FComponent.SelectionHandlerChanged(WasAssigned); }
    TQXCustomGeneticComponent& FComponent;
  };

public:
  /// Gives an individual its raw fitness. Assigning a handler where there was none marks every individual of
  /// both generations as stale.
  TFitnessSlot OnEvaluateFitness{*this};
  /// Gives an individual its weighted fitness; without a handler that is the raw one.
  TQXFitnessEvent OnEvaluateWeightedFitness;
  /// Chooses a parent. Holds the built-in selection of the method; assigning a handler makes the method
  /// smCustom, clearing it makes it smRoulette.
  TSelectionSlot OnSelection{*this};
  TQXParentChildEvent OnInitializeChild;
  TQXCrossoverEvent OnCrossover;
  TQXMutationEvent OnMutation;
  TQXMutationEvent OnInversion;
  TQXMutationEvent OnReproduction;
  /// Fires after every `Evolve()`, also when that did nothing.
  TQXNotifyEvent OnEvolve;

protected:
  friend class TLoadScope;
  friend class TQXPopulation;
  friend class TQXIndividual;

  /// Lasts while individuals are in somebody's hands.
  class TUse {
  public:
    explicit TUse(TQXCustomGeneticComponent& Component) : TUse(Component.FInUse) {}
    TUse(const TUse&) = delete;
    TUse& operator=(const TUse&) = delete;
    ~TUse() { --FCount; }

  private:
    friend class TQXCustomGeneticComponent;
    explicit TUse(int& Count) : FCount(Count) { ++FCount; }
    int& FCount;
  };
  /// Whether individuals are in somebody's hands, so that none may be freed.
  bool InUse() const { return FInUse > 0; }
  /// Raises std::logic_error then, which names the call.
  void RequireNoUse(std::string_view Call) const;

  /// Makes a population owned by this component. `ItemClass` is what its members shall be at least; a
  /// descendant makes its own population class with its own item class.
  virtual std::unique_ptr<TQXPopulation> CreatePopulation(TItemClass<TQXIndividual> ItemClass);
  /// Told when an individual comes into either generation or is about to leave it.
  virtual void PopulationNotify(TQXIndividual& Item, TCollectionNotification Action);
  /// Told when an individual, or with nullptr a generation as a whole, has changed.
  virtual void PopulationUpdate(TQXIndividual* Item);

  /// The operators of the representation; each tells whether it changed anything. `Child2` may be nullptr.
  virtual bool DoCrossover(TQXIndividual& Parent1, TQXIndividual& Parent2, TQXIndividual& Child1,
                           TQXIndividual* Child2);
  virtual bool DoMutate(TQXIndividual& Item);
  virtual bool DoInvert(TQXIndividual& Item);
  /// Called just before `DoCrossover`, once nothing can stop it any more.
  virtual void PrepareCrossover(TQXIndividual& Parent1, TQXIndividual& Parent2, TQXIndividual& Child1,
                                TQXIndividual* Child2);

  virtual void DoEvolve();
  /// Reproduces into the places `Index` and, if there is one, `Index` + 1.
  virtual void DoEvolveOneStep(int Index);
  /// As `DoEvolveOneStep`, for a loop that counts pairs.
  void DoParallelEvolveOneStep(int Index) { DoEvolveOneStep(Index * 2); }
  virtual void DoStartEvolve();
  virtual void DoFinishEvolve();
  virtual TGAFitness DoEvaluateWeightedFitness(TQXIndividual& Item);
  virtual void DoCalculateFitnessStatistics();
  virtual void DoCalculateWeightedFitnessStatistics();
  /// Evaluates every individual of both generations that is stale, so that nothing can fail later.
  void EvaluateStale() const;
  /// Frees both generations; for the destructor of a descendant that its individuals depend on.
  void FreeGenerations();
  /// Empties both generations, when what their individuals are made of has changed; the next run initializes
  /// anew.
  void DiscardGenerations();
  /// Initializes for a load, unless that has been done: without random individuals, which those that come
  /// replace, and without the generation going back to 0.
  void InitializeEmpty();
  /// The generations have been filled by other means than `Initialize`.
  void SetInitialized() { FSettings.Initialized = true; }
  /// Makes the population anew, by `OnInitialization` or `DoInitialize`, and evaluates it: what `Initialize`
  /// does, within a run, whose generation and best individual stay.
  virtual void Repopulate();
  /// Fills the population with random individuals; the result counts what the representation defines.
  virtual int DoInitialize();
  virtual bool DoReproduce(TQXIndividual& Parent1, TQXIndividual& Parent2, TQXIndividual& Child1);
  virtual bool DoReproduce(TQXIndividual& Parent1, TQXIndividual& Parent2, TQXIndividual& Child1,
                           TQXIndividual& Child2);
  /// Chooses a parent when no handler is bound. The base raises EGAException.
  virtual TQXIndividual* DoSelectParent(TQXPopulation& Population);
  virtual void DoSelectionPreparation();

  /// The parts of `Describe` that every description has: fitness method and probabilities; when a run ends.
  void DescribeOperators(TStrings& Strings, std::string_view TabStr) const;
  void DescribeTermination(TStrings& Strings, std::string_view TabStr) const;
  /// Adds a line as in "   Label = Value".
  static void AddDescription(TStrings& Strings, std::string_view TabStr, std::string_view Label,
                             std::string_view Value);

  void DefineProperties(TFiler& Filer) override;
  /// The population as a block of a component stream; for the `DefineProperties` of a descendant whose
  /// individuals define their genomes. A checkpoint has both generations anyway.
  void DefinePopulation(TFiler& Filer);
  /// Adds both generations and what a run has computed. An override calls the inherited one first and adds
  /// its own fields.
  void DefineState(TFiler& Filer) override;
  /// Raises std::out_of_range for a number of things that a document or stream may not ask for.
  static void RequireCount(int Count);
  /// The same for the number in an element: EXMLError, which names it.
  static void RequireCount(const TXMLNode& Element, int Count);
  /// Raises std::length_error when a load cannot make so many individuals.
  virtual void RequireRoomFor(int /*Individuals*/) const {}
  void Loading(TAction Load) override;
  /// The settings that the documents of the concrete components keep under "Reproduction".
  void SaveReproduction(const TXMLReproductionType& Reproduction) const;
  void LoadReproduction(const TXMLReproductionType& Reproduction);
  /// Tells a load that begins how this component comes back when it fails. An override calls the inherited
  /// one first and adds its own fields.
  virtual void Remember(TLoadScope& Load);
  /// Empties both generations until the load has succeeded.
  void SetAsideGenerations(TLoadScope& Load);
  /// The load that is under way, or nullptr.
  TLoadScope* CurrentLoad() const { return FRestoring ? nullptr : FLoad; }
  /// Whether individuals come back as they were after a load that failed.
  bool Restoring() const { return FRestoring; }

private:
  // What a host sets and what a run counts: all that is plain data.
  struct TSettings {
    int InitialPopulation = 100;
    int InitialDuplicatesRetries = 10;
    TGAProbability CrossoverProbability = CROSSOVER_PROBABILITY;
    TGAProbability MutationProbability = MUTATION_PROBABILITY;
    TGAProbability InversionProbability = INVERSION_PROBABILITY;
    TGAGeneticOperations Operations = {goCrossover, goMutate, goInvert};
    TGASelectionMethod SelectionMethod = smStochasticTournament;
    int TournamentField = 2;
    TGAProbability ElitistPct = DEFAULT_ELITIST_PCT;
    int EliteCount = 0;
    TGAFitnessMethod FitnessMethod = fmMinimize;
    TGAFitness FitnessCutoff = DEFAULT_FITNESS_CUTOFF;
    TGAProbability DiversityLimit = DEFAULT_DIVERSITY_LIMIT;
    int GenerationLimit = 0;
    int Generation = 0;
    bool UseFitnessCutoff = false;
    bool UseDiversityLimit = false;
    bool UseGenerationLimit = false;
    bool Initialized = false;
    bool Halt = false;
  };

  bool Maximizing() const { return (FSettings.FitnessMethod & 1) != 0; }
  bool UsesWeightedFitness() const { return FSettings.FitnessMethod >= fmWeightedMinimize; }
  bool AllFitnessesEqual() const;
  void FitnessHandlerChanged(bool WasAssigned);
  void SelectionHandlerChanged(bool WasAssigned);
  void BindSelection();
  // What was prepared for selection is of no use any more; it is prepared anew when it is wanted.
  void ForgetSelection();
  void PrepareGeneration();
  void ReproduceAll();
  int KeepElites();
  void RememberBest();
  void SetAsideBestEver(TLoadScope& Load);
  void StoreBest(const TQXIndividual& Best);
  // The population that the statistics were taken of.
  TQXPopulation& JudgedPopulation() { return FReproducing ? *FPreviousGeneration : Population(); }
  using TSelf = TQXCustomGeneticComponent;
  // Writes a setting that a load has read, and warns when it became another value; `Stored` is the field.
  template <class T>
  void Apply(std::string_view Name, const T& Wanted, const T& Stored, void (TSelf::*Setter)(T));
  void AssignSettings(const TQXCustomGeneticComponent& Source);
  using TElite = TFloatPriorityQueue<TQXIndividual>;
  void RestoreElite(const std::shared_ptr<TElite>& Former);
  void RequireRest() const;
  void DefineGenerations(TFiler& Filer);
  void HavePreviousGeneration(bool Has);
  void DefineSelectionState(TFiler& Filer);
  int PlaceOf(const TQXIndividual* Individual) const;
  TQXIndividual& AtPlace(int Place) const;
  TQXIndividual* Counterpart(const TQXCustomGeneticComponent& Source);
  bool ApplyOperators(TQXIndividual& Parent1, TQXIndividual& Parent2, TQXIndividual& Child1,
                      TQXIndividual* Child2);
  bool GatedCrossover(TQXIndividual& Parent1, TQXIndividual& Parent2, TQXIndividual& Child1,
                      TQXIndividual* Child2);

  TSettings FSettings;
  std::unique_ptr<TQXPopulation> FPopulation;
  std::unique_ptr<TQXPopulation> FPreviousGeneration;
  TQXIndividual* FFittestIndividual = nullptr;
  std::unique_ptr<TQXPopulation> FBestEver; // of one member, or none
  std::vector<TQXIndividual*> FRanked;      // for choosing elites, kept for its memory
  TFitnessStatistics FFitnesses;
  TFitnessStatistics FWeightedFitnesses;
  TGAFitnessArray FCumulativeFitnesses;
  int FLastShare = -1;            // the place of the last share above 0 among them
  std::unique_ptr<TElite> FElite; // made on first use
  std::int32_t FSelectionCursor = -1;
  // The statistics do not belong to the current population, or not to the fitness that it has now: the next
  // generation evaluates them first.
  bool FStatisticsDue = false;
  // Children are being made: the statistics and the preparation of selection are those of the parents.
  bool FReproducing = false;
  int FRunning = 0; // generations, initializations and evaluations under way
  int FInUse = 0;   // those, and steps of them, that have individuals in hand
  int FStarts = 0;  // how often the generations began at 0
  bool FRestoring = false;
  TLoadScope* FLoad = nullptr; // the load that is under way
  std::vector<std::string> FLoadWarnings;
};

inline TQXIndividual::TUseScope::TUseScope(const TQXIndividual& Individual)
    : FCount(Individual.FOwner != nullptr ? &Individual.FOwner->FInUse : &FNobodys) {
  *FCount += 1;
}

} // namespace qx
