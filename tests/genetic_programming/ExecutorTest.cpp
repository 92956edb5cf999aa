#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <support/SmallGeneticProgram.h>
#include <vector>

namespace qx {
namespace {

using tests::TArithmeticProgramming;

TEST(ExecutorTest, RunsAProgramWhenItsEvolutionIsGone) {
  TQXGeneticProgrammingExecutor Executor;
  {
    TArithmeticProgramming<> Component;
    Executor.Instructions().AssignAll(Component.Instructions());
    Executor.SetGPProgram(*Component.Add("(Add (Mul x x) 2)").DNA());
  }
  TQXGPFloatContext Context;
  Context.Values().AddOrSetValue("x", 3);
  EXPECT_EQ(Executor.Execute(&Context), 11);
  EXPECT_EQ(Executor.GPProgram()->ToString(), "(Add (Mul x x) 2)");
  Executor.GPProgram()->ForEach(
      [&](auto& Node) { EXPECT_EQ(Node.Instruction()->Collection(), &Executor.Instructions()); });
}

TEST(ExecutorTest, RunsVariantPrograms) {
  TQXGeneticProgrammingVariantExecutor Executor;
  AddStandardInstruction(Executor.Instructions(), "And");
  Executor.Instructions().Add().SetName("a");
  Executor.SetGPProgram(*tests::ReadTree<Variant>(Executor, "(And a a)"));
  TQXGPVariantContext Context;
  Context.Values().AddOrSetValue("a", true);
  EXPECT_EQ(Executor.Execute(&Context), Variant(true));
}

TEST(ExecutorTest, WithoutAProgramTheResultIsTheDefaultValue) {
  EXPECT_EQ(TQXGeneticProgrammingExecutor().Execute(nullptr), 0);
  EXPECT_TRUE(TQXGeneticProgrammingVariantExecutor().Execute(nullptr).IsEmpty());
  EXPECT_EQ(TQXGeneticProgrammingExecutor().GPProgram(), nullptr);
}

TEST(ExecutorTest, AProgramThatRunsCannotBeReplaced) {
  TQXGeneticProgrammingExecutor Executor;
  std::function<void()> Act;
  auto& Function = Executor.Instructions().Add();
  Function.SetName("Act");
  Function.SetArity(1);
  Function.OnExecute = [&](auto&, auto&, auto*, double& Result) {
    Act();
    Result = 1;
  };
  Executor.Instructions().Add().SetName("x");
  const auto Tree = tests::ReadTree<TGAFloat>(Executor, "(Act x)");
  Executor.SetGPProgram(*Tree);
  const TQXGeneticProgrammingExecutor Other;
  const std::vector<std::function<void()>> Acts = {
      [&] { Executor.SetGPProgram(*Tree); }, [&] { Executor.Instructions().Clear(); },
      [&] { Executor.Instructions().Add(); }, [&] { Executor.Assign(Other); },
      [&] {
        Executor.SetGPProgramLines(Executor.GPProgramLines());
        Executor.Parse();
      }};
  for (const auto& Wanted : Acts) {
    Act = Wanted;
    EXPECT_THROW(Executor.Execute(nullptr), std::logic_error);
  }
  Act = [] {};
  EXPECT_EQ(Executor.Execute(nullptr), 1);
  EXPECT_NO_THROW(Executor.SetGPProgram(*Tree));
}

TEST(ExecutorTest, AProgramOfInstructionsThatItDoesNotHaveIsRefused) {
  TArithmeticProgramming<> Component;
  TQXGeneticProgrammingExecutor Executor;
  Executor.Instructions().Add().SetName("x");
  Executor.SetGPProgram(*Component.Add("x").DNA());
  try {
    Executor.SetGPProgram(*Component.Add("(Neg x)").DNA());
    ADD_FAILURE() << "nothing was raised";
  } catch (const EGPException& Error) {
    EXPECT_STREQ(Error.what(), "Unknown instruction \"Neg\"");
  }
  EXPECT_EQ(Executor.GPProgram()->ToString(), "x");
}

TEST(ExecutorTest, ChangesOfTheInstructionsLeaveTheProgram) {
  TQXGeneticProgrammingExecutor Executor;
  AddStandardInstruction(Executor.Instructions(), "Neg");
  Executor.Instructions().Add().SetName("x");
  Executor.SetGPProgram(*tests::ReadTree<TGAFloat>(Executor, "(Neg x)"));
  Executor.Instructions()[1].SetName("y");
  Executor.Instructions().Add().SetName("x");
  EXPECT_EQ(Executor.GPProgram()->ToString(), "(Neg y)");
  Executor.Instructions().Delete(1);
  EXPECT_EQ(Executor.GPProgram()->ToString(), "(Neg nil)");
  try {
    Executor.Execute(nullptr);
    ADD_FAILURE() << "nothing was raised";
  } catch (const EGPException& Error) {
    EXPECT_STREQ(Error.what(), "No instruction assigned to node");
  }
}

TEST(ExecutorTest, ACopyIsWhole) {
  TQXGeneticProgrammingExecutor Copy;
  {
    TQXGeneticProgrammingExecutor Source;
    AddStandardInstruction(Source.Instructions(), "Neg");
    auto& Two = Source.Instructions().Add();
    Two.SetName("two");
    Two.SetOperation(gpConstant);
    Two.SetValue(2);
    Source.SetGPProgram(*tests::ReadTree<TGAFloat>(Source, "(Neg two)"));
    Copy.Assign(Source);
  }
  EXPECT_EQ(Copy.Execute(nullptr), -2);
  Copy.Assign(TQXGeneticProgrammingExecutor());
  EXPECT_EQ(Copy.GPProgram(), nullptr);
  EXPECT_EQ(Copy.Instructions().Count(), 0);
}

TEST(ExecutorTest, ItsOwnProgramMayBeGivenAgain) {
  TQXGeneticProgrammingExecutor Executor;
  AddStandardInstruction(Executor.Instructions(), "Neg");
  Executor.Instructions().Add().SetName("x");
  Executor.SetGPProgram(*tests::ReadTree<TGAFloat>(Executor, "(Neg (Neg x))"));
  Executor.SetGPProgram(*Executor.GPProgram()->Children(0));
  EXPECT_EQ(Executor.GPProgram()->ToString(), "(Neg x)");
}

} // namespace
} // namespace qx
