// Random runs of programs: what one component saves, another loads, evaluates and saves to the same bytes.

#include <qx/genetic_programming/QXGeneticProgrammingXML.h>

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <support/Cases.h>
#include <support/Locales.h>
#include <support/SmallGeneticProgram.h>
#include <support/Streams.h>
#include <support/TemporaryFolder.h>

namespace qx {
namespace {

constexpr int Components = tests::Cases(10'000, 500);

class TRandomPrograms {
public:
  explicit TRandomPrograms(unsigned Seed) : FChoices(Seed) {}

  void Make(TQXCustomGeneticProgramming& Programs) {
    MakeSettings(Programs);
    MakeInstructions(Programs.Instructions());
    Programs.OnEvaluateFitness = Evaluate;
    for (int I = Choose(4); I > 0; --I) {
      auto& Individual = Programs.Population().Add();
      Individual.SetName(Text());
      Individual.AssignDNA(Tree(Programs, Choose(5)));
    }
    Programs.EvaluateFitness();
  }

  static void Evaluate(TQXCustomGeneticProgramming& /*Sender*/,
                       TQXCustomGeneticProgramming::TIndividual& Item, double& Fitness) {
    Fitness = Item.DNA()->Size() / 8.0 + Item.DNA()->Depth();
  }

private:
  int Choose(int n) { return static_cast<int>(FChoices() % static_cast<unsigned>(n)); }

  std::string Text() {
    constexpr std::string_view Pieces[] = {"a", " ", "<", "&", "\"", "\xc3\xa9", "]]>", "\n", "&amp;", "1,5"};
    std::string All;
    for (int I = Choose(4); I > 0; --I) {
      All += Pieces[Choose(static_cast<int>(std::size(Pieces)))];
    }
    return All;
  }

  // Numbers of up to nine digits, which single precision does not all hold but 15 digits do.
  double Number() { return std::ldexp(Choose(1 << 20) - (1 << 19), Choose(20) - 10); }

  void MakeSettings(TQXCustomGeneticProgramming& Programs) {
    Programs.SetCrossoverMethod(cmSubtree);
    Programs.SetInitializationMethod(static_cast<TGPInitializationMethod>(Choose(6)));
    Programs.SetInitializationDepth(Choose(9));
    for (std::size_t I = 0; I < EnumNames<TGPMutationMethod>().size(); ++I) {
      Programs.SetMutateWeights(static_cast<TGPMutationMethod>(I), Choose(256));
    }
    Programs.SetSelectionNonTerminalsProbability(Choose(1000) / 999.0);
    Programs.SetPointMutationMethod(static_cast<TGPPointMutationMethod>(Choose(2)));
    Programs.SetPointMutationProbability(Choose(1000) / 999.0);
    Programs.SetSelectionMethod(static_cast<TGASelectionMethod>(Choose(6)));
    Programs.SetGeneration(Choose(1000));
  }

  // In the order in which documents are read.
  void MakeInstructions(TQXGPFloatInstructions& Set) {
    const auto Add = [&](char Kind, int Number) -> auto& {
      auto& Added = Set.Add();
      Added.SetName(Kind + std::to_string(Number) + Text());
      Added.SetComment(Text());
      return Added;
    };
    for (int I = 0; I < 3; ++I) {
      Add('f', I).SetArity(1 + Choose(3));
    }
    Add('v', 0);
    for (int I = Choose(3); I >= 0; --I) {
      auto& Constant = Add('c', I);
      Constant.SetOperation(gpConstant);
      Constant.SetValue(Number());
    }
  }

  TQXCustomGeneticProgramming::TNodePointer Tree(TQXCustomGeneticProgramming& Programs, int Depth) {
    const bool Leaf = Depth == 0 || Choose(4) == 0;
    auto& Instruction =
        Leaf ? Programs.Terminals(Choose(Programs.TerminalsCount())) : Programs.Functions(Choose(3));
    auto Node = Programs.CreateNode(&Instruction);
    if (Instruction.Operation() == gpConstant) {
      Node->SetValue(Number());
    }
    for (int I = 0; I < Instruction.Arity(); ++I) {
      Node->AddChild(Tree(Programs, Depth - 1));
    }
    return Node;
  }

  std::mt19937 FChoices;
};

void ExpectSameBytesAgain() {
  TRandomPrograms Programs(1);
  for (int I = 0; I < Components; ++I) {
    TQXGeneticProgramming Component;
    Programs.Make(Component);
    const std::string Text = tests::Saved(Component);
    TQXGeneticProgramming Copy;
    Copy.OnEvaluateFitness = TRandomPrograms::Evaluate;
    tests::Load(Copy, Text);
    Copy.EvaluateFitness();
    ASSERT_EQ(tests::Saved(Copy), Text);
  }
}

TEST(ProgramRoundTrip, ASavedLoadedEvaluatedAndSavedRunHasTheSameBytes) { ExpectSameBytesAgain(); }

TEST(ProgramRoundTrip, ADecimalCommaChangesNothing) {
  const tests::TGermanLocale German;
  ExpectSameBytesAgain();
}

TEST(ProgramRoundTrip, CheckpointsAndStreamsOfRandomRunsComeBack) {
  TRandomPrograms Programs(2);
  for (int I = 0; I < Components / 10; ++I) {
    TQXGeneticProgramming Component;
    Programs.Make(Component);
    const std::string Text = tests::CheckpointOf(Component);
    TQXGeneticProgramming Copy;
    tests::LoadCheckpoint(Copy, Text);
    ASSERT_EQ(tests::CheckpointOf(Copy), Text);
  }
}

TEST(ProgramRoundTrip, FilesOfAnyNamesAreTakenByOtherReaders) {
  const tests::TTemporaryFolder Folder;
  TRandomPrograms Programs(3);
  for (int I = 0; I < 30; ++I) {
    TQXGeneticProgramming Component;
    Programs.Make(Component);
    Component.SaveToFile(Folder.File("run.xml"));
    EXPECT_TRUE(tests::XmllintAccepts(Folder.File("run.xml")));
    TQXGeneticProgrammingExecutor Executor;
    Executor.LoadFromFile(Folder.File("run.xml"));
    Executor.SaveToFile(Folder.File("program.xml"));
    EXPECT_TRUE(tests::XmllintAccepts(Folder.File("program.xml")));
  }
}

} // namespace
} // namespace qx
