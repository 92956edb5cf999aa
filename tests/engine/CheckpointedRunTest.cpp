// Runs that stop at a checkpoint and go on in another process.

#include <qx/platform/Random.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <support/CheckpointedRuns.h>
#include <support/TemporaryFolder.h>

namespace qx {
namespace {

TEST(CheckpointedRun, OfEveryKindGoesOnInAnotherProcessAsIfItHadNotStopped) {
  const tests::TTemporaryFolder Folder;
  for (const std::string Action : {"begin", "resume"}) {
    const std::string Command = std::string(QX_CHECKPOINT_HOST " ") + Action + ' ' + Folder.File("");
    ASSERT_EQ(std::system(Command.c_str()), 0);
  }
  for (const tests::TCheckpointedRun& Run : tests::CheckpointedRuns()) {
    const auto Component = Run.Make();
    SeedRandom(7);
    Component->Evolve(20);
    ASSERT_EQ(Component->Generation(), 20);
    // not EXPECT_EQ, which would print two checkpoints
    EXPECT_TRUE(tests::ReadFile(Folder.File(Run.Name + ".picture")) == tests::PictureOf(*Component))
        << Run.Name;
  }
}

} // namespace
} // namespace qx
