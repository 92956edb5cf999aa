// What becomes of checkpoints that cannot be read.

#include <qx/platform/Random.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <support/SmallGeneticProgram.h>
#include <support/Streams.h>
#include <support/TemporaryFolder.h>
#include <system_error>
#include <vector>

namespace qx {
namespace {

using tests::CheckpointOf;
using tests::LoadCheckpoint;
using tests::Replaced;
using tests::WithValue;

using TArithmetic = tests::TArithmeticProgramming<>;

std::vector<std::string> LinesOf(const std::string& Text) {
  std::istringstream Stream(Text);
  std::vector<std::string> Lines;
  for (std::string Line; std::getline(Stream, Line);) {
    Lines.push_back(Line);
  }
  return Lines;
}

class DamagedCheckpointTest : public testing::Test {
protected:
  DamagedCheckpointTest() {
    Component.SetInitialPopulation(3);
    Component.SetSelectionMethod(smElitist);
    Component.Evolve(3);
    Other.SetInitialPopulation(4);
    Other.Instructions().Add().SetName("z");
    Other.Evolve(2);
    Before = CheckpointOf(Other);
    for (auto& Individual : Other.Population()) {
      Objects.push_back(&Individual);
    }
    for (auto& Instruction : Other.Instructions()) {
      Objects.push_back(&Instruction);
    }
  }

  // The other component's load fails, and leaves all as it was.
  void ExpectRefused(const std::string& Text, const std::string& Message) {
    try {
      LoadCheckpoint(Other, Text);
      FAIL() << "taken";
    } catch (const EPropertyError& Error) {
      EXPECT_NE(std::string(Error.what()).find(Message), std::string::npos) << Error.what();
    }
    ExpectAsBefore();
  }

  void ExpectAsBefore() {
    ASSERT_TRUE(CheckpointOf(Other) == Before); // too long to print
    std::vector<const void*> Now;
    for (auto& Individual : Other.Population()) {
      Now.push_back(&Individual);
    }
    for (auto& Instruction : Other.Instructions()) {
      Now.push_back(&Instruction);
    }
    ASSERT_EQ(Now, Objects);
  }

  TArithmetic Component;
  TArithmetic Other;
  std::string Before;
  std::vector<const void*> Objects;
};

TEST_F(DamagedCheckpointTest, WithALineLessOrTheEndMissingIsRefused) {
  const std::vector<std::string> Lines = LinesOf(CheckpointOf(Component));
  for (std::size_t Missing = 0; Missing < Lines.size(); ++Missing) {
    std::string Text;
    for (std::size_t I = 0; I < Lines.size(); ++I) {
      Text += I == Missing ? "" : Lines[I] + '\n';
    }
    EXPECT_THROW(LoadCheckpoint(Other, Text), EPropertyError) << Lines[Missing];
    ExpectAsBefore();
    Text.clear();
    for (std::size_t I = 0; I < Missing; ++I) {
      Text += Lines[I] + '\n';
    }
    EXPECT_THROW(LoadCheckpoint(Other, Text), EPropertyError) << Missing;
    ExpectAsBefore();
  }
}

TEST_F(DamagedCheckpointTest, NamesWhatItRefuses) {
  const std::string Text = CheckpointOf(Component);
  static_cast<void>(Random()); // so that the states of the generator differ
  Before = CheckpointOf(Other);
  ExpectRefused("", "the stream ends before");
  ExpectRefused(Replaced(Text, "QXCheckpoint 1", "QXCheckpoint 2"), "begins with QXCheckpoint 1");
  ExpectRefused(Replaced(Text, Component.ClassName(), "TOther"),
                "the checkpoint of a TOther, not of a " + Component.ClassName());
  ExpectRefused(Text + "x", "something stands behind the checkpoint");
  ExpectRefused(Replaced(Text, "    TQXGPIndividual<double> {", "    TOther {"),
                "a TOther stands where a TQXGPIndividual<double> is made");
  ExpectRefused(Replaced(Text, "  Halt = false\n", ""), "lacks \"Halt\"");
  ExpectRefused(Replaced(Text, "  Halt = false\n", "  Halt = false\n  Halt = false\n"), "stands there twice");
  ExpectRefused(Replaced(Text, "HasPreviousGeneration = true", "HasPreviousGeneration = false"),
                "PreviousGeneration: there is no previous generation");
  const auto ExpectValueRefused = [&](const std::string& Name, const std::string& Value,
                                      const std::string& Message) {
    ExpectRefused(WithValue(Text, Name, Value), Name + ": " + Message);
  };
  ExpectValueRefused("SelectionCursor", "-2", "there is no position -2");
  ExpectValueRefused("SelectionCursor", "2147483647", "there is no position 2147483647");
  ExpectValueRefused("Ranking", "[6]", "there is no individual at place 6");
  ExpectValueRefused("FittestIndividual", "6", "there is no individual at place 6");
  ExpectValueRefused("Functions", "[0 1 1]", "these are not the places");
  ExpectValueRefused("Functions", "[0 1 2 3]", "these are not the places");
  ExpectValueRefused("Terminals", "[3 4 77]", "");
  ExpectValueRefused("Random", "1 2 3", "it is no state");
  std::ostringstream Random;
  Random << RandomState();
  ExpectValueRefused("Random", Random.str() + " 5", "it is no state");
  ExpectValueRefused("Random", "-" + Random.str(), "it is no state");
  ExpectValueRefused("FitnessNotNumbers", "-2147483648", "there are no -2147483648");
  ExpectValueRefused("CumulativeFitnesses", "1", "it is no list in brackets");
  ExpectValueRefused("Program", "\"Add\"(\"x\" \"z\")", "Unknown instruction \"z\"");
  ExpectValueRefused("Program", "\"Add\"(\"x\"", "the program cannot be read from \"\" on");
  ExpectValueRefused("Program", "\"Add\"(\"x\")x", "the program cannot be read from \"x\" on");
  ExpectValueRefused("Program", "\"Add\"(\"x\"\"y\")", "the program cannot be read from \"\"y\")\" on");
  ExpectValueRefused("Program", "\"c\"=1.5.5", "it is no number");
  ExpectValueRefused("Program", "#6", "the program cannot be read from \"6\" on");
  ExpectValueRefused("Program", "\"x\"~\"more\"", "a TQXGPFloatNode has no state of its own");
}

TEST_F(DamagedCheckpointTest, GivesTheRankingBack) {
  Other.SetSelectionMethod(smElitist);
  Other.Evolve(2);
  Before = CheckpointOf(Other);
  ASSERT_NE(Before.find("Ranked = true"), std::string::npos);
  EXPECT_THROW(LoadCheckpoint(Other, WithValue(CheckpointOf(Component), "Functions", "[]")), EPropertyError);
  EXPECT_TRUE(CheckpointOf(Other) == Before);
}

TEST_F(DamagedCheckpointTest, FilesThatAreNotThereRaise) {
  const tests::TTemporaryFolder Folder;
  EXPECT_THROW(Other.LoadCheckpoint(Folder.File("none")), std::system_error);
  EXPECT_THROW(Other.SaveCheckpoint(Folder.File("no/folder")), std::system_error);
  EXPECT_THROW(Other.LoadCheckpoint(Folder.File("")), std::exception); // a folder
  ExpectAsBefore();
}

} // namespace
} // namespace qx
