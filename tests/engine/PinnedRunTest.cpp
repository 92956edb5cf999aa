// Whole runs, known by what they come to: on every compiler, processor and platform that is tried, and after
// every change that is not to change them.

#include <qx/platform/Random.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>
#include <support/CheckpointedRuns.h>
#include <support/Fingerprint.h>

namespace qx {
namespace {

// Of all that can be seen of a kind's runs after twenty generations: settings, both generations, statistics,
// draws.
std::uint64_t FingerprintOf(const std::string& Kind) {
  tests::TFingerprint Taken;
  for (const tests::TCheckpointedRun& Run : tests::CheckpointedRuns()) {
    if (Run.Name.starts_with(Kind)) {
      SeedRandom(7);
      const auto Component = Run.Make();
      Component->Evolve(20);
      Taken.Take(tests::PictureOf(*Component));
    }
  }
  return Taken.Hash();
}

TEST(PinnedRun, OfChromosomesIsTheSameEverywhere) {
  EXPECT_EQ(FingerprintOf("bits-"), 15700600067963909412U);
}
TEST(PinnedRun, OfFloatProgramsIsTheSameEverywhere) {
  EXPECT_EQ(FingerprintOf("float-"), 2930105189728818031U);
}
TEST(PinnedRun, OfBinaryProgramsIsTheSameEverywhere) {
  EXPECT_EQ(FingerprintOf("binary-"), 5665944017366242176U);
}
TEST(PinnedRun, OfVariantProgramsIsTheSameEverywhere) {
  EXPECT_EQ(FingerprintOf("variant-"), 18240226043286860673U);
}

} // namespace
} // namespace qx
