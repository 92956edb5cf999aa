#include <qx/platform/RandomKernels.h>

#include <cstring>

#if defined(__x86_64__) && defined(__GNUC__)
#define QX_X86_KERNELS 1
#include <immintrin.h>
#endif

namespace qx::detail {

namespace {

constexpr std::size_t LaneCount = TQXRandomState::Lanes;

// One step of the lanes that fit `TVector` (a vector of 64-bit words, or one word): the draws, from before the
// step, go to `Draw`.
template <class TVector>
[[gnu::always_inline]] inline void Step(TVector (&Words)[4], TVector& Draw) {
  Draw = Words[0] + Words[3];
  const TVector Shifted = Words[1] << 17;
  Words[2] ^= Words[0];
  Words[3] ^= Words[1];
  Words[1] ^= Words[2];
  Words[0] ^= Words[3];
  Words[2] ^= Shifted;
  Words[3] = Words[3] << 45 | Words[3] >> 19;
}

template <class TVector>
[[gnu::always_inline]] inline void Load(TVector (&Words)[4], const TRandomLanes& Lanes, std::size_t FirstLane) {
  for (std::size_t W = 0; W < 4; ++W) {
    std::memcpy(&Words[W], &Lanes.Words[W][FirstLane], sizeof(TVector));
  }
}

template <class TVector>
[[gnu::always_inline]] inline void Save(const TVector (&Words)[4], TRandomLanes& Lanes, std::size_t FirstLane) {
  for (std::size_t W = 0; W < 4; ++W) {
    std::memcpy(&Lanes.Words[W][FirstLane], &Words[W], sizeof(TVector));
  }
}

// Lanes are independent: those that fit a vector run through all steps before the next ones do.
template <class TVector>
[[gnu::always_inline]] inline void FillBy(TRandomLanes& Lanes, std::uint64_t* Draws, std::size_t Steps) {
  constexpr std::size_t Width = sizeof(TVector) / sizeof(std::uint64_t);
  for (std::size_t First = 0; First < LaneCount; First += Width) {
    TVector Words[4];
    Load(Words, Lanes, First);
    for (std::size_t S = 0; S < Steps; ++S) {
      TVector Draw;
      Step(Words, Draw);
      std::memcpy(Draws + S * LaneCount + First, &Draw, sizeof Draw);
    }
    Save(Words, Lanes, First);
  }
}

void FillPlain(TRandomLanes& Lanes, std::uint64_t* Draws, std::size_t Steps) {
  FillBy<std::uint64_t>(Lanes, Draws, Steps);
}

std::uint64_t CompareBelowPlain(const std::uint64_t* Draws, std::size_t Count, std::uint64_t Threshold) {
  std::uint64_t Word = 0;
  for (std::size_t I = 0; I < Count; ++I) {
    Word |= static_cast<std::uint64_t>(Draws[I] < Threshold) << I;
  }
  return Word;
}

void GenerateBelowPlain(TRandomLanes& Lanes, std::uint64_t Threshold, std::uint64_t* Words,
                        std::size_t Count) {
  std::uint64_t Draws[64];
  for (std::size_t W = 0; W < Count; ++W) {
    FillPlain(Lanes, Draws, 64 / LaneCount);
    Words[W] = CompareBelowPlain(Draws, 64, Threshold);
  }
}

constexpr TRandomKernels PlainKernels{"plain", FillPlain, GenerateBelowPlain, CompareBelowPlain};

std::uint64_t LowBits(std::size_t Count) { return Count >= 64 ? ~0ULL : (1ULL << Count) - 1; }

#ifdef QX_X86_KERNELS

using TVector4 = std::uint64_t __attribute__((vector_size(32)));
using TVector8 = std::uint64_t __attribute__((vector_size(64)));

#define QX_AVX2 __attribute__((target("avx2")))
#define QX_AVX512 __attribute__((target("avx512f")))

QX_AVX2 void FillAvx2(TRandomLanes& Lanes, std::uint64_t* Draws, std::size_t Steps) {
  FillBy<TVector4>(Lanes, Draws, Steps);
}

// The instruction set compares signed words only: both sides are shifted down by 2^63.
QX_AVX2 inline __m256i ShiftedAvx2(__m256i Draws) {
  return _mm256_xor_si256(Draws, _mm256_set1_epi64x(static_cast<long long>(1ULL << 63)));
}

QX_AVX2 inline std::uint64_t BelowAvx2(__m256i Draws, __m256i ShiftedThreshold) {
  const __m256i Below = _mm256_cmpgt_epi64(ShiftedThreshold, ShiftedAvx2(Draws));
  return static_cast<std::uint64_t>(_mm256_movemask_pd(_mm256_castsi256_pd(Below)));
}

QX_AVX2 void GenerateBelowAvx2(TRandomLanes& Lanes, std::uint64_t Threshold, std::uint64_t* Words,
                               std::size_t Count) {
  const __m256i Limit = ShiftedAvx2(_mm256_set1_epi64x(static_cast<long long>(Threshold)));
  TVector4 Low[4];
  TVector4 High[4];
  Load(Low, Lanes, 0);
  Load(High, Lanes, 4);
  for (std::size_t W = 0; W < Count; ++W) {
    std::uint64_t Word = 0;
    for (unsigned Bit = 0; Bit < 64; Bit += LaneCount) {
      TVector4 Draw;
      Step(Low, Draw);
      Word |= BelowAvx2(reinterpret_cast<__m256i>(Draw), Limit) << Bit;
      Step(High, Draw);
      Word |= BelowAvx2(reinterpret_cast<__m256i>(Draw), Limit) << (Bit + 4);
    }
    Words[W] = Word;
  }
  Save(Low, Lanes, 0);
  Save(High, Lanes, 4);
}

QX_AVX2 std::uint64_t CompareBelowAvx2(const std::uint64_t* Draws, std::size_t Count,
                                       std::uint64_t Threshold) {
  const __m256i Limit = ShiftedAvx2(_mm256_set1_epi64x(static_cast<long long>(Threshold)));
  std::uint64_t Word = 0;
  for (std::size_t I = 0; I < Count; I += 4) {
    Word |= BelowAvx2(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(Draws + I)), Limit) << I;
  }
  return Word & LowBits(Count);
}

constexpr TRandomKernels Avx2Kernels{"avx2", FillAvx2, GenerateBelowAvx2, CompareBelowAvx2};

QX_AVX512 void FillAvx512(TRandomLanes& Lanes, std::uint64_t* Draws, std::size_t Steps) {
  FillBy<TVector8>(Lanes, Draws, Steps);
}

QX_AVX512 void GenerateBelowAvx512(TRandomLanes& Lanes, std::uint64_t Threshold, std::uint64_t* Words,
                                   std::size_t Count) {
  const __m512i Limit = _mm512_set1_epi64(static_cast<long long>(Threshold));
  TVector8 All[4];
  Load(All, Lanes, 0);
  for (std::size_t W = 0; W < Count; ++W) {
    std::uint64_t Word = 0;
#pragma GCC unroll 8
    for (unsigned Bit = 0; Bit < 64; Bit += LaneCount) {
      TVector8 Draw;
      Step(All, Draw);
      Word |= static_cast<std::uint64_t>(_mm512_cmplt_epu64_mask(reinterpret_cast<__m512i>(Draw), Limit)) << Bit;
    }
    Words[W] = Word;
  }
  Save(All, Lanes, 0);
}

QX_AVX512 std::uint64_t CompareBelowAvx512(const std::uint64_t* Draws, std::size_t Count,
                                           std::uint64_t Threshold) {
  const __m512i Limit = _mm512_set1_epi64(static_cast<long long>(Threshold));
  std::uint64_t Word = 0;
  for (std::size_t I = 0; I < Count; I += LaneCount) {
    Word |= static_cast<std::uint64_t>(_mm512_cmplt_epu64_mask(_mm512_loadu_si512(Draws + I), Limit)) << I;
  }
  return Word & LowBits(Count);
}

constexpr TRandomKernels Avx512Kernels{"avx512", FillAvx512, GenerateBelowAvx512, CompareBelowAvx512};

constexpr const TRandomKernels* KernelTable[] = {&Avx512Kernels, &Avx2Kernels, &PlainKernels};

#else

constexpr const TRandomKernels* KernelTable[] = {&PlainKernels};

#endif

} // namespace

TRandomKernelList RandomKernels() {
  constexpr std::size_t TableSize = sizeof KernelTable / sizeof *KernelTable;
  std::size_t Skipped = 0;
#ifdef QX_X86_KERNELS
  __builtin_cpu_init();
  if (!__builtin_cpu_supports("avx512f")) {
    Skipped = __builtin_cpu_supports("avx2") ? 1 : 2;
  }
#endif
  return {KernelTable + Skipped, TableSize - Skipped};
}

} // namespace qx::detail
