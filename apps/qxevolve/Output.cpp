#include "Output.h"

#include "Error.h"
#include <qx/platform/Files.h>
#include <qx/platform/Numbers.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fmt/format.h>
#include <sys/ioctl.h>
#include <system_error>
#include <unistd.h>

namespace qxevolve {

void Print(std::string_view Text) {
  errno = 0;
  if (std::fwrite(Text.data(), 1, Text.size(), stdout) != Text.size() || std::fflush(stdout) != 0) {
    throw std::system_error(errno, std::generic_category(), "Cannot write to standard output");
  }
}

void Tell(std::string_view Text) {
  std::fwrite(Text.data(), 1, Text.size(), stderr);
  std::fflush(stderr);
}

void WriteOutput(const std::string& FileName, std::string_view Text) {
  if (FileName == "-") {
    Print(Text);
  } else {
    qx::ReplaceFile(FileName, Text);
  }
}

void RequireWritable(const std::string& FileName) {
  namespace fs = std::filesystem;
  const auto Raise = [&](int Code) {
    throw std::system_error(Code, std::generic_category(), "Cannot write \"" + FileName + "\"");
  };
  if (fs::is_directory(FileName)) {
    Raise(EISDIR);
  }
  const std::string Folder = fs::path(FileName).parent_path().string();
  const bool MayWriteFile = !fs::exists(FileName) || access(FileName.c_str(), W_OK) == 0;
  if (!MayWriteFile || access(Folder.empty() ? "." : Folder.c_str(), W_OK | X_OK) != 0) {
    Raise(errno);
  }
}

void RequireOther(const std::string& FileName, std::initializer_list<std::string> Inputs) {
  for (const std::string& Input : Inputs) {
    std::error_code Ignored;
    if (std::filesystem::equivalent(FileName, Input, Ignored)) {
      throw EUsageError(FileName + " is read from; write to another file");
    }
  }
}

std::optional<std::size_t> TerminalWidth(int Descriptor) {
  constexpr std::size_t Usual = 80;
  if (isatty(Descriptor) == 0) {
    return std::nullopt;
  }
  winsize Size{};
  return ioctl(Descriptor, TIOCGWINSZ, &Size) == 0 && Size.ws_col > 0 ? Size.ws_col : Usual;
}

std::string Shortened(const std::string& Line, std::size_t Width) {
  constexpr std::size_t Least = 20;
  constexpr std::string_view Mark = "...";
  if (Width < Least || Line.size() <= Width) {
    return Line;
  }
  std::size_t End = Width - Mark.size();
  while (End > 0 && (static_cast<unsigned char>(Line[End]) & 0xC0U) == 0x80U) { // within a character of UTF-8
    --End;
  }
  return Line.substr(0, End).append(Mark);
}

std::string Short(double Value) { return fmt::format("{:.6g}", Value); }

std::string CSVCell(const std::string& Text) {
  if (Text.find_first_of(",\"\n") == std::string::npos) {
    return Text;
  }
  std::string Quoted = "\"";
  for (const char C : Text) {
    Quoted += C == '"' ? "\"\"" : std::string(1, C);
  }
  return Quoted + '"';
}

std::string JSON(double Value) { return std::isfinite(Value) ? qx::NumberText(Value) : "null"; }

std::string JSON(std::string_view Text) {
  std::string Result = "\"";
  for (const char C : Text) {
    if (C == '"' || C == '\\') {
      Result += '\\';
      Result += C;
    } else if (static_cast<unsigned char>(C) < ' ') {
      Result += fmt::format("\\u{:04x}", C);
    } else {
      Result += C;
    }
  }
  return Result + '"';
}

std::string HTML(std::string_view Text) {
  std::string Result;
  for (const char C : Text) {
    switch (C) {
    case '&':
      Result += "&amp;";
      break;
    case '<':
      Result += "&lt;";
      break;
    case '>':
      Result += "&gt;";
      break;
    case '"':
      Result += "&quot;";
      break;
    default:
      Result += C;
    }
  }
  return Result;
}

} // namespace qxevolve
