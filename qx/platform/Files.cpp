#include <qx/platform/Files.h>

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace qx {

namespace {

constexpr mode_t NewFileMode = 0666; // less what the process masks

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
#ifdef O_TMPFILE
    // Without a name until it is complete: a process that is killed leaves nothing behind.
    FHandle = ::open(Folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, Mode);
    if (FHandle >= 0) {
      return;
    }
#endif
    FTemporary = TemporaryName();
    FHandle = ::open(FTemporary.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, Mode);
    if (FHandle < 0) {
      const int Error = errno;
      FTemporary.clear();
      Raise(Error);
    }
  }

  void OpenDevice() {
    FHandle = ::open(FTarget.c_str(), O_WRONLY | O_CLOEXEC);
    Require(FHandle >= 0);
  }

  void SetMode(mode_t Mode) { Require(::fchmod(FHandle, Mode) == 0); }

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
      const std::string Handle = "/proc/self/fd/" + std::to_string(FHandle);
      Require(::linkat(AT_FDCWD, Handle.c_str(), AT_FDCWD, Name.c_str(), AT_SYMLINK_FOLLOW) == 0);
      FTemporary = std::move(Name);
    }
    Require(::rename(FTemporary.c_str(), FTarget.c_str()) == 0);
    FTemporary.clear();
  }

private:
  // A name beside the target that no file has: processes and calls count their own.
  std::string TemporaryName() const {
    static unsigned Calls = 0;
    std::string Name;
    do {
      Name = FTarget + ".new-" + std::to_string(::getpid()) + '-' + std::to_string(Calls++);
    } while (::access(Name.c_str(), F_OK) == 0);
    return Name;
  }

  void Require(bool Success) const {
    if (!Success) {
      Raise(errno);
    }
  }

  [[noreturn]] void Raise(int Error) const {
    throw std::system_error(Error, std::generic_category(), "Cannot write \"" + FTarget + '"');
  }

  std::string FTarget;
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

} // namespace

void ReplaceFile(const std::string& FileName, std::string_view Content) {
  struct stat Former {};
  const bool Exists = ::stat(FileName.c_str(), &Former) == 0;
  if (Exists && !S_ISREG(Former.st_mode)) {
    TNewFile Device(FileName);
    Device.OpenDevice();
    Device.Write(Content);
    return;
  }
  const std::string Target = Exists ? std::filesystem::canonical(FileName).string() : FileName;
  std::string Folder = std::filesystem::path(Target).parent_path().string();
  if (Folder.empty()) {
    Folder = ".";
  }
  TNewFile File(Target);
  File.Create(Folder, NewFileMode);
  if (Exists) {
    File.SetMode(Former.st_mode & 07777);
  }
  File.Write(Content);
  File.Sync();
  File.TakeItsPlace();
  SyncFolder(Folder);
}

} // namespace qx
