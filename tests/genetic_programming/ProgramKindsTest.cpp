#include <qx/genetic_programming/QXGeneticProgramming.h>

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <support/Locales.h>
#include <type_traits>

namespace qx {
namespace {

TXMLInstructionType Element(const std::string& Text) {
  return TXMLInstructionType(TXMLDocument::Parse(Text).Root());
}

template <class TNode>
class FloatNodeTest : public testing::Test {
protected:
  FloatNodeTest() {
    Set.Add().SetName("Neg");
    Set[0].SetArity(1);
    Set.Add().SetName("x");
    Set.Add().SetName("c");
    Set[2].SetOperation(gpConstant);
    Set[2].SetValue(0.5);
  }
  std::unique_ptr<TNode> Node(const char* Name) {
    return generics::MakeNode<TNode>(&Set.GetItemByName(Name));
  }

  TQXGPFloatInstructions Set{nullptr};
};

using TFloatNodes = testing::Types<TQXGPFloatNode, TQXGPBinaryFloatNode>;
TYPED_TEST_SUITE(FloatNodeTest, TFloatNodes);

TYPED_TEST(FloatNodeTest, ShowsVariablesByNameAndConstantsByValue) {
  EXPECT_EQ(this->Node("c")->ToString(), "0.5");
  EXPECT_EQ(this->Node("x")->ToString(), "x");
  EXPECT_EQ(this->Node("Neg")->ValueToString(), "");
  EXPECT_EQ(this->Node("Neg")->ToString(), "Neg");
  EXPECT_EQ(generics::MakeNode<TypeParam>(nullptr)->ValueToString(), "");
  const auto Third = this->Node("c");
  Third->SetValue(1.0 / 3);
  EXPECT_EQ(Third->ToString(), "0.333333333333333");
  Third->SetValue(0.1 + 0.2);
  EXPECT_EQ(Third->ToString(), "0.3");
}

TYPED_TEST(FloatNodeTest, HasAPointInDocumentsAndTheLocalesPointForPeople) {
  const tests::TGermanLocale Comma;
  const auto Tree = this->Node("Neg");
  Tree->AddChild(this->Node("c"));
  EXPECT_EQ(Tree->ToString(), "(Neg 0,5)");
  const TXMLDocument Document = TXMLDocument::New("DNA");
  Tree->SaveToXML(TXMLDnaType(Document.Root()));
  EXPECT_NE(Document.Text().find("<Value>0.5</Value>"), std::string::npos) << Document.Text();
  const auto Read = this->Node("x");
  Read->LoadFromXML(TXMLDnaType(Document.Root()));
  EXPECT_EQ(Read->ToString(), "(Neg 0,5)");
  EXPECT_NE(dynamic_cast<TypeParam*>(Read->Children(0)), nullptr);
}

TYPED_TEST(FloatNodeTest, RaisesForAConstantThatIsNoNumber) {
  for (const char* const Text :
       {"<DNA Instruction='c'><Value>half</Value></DNA>", "<DNA Instruction='c'/>"}) {
    const auto Read = this->Node("x");
    EXPECT_THROW(Read->LoadFromXML(TXMLDnaType(TXMLDocument::Parse(Text).Root())), std::invalid_argument);
  }
}

TYPED_TEST(FloatNodeTest, MakesNodesOfItsOwnKind) {
  const auto Tree = this->Node("Neg");
  Tree->AddChild(this->Node("c"));
  const auto Copy = Tree->Clone();
  EXPECT_NE(dynamic_cast<TypeParam*>(Copy.get()), nullptr);
  EXPECT_NE(dynamic_cast<TypeParam*>(Copy->Children(0)), nullptr);
  EXPECT_EQ(Copy->ToString(), "(Neg 0.5)");
}

TEST(FloatInstructionTest, ReadsAndWritesTheValueOfAConstant) {
  TQXGPFloatInstruction Instruction;
  for (const char* const Tag : {"Constant", "FloatConstant", "VariantConstant"}) {
    Instruction.SetValue(0);
    Instruction.LoadFromXML(Element("<" + std::string(Tag) + " Name='c'><Value>2.5</Value></" + Tag + ">"));
    EXPECT_EQ(Instruction.Value(), 2.5) << Tag;
  }
  Instruction.LoadFromXML(Element("<Constant Name='c'><Value>half</Value></Constant>"));
  EXPECT_EQ(Instruction.Value(), 2.5);
  Instruction.LoadFromXML(Element("<Constant Name='c'/>"));
  EXPECT_EQ(Instruction.Value(), 2.5);
  const TXMLDocument Document = TXMLDocument::New("Instructions");
  Instruction.SaveToXML(TXMLGPInstructions(Document.Root()));
  Instruction.SetOperation(gpVariable);
  Instruction.SaveToXML(TXMLGPInstructions(Document.Root()));
  EXPECT_EQ(Document.Text(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                             "<Instructions>\n"
                             "  <Constant Name=\"c\" Comment=\"\">\n"
                             "    <Value>2.5</Value>\n"
                             "  </Constant>\n"
                             "  <Variable Name=\"c\" Comment=\"\"/>\n"
                             "</Instructions>\n");
}

TEST(FloatInstructionTest, AHandlerGetsItsOwnClass) {
  TQXGPFloatInstructions Set(nullptr);
  TQXGPFloatInstruction& One = Set.Add();
  One.SetName("One");
  One.SetOperation(gpFunction);
  One.OnExecute = [](auto& Sender, auto&, auto*, double& Result) {
    static_assert(std::is_same_v<decltype(Sender), TQXGPFloatInstruction&>);
    Result = static_cast<double>(Sender.Name().size());
  };
  EXPECT_EQ(generics::MakeNode<TQXGPFloatNode>(&Set.GetItemByName("one"))->Execute(nullptr), 3);
  TQXGPFloatInstructions Copy(nullptr);
  Copy.AssignAll(Set);
  EXPECT_EQ(generics::MakeNode<TQXGPFloatNode>(Copy.FindItemName("ONE"))->Execute(nullptr), 3);
}

TEST(VariantInstructionTest, AConstantIsReadAsTextAndWrittenAsItsText) {
  TQXGPVariantInstruction Instruction;
  Instruction.LoadFromXML(Element("<Constant Name='c'><Value>2.5</Value></Constant>"));
  EXPECT_EQ(Instruction.Value().Kind(), vkText);
  EXPECT_EQ(Instruction.Value().AsText(), "2.5");
  Instruction.SetValue(true);
  const TXMLDocument Document = TXMLDocument::New("Instructions");
  Instruction.SaveToXML(TXMLGPInstructions(Document.Root()));
  EXPECT_EQ(TXMLGPInstructions(Document.Root()).Constant()[0].Value(), "true");
}

TEST(VariantNodeTest, AConstantIsWrittenAsANumberAndReadBackAsText) {
  TQXGPVariantInstructions Set(nullptr);
  Set.Add().SetName("c");
  Set[0].SetOperation(gpConstant);
  const auto Node = generics::MakeNode<TQXGPVariantNode>(&Set[0]);
  Node->SetValue(1.0 / 3);
  EXPECT_EQ(Node->ToString(), "0.3333333333333333");
  const TXMLDocument Document = TXMLDocument::New("DNA");
  Node->SaveToXML(TXMLDnaType(Document.Root()));
  EXPECT_EQ(TXMLDnaType(Document.Root()).Value(), "0.333333333333333");
  Node->LoadFromXML(TXMLDnaType(Document.Root()));
  EXPECT_EQ(Node->Value().Kind(), vkText);
  EXPECT_EQ(Node->Value().AsText(), "0.333333333333333");
  Node->SetValue(true);
  Node->SaveToXML(TXMLDnaType(Document.Root()));
  EXPECT_EQ(TXMLDnaType(Document.Root()).Value(), "1");
  Node->SetValue("red");
  EXPECT_THROW(Node->SaveToXML(TXMLDnaType(Document.Root())), std::invalid_argument);
}

} // namespace
} // namespace qx
