#include <qx/genetic_programming/QXGenerics.GeneticProgramming.h>
#include <qx/program_trees/QXGPDomainXML.h>

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <support/ProgramIndividuals.h>
#include <support/TestComponent.h>
#include <vector>

namespace qx::generics {
namespace {

using TNode = TQXGPNode<TGAFloat>;
using TPointer = TNode::TPointer;
using TIndividual = TQXGPIndividual<TGAFloat>;
using TPopulation = TQXGPPopulation<TGAFloat>;

using tests::ProgramIndividualTest;

TEST_F(ProgramIndividualTest, ANewOneHasAnEmptyRootAndNoList) {
  TIndividual& Individual = Population.Add();
  EXPECT_TRUE(Individual.FlattenedDNA().empty());
  ASSERT_NE(Individual.DNA(), nullptr);
  EXPECT_EQ(Individual.DNA()->Instruction(), nullptr);
  EXPECT_NE((dynamic_cast<tests::TShownTreeNode<TGAFloat>*>(Individual.DNA())), nullptr);
  Individual.FlattenDNA();
  EXPECT_EQ(Flat(Individual), "nil");
  EXPECT_EQ(Individual.FlattenedDNA()[0], Individual.DNA());
}

TEST_F(ProgramIndividualTest, OutsideAnyEngineThereIsNoTree) {
  const auto ExpectNoEngine = [](auto Call) {
    try {
      Call();
      FAIL() << "nothing raised";
    } catch (const EGPException& Error) {
      EXPECT_STREQ(Error.what(), "Missing Genetic Program Engine");
    }
  };
  TIndividual Alone;
  ExpectNoEngine([&] { Alone.DNA(); });
  ExpectNoEngine([&] { Alone.Execute(nullptr); });
  TPopulation Ownerless(nullptr);
  ExpectNoEngine([&] { Ownerless.Add().FlattenDNA(); });
  Alone.AssignDNA(Engine.Tree("c"));
  EXPECT_EQ(Alone.Execute(nullptr), 1.5);
}

TEST_F(ProgramIndividualTest, WithoutATreeItIsTheDefaultValue) {
  TIndividual& Individual = Add("(Neg x)");
  Individual.AssignDNA(nullptr);
  EXPECT_EQ(Individual.DNA(), nullptr);
  EXPECT_EQ(Individual.Execute(nullptr), 0);
  EXPECT_EQ(Individual.SelectNode(0.9), nullptr);
  EXPECT_EQ(Individual.SelectNode(0.9, {gpFunction}), nullptr);
  EXPECT_TRUE(Individual.FlattenedDNA().empty());
  Individual.SetName("Empty");
  EXPECT_EQ(Individual.ToString(), "Empty");
  TIndividual& Other = Add("x");
  Other.Assign(Individual);
  EXPECT_EQ(Other.DNA(), nullptr);
  Other.SetDNA(*Engine.Tree("(Neg y)"));
  EXPECT_EQ(Flat(Other), "Neg y");
  tests::TArithmeticEngine<Variant> Variants;
  TQXGPPopulation<Variant> VariantPopulation(&Variants);
  VariantPopulation.Add().AssignDNA(nullptr);
  EXPECT_TRUE(VariantPopulation[0].Execute(nullptr).IsEmpty());
}

TEST_F(ProgramIndividualTest, FlattensInPreOrder) {
  EXPECT_EQ(Flat(Add("(Add x (Mul y 2))")), "Add x Mul y c");
  EXPECT_EQ(Flat(Add("(Add (Add (Neg x) y) (Mul y 2 x y x) x)")), "Add Add Neg x y Mul y c x y x x");
}

TEST_F(ProgramIndividualTest, SetDNACopies) {
  TIndividual& Individual = Add("x");
  const TNode* const Root = Individual.DNA();
  const auto Source = Engine.Tree("(Add x y)");
  Individual.SetDNA(*Source);
  EXPECT_EQ(Individual.DNA(), Root);
  EXPECT_EQ(Flat(Individual), "Add x y");
  EXPECT_EQ(Source->ToString(), "(Add x y)");
  Individual.SetDNA(*Individual.DNA()->Children(1));
  EXPECT_EQ(Flat(Individual), "y");
  Individual.SetDNA(*Individual.DNA());
  EXPECT_EQ(Flat(Individual), "y");
}

TEST_F(ProgramIndividualTest, AssignDNATakesTheNodeItself) {
  TIndividual& Individual = Add("x");
  TPointer Tree = Engine.Tree("(Neg y)");
  const TNode* const Raw = Tree.get();
  Individual.AssignDNA(std::move(Tree));
  EXPECT_EQ(Individual.DNA(), Raw);
  EXPECT_EQ(Flat(Individual), "Neg y");
  Individual.AssignDNA(Individual.DNA()->Children(0)->SetParent(nullptr)); // as hoisting does
  EXPECT_EQ(Flat(Individual), "y");
}

TEST_F(ProgramIndividualTest, AssignCopiesTreeNameAndFitness) {
  TIndividual& Source = Add("(Neg y)");
  Source.SetName("Best");
  TIndividual& Target = Add("x");
  Target.Assign(Source);
  EXPECT_EQ(Target.ToString(), "Best: (Neg y)");
  EXPECT_NE(Target.DNA(), Source.DNA());
  Target.Assign(Target);
  EXPECT_EQ(Target.ToString(), "Best: (Neg y)");
}

TEST_F(ProgramIndividualTest, ToStringShowsNameAndProgram) {
  TIndividual& Individual = Add("(Add x c)");
  EXPECT_EQ(Individual.ToString(), "TQXGPIndividual<double>: (Add x 1.5)");
  Individual.SetName("Individual 3");
  EXPECT_EQ(Individual.ToString(), "Individual 3: (Add x 1.5)");
}

TEST_F(ProgramIndividualTest, ExecuteRunsTheProgram) {
  TIndividual& Individual = Add("(Add x (Mul y 2))");
  TQXGPContext<TGAFloat> Context;
  Context.Values().Add("x", 3);
  Context.Values().Add("y", 5);
  EXPECT_EQ(Individual.Execute(&Context), 13);
  TIndividual& Empty = Population.Add();
  try {
    Empty.Execute(&Context);
    FAIL() << "nothing raised";
  } catch (const EGPException& Error) {
    EXPECT_STREQ(Error.what(), "No instruction assigned to node");
  }
}

// --- Surgery -----------------------------------------------------------------------------------------------

TEST_F(ProgramIndividualTest, GraftMakesTheNewSubtreeTheLastChild) {
  TIndividual& Individual = Add("(Add x y 2)");
  const TNode* const First = Individual.DNA()->Children(0);
  const TPointer Former = Individual.Graft(*Individual.FlattenedDNA()[1], Engine.Tree("(Neg y)"));
  EXPECT_EQ(Former.get(), First);
  EXPECT_EQ(Former->Parent(), nullptr);
  EXPECT_EQ(Program(Individual), "(Add y 2 (Neg y))");
  EXPECT_EQ(Flat(Individual), "Add y c Neg y");
}

TEST_F(ProgramIndividualTest, GraftTakesTheFreeSlotOfABinaryNode) {
  Engine.Binary = true;
  TIndividual& Individual = Add("(Add x y)");
  static_cast<void>(Individual.Graft(*Individual.FlattenedDNA()[1], Engine.Tree("(Neg y)")));
  EXPECT_EQ(Program(Individual), "(Add (Neg y) y)");
}

TEST_F(ProgramIndividualTest, GraftOfTheRootReplacesTheTree) {
  TIndividual& Individual = Add("(Add x y)");
  const TPointer Former = Individual.Graft(*Individual.DNA(), Engine.Tree("(Neg y)"));
  EXPECT_EQ(Former->ToString(), "(Add x y)");
  EXPECT_EQ(Program(Individual), "(Neg y)");
  EXPECT_EQ(Flat(Individual), "Neg y");
}

TEST_F(ProgramIndividualTest, AGraftThatFailsChangesNothing) {
  TIndividual& Individual = Add("(Add x y)");
  const TIndividual& Other = Add("(Neg y)");
  TPointer New = Engine.Tree("c");
  EXPECT_THROW(static_cast<void>(Individual.Graft(*Other.FlattenedDNA()[1], std::move(New))),
               std::invalid_argument);
  EXPECT_THROW(static_cast<void>(Individual.Graft(*Engine.Tree("x"), std::move(New))), std::invalid_argument);
  EXPECT_THROW(static_cast<void>(Individual.Graft(*Individual.DNA(), nullptr)), std::invalid_argument);
  ASSERT_NE(New, nullptr);
  EXPECT_EQ(Program(Individual), "(Add x y)");
  Engine.Binary = true;
  TIndividual& Binary = Add("(Add x y)");
  EXPECT_THROW(static_cast<void>(Binary.Graft(*Binary.FlattenedDNA()[1], std::move(New))),
               std::invalid_argument); // n-ary
  ASSERT_NE(New, nullptr);
  EXPECT_EQ(Program(Binary), "(Add x y)");
  EXPECT_EQ(Binary.FlattenedDNA()[1], Binary.DNA()->Children(0));
}

TEST_F(ProgramIndividualTest, CrossoverSwapsSubtreesToTheLastPlaces) {
  TIndividual& Mother = Add("(Add (Neg x) y 2)");
  TIndividual& Father = Add("(Mul (Mul y 3) x)");
  TNode& Given = *Mother.FlattenedDNA()[1];
  TNode& Taken = *Father.FlattenedDNA()[1];
  Mother.Crossover(Given, Father, Taken);
  EXPECT_EQ(Program(Mother), "(Add y 2 (Mul y 3))");
  EXPECT_EQ(Program(Father), "(Mul x (Neg x))");
  EXPECT_EQ(Flat(Mother), "Add y c Mul y c");
  EXPECT_EQ(Flat(Father), "Mul x Neg x");
  EXPECT_EQ(Mother.DNA()->Children(2), &Taken);
  EXPECT_EQ(Father.DNA()->Children(1), &Given);
}

TEST_F(ProgramIndividualTest, CrossoverOfRootsExchangesTheTrees) {
  TIndividual& Mother = Add("(Neg x)");
  TIndividual& Father = Add("(Mul y 3)");
  Mother.Crossover(*Mother.DNA(), Father, *Father.DNA());
  EXPECT_EQ(Program(Mother), "(Mul y 3)");
  EXPECT_EQ(Program(Father), "(Neg x)");
  Mother.Crossover(*Mother.DNA(), Father, *Father.DNA()->Children(0));
  EXPECT_EQ(Program(Mother), "x");
  EXPECT_EQ(Program(Father), "(Neg (Mul y 3))");
  Mother.Crossover(*Mother.DNA(), Father, *Father.DNA());
  EXPECT_EQ(Program(Mother), "(Neg (Mul y 3))");
  Father.Crossover(*Father.DNA(), Mother, *Mother.DNA()->Children(0));
  EXPECT_EQ(Program(Father), "(Mul y 3)");
  EXPECT_EQ(Program(Mother), "(Neg x)");
}

TEST_F(ProgramIndividualTest, CrossoverWithItselfSwapsSubtreesThatLieApart) {
  TIndividual& Individual = Add("(Add (Neg x) (Mul y 3))");
  const auto& Nodes = Individual.FlattenedDNA();
  Individual.Crossover(*Nodes[2], Individual, *Nodes[4]);
  EXPECT_EQ(Program(Individual), "(Add (Neg y) (Mul 3 x))");
  EXPECT_THROW(Individual.Crossover(*Individual.DNA(), Individual, *Nodes[1]), std::invalid_argument);
  EXPECT_THROW(Individual.Crossover(*Nodes[2], Individual, *Nodes[1]), std::invalid_argument);
  EXPECT_EQ(Program(Individual), "(Add (Neg y) (Mul 3 x))");
  Individual.Crossover(*Nodes[1], Individual, *Nodes[3]); // the mate's has its new parent already
  EXPECT_EQ(Program(Individual), "(Add (Mul 3 x) (Neg y))");
}

TEST_F(ProgramIndividualTest, ACrossoverThatFailsLeavesBothAsTheyWere) {
  TIndividual& Nary = Add("(Add (Neg x) y)");
  Engine.Binary = true;
  TIndividual& Binary = Add("(Mul (Neg y) 3)");
  const std::vector<TNode*> NaryNodes = Nary.FlattenedDNA();
  const std::vector<TNode*> BinaryNodes = Binary.FlattenedDNA();
  EXPECT_THROW(Nary.Crossover(*NaryNodes[1], Binary, *BinaryNodes[1]), std::invalid_argument);
  EXPECT_THROW(Binary.Crossover(*BinaryNodes[1], Nary, *NaryNodes[1]), std::invalid_argument);
  EXPECT_THROW(Nary.Crossover(*NaryNodes[0], Binary, *BinaryNodes[1]), std::invalid_argument);
  EXPECT_THROW(Nary.Crossover(*BinaryNodes[0], Binary, *BinaryNodes[1]), std::invalid_argument);
  EXPECT_EQ(Program(Nary), "(Add (Neg x) y)");
  EXPECT_EQ(Program(Binary), "(Mul (Neg y) 3)");
  Nary.FlattenDNA();
  Binary.FlattenDNA();
  EXPECT_EQ(Nary.FlattenedDNA(), NaryNodes);
  EXPECT_EQ(Binary.FlattenedDNA(), BinaryNodes);
}

TEST_F(ProgramIndividualTest, AClaimToAnAttachedNodeMakesItTheRoot) {
  TIndividual& Individual = Add("(Add (Neg x) y)");
  Individual.AssignDNA(TPointer(Individual.DNA()->Children(0)));
  EXPECT_EQ(Program(Individual), "(Neg x)");
  EXPECT_EQ(Individual.DNA()->Parent(), nullptr);
  const TPointer Former = Individual.Graft(*Individual.DNA(), TPointer(Individual.DNA()->Children(0)));
  EXPECT_EQ(Former->ToString(), "Neg");
  EXPECT_EQ(Program(Individual), "x");
  EXPECT_EQ(Individual.DNA()->Parent(), nullptr);
}

TEST_F(ProgramIndividualTest, CrossoverOfANodeWithItselfMovesItToTheEnd) {
  TIndividual& Individual = Add("(Add x y)");
  Individual.Crossover(*Individual.FlattenedDNA()[1], Individual, *Individual.FlattenedDNA()[1]);
  EXPECT_EQ(Flat(Individual), "Add y x");
  Individual.Crossover(*Individual.DNA(), Individual, *Individual.DNA());
  EXPECT_EQ(Flat(Individual), "Add y x");
}

// A node whose way in or out raises on demand, before or after it has done its work.
class TStubborn : public TQXGPTreeNode<TGAFloat> {
public:
  using TQXGPTreeNode::AddChild;
  using TQXGPTreeNode::TQXGPTreeNode;
  TNode& AddChild(TPointer&& Node) override {
    TNode& Added = TQXGPTreeNode::AddChild(std::move(Node));
    if (RaisesAfterAdding) {
      throw std::runtime_error("added, but");
    }
    return Added;
  }
  TPointer ExtractChild(TNode& Node) override {
    if (RaisesBeforeExtracting) {
      throw std::runtime_error("not to be extracted");
    }
    return TQXGPTreeNode::ExtractChild(Node);
  }
  bool RaisesAfterAdding = false;
  bool RaisesBeforeExtracting = false;
};

class StubbornNodeTest : public ProgramIndividualTest {
protected:
  StubbornNodeTest() {
    auto Root = MakeNode<TStubborn>(&Engine.Instructions().GetItemByName("Add"));
    Stubborn = Root.get();
    Root->AddChild(Engine.Tree("(Neg x)"));
    Root->AddChild(Engine.Tree("y"));
    Own.AssignDNA(std::move(Root));
  }
  // The same nodes in the same places.
  void ExpectUnchanged() {
    EXPECT_EQ(Program(Own), "(Add (Neg x) y)");
    EXPECT_EQ(Program(Mate), "(Mul (Neg y) 3)");
    EXPECT_EQ(Flat(Own), "Add Neg x y");
    EXPECT_EQ(Flat(Mate), "Mul Neg y c");
  }

  TIndividual& Own = Population.Add();
  TIndividual& Mate = Add("(Mul (Neg y) 3)");
  TStubborn* Stubborn;
};

TEST_F(StubbornNodeTest, AGraftIsTakenBackWhenItsParentRaisesLate) {
  Stubborn->RaisesAfterAdding = true;
  TPointer New = Engine.Tree("c");
  EXPECT_THROW(static_cast<void>(Own.Graft(*Own.FlattenedDNA()[1], std::move(New))), std::runtime_error);
  EXPECT_NE(New, nullptr);
  ExpectUnchanged();
}

TEST_F(StubbornNodeTest, ACrossoverIsTakenBackWhereverItRaises) {
  Stubborn->RaisesAfterAdding = true;
  EXPECT_THROW(Own.Crossover(*Own.FlattenedDNA()[1], Own, *Own.FlattenedDNA()[3]), std::runtime_error);
  ExpectUnchanged();
  EXPECT_THROW(Own.Crossover(*Own.FlattenedDNA()[1], Mate, *Mate.FlattenedDNA()[1]), std::runtime_error);
  ExpectUnchanged();
  EXPECT_THROW(Mate.Crossover(*Mate.FlattenedDNA()[1], Own, *Own.FlattenedDNA()[1]), std::runtime_error);
  ExpectUnchanged();
  EXPECT_THROW(Mate.Crossover(*Mate.DNA(), Own, *Own.FlattenedDNA()[1]), std::runtime_error);
  ExpectUnchanged();
  Stubborn->RaisesAfterAdding = false;
  Stubborn->RaisesBeforeExtracting = true;
  EXPECT_THROW(Own.Crossover(*Own.FlattenedDNA()[1], Mate, *Mate.FlattenedDNA()[1]), std::runtime_error);
  ExpectUnchanged();
  EXPECT_THROW(Mate.Crossover(*Mate.FlattenedDNA()[1], Own, *Own.FlattenedDNA()[1]), std::runtime_error);
  ExpectUnchanged();
}

TEST_F(ProgramIndividualTest, CrossoverGoesThroughGraft) {
  class TCounting : public TIndividual {
  public:
    TPointer Graft(TNode& Node, TPointer&& NewNode) override {
      ++Grafts;
      return TIndividual::Graft(Node, std::move(NewNode));
    }
    int Grafts = 0;
  };
  TPopulation Counting(&Engine, ItemClassOf<TCounting>());
  auto& Mother = static_cast<TCounting&>(Counting.Add());
  auto& Father = static_cast<TCounting&>(Counting.Add());
  Mother.AssignDNA(Engine.Tree("(Neg x)"));
  Father.AssignDNA(Engine.Tree("(Neg y)"));
  Mother.Crossover(*Mother.DNA()->Children(0), Father, *Father.DNA()->Children(0));
  EXPECT_EQ(Program(Mother), "(Neg y)");
  EXPECT_EQ(Mother.Grafts, 1);
  EXPECT_EQ(Father.Grafts, 0);
}

// --- Fitness -----------------------------------------------------------------------------------------------

TEST(ProgramFitnessTest, EveryChangeThroughTheIndividualMakesItsFitnessStale) {
  tests::TTestEngine<TGAFloat, tests::TTestComponent> Component;
  Component.Function("Neg", 1);
  Component.Variable("x");
  TPopulation Population(&Component);
  int Evaluations = 0;
  Component.OnEvaluateFitness = [&](auto&, TQXIndividual&, double& Fitness) { Fitness = ++Evaluations; };
  TIndividual& First = Population.Add();
  TIndividual& Second = Population.Add();
  const auto ExpectStale = [&](TIndividual& Individual, auto Change) {
    static_cast<void>(First.Fitness());
    static_cast<void>(Second.Fitness());
    Change();
    EXPECT_TRUE(Individual.NeedFitness());
    const int Before = Evaluations;
    EXPECT_EQ(Individual.Fitness(), Before + 1);
    EXPECT_EQ(Individual.Fitness(), Before + 1);
  };
  const auto Tree = Component.Tree("(Neg (Neg x))");
  ExpectStale(First, [&] { First.SetDNA(*Tree); });
  ExpectStale(Second, [&] { Second.AssignDNA(Tree->Clone()); });
  ExpectStale(First, [&] { static_cast<void>(First.Graft(*First.FlattenedDNA()[1], Component.Tree("x"))); });
  ExpectStale(First, [&] { First.Crossover(*First.DNA(), Second, *Second.FlattenedDNA()[1]); });
  ExpectStale(Second, [&] { First.Crossover(*First.DNA(), Second, *Second.DNA()); });
  const TXMLDocument Document = TXMLDocument::New("Individual");
  First.SaveToXML(Document.Root());
  ExpectStale(Second, [&] { Second.LoadFromXML(Document.Root()); });
  ExpectStale(First, [&] { First.FlattenDNA(); });
  const int Before = Evaluations;
  Second.Assign(First); // comes with the fitness of its source
  EXPECT_EQ(Second.Fitness(), First.Fitness());
  EXPECT_EQ(Evaluations, Before);
}

TEST(ProgramFitnessTest, AnAssignWhoseSourceCannotBeEvaluatedChangesNothing) {
  tests::TTestEngine<TGAFloat, tests::TTestComponent> Component;
  Component.Variable("x");
  Component.Variable("y");
  TPopulation Population(&Component);
  Population.Add().AssignDNA(Component.Tree("x"));
  Population.Add().AssignDNA(Component.Tree("y"));
  Component.OnEvaluateFitness = [](auto&, TQXIndividual&, double&) { throw std::runtime_error("broken"); };
  EXPECT_THROW(Population[0].Assign(Population[1]), std::runtime_error);
  EXPECT_EQ(Population[0].DNA()->ToString(), "x");
}

// --- Documents ---------------------------------------------------------------------------------------------

TEST_F(ProgramIndividualTest, IsWrittenWithNameFitnessAndTree) {
  TIndividual& Individual = Add("(Neg 2.5)");
  Individual.SetName("Best");
  const TXMLDocument Document = TXMLDocument::New("Individual");
  Individual.SaveToXML(Document.Root());
  EXPECT_EQ(Document.Text(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                             "<Individual>\n"
                             "  <Name>Best</Name>\n"
                             "  <Fitness>0</Fitness>\n"
                             "  <DNA Instruction=\"Neg\">\n"
                             "    <Child Instruction=\"c\">\n"
                             "      <Value>2.5</Value>\n"
                             "    </Child>\n"
                             "  </DNA>\n"
                             "</Individual>\n");
  TIndividual& Read = Population.Add();
  Read.LoadFromXML(Document.Root());
  EXPECT_EQ(Read.ToString(), "Best: (Neg 2.5)");
  EXPECT_EQ(Flat(Read), "Neg c");
  EXPECT_TRUE(Read.NeedFitness());
}

TEST_F(ProgramIndividualTest, OtherElementsArePassedOver) {
  TIndividual& Individual = Add("x");
  const TXMLDocument Document = TXMLDocument::Parse("<Chromosome><Name>n</Name></Chromosome>");
  Individual.LoadFromXML(Document.Root());
  Individual.SaveToXML(Document.Root());
  EXPECT_EQ(Individual.Name(), "");
  EXPECT_EQ(Document.Root().ChildCount(), 1);
  Population.LoadFromXML(Document.Root());
  Population.SaveToXML(Document.Root());
  EXPECT_EQ(Population.Count(), 1);
  EXPECT_EQ(Document.Root().ChildCount(), 1);
}

TEST_F(ProgramIndividualTest, AFittestIndividualIsReadToo) {
  TIndividual& Individual = Population.Add();
  Individual.LoadFromXML(
      TXMLDocument::Parse("<FittestIndividual><DNA Instruction='X'/></FittestIndividual>").Root());
  EXPECT_EQ(Program(Individual), "x");
}

TEST_F(ProgramIndividualTest, AnUnknownInstructionKeepsTheNameAndAListOfLivingNodes) {
  for (const char* const Root : {"Sub", "Add"}) {
    TIndividual& Individual = Add("(Add (Neg x) y)");
    const auto Document =
        TXMLDocument::Parse("<Individual><Name>New</Name><DNA Instruction='" + std::string(Root) +
                            "'><Child Instruction='x'/><Child Instruction='Sub'/></DNA></Individual>");
    try {
      Individual.LoadFromXML(Document.Root());
      FAIL() << "nothing raised";
    } catch (const EGPException& Error) {
      EXPECT_STREQ(Error.what(), "Unknown instruction \"Sub\"");
    }
    EXPECT_EQ(Individual.Name(), "New");
    EXPECT_EQ(static_cast<int>(Individual.FlattenedDNA().size()), Individual.DNA()->Size());
    EXPECT_EQ(Individual.FlattenedDNA()[0], Individual.DNA());
  }
  TIndividual& Fresh = Population.Add();
  EXPECT_THROW(Fresh.LoadFromXML(TXMLDocument::Parse("<Individual/>").Root()), EGPException);
}

TEST_F(ProgramIndividualTest, WithoutARootNothingIsRead) {
  class TRootless : public TIndividual {
  protected:
    TPointer CreateDNA() override { return nullptr; }
  };
  TPopulation Rootless(&Engine, ItemClassOf<TRootless>());
  const TXMLDocument Document = TXMLDocument::Parse("<Individual><DNA Instruction='x'/></Individual>");
  EXPECT_THROW(Rootless.Add().LoadFromXML(Document.Root()), std::logic_error);
}

TEST_F(ProgramIndividualTest, APopulationComesBackAsItWas) {
  Add("(Add x y)").SetName("first");
  Add("x").SetName("second");
  const TXMLDocument Document = TXMLDocument::New("Population");
  Population.SaveToXML(Document.Root());
  TPopulation Read(&Engine);
  Read.Add().SetName("gone");
  Read.LoadFromXML(Document.Root());
  ASSERT_EQ(Read.Count(), 2);
  EXPECT_EQ(Read[0].ToString(), "first: (Add x y)");
  EXPECT_EQ(Read[1].ToString(), "second: x");
  Read.LoadFromXML(TXMLDocument::New("Population").Root());
  EXPECT_EQ(Read.Count(), 0);
}

TEST_F(ProgramIndividualTest, APopulationThatCannotBeReadKeepsItsMembers) {
  TIndividual& First = Add("(Add x y)");
  const auto Document = TXMLDocument::Parse("<Population><Individual><DNA Instruction='x'/></Individual>"
                                            "<Individual><DNA Instruction='Sub'/></Individual></Population>");
  EXPECT_THROW(Population.LoadFromXML(Document.Root()), EGPException);
  ASSERT_EQ(Population.Count(), 1);
  EXPECT_EQ(&Population[0], &First);
  EXPECT_EQ(Program(First), "(Add x y)");
}

TEST_F(ProgramIndividualTest, APopulationKnowsItsEngine) {
  EXPECT_EQ(Population.Engine(), &Engine);
  EXPECT_EQ(TPopulation(nullptr).Engine(), nullptr);
  TIndividual& Inserted = Population.Insert(0);
  EXPECT_EQ(Inserted.Collection(), &Population);
  EXPECT_EQ(Population.FindItemID(Inserted.ID()), &Inserted);
  TPopulation Other(&Engine);
  Inserted.SetCollection(Other);
  EXPECT_EQ(Inserted.Collection(), &Other);
}

} // namespace
} // namespace qx::generics
