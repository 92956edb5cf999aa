#include "support/TemporaryFolder.h"
#include <qx/platform/Files.h>

#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace qx {
namespace {

class Files : public testing::Test {
protected:
  tests::TTemporaryFolder Folder;
  std::string Name = Folder.File("run.xml");
};

TEST_F(Files, AFileIsMadeOrReplacedAndNothingElseIsLeft) {
  ReplaceFile(Name, "first");
  EXPECT_EQ(tests::ReadFile(Name), "first");
  ReplaceFile(Name, std::string(1 << 20, 'x'));
  EXPECT_EQ(tests::ReadFile(Name), std::string(1 << 20, 'x'));
  ReplaceFile(Name, "");
  EXPECT_EQ(tests::ReadFile(Name), "");
  EXPECT_EQ(Folder.Count(), 1);
}

TEST_F(Files, AReplacedFileKeepsItsPermissions) {
  ReplaceFile(Name, "first");
  ::chmod(Name.c_str(), 0640);
  ReplaceFile(Name, "second");
  struct stat Status {};
  ASSERT_EQ(::stat(Name.c_str(), &Status), 0);
  EXPECT_EQ(Status.st_mode & 07777, 0640U);
}

TEST_F(Files, ALinkIsFollowed) {
  ReplaceFile(Name, "first");
  const std::string Link = Folder.File("link.xml");
  std::filesystem::create_symlink("run.xml", Link);
  ReplaceFile(Link, "second");
  EXPECT_TRUE(std::filesystem::is_symlink(Link));
  EXPECT_EQ(tests::ReadFile(Name), "second");
}

TEST_F(Files, ALinkToNothingYetIsFollowed) {
  std::filesystem::create_symlink("run.xml", Folder.File("link.xml"));
  ReplaceFile(Folder.File("link.xml"), "text");
  EXPECT_TRUE(std::filesystem::is_symlink(Folder.File("link.xml")));
  EXPECT_EQ(tests::ReadFile(Name), "text");
}

TEST_F(Files, LinksInACircleAreAnError) {
  std::filesystem::create_symlink("two", Folder.File("one"));
  std::filesystem::create_symlink("one", Folder.File("two"));
  EXPECT_THROW(ReplaceFile(Folder.File("one"), "text"), std::system_error);
  EXPECT_EQ(Folder.Count(), 2);
}

TEST_F(Files, WhatMayNotBeWrittenIsNotReplaced) {
  ReplaceFile(Name, "former");
  std::filesystem::permissions(Folder.File(""), std::filesystem::perms::all);
  ::chmod(Name.c_str(), 0444);
  const pid_t Child = ::fork(); // the superuser may write everything
  if (Child == 0) {
    static_cast<void>(::getuid() != 0 || ::setuid(65534) == 0);
    try {
      ReplaceFile(Name, "other");
    } catch (const std::system_error& Error) {
      ::_exit(Error.code() == std::errc::permission_denied ? 0 : 1);
    }
    ::_exit(2);
  }
  int Status = -1;
  ::waitpid(Child, &Status, 0);
  EXPECT_EQ(Status, 0);
  EXPECT_EQ(tests::ReadFile(Name), "former");
}

TEST_F(Files, TheLongestNamesWork) {
  const std::string Long = Folder.File(std::string(255, 'x'));
  ReplaceFile(Long, "text");
  EXPECT_EQ(tests::ReadFile(Long), "text");
}

TEST_F(Files, AFileThatCannotBeWrittenIsNamed) {
  try {
    ReplaceFile(Folder.File("missing/run.xml"), "text");
    FAIL();
  } catch (const std::system_error& Error) {
    EXPECT_EQ(Error.code(), std::errc::no_such_file_or_directory);
    EXPECT_NE(std::string(Error.what()).find("missing/run.xml"), std::string::npos) << Error.what();
  }
}

TEST_F(Files, AFullDeviceIsAnError) {
  try {
    ReplaceFile("/dev/full", "text");
    FAIL();
  } catch (const std::system_error& Error) {
    EXPECT_EQ(Error.code(), std::errc::no_space_on_device);
  }
}

TEST_F(Files, AWriteThatFailsHalfWayLeavesTheFormerFile) {
  ReplaceFile(Name, "former");
  rlimit Before{};
  ::getrlimit(RLIMIT_FSIZE, &Before);
  const rlimit Small{1000, Before.rlim_max};
  const auto Handler = std::signal(SIGXFSZ, SIG_IGN);
  ::setrlimit(RLIMIT_FSIZE, &Small);
  EXPECT_THROW(ReplaceFile(Name, std::string(100000, 'x')), std::system_error);
  ::setrlimit(RLIMIT_FSIZE, &Before);
  std::signal(SIGXFSZ, Handler);
  EXPECT_EQ(tests::ReadFile(Name), "former");
  EXPECT_EQ(Folder.Count(), 1);
}

} // namespace
} // namespace qx
