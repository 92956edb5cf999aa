#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <support/Process.h>
#include <support/TemporaryFolder.h>
#include <vector>

namespace qxevolve::tests {

using qx::tests::TProcess;
using qx::tests::TProcessEnd;

/// A folder in which the built program is run.
class QxevolveTest : public ::testing::Test {
protected:
  static std::vector<std::string> Command(std::vector<std::string> Arguments) {
    Arguments.insert(Arguments.begin(), QX_EVOLVE);
    return Arguments;
  }
  TProcessEnd Run(const std::vector<std::string>& Arguments) const {
    return TProcess(Command(Arguments), Folder()).Finish();
  }
  TProcessEnd RunInTerminal(const std::vector<std::string>& Arguments) const {
    return TProcess(Command(Arguments), Folder(), TProcess::TOutput::Terminal).Finish();
  }

  std::string Folder() const { return FFolder.File("."); }
  std::string Path(const std::string& Name) const { return FFolder.File(Name); }
  void Write(const std::string& Name, const std::string& Text) const {
    qx::tests::WriteFile(Path(Name), Text);
  }
  std::string Read(const std::string& Name) const { return qx::tests::ReadFile(Path(Name)); }
  std::vector<std::string> Files() const {
    std::vector<std::string> Names;
    for (const auto& Entry : std::filesystem::directory_iterator(Folder())) {
      Names.push_back(Entry.path().filename().string());
    }
    std::ranges::sort(Names);
    return Names;
  }

  /// Kepler's planets.
  void WritePlanets() const {
    Write("planets.csv", "distance,period\n0.3871,0.2408\n0.7233,0.6152\n1,1\n1.5237,1.8808\n"
                         "5.2029,11.862\n9.537,29.457\n19.189,84.011\n30.07,164.79\n");
  }
  /// A table that two seconds are not enough for.
  void WriteHard(int Rows = 400) const {
    std::string Text = "a,b,c,y\n";
    for (int I = 0; I < Rows; ++I) {
      const double X = I * 0.37;
      const double Noise = (I * 7919 % 1000) / 1000.0;
      Text += std::to_string(X) + "," + std::to_string(I % 17) + "," + std::to_string(I % 5) + "," +
              std::to_string(I % 17 * 0.3 + Noise) + "\n";
    }
    Write("hard.csv", Text);
  }

private:
  qx::tests::TTemporaryFolder FFolder;
};

/// How often a text is in another one.
inline int CountOf(std::string_view Text, std::string_view Part) {
  int Count = 0;
  for (auto At = Text.find(Part); At != std::string_view::npos; At = Text.find(Part, At + Part.size())) {
    ++Count;
  }
  return Count;
}

/// Whether it is one line that begins with the program's name: how errors are told.
inline bool IsOneLine(const std::string& Text) {
  return Text.starts_with("qxevolve: ") && CountOf(Text, "\n") == 1 && Text.ends_with('\n');
}

} // namespace qxevolve::tests
