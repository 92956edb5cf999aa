#pragma once

// What the examples share: their options, --seed N and, where the example has them, --load FILE (go on with a
// saved run), --save FILE and --checkpoint NAME (keep the run in files of that name while it goes on, and go
// on from the newest one), and a main function that tells what went wrong.

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <optional>
#include <string>

struct TRunOptions {
  std::uint64_t Seed = 1;
  std::string Load;
  std::string Save;
  std::string Checkpoint;

  /// Nothing when the arguments are not understood.
  static std::optional<TRunOptions> Parse(int Count, char** Arguments) {
    TRunOptions Options;
    for (int I = 1; I < Count; I += 2) {
      const std::string Name = Arguments[I];
      if (I + 1 == Count) {
        return std::nullopt;
      }
      const char* const Value = Arguments[I + 1];
      const char* const End = Value + std::strlen(Value);
      if (Name == "--load") {
        Options.Load = Value;
      } else if (Name == "--save") {
        Options.Save = Value;
      } else if (Name == "--checkpoint") {
        Options.Checkpoint = Value;
      } else if (Name != "--seed" || std::from_chars(Value, End, Options.Seed).ptr != End || Value == End) {
        return std::nullopt;
      }
    }
    return Options;
  }
};

enum TExampleFiles { NoFiles, KeepsCheckpoints, SavesFile, LoadsAndSavesFile };

inline int RunExample(int Count, char** Arguments, int (*Run)(const TRunOptions& Options),
                      TExampleFiles Files) {
  const auto Options = TRunOptions::Parse(Count, Arguments);
  if (!Options || (!Options->Load.empty() && Files < LoadsAndSavesFile) ||
      (!Options->Save.empty() && Files < SavesFile) ||
      (!Options->Checkpoint.empty() && Files != KeepsCheckpoints)) {
    std::fprintf(stderr, "Usage: %s [--seed N]%s%s%s\n", Arguments[0],
                 Files == LoadsAndSavesFile ? " [--load FILE]" : "",
                 Files >= SavesFile ? " [--save FILE]" : "",
                 Files == KeepsCheckpoints ? " [--checkpoint NAME]" : "");
    return EXIT_FAILURE;
  }
  try {
    return Run(*Options);
  } catch (const std::exception& Error) {
    std::fprintf(stderr, "%s\n", Error.what());
    return EXIT_FAILURE;
  }
}
