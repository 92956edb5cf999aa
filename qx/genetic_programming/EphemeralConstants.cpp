#include <qx/genetic_programming/EphemeralConstants.h>
#include <qx/platform/Random.h>

#include <cmath>
#include <numbers>
#include <stdexcept>
#include <string>

namespace qx {

namespace {

template <class T>
generics::TQXGPInstruction<T>& Add(generics::TQXGPInstructions<T>& Set, std::string_view Name, double Low,
                                   double High) {
  if (!std::isfinite(High - Low) || Low > High) {
    throw std::invalid_argument("The bounds of the constant \"" + std::string(Name) +
                                "\" must be numbers, the lower one first (" + std::to_string(Low) + ", " +
                                std::to_string(High) + ")");
  }
  if (Set.IndexOf(Name) >= 0) {
    throw EGPException(std::string(SInstructionNotUnique));
  }
  generics::TQXGPInstruction<T>& Added = Set.Add();
  Added.SetName(Name);
  Added.SetOperation(gpConstant);
  Added.OnInitializeNode = [Low, High](auto&, generics::TQXGPNode<T>& Node) {
    Node.SetValue(T(Low + (High - Low) * Random()));
  };
  return Added;
}

} // namespace

generics::TQXGPInstruction<TGAFloat>& AddEphemeralConstant(generics::TQXGPInstructions<TGAFloat>& Set,
                                                           std::string_view Name, double Low, double High) {
  return Add(Set, Name, Low, High);
}

generics::TQXGPInstruction<Variant>& AddEphemeralConstant(generics::TQXGPInstructions<Variant>& Set,
                                                          std::string_view Name, double Low, double High) {
  return Add(Set, Name, Low, High);
}

TGaussianConstantMutation::TGaussianConstantMutation(double Deviation) : FDeviation(Deviation) {
  if (!(Deviation >= 0) || !std::isfinite(Deviation)) {
    throw std::invalid_argument(
        "The deviation of a constant's mutation must be a number that is not negative (" +
        std::to_string(Deviation) + ")");
  }
}

// Box and Muller 1958. The first draw is turned so that its logarithm exists.
double TGaussianConstantMutation::Step() const {
  const double Radius = std::sqrt(-2 * std::log(1 - Random()));
  return FDeviation * Radius * std::cos(2 * std::numbers::pi * Random());
}

} // namespace qx
