#include <qx/foundation/FitnessOrder.h>
#include <qx/foundation/QXGAConsts.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <support/NonFinite.h>

namespace qx {
namespace {

using tests::Infinity;
using tests::NaN;

template <class TEnum>
void ExpectNames(std::initializer_list<std::string_view> Names) {
  ASSERT_EQ(EnumNames<TEnum>().size(), Names.size());
  unsigned Ordinal = 0;
  for (const std::string_view Name : Names) {
    const auto Value = static_cast<TEnum>(Ordinal++);
    EXPECT_EQ(EnumName(Value), Name);
    EXPECT_EQ(EnumValue<TEnum>(Name), Value);
  }
  EXPECT_THROW(EnumName(static_cast<TEnum>(Ordinal)), std::out_of_range);
  EXPECT_EQ(EnumValue<TEnum>("no such name"), std::nullopt);
}

TEST(Vocabulary, EveryEnumerationGoesBetweenOrdinalValueAndName) {
  ExpectNames<TGeneType>({"gtUnknown", "gtBoolean", "gtInteger", "gtFloat", "gtEnumeration"});
  ExpectNames<TGACrossoverMethod>(
      {"cmGeneBoundary", "cmBitBoundary", "cmByteBoundary", "cmWordBoundary", "cmLongwordBoundary"});
  ExpectNames<TGAFitnessMethod>({"fmMinimize", "fmMaximize", "fmWeightedMinimize", "fmWeightedMaximize"});
  ExpectNames<TGASelectionMethod>(
      {"smRoulette", "smRandom", "smTournament", "smStochasticTournament", "smElitist", "smCustom"});
  ExpectNames<TGAGeneticOperation>({"goCrossover", "goMutate", "goInvert"});
  ExpectNames<TExecutionState>({"esInitializing", "esInitialized", "esEncoding", "esEncoded", "esExecuting",
                                "esInvalidOperation", "esInvalidState", "esError", "esFinishing",
                                "esFinished"});
  ExpectNames<TExecutionLimit>({"elNumberOfSteps", "elNumberOfMilliseconds", "elNone"});
  ExpectNames<TGPGeneticInstruction>({"gpVariable", "gpConstant", "gpFunction"});
  ExpectNames<TGPCrossoverMethod>({"cmSubtree"});
  ExpectNames<TGPMutationMethod>(
      {"mmSubtree", "mmReplacement", "mmConstant", "mmShrink", "mmHoist", "mmPoint"});
  ExpectNames<TGPPointMutationMethod>({"pmmPerNode", "pmmPerTree"});
  ExpectNames<TGPBloatStrategy>({"bsNone", "bsSizeLimit", "bsDepthLimit", "bsTarpeianSize", "bsTarpeianDepth",
                                 "bsUnfitSize", "bsUnfitDepth", "bsShrinkDepth", "bsShrinkSize",
                                 "bsHoistDepth", "bsHoistSize", "bsSizeFairCrossover", "bsDepthFairCrossover",
                                 "bsSizeParsimonyPressure", "bsDepthParsimonyPressure",
                                 "bsCovariantSizeParsimonyPressure", "bsCovariantDepthParsimonyPressure",
                                 "bsLexicographicParsimonyPressure"});
  ExpectNames<TGPInitializationMethod>(
      {"imFull", "imGrow", "imRampedFull", "imRampedGrow", "imHalfAndHalf", "imRampedHalfAndHalf"});
}

TEST(Vocabulary, NamesAreReadWithTheirCase) {
  EXPECT_EQ(EnumValue<TGAFitnessMethod>("fmmaximize"), std::nullopt);
  EXPECT_EQ(EnumValue<TGAFitnessMethod>(""), std::nullopt);
}

TEST(Vocabulary, AnOrdinalThatIsNoValueIsRefusedByName) {
  try {
    CheckedEnum(static_cast<TGASelectionMethod>(77), "SelectionMethod");
    FAIL();
  } catch (const std::out_of_range& Error) {
    EXPECT_STREQ(Error.what(), "SelectionMethod: 77 is no value of the enumeration, whose ordinals end at 5");
  }
}

TEST(Vocabulary, OperationSetsAreBits) {
  EXPECT_EQ((TGAGeneticOperations{goCrossover, goMutate, goInvert}).Bits(), 7U);
  EXPECT_EQ(TGAGeneticOperations{}.Bits(), 0U);
  EXPECT_TRUE(TGAGeneticOperations{}.Empty());
  TGAGeneticOperations Set{goMutate};
  Set.Include(goInvert);
  Set.Exclude(goMutate);
  EXPECT_EQ(Set, TGAGeneticOperations::FromBits(4));
  EXPECT_FALSE(Set.Contains(goMutate));
}

TEST(Vocabulary, ASetRefusesAnOrdinalThatItCannotHold) {
  TGAGeneticOperations Set;
  EXPECT_THROW(Set.Include(static_cast<TGAGeneticOperation>(40)), std::out_of_range);
  EXPECT_TRUE(Set.Empty());
}

TEST(Vocabulary, FinishedStatesAreFive) {
  int Count = 0;
  for (int Ordinal = 0; Ordinal < 10; ++Ordinal) {
    Count += static_cast<int>(FinishedStates.Contains(static_cast<TExecutionState>(Ordinal)));
  }
  EXPECT_EQ(Count, 5);
  EXPECT_FALSE(FinishedStates.Contains(esExecuting));
  EXPECT_TRUE(FinishedStates.Contains(esInvalidOperation));
}

TEST(Vocabulary, DefaultsHaveTheirValues) {
  EXPECT_EQ(CROSSOVER_PROBABILITY, 0.98);
  EXPECT_EQ(GP_CROSSOVER_PROBABILITY, 0.9);
  EXPECT_EQ(DEFAULT_ELITIST_PCT, 0.1);
  EXPECT_EQ(DEFAULT_FITNESS_CUTOFF, 1.0);
  EXPECT_EQ(DEFAULT_DIVERSITY_LIMIT, 0.02);
  EXPECT_EQ(MUTATION_PROBABILITY, 0.01);
  EXPECT_EQ(INVERSION_PROBABILITY, 0.1);
  EXPECT_EQ(NONTERMINALS_SELECTION_PROBABILITY, 0.9);
  EXPECT_EQ(DEFAULT_PARSIMONY_COEFFICIENT, 1.0);
  EXPECT_EQ(DEFAULT_TARPEIAN_PROBABILITY, 0.3);
  EXPECT_EQ(DEFAULT_ADAPTION_SAMPLE_SIZE, 0.25);
  EXPECT_EQ(DefaultMutationWeights[mmSubtree], 25);
  EXPECT_EQ(DefaultMutationWeights[mmReplacement], 0);
  EXPECT_EQ(DefaultMutationWeights[mmConstant], 0);
  EXPECT_EQ(DefaultMutationWeights[mmShrink], 25);
  EXPECT_EQ(DefaultMutationWeights[mmHoist], 25);
  EXPECT_EQ(DefaultMutationWeights[mmPoint], 0);
}

TEST(Vocabulary, ErrorKindsNest) {
  EXPECT_THROW(throw EGPException("x"), EGAException);
  EXPECT_THROW(throw EGAException("x"), EQXException);
  EXPECT_THROW(throw EQXException("x"), std::exception);
  try {
    throw EGAException("x");
  } catch (const EGPException&) {
    FAIL();
  } catch (const EQXException& Error) {
    EXPECT_STREQ(Error.what(), "x");
  }
}

TEST(Vocabulary, MessagesHaveTheirTexts) {
  EXPECT_EQ(SNodeFull, "Node cannot accept anymore children");
  EXPECT_EQ(SInvalidTerminalNode, "Invalid terminal node.  Node requires greater than 0 children");
  EXPECT_EQ(SNoFitnessFunction, "No fitness function defined");
  EXPECT_EQ(SNoSelectionFunction, "No custom selection function defined");
  EXPECT_EQ(SNoConstantMutation, "No constant mutation function defined");
  EXPECT_EQ(SNoEnumerationFound, "No enumerated value found in chromosome");
  EXPECT_EQ(SValueNotEnumeration, "\"%s\" is not a valid enumerated value");
  EXPECT_EQ(SInstructionNotUnique, "instruction name must be unique");
  EXPECT_EQ(SUnknownInstruction, "Unknown instruction \"%s\"");
  EXPECT_EQ(SInvalidInstructionIndex, "%i is an invalid instruction set encoding");
  EXPECT_EQ(SInvalidNumInstructionArgs, "Invalid number of arguments (%d) for \"%s\" instruction");
  EXPECT_EQ(SMissingVirtualMachine, "Missing Virtual Machine");
  EXPECT_EQ(SMissingGeneticProgram, "Missing Genetic Program Engine");
  EXPECT_EQ(SInvalidOperationCode, "INVALID OPERATION");
  EXPECT_EQ(SNoTerminalsFound, "No terminals found");
  EXPECT_EQ(SNoOperationsFound, "No operations found");
  EXPECT_EQ(SNoInstructionsFound, "No nodes found");
  EXPECT_EQ(SNoInstructionAssigned, "No instruction assigned to node");
}

TEST(Vocabulary, PlaceholdersAreFilledInOrder) {
  EXPECT_EQ(FormatText(SInvalidNumInstructionArgs, {"1", "Add"}),
            "Invalid number of arguments (1) for \"Add\" instruction");
  EXPECT_EQ(FormatText(SValueNotEnumeration, {"100%s"}), "\"100%s\" is not a valid enumerated value");
  EXPECT_EQ(FormatText("50% of %i", {"7"}), "50% of 7");
  EXPECT_EQ(FormatText("%s%", {}), "%s%");
}

TEST(FitnessOrder, TheBetterOfTwoDependsOnTheDirection) {
  EXPECT_EQ(CompareFitnesses(1, 2, false), -1);
  EXPECT_EQ(CompareFitnesses(1, 2, true), 1);
  EXPECT_EQ(CompareFitnesses(2, 2, true), 0);
  EXPECT_EQ(CompareFitnesses(Infinity, Infinity, false), 0);
  EXPECT_EQ(CompareFitnesses(-Infinity, Infinity, false), -1);
}

TEST(FitnessOrder, NotANumberIsWorseThanEveryNumberInEitherDirection) {
  for (const bool Maximize : {false, true}) {
    for (const double Number : {0.0, 1e308, -Infinity, Infinity}) {
      EXPECT_EQ(CompareFitnesses(NaN, Number, Maximize), 1);
      EXPECT_EQ(CompareFitnesses(Number, NaN, Maximize), -1);
    }
    EXPECT_EQ(CompareFitnesses(NaN, NaN, Maximize), 0);
  }
}

} // namespace
} // namespace qx
