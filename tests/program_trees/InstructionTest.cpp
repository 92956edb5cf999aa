#include <qx/genetic_programming/GPFloat.h>
#include <qx/genetic_programming/StandardInstructions.h>
#include <qx/program_trees/QXGPDomainXML.h>
#include <qx/program_trees/QXGenerics.GeneticProgramEngine.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <support/SmallPrograms.h>

namespace qx::generics {
namespace {

using tests::TArithmeticEngine;
using tests::TTestEngine;
using TInstruction = TQXGPInstruction<TGAFloat>;
using TInstructions = TQXGPInstructions<TGAFloat>;

template <class TCall>
std::string MessageOf(TCall Call) {
  try {
    Call();
  } catch (const EGPException& Error) {
    return Error.what();
  }
  return "no EGPException";
}

TEST(InstructionTest, IsAVariableWithoutNameAtFirst) {
  const TInstruction Instruction;
  EXPECT_EQ(Instruction.Operation(), gpVariable);
  EXPECT_EQ(Instruction.Arity(), 0);
  EXPECT_EQ(Instruction.Value(), 0);
  EXPECT_EQ(Instruction.Name(), "");
  EXPECT_EQ(Instruction.DisplayName(), "TQXGPInstruction<double>");
  EXPECT_EQ(Instruction.Collection(), nullptr);
  EXPECT_EQ(Instruction.Engine(), nullptr);
}

TEST(InstructionTest, ANegativeArityIsZeroAndLeavesTheOperation) {
  TInstruction Instruction;
  Instruction.SetOperation(gpFunction);
  Instruction.SetArity(2);
  Instruction.SetArity(-5);
  EXPECT_EQ(Instruction.Arity(), 0);
  EXPECT_EQ(Instruction.Operation(), gpFunction);
}

TEST(InstructionTest, APositiveArityMakesAFunction) {
  TInstruction Instruction;
  Instruction.SetArity(3);
  EXPECT_EQ(Instruction.Operation(), gpFunction);
  EXPECT_EQ(Instruction.Arity(), 3);
}

TEST(InstructionTest, AConstantOrVariableHasNoArity) {
  TInstruction Instruction;
  Instruction.SetArity(2);
  Instruction.SetOperation(gpConstant);
  EXPECT_EQ(Instruction.Arity(), 0);
  Instruction.SetArity(2);
  Instruction.SetOperation(gpVariable);
  EXPECT_EQ(Instruction.Arity(), 0);
}

TEST(InstructionTest, AnOperationThatIsNoneRaises) {
  TInstruction Instruction;
  EXPECT_THROW(Instruction.SetOperation(static_cast<TGPGeneticInstruction>(9)), std::out_of_range);
  EXPECT_EQ(Instruction.Operation(), gpVariable);
}

TEST(InstructionTest, TheEngineLimitsTheArity) {
  TTestEngine<TGAFloat> Engine;
  TInstruction& Instruction = Engine.Instructions().Add();
  Instruction.SetArity(1000);
  EXPECT_EQ(Instruction.Arity(), 1000);
  Engine.LargestArity = 2;
  Instruction.SetArity(7);
  EXPECT_EQ(Instruction.Arity(), 2);
  TInstructions Alone(nullptr);
  Alone.Add().SetArity(1000000);
  EXPECT_EQ(Alone[0].Arity(), 1000000);
}

TEST(InstructionTest, RenamingToATakenNameRaisesAndKeepsTheOldOne) {
  TInstructions Set(nullptr);
  Set.Add().SetName("x");
  Set.Add().SetName("y");
  EXPECT_EQ(MessageOf([&] { Set[1].SetName("X"); }), "instruction name must be unique");
  EXPECT_EQ(Set[1].Name(), "y");
}

TEST(InstructionTest, RenamingToAnotherLetterCaseRaises) {
  TInstructions Set(nullptr);
  Set.Add().SetName("x");
  EXPECT_EQ(MessageOf([&] { Set[0].SetName("X"); }), "instruction name must be unique");
  EXPECT_EQ(Set[0].Name(), "x");
  EXPECT_NO_THROW(Set[0].SetName("x"));
  TInstruction Alone;
  Alone.SetName("x");
  Alone.SetName("X");
  EXPECT_EQ(Alone.Name(), "X");
}

TEST(InstructionTest, ToStringNamesCommentAndOperation) {
  TInstruction Instruction;
  Instruction.SetName("Add");
  Instruction.SetComment("sum");
  Instruction.SetArity(2);
  EXPECT_EQ(Instruction.ToString(), "Add 'sum' gpFunction");
}

TEST(InstructionTest, InitializeCallsTheEvent) {
  TInstruction Instruction;
  Instruction.Initialize();
  const TInstruction* Sender = nullptr;
  Instruction.OnInitialize = [&](TInstruction& Caller) { Sender = &Caller; };
  Instruction.Initialize();
  EXPECT_EQ(Sender, &Instruction);
}

TEST(InstructionTest, AssignCopiesPlainlyAndNoEvents) {
  TInstructions Set(nullptr);
  TInstruction& First = Set.Add();
  First.SetName("Add");
  First.SetComment("sum");
  First.SetArity(2);
  First.SetValue(7);
  First.OnInitialize = [](auto&) {};
  TInstruction& Second = Set.Add();
  Second.Assign(First); // the name is taken and comes all the same
  EXPECT_EQ(Second.Name(), "Add");
  EXPECT_EQ(Second.Comment(), "sum");
  EXPECT_EQ(Second.Arity(), 2);
  EXPECT_EQ(Second.Operation(), gpFunction);
  EXPECT_EQ(Second.Value(), 7);
  EXPECT_FALSE(Second.OnInitialize);
  Second.AssignEvents(First);
  EXPECT_TRUE(Second.OnInitialize);
  EXPECT_FALSE(Second.OnExecute);
  Second.AssignEvents(Set);
  EXPECT_TRUE(Second.OnInitialize);
  EXPECT_THROW(Second.Assign(Set), std::invalid_argument);
}

TEST(InstructionTest, OnExecuteSeesTheBuiltInResultAndMayReplaceIt) {
  TArithmeticEngine Engine;
  TQXGPContext<TGAFloat> Context;
  Context.Values().Add("x", 3);
  TInstruction& X = Engine.Instructions().GetItemByName("x");
  const auto Node = Engine.Tree("x");
  X.OnExecute = [&](TInstruction& Sender, TQXGPNode<TGAFloat>& Evaluated, TQXGPContext<TGAFloat>* Given,
                    double& Result) {
    EXPECT_EQ(&Sender, &X);
    EXPECT_EQ(&Evaluated, Node.get());
    EXPECT_EQ(Given, &Context);
    Result = Result * 10 + 1;
  };
  EXPECT_EQ(Node->Execute(&Context), 31);
}

TEST(InstructionTest, FewerChildrenThanArgumentsRaise) {
  TArithmeticEngine Engine;
  const auto Node = Engine.Tree("(Add x)");
  TQXGPContext<TGAFloat> Context;
  EXPECT_EQ(MessageOf([&] { Node->Execute(&Context); }),
            "Invalid number of arguments (1) for \"Add\" instruction");
}

TEST(InstructionTest, MoreChildrenThanArgumentsAreEvaluated) {
  TArithmeticEngine Engine;
  TQXGPContext<TGAFloat> Context;
  Context.Values().Add("x", 3);
  EXPECT_EQ(Engine.Tree("(Add x x x)")->Execute(&Context), 6);
}

TEST(InstructionTest, AVariableThatTheContextLacksIsTheDefaultValue) {
  TArithmeticEngine Engine;
  TQXGPContext<TGAFloat> Context;
  EXPECT_EQ(Engine.Tree("x")->Execute(&Context), 0);
  TArithmeticEngine<Variant> Variants;
  TQXGPContext<Variant> VariantContext;
  EXPECT_TRUE(Variants.Tree("x")->Execute(&VariantContext).IsEmpty());
}

TEST(InstructionTest, AVariableWithoutContextIsAClearError) {
  TArithmeticEngine Engine;
  try {
    Engine.Tree("x")->Execute(nullptr);
    FAIL() << "nothing raised";
  } catch (const std::invalid_argument& Error) {
    EXPECT_STREQ(Error.what(), "The variable \"x\" has no context to take its value from");
  }
  EXPECT_EQ(Engine.Tree("(Neg c)")->Execute(nullptr), -1.5);
}

TEST(InstructionTest, KeysOfAContextDifferByCase) {
  TArithmeticEngine Engine;
  TQXGPContext<TGAFloat> Context;
  Context.Values().Add("X", 3);
  EXPECT_EQ(Engine.Tree("x")->Execute(&Context), 0);
}

TEST(InstructionTest, AVariableFollowsTheContextThroughEveryChange) {
  TArithmeticEngine Engine;
  TQXGPContext<TGAFloat> First;
  TQXGPContext<TGAFloat> Second;
  const auto Node = Engine.Tree("x");
  First.Values().Add("x", 1);
  Second.Values().Add("y", 7);
  Second.Values().Add("x", 2);
  EXPECT_EQ(Node->Execute(&First), 1);
  EXPECT_EQ(Node->Execute(&Second), 2);
  First.Values().SetItems("x", 3);
  EXPECT_EQ(Node->Execute(&First), 3);
  for (int I = 0; I < 100; ++I) {
    First.Values().Add("v" + std::to_string(I), I);
    EXPECT_EQ(Node->Execute(&First), 3);
  }
  First.Values().Remove("x");
  EXPECT_EQ(Node->Execute(&First), 0);
  First.Values().Add("x", 5);
  EXPECT_EQ(Node->Execute(&First), 5);
  Engine.Instructions().GetItemByName("x").SetName("v7");
  EXPECT_EQ(Node->Execute(&First), 7);
  First.Values().Clear();
  EXPECT_EQ(Node->Execute(&First), 0);
  First.SetValues(Second.Values());
  EXPECT_EQ(Node->Execute(&First), 0);
  Engine.Instructions().GetItemByName("v7").SetName("x");
  EXPECT_EQ(Node->Execute(&First), 2);
}

double SumOfArguments(TQXGPNode<TGAFloat>& Node, TQXGPContext<TGAFloat>* Context) {
  return Node.ExecuteChild(0, Context) + Node.ExecuteChild(1, Context);
}
double ProductOfArguments(TQXGPNode<TGAFloat>& Node, TQXGPContext<TGAFloat>* Context) {
  return Node.ExecuteChild(0, Context) * Node.ExecuteChild(1, Context);
}

TEST(InstructionTest, EachEvaluationTakesTheHandlerOfThatMoment) {
  TArithmeticEngine Engine;
  TQXGPContext<TGAFloat> Context;
  Context.Values().Add("x", 3);
  const auto Node = Engine.Tree("(Add x c)");
  TInstruction& Add = Engine.Instructions().GetItemByName("Add");
  const auto Twice = [&] { return Node->Execute(&Context) + Node->Execute(&Context); };
  Add.OnExecute = TQXGPOperation<TGAFloat>{&SumOfArguments};
  EXPECT_EQ(Twice(), 9);
  Add.OnExecute = TQXGPOperation<TGAFloat>{&ProductOfArguments};
  EXPECT_EQ(Twice(), 9);
  Add.OnExecute = [](auto&, auto&, auto*, double& Result) { Result = 7; };
  EXPECT_EQ(Twice(), 14);
  Add.OnExecute = nullptr;
  EXPECT_EQ(Twice(), 0);
  Engine.Instructions().GetItemByName("x").OnExecute = [](auto&, auto&, auto*, double& Result) { ++Result; };
  Engine.Instructions().GetItemByName("c").OnExecute =
      TQXGPOperation<TGAFloat>{[](auto&, auto*) { return 2.0; }};
  Add.OnExecute = TQXGPOperation<TGAFloat>{&SumOfArguments};
  EXPECT_EQ(Twice(), 12);
}

TEST(InstructionTest, EachEvaluationTakesTheKindAndTheArityOfThatMoment) {
  TArithmeticEngine Engine;
  TQXGPContext<TGAFloat> Context;
  Context.Values().Add("x", 3);
  const auto Node = Engine.Tree("(Add x c)");
  TInstruction& Add = Engine.Instructions().GetItemByName("Add");
  Add.OnExecute = TQXGPOperation<TGAFloat>{&SumOfArguments};
  EXPECT_EQ(Node->Execute(&Context), 4.5);
  EXPECT_EQ(Node->Execute(&Context), 4.5);
  Add.SetArity(3);
  EXPECT_EQ(MessageOf([&] { Node->Execute(&Context); }),
            "Invalid number of arguments (2) for \"Add\" instruction");
  Add.SetArity(2);
  EXPECT_EQ(Node->Execute(&Context), 4.5);
  Engine.Instructions().GetItemByName("x").SetOperation(gpConstant);
  EXPECT_EQ(Node->Execute(&Context), 1.5);
  Add.OnExecute = nullptr;
  Add.SetOperation(gpConstant);
  Node->SetValue(8);
  EXPECT_EQ(Node->Execute(&Context), 8);
}

TEST(InstructionTest, AFunctionOfTheHostsIsNotCalledWithoutItsArguments) {
  TArithmeticEngine Engine;
  TInstruction& Add = Engine.Instructions().GetItemByName("Add");
  Add.OnExecute = TQXGPOperation<TGAFloat>{&SumOfArguments};
  EXPECT_EQ(Engine.Tree("(Add c c)")->Execute(nullptr), 3);
  const auto Short = Engine.Tree("(Add c)");
  for (int I = 0; I < 2; ++I) {
    EXPECT_EQ(MessageOf([&] { Short->Execute(nullptr); }),
              "Invalid number of arguments (1) for \"Add\" instruction");
  }
  TQXGPFloatInstructions Set(nullptr);
  TInstruction& Sum = AddStandardInstruction(Set, "Add");
  const auto Binary = MakeNode<TQXGPBinaryNode<TGAFloat>>(&Sum); // two places, the first of them free
  Binary->AttachChild(1, MakeNode<TQXGPBinaryNode<TGAFloat>>(&Sum));
  EXPECT_EQ(MessageOf([&] { Binary->Execute(nullptr); }),
            "Invalid number of arguments (1) for \"Add\" instruction");
}

TEST(InstructionTest, APlainFunctionIsStoredAsItIsThroughATypedEvent) {
  TQXGPFloatInstructions Set(nullptr);
  TQXGPFloatInstruction& Sum = Set.Add();
  Sum.OnExecute = TQXGPOperation<TGAFloat>{&SumOfArguments};
  const auto* const Stored = Sum.OnExecute.Slot().Target<TQXGPOperation<TGAFloat>>();
  ASSERT_NE(Stored, nullptr);
  EXPECT_EQ(Stored->Function, &SumOfArguments);
}

TEST(InstructionTest, AnOverrideOfTheEvaluationIsCalledEachTime) {
  class TCounting : public TInstruction {
  public:
    int Executed = 0;
    int Done = 0;
    double Execute(TQXGPNode<TGAFloat>& Node, TQXGPContext<TGAFloat>* Context) override {
      ++Executed;
      return TInstruction::Execute(Node, Context);
    }

  protected:
    double DoExecute(TQXGPNode<TGAFloat>& Node, TQXGPContext<TGAFloat>* Context) override {
      ++Done;
      return TInstruction::DoExecute(Node, Context);
    }
  };
  TCounting Instruction;
  Instruction.SetOperation(gpConstant);
  const auto Node = MakeNode<TQXGPTreeNode<TGAFloat>>(&Instruction);
  Node->SetValue(2);
  EXPECT_EQ(Node->Execute(nullptr) + Node->Execute(nullptr) + Node->Execute(nullptr), 6);
  EXPECT_EQ(Instruction.Executed, 3);
  EXPECT_EQ(Instruction.Done, 3);
}

TEST(InstructionTest, AConstantIsTheNodesValue) {
  TArithmeticEngine Engine;
  const auto Node = Engine.Tree("c");
  EXPECT_EQ(Node->Execute(nullptr), 1.5);
  Node->SetValue(4);
  EXPECT_EQ(Node->Execute(nullptr), 4);
  EXPECT_EQ(Node->Instruction()->Value(), 1.5);
}

TEST(InstructionTest, ReadsEachKindOfElement) {
  const TXMLGPInstructions Element(TXMLDocument::Parse("<Instructions>"
                                                       "<Function Name='F' Comment='f' Arity='2'/>"
                                                       "<Function Name='G' Arity='0'/>"
                                                       "<Variable Name='V'/>"
                                                       "<Constant Name='C'><Value>1</Value></Constant>"
                                                       "</Instructions>")
                                       .Root());
  TInstruction Function;
  Function.LoadFromXML(Element.Function()[0]);
  EXPECT_EQ(Function.ToString(), "F 'f' gpFunction");
  EXPECT_EQ(Function.Arity(), 2);
  TInstruction NoArguments;
  NoArguments.LoadFromXML(Element.Function()[1]);
  EXPECT_EQ(NoArguments.ToString(), "G '' gpFunction");
  EXPECT_EQ(NoArguments.Arity(), 0);
  TInstruction Variable;
  Variable.LoadFromXML(Element.Variable()[0]);
  EXPECT_EQ(Variable.ToString(), "V '' gpVariable");
  TInstruction Constant;
  Constant.LoadFromXML(Element.Constant()[0]);
  EXPECT_EQ(Constant.ToString(), "C '' gpConstant");
  EXPECT_EQ(Constant.Value(), 0); // kinds with a text of their values read it
}

TEST(InstructionTest, AnotherKindIsReadAsAChangeButNotAsOneOfKind) {
  TArithmeticEngine Engine;
  TInstruction& Add = Engine.Instructions().GetItemByName("Add");
  Add.LoadFromXML(TXMLInstructionType(TXMLDocument::Parse("<Variable Name='Add'/>").Root()));
  EXPECT_EQ(Add.Operation(), gpVariable);
  EXPECT_EQ(Add.Arity(), 2); // stored past what ties it to the kind
  EXPECT_EQ(Engine.TakeLog(), "update Add; ");
}

TEST(InstructionTest, ABadArityIsRefusedBeforeAnythingChanges) {
  for (const char* const Arity : {"256", "-1", "two", "2.5"}) {
    TInstruction Instruction;
    Instruction.SetName("Old");
    const auto Document =
        TXMLDocument::Parse("<Function Name='New' Comment='c' Arity='" + std::string(Arity) + "'/>");
    EXPECT_THROW(Instruction.LoadFromXML(TXMLInstructionType(Document.Root())), EXMLError) << Arity;
    EXPECT_EQ(Instruction.ToString(), "Old '' gpVariable");
  }
}

TEST(InstructionTest, AnArityThatNoDocumentHoldsIsNotWritten) {
  TInstruction Instruction;
  Instruction.SetName("Sum");
  Instruction.SetArity(256);
  try {
    Instruction.SaveToXML(TXMLGPInstructions(TXMLDocument::New("Instructions").Root()));
    FAIL() << "nothing raised";
  } catch (const std::out_of_range& Error) {
    EXPECT_STREQ(Error.what(),
                 "The function \"Sum\" takes 256 arguments; a document holds an arity from 0 to 255");
  }
}

TEST(ContextTest, AssignCopiesTheValues) {
  TQXGPContext<TGAFloat> Source;
  Source.Values().Add("x", 1);
  TQXGPContext<TGAFloat> Copy;
  Copy.Values().Add("old", 1);
  Copy.Assign(Source);
  EXPECT_EQ(Copy.Values().Count(), 1);
  EXPECT_EQ(Copy.Values()["x"], 1);
  Copy.Values().SetItems("x", 2);
  EXPECT_EQ(Source.Values()["x"], 1);
  EXPECT_THROW(Copy.Assign(TInstruction()), std::invalid_argument);
  EXPECT_EQ(TQXGPContext<TGAFloat>().Values().Capacity(), 0);
}

} // namespace
} // namespace qx::generics
