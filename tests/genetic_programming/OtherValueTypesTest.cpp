#include <qx/genetic_programming/QXGenerics.GeneticProgramming.ipp>
#include <qx/platform/Filer.h>

#include <gtest/gtest.h>

#include <sstream>
#include <support/SmallPrograms.h>
#include <support/Streams.h>

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

template <class T>
std::unique_ptr<TQXCustomGeneticProgramming<T>> MakeProgramming() {
  auto Programming = std::make_unique<TQXCustomGeneticProgramming<T>>();
  Programming->Instructions().Add().SetName("v");
  Programming->Instructions().Add().SetArity(1);
  Programming->OnEvaluateFitness = [](auto&, auto& Item, double& Fitness) {
    Fitness = dynamic_cast<TQXGPIndividual<T>&>(Item).DNA()->Size();
  };
  Programming->SetInitialPopulation(2);
  Programming->SetInitialDuplicatesRetries(0);
  Programming->Evolve(2);
  return Programming;
}

TEST(OtherValueTypesTest, SingleProgramsHaveCheckpoints) {
  const auto Programming = MakeProgramming<float>();
  Programming->Population()[0].DNA()->SetValue(0.1F);
  const std::string Text = tests::CheckpointOf(*Programming);
  const auto Other = MakeProgramming<float>();
  tests::LoadCheckpoint(*Other, Text);
  EXPECT_EQ(tests::CheckpointOf(*Other), Text);
  EXPECT_EQ(Other->Population()[0].DNA()->Value(), 0.1F);
}

struct TPoint {
  double X = 0;
};

TEST(OtherValueTypesTest, ValuesWithoutTextAreInNoCheckpoint) {
  const auto Programming = MakeProgramming<TPoint>();
  EXPECT_THROW(tests::CheckpointOf(*Programming), std::logic_error);
  EXPECT_THROW(Programming->Population()[0].DNA()->StateText(), std::logic_error);
  TQXCustomGeneticProgramming<TPoint> Unused;
  Unused.Instructions().Add().SetValue({5});
  EXPECT_THROW(tests::CheckpointOf(Unused), std::logic_error);
  std::ostringstream Stream;
  WriteComponent(Stream, *Programming); // as far as it goes: the instructions
  EXPECT_NE(Stream.str().find("Name = \"v\""), std::string::npos);
  EXPECT_EQ(Stream.str().find("Program = "), std::string::npos);
}

} // namespace
} // namespace qx::generics
