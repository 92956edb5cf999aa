#include <qx/program_trees/QXGenerics.GeneticProgramEngine.h>

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <support/SmallPrograms.h>
#include <vector>

namespace qx::generics {
namespace {

using tests::TArithmeticEngine;
using tests::TShownTreeNode;
using TNode = TQXGPNode<TGAFloat>;
using TTree = TQXGPTreeNode<TGAFloat>;
using TPointer = TNode::TPointer;
using TInstruction = TQXGPInstruction<TGAFloat>;

TEST(NodeTest, ALeafHasSizeOneAndDepthZero) {
  const TArithmeticEngine<>::TNode::TPointer Leaf = MakeNode<TTree>(nullptr);
  EXPECT_EQ(Leaf->Size(), 1);
  EXPECT_EQ(Leaf->Depth(), 0);
  EXPECT_EQ(Leaf->ToString(), "nil");
  EXPECT_TRUE(Leaf->IsTerminal());
  EXPECT_EQ(Leaf->Parent(), nullptr);
}

TEST(NodeTest, AFunctionOverTwoLeavesHasSizeThreeAndDepthOne) {
  TArithmeticEngine Engine;
  const auto Tree = Engine.Tree("(Add x c)");
  EXPECT_EQ(Tree->Size(), 3);
  EXPECT_EQ(Tree->Depth(), 1);
  EXPECT_EQ(Tree->ToString(), "(Add x 1.5)");
  EXPECT_FALSE(Tree->IsTerminal());
  EXPECT_TRUE(Tree->Children(0)->IsTerminal());
}

TEST(NodeTest, AFunctionWithoutArgumentsIsTerminal) {
  TInstruction Instruction;
  Instruction.SetOperation(gpFunction);
  EXPECT_TRUE(MakeNode<TTree>(&Instruction)->IsTerminal());
  Instruction.SetArity(1);
  EXPECT_FALSE(MakeNode<TTree>(&Instruction)->IsTerminal());
}

TEST(NodeTest, TakesTheValueOfItsInstruction) {
  TInstruction Instruction;
  Instruction.SetValue(7);
  EXPECT_EQ(MakeNode<TTree>(&Instruction)->Value(), 7);
}

TEST(NodeTest, AChildChangesTheSizeOfEveryAncestor) {
  TArithmeticEngine Engine;
  const auto Tree = Engine.Tree("(Add (Neg (Neg x)) y)");
  EXPECT_EQ(Tree->Size(), 5);
  TNode& Inner = *Tree->Children(0)->Children(0);
  Inner.AddChild(Engine.Tree("(Neg y)"));
  EXPECT_EQ(Inner.Size(), 4);
  EXPECT_EQ(Tree->Size(), 7);
  EXPECT_EQ(Tree->Depth(), 4);
  static_cast<void>(Inner.ExtractChild(*Inner.Children(1)));
  EXPECT_EQ(Tree->Size(), 5);
  EXPECT_EQ(Tree->Depth(), 3);
  Inner.Clear();
  EXPECT_EQ(Tree->Size(), 4);
  EXPECT_EQ(Tree->Depth(), 2);
}

TEST(NodeTest, SetParentMovesANodeToTheEndOfItsNewParent) {
  TArithmeticEngine Engine;
  const auto Tree = Engine.Tree("(Add (Neg x) (Mul y c))");
  TNode& X = *Tree->Children(0)->Children(0);
  X.SetParent(Tree->Children(1));
  EXPECT_EQ(Tree->ToString(), "(Add Neg (Mul y 1.5 x))");
  EXPECT_EQ(X.Parent(), Tree->Children(1));
  X.SetParent(Tree->Children(1));
  EXPECT_EQ(Tree->ToString(), "(Add Neg (Mul y 1.5 x))");
  const TPointer Detached = X.SetParent(nullptr);
  EXPECT_EQ(Detached.get(), &X);
  EXPECT_EQ(X.Parent(), nullptr);
  EXPECT_EQ(Tree->ToString(), "(Add Neg (Mul y 1.5))");
  EXPECT_EQ(X.SetParent(nullptr), nullptr);
}

TEST(NodeTest, ARootIsHandedOverByItsOwnerOnly) {
  TArithmeticEngine Engine;
  TPointer Root = Engine.Tree("(Add x y)");
  TPointer Other = Engine.Tree("(Neg x)");
  EXPECT_THROW(Other->SetParent(Root.get()), std::logic_error);
  EXPECT_THROW(Root->AddChild(*Other), std::logic_error);
  EXPECT_THROW(Root->InsertChild(0, *Other), std::logic_error);
  EXPECT_EQ(Root->ToString(), "(Add x y)");
  Root->AddChild(std::move(Other));
  EXPECT_EQ(Other, nullptr);
  EXPECT_EQ(Root->ToString(), "(Add x y (Neg x))");
}

TEST(NodeTest, AChildIsNotAddedTwice) {
  TArithmeticEngine Engine;
  const auto Tree = Engine.Tree("(Add x y)");
  TNode& X = *Tree->Children(0);
  EXPECT_EQ(&Tree->AddChild(X), &X);
  EXPECT_EQ(&Tree->AddChild(TPointer(&X)), &X); // a claim to what the parent owns
  EXPECT_EQ(Tree->ToString(), "(Add x y)");
}

TEST(NodeTest, AChildOfAnotherNodeLeavesThatWhenItIsAdded) {
  TArithmeticEngine Engine;
  const auto Tree = Engine.Tree("(Add (Neg x) (Mul y c))");
  Tree->Children(0)->AddChild(*Tree->Children(1)->Children(0));
  EXPECT_EQ(Tree->ToString(), "(Add (Neg x y) (Mul 1.5))");
  Tree->InsertChild(1, *Tree->Children(0)->Children(0));
  EXPECT_EQ(Tree->ToString(), "(Add (Neg y) x (Mul 1.5))");
  EXPECT_EQ(Tree->Size(), 6);
}

TEST(NodeTest, InsertChildPutsANodeBeforeTheOneThere) {
  TArithmeticEngine Engine;
  const auto Tree = Engine.Tree("(Add x y)");
  Tree->InsertChild(1, Engine.Tree("c"));
  EXPECT_EQ(Tree->ToString(), "(Add x 1.5 y)");
  Tree->InsertChild(3, Engine.Tree("(Neg x)"));
  EXPECT_EQ(Tree->ToString(), "(Add x 1.5 y (Neg x))");
  TPointer Kept = Engine.Tree("x");
  EXPECT_THROW(Tree->InsertChild(5, std::move(Kept)), std::out_of_range);
  EXPECT_THROW(Tree->InsertChild(-1, std::move(Kept)), std::out_of_range);
  EXPECT_NE(Kept, nullptr);
  EXPECT_EQ(Tree->Size(), 6);
}

TEST(NodeTest, ANodeInsertedTwiceIsListedTwiceAndFreedOnce) {
  TArithmeticEngine Engine;
  auto Tree = Engine.Tree("(Add x y)");
  TNode& X = *Tree->Children(0);
  Tree->InsertChild(2, X);
  EXPECT_EQ(Tree->ToString(), "(Add x y x)");
  EXPECT_EQ(Tree->Size(), 4);
  const auto Copy = Tree->Clone();
  EXPECT_EQ(Copy->ToString(), "(Add x y x)");
  const TPointer Taken = X.SetParent(nullptr);
  EXPECT_EQ(Tree->ToString(), "(Add y)");
  Tree->InsertChild(0, *Tree->Children(0));
  Tree->InsertChild(0, *Tree->Children(0));
  Tree = nullptr;
  EXPECT_EQ(Taken->ToString(), "x");
}

TEST(NodeTest, ANodeCannotComeBelowItself) {
  TArithmeticEngine Engine;
  TPointer Root = Engine.Tree("(Add (Neg x) y)");
  TNode& Neg = *Root->Children(0);
  TNode& X = *Neg.Children(0);
  EXPECT_THROW(X.AddChild(std::move(Root)), std::invalid_argument);
  ASSERT_NE(Root, nullptr);
  EXPECT_THROW(Neg.SetParent(&X), std::invalid_argument);
  EXPECT_THROW(Neg.SetParent(&Neg), std::invalid_argument);
  EXPECT_THROW(X.SetParent(&X), std::invalid_argument);
  EXPECT_EQ(Root->ToString(), "(Add (Neg x) y)");
  EXPECT_EQ(Neg.Parent(), Root.get());
  EXPECT_THROW(Root->AddChild(nullptr), std::invalid_argument);
}

TEST(NodeTest, ExtractChildHandsTheNodeOut) {
  TArithmeticEngine Engine;
  const auto Tree = Engine.Tree("(Add (Neg x) y)");
  TNode& Neg = *Tree->Children(0);
  const TPointer Taken = Tree->ExtractChild(Neg);
  EXPECT_EQ(Taken->ToString(), "(Neg x)");
  EXPECT_EQ(Taken->Parent(), nullptr);
  EXPECT_EQ(Tree->ToString(), "(Add y)");
  EXPECT_THROW(static_cast<void>(Tree->ExtractChild(*Taken)), std::invalid_argument);
  EXPECT_EQ(Tree->IndexOf(*Taken), -1);
}

TEST(NodeTest, AnIndexOutsideTheChildrenRaises) {
  TArithmeticEngine Engine;
  const auto Tree = Engine.Tree("(Add x y)");
  EXPECT_EQ(Tree->IndexOf(*Tree->Children(1)), 1);
  EXPECT_THROW(Tree->Children(2), std::out_of_range);
  EXPECT_THROW(Tree->Children(-1), std::out_of_range);
  EXPECT_THROW(Tree->ExecuteChild(2, nullptr), std::out_of_range);
}

TEST(NodeTest, ManyChildrenKeepTheirOrder) {
  TArithmeticEngine Engine;
  const auto Root = Engine.Tree("Add");
  std::vector<TNode*> Expected;
  for (int I = 0; I < 1000; ++I) {
    Expected.insert(Expected.begin() + I / 2, &Root->InsertChild(I / 2, Engine.Tree("x")));
  }
  const auto Slots = Root->Slots();
  EXPECT_TRUE(std::equal(Slots.begin(), Slots.end(), Expected.begin(), Expected.end()));
  for (int I = 0; I < 990; ++I) {
    static_cast<void>(Root->ExtractChild(*Expected[5]));
    Expected.erase(Expected.begin() + 5);
  }
  const auto Left = Root->Slots();
  EXPECT_TRUE(std::equal(Left.begin(), Left.end(), Expected.begin(), Expected.end()));
}

TEST(NodeTest, CloneCopiesTheNodesAndSharesTheInstructions) {
  TArithmeticEngine Engine;
  const auto Tree = Engine.Tree("(Add (Mul x 2.5) (Neg y))");
  const auto Copy = Tree->Clone();
  EXPECT_EQ(Copy->ToString(), Tree->ToString());
  EXPECT_EQ(Copy->Size(), 6);
  EXPECT_EQ(Copy->Depth(), 2);
  EXPECT_NE(Copy->Children(0), Tree->Children(0));
  EXPECT_EQ(Copy->Children(0)->Instruction(), Tree->Children(0)->Instruction());
  Copy->Children(0)->Children(1)->SetValue(9);
  EXPECT_EQ(Tree->ToString(), "(Add (Mul x 2.5) (Neg y))");
  const auto Parent = Engine.Tree("Neg");
  TNode& Attached = Tree->Clone(*Parent);
  EXPECT_EQ(Attached.Parent(), Parent.get());
  EXPECT_EQ(Parent->ToString(), "(Neg (Add (Mul x 2.5) (Neg y)))");
}

TEST(NodeTest, ACloneKnowsTheSizesThatItsSourceKnew) {
  TArithmeticEngine Engine;
  const auto Tree = Engine.Tree("(Add (Mul x 2.5) (Neg y))");
  EXPECT_EQ(Tree->Size(), 6);
  const auto Copy = Tree->Clone();
  Copy->Children(1)->AddChild(Engine.Tree("x"));
  EXPECT_EQ(Copy->Size(), 7);
  const auto Unmeasured = Engine.Tree("(Add (Neg x) y)")->Clone();
  Unmeasured->Children(0)->AddChild(Engine.Tree("x"));
  EXPECT_EQ(Unmeasured->Size(), 5);
  Unmeasured->Children(0)->AddChild(Engine.Tree("(Neg x)"));
  EXPECT_EQ(Unmeasured->Size(), 7);
  EXPECT_EQ(Unmeasured->Depth(), 3);
}

TEST(NodeTest, AssignReplacesContentAndTellsTheParent) {
  TArithmeticEngine Engine;
  const auto Tree = Engine.Tree("(Add x y)");
  EXPECT_EQ(Tree->Size(), 3);
  const auto Source = Engine.Tree("(Mul (Neg x) 3)");
  Tree->Children(0)->Assign(*Source);
  EXPECT_EQ(Tree->ToString(), "(Add (Mul (Neg x) 3) y)");
  EXPECT_EQ(Tree->Size(), 6);
  EXPECT_EQ(Tree->Depth(), 3);
  EXPECT_THROW(Tree->Assign(Engine), std::invalid_argument);
}

TEST(NodeTest, AssignToItselfOrFromADescendantIsSafe) {
  TArithmeticEngine Engine;
  const auto Tree = Engine.Tree("(Add (Mul (Neg x) 3) y)");
  Tree->Assign(*Tree);
  EXPECT_EQ(Tree->ToString(), "(Add (Mul (Neg x) 3) y)");
  Tree->Assign(*Tree->Children(0));
  EXPECT_EQ(Tree->ToString(), "(Mul (Neg x) 3)");
  EXPECT_EQ(Tree->Size(), 4);
  Tree->Children(1)->Assign(*Tree);
  EXPECT_EQ(Tree->ToString(), "(Mul (Neg x) (Mul (Neg x) 3))");
  EXPECT_EQ(Tree->Size(), 7);
}

TEST(NodeTest, SetChildrenClonesTheGivenNodes) {
  TArithmeticEngine Engine;
  TTree Root(nullptr);
  Root.AddChild(Engine.Tree("(Neg x)"));
  const auto Given = Engine.Tree("(Neg y)");
  TNode* const List[] = {Given.get(), Root.Children(0)->Children(0), Root.Children(0)};
  Root.SetChildren(List);
  EXPECT_EQ(Root.ToString(), "nil (Neg y) x (Neg x))");
  EXPECT_EQ(Root.Size(), 6);
  EXPECT_NE(Root.Children(0), Given.get());
  EXPECT_EQ(Given->Parent(), nullptr);
  EXPECT_EQ(Root.Children().size(), 3U);
}

TEST(NodeTest, ANodeWithoutInstructionLosesItsOpeningParenthesis) {
  TArithmeticEngine Engine;
  EXPECT_EQ(Engine.Tree("(nil x y)")->ToString(), "nil x y)");
  EXPECT_EQ(Engine.Tree("(Add (nil x y) nil)")->ToString(), "(Add nil x y) nil)");
}

TEST(NodeTest, PlainNodesShowNoValues) {
  TInstruction Variable;
  Variable.SetName("x");
  EXPECT_EQ(MakeNode<TTree>(&Variable)->ToString(), "");
}

TEST(NodeTest, ClearEmptiesTheNode) {
  TArithmeticEngine Engine;
  const auto Tree = Engine.Tree("(Add (Neg x) 3)");
  Tree->Children(0)->Clear();
  EXPECT_EQ(Tree->ToString(), "(Add nil 3)");
  Tree->Children(1)->Clear();
  EXPECT_EQ(Tree->Children(1)->Value(), 0);
  EXPECT_EQ(Tree->Size(), 3);
}

TEST(NodeTest, ANodeKeepsItsValueUnderAnotherInstruction) {
  TArithmeticEngine Engine;
  TInstruction& Other = Engine.Constant("d", 8);
  const auto Tree = Engine.Tree("(Neg 2.5)");
  Tree->Children(0)->SetInstruction(&Other);
  EXPECT_EQ(Tree->Execute(nullptr), -2.5);
  Tree->SetInstruction(&Engine.Instructions().GetItemByName("Add"));
  EXPECT_EQ(Tree->ToString(), "(Add 2.5)");
}

TEST(NodeTest, ExecuteWithoutInstructionRaises) {
  TArithmeticEngine Engine;
  try {
    Engine.Tree("(Neg nil)")->Execute(nullptr);
    FAIL() << "nothing raised";
  } catch (const EGPException& Error) {
    EXPECT_STREQ(Error.what(), "No instruction assigned to node");
  }
}

TEST(NodeTest, TheEngineMakesTheNodesThatTheirTreesNeed) {
  TArithmeticEngine Engine;
  const auto Tree = Engine.Tree("(Add x y)");
  Engine.CreatedNodes = 0;
  const auto Copy = Tree->Clone();
  EXPECT_EQ(Engine.CreatedNodes, 3);
  TQXGPInstructions<TGAFloat> NoEngine(nullptr);
  const auto Plain = MakeNode<TShownTreeNode<TGAFloat>>(&NoEngine.Add());
  EXPECT_NE(dynamic_cast<TShownTreeNode<TGAFloat>*>(Plain->Clone().get()), nullptr);
  EXPECT_EQ(Engine.CreatedNodes, 3);
}

TEST(NodeTest, ADyingNodeLeavesItsParentAndOrphansItsChildren) {
  static int Dead;
  Dead = 0;
  class TMortal : public TTree {
  public:
    using TTree::TTree;
    ~TMortal() override {
      ++Dead;
      EXPECT_EQ(Parent(), ParentAtDeath);
    }
    TNode* ParentAtDeath = nullptr;
  };
  auto Root = MakeNode<TTree>(nullptr);
  auto& Middle = static_cast<TMortal&>(Root->AddChild(MakeNode<TMortal>(nullptr)));
  Middle.AddChild(MakeNode<TMortal>(nullptr));
  Middle.AddChild(MakeNode<TMortal>(nullptr));
  EXPECT_EQ(Root->Size(), 4);
  Middle.ParentAtDeath = Root.get();
  delete &Middle; // by somebody who does not own it
  EXPECT_EQ(Dead, 3);
  EXPECT_EQ(Root->ChildCount(), 0);
  EXPECT_EQ(Root->Size(), 1);
}

// --- Overrides of Modified ---------------------------------------------------------------------------------

class TListening : public TTree {
public:
  using TTree::TTree;
  void Modified() noexcept override {
    TTree::Modified();
    ++Heard;
    SizeOfRoot = Root != nullptr ? Root->Size() : 0;
  }
  int Heard = 0;
  int SizeOfRoot = 0;
  TNode* Root = nullptr;
};

template <class TMake>
void ExpectEveryChangeToBeHeard(TMake Make) {
  auto Root = Make(nullptr);
  TListening& Listener = *Root;
  TNode* Deep = Root.get();
  for (int I = 0; I < 10; ++I) {
    Deep = &Deep->AddChild(MakeNode<TTree>(nullptr));
  }
  EXPECT_EQ(Listener.Heard, 10);
  for (int I = 0; I < 5; ++I) { // nothing is measured between these
    Deep->AddChild(MakeNode<TTree>(nullptr));
  }
  EXPECT_EQ(Listener.Heard, 15);
  static_cast<void>(Deep->ExtractChild(*Deep->Children(0)));
  EXPECT_EQ(Listener.Heard, 16);
  Deep->Clear();
  EXPECT_EQ(Listener.Heard, 17);
  Listener.Root = Root.get();
  Deep->AddChild(MakeNode<TTree>(nullptr));
  EXPECT_EQ(Listener.SizeOfRoot, 12); // sizes above are known to be old by then
}

TEST(NodeTest, AnOverrideOfModifiedHearsEveryChangeBelow) {
  ExpectEveryChangeToBeHeard([](TInstruction* Instruction) { return MakeNode<TListening>(Instruction); });
}

TEST(NodeTest, AnOverrideIsHeardHoweverTheNodeWasMade) {
  ExpectEveryChangeToBeHeard(
      [](TInstruction* Instruction) { return std::make_unique<TListening>(Instruction); });
}

TEST(NodeTest, AnOverrideAboveAnAttachedTreeHearsItsChanges) {
  TPointer Tree = MakeNode<TTree>(nullptr);
  TNode* Deep = Tree.get();
  for (int I = 0; I < 5; ++I) {
    Deep = &Deep->AddChild(MakeNode<TTree>(nullptr));
  }
  auto Root = MakeNode<TListening>(nullptr);
  Root->AddChild(MakeNode<TTree>(nullptr)).AddChild(std::move(Tree));
  Root->Heard = 0;
  Deep->AddChild(MakeNode<TTree>(nullptr));
  EXPECT_EQ(Root->Heard, 1);
  auto Copied = MakeNode<TListening>(nullptr);
  Copied->Assign(*Root);
  Copied->Heard = 0;
  TNode* DeepCopy = Copied.get();
  while (DeepCopy->ChildCount() > 0) {
    DeepCopy = DeepCopy->Children(0);
  }
  DeepCopy->AddChild(MakeNode<TTree>(nullptr));
  EXPECT_EQ(Copied->Heard, 1);
}

TEST(NodeTest, OverridesHearTheNearestFirstAndOneMayKeepItToItself) {
  static std::string Log;
  Log.clear();
  class TNamed : public TTree {
  public:
    using TTree::TTree;
    void Modified() noexcept override {
      Log += Name;
      if (!Silent) {
        TTree::Modified();
      }
    }
    char Name = '?';
    bool Silent = false;
  };
  auto A = MakeNode<TNamed>(nullptr);
  A->Name = 'a';
  auto& B = static_cast<TNamed&>(A->AddChild(MakeNode<TNamed>(nullptr)));
  B.Name = 'b';
  auto& C = static_cast<TNamed&>(B.AddChild(MakeNode<TTree>(nullptr)).AddChild(MakeNode<TNamed>(nullptr)));
  C.Name = 'c';
  Log.clear();
  C.AddChild(MakeNode<TTree>(nullptr));
  EXPECT_EQ(Log, "cba");
  B.Silent = true;
  Log.clear();
  C.AddChild(MakeNode<TTree>(nullptr));
  EXPECT_EQ(Log, "cb");
}

TEST(NodeTest, FieldsOfAHostsOwnNodeAreCopiedWithEachNode) {
  class TMarked : public TTree {
  public:
    using TTree::TTree;
    int Mark = 0;

  protected:
    TPointer NewNode(TInstruction* Instruction) const override { return MakeNode<TMarked>(Instruction); }
    void DoAssign(const TNode& Source) override {
      TTree::DoAssign(Source);
      Mark = static_cast<const TMarked&>(Source).Mark;
    }
  };
  auto Root = MakeNode<TMarked>(nullptr);
  Root->Mark = 1;
  static_cast<TMarked&>(Root->AddChild(MakeNode<TMarked>(nullptr))).Mark = 2;
  const auto Copy = Root->Clone();
  EXPECT_EQ(static_cast<TMarked&>(*Copy).Mark, 1);
  EXPECT_EQ(static_cast<TMarked&>(*Copy->Children(0)).Mark, 2);
}

TEST(NodeTest, AnOverrideInsideACopyHearsWhatHappensBelowIt) {
  class TOwnListening : public TListening {
  public:
    using TListening::TListening;

  protected:
    TPointer NewNode(TInstruction* Instruction) const override {
      return MakeNode<TOwnListening>(Instruction);
    }
  };
  const auto Root = MakeNode<TTree>(nullptr);
  Root->AddChild(MakeNode<TOwnListening>(nullptr)).AddChild(MakeNode<TTree>(nullptr));
  const auto Copy = Root->Clone();
  auto& Listener = static_cast<TOwnListening&>(*Copy->Children(0));
  Listener.Heard = 0;
  Listener.Children(0)->AddChild(MakeNode<TTree>(nullptr));
  EXPECT_EQ(Listener.Heard, 1);
}

TEST(NodeTest, AnOverrideThatAsksForSizesDoesNotSpoilThoseOfACopy) {
  class TAsking : public TTree {
  public:
    using TTree::TTree;
    void Modified() noexcept override {
      TTree::Modified();
      static_cast<void>(Size());
    }
  };
  const auto Root = MakeNode<TAsking>(nullptr);
  TNode& Inner = Root->AddChild(MakeNode<TTree>(nullptr));
  Inner.Assign(*Root);
  EXPECT_EQ(Inner.Size(), 2);
  EXPECT_EQ(Inner.Depth(), 1);
  EXPECT_EQ(Root->Size(), 3);
}

TEST(NodeTest, ANodeThatMeasuresItselfWhenItIsMadeStaysRight) {
  class TEager : public TTree {
  public:
    explicit TEager(TInstruction* Instruction) : TTree(Instruction) {
      AddChild(MakeNode<TTree>(nullptr));
      static_cast<void>(Size());
    }
  };
  const auto Node = MakeNode<TEager>(nullptr);
  Node->AddChild(MakeNode<TTree>(nullptr));
  EXPECT_EQ(Node->Size(), 3);
}

TEST(NodeTest, ANewNodeGetsItsValueThroughSetValue) {
  class TDoubling : public TTree {
  public:
    using TTree::TTree;
    void SetValue(const double& Value) override { TTree::SetValue(2 * Value); }
  };
  TInstruction Instruction;
  Instruction.SetValue(3);
  EXPECT_EQ(MakeNode<TDoubling>(&Instruction)->Value(), 6);
}

TEST(NodeTest, ChildrenThatTheEngineGivesToNewNodesAreNotCopiedAsWell) {
  class TGenerous : public tests::TTestEngine<TGAFloat> {
  public:
    std::unique_ptr<TNode> CreateNode(TInstruction* Instruction) override {
      auto Node = TTestEngine::CreateNode(Instruction);
      if (Generous) {
        Node->AddChild(TTestEngine::CreateNode(nullptr));
      }
      return Node;
    }
    bool Generous = false;
  };
  TGenerous Engine;
  Engine.Function("F", 1);
  for (const bool Binary : {false, true}) {
    Engine.Binary = Binary;
    Engine.Generous = false;
    const auto Tree = Engine.Tree("(F (F F))");
    Engine.Generous = true;
    const auto Copy = Tree->Clone();
    EXPECT_EQ(Copy->ToString(), "(F (F F))");
    EXPECT_EQ(Copy->Size(), 3);
  }
}

TEST(NodeTest, SetChildrenCopiesNodesOnly) {
  const auto Root = MakeNode<TTree>(nullptr);
  Root->AddChild(MakeNode<TTree>(nullptr));
  TNode* const List[] = {Root.get(), nullptr};
  EXPECT_THROW(Root->SetChildren(List), std::invalid_argument);
  EXPECT_EQ(Root->ChildCount(), 1);
}

} // namespace
} // namespace qx::generics
