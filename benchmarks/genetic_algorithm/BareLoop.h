#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qx::benchmarks {

/// OneMax by a bare loop over packed words: the limit that the component is measured against.
///
/// The same operators with the same probabilities as the component's benchmark (binary tournament, one-point
/// crossover with 0.98, one draw a bit for mutation), and nothing else: no objects, no events, no statistics
/// but the count of ones. The generator is xoshiro256+ in eight lanes, kept in registers while a chromosome
/// is mutated and, where the machine has it, vectorised with AVX-512 or AVX2.
class TBareLoop {
public:
  TBareLoop(std::size_t Individuals, std::size_t Bits);
  void Generation();
  double BestFitness() const;

private:
  struct alignas(64) TLanes {
    std::uint64_t Words[4][8];
  };

  std::uint64_t Draw();
  double Real() { return static_cast<double>(Draw() >> 11) * 0x1p-53; }
  std::size_t Index(std::size_t n);
  std::size_t Tournament();
  void Child(std::size_t Target, std::size_t First, std::size_t Second, std::size_t Cut);

  std::size_t FIndividuals;
  std::size_t FBits;
  std::size_t FWords;
  std::vector<std::uint64_t> FParents;
  std::vector<std::uint64_t> FChildren;
  std::vector<double> FFitness;
  std::vector<double> FChildFitness;
  TLanes FLanes;
  alignas(64) std::uint64_t FBlock[256];
  std::size_t FNext = 256;
  void (*FMutate)(TLanes&, std::uint64_t Threshold, std::uint64_t* Words, std::size_t Bits, double& Ones);
  void (*FFill)(TLanes&, std::uint64_t* Draws, std::size_t Steps);

  friend struct TBareKernels;
};

} // namespace qx::benchmarks
