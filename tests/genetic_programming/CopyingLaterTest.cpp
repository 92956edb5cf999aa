// The second child's copy of the first parent, which is put off until somebody asks for it.

#include <gtest/gtest.h>

#include <support/SmallGeneticProgram.h>
#include <support/Streams.h>

namespace qx {
namespace {

using tests::Program;

class TCopyingProgramming : public tests::TArithmeticProgramming<> {
public:
  TCopyingProgramming() {
    First = &Add("(Add x y)");
    Second = &Add("(Mul x c)");
    Child1 = &Add("y");
    Child2 = &Add("y");
    SetCrossoverProbability(0);
    SetMutationProbability(0);
    SetInversionProbability(0);
  }
  void ReproduceOnce() { TArithmeticProgramming::Reproduce(*First, *Second, *Child1, *Child2); }

  using TArithmeticProgramming::Crossover;
  bool Crossover(TQXIndividual& Parent1, TQXIndividual& Parent2, TQXIndividual& Mine,
                 TQXIndividual& Other) override {
    if (Looks) {
      Seen = Program(static_cast<TIndividual&>(Other));
      EXPECT_FALSE(static_cast<TIndividual&>(Other).FlattenedDNA().empty());
    }
    if (Raises) {
      throw std::runtime_error("no crossover");
    }
    return TArithmeticProgramming::Crossover(Parent1, Parent2, Mine, Other);
  }

  TIndividual* First;
  TIndividual* Second;
  TIndividual* Child1;
  TIndividual* Child2;
  bool Looks = false;
  bool Raises = false;
  std::string Seen;
};

TEST(CopyingLaterTest, TheChildIsACopyWhenNothingIsCrossed) {
  TCopyingProgramming Programming;
  static_cast<void>(Programming.First->Fitness());
  Programming.ReproduceOnce();
  EXPECT_EQ(Program(*Programming.Child2), "(Add x y)");
  EXPECT_FALSE(Programming.Child2->NeedFitness()); // that of the parent
  tests::ExpectWhole(*Programming.Child2);
}

TEST(CopyingLaterTest, AnOverrideThatLooksSeesTheCopy) {
  TCopyingProgramming Programming;
  Programming.Looks = true;
  Programming.ReproduceOnce();
  EXPECT_EQ(Programming.Seen, "(Add x y)");
  EXPECT_EQ(Program(*Programming.Child2), "(Add x y)");
}

TEST(CopyingLaterTest, HandlersSeeTheCopy) {
  TCopyingProgramming Programming;
  std::string Seen;
  Programming.OnInitializeChild = [&](auto&, auto&, auto&, auto& Child) { Seen += Program(Child); };
  Programming.ReproduceOnce();
  EXPECT_EQ(Seen, "(Add x y)(Add x y)");
  Programming.OnInitializeChild = nullptr;
  Programming.SetCrossoverProbability(1);
  Programming.OnCrossover = [&](auto&, auto&, auto&, auto&, bool& Allowed) {
    EXPECT_EQ(Program(*Programming.Child2), "(Add x y)");
    Allowed = false;
  };
  Programming.ReproduceOnce();
  EXPECT_EQ(Program(*Programming.Child2), "(Add x y)");
}

TEST(CopyingLaterTest, AParentThatIsAlsoAChildIsCopiedAtOnce) {
  TCopyingProgramming Programming;
  Programming.SetMutationProbability(1);
  Programming.OnMutation = [&](auto& Sender, auto& Item, bool& Allowed) {
    if (&Item == Programming.First) {
      Item.AssignDNA(tests::ReadTree<TGAFloat>(Sender, "c"));
    }
    Allowed = false;
  };
  static_cast<TQXCustomGeneticComponent&>(Programming)
      .Reproduce(*Programming.First, *Programming.Second, *Programming.First, *Programming.Child2);
  EXPECT_EQ(Program(*Programming.First), "1.5");
  EXPECT_EQ(Program(*Programming.Child2), "(Add x y)");
}

TEST(CopyingLaterTest, WhenSomethingRaisesTheChildKeepsItsProgram) {
  TCopyingProgramming Programming;
  Programming.Raises = true;
  EXPECT_THROW(Programming.ReproduceOnce(), std::runtime_error);
  EXPECT_EQ(Program(*Programming.Child2), "y");
  tests::ExpectWhole(*Programming.Child2);
  Programming.Population().Delete(0); // the parent
  EXPECT_EQ(Program(*Programming.Child2), "y");
}

TEST(CopyingLaterTest, AssignmentsAfterTheCrossoverAreMadeAtOnce) {
  TCopyingProgramming Programming;
  Programming.SetMutationProbability(1);
  auto& Source = Programming.Add("(Neg c)");
  Programming.OnMutation = [&](auto&, auto& Item, bool& Allowed) {
    if (&Item == Programming.Child2) {
      Item.Assign(Source);
      Source.DNA()->SetInstruction(&Programming.Instructions()[3]);
    }
    Allowed = false;
  };
  Programming.ReproduceOnce();
  EXPECT_EQ(Program(*Programming.Child2), "(Neg 1.5)");
}

} // namespace
} // namespace qx
