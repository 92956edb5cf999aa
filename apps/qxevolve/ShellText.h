#pragma once

#include <string>
#include <vector>

namespace qxevolve {

/// A command as it is typed into a shell: words with other characters than the harmless ones are quoted.
inline std::string ShellText(const std::vector<std::string>& Words) {
  std::string Text;
  for (const std::string& Word : Words) {
    constexpr const char* Harmless =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-+=./,:@%";
    Text += Text.empty() ? "" : " ";
    if (!Word.empty() && Word.find_first_not_of(Harmless) == std::string::npos) {
      Text += Word;
      continue;
    }
    Text += '\'';
    for (const char C : Word) {
      Text += C == '\'' ? "'\\''" : std::string(1, C);
    }
    Text += '\'';
  }
  return Text;
}

} // namespace qxevolve
