#include <qx/foundation/QXGAConsts.h>

#include <stdexcept>

namespace qx {

namespace detail {

void RaiseBadOrdinal(std::string_view What, unsigned Ordinal, std::size_t Count) {
  throw std::out_of_range(std::string(What) + ": " + std::to_string(Ordinal) +
                          " is no value of the enumeration, whose ordinals end at " +
                          std::to_string(Count - 1));
}

} // namespace detail

template <>
std::span<const std::string_view> EnumNames<TGeneType>() {
  static constexpr std::string_view Names[] = {"gtUnknown", "gtBoolean", "gtInteger", "gtFloat",
                                               "gtEnumeration"};
  return Names;
}

template <>
std::span<const std::string_view> EnumNames<TGADecoding>() {
  static constexpr std::string_view Names[] = {"gdStrict", "gdAlwaysValid"};
  return Names;
}

template <>
std::span<const std::string_view> EnumNames<TGACrossoverMethod>() {
  static constexpr std::string_view Names[] = {"cmGeneBoundary", "cmBitBoundary", "cmByteBoundary",
                                               "cmWordBoundary", "cmLongwordBoundary"};
  return Names;
}

template <>
std::span<const std::string_view> EnumNames<TGAFitnessMethod>() {
  static constexpr std::string_view Names[] = {"fmMinimize", "fmMaximize", "fmWeightedMinimize",
                                               "fmWeightedMaximize"};
  return Names;
}

template <>
std::span<const std::string_view> EnumNames<TGASelectionMethod>() {
  static constexpr std::string_view Names[] = {
      "smRoulette", "smRandom", "smTournament", "smStochasticTournament", "smElitist", "smCustom"};
  return Names;
}

template <>
std::span<const std::string_view> EnumNames<TGAGeneticOperation>() {
  static constexpr std::string_view Names[] = {"goCrossover", "goMutate", "goInvert"};
  return Names;
}

template <>
std::span<const std::string_view> EnumNames<TExecutionState>() {
  static constexpr std::string_view Names[] = {
      "esInitializing",     "esInitialized",  "esEncoding", "esEncoded",   "esExecuting",
      "esInvalidOperation", "esInvalidState", "esError",    "esFinishing", "esFinished"};
  return Names;
}

template <>
std::span<const std::string_view> EnumNames<TExecutionLimit>() {
  static constexpr std::string_view Names[] = {"elNumberOfSteps", "elNumberOfMilliseconds", "elNone"};
  return Names;
}

template <>
std::span<const std::string_view> EnumNames<TGPGeneticInstruction>() {
  static constexpr std::string_view Names[] = {"gpVariable", "gpConstant", "gpFunction"};
  return Names;
}

template <>
std::span<const std::string_view> EnumNames<TGPCrossoverMethod>() {
  static constexpr std::string_view Names[] = {"cmSubtree"};
  return Names;
}

template <>
std::span<const std::string_view> EnumNames<TGPMutationMethod>() {
  static constexpr std::string_view Names[] = {"mmSubtree", "mmReplacement", "mmConstant",
                                               "mmShrink",  "mmHoist",       "mmPoint"};
  return Names;
}

template <>
std::span<const std::string_view> EnumNames<TGPPointMutationMethod>() {
  static constexpr std::string_view Names[] = {"pmmPerNode", "pmmPerTree"};
  return Names;
}

template <>
std::span<const std::string_view> EnumNames<TGPBloatStrategy>() {
  static constexpr std::string_view Names[] = {"bsNone",
                                               "bsSizeLimit",
                                               "bsDepthLimit",
                                               "bsTarpeianSize",
                                               "bsTarpeianDepth",
                                               "bsUnfitSize",
                                               "bsUnfitDepth",
                                               "bsShrinkDepth",
                                               "bsShrinkSize",
                                               "bsHoistDepth",
                                               "bsHoistSize",
                                               "bsSizeFairCrossover",
                                               "bsDepthFairCrossover",
                                               "bsSizeParsimonyPressure",
                                               "bsDepthParsimonyPressure",
                                               "bsCovariantSizeParsimonyPressure",
                                               "bsCovariantDepthParsimonyPressure",
                                               "bsLexicographicParsimonyPressure"};
  return Names;
}

template <>
std::span<const std::string_view> EnumNames<TGPInitializationMethod>() {
  static constexpr std::string_view Names[] = {"imFull",       "imGrow",        "imRampedFull",
                                               "imRampedGrow", "imHalfAndHalf", "imRampedHalfAndHalf"};
  return Names;
}

} // namespace qx
