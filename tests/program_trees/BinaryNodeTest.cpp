#include <qx/program_trees/QXGPDomainXML.h>
#include <qx/program_trees/QXGenerics.GeneticProgramEngine.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <support/SmallPrograms.h>

namespace qx::generics {
namespace {

using TNode = TQXGPNode<TGAFloat>;
using TTree = TQXGPTreeNode<TGAFloat>;
using TBinary = TQXGPBinaryNode<TGAFloat>;
using TPointer = TNode::TPointer;

class BinaryNodeTest : public testing::Test {
protected:
  BinaryNodeTest() { Engine.Binary = true; }
  std::unique_ptr<TBinary> Tree(const std::string& Text) {
    return std::unique_ptr<TBinary>(static_cast<TBinary*>(Engine.Tree(Text).release()));
  }
  static std::string Slots(const TBinary& Node) {
    const auto Text = [](const TNode* Child) { return Child != nullptr ? Child->ToString() : "-"; };
    return Text(Node.Left()) + " | " + Text(Node.Right());
  }
  template <class TCall>
  static void ExpectFull(TCall Call) {
    try {
      Call();
      FAIL() << "nothing raised";
    } catch (const EGPException& Error) {
      EXPECT_STREQ(Error.what(), "Node cannot accept anymore children");
    }
  }

  tests::TArithmeticEngine<> Engine;
};

TEST_F(BinaryNodeTest, FillsTheLeftSlotFirst) {
  const auto Node = Tree("Add");
  EXPECT_EQ(Node->ChildCount(), 0);
  Node->AddChild(Tree("x"));
  EXPECT_EQ(Slots(*Node), "x | -");
  Node->AddChild(Tree("y"));
  EXPECT_EQ(Slots(*Node), "x | y");
  EXPECT_EQ(Node->ChildCount(), 2);
  EXPECT_EQ(Node->Size(), 3);
}

TEST_F(BinaryNodeTest, AThirdChildRaisesAndChangesNothing) {
  const auto Node = Tree("(Add x y)");
  TPointer Third = Tree("c");
  ExpectFull([&] { Node->AddChild(std::move(Third)); });
  ASSERT_NE(Third, nullptr);
  EXPECT_EQ(Third->Parent(), nullptr);
  EXPECT_EQ(Node->ToString(), "(Add x y)");
  const auto Other = Tree("(Neg c)");
  ExpectFull([&] { Other->Left()->SetParent(Node.get()); });
  EXPECT_EQ(Other->ToString(), "(Neg 1.5)");
  EXPECT_EQ(Other->Left()->Parent(), Other.get());
}

TEST_F(BinaryNodeTest, AChildIsNotAddedTwice) {
  const auto Node = Tree("(Add x y)");
  EXPECT_EQ(&Node->AddChild(*Node->Right()), Node->Right());
  EXPECT_EQ(Slots(*Node), "x | y");
}

TEST_F(BinaryNodeTest, ARightChildAloneIsOneChildAtPlaceOne) {
  const auto Node = Tree("(Add x y)");
  const TPointer Left = Node->ExtractChild(*Node->Left());
  EXPECT_EQ(Node->ChildCount(), 1);
  EXPECT_EQ(Node->Children(0), nullptr);
  EXPECT_EQ(Node->Children(1)->ToString(), "y");
  EXPECT_EQ(Node->IndexOf(*Node->Right()), 1);
  EXPECT_EQ(Node->ToString(), "(Add y)");
  EXPECT_EQ(Node->Size(), 2);
  EXPECT_EQ(Node->Depth(), 1);
  EXPECT_THROW(Node->ExecuteChild(0, nullptr), std::out_of_range);
  const auto Copy = Node->Clone();
  EXPECT_EQ(Slots(static_cast<TBinary&>(*Copy)), "- | y");
  EXPECT_EQ(Copy->Size(), 2);
  Node->AddChild(Tree("c"));
  EXPECT_EQ(Slots(*Node), "1.5 | y");
}

TEST_F(BinaryNodeTest, ARightChildAloneReloadsAsTheLeftOne) {
  const auto Node = Tree("(Add x y)");
  static_cast<void>(Node->ExtractChild(*Node->Left()));
  const TXMLDocument Document = TXMLDocument::New("DNA");
  Node->SaveToXML(TXMLDnaType(Document.Root()));
  const auto Read = Tree("x");
  Read->LoadFromXML(TXMLDnaType(Document.Root()));
  EXPECT_EQ(Slots(*Read), "y | -");
}

TEST_F(BinaryNodeTest, AThirdChildOfADocumentRaises) {
  const auto Read = Tree("x");
  const auto Document =
      TXMLDocument::Parse("<DNA Instruction='Add'><Child Instruction='x'/><Child Instruction='x'/>"
                          "<Child Instruction='x'/></DNA>");
  ExpectFull([&] { Read->LoadFromXML(TXMLDnaType(Document.Root())); });
}

TEST_F(BinaryNodeTest, OtherIndexesThanTheSlotsRaise) {
  const auto Node = Tree("(Add x y)");
  EXPECT_THROW(Node->Children(2), std::out_of_range);
  EXPECT_THROW(Node->Children(-1), std::out_of_range);
  EXPECT_THROW(Node->InsertChild(2, Tree("x")), std::out_of_range);
  EXPECT_THROW(Tree("(Neg x)")->AttachChild(2, Tree("x")), std::out_of_range);
}

TEST_F(BinaryNodeTest, AFullNodeTellsThatWhateverTheIndex) {
  const auto Node = Tree("(Add x y)");
  ExpectFull([&] { Node->AttachChild(2, Tree("x")); });
}

TEST_F(BinaryNodeTest, SetLeftAndSetRightStoreCopies) {
  const auto Node = Tree("(Add x y)");
  EXPECT_EQ(Node->Size(), 3);
  const auto Given = Tree("(Neg c)");
  Node->SetLeft(Given.get());
  EXPECT_EQ(Slots(*Node), "(Neg 1.5) | y");
  EXPECT_NE(Node->Left(), Given.get());
  EXPECT_EQ(Node->Left()->Parent(), Node.get());
  EXPECT_EQ(Given->Parent(), nullptr);
  EXPECT_EQ(Node->Size(), 4);
  Node->SetRight(Given.get());
  EXPECT_EQ(Slots(*Node), "(Neg 1.5) | (Neg 1.5)");
  const TBinary* const Right = Node->Right();
  Node->SetRight(Right);
  EXPECT_EQ(Node->Right(), Right);
  Node->SetLeft(nullptr);
  EXPECT_EQ(Slots(*Node), "- | (Neg 1.5)");
  EXPECT_EQ(Node->Size(), 3);
  Node->SetRight(Node->Right()->Left());
  EXPECT_EQ(Slots(*Node), "- | 1.5");
  Node->SetLeft(Node->Right());
  EXPECT_EQ(Slots(*Node), "1.5 | 1.5");
}

TEST_F(BinaryNodeTest, InsertChildAttachesACopyAndTheNodeItself) {
  const auto Node = Tree("Add");
  TPointer Given = Tree("x");
  TNode* const Raw = Given.get();
  EXPECT_EQ(&Node->InsertChild(0, std::move(Given)), Raw);
  EXPECT_EQ(Slots(*Node), "x | x");
  EXPECT_EQ(Node->Right(), Raw);
  const auto Second = Tree("Add");
  TNode* const Inserted = &Second->InsertChild(1, Tree("y"));
  EXPECT_EQ(Slots(*Second), "y | y");
  EXPECT_EQ(Second->Left(), Inserted);
}

TEST_F(BinaryNodeTest, InsertChildMovesASingleChildAndRaisesForTheNodeItself) {
  const auto Node = Tree("(Add x)");
  TNode* const X = Node->Left();
  TPointer Given = Tree("y");
  ExpectFull([&] { Node->InsertChild(0, std::move(Given)); });
  EXPECT_EQ(Slots(*Node), "y | x"); // the copy stays
  EXPECT_EQ(Node->Right(), X);
  ASSERT_NE(Given, nullptr);
  EXPECT_NE(Node->Left(), Given.get());
  EXPECT_EQ(Given->Parent(), nullptr);
  EXPECT_EQ(Node->Size(), 3);

  Node->SetLeft(nullptr);
  ExpectFull([&] { Node->InsertChild(1, std::move(Given)); });
  EXPECT_EQ(Slots(*Node), "x | y");
  EXPECT_EQ(Node->Left(), X);
}

TEST_F(BinaryNodeTest, InsertChildIntoAFullNodeReplacesTheChildThere) {
  const auto Node = Tree("(Add x y)");
  TPointer Given = Tree("c");
  ExpectFull([&] { Node->InsertChild(1, std::move(Given)); });
  EXPECT_EQ(Slots(*Node), "x | 1.5");
  EXPECT_NE(Given, nullptr);
}

TEST_F(BinaryNodeTest, InsertChildOfAnAttachedNodeNeverFreesItTwice) {
  const auto Node = Tree("(Add (Neg x) y)");
  TNode* const Inner = Node->Left()->Left();
  ExpectFull([&] { Node->InsertChild(0, *Inner); }); // goes with the child that its copy replaces
  EXPECT_EQ(Slots(*Node), "x | y");
  const auto Other = Tree("(Neg c)");
  ExpectFull([&] { Node->InsertChild(0, *Other->Left()); });
  EXPECT_EQ(Slots(*Node), "1.5 | y");
  EXPECT_EQ(Other->ToString(), "(Neg 1.5)");
  const auto Empty = Tree("Add");
  Empty->InsertChild(0, *Other->Left());
  EXPECT_EQ(Slots(*Empty), "1.5 | 1.5");
  EXPECT_EQ(Other->ToString(), "Neg");
  Empty->InsertChild(0, *Empty->Left());
  EXPECT_EQ(Slots(*Empty), "1.5 | 1.5");
  EXPECT_EQ(Empty->Size(), 3);
}

TEST_F(BinaryNodeTest, AttachChildTakesTheSlotOrElseTheOther) {
  const auto Node = Tree("Add");
  TNode* const Right = &Node->AttachChild(1, Tree("x"));
  EXPECT_EQ(Slots(*Node), "- | x");
  Node->AttachChild(1, Tree("y"));
  EXPECT_EQ(Slots(*Node), "y | x");
  EXPECT_EQ(Node->Right(), Right);
  TPointer Third = Tree("c");
  ExpectFull([&] { Node->AttachChild(0, std::move(Third)); });
  EXPECT_NE(Third, nullptr);
}

TEST_F(BinaryNodeTest, AttachChildLeavesAChildWhereItIs) {
  const auto Node = Tree("(Add x)");
  EXPECT_EQ(&Node->AttachChild(1, TPointer(Node->Left())), Node->Left());
  EXPECT_EQ(Slots(*Node), "x | -");
}

TEST_F(BinaryNodeTest, AFullNodeTellsThatThereIsNoNode) {
  EXPECT_THROW(Tree("(Add x y)")->AddChild(nullptr), std::invalid_argument);
}

TEST_F(BinaryNodeTest, ACopyThatDoesNotFitOrCannotBeMadeLeavesTheSlots) {
  const auto Node = Tree("(Add x y)");
  const auto Single = Tree("(Neg x)");
  const auto Given = Tree("c");
  Engine.Binary = false; // copies are n-ary now
  EXPECT_THROW(Node->SetLeft(Given.get()), std::invalid_argument);
  EXPECT_EQ(Slots(*Node), "x | y");
  TPointer Owned = Single->Left()->SetParent(nullptr);
  Single->AttachChild(0, std::move(Owned));
  TPointer Inserted = Given->SetParent(nullptr);
  Engine.Binary = true;
  Inserted = Tree("c");
  Engine.Binary = false;
  EXPECT_THROW(Single->InsertChild(0, std::move(Inserted)), std::invalid_argument);
  EXPECT_EQ(Slots(*Single), "x | -");
  EXPECT_NE(Inserted, nullptr);
}

TEST_F(BinaryNodeTest, AssignKeepsTheSlots) {
  const auto Source = Tree("(Add (Mul x y) (Neg c))");
  static_cast<void>(Source->ExtractChild(*Source->Left()));
  EXPECT_EQ(Source->Size(), 3);
  const auto Node = Tree("(Add x y)");
  Node->Assign(*Source);
  EXPECT_EQ(Slots(*Node), "- | (Neg 1.5)");
  EXPECT_EQ(Node->Size(), 3);
  Node->Assign(*Node->Right());
  EXPECT_EQ(Node->ToString(), "(Neg 1.5)");
}

TEST_F(BinaryNodeTest, FamiliesMixOnlyWhereTheyFit) {
  const auto Binary = Tree("(Add x y)");
  Engine.Binary = false;
  TPointer Nary = Engine.Tree("(Neg x)");
  const TPointer Three = Engine.Tree("(Add x y c)");
  EXPECT_THROW(Binary->Left()->AddChild(std::move(Nary)), std::invalid_argument);
  EXPECT_NE(Nary, nullptr);
  ExpectFull([&] { Binary->Assign(*Three); });
  EXPECT_THROW(Binary->Assign(*Nary), std::invalid_argument); // the engine makes n-ary nodes now
  EXPECT_EQ(Binary->ToString(), "(Add x y)");
  Engine.Binary = true;
  Binary->Assign(*Nary);
  EXPECT_EQ(Binary->ToString(), "(Neg x)");
  Nary->Assign(*Binary);
  EXPECT_EQ(Nary->ToString(), "(Neg x)");
}

} // namespace
} // namespace qx::generics
