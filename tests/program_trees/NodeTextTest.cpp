// Trees as lines of component streams and checkpoints.

#include <qx/genetic_programming/QXGenerics.GeneticProgramming.h>
#include <qx/platform/PropertyText.h>

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <support/SmallPrograms.h>

namespace qx::generics {
namespace {

// The tree of a text, and its own text again.
template <class TEngine>
std::string Again(const std::string& Text, TEngine& Engine) {
  return std::decay_t<decltype(*Engine.Tree("x"))>::FromStateText(Text, Engine)->StateText();
}

TEST(NodeTextTest, NamesInstructionsAndValuesThatAreNotTheirs) {
  tests::TArithmeticEngine Engine;
  auto Tree = Engine.Tree("(Add x (Neg c))");
  EXPECT_EQ(Tree->StateText(), R"("Add"("x" "Neg"("c")))");
  Tree->Children(1)->Children(0)->SetValue(-2.5);
  Tree->Children(0)->SetValue(7); // of a variable, and all the same kept
  EXPECT_EQ(Tree->StateText(), R"("Add"("x"=7 "Neg"("c"=-2.5)))");
  EXPECT_EQ(Again(Tree->StateText(), Engine), Tree->StateText());
}

TEST(NodeTextTest, NodesMayHaveNoInstructionOrOneWithoutName) {
  tests::TArithmeticEngine Engine;
  auto& Unnamed = Engine.Instructions().Add();
  Engine.Function("a \"quoted\"\nname (", 1);
  auto Tree = Engine.CreateNode(&Engine.Instructions().GetItemByName("a \"quoted\"\nname ("));
  Tree->AddChild(Engine.CreateNode(nullptr)).AddChild(Engine.CreateNode(&Unnamed));
  const std::string Text = R"("a \"quoted\"\nname ("(?(#6)))";
  EXPECT_EQ(Tree->StateText(), Text);
  EXPECT_EQ(Again(Text, Engine), Text);
  EXPECT_EQ(TQXGPNode<TGAFloat>::FromStateText("#6", Engine)->Instruction(), &Unnamed);
}

TEST(NodeTextTest, FreeSlotsOfBinaryNodesStayFree) {
  tests::TArithmeticEngine Engine;
  Engine.Binary = true;
  auto Tree = Engine.Tree("(Add x (Mul y c))");
  static_cast<void>(Tree->ExtractChild(*Tree->Children(0)));
  static_cast<void>(Tree->Children(1)->ExtractChild(*Tree->Children(1)->Children(1)));
  const std::string Text = R"("Add"(- "Mul"("y" -)))";
  EXPECT_EQ(Tree->StateText(), Text);
  const auto Read = TQXGPNode<TGAFloat>::FromStateText(Text, Engine);
  EXPECT_EQ(Read->StateText(), Text);
  EXPECT_EQ(Read->Children(0), nullptr);
  EXPECT_EQ(Read->Size(), 3);
  EXPECT_THROW(Again(R"("Add"("x" "x" "x"))", Engine), std::invalid_argument);
}

TEST(NodeTextTest, EveryValueComesBackToTheLastBit) {
  tests::TArithmeticEngine Engine;
  auto Node = Engine.Tree("c");
  using TLimits = std::numeric_limits<double>;
  for (const double Value : {0.1 + 0.2, -0.0, 5e-324, TLimits::max(), TLimits::infinity(),
                             -TLimits::infinity(), TLimits::quiet_NaN(), 1e22, -1.0 / 3}) {
    Node->SetValue(Value);
    EXPECT_TRUE(SameState(TQXGPNode<double>::FromStateText(Node->StateText(), Engine)->Value(), Value))
        << Value;
  }
}

TEST(NodeTextTest, VariantsKeepTheirKind) {
  tests::TArithmeticEngine<Variant> Engine;
  auto Node = Engine.Tree("c");
  const std::pair<Variant, std::string> Values[] = {
      {Variant(), "=empty"},
      {true, "=true"},
      {5, "=5"},
      {5.0, "=5.0"},
      {-1e300, "=-1e+300"},
      {"5", R"(="\"5\"")"},
      {"a (b)~", R"(="\"a (b)~\"")"},
      {"", R"(="\"\"")"},
      {std::numeric_limits<std::int64_t>::min(), "=-9223372036854775808"}};
  for (const auto& [Value, Text] : Values) {
    Node->SetValue(Value);
    EXPECT_EQ(Node->StateText(), "\"c\"" + Text);
    const auto Read = TQXGPNode<Variant>::FromStateText(Node->StateText(), Engine);
    EXPECT_EQ(Read->Value().Kind(), Value.Kind());
    EXPECT_EQ(Read->StateText(), Node->StateText());
  }
}

} // namespace
} // namespace qx::generics
