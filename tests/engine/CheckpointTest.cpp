// What a checkpoint holds.

#include <qx/platform/Filer.h>
#include <qx/platform/Random.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <support/Cases.h>
#include <support/NonFinite.h>
#include <support/SmallAlgorithm.h>
#include <support/SmallGeneticProgram.h>
#include <support/Streams.h>

namespace qx {
namespace {

using tests::CheckpointOf;
using tests::LoadCheckpoint;
using tests::Replaced;
using tests::TSmallAlgorithm;
using tests::WithValue;

using TArithmetic = tests::TArithmeticProgramming<>;

TEST(CheckpointTest, HoldsTheWholeStateOfABitRun) {
  class TTiny : public TQXGeneticAlgorithm {};
  TTiny Algorithm;
  tests::AddGene(Algorithm.Genes(), "n", gtInteger, 2);
  TSmallAlgorithm::CountOnes(Algorithm);
  Algorithm.SetInitialPopulation(2);
  Algorithm.SetInitialDuplicatesRetries(0);
  SeedRandom(3);
  Algorithm.Initialize();
  std::ostringstream Random;
  Random << RandomState();
  const std::string First = Algorithm.Population()[0].Bits().ToBitString();
  const std::string Second = Algorithm.Population()[1].Bits().ToBitString();
  const std::string Best = Algorithm.FittestIndividual()->Bits().ToBitString();
  const auto Individual = [](const std::string& Bits) {
    return "    TQXGAIndividual {\n"
           "      Name = \"\"\n"
           "      Bits = \"" +
           Bits +
           "\"\n"
           "      Fitness = " +
           std::to_string(std::count(Bits.begin(), Bits.end(), '1')) +
           "\n"
           "      NeedFitness = false\n"
           "    }\n";
  };
  const std::string Text = CheckpointOf(Algorithm);
  EXPECT_EQ(Text.substr(0, Text.find("  FitnessMax")), "QXCheckpoint 1\n"
                                                       "TTiny {\n"
                                                       "  Name = \"\"\n"
                                                       "  InitialPopulation = 2\n"
                                                       "  InitialDuplicatesRetries = 0\n"
                                                       "  SelectionMethod = smStochasticTournament\n"
                                                       "  TournamentField = 2\n"
                                                       "  EliteCount = 0\n"
                                                       "  Operations = [goCrossover goMutate goInvert]\n"
                                                       "  FitnessMethod = fmMinimize\n"
                                                       "  Generation = 0\n"
                                                       "  GenerationLimit = 0\n"
                                                       "  UseFitnessCutoff = false\n"
                                                       "  UseDiversityLimit = false\n"
                                                       "  UseGenerationLimit = false\n"
                                                       "  FitnessCutoff = 1\n"
                                                       "  DiversityLimit = 0.02\n"
                                                       "  ElitistPct = 0.1\n"
                                                       "  CrossoverProbability = 0.98\n"
                                                       "  InversionProbability = 0.1\n"
                                                       "  MutationProbability = 0.01\n"
                                                       "  CrossoverMethod = cmGeneBoundary\n"
                                                       "  Decoding = gdStrict\n"
                                                       "  Genes {\n"
                                                       "    TQXGAGene {\n"
                                                       "      Name = \"n\"\n"
                                                       "      Enumerations = []\n"
                                                       "      GeneType = gtInteger\n"
                                                       "      PreserveSignBit = false\n"
                                                       "      Size = 2\n"
                                                       "      MaxValue = 3\n"
                                                       "      MinValue = 0\n"
                                                       "    }\n"
                                                       "  }\n"
                                                       "  GeneSize = 2\n"
                                                       "  Population {\n" +
                                                           Individual(First) + Individual(Second) +
                                                           "  }\n"
                                                           "  HasPreviousGeneration = true\n"
                                                           "  PreviousGeneration {\n" +
                                                           Individual(First) + Individual(Second) +
                                                           "  }\n"
                                                           "  BestEver {\n" +
                                                           Individual(Best) +
                                                           "  }\n"
                                                           "  Initialized = true\n"
                                                           "  Halt = false\n");
  EXPECT_NE(Text.find("\n  SelectionCursor = -1\n"), std::string::npos);
  EXPECT_NE(Text.find("\n  LastShare = 1\n"), std::string::npos);
  EXPECT_EQ(Text.substr(Text.find("  Ranked")), "  Ranked = false\n"
                                                "  Ranking = []\n"
                                                "  StatisticsDue = false\n"
                                                "  Random = " +
                                                    Random.str() + "\n  Offsets = [0]\n}\n");
}

// Whatever state a component is in, another one takes it up.
template <class TComponent>
void ExpectTakenUp(TComponent& Component, TComponent& Other) {
  const std::string Text = CheckpointOf(Component);
  SeedRandom(12345);
  LoadCheckpoint(Other, Text);
  EXPECT_EQ(CheckpointOf(Other), Text);
}

TEST(CheckpointTest, OfANewComponentUndoesARun) {
  TArithmetic Fresh;
  TArithmetic Used;
  Used.SetInitialPopulation(5);
  Used.SetBloatStrategy(bsHoistSize);
  Used.SetGenerationLimit(7);
  Used.Evolve(3);
  ExpectTakenUp(Fresh, Used);
  EXPECT_EQ(Used.PreviousGeneration(), nullptr);
  EXPECT_FALSE(Used.Initialized());
  EXPECT_EQ(Used.GenerationLimit(), 0);
  EXPECT_EQ(Used.BloatStrategy(), bsNone);
}

TEST(CheckpointTest, CarriesWhatDocumentsLose) {
  TArithmetic Programming;
  Programming.SetInitialPopulation(6);
  Programming.SetFitnessMethod(fmMaximize);
  Programming.SetSelectionMethod(smElitist);
  Programming.Evolve(2);
  std::stringstream Document;
  Programming.SaveToStream(Document);
  Programming.SetMutateConstantWeight(100);
  Programming.LoadFromStream(Document); // the weights, but not their sum
  ASSERT_EQ(Programming.MutationWeightSum(), 175);
  Programming.Instructions()[5].SetValue(0.1 + 0.2);
  Programming.Population()[0].AssignDNA(tests::ReadTree<TGAFloat>(Programming, "(Add c x)"));
  Programming.Population()[0].DNA()->Children(0)->SetValue(1.0 / 3);
  Programming.Population()[1].MarkStale();
  Programming.SwapGenerations();
  Programming.SetHalt(true);
  EXPECT_GT(Programming.MaxProgramSize(), 0); // statistics that stay until the next generation
  TArithmetic Other;
  ExpectTakenUp(Programming, Other);
  EXPECT_EQ(Other.MutationWeightSum(), 175);
  EXPECT_TRUE((*Other.PreviousGeneration())[1].NeedFitness());
  EXPECT_EQ((*Other.PreviousGeneration())[0].DNA()->Children(0)->Value(), 1.0 / 3);
  EXPECT_EQ(Other.Instructions()[5].Value(), 0.1 + 0.2);
  EXPECT_EQ(Other.MaxProgramSize(), Programming.MaxProgramSize());
}

TEST(CheckpointTest, CarriesTheSharesThatSelectionHasPrepared) {
  TSmallAlgorithm Algorithm;
  Algorithm.SetSelectionMethod(smRoulette);
  Algorithm.EvaluateFitness();
  EXPECT_NE(CheckpointOf(Algorithm).find("CumulativeFitnesses = [0."), std::string::npos);
  TSmallAlgorithm Other;
  ExpectTakenUp(Algorithm, Other);
}

TEST(CheckpointTest, CarriesAFittestIndividualOfThePreviousGeneration) {
  TSmallAlgorithm Algorithm;
  Algorithm.SwapGenerations();
  ASSERT_EQ(Algorithm.FittestIndividual(), &(*Algorithm.PreviousGeneration())[0]);
  TSmallAlgorithm Other;
  ExpectTakenUp(Algorithm, Other);
  EXPECT_EQ(Other.FittestIndividual(), &(*Other.PreviousGeneration())[0]);
}

TEST(CheckpointTest, CarriesTheOrderThatInstructionsAreDrawnIn) {
  TArithmetic Programming;
  Programming.Instructions().GetItemByName("Mul").SetOperation(gpVariable);
  Programming.Instructions().GetItemByName("Mul").SetArity(2); // now the last of the functions
  Programming.SetInitialPopulation(4);
  Programming.Evolve();
  TArithmetic Other;
  ASSERT_NE(Other.Functions(2).Name(), "Mul");
  ExpectTakenUp(Programming, Other);
  EXPECT_EQ(Other.Functions(2).Name(), "Mul");
}

TEST(CheckpointTest, CarriesTheOffsetOfAFirstGeneWhosePredecessorIsGone) {
  TSmallAlgorithm Algorithm;
  Algorithm.Genes().Delete(0);
  ASSERT_EQ(Algorithm.Genes()[0].Offset(), 1);
  TSmallAlgorithm Other;
  ExpectTakenUp(Algorithm, Other);
  EXPECT_EQ(Other.Genes()[0].Offset(), 1);
  EXPECT_EQ(Other.Genes()[1].Offset(), 4);
}

TEST(CheckpointTest, CarriesFitnessesThatAreNoFiniteNumbers) {
  TSmallAlgorithm Algorithm;
  using tests::Infinity;
  Algorithm.OnEvaluateFitness = [](auto&, auto& Item, double& Fitness) {
    constexpr double Values[] = {std::numeric_limits<double>::quiet_NaN(), -Infinity, 5e-324};
    Fitness = Values[Item.Index() % 3];
  };
  for (TQXGAIndividual& Individual : Algorithm.Population()) {
    Individual.MarkStale();
  }
  Algorithm.EvaluateFitness();
  TSmallAlgorithm Other;
  ExpectTakenUp(Algorithm, Other);
  EXPECT_TRUE(std::isnan(Other.Population()[0].Fitness()));
  EXPECT_EQ(Other.Population()[1].Fitness(), -Infinity);
  EXPECT_EQ(Other.Population()[2].Fitness(), 5e-324);
}

TEST(CheckpointTest, KeepsTheObjectsThatTheHostHasDeclared) {
  TArithmetic Programming;
  Programming.SetInitialPopulation(3);
  Programming.Evolve();
  const std::string Text = CheckpointOf(Programming);
  TArithmetic Other;
  int Calls = 0;
  auto* const Add = &Other.Instructions().GetItemByName("Add");
  Add->OnInitializeNode = [&](auto&, auto&) { ++Calls; };
  Add->SetArity(1);
  Other.Variable("more");
  LoadCheckpoint(Other, Text);
  EXPECT_EQ(&Other.Instructions().GetItemByName("Add"), Add);
  EXPECT_EQ(Add->Arity(), 2);
  EXPECT_EQ(Other.Instructions().FindItemName("more"), nullptr);
  for (int I = 0; I < 20; ++I) {
    Other.DoInitializeFull(3);
  }
  EXPECT_GT(Calls, 0);
}

TEST(CheckpointTest, ALoadCallsNoHandler) {
  TSmallAlgorithm Algorithm;
  Algorithm.Population()[0].MarkStale();
  const std::string Text = CheckpointOf(Algorithm);
  TSmallAlgorithm Other;
  const auto Fail = [](auto&&...) { ADD_FAILURE(); };
  Other.OnEvaluateFitness = Fail;
  Other.OnInitialization = Fail;
  Other.OnSelection = Fail;
  LoadCheckpoint(Other, Text);
}

TEST(CheckpointTest, ACustomSelectionStaysTheHosts) {
  TSmallAlgorithm Algorithm;
  const auto First = [](auto&, auto& Population, auto*& Parent) { Parent = &Population[0]; };
  Algorithm.OnSelection = First;
  const std::string Text = CheckpointOf(Algorithm);
  TSmallAlgorithm Prepared;
  Prepared.OnSelection = First;
  LoadCheckpoint(Prepared, Text);
  Prepared.Evolve();
  EXPECT_EQ(Prepared.Generation(), 1);
  TSmallAlgorithm Forgetful;
  LoadCheckpoint(Forgetful, Text);
  EXPECT_THROW(Forgetful.Evolve(), EGAException);
}

TEST(CheckpointTest, IsNotWrittenOrReadInsideAGeneration) {
  TSmallAlgorithm Algorithm;
  const std::string Text = CheckpointOf(Algorithm);
  int Refused = 0;
  const auto Try = [&](TQXCustomGeneticComponent& Sender) {
    EXPECT_THROW(CheckpointOf(Sender), std::logic_error);
    EXPECT_THROW(LoadCheckpoint(Sender, Text), std::logic_error);
    ++Refused;
  };
  Algorithm.OnEvaluateFitness = [&](auto& Sender, auto&, double&) { Try(Sender); };
  Algorithm.OnInitializeChild = [&](auto& Sender, auto&, auto&, auto&) { Try(Sender); };
  Algorithm.OnEvolve = [&](auto& Sender) { EXPECT_NO_THROW(CheckpointOf(Sender)); };
  Algorithm.Evolve();
  EXPECT_GE(Refused, 4);
  TSmallAlgorithm New;
  New.OnInitialization = [&](auto& Sender, bool&) { Try(Sender); };
  New.Initialize();
}

TEST(CheckpointTest, IsNotWrittenOrReadInsideAnEvaluationOrALoad) {
  TSmallAlgorithm Algorithm;
  const std::string Text = CheckpointOf(Algorithm);
  const std::string Document = tests::Saved(Algorithm);
  int Refused = 0;
  Algorithm.OnEvaluateFitness = [&](auto& Sender, auto&, double& Fitness) {
    EXPECT_THROW(CheckpointOf(Sender), std::logic_error);
    EXPECT_THROW(LoadCheckpoint(Sender, Text), std::logic_error);
    EXPECT_THROW(LoadCheckpoint(Sender, "QXCheckpoint 1\nTSmallAlgorithm {\n}\n"), std::logic_error);
    Fitness = ++Refused;
  };
  for (TQXGAIndividual& Individual : Algorithm.Population()) {
    Individual.MarkStale();
  }
  Algorithm.EvaluateFitness();
  EXPECT_EQ(Refused, 3);
  tests::Load(Algorithm, Document);
  EXPECT_GT(Refused, 3);
  EXPECT_EQ(Algorithm.Population().Count(), 3);
}

// --- Instructions that setters do not make
// ------------------------------------------------------------------

TEST(CheckpointTest, CarriesAVariableThatHasAnArity) {
  TArithmetic Programming;
  const TXMLGPInstructions Document = NewGPInstructions();
  Document.AddVariable().SetName("Mul");
  Programming.LoadFromXML(Document);
  ASSERT_EQ(Programming.Instructions()[1].Operation(), gpVariable);
  ASSERT_EQ(Programming.Instructions()[1].Arity(), 2);
  TArithmetic Other;
  ExpectTakenUp(Programming, Other);
  EXPECT_EQ(Other.Instructions()[1].Operation(), gpVariable);
  EXPECT_EQ(Other.Instructions()[1].Arity(), 2);
  EXPECT_THROW(LoadCheckpoint(Other, Replaced(CheckpointOf(Other), "Random = ", "Random = -")),
               EPropertyError);
  EXPECT_EQ(Other.Instructions()[1].Arity(), 2);
}

TEST(CheckpointTest, CarriesANameThatIsThereTwice) {
  TArithmetic Programming;
  Programming.Instructions().Add().Assign(Programming.Instructions()[3]);
  auto& Individual = Programming.Add("(Neg x)");
  Individual.DNA()->Children(0)->SetInstruction(&Programming.Instructions()[6]);
  TArithmetic Other;
  ExpectTakenUp(Programming, Other);
  EXPECT_EQ(Other.Population()[0].DNA()->Children(0)->Instruction(), &Other.Instructions()[6]);
}

TEST(CheckpointTest, FindsTheHostsInstructionUnderAnotherCase) {
  TArithmetic Programming;
  const std::string Text = CheckpointOf(Programming);
  tests::TOpenProgramming<TQXGeneticProgramming> Lower;
  const auto* const Add = &Lower.Function("add", 1);
  LoadCheckpoint(Lower, Replaced(Text, Programming.ClassName(), Lower.ClassName()));
  EXPECT_EQ(&Lower.Instructions()[0], Add);
  EXPECT_EQ(Add->Name(), "Add");
}

TEST(CheckpointTest, CarriesChromosomeLengthsThatNoIndividualHas) {
  TQXGeneticAlgorithm Algorithm;
  Algorithm.SetGeneSize(300'000'000);
  TQXGeneticAlgorithm Other;
  ExpectTakenUp(Algorithm, Other);
  EXPECT_EQ(Other.GeneSize(), 300'000'000);
}

TEST(CheckpointTest, CarriesAnOffsetThatTheHostHasSet) {
  TSmallAlgorithm Algorithm;
  Algorithm.Genes()[1].SetOffset(5);
  TSmallAlgorithm Other;
  ExpectTakenUp(Algorithm, Other);
  Algorithm.Genes().Add();
  Other.Genes().Add();
  EXPECT_EQ(CheckpointOf(Other), CheckpointOf(Algorithm));
}

TEST(CheckpointTest, ManyInstructionsAreReadInTheirOrderWithoutDelay) {
  TQXGeneticProgramming Programming;
  for (int I = 0; I < tests::Cases(20'000, 5000); ++I) { // quadratic in their number, this would take seconds
    Programming.Instructions().Add().SetName("v" + std::to_string(I));
  }
  TQXGeneticProgramming Other;
  ExpectTakenUp(Programming, Other);
}

TEST(CheckpointTest, AGenomeLongerThanItsFileIsRefused) {
  TSmallAlgorithm Algorithm;
  const std::string Before = tests::StateOf(Algorithm);
  const std::string Text = CheckpointOf(Algorithm);
  EXPECT_THROW(LoadCheckpoint(Algorithm, Replaced(Text, "GeneSize = 9", "GeneSize = 2000000000")),
               EPropertyError);
  EXPECT_EQ(tests::StateOf(Algorithm), Before);
}

TEST(CheckpointTest, MayBeLongerThanADocument) {
  TSmallAlgorithm Algorithm;
  for (int I = 0; I < 100; ++I) {
    Algorithm.Population()[0].Clone();
  }
  struct TSmallLimits {
    TSmallLimits() { DefaultXMLLimits.Bytes = 500; }
    ~TSmallLimits() { DefaultXMLLimits = {}; }
  } const Limits;
  TSmallAlgorithm Other;
  ExpectTakenUp(Algorithm, Other);
}

// --- A host's own classes ----------------------------------------------------------------------------------

class TStampedNode : public TQXGPFloatNode {
public:
  using TQXGPFloatNode::TQXGPFloatNode;
  std::string Stamp;

protected:
  TPointer NewNode(TInstruction* Instruction) const override {
    return generics::MakeNode<TStampedNode>(Instruction);
  }
  std::string DoSaveState() const override { return Stamp; }
  void DoLoadState(const std::string& Text) override { Stamp = Text; }
};

class TStampingProgramming : public TArithmetic {
public:
  using TArithmetic::CreateNode;
  TNodePointer CreateNode(TInstruction* Instruction) override {
    return generics::MakeNode<TStampedNode>(Instruction);
  }
  int Laps = 0;

protected:
  void DefineState(TFiler& Filer) override {
    TArithmetic::DefineState(Filer);
    Filer.Field("Laps", Laps);
  }
};

TEST(CheckpointTest, HoldsWhatAHostsClassesAdd) {
  TStampingProgramming Programming;
  Programming.Laps = 17;
  auto& Individual = Programming.Add("(Add x c)");
  auto& Node = dynamic_cast<TStampedNode&>(*Individual.DNA()->Children(1));
  Node.Stamp = "a \"stamp\")\n~";
  TStampingProgramming Other;
  ExpectTakenUp(Programming, Other);
  EXPECT_EQ(Other.Laps, 17);
  EXPECT_EQ(dynamic_cast<TStampedNode&>(*Other.Population()[0].DNA()->Children(1)).Stamp, Node.Stamp);
}

class TWeightedGene : public TQXGAGene {
public:
  double Weight = 0;

protected:
  void DefineProperties(TFiler& Filer) override {
    TQXGAGene::DefineProperties(Filer);
    Filer.Property("Weight", Weight, Weight != 0, [this](double Read) { Weight = Read; });
  }
  void Store(const TQXGAGene& Source) override {
    TQXGAGene::Store(Source);
    Weight = dynamic_cast<const TWeightedGene&>(Source).Weight;
  }
};

class TWeightedAlgorithm : public TQXGeneticAlgorithm {
protected:
  std::unique_ptr<TQXGAGenes> CreateGenes(TItemClass<TQXGAGene> /*ItemClass*/) override {
    return std::make_unique<TQXGAGenes>(this, ItemClassOf<TWeightedGene>());
  }
};

TEST(CheckpointTest, GivesAHostsGenesBackWhenItFails) {
  TWeightedAlgorithm Algorithm;
  auto& Gene = dynamic_cast<TWeightedGene&>(Algorithm.Genes().Add());
  Gene.SetName("x");
  Gene.Weight = 1;
  const std::string Text = CheckpointOf(Algorithm);
  Gene.Weight = 2;
  EXPECT_THROW(LoadCheckpoint(Algorithm, WithValue(Text, "Random", "1")), EPropertyError);
  EXPECT_THROW(LoadCheckpoint(Algorithm, WithValue(Text, "SelectionCursor", "-2")), EPropertyError);
  EXPECT_EQ(Gene.Weight, 2);
  LoadCheckpoint(Algorithm, Text);
  EXPECT_EQ(Gene.Weight, 1);
}

// An engine whose nodes are not as they were asked for.
class TPlayfulProgramming : public TArithmetic {
public:
  using TArithmetic::CreateNode;
  TNodePointer CreateNode(TInstruction* Instruction) override {
    if (Makes != nullptr) {
      return Makes(*this, Instruction);
    }
    return TArithmetic::CreateNode(Instruction);
  }
  TNodePointer Plain(TInstruction* Instruction) { return TArithmetic::CreateNode(Instruction); }
  std::function<TNodePointer(TPlayfulProgramming&, TInstruction*)> Makes;
};

TEST(CheckpointTest, ProgramsAreAsTheyWereWhateverTheEngineMakes) {
  TPlayfulProgramming Programming;
  Programming.Add("(Add x c)");
  const std::string Text = CheckpointOf(Programming);
  TPlayfulProgramming Other;
  Other.Makes = [](TPlayfulProgramming& Sender, auto* Instruction) {
    auto Node = Sender.Plain(&Sender.Instructions()[3]);
    Node->SetValue(17);
    if (Instruction != nullptr && Instruction->Arity() > 0) {
      Node->AddChild(Sender.Plain(nullptr));
    }
    return Node;
  };
  LoadCheckpoint(Other, Text);
  EXPECT_EQ(CheckpointOf(Other), Text);
  const auto* const Individual = &Other.Population()[0];
  Other.Makes = [](auto&, auto*) { return nullptr; };
  EXPECT_THROW(LoadCheckpoint(Other, Text), EPropertyError);
  EXPECT_EQ(&Other.Population()[0], Individual);
  EXPECT_EQ(CheckpointOf(Other), Text);
}

} // namespace
} // namespace qx
