#pragma once

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <poll.h>
#include <pty.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace qx::tests {

/// What a process came to.
struct TProcessEnd {
  int Code = -1;     // or 128 and the signal
  std::string Out;   // of a terminal: everything
  std::string Error; // nothing of a terminal
};

/// A process whose output is read from pipes, or that has a terminal of its own. It is killed when it takes
/// longer than two minutes.
class TProcess {
public:
  enum class TOutput : std::uint8_t { Pipes, Terminal };

  TProcess(const std::vector<std::string>& Command, const std::string& Folder,
           TOutput Output = TOutput::Pipes, unsigned short Columns = 100) {
    if (Output == TOutput::Terminal) {
      winsize Size{30, Columns, 0, 0};
      FProcess = forkpty(&FOut, nullptr, nullptr, &Size);
    } else {
      std::array<int, 2> Out{};
      std::array<int, 2> Error{};
      if (pipe(Out.data()) != 0 || pipe(Error.data()) != 0) {
        throw std::runtime_error("no pipes");
      }
      FProcess = fork();
      if (FProcess == 0) {
        dup2(Out[1], STDOUT_FILENO);
        dup2(Error[1], STDERR_FILENO);
      }
      close(Out[1]);
      close(Error[1]);
      FOut = Out[0];
      FError = Error[0];
    }
    if (FProcess < 0) {
      throw std::runtime_error("no process");
    }
    if (FProcess == 0) {
      Replace(Command, Folder);
    }
  }
  TProcess(const TProcess&) = delete;
  TProcess& operator=(const TProcess&) = delete;
  ~TProcess() {
    if (FProcess > 0) {
      kill(FProcess, SIGKILL);
      waitpid(FProcess, nullptr, 0);
    }
    close(FOut);
    if (FError >= 0) {
      close(FError);
    }
  }

  /// Reads until the output holds the text; false when the process ends before.
  bool WaitFor(std::string_view Text) {
    while (FEnd.Out.find(Text) == std::string::npos && FEnd.Error.find(Text) == std::string::npos) {
      if (!Read()) {
        return false;
      }
    }
    return true;
  }
  void Send(int Signal) const { kill(FProcess, Signal); }
  /// As if it were typed.
  void Type(std::string_view Text) const {
    if (write(FOut, Text.data(), Text.size()) < 0) {
      throw std::runtime_error("nobody reads");
    }
  }
  TProcessEnd Finish() {
    while (Read()) {
    }
    int Status = 0;
    waitpid(std::exchange(FProcess, -1), &Status, 0);
    FEnd.Code = WIFEXITED(Status) ? WEXITSTATUS(Status) : 128 + WTERMSIG(Status);
    return FEnd;
  }

private:
  [[noreturn]] static void Replace(const std::vector<std::string>& Command, const std::string& Folder) {
    std::vector<char*> Words;
    for (const std::string& Word : Command) {
      Words.push_back(const_cast<char*>(Word.c_str()));
    }
    Words.push_back(nullptr);
    if (chdir(Folder.c_str()) == 0) {
      execvp(Words[0], Words.data());
    }
    _exit(127);
  }

  // Some of what there is to read; false when there will be nothing more.
  bool Read() {
    std::array<pollfd, 2> Sources{{{FOut, POLLIN, 0}, {FError, POLLIN, 0}}};
    const auto Left = std::chrono::duration_cast<std::chrono::milliseconds>(FStart + std::chrono::minutes(2) -
                                                                            std::chrono::steady_clock::now());
    if (Left.count() <= 0 || poll(Sources.data(), Sources.size(), static_cast<int>(Left.count())) <= 0) {
      kill(FProcess, SIGKILL);
      return false;
    }
    bool HasMore = false;
    for (const pollfd& Source : Sources) {
      if (Source.fd >= 0 && Source.revents != 0) {
        std::array<char, 4096> Block{};
        const auto Count = read(Source.fd, Block.data(), Block.size());
        if (Count > 0) {
          (Source.fd == FOut ? FEnd.Out : FEnd.Error).append(Block.data(), static_cast<std::size_t>(Count));
          HasMore = true;
        } else if (Source.fd == FError) {
          close(std::exchange(FError, -1));
          HasMore = true;
        } else {
          FOutEnded = true;
        }
      }
    }
    return HasMore || !FOutEnded;
  }

  pid_t FProcess = -1;
  int FOut = -1;
  int FError = -1;
  bool FOutEnded = false;
  std::chrono::steady_clock::time_point FStart = std::chrono::steady_clock::now();
  TProcessEnd FEnd;
};

} // namespace qx::tests
