// Program components as component streams.

#include <qx/platform/Filer.h>

#include <gtest/gtest.h>

#include <sstream>
#include <support/SmallGeneticProgram.h>
#include <support/Streams.h>

namespace qx {
namespace {

using tests::CheckpointOf;
using tests::Program;
using tests::Read;
using tests::TArithmeticProgramming;
using tests::Written;

TEST(ProgramStreamTest, ANewComponentHasWhatDiffersFromTheStreamsDefaults) {
  TQXGeneticProgramming New;
  EXPECT_EQ(Written(New),
            "TQXGeneticProgramming {\n  TournamentField = 7\n  CrossoverProbability = 0.9\n}\n");
}

TEST(ProgramStreamTest, ARunComesBackWithItsInstructionsAndPopulation) {
  TArithmeticProgramming<> Source;
  Source.Instructions()[5].SetComment("a constant");
  Source.SetBloatStrategy(bsTarpeianSize);
  Source.SetTarpeianProbability(0.4);
  Source.Add("(Add x c)").SetName("first");
  Source.Add("(Neg y)");
  Source.Population()[0].DNA()->Children(1)->SetValue(2.25);
  const std::string Text = Written(Source);
  EXPECT_NE(Text.find("  Population {\n"
                      "    TQXGPIndividual<double> {\n"
                      "      Name = \"first\"\n"
                      "      Program = \"Add\"(\"x\" \"c\"=2.25)\n"
                      "    }\n"
                      "    TQXGPIndividual<double> {\n"
                      "      Program = \"Neg\"(\"y\")\n"
                      "    }\n"
                      "  }\n"),
            std::string::npos)
      << Text;
  EXPECT_NE(Text.find("    TQXGPFloatInstruction {\n"
                      "      Name = \"c\"\n"
                      "      Comment = \"a constant\"\n"
                      "      Operation = gpConstant\n"
                      "      Value = 1.5\n"
                      "    }\n"),
            std::string::npos)
      << Text;
  TArithmeticProgramming<> Copy;
  Copy.SetInitialPopulation(4);
  Copy.Evolve(2);
  auto* const Add = &Copy.Instructions().GetItemByName("Add");
  Copy.Variable("more");
  Read(Copy, Text);
  EXPECT_EQ(Program(Copy.Population()[0]), "(Add x 2.25)");
  EXPECT_EQ(Copy.PreviousGeneration()->Count(), 2);
  EXPECT_EQ(&Copy.Instructions().GetItemByName("Add"), Add);
  EXPECT_EQ(Copy.Instructions().FindItemName("more"), nullptr);
  EXPECT_EQ(Copy.FunctionsCount(), 3);
  EXPECT_TRUE(Copy.Initialized());
  Copy.Evolve();
  EXPECT_EQ(Copy.Generation(), 3);
}

TEST(ProgramStreamTest, ProgramsAreReadByTheInstructionsThatThereAre) {
  TArithmeticProgramming<> Component;
  Read(Component,
       "TQXGeneticProgramming {\nPopulation {\nTQXGPIndividual {\nProgram = \"Neg\"(\"y\")\n}\n}\n}\n");
  EXPECT_EQ(Program(Component.Population()[0]), "(Neg y)");
}

TEST(ProgramStreamTest, WhatInitializationAddsGivesWayToThePopulation) {
  TArithmeticProgramming<> Source;
  Source.Add("x");
  TArithmeticProgramming<> Component;
  Component.OnInitialization = [](auto& Sender, bool& Filled) {
    Sender.Population().Add();
    Filled = true;
  };
  Read(Component, Written(Source));
  EXPECT_EQ(Component.Population().Count(), 1);
}

TEST(ProgramStreamTest, OneThatFailsLeavesAllAsItWas) {
  TArithmeticProgramming<> Component;
  Component.SetInitialPopulation(4);
  Component.Evolve(2);
  const std::string Before = CheckpointOf(Component);
  const auto* const First = &Component.Population()[0];
  const std::string Begin =
      "TQXGeneticProgramming {\nBloatLimit = 30\nInstructions {\nTQXGPInstruction {\nName = "
      "\"x\"\nArity = 2\n}\n}\n";
  for (const std::string End :
       {"Population {\nTQXGPIndividual {\nProgram = \"Neg\"\n}\n}\n}\n", "Unknown = 1\n}\n", "",
        "Instructions {\nTQXGPInstruction {\nName = \"x\"\n}\nTQXGPInstruction {\nName = \"X\"\n}\n}\n"}) {
    EXPECT_THROW(Read(Component, Begin + End), EPropertyError) << End;
    EXPECT_TRUE(CheckpointOf(Component) == Before) << End;
    EXPECT_EQ(&Component.Population()[0], First);
  }
  EXPECT_THROW(Read(Component,
                    "TQXGeneticProgramming {\nInstructions {\nTQXGPInstruction {\nName = \"x\"\n}\n"
                    "TQXGPInstruction {\nName = \"X\"\n}\n}\n}\n"),
               EPropertyError);
  EXPECT_TRUE(CheckpointOf(Component) == Before);
}

} // namespace
} // namespace qx
