#pragma once

// The shared vocabulary: numeric types, enumerations with their names, default settings, error kinds and
// error messages.

#include <qx/foundation/QXCommon.h>
#include <qx/platform/EnumSet.h>

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace qx {

/// General floating-point value of the library.
using TGAFloat = double;
/// A fitness value.
using TGAFitness = double;
/// A probability or fraction; settings of this type are clamped into 0 to 1.
using TGAProbability = double;
using TGAFitnessArray = std::vector<TGAFitness>;
using TGAProbabilityArray = std::vector<TGAProbability>;
/// Rows may differ in length.
using TGAProbabilityTable = std::vector<TGAProbabilityArray>;
using TIntegerArray = std::vector<std::int32_t>;

/// The value type of a gene.
enum TGeneType : std::uint8_t { gtUnknown, gtBoolean, gtInteger, gtFloat, gtEnumeration };

/// What a field stands for. gdStrict: for the number that its bits spell, which may be the place of no text
/// and lie outside the gene's limits. gdAlwaysValid: for one of the gene's texts, or a value within its
/// limits, in shares as equal as can be.
enum TGADecoding : std::uint8_t { gdStrict, gdAlwaysValid };

/// Where the crossover of bit chromosomes may cut.
enum TGACrossoverMethod : std::uint8_t {
  cmGeneBoundary,
  cmBitBoundary,
  cmByteBoundary,
  cmWordBoundary,
  cmLongwordBoundary
};

/// Whether lower or higher fitness is better, and whether the raw or the weighted fitness drives selection.
enum TGAFitnessMethod : std::uint8_t { fmMinimize, fmMaximize, fmWeightedMinimize, fmWeightedMaximize };

/// How parents are chosen.
enum TGASelectionMethod : std::uint8_t {
  smRoulette,
  smRandom,
  smTournament,
  smStochasticTournament,
  smElitist,
  smCustom
};

/// The genetic operators that reproduction may apply.
enum TGAGeneticOperation : std::uint8_t { goCrossover, goMutate, goInvert };

/// The state of a program executor.
enum TExecutionState : std::uint8_t {
  esInitializing,
  esInitialized,
  esEncoding,
  esEncoded,
  esExecuting,
  esInvalidOperation,
  esInvalidState,
  esError,
  esFinishing,
  esFinished
};

/// What bounds one program execution.
enum TExecutionLimit : std::uint8_t { elNumberOfSteps, elNumberOfMilliseconds, elNone };

/// The kind of an instruction of a program.
enum TGPGeneticInstruction : std::uint8_t { gpVariable, gpConstant, gpFunction };

/// How programs are crossed; subtree exchange is the only method.
enum TGPCrossoverMethod : std::uint8_t { cmSubtree };

/// How a program is mutated.
enum TGPMutationMethod : std::uint8_t { mmSubtree, mmReplacement, mmConstant, mmShrink, mmHoist, mmPoint };

/// How point mutation draws its probability.
enum TGPPointMutationMethod : std::uint8_t { pmmPerNode, pmmPerTree };

/// The remedy against programs that grow without gaining fitness.
enum TGPBloatStrategy : std::uint8_t {
  bsNone,
  bsSizeLimit,
  bsDepthLimit,
  bsTarpeianSize,
  bsTarpeianDepth,
  bsUnfitSize,
  bsUnfitDepth,
  bsShrinkDepth,
  bsShrinkSize,
  bsHoistDepth,
  bsHoistSize,
  bsSizeFairCrossover,
  bsDepthFairCrossover,
  bsSizeParsimonyPressure,
  bsDepthParsimonyPressure,
  bsCovariantSizeParsimonyPressure,
  bsCovariantDepthParsimonyPressure,
  bsLexicographicParsimonyPressure
};

/// How initial program trees are built.
enum TGPInitializationMethod : std::uint8_t {
  imFull,
  imGrow,
  imRampedFull,
  imRampedGrow,
  imHalfAndHalf,
  imRampedHalfAndHalf
};

/// The textual names of an enumeration's values, in order of their ordinals. Specialised for each enumeration
/// above.
template <class TEnum>
std::span<const std::string_view> EnumNames();

template <>
std::span<const std::string_view> EnumNames<TGeneType>();
template <>
std::span<const std::string_view> EnumNames<TGADecoding>();
template <>
std::span<const std::string_view> EnumNames<TGACrossoverMethod>();
template <>
std::span<const std::string_view> EnumNames<TGAFitnessMethod>();
template <>
std::span<const std::string_view> EnumNames<TGASelectionMethod>();
template <>
std::span<const std::string_view> EnumNames<TGAGeneticOperation>();
template <>
std::span<const std::string_view> EnumNames<TExecutionState>();
template <>
std::span<const std::string_view> EnumNames<TExecutionLimit>();
template <>
std::span<const std::string_view> EnumNames<TGPGeneticInstruction>();
template <>
std::span<const std::string_view> EnumNames<TGPCrossoverMethod>();
template <>
std::span<const std::string_view> EnumNames<TGPMutationMethod>();
template <>
std::span<const std::string_view> EnumNames<TGPPointMutationMethod>();
template <>
std::span<const std::string_view> EnumNames<TGPBloatStrategy>();
template <>
std::span<const std::string_view> EnumNames<TGPInitializationMethod>();

namespace detail {
[[noreturn]] void RaiseBadOrdinal(std::string_view What, unsigned Ordinal, std::size_t Count);
} // namespace detail

/// Returns the value when its ordinal is one of the enumeration's. Otherwise raises std::out_of_range, which
/// names `What` the value is for, and the ordinal.
template <class TEnum>
requires std::is_enum_v<TEnum> TEnum CheckedEnum(TEnum Value, std::string_view What) {
  const auto Ordinal = static_cast<unsigned>(Value);
  if (Ordinal >= EnumNames<TEnum>().size()) {
    detail::RaiseBadOrdinal(What, Ordinal, EnumNames<TEnum>().size());
  }
  return Value;
}

/// The name of a value, such as "fmMinimize". Raises std::out_of_range for no value of the enumeration.
template <class TEnum>
requires std::is_enum_v<TEnum> std::string_view EnumName(TEnum Value) {
  return EnumNames<TEnum>()[static_cast<std::size_t>(CheckedEnum(Value, "enumeration"))];
}

/// The value of a name, case included, or nothing when no value has that name.
template <class TEnum>
requires std::is_enum_v<TEnum> std::optional<TEnum> EnumValue(std::string_view Name) {
  const auto Names = EnumNames<TEnum>();
  for (std::size_t I = 0; I < Names.size(); ++I) {
    if (Names[I] == Name) {
      return static_cast<TEnum>(I);
    }
  }
  return std::nullopt;
}

using TGAGeneticOperations = TEnumSet<TGAGeneticOperation>;
using TExecutionStates = TEnumSet<TExecutionState>;
using TGPGeneticInstructions = TEnumSet<TGPGeneticInstruction>;
/// Relative weights, indexed by `TGPMutationMethod`.
using TGPMutationMethodWeights = std::array<std::uint8_t, 6>;

/// Crossover probability of every component.
inline constexpr TGAProbability CROSSOVER_PROBABILITY = 0.98;
/// Crossover probability of program evolution.
inline constexpr TGAProbability GP_CROSSOVER_PROBABILITY = 0.9;
inline constexpr TGAProbability DEFAULT_ELITIST_PCT = 0.1;
inline constexpr TGAFitness DEFAULT_FITNESS_CUTOFF = 1.0;
inline constexpr TGAProbability DEFAULT_DIVERSITY_LIMIT = 0.02;
inline constexpr TGAProbability MUTATION_PROBABILITY = 0.01;
inline constexpr TGAProbability INVERSION_PROBABILITY = 0.1;
/// Probability of picking a function node rather than a terminal as a crossover point.
inline constexpr TGAProbability NONTERMINALS_SELECTION_PROBABILITY = 0.9;
inline constexpr TGAFloat DEFAULT_PARSIMONY_COEFFICIENT = 1.0;
inline constexpr TGAProbability DEFAULT_TARPEIAN_PROBABILITY = 0.3;
inline constexpr TGAProbability DEFAULT_ADAPTION_SAMPLE_SIZE = 0.25;
/// The states in which an executor has stopped.
inline constexpr TExecutionStates FinishedStates = {esInvalidOperation, esInvalidState, esError, esFinishing,
                                                    esFinished};
inline constexpr TGPMutationMethodWeights DefaultMutationWeights = {25, 0, 0, 25, 25, 0};

/// Errors of the evolution engine and the genetic algorithm.
class EGAException : public EQXException {
public:
  using EQXException::EQXException;
};

/// Errors of program trees and genetic programming.
class EGPException : public EGAException {
public:
  using EGAException::EGAException;
};

inline constexpr std::string_view SNodeFull = "Node cannot accept anymore children";
inline constexpr std::string_view SInvalidTerminalNode =
    "Invalid terminal node.  Node requires greater than 0 children";
inline constexpr std::string_view SNoFitnessFunction = "No fitness function defined";
inline constexpr std::string_view SNoSelectionFunction = "No custom selection function defined";
inline constexpr std::string_view SNoConstantMutation = "No constant mutation function defined";
inline constexpr std::string_view SNoEnumerationFound = "No enumerated value found in chromosome";
inline constexpr std::string_view SValueNotEnumeration = "\"%s\" is not a valid enumerated value";
inline constexpr std::string_view SInstructionNotUnique = "instruction name must be unique";
inline constexpr std::string_view SUnknownInstruction = "Unknown instruction \"%s\"";
inline constexpr std::string_view SInvalidInstructionIndex = "%i is an invalid instruction set encoding";
inline constexpr std::string_view SInvalidNumInstructionArgs =
    "Invalid number of arguments (%d) for \"%s\" instruction";
inline constexpr std::string_view SMissingVirtualMachine = "Missing Virtual Machine";
inline constexpr std::string_view SMissingGeneticProgram = "Missing Genetic Program Engine";
inline constexpr std::string_view SInvalidOperationCode = "INVALID OPERATION";
inline constexpr std::string_view SNoTerminalsFound = "No terminals found";
inline constexpr std::string_view SNoOperationsFound = "No operations found";
/// The name speaks of instructions and the text of nodes; both are meant so.
inline constexpr std::string_view SNoInstructionsFound = "No nodes found";
inline constexpr std::string_view SNoInstructionAssigned = "No instruction assigned to node";

} // namespace qx
