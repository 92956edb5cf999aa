// What `Execute` computes by functions of the C library, whose last bits are the library's: sums of a
// thousand values each.

#include <qx/genetic_programming/QXGeneticProgramming.h>

#include <cstdio>
#include <initializer_list>
#include <string_view>
#include <support/Fingerprint.h>

namespace qx {
namespace {

// Of a standard function's values from `From` to `To`; of two arguments the second is 0.7.
std::uint64_t FingerprintOf(std::string_view Name, double From, double To) {
  TQXGPFloatInstructions Set(nullptr);
  auto& Function = AddStandardInstruction(Set, Name);
  auto& Constant = Set.Add();
  Constant.SetOperation(gpConstant);
  const auto Node = generics::MakeNode<TQXGPFloatNode>(&Function);
  for (int I = 0; I < Function.Arity(); ++I) {
    Node->AddChild(generics::MakeNode<TQXGPFloatNode>(&Constant)).SetValue(0.7);
  }
  tests::TFingerprint Taken;
  for (int I = 0; I <= 100'000; ++I) {
    Node->Children(0)->SetValue(From + (To - From) * I / 100'000);
    char Text[32];
    std::snprintf(Text, sizeof Text, "%a ", Node->Execute(nullptr));
    Taken.Take(Text);
  }
  return Taken.Hash();
}

} // namespace
} // namespace qx

int main() {
  for (const char* const Name : {"Sin", "Cos", "Tan", "Tanh", "Exp", "Log", "Pow", "Cbrt", "Sqrt"}) {
    std::printf("%s %016llx\n", Name, static_cast<unsigned long long>(qx::FingerprintOf(Name, -20, 20)));
  }
}
