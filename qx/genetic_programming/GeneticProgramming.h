#pragma once

#include <qx/engine/TypedGeneticComponent.h>
#include <qx/genetic_programming/GPPopulation.h>
#include <qx/genetic_programming/ProgramEngine.h>
#include <qx/genetic_programming/QXGeneticProgrammingXML.h>

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qx::generics {

/// Genetic programming (Koza 1992): individuals are program trees over the instructions that the host
/// declares.
///
/// Functions are the instructions that take arguments, terminals all others. Every change of an instruction
/// (but of its comment, its value and its handlers) empties both generations, whose trees refer to the
/// instructions; the next `Evolve` initializes anew. An instruction's `OnInitialize` may change the set;
/// while programs are made, changed or evaluated a change raises std::logic_error, and those that go are
/// kept.
///
/// A crossover works on copies of both parents: what a handler of `OnInitializeChild` changed in a second
/// child gives way to the second parent's program. Subtrees are built apart and put in when they are whole,
/// so an exception in the middle of a mutation leaves the program as it was.
///
/// Writing an enumeration value that does not exist raises std::out_of_range and names the property.
template <class T>
class TQXCustomGeneticProgramming
    : public TQXProgramEngine<
          TQXTypedGeneticComponent<TQXCustomGeneticComponent, TQXCustomGeneticProgramming<T>,
                                   TQXGPIndividual<T>, TQXGPPopulation<T>>,
          T> {
  using TBase =
      TQXProgramEngine<TQXTypedGeneticComponent<TQXCustomGeneticComponent, TQXCustomGeneticProgramming,
                                                TQXGPIndividual<T>, TQXGPPopulation<T>>,
                       T>;

public:
  using TIndividual = TQXGPIndividual<T>;
  using TPopulation = TQXGPPopulation<T>;
  using typename TBase::TInstruction;
  using typename TBase::TNode;
  using typename TBase::TNodePointer;
  using TConstantMutationEvent = TQXEvent<void(TQXCustomGeneticProgramming& Sender, TNode& Node)>;

  explicit TQXCustomGeneticProgramming(TComponent* Owner = nullptr);
  /// Frees the individuals first, which may look at the instructions to the last.
  ~TQXCustomGeneticProgramming() override;

  // --- Instructions -------------------------------------------------------------------------------------

  /// The instructions of a positive arity, in the order in which they became functions. Raises
  /// std::out_of_range.
  TInstruction& Functions(int Index) const { return ItemAt(FFunctions, Index, "function"); }
  int FunctionsCount() const { return static_cast<int>(FFunctions.size()); }
  /// All other instructions, likewise.
  TInstruction& Terminals(int Index) const { return ItemAt(FTerminals, Index, "terminal"); }
  int TerminalsCount() const { return static_cast<int>(FTerminals.size()); }

  // --- Settings -----------------------------------------------------------------------------------------

  TGPCrossoverMethod CrossoverMethod() const { return FSettings.CrossoverMethod; }
  void SetCrossoverMethod(TGPCrossoverMethod Value);
  /// How strongly the selection of crossover and mutation points prefers functions. Default 0.9.
  TGAProbability SelectionNonTerminalsProbability() const { return FSettings.NonTerminals; }
  void SetSelectionNonTerminalsProbability(TGAProbability Value) { FSettings.NonTerminals = Value; }

  /// Greatest depth of initial programs, in levels (a terminal is 1). Default 0: the number of functions.
  /// Negative values become 0.
  int InitializationDepth() const { return FSettings.InitializationDepth; }
  void SetInitializationDepth(int Value);
  /// How initial programs are built. Default imFull.
  TGPInitializationMethod InitializationMethod() const { return FSettings.InitializationMethod; }
  void SetInitializationMethod(TGPInitializationMethod Value);
  /// Most nodes that a program or subtree may be built with, by initialization or mutation; one above it
  /// raises std::length_error. Default one million; values below 1 become 1.
  int BuildSizeLimit() const { return FSettings.BuildSizeLimit; }
  void SetBuildSizeLimit(int Value);
  /// Nodes that one initialization may build, in all, in place of programs that another individual has
  /// already; then such a program stays, `InitialDuplicates` counts it, and the levels that were added in
  /// vain are left out again. Default one million, which takes less than a second; negative values become 0.
  int DuplicatesBuildLimit() const { return FSettings.DuplicatesBuildLimit; }
  void SetDuplicatesBuildLimit(int Value);
  /// How many programs of the last initialization another individual had already; 0 when
  /// `InitialDuplicatesRetries` is 0, since nobody looks then.
  int InitialDuplicates() const { return FInitialDuplicates; }

  /// Relative weights of the mutation methods. Default 25, 0, 0, 25, 25, 0.
  const TGPMutationMethodWeights& MutationWeights() const { return FSettings.MutationWeights; }
  void SetMutationWeights(const TGPMutationMethodWeights& Value);
  /// One of the weights. Negative values become 0; of values above 255 the low byte is kept.
  int MutateWeights(TGPMutationMethod Method) const;
  void SetMutateWeights(TGPMutationMethod Method, int Value);
  int MutateSubtreeWeight() const { return MutateWeights(mmSubtree); }
  void SetMutateSubtreeWeight(int Value) { SetMutateWeights(mmSubtree, Value); }
  int MutateReplacementWeight() const { return MutateWeights(mmReplacement); }
  void SetMutateReplacementWeight(int Value) { SetMutateWeights(mmReplacement, Value); }
  int MutateConstantWeight() const { return MutateWeights(mmConstant); }
  void SetMutateConstantWeight(int Value) { SetMutateWeights(mmConstant, Value); }
  int MutateShrinkWeight() const { return MutateWeights(mmShrink); }
  void SetMutateShrinkWeight(int Value) { SetMutateWeights(mmShrink, Value); }
  int MutateHoistWeight() const { return MutateWeights(mmHoist); }
  void SetMutateHoistWeight(int Value) { SetMutateWeights(mmHoist, Value); }
  int MutatePointWeight() const { return MutateWeights(mmPoint); }
  void SetMutatePointWeight(int Value) { SetMutateWeights(mmPoint, Value); }
  /// The sum that a mutation method is drawn from.
  int MutationWeightSum() const { return FSettings.MutationWeightSum; }
  static int SumOfWeights(const TGPMutationMethodWeights& Weights);
  /// Whether point mutation, which inversion is too, may change every node or only the first. Default
  /// pmmPerNode.
  TGPPointMutationMethod PointMutationMethod() const { return FSettings.PointMutationMethod; }
  void SetPointMutationMethod(TGPPointMutationMethod Value);
  /// Chance of each node that point mutation comes to. Default 0.1.
  TGAProbability PointMutationProbability() const { return FSettings.PointMutationProbability; }
  void SetPointMutationProbability(TGAProbability Value) { FSettings.PointMutationProbability = Value; }

  /// What keeps programs from growing; see `TGPBloatStrategy`. Default bsNone.
  TGPBloatStrategy BloatStrategy() const { return FSettings.BloatStrategy; }
  void SetBloatStrategy(TGPBloatStrategy Value);
  /// Size in nodes, or depth in levels below the root, above which a strategy acts. Default 10; values below
  /// 5 become 5.
  int BloatLimit() const { return FSettings.BloatLimit; }
  void SetBloatLimit(int Value);
  /// Fitness that a node, or a level, costs under parsimony pressure. Default 1. The covariant strategies
  /// overwrite it in every generation.
  TGAFloat ParsimonyCoefficient() const { return FSettings.ParsimonyCoefficient; }
  void SetParsimonyCoefficient(TGAFloat Value) { FSettings.ParsimonyCoefficient = Value; }
  /// Chance that a Tarpeian strategy rules out a program above the average. Default 0.3.
  TGAProbability TarpeianProbability() const { return FSettings.TarpeianProbability; }
  void SetTarpeianProbability(TGAProbability Value) { FSettings.TarpeianProbability = Value; }

  // Whether a component stream holds the setting: when it is not the default.
  bool IsSelectionNonTerminalsProbabilityStored() const;
  bool IsParsimonyCoefficientStored() const;
  bool IsPointMutationProbabilityStored() const;
  bool IsTarpeianProbabilityStored() const;

  /// Changes the value of the constant node that it gets; called by constant mutation. See
  /// `TGaussianConstantMutation`.
  TConstantMutationEvent OnConstantMutation;

  /// Copies the settings, the instructions without their handlers, and what every genetic component copies.
  /// The copied programs refer to the own instructions. Raises std::invalid_argument, before anything has
  /// changed, when the programs of the source are made of other nodes than this component's.
  void Assign(const TPersistent& Source) override;
  /// The same with the handlers of the instructions.
  virtual void AssignAll(const TPersistent& Source);

  // --- Documents ----------------------------------------------------------------------------------------
  // As those of every genetic component: a save builds the whole document first, and a load that raises
  // leaves the component as it was, with the same objects.

  using TBase::LoadFromXML;
  using TBase::SaveToXML;
  /// The settings of every genetic component, those of reproduction, and the domain. What controls bloat is
  /// in no document. A load stores the mutation weights as they stand and leaves their sum as it was.
  virtual void LoadFromXML(const TXMLGeneticProgram& Document);
  virtual void SaveToXML(const TXMLGeneticProgram& Document);
  /// The instructions and the population, and the fittest individual, which is not read. Loading initializes
  /// the component, if need be, without random individuals; instructions are merged by name, so that those of
  /// a known name remain the same objects with their handlers; both generations become the population that is
  /// loaded. `Generation` stays. Raises EGPException for a program of an instruction that is none.
  virtual void LoadFromXML(const TXMLGPDomainType& Domain);
  virtual void SaveToXML(const TXMLGPDomainType& Domain);
  /// The instructions alone.
  virtual void LoadFromXML(const TXMLGPInstructions& Instructions);
  virtual void SaveToXML(const TXMLGPInstructions& Instructions);
  void SaveToStream(std::ostream& Stream) override;
  void LoadFromStream(std::istream& Stream) override;
  void LoadFromFile(const std::string& FileName) override;

  // --- Program statistics -------------------------------------------------------------------------------
  // Over the current population. They are taken when one of them is first asked for in a generation, and then
  // stay until the next generation starts.

  int MinProgramSize() const { return Statistics().MinSize; }
  int MaxProgramSize() const { return Statistics().MaxSize; }
  float AvgProgramSize() const { return Statistics().AvgSize; }
  int MinProgramDepth() const { return Statistics().MinDepth; }
  int MaxProgramDepth() const { return Statistics().MaxDepth; }
  float AvgProgramDepth() const { return Statistics().AvgDepth; }
  /// Takes them now.
  void CalculateProgramStats();

  /// The number of programs of up to so many levels below the root, of which level 0 is counted as the number
  /// of functions. Infinite when it is beyond the type.
  virtual long double SearchSpaceSize(std::uint32_t Level) const;
  void Describe(TStrings& Strings, std::string_view TabStr) const override;

  // --- Making nodes -------------------------------------------------------------------------------------

  // Each makes a node for the place `Index` among the children of `Parent`, or for a root when that is
  // nullptr, and leaves it to the caller to attach it there. Of the instructions in question all are equally
  // likely: one integer draw. Raises EGPException when there is none, std::logic_error when `CreateNode`
  // makes nothing.
  virtual TNodePointer GetOperationNode(const TNode* Parent, int Index);
  virtual TNodePointer GetTerminalNode(const TNode* Parent, int Index);
  /// Of any instruction.
  virtual TNodePointer GetNode(const TNode* Parent, int Index);
  /// Of an instruction similar to that of `Node`, which must have one.
  virtual TNodePointer GetNode(const TNode* Parent, const TNode& Node, int Index);

  // Each of these attaches what the one of its name above makes: to a node with a list of children at that
  // index, 0 to their number, to one with two slots as `AddChild` does. Raises what both raise.
  TNode& GetOperationNode(TNode& Parent, int Index) {
    return AttachNew(Parent, Index, GetOperationNode(&Parent, Index));
  }
  TNode& GetTerminalNode(TNode& Parent, int Index) {
    return AttachNew(Parent, Index, GetTerminalNode(&Parent, Index));
  }
  TNode& GetNode(TNode& Parent, int Index) { return AttachNew(Parent, Index, GetNode(&Parent, Index)); }
  TNode& GetNode(TNode& Parent, const TNode& Node, int Index) {
    return AttachNew(Parent, Index, GetNode(&Parent, Node, Index));
  }
  /// One of the instructions of the same kind and arity, which the given one is among: one integer draw.
  /// Raises EGPException when the set has none.
  TInstruction& GetSimilarInstruction(const TInstruction& Instruction);

  // --- Operators ----------------------------------------------------------------------------------------

  using TBase::EvaluateFitness;
  /// Without running the program, some bloat strategies answer the raw fitness with `UnfitFitness`.
  TGAFitness EvaluateFitness(TQXIndividual& Item, bool Weighted) override;
  using TBase::Crossover;
  bool Crossover(TQXIndividual& Parent1, TQXIndividual& Parent2, TQXIndividual& Child1,
                 TQXIndividual& Child2) override;
  using TBase::Mutate;
  /// Runs one mutation method; tells whether it changed the program. Constant and point mutation leave the
  /// list of nodes as it is.
  bool Mutate(TIndividual& Individual, TGPMutationMethod Method);
  /// Under bsLexicographicParsimonyPressure, of equally fit individuals the smaller program wins.
  void SelectTournament(TQXCustomGeneticComponent& Sender, TQXPopulation& Population,
                        TQXIndividual*& Parent) override;

protected:
  std::unique_ptr<TQXPopulation> CreatePopulation(TItemClass<TQXIndividual> ItemClass) override;

  void RequireChangeable(const char* Call) const override;
  void InstructionUpdate(TInstruction* Instruction) override;
  void InstructionNotify(TInstruction& Instruction, TCollectionNotification Action) override;
  /// Moves the instruction to the end of the list that its arity says.
  void InstructionOperationUpdate(TInstruction& Instruction) override;

  /// Makes the initial programs; the result is the number of those that were made anew because another one
  /// had the same text; see `DuplicatesBuildLimit`. Raises EGPException when the instructions cannot make
  /// such programs, or, without functions, not as many different ones; see `BuildSizeLimit` too. The
  /// individuals before it keep their new programs then.
  int DoInitialize() override;
  void Repopulate() override;
  /// Builds a tree of that many levels for a place (see `GetNode`): with a function wherever there is room
  /// for its arguments, and with any instruction there.
  TNodePointer DoInitializeFull(const TNode* Parent, int Index, int Depth);
  TNodePointer DoInitializeGrow(const TNode* Parent, int Index, int Depth);

  void DoEvolve() override;
  void DoEvolveOneStep(int Index) override;
  void DoStartEvolve() override;
  bool DoReproduce(TQXIndividual& Parent1, TQXIndividual& Parent2, TQXIndividual& Child1) override;
  bool DoReproduce(TQXIndividual& Parent1, TQXIndividual& Parent2, TQXIndividual& Child1,
                   TQXIndividual& Child2) override;
  /// Lets the second child be a copy of the second parent.
  void PrepareCrossover(TQXIndividual& Parent1, TQXIndividual& Parent2, TQXIndividual& Child1,
                        TQXIndividual* Child2) override;
  /// Swaps a subtree of the first child with one of the second. Without a second child, the first gets a copy
  /// of a subtree of the second parent. Under the fair strategies, see `DoFairCrossover`.
  bool DoCrossover(TQXIndividual& Parent1, TQXIndividual& Parent2, TQXIndividual& Child1,
                   TQXIndividual* Child2) override;
  /// Grafts into the child a copy of a subtree of the second parent that is about as large as the one it
  /// replaces (Langdon 2000).
  bool DoFairCrossover(TIndividual& Parent1, TIndividual& Parent2, TIndividual& Child);
  /// For each node its share of the whole, accumulated: the last entry is 1. `Measure` is that of the
  /// receiving node; the means are those of the smaller and the larger nodes, which the counts tell.
  std::vector<double> CreateSizeFairRoulette(std::span<TNode* const> Nodes, int Measure, int SmallerCount,
                                             int EqualCount, int LargerCount, double SmallerMean,
                                             double LargerMean) const;
  /// The node whose entry is the first above a real draw. Raises std::out_of_range when there is none.
  TNode& SelectSizeFairNode(const TIndividual& Individual, std::span<const double> Roulette) const;

  /// Asks `OnMutation`, draws a method by the weights and mutates.
  bool DoMutate(TQXIndividual& Item) override;
  /// Point mutation of the whole program. The result is false, whatever it changed.
  bool DoInvert(TQXIndividual& Item) override;
  // The mutation methods. Each tells whether it changed the program; depths of subtrees that are grown are
  // those that the replaced ones have below their roots.
  /// A node's subtree becomes a new one.
  virtual bool DoSubtreeMutation(TIndividual& Individual);
  /// A node becomes one of a similar instruction, with new arguments.
  virtual bool DoReplacementMutation(TIndividual& Individual);
  /// `OnConstantMutation` changes a constant.
  virtual bool DoConstantMutation(TIndividual& Individual);
  /// A node's subtree becomes a terminal.
  virtual bool DoShrinkMutation(TIndividual& Individual);
  /// A node's subtree becomes the whole program.
  virtual bool DoHoistMutation(TIndividual& Individual);
  /// Instructions give way to similar ones.
  virtual bool DoPointMutation(TIndividual& Individual);
  /// The same in the subtree of a node, level by level down as `Execute` goes: raises EStackError when the
  /// tree is too deep for the stack. The result is that of the last node that it came to.
  virtual bool DoPointMutation(TIndividual& Individual, TNode& Node);

  /// Applies the strategies that act on children. `Performed` is what the reproduction reported.
  void DoAntiBloating(TIndividual& Parent, TIndividual& OtherParent, TIndividual& Child, bool Performed);
  /// Fitness with the penalty of parsimony pressure, unless a handler answers.
  TGAFitness DoEvaluateWeightedFitness(TQXIndividual& Item) override;
  /// First determines the coefficient of the covariant strategies (Poli and McPhee 2008). Individuals whose
  /// fitness is not finite are left out of that, since it would be NaN.
  void DoCalculateWeightedFitnessStatistics() override;

  void DefineProperties(TFiler& Filer) override;
  void DefineState(TFiler& Filer) override;
  void Remember(TLoadScope& Load) override;

private:
  // What a host sets.
  struct TSettings {
    TGPCrossoverMethod CrossoverMethod = cmSubtree;
    TGAProbability NonTerminals = NONTERMINALS_SELECTION_PROBABILITY;
    int InitializationDepth = 0;
    TGPInitializationMethod InitializationMethod = imFull;
    int BuildSizeLimit = 1'000'000;
    int DuplicatesBuildLimit = 1'000'000;
    TGPMutationMethodWeights MutationWeights = DefaultMutationWeights;
    int MutationWeightSum = SumOfWeights(DefaultMutationWeights);
    TGPPointMutationMethod PointMutationMethod = pmmPerNode;
    TGAProbability PointMutationProbability = INVERSION_PROBABILITY; // the same on purpose
    TGPBloatStrategy BloatStrategy = bsNone;
    int BloatLimit = 10;
    TGAFloat ParsimonyCoefficient = DEFAULT_PARSIMONY_COEFFICIENT;
    TGAProbability TarpeianProbability = DEFAULT_TARPEIAN_PROBABILITY;
  };
  struct TProgramStatistics {
    int MinSize = 0;
    int MaxSize = 0; // 0: not taken yet
    float AvgSize = 0;
    int MinDepth = 0;
    int MaxDepth = 0;
    float AvgDepth = 0;
  };
  using TInstructionList = std::vector<TInstruction*>;
  class TInitialPrograms;
  class TTooLarge;
  struct TMeasureCounts;

  void DiscardPrograms();
  int CountUnnamed();
  void DefineInstructions(TFiler& Filer);
  static TInstruction& ItemAt(const TInstructionList& List, int Index, const char* What);
  bool Unlist(const TInstruction& Instruction);
  static bool EraseLast(TInstructionList& List, const TInstruction* Instruction);
  static void MoveWhere(bool WantsFunction, TInstructionList& From, TInstructionList& To);
  void AssignWith(const TPersistent& Source, void (TQXGPInstructions<T>::*CopySet)(const TPersistent&));
  void DefineOrder(TFiler& Filer, std::string_view Name, TInstructionList& List);
  void RequireSameNodes(TQXCustomGeneticProgramming& Source);

  TNodePointer MakeNodeFor(TInstruction* Instruction);
  static TNode& AttachNew(TNode& Parent, int Index, TNodePointer Node);
  TNodePointer NewNode(TInstruction& Instruction);
  TNodePointer BuildTree(const TNode* Parent, int Index, int Depth, bool Full);
  void RequireBuildSize(int Nodes) const;

  template <class TStep>
  bool ThenFlatten(TIndividual& Individual, TStep Step);
  bool ReproduceTwo(TQXIndividual& Parent1, TQXIndividual& Parent2, TQXIndividual& Child1,
                    TQXIndividual& Child2);
  static int PlaceOf(const TNode& Node);
  bool MutateByWeight(TIndividual& Individual);
  static int SizeOf(TIndividual& Individual);
  static int DepthOf(TIndividual& Individual);
  TNode* SelectPoint(TIndividual& Individual) { return Individual.SelectNode(FSettings.NonTerminals); }
  int RegrownDepth(const TNode& Node) const;
  bool IsFair() const;
  int FairMeasure(const TNode& Node) const;
  TMeasureCounts CountMeasures(std::span<TNode* const> Nodes, int Measure) const;
  bool IsRuledOut(TIndividual& Individual);
  const TProgramStatistics& Statistics() const;

  static std::string NameWithComment(const TInstruction& Instruction);
  std::string DescribeMutation() const;
  void DescribeInstructions(TStrings& Strings, std::string_view TabStr) const;

  TSettings FSettings;
  TProgramStatistics FStatistics;
  TInstructionList FFunctions;
  TInstructionList FTerminals;
  int FInitialDuplicates = 0;
  bool FPointMutated = false; // by the point mutation under way
  bool FDiscardDue = false;   // the set has changed while programs were in use
};

extern template class TQXCustomGeneticProgramming<TGAFloat>;
extern template class TQXCustomGeneticProgramming<Variant>;

} // namespace qx::generics
