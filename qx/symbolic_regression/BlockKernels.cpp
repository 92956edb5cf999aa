#include <qx/symbolic_regression/BlockKernels.h>

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace qx {

namespace {

struct TOperationName {
  std::string_view Name;
  int Arity;
};

// Of the operations that are standard instructions, in their order.
constexpr TOperationName Names[] = {
    {"Add", 2},   {"Sub", 2},      {"Mul", 2},         {"Div", 2},     {"AQ", 2},
    {"Neg", 1},   {"Inv", 1},      {"Square", 1},      {"Cube", 1},    {"Sqrt", 1},
    {"Cbrt", 1},  {"Pow", 2},      {"Exp", 1},         {"Log", 1},     {"Sin", 1},
    {"Cos", 1},   {"Tan", 1},      {"Tanh", 1},        {"Abs", 1},     {"Min", 2},
    {"Max", 2},   {"Less", 2},     {"LessOrEqual", 2}, {"Greater", 2}, {"GreaterOrEqual", 2},
    {"Equal", 2}, {"NotEqual", 2}, {"If", 3},          {"And", 2},     {"Or", 2},
    {"Not", 1},   {"Nand", 2},     {"Nor", 2},         {"Xor", 2}};

template <class T>
std::vector<const TBlockKernels<T>*> AvailableKernels() {
  std::vector<const TBlockKernels<T>*> Available{&detail::BaselineKernels<T>()};
#ifdef QX_X86_64_KERNELS
  if (__builtin_cpu_supports("avx2")) {
    Available.push_back(&detail::AVX2Kernels<T>());
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl")) {
      Available.push_back(&detail::AVX512Kernels<T>());
    }
  }
#endif
  return Available;
}

} // namespace

template <>
std::span<const TBlockKernels<double>* const> AllBlockKernels() {
  static const auto Available = AvailableKernels<double>();
  return Available;
}

template <>
std::span<const TBlockKernels<float>* const> AllBlockKernels() {
  static const auto Available = AvailableKernels<float>();
  return Available;
}

int ArityOf(TBlockOperation Operation) {
  if (static_cast<std::size_t>(Operation) < std::size(Names)) {
    return Names[Operation].Arity;
  }
  return Operation == boCopy ? 1 : 3;
}

std::string_view NameOf(TBlockOperation Operation) {
  return static_cast<std::size_t>(Operation) < std::size(Names) ? Names[Operation].Name : std::string_view();
}

TBlockOperation BlockOperationOf(std::string_view Name) {
  const auto* const Found = std::ranges::find(Names, Name, &TOperationName::Name);
  if (Found == std::end(Names)) {
    throw std::invalid_argument("There are no block kernels for \"" + std::string(Name) + "\"");
  }
  return static_cast<TBlockOperation>(Found - std::begin(Names));
}

} // namespace qx
