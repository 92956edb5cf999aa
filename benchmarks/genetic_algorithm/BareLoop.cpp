#include "BareLoop.h"

#include <bit>
#include <cstring>
#include <random>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace qx::benchmarks {

// Generation and comparison in one loop, mutation and counting in the same pass.
struct TBareKernels {
  using TLanes = TBareLoop::TLanes;

  static void StepPlain(TLanes& Lanes, std::uint64_t* Draws) {
    auto& W = Lanes.Words;
    for (int L = 0; L < 8; ++L) {
      Draws[L] = W[0][L] + W[3][L];
      const std::uint64_t Shifted = W[1][L] << 17;
      W[2][L] ^= W[0][L];
      W[3][L] ^= W[1][L];
      W[1][L] ^= W[2][L];
      W[0][L] ^= W[3][L];
      W[2][L] ^= Shifted;
      W[3][L] = std::rotl(W[3][L], 45);
    }
  }

  static void FillPlain(TLanes& Lanes, std::uint64_t* Draws, std::size_t Steps) {
    for (std::size_t S = 0; S < Steps; ++S) {
      StepPlain(Lanes, Draws + 8 * S);
    }
  }

  static void MutatePlain(TLanes& Lanes, std::uint64_t Threshold, std::uint64_t* Words, std::size_t Bits,
                          double& Ones) {
    int Count = 0;
    for (std::size_t First = 0; First < Bits; First += 64) {
      std::uint64_t Flips = 0;
      const std::size_t Wanted = Bits - First < 64 ? Bits - First : 64;
      for (std::size_t B = 0; B < Wanted; B += 8) {
        std::uint64_t Draws[8];
        StepPlain(Lanes, Draws);
        for (std::size_t L = 0; L < 8; ++L) {
          Flips |= static_cast<std::uint64_t>(Draws[L] < Threshold) << (B + L);
        }
      }
      Words[First / 64] ^= Wanted == 64 ? Flips : Flips & ((std::uint64_t{1} << Wanted) - 1);
      Count += std::popcount(Words[First / 64]);
    }
    Ones = Count;
  }

#if defined(__x86_64__)
  using TVector = std::uint64_t __attribute__((vector_size(64)));

  [[gnu::always_inline]] static void Load(const TLanes& Lanes, TVector (&W)[4]) {
    for (std::size_t I = 0; I < 4; ++I) {
      std::memcpy(&W[I], Lanes.Words[I], sizeof(TVector));
    }
  }

  [[gnu::always_inline]] static void Save(const TVector (&W)[4], TLanes& Lanes) {
    for (std::size_t I = 0; I < 4; ++I) {
      std::memcpy(Lanes.Words[I], &W[I], sizeof(TVector));
    }
  }

  [[gnu::always_inline]] static void Step(TVector (&W)[4], TVector& Draw) {
    Draw = W[0] + W[3];
    const TVector Shifted = W[1] << 17;
    W[2] ^= W[0];
    W[3] ^= W[1];
    W[1] ^= W[2];
    W[0] ^= W[3];
    W[2] ^= Shifted;
    W[3] = W[3] << 45 | W[3] >> 19;
  }

  __attribute__((target("avx512f"))) static void FillAvx512(TLanes& Lanes, std::uint64_t* Draws,
                                                            std::size_t Steps) {
    TVector W[4];
    Load(Lanes, W);
    for (std::size_t S = 0; S < Steps; ++S) {
      TVector Draw;
      Step(W, Draw);
      std::memcpy(Draws + 8 * S, &Draw, sizeof Draw);
    }
    Save(W, Lanes);
  }

  __attribute__((target("avx512f,popcnt"))) static void
  MutateAvx512(TLanes& Lanes, std::uint64_t Threshold, std::uint64_t* Words, std::size_t Bits, double& Ones) {
    const __m512i Limit = _mm512_set1_epi64(static_cast<long long>(Threshold));
    TVector W[4];
    Load(Lanes, W);
    int Count = 0;
    for (std::size_t First = 0; First < Bits; First += 64) {
      std::uint64_t Flips = 0;
      const std::size_t Wanted = Bits - First < 64 ? Bits - First : 64;
#ifdef __OPTIMIZE__
#pragma GCC unroll 8
#endif
      for (std::size_t B = 0; B < Wanted; B += 8) {
        TVector Draw;
        Step(W, Draw);
        const __mmask8 Below = _mm512_cmplt_epu64_mask(reinterpret_cast<__m512i>(Draw), Limit);
        Flips |= static_cast<std::uint64_t>(Below) << B;
      }
      Words[First / 64] ^= Wanted == 64 ? Flips : Flips & ((std::uint64_t{1} << Wanted) - 1);
      Count += std::popcount(Words[First / 64]);
    }
    Save(W, Lanes);
    Ones = Count;
  }
#endif
};

TBareLoop::TBareLoop(std::size_t Individuals, std::size_t Bits)
    : FIndividuals(Individuals), FBits(Bits), FWords((Bits + 63) / 64), FParents(Individuals * FWords),
      FChildren(Individuals * FWords), FFitness(Individuals), FChildFitness(Individuals),
      FMutate(TBareKernels::MutatePlain), FFill(TBareKernels::FillPlain) {
#if defined(__x86_64__)
  if (__builtin_cpu_supports("avx512f")) {
    FMutate = TBareKernels::MutateAvx512;
    FFill = TBareKernels::FillAvx512;
  }
#endif
  std::mt19937_64 Seeds(1);
  for (auto& Words : FLanes.Words) {
    for (std::uint64_t& Word : Words) {
      Word = Seeds();
    }
  }
  for (std::size_t I = 0; I < Individuals; ++I) {
    int Ones = 0;
    for (std::size_t B = 0; B < Bits; ++B) {
      const std::uint64_t Bit = Draw() >> 63;
      FParents[I * FWords + B / 64] |= Bit << (B % 64);
      Ones += static_cast<int>(Bit);
    }
    FFitness[I] = Ones;
  }
}

std::uint64_t TBareLoop::Draw() {
  if (FNext == std::size(FBlock)) {
    FFill(FLanes, FBlock, std::size(FBlock) / 8);
    FNext = 0;
  }
  return FBlock[FNext++];
}

std::size_t TBareLoop::Index(std::size_t n) {
  __extension__ using TWide = unsigned __int128;
  return static_cast<std::size_t>(static_cast<TWide>(Draw()) * n >> 64);
}

std::size_t TBareLoop::Tournament() {
  const std::size_t First = Index(FIndividuals);
  const std::size_t Second = Index(FIndividuals);
  return FFitness[Second] > FFitness[First] ? Second : First;
}

void TBareLoop::Child(std::size_t Target, std::size_t First, std::size_t Second, std::size_t Cut) {
  std::uint64_t* const Words = &FChildren[Target * FWords];
  const std::uint64_t* const A = &FParents[First * FWords];
  const std::uint64_t* const B = &FParents[Second * FWords];
  const std::size_t CutWord = Cut / 64;
  std::memcpy(Words, A, CutWord * 8);
  if (CutWord < FWords) {
    const std::uint64_t FromA = ~std::uint64_t{0} >> (63 - Cut % 64);
    Words[CutWord] = (A[CutWord] & FromA) | (B[CutWord] & ~FromA);
    std::memcpy(Words + CutWord + 1, B + CutWord + 1, (FWords - CutWord - 1) * 8);
  }
  constexpr std::uint64_t MutationThreshold = static_cast<std::uint64_t>(0x1p64 / 1000);
  FMutate(FLanes, MutationThreshold, Words, FBits, FChildFitness[Target]);
}

void TBareLoop::Generation() {
  for (std::size_t I = 0; I + 1 < FIndividuals; I += 2) {
    const std::size_t First = Tournament();
    const std::size_t Second = Tournament();
    if (Real() < 0.98) {
      const std::size_t Cut = Index(FBits);
      Child(I, First, Second, Cut);
      Child(I + 1, Second, First, Cut);
    } else {
      Child(I, First, First, FBits);
      Child(I + 1, First, First, FBits);
    }
  }
  FParents.swap(FChildren);
  FFitness.swap(FChildFitness);
}

double TBareLoop::BestFitness() const {
  double Best = 0;
  for (const double Fitness : FFitness) {
    Best = Fitness > Best ? Fitness : Best;
  }
  return Best;
}

} // namespace qx::benchmarks
