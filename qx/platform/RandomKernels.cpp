#include <qx/platform/RandomKernels.h>

#include <iterator>

#if defined(__x86_64__) && defined(__GNUC__)
#define QX_X86_KERNELS 1
#include <immintrin.h>
#endif

namespace qx::detail {

namespace {

constexpr std::size_t StepsPerWord = 64 / LaneCount;

constexpr std::uint32_t HighHalf(std::uint64_t Draw) { return static_cast<std::uint32_t>(Draw >> 32); }

std::size_t StepsFor(std::size_t Draws) { return (Draws + LaneCount - 1) / LaneCount; }

// Vectors go in and out by reference: their calling convention depends on the instruction set.

template <class TVector>
[[gnu::always_inline]] inline void RotateLeft(TVector& Words, int Count) {
  Words = Words << Count | Words >> (32 - Count);
}

// The halves of the draws of the present state. `TVector` is a vector of 32-bit words, or one word.
template <class TVector>
[[gnu::always_inline]] inline void GetHigh(const TVector (&Words)[4], TVector& High) {
  High = Words[0] + Words[3];
}

template <class TVector>
[[gnu::always_inline]] inline void GetLow(const TVector (&Words)[4], TVector& Low) {
  Low = Words[1] * 5;
  RotateLeft(Low, 7);
  Low *= 9;
}

template <class TVector>
[[gnu::always_inline]] inline void Step(TVector (&Words)[4]) {
  const TVector Shifted = Words[1] << 9;
  Words[2] ^= Words[0];
  Words[3] ^= Words[1];
  Words[1] ^= Words[2];
  Words[0] ^= Words[3];
  Words[2] ^= Shifted;
  RotateLeft(Words[3], 11);
}

#ifdef QX_X86_KERNELS
using TVector8 = std::uint32_t __attribute__((vector_size(32)));
using TVector16 = std::uint32_t __attribute__((vector_size(64)));
#endif

// A vector where it stands in memory, aligned or not. Copying bytes instead would go through registers of the
// baseline, whose pieces a wider load cannot take over before they are written.
template <class TVector>
struct [[gnu::packed, gnu::may_alias]] TStored {
  TVector Value;
};

template <class TVector>
[[gnu::always_inline]] inline void Load(TVector (&Words)[4], const TRandomLanes& Lanes,
                                        std::size_t FirstLane) {
  for (std::size_t W = 0; W < 4; ++W) {
    Words[W] = reinterpret_cast<const TStored<TVector>*>(&Lanes.Words[W][FirstLane])->Value;
  }
}

template <class TVector>
[[gnu::always_inline]] inline void Save(const TVector (&Words)[4], TRandomLanes& Lanes,
                                        std::size_t FirstLane) {
  for (std::size_t W = 0; W < 4; ++W) {
    reinterpret_cast<TStored<TVector>*>(&Lanes.Words[W][FirstLane])->Value = Words[W];
  }
}

// Writes the draws that the halves make, in lane order.
[[gnu::always_inline]] inline void Combine(const std::uint32_t& High, const std::uint32_t& Low,
                                           std::uint64_t* Draws) {
  *Draws = static_cast<std::uint64_t>(High) << 32 | Low;
}

#ifdef QX_X86_KERNELS

[[gnu::always_inline]] inline void Combine(const TVector8& High, const TVector8& Low, std::uint64_t* Draws) {
  const TVector8 First = __builtin_shufflevector(Low, High, 0, 8, 1, 9, 2, 10, 3, 11);
  const TVector8 Second = __builtin_shufflevector(Low, High, 4, 12, 5, 13, 6, 14, 7, 15);
  reinterpret_cast<TStored<TVector8>*>(Draws)->Value = First;
  reinterpret_cast<TStored<TVector8>*>(Draws + 4)->Value = Second;
}

[[gnu::always_inline]] inline void Combine(const TVector16& High, const TVector16& Low,
                                           std::uint64_t* Draws) {
  const TVector16 First =
      __builtin_shufflevector(Low, High, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
  const TVector16 Second =
      __builtin_shufflevector(Low, High, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
  reinterpret_cast<TStored<TVector16>*>(Draws)->Value = First;
  reinterpret_cast<TStored<TVector16>*>(Draws + 8)->Value = Second;
}

#endif

// One step of the lanes that fit `TVector`, and their draws.
template <class TVector>
[[gnu::always_inline]] inline void StepAndDraw(TVector (&Words)[4], std::uint64_t* Draws) {
  TVector High;
  TVector Low;
  GetHigh(Words, High);
  GetLow(Words, Low);
  Combine(High, Low, Draws);
  Step(Words);
}

// Lanes are independent: those that fit a vector run through all steps before the next ones do.
template <class TVector>
[[gnu::always_inline]] inline void FillBy(TRandomLanes& Lanes, std::uint64_t* Draws, std::size_t Steps) {
  constexpr std::size_t Width = sizeof(TVector) / sizeof(std::uint32_t);
  for (std::size_t First = 0; First < LaneCount; First += Width) {
    TVector Words[4];
    Load(Words, Lanes, First);
    for (std::size_t S = 0; S < Steps; ++S) {
      StepAndDraw(Words, Draws + S * LaneCount + First);
    }
    Save(Words, Lanes, First);
  }
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

  // Up to 64 bits, and the end; those behind them are cut off.
  [[gnu::always_inline]] void AppendLast(std::uint64_t Bits, std::size_t Count) {
    Bits &= ~std::uint64_t{0} >> (64 - Count);
    *FWord = FCarry | Bits << FOffset;
    if (FOffset + Count > 64) {
      FWord[1] = Bits >> (64 - FOffset);
    }
  }

private:
  std::uint64_t* FWord;
  std::size_t FOffset;
  std::uint64_t FCarry;
};

void FillPlain(TRandomLanes& Lanes, std::uint64_t* Draws, std::size_t Steps) {
  FillBy<std::uint32_t>(Lanes, Draws, Steps);
}

std::uint64_t CompareBelowPlain(const std::uint64_t* Draws, std::size_t Count, std::uint64_t Threshold) {
  std::uint64_t Word = 0;
  for (std::size_t I = 0; I < Count; ++I) {
    Word |= static_cast<std::uint64_t>(Draws[I] < Threshold) << I;
  }
  return Word;
}

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
  for (; Fresh > 64; Fresh -= 64) {
    Appender.AppendWord(Bits(StepsPerWord));
  }
  Appender.AppendLast(Bits(StepsFor(Fresh)), Fresh);
}

constexpr TRandomKernels PlainKernels{"plain", FillPlain, GenerateBelowPlain, CompareBelowPlain};

#ifdef QX_X86_KERNELS

// The loops below look at the high halves alone, and at both halves in the last step, whose draws they write.
// When a high half equals the threshold's, which happens once in 2^32 draws, they start again with the plain
// loop: the lanes are not saved before that is known.

#define QX_AVX2 __attribute__((target("avx2")))
#define QX_AVX512 __attribute__((target("avx512f")))

QX_AVX2 void FillAvx2(TRandomLanes& Lanes, std::uint64_t* Draws, std::size_t Steps) {
  FillBy<TVector8>(Lanes, Draws, Steps);
}

// The instruction set compares signed words only: both sides are shifted down by half their range.
QX_AVX2 inline std::uint64_t BitsBelowAvx2(const std::uint64_t* Draws, std::size_t Count,
                                           std::uint64_t Threshold) {
  const __m256i Half = _mm256_set1_epi64x(static_cast<long long>(1ULL << 63));
  const __m256i Limit = _mm256_xor_si256(_mm256_set1_epi64x(static_cast<long long>(Threshold)), Half);
  std::uint64_t Word = 0;
  for (std::size_t I = 0; I < Count; I += 4) {
    const __m256i Four = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(Draws + I));
    const __m256i Below = _mm256_cmpgt_epi64(Limit, _mm256_xor_si256(Four, Half));
    Word |= static_cast<std::uint64_t>(_mm256_movemask_pd(_mm256_castsi256_pd(Below))) << I;
  }
  return Word;
}

QX_AVX2 std::uint64_t CompareBelowAvx2(const std::uint64_t* Draws, std::size_t Count,
                                       std::uint64_t Threshold) {
  return BitsBelowAvx2(Draws, Count, Threshold) & LowBits(Count);
}

QX_AVX2 void GenerateBelowAvx2(TRandomLanes& Lanes, std::uint64_t Threshold, const std::uint64_t* Draws,
                               std::size_t Waiting, std::uint64_t* Words, std::size_t Fresh,
                               std::uint64_t* LastDraws) {
  const __m256i Half = _mm256_set1_epi32(static_cast<int>(1U << 31));
  const __m256i Limit = _mm256_xor_si256(_mm256_set1_epi32(static_cast<int>(HighHalf(Threshold))), Half);
  __m256i Ties = _mm256_setzero_si256();
  TVector8 First[4];
  TVector8 Second[4];
  Load(First, Lanes, 0);
  Load(Second, Lanes, 8);
  TBitAppender Appender(Words, BitsBelowAvx2(Draws, Waiting, Threshold), Waiting);
  const auto EightBits = [&](TVector8(&Eight)[4]) __attribute__((always_inline, target("avx2"))) {
    TVector8 High;
    GetHigh(Eight, High);
    const __m256i Highs = _mm256_xor_si256(reinterpret_cast<__m256i>(High), Half);
    Step(Eight);
    Ties = _mm256_or_si256(Ties, _mm256_cmpeq_epi32(Highs, Limit));
    const __m256i Below = _mm256_cmpgt_epi32(Limit, Highs);
    return static_cast<std::uint64_t>(_mm256_movemask_ps(_mm256_castsi256_ps(Below)));
  };
  const auto Bits = [&](std::size_t Steps) __attribute__((always_inline, target("avx2"))) {
    std::uint64_t Word = 0;
    for (std::size_t S = 0; S < StepsPerWord && S < Steps; ++S) {
      Word |= EightBits(First) << (S * LaneCount);
      Word |= EightBits(Second) << (S * LaneCount + 8);
    }
    return Word;
  };
  std::size_t Left = Fresh;
  for (; Left > 64; Left -= 64) {
    Appender.AppendWord(Bits(StepsPerWord));
  }
  const std::size_t FullSteps = StepsFor(Left) - 1;
  const std::uint64_t Word = Bits(FullSteps);
  if (!_mm256_testz_si256(Ties, Ties)) [[unlikely]] {
    GenerateBelowPlain(Lanes, Threshold, Draws, Waiting, Words, Fresh, LastDraws);
    return;
  }
  StepAndDraw(First, LastDraws);
  StepAndDraw(Second, LastDraws + 8);
  Appender.AppendLast(Word | BitsBelowAvx2(LastDraws, LaneCount, Threshold) << (FullSteps * LaneCount), Left);
  Save(First, Lanes, 0);
  Save(Second, Lanes, 8);
}

constexpr TRandomKernels Avx2Kernels{"avx2", FillAvx2, GenerateBelowAvx2, CompareBelowAvx2};

QX_AVX512 void FillAvx512(TRandomLanes& Lanes, std::uint64_t* Draws, std::size_t Steps) {
  FillBy<TVector16>(Lanes, Draws, Steps);
}

QX_AVX512 inline std::uint64_t BitsBelowAvx512(const std::uint64_t* Draws, std::size_t Count,
                                               std::uint64_t Threshold) {
  const __m512i Limit = _mm512_set1_epi64(static_cast<long long>(Threshold));
  std::uint64_t Word = 0;
  for (std::size_t I = 0; I < Count; I += 8) {
    Word |= static_cast<std::uint64_t>(_mm512_cmplt_epu64_mask(_mm512_loadu_si512(Draws + I), Limit)) << I;
  }
  return Word;
}

QX_AVX512 std::uint64_t CompareBelowAvx512(const std::uint64_t* Draws, std::size_t Count,
                                           std::uint64_t Threshold) {
  return BitsBelowAvx512(Draws, Count, Threshold) & LowBits(Count);
}

QX_AVX512 void GenerateBelowAvx512(TRandomLanes& Lanes, std::uint64_t Threshold, const std::uint64_t* Draws,
                                   std::size_t Waiting, std::uint64_t* Words, std::size_t Fresh,
                                   std::uint64_t* LastDraws) {
  const __m512i Limit = _mm512_set1_epi32(static_cast<int>(HighHalf(Threshold)));
  unsigned Ties = 0;
  TVector16 All[4];
  Load(All, Lanes, 0);
  TBitAppender Appender(Words, BitsBelowAvx512(Draws, Waiting, Threshold), Waiting);
  const auto Bits = [&](std::size_t Steps) __attribute__((always_inline, target("avx512f"))) {
    std::uint64_t Word = 0;
    for (std::size_t S = 0; S < StepsPerWord && S < Steps; ++S) {
      TVector16 High;
      GetHigh(All, High);
      const auto Highs = reinterpret_cast<__m512i>(High);
      Step(All);
      Ties |= _mm512_cmpeq_epi32_mask(Highs, Limit);
      Word |= static_cast<std::uint64_t>(_mm512_cmplt_epu32_mask(Highs, Limit)) << (S * LaneCount);
    }
    return Word;
  };
  std::size_t Left = Fresh;
  for (; Left > 64; Left -= 64) {
    Appender.AppendWord(Bits(StepsPerWord));
  }
  const std::size_t FullSteps = StepsFor(Left) - 1;
  const std::uint64_t Word = Bits(FullSteps);
  if (Ties != 0) [[unlikely]] {
    GenerateBelowPlain(Lanes, Threshold, Draws, Waiting, Words, Fresh, LastDraws);
    return;
  }
  StepAndDraw(All, LastDraws);
  Appender.AppendLast(Word | BitsBelowAvx512(LastDraws, LaneCount, Threshold) << (FullSteps * LaneCount),
                      Left);
  Save(All, Lanes, 0);
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
