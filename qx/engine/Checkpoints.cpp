#include <qx/engine/Checkpoints.h>
#include <qx/engine/GeneticComponent.h>
#include <qx/platform/Numbers.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <string_view>
#include <utility>
#include <vector>

namespace qx {

namespace {

struct TFile {
  std::filesystem::path Path;
  std::int64_t Number;
};

// The checkpoints of a name, the newest one first.
std::vector<TFile> FilesOf(const std::string& FileName) {
  const std::filesystem::path Whole(FileName);
  const std::string Prefix = Whole.filename().string() + '.';
  const std::filesystem::path Folder = Whole.has_parent_path() ? Whole.parent_path() : ".";
  std::vector<TFile> Files;
  for (const auto& Entry : std::filesystem::directory_iterator(Folder)) {
    const std::string Name = Entry.path().filename().string();
    if (!Name.starts_with(Prefix)) {
      continue;
    }
    const std::string_view Digits = std::string_view(Name).substr(Prefix.size());
    constexpr std::size_t MostDigits = 15; // another program's file has more
    if (Digits.size() <= MostDigits && Digits.find_first_not_of("0123456789") == std::string_view::npos) {
      if (const auto Number = ParseInteger(Digits)) {
        Files.push_back({Whole.parent_path() / Name, *Number});
      }
    }
  }
  std::sort(Files.begin(), Files.end(),
            [](const TFile& Left, const TFile& Right) { return Left.Number > Right.Number; });
  return Files;
}

std::string Numbered(const std::string& FileName, std::int64_t Number) {
  constexpr std::size_t UsualDigits = 6;
  std::string Digits = std::to_string(Number);
  if (Digits.size() < UsualDigits) {
    Digits.insert(0, UsualDigits - Digits.size(), '0');
  }
  return FileName + '.' + Digits;
}

std::int64_t MillisecondsNow() {
  const auto Now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(Now).count();
}

} // namespace

TCheckpoints::TCheckpoints(std::string FileName, TCheckpointPolicy Policy)
    : FFileName(std::move(FileName)), FPolicy(Policy) {}

bool TCheckpoints::Update(TQXCustomGeneticComponent& Component) {
  const std::int64_t Passed = MillisecondsNow() - FTime;
  const std::int64_t Generations = std::int64_t{Component.Generation()} - FGeneration.value_or(0);
  const bool Due = !FGeneration || Generations < 0 || // a run that has begun anew
                   (FPolicy.EveryGenerations > 0 && Generations >= FPolicy.EveryGenerations) ||
                   (FPolicy.Every.Milliseconds() > 0 && Passed >= FPolicy.Every.Milliseconds());
  if (Due) {
    Write(Component);
  }
  return Due;
}

void TCheckpoints::Write(TQXCustomGeneticComponent& Component) {
  const std::vector<TFile> Former = FilesOf(FFileName);
  Component.SaveCheckpoint(Numbered(FFileName, Former.empty() ? 1 : Former.front().Number + 1));
  FGeneration = Component.Generation();
  FTime = MillisecondsNow();
  const auto Kept = static_cast<std::size_t>(std::max(FPolicy.KeepLast, 1));
  for (std::size_t I = Kept - 1; I < Former.size(); ++I) { // one has come
    std::error_code Ignored; // it goes the next time, or somebody else has removed it
    std::filesystem::remove(Former[I].Path, Ignored);
  }
}

std::optional<std::string> TCheckpoints::Resume(TQXCustomGeneticComponent& Component) {
  std::exception_ptr Newest;
  for (const TFile& File : FilesOf(FFileName)) {
    try {
      Component.LoadCheckpoint(File.Path.string());
    } catch (...) {
      if (Newest == nullptr) {
        Newest = std::current_exception();
      }
      continue;
    }
    FGeneration = Component.Generation();
    FTime = MillisecondsNow();
    return File.Path.string();
  }
  if (Newest != nullptr) {
    std::rethrow_exception(Newest);
  }
  return std::nullopt;
}

} // namespace qx
