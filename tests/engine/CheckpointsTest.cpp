// Checkpoints that are written while a run goes on.

#include <qx/engine/Checkpoints.h>
#include <qx/platform/Filer.h>
#include <qx/platform/Random.h>

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <random>
#include <set>
#include <support/Cases.h>
#include <support/SmallAlgorithm.h>
#include <support/SmallGeneticProgram.h>
#include <support/Streams.h>
#include <support/TemporaryFolder.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace qx {
namespace {

using tests::CheckpointOf;
using tests::TSmallAlgorithm;

class CheckpointsTest : public testing::Test {
protected:
  std::set<std::string> Files() const {
    std::set<std::string> Names;
    for (const auto& Entry : std::filesystem::directory_iterator(Folder.File(""))) {
      Names.insert(Entry.path().filename().string());
    }
    return Names;
  }

  tests::TTemporaryFolder Folder;
  std::string Name = Folder.File("run");
};

TEST_F(CheckpointsTest, AreWrittenEverySoManyGenerationsAndTheLastOnesKept) {
  TSmallAlgorithm Algorithm;
  TCheckpoints Checkpoints(Name, {.EveryGenerations = 3, .KeepLast = 2});
  std::vector<int> Written;
  Algorithm.OnEvolve = [&](auto& Sender) {
    if (Checkpoints.Update(Sender)) {
      Written.push_back(Sender.Generation());
    }
  };
  Algorithm.Evolve(11);
  EXPECT_EQ(Written, (std::vector<int>{1, 4, 7, 10}));
  EXPECT_EQ(Files(), (std::set<std::string>{"run.000003", "run.000004"}));
  TSmallAlgorithm Other;
  EXPECT_EQ(TCheckpoints(Name).Resume(Other), Folder.File("run.000004"));
  EXPECT_EQ(Other.Generation(), 10);
}

TEST_F(CheckpointsTest, AreWrittenWhenSoMuchTimeHasPassed) {
  TSmallAlgorithm Algorithm;
  using namespace std::chrono_literals;
  TCheckpoints Checkpoints(Name, {.EveryGenerations = 0, .Every = 1h});
  EXPECT_TRUE(Checkpoints.Update(Algorithm));
  EXPECT_FALSE(Checkpoints.Update(Algorithm));
  TCheckpoints Often(Name, {.EveryGenerations = 0, .Every = 1ms});
  EXPECT_TRUE(Often.Update(Algorithm));
  std::this_thread::sleep_for(2ms);
  EXPECT_TRUE(Often.Update(Algorithm));
}

TEST_F(CheckpointsTest, OfARunThatBeginsAnewAreTheNewest) {
  TSmallAlgorithm Algorithm;
  TCheckpoints Checkpoints(Name, {.EveryGenerations = 5, .KeepLast = 3});
  Algorithm.SetGeneration(100);
  EXPECT_TRUE(Checkpoints.Update(Algorithm));
  Algorithm.SetGeneration(0);
  EXPECT_TRUE(Checkpoints.Update(Algorithm));
  TSmallAlgorithm Other;
  Checkpoints.Resume(Other);
  EXPECT_EQ(Other.Generation(), 0);
  Other.SetGeneration(4);
  EXPECT_FALSE(Checkpoints.Update(Other)); // counted from the one that was resumed
  Other.SetGeneration(5);
  EXPECT_TRUE(Checkpoints.Update(Other));
}

TEST_F(CheckpointsTest, ADamagedOneGivesWayToTheOneBefore) {
  TSmallAlgorithm Algorithm;
  TCheckpoints Checkpoints(Name, {.KeepLast = 3});
  for (int Generation = 1; Generation <= 3; ++Generation) {
    Algorithm.SetGeneration(Generation);
    Checkpoints.Write(Algorithm);
  }
  tests::WriteFile(Folder.File("run.000003"), "QXCheckpoint 1\nTSmall");
  tests::WriteFile(Folder.File("run.note"), "no checkpoint");
  tests::WriteFile(Folder.File("run."), "no checkpoint");
  TSmallAlgorithm Other;
  EXPECT_EQ(Checkpoints.Resume(Other), Folder.File("run.000002"));
  EXPECT_EQ(Other.Generation(), 2);
  Checkpoints.Write(Other);
  EXPECT_EQ(Files(), (std::set<std::string>{"run.", "run.000002", "run.000003", "run.000004", "run.note"}));
}

TEST_F(CheckpointsTest, NoneIsNoErrorButNoneThatReadsIs) {
  TSmallAlgorithm Algorithm;
  TCheckpoints Checkpoints(Name);
  EXPECT_EQ(Checkpoints.Resume(Algorithm), std::nullopt);
  tests::WriteFile(Folder.File("run.000001"), "");
  const std::string Before = CheckpointOf(Algorithm);
  EXPECT_THROW(Checkpoints.Resume(Algorithm), EPropertyError);
  EXPECT_EQ(CheckpointOf(Algorithm), Before);
}

TEST_F(CheckpointsTest, TheMillionthIsNewerThanTheOneBefore) {
  TSmallAlgorithm Algorithm;
  Algorithm.SaveCheckpoint(Folder.File("run.999999"));
  Algorithm.SetGeneration(5);
  TCheckpoints Checkpoints(Name);
  Checkpoints.Write(Algorithm);
  TSmallAlgorithm Other;
  EXPECT_EQ(Checkpoints.Resume(Other), Folder.File("run.1000000"));
  EXPECT_EQ(Other.Generation(), 5);
}

TEST_F(CheckpointsTest, FilesWithNumbersBeyondAllCountingAreNoneOfThem) {
  TSmallAlgorithm Algorithm;
  tests::WriteFile(Folder.File("run.9223372036854775807"), "");
  TCheckpoints Checkpoints(Name);
  Checkpoints.Write(Algorithm);
  EXPECT_EQ(Checkpoints.Resume(Algorithm), Folder.File("run.000001"));
}

TEST_F(CheckpointsTest, ATimeThatNeverPassesWritesOnlyTheFirst) {
  TSmallAlgorithm Algorithm;
  TCheckpoints Checkpoints(Name, {.EveryGenerations = 0, .Every = std::chrono::milliseconds::max()});
  EXPECT_TRUE(Checkpoints.Update(Algorithm));
  Algorithm.Evolve();
  EXPECT_FALSE(Checkpoints.Update(Algorithm));
}

TEST_F(CheckpointsTest, AreCalledAsTheHostCallsThem) {
  TSmallAlgorithm Algorithm;
  const std::filesystem::path Before = std::filesystem::current_path();
  std::filesystem::current_path(Folder.File(""));
  TCheckpoints("run").Write(Algorithm);
  const auto Resumed = TCheckpoints("run").Resume(Algorithm);
  std::filesystem::current_path(Before);
  EXPECT_EQ(Resumed, "run.000001");
  EXPECT_EQ(Files(), std::set<std::string>{"run.000001"});
}

TEST_F(CheckpointsTest, WithoutTheirFolderRaise) {
  TSmallAlgorithm Algorithm;
  TCheckpoints Checkpoints(Folder.File("none/run"));
  EXPECT_THROW(Checkpoints.Write(Algorithm), std::system_error);
  EXPECT_THROW(Checkpoints.Resume(Algorithm), std::system_error);
}

// --- Kills -------------------------------------------------------------------------------------------------

class TPrograms : public tests::TArithmeticProgramming<> {
public:
  TPrograms() {
    SetInitialPopulation(60);
    SetInitialDuplicatesRetries(0);
    SetBloatStrategy(bsHoistSize);
  }
};

// Evolves and writes checkpoints until it is killed.
[[noreturn]] void RunForEver(const std::string& Name) {
  TPrograms Programs;
  TCheckpoints Checkpoints(Name, {.EveryGenerations = 1, .KeepLast = 2});
  Checkpoints.Resume(Programs);
  for (;;) {
    Programs.Evolve();
    Checkpoints.Update(Programs);
  }
}

constexpr int Kills = tests::Cases(1000, 100);

// How long a process takes, from its start, to the first checkpoint that it writes; in microseconds.
unsigned TimeToACheckpoint(const std::string& Name) {
  const auto Begin = std::chrono::steady_clock::now();
  const pid_t Child = ::fork();
  if (Child == 0) {
    TPrograms Programs;
    TCheckpoints Checkpoints(Name, {.EveryGenerations = 1});
    Checkpoints.Resume(Programs);
    Programs.Evolve();
    Checkpoints.Update(Programs);
    ::_exit(0);
  }
  ::waitpid(Child, nullptr, 0);
  const auto Passed = std::chrono::steady_clock::now() - Begin;
  return static_cast<unsigned>(std::chrono::duration_cast<std::chrono::microseconds>(Passed).count());
}

TEST_F(CheckpointsTest, ManyKillsLeaveTheNewestOneLoadable) {
  TPrograms Programs;
  SeedRandom(1);
  Programs.Initialize();
  TCheckpoints(Name).Write(Programs);
  const unsigned Longest = 3 * TimeToACheckpoint(Name);
  std::mt19937 Choices(1);
  int Generation = 0;
  for (int Kill = 0; Kill < Kills; ++Kill) {
    const pid_t Child = ::fork();
    ASSERT_GE(Child, 0);
    if (Child == 0) {
      RunForEver(Name);
    }
    ::usleep(static_cast<useconds_t>(Choices() % Longest));
    ::kill(Child, SIGKILL);
    ::waitpid(Child, nullptr, 0);
    TPrograms Resumed;
    const std::string Newest = *Files().rbegin();
    ASSERT_EQ(TCheckpoints(Name).Resume(Resumed), Folder.File(Newest));
    ASSERT_GE(Resumed.Generation(), Generation);
    Generation = Resumed.Generation();
  }
  EXPECT_GT(Generation, Kills / 10); // the kills did not all come before the first one
  // All of them are one run: that of a process which nobody killed.
  SeedRandom(1);
  TPrograms Straight;
  Straight.Initialize();
  while (Straight.Generation() < Generation) {
    Straight.Evolve();
  }
  TPrograms Resumed;
  TCheckpoints(Name).Resume(Resumed);
  EXPECT_TRUE(CheckpointOf(Resumed) == CheckpointOf(Straight));
}

} // namespace
} // namespace qx
