#include <qx/genetic_programming/QXGenerics.GeneticProgramming.h>
#include <qx/platform/StackGuard.h>
#include <qx/program_trees/QXGPDomainXML.h>

#include <gtest/gtest.h>

#include <pthread.h>
#include <sstream>
#include <string>
#include <support/Cases.h>
#include <support/SmallGeneticProgram.h>
#include <support/Streams.h>
#include <utility>

namespace qx::generics {
namespace {

using TNode = TQXGPNode<TGAFloat>;
using TPointer = TNode::TPointer;
using TIndividual = TQXGPIndividual<TGAFloat>;

constexpr int Levels = tests::Cases(1'000'000, 200'000);

/// Runs a call on a stack of 256 KiB.
template <class TCall>
void OnSmallStack(TCall Call) {
  pthread_attr_t Attributes;
  pthread_attr_init(&Attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&Attributes, 256 << 10), 0);
  pthread_t Thread{};
  const auto Run = [](void* Given) -> void* {
    (*static_cast<TCall*>(Given))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&Thread, &Attributes, Run, &Call), 0);
  pthread_join(Thread, nullptr);
  pthread_attr_destroy(&Attributes);
}

class DeepTreeTest : public testing::TestWithParam<bool> {
protected:
  DeepTreeTest() { Engine.Binary = GetParam(); }

  // From the root down, one level after the other.
  TPointer Chain(int Length) {
    TQXGPInstruction<TGAFloat>& Neg = Engine.Instructions().GetItemByName("Neg");
    TPointer Root = Engine.CreateNode(&Neg);
    TNode* Deep = Root.get();
    for (int I = 2; I < Length; ++I) {
      Deep = &Deep->AddChild(Engine.CreateNode(&Neg));
    }
    Deep->AddChild(Engine.Tree("x"));
    return Root;
  }

  tests::TArithmeticEngine<> Engine;
};

INSTANTIATE_TEST_SUITE_P(BothFamilies, DeepTreeTest, testing::Bool(),
                         [](const auto& Info) { return Info.param ? "Binary" : "Nary"; });

TEST_P(DeepTreeTest, ManyLevelsAreBuiltCopiedMeasuredPrintedAndFreed) {
  OnSmallStack([&] {
    TPointer Tree = Chain(Levels);
    EXPECT_EQ(Tree->Size(), Levels);
    EXPECT_EQ(Tree->Depth(), Levels - 1);
    TPointer Copy = Tree->Clone();
    EXPECT_EQ(Copy->Depth(), Levels - 1);
    const std::string Text = Copy->ToString();
    EXPECT_EQ(Text.size(), std::string("(Neg ").size() * (Levels - 1) + 1 + Levels - 1);
    Copy->Assign(*Copy->Children(0));
    EXPECT_EQ(Copy->Size(), Levels - 1);
    TPointer Top = Engine.Tree("Neg"); // from the leaf up
    Top->AddChild(std::move(Tree));
    EXPECT_EQ(Top->Size(), Levels + 1);
  });
}

TEST_P(DeepTreeTest, ManyLevelsAreFlattenedSavedAndLoaded) {
  OnSmallStack([&] {
    TQXGPPopulation<TGAFloat> Population(&Engine);
    TIndividual& Individual = Population.Add();
    Individual.AssignDNA(Chain(Levels));
    EXPECT_EQ(Individual.FlattenedDNA().size(), static_cast<std::size_t>(Levels));
    const TXMLDocument Document = TXMLDocument::New("Individual");
    Individual.SaveToXML(Document.Root());
    TXMLLimits Limits;
    Limits.Depth = 2 * Levels;
    const TXMLDocument Read = TXMLDocument::Parse(Document.Text(), Limits);
    TIndividual& Loaded = Population.Add();
    Loaded.LoadFromXML(Read.Root());
    EXPECT_EQ(Loaded.DNA()->Size(), Levels);
    Loaded.Assign(Individual);
    TNode& Deep = *Loaded.FlattenedDNA()[Levels - 2];
    Loaded.Crossover(Deep, Individual, *Individual.DNA());
    EXPECT_EQ(Loaded.DNA()->Depth(), 2 * Levels - 3);
    EXPECT_EQ(Individual.DNA()->Size(), 2);
  });
}

TEST_P(DeepTreeTest, ManyLevelsAreALineAndATreeAgain) {
  OnSmallStack([&] {
    const std::string Text = Chain(Levels)->StateText();
    const TPointer Read = TNode::FromStateText(Text, Engine);
    EXPECT_EQ(Read->Depth(), Levels - 1);
    EXPECT_TRUE(Read->StateText() == Text);
  });
}

TEST_P(DeepTreeTest, ExecutionStopsBeforeTheStackIsGone) {
  const TPointer Tree = Chain(Levels);
  const TPointer Shallow = Chain(100);
  TQXGPContext<TGAFloat> Context;
  Context.Values().Add("x", 2);
  const auto Run = [&] {
    try {
      Tree->Execute(&Context);
      ADD_FAILURE() << "nothing raised";
    } catch (const EStackError& Error) {
      EXPECT_NE(std::string(Error.what()).find("too deep"), std::string::npos);
    }
    EXPECT_EQ(Shallow->Execute(&Context), -2);
  };
  Run();
  OnSmallStack(Run);
}

TEST_P(DeepTreeTest, LevelsThatBringChildrenAreAttachedInLinearTime) {
  TPointer Root = Engine.Tree("(Add x)"); // quadratic, this would take half an hour
  TNode* Deepest = Root.get();
  for (int I = 1; I < Levels; ++I) {
    Deepest = &Deepest->AddChild(Engine.Tree("(Add x)"));
  }
  EXPECT_EQ(Root->Size(), 2 * Levels);
}

TEST(DeepTreeRunTest, AProgramOfManyLevelsIsInDocumentsAndCheckpoints) {
  struct TLargeLimits {
    TLargeLimits() { DefaultXMLLimits.Depth = 2 * Levels; }
    ~TLargeLimits() { DefaultXMLLimits = {}; }
  } const Limits;
  OnSmallStack([] {
    tests::TArithmeticProgramming<> Source;
    TQXGPInstruction<TGAFloat>& Neg = Source.Instructions().GetItemByName("Neg");
    TNode* Deep = Source.Add("Neg").DNA();
    for (int I = 1; I < Levels; ++I) {
      Deep = &Source.CreateNode(&Neg, *Deep);
    }
    Source.Population()[0].FlattenDNA();
    std::stringstream Document;
    Source.SaveToStream(Document);
    TQXGeneticProgramming Loaded;
    Loaded.LoadFromStream(Document);
    EXPECT_EQ(Loaded.Population()[0].DNA()->Size(), Source.Population()[0].DNA()->Size());
    tests::TArithmeticProgramming<> Resumed;
    tests::LoadCheckpoint(Resumed, tests::CheckpointOf(Source));
    EXPECT_EQ(Resumed.Population()[0].DNA()->Depth(), Levels - 1);
  });
}

TEST(StackReserveTest, AHostThatNeedsMoreStackSaysSo) {
  tests::TArithmeticEngine Engine;
  const TPointer Tree = Engine.Tree("(Neg (Neg c))");
  const std::size_t Default = StackReserve();
  EXPECT_EQ(Default, std::size_t{64} << 10);
  OnSmallStack([&] {
    EXPECT_EQ(Tree->Execute(nullptr), 1.5);
    SetStackReserve(std::size_t{1} << 20);
    EXPECT_THROW(Tree->Execute(nullptr), EStackError);
    SetStackReserve(Default);
    EXPECT_EQ(Tree->Execute(nullptr), 1.5);
  });
}

} // namespace
} // namespace qx::generics
