#include <qx/platform/Files.h>

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace qx {

namespace {

constexpr mode_t NewFileMode = 0666; // less what the process masks

[[noreturn]] void RaiseCannotWrite(const std::string& FileName, int Error) {
  throw std::system_error(Error, std::generic_category(), "Cannot write \"" + FileName + '"');
}

/// Closes the file, and removes it by its temporary name, unless it got its own.
class TNewFile {
public:
  explicit TNewFile(std::string Target) : FTarget(std::move(Target)) {}
  TNewFile(const TNewFile&) = delete;
  TNewFile& operator=(const TNewFile&) = delete;
  ~TNewFile() {
    if (FHandle >= 0) {
      ::close(FHandle);
    }
    if (!FTemporary.empty()) {
      ::unlink(FTemporary.c_str());
    }
  }

  void Create(const std::string& Folder, mode_t Mode) {
    FFolder = Folder;
#ifdef O_TMPFILE
    // Without a name until it is complete: a process that is killed leaves nothing behind.
    if (::access(Handles, X_OK) == 0) {
      FHandle = ::open(Folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, Mode);
    }
    if (FHandle >= 0) {
      return;
    }
#endif
    FTemporary = TemporaryName();
    FHandle = ::open(FTemporary.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, Mode);
    if (FHandle < 0) {
      const int Error = errno;
      FTemporary.clear();
      RaiseCannotWrite(FTarget, Error);
    }
  }

  void OpenDevice() {
    FHandle = ::open(FTarget.c_str(), O_WRONLY | O_CLOEXEC);
    Require(FHandle >= 0);
  }

  // The owner only as far as this process may give files away.
  void SetOwnerAndMode(const struct stat& Former) {
    static_cast<void>(::fchown(FHandle, Former.st_uid, Former.st_gid) == 0);
    Require(::fchmod(FHandle, Former.st_mode & 07777) == 0);
  }

  void Write(std::string_view Content) {
    while (!Content.empty()) {
      const ssize_t Written = ::write(FHandle, Content.data(), Content.size());
      if (Written < 0 && errno == EINTR) {
        continue;
      }
      Require(Written >= 0);
      Content.remove_prefix(static_cast<std::size_t>(Written));
    }
  }

  void Sync() { Require(::fsync(FHandle) == 0); }

  void TakeItsPlace() {
    if (FTemporary.empty()) {
      std::string Name = TemporaryName();
      const std::string Handle = Handles + std::to_string(FHandle);
      Require(::linkat(AT_FDCWD, Handle.c_str(), AT_FDCWD, Name.c_str(), AT_SYMLINK_FOLLOW) == 0);
      FTemporary = std::move(Name);
    }
    Require(::rename(FTemporary.c_str(), FTarget.c_str()) == 0);
    FTemporary.clear();
  }

private:
  static constexpr const char* Handles = "/proc/self/fd/";

  // A short name beside the target that no file has: processes and calls count their own.
  std::string TemporaryName() const {
    static unsigned Calls = 0;
    std::string Name;
    do {
      Name = FFolder + "/.qx-" + std::to_string(::getpid()) + '-' + std::to_string(Calls++);
    } while (::access(Name.c_str(), F_OK) == 0);
    return Name;
  }

  void Require(bool Success) const {
    if (!Success) {
      RaiseCannotWrite(FTarget, errno);
    }
  }

  std::string FTarget;
  std::string FFolder;
  std::string FTemporary;
  int FHandle = -1;
};

// The name becomes durable with its folder; a file system that cannot sync folders loses nothing by that.
void SyncFolder(const std::string& Folder) {
  const int Handle = ::open(Folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (Handle >= 0) {
    ::fsync(Handle);
    ::close(Handle);
  }
}

// The file that a name stands for in the end, whether there is one or not.
std::filesystem::path Followed(std::filesystem::path Name) {
  while (std::filesystem::is_symlink(Name)) {
    Name = Name.parent_path() / std::filesystem::read_symlink(Name);
  }
  return Name;
}

} // namespace

void ReplaceFile(const std::string& FileName, std::string_view Content) {
  struct stat Former {};
  const bool Exists = ::stat(FileName.c_str(), &Former) == 0;
  if (Exists ? ::access(FileName.c_str(), W_OK) != 0 : errno != ENOENT) {
    RaiseCannotWrite(FileName, errno); // links in a circle among other things
  }
  if (Exists && !S_ISREG(Former.st_mode)) {
    TNewFile Device(FileName);
    Device.OpenDevice();
    Device.Write(Content);
    return;
  }
  const std::filesystem::path Target = Followed(FileName);
  std::string Folder = Target.parent_path().string();
  if (Folder.empty()) {
    Folder = ".";
  }
  TNewFile File(Target.string());
  File.Create(Folder, NewFileMode);
  if (Exists) {
    File.SetOwnerAndMode(Former);
  }
  File.Write(Content);
  File.Sync();
  File.TakeItsPlace();
  SyncFolder(Folder);
}

} // namespace qx
