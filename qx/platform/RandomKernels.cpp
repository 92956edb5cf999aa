#include <qx/platform/RandomKernels.h>

#include <cstring>
#include <iterator>

#if defined(__x86_64__) && defined(__GNUC__)
#define QX_X86_KERNELS 1
#include <immintrin.h>
#endif

namespace qx::detail {

namespace {

constexpr std::size_t LaneCount = TQXRandomState::Lanes;
constexpr std::size_t StepsPerWord = 64 / LaneCount;

// One step of the lanes that fit `TVector` (a vector of 64-bit words, or one word): the draws, from before
// the step, go to `Draw`.
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
[[gnu::always_inline]] inline void Load(TVector (&Words)[4], const TRandomLanes& Lanes,
                                        std::size_t FirstLane) {
  for (std::size_t W = 0; W < 4; ++W) {
    std::memcpy(&Words[W], &Lanes.Words[W][FirstLane], sizeof(TVector));
  }
}

template <class TVector>
[[gnu::always_inline]] inline void Save(const TVector (&Words)[4], TRandomLanes& Lanes,
                                        std::size_t FirstLane) {
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

/// Appends words of 64 bits, and at last a shorter one, to the few bits that come before them.
class TBitAppender {
public:
  [[gnu::always_inline]] TBitAppender(std::uint64_t* Words, std::uint64_t FirstBits, std::size_t FirstCount)
      : FWord(Words), FOffset(FirstCount), FCarry(FirstBits & ((std::uint64_t{1} << FirstCount) - 1)) {}

  [[gnu::always_inline]] void AppendWord(std::uint64_t Bits) {
    *FWord++ = FCarry | Bits << FOffset;
    FCarry = Bits >> 1 >> (63 - FOffset);
  }

  // Less than 64 bits; those behind them are cut off.
  [[gnu::always_inline]] void AppendLast(std::uint64_t Bits, std::size_t Count) {
    Bits &= (std::uint64_t{1} << Count) - 1;
    if (FOffset + Count > 0) {
      *FWord = FCarry | Bits << FOffset;
    }
    if (FOffset + Count > 64) {
      FWord[1] = Bits >> (64 - FOffset);
    }
  }

private:
  std::uint64_t* FWord;
  std::size_t FOffset;
  std::uint64_t FCarry;
};

std::size_t StepsFor(std::size_t Draws) { return (Draws + LaneCount - 1) / LaneCount; }

void GenerateBelowPlain(TRandomLanes& Lanes, std::uint64_t Threshold, const std::uint64_t* Draws,
                        std::size_t Waiting, std::uint64_t* Words, std::size_t Fresh,
                        std::uint64_t* LastDraws) {
  TBitAppender Appender(Words, CompareBelowPlain(Draws, Waiting, Threshold), Waiting);
  const auto Bits = [&](std::size_t Steps) {
    std::uint64_t Word = 0;
    for (std::size_t Bit = 0; Bit < Steps * LaneCount; Bit += LaneCount) {
      FillPlain(Lanes, LastDraws, 1);
      Word |= CompareBelowPlain(LastDraws, LaneCount, Threshold) << Bit;
    }
    return Word;
  };
  for (; Fresh >= 64; Fresh -= 64) {
    Appender.AppendWord(Bits(StepsPerWord));
  }
  Appender.AppendLast(Bits(StepsFor(Fresh)), Fresh);
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

QX_AVX2 inline std::uint64_t EightBelowAvx2(const std::uint64_t* Draws, __m256i ShiftedThreshold) {
  const auto* const Halves = reinterpret_cast<const __m256i*>(Draws);
  return BelowAvx2(_mm256_loadu_si256(Halves), ShiftedThreshold) |
         BelowAvx2(_mm256_loadu_si256(Halves + 1), ShiftedThreshold) << 4;
}

QX_AVX2 inline std::uint64_t BitsBelowAvx2(const std::uint64_t* Draws, std::size_t Count, __m256i Limit) {
  std::uint64_t Word = 0;
  for (std::size_t I = 0; I < Count; I += LaneCount) {
    Word |= EightBelowAvx2(Draws + I, Limit) << I;
  }
  return Word;
}

QX_AVX2 std::uint64_t CompareBelowAvx2(const std::uint64_t* Draws, std::size_t Count,
                                       std::uint64_t Threshold) {
  const __m256i Limit = ShiftedAvx2(_mm256_set1_epi64x(static_cast<long long>(Threshold)));
  return BitsBelowAvx2(Draws, Count, Limit) & LowBits(Count);
}

QX_AVX2 void GenerateBelowAvx2(TRandomLanes& Lanes, std::uint64_t Threshold, const std::uint64_t* Draws,
                               std::size_t Waiting, std::uint64_t* Words, std::size_t Fresh,
                               std::uint64_t* LastDraws) {
  const __m256i Limit = ShiftedAvx2(_mm256_set1_epi64x(static_cast<long long>(Threshold)));
  TVector4 Low[4];
  TVector4 High[4];
  Load(Low, Lanes, 0);
  Load(High, Lanes, 4);
  TVector4 LowDraw = {};
  TVector4 HighDraw = {};
  TBitAppender Appender(Words, BitsBelowAvx2(Draws, Waiting, Limit), Waiting);
  const auto Bits = [&](std::size_t Steps) __attribute__((always_inline, target("avx2"))) {
    std::uint64_t Word = 0;
    for (std::size_t Bit = 0; Bit < Steps * LaneCount; Bit += LaneCount) {
      Step(Low, LowDraw);
      Step(High, HighDraw);
      Word |= BelowAvx2(reinterpret_cast<__m256i>(LowDraw), Limit) << Bit;
      Word |= BelowAvx2(reinterpret_cast<__m256i>(HighDraw), Limit) << (Bit + 4);
    }
    return Word;
  };
  for (; Fresh >= 64; Fresh -= 64) {
    Appender.AppendWord(Bits(StepsPerWord));
  }
  Appender.AppendLast(Bits(StepsFor(Fresh)), Fresh);
  Save(Low, Lanes, 0);
  Save(High, Lanes, 4);
  std::memcpy(LastDraws, &LowDraw, sizeof LowDraw);
  std::memcpy(LastDraws + 4, &HighDraw, sizeof HighDraw);
}

constexpr TRandomKernels Avx2Kernels{"avx2", FillAvx2, GenerateBelowAvx2, CompareBelowAvx2};

QX_AVX512 void FillAvx512(TRandomLanes& Lanes, std::uint64_t* Draws, std::size_t Steps) {
  FillBy<TVector8>(Lanes, Draws, Steps);
}

QX_AVX512 inline std::uint64_t EightBelowAvx512(const std::uint64_t* Draws, __m512i Threshold) {
  return _mm512_cmplt_epu64_mask(_mm512_loadu_si512(Draws), Threshold);
}

QX_AVX512 inline std::uint64_t BitsBelowAvx512(const std::uint64_t* Draws, std::size_t Count, __m512i Limit) {
  std::uint64_t Word = 0;
  for (std::size_t I = 0; I < Count; I += LaneCount) {
    Word |= EightBelowAvx512(Draws + I, Limit) << I;
  }
  return Word;
}

QX_AVX512 std::uint64_t CompareBelowAvx512(const std::uint64_t* Draws, std::size_t Count,
                                           std::uint64_t Threshold) {
  const __m512i Limit = _mm512_set1_epi64(static_cast<long long>(Threshold));
  return BitsBelowAvx512(Draws, Count, Limit) & LowBits(Count);
}

QX_AVX512 void GenerateBelowAvx512(TRandomLanes& Lanes, std::uint64_t Threshold, const std::uint64_t* Draws,
                                   std::size_t Waiting, std::uint64_t* Words, std::size_t Fresh,
                                   std::uint64_t* LastDraws) {
  const __m512i Limit = _mm512_set1_epi64(static_cast<long long>(Threshold));
  TVector8 All[4];
  Load(All, Lanes, 0);
  TVector8 Draw = {};
  TBitAppender Appender(Words, BitsBelowAvx512(Draws, Waiting, Limit), Waiting);
  const auto Bits = [&](std::size_t Steps) __attribute__((always_inline, target("avx512f"))) {
    std::uint64_t Word = 0;
    for (std::size_t Bit = 0; Bit < Steps * LaneCount; Bit += LaneCount) {
      Step(All, Draw);
      const __mmask8 Below = _mm512_cmplt_epu64_mask(reinterpret_cast<__m512i>(Draw), Limit);
      Word |= static_cast<std::uint64_t>(Below) << Bit;
    }
    return Word;
  };
  for (; Fresh >= 64; Fresh -= 64) {
    Appender.AppendWord(Bits(StepsPerWord));
  }
  Appender.AppendLast(Bits(StepsFor(Fresh)), Fresh);
  Save(All, Lanes, 0);
  std::memcpy(LastDraws, &Draw, sizeof Draw);
}

constexpr TRandomKernels Avx512Kernels{"avx512", FillAvx512, GenerateBelowAvx512, CompareBelowAvx512};

constexpr const TRandomKernels* KernelTable[] = {&Avx512Kernels, &Avx2Kernels, &PlainKernels};

#else

constexpr const TRandomKernels* KernelTable[] = {&PlainKernels};

#endif

} // namespace

TRandomKernelList RandomKernels() {
  constexpr std::size_t TableSize = std::size(KernelTable);
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
