#include <qx/genetic_programming/QXGenerics.GeneticProgramming.ipp>

#include <gtest/gtest.h>

#include <support/SmallPrograms.h>

namespace qx::generics {
namespace {

// Value types that the library does not have compiled.

TEST(OtherValueTypesTest, FloatProgramsRunAndReload) {
  tests::TArithmeticEngine<float> Engine;
  TQXGPPopulation<float> Population(&Engine);
  TQXGPIndividual<float>& Individual = Population.Add();
  Individual.AssignDNA(Engine.Tree("(Add x (Mul 0.5 (Neg y)))"));
  TQXGPContext<float> Context;
  Context.Values().Add("x", 1);
  Context.Values().Add("y", 3);
  EXPECT_EQ(Individual.Execute(&Context), -0.5F);
  const TXMLDocument Document = TXMLDocument::New("Population");
  Population.SaveToXML(Document.Root());
  Population.LoadFromXML(Document.Root());
  EXPECT_EQ(Population[0].Execute(&Context), -0.5F);
}

TEST(OtherValueTypesTest, BooleanProgramsRunOverBinaryTrees) {
  tests::TTestEngine<bool> Engine;
  Engine.Binary = true;
  Engine.Function("And", 2).OnExecute = [](auto&, auto& Node, auto* Context, bool& Result) {
    Result = Node.ExecuteChild(0, Context) && Node.ExecuteChild(1, Context);
  };
  Engine.Function("Not", 1).OnExecute = [](auto&, auto& Node, auto* Context, bool& Result) {
    Result = !Node.ExecuteChild(0, Context);
  };
  Engine.Variable("a");
  Engine.Constant("t", true);
  TQXGPContext<bool> Context;
  Context.Values().Add("a", false);
  EXPECT_FALSE(Engine.Tree("a")->Execute(&Context));
  EXPECT_TRUE(Engine.Tree("(And t (Not a))")->Execute(&Context));
  EXPECT_FALSE(Engine.Tree("(And a t)")->Execute(&Context));
}

} // namespace
} // namespace qx::generics
