#include <qx/program_trees/QXGPDomainXML.h>
#include <qx/program_trees/QXGenerics.GeneticProgramEngine.h>

#include <gtest/gtest.h>

#include <support/SmallPrograms.h>

namespace qx::generics {
namespace {

using tests::TArithmeticEngine;
using TTree = TQXGPTreeNode<TGAFloat>;
using TInstruction = TQXGPInstruction<TGAFloat>;

TEST(NodeDocumentTest, ATreeIsWrittenAndReadInOrder) {
  TArithmeticEngine Engine;
  const auto Tree = Engine.Tree("(Add (Mul x 2.5) (Neg y))");
  const TXMLDocument Document = TXMLDocument::New("DNA");
  Tree->SaveToXML(TXMLDnaType(Document.Root()));
  EXPECT_EQ(Document.Text(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                             "<DNA Instruction=\"Add\">\n"
                             "  <Child Instruction=\"Mul\">\n"
                             "    <Child Instruction=\"x\"/>\n"
                             "    <Child Instruction=\"c\">\n"
                             "      <Value>2.5</Value>\n"
                             "    </Child>\n"
                             "  </Child>\n"
                             "  <Child Instruction=\"Neg\">\n"
                             "    <Child Instruction=\"y\"/>\n"
                             "  </Child>\n"
                             "</DNA>\n");
  const auto Read = Engine.Tree("x"); // any instruction leads to the set
  Read->LoadFromXML(TXMLDnaType(Document.Root()));
  EXPECT_EQ(Read->ToString(), Tree->ToString());
  EXPECT_EQ(Read->Size(), 6);
}

TEST(NodeDocumentTest, ASecondSaveReplacesTheFirst) {
  TArithmeticEngine Engine;
  const TXMLDocument Document = TXMLDocument::New("DNA");
  Engine.Tree("(Add (Neg x) 2)")->SaveToXML(TXMLDnaType(Document.Root()));
  Engine.Tree("(Neg y)")->SaveToXML(TXMLDnaType(Document.Root()));
  const auto Read = Engine.Tree("x");
  Read->LoadFromXML(TXMLDnaType(Document.Root()));
  EXPECT_EQ(Read->ToString(), "(Neg y)");
}

TEST(NodeDocumentTest, WithoutInstructionThereIsNoSetToReadBy) {
  TArithmeticEngine Engine;
  const auto Node = Engine.Tree("(nil x)");
  Node->LoadFromXML(TXMLDnaType(TXMLDocument::Parse("<DNA Instruction='x'/>").Root()));
  EXPECT_EQ(Node->ToString(), "nil");
  EXPECT_EQ(Node->Size(), 1);
}

TEST(NodeDocumentTest, AnUnknownInstructionRaises) {
  TArithmeticEngine Engine;
  const auto Node = Engine.Tree("x");
  const auto Document = TXMLDocument::Parse("<DNA Instruction='add'><Child Instruction='x'/>"
                                            "<Child Instruction='Sub'/></DNA>");
  try {
    Node->LoadFromXML(TXMLDnaType(Document.Root()));
    FAIL() << "nothing raised";
  } catch (const EGPException& Error) {
    EXPECT_STREQ(Error.what(), "Unknown instruction \"Sub\"");
  }
  EXPECT_EQ(Node->Instruction(), &Engine.Instructions()[0]); // names are read without regard to case
  TInstruction Alone;
  const auto Outside = MakeNode<TTree>(&Alone);
  EXPECT_THROW(Outside->LoadFromXML(TXMLDnaType(Document.Root())), EGPException);
}

TEST(NodeDocumentTest, OnlyConstantsKeepAValue) {
  TArithmeticEngine Engine;
  Engine.Instructions().GetItemByName("x").SetValue(9);
  const auto Node = Engine.Tree("y");
  Node->LoadFromXML(
      TXMLDnaType(TXMLDocument::Parse("<DNA Instruction='Add'><Child Instruction='x'><Value>3</Value>"
                                      "</Child><Other/><Child Instruction='c'><Value>4</Value></Child>"
                                      "</DNA>")
                      .Root()));
  EXPECT_EQ(Node->ToString(), "(Add x 4)");
  EXPECT_EQ(Node->Children(0)->Value(), 0);
}

} // namespace
} // namespace qx::generics
