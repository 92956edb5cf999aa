#include "Progress.h"

#include "Output.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <unistd.h>

namespace qxevolve {

namespace {

std::string TimeText(double Seconds) {
  constexpr int Minute = 60;
  constexpr double Most = 100 * 60 * 60;
  if (Seconds >= Most) {
    return "days";
  }
  const int Whole = static_cast<int>(std::ceil(std::max(Seconds, 0.0)));
  return Whole < Minute ? fmt::format("{} s", Whole)
                        : fmt::format("{}:{:02} min", Whole / Minute, Whole % Minute);
}

std::string StateText(const TProgressState& State) {
  return fmt::format("generation {}  {}", State.Generation, State.Best);
}

class TProgressBar final : public TProgress {
public:
  void Update(const TProgressState& State) override;
  void Finish() override;

private:
  double FShown = -1; // seconds
};

class TProgressLines final : public TProgress {
public:
  void Update(const TProgressState& State) override;

private:
  double FNext = 0; // seconds
};

void TProgressBar::Update(const TProgressState& State) {
  constexpr double Interval = 0.1;
  if (State.Seconds < FShown + Interval && FShown >= 0) {
    return;
  }
  FShown = State.Seconds;
  const std::string Text =
      fmt::format(" {:3.0f}%  {}  {} left", 100 * State.Share, StateText(State), TimeText(State.SecondsLeft));
  const std::size_t Width =
      TerminalWidth(STDERR_FILENO).value_or(80) - 1; // a full line would go on to the next one
  constexpr std::size_t LeastBar = 12;
  constexpr std::size_t MostBar = 32;
  std::string Line;
  if (Width >= Text.size() + LeastBar) {
    const std::size_t Cells = std::min(Width - Text.size(), MostBar) - 2;
    const auto Full =
        static_cast<std::size_t>(static_cast<double>(Cells) * std::clamp(State.Share, 0.0, 1.0));
    Line = '[' + std::string(Full, '#') + std::string(Cells - Full, '.') + ']';
  }
  Line += Text;
  Tell("\r" + Line.substr(0, Width) + "\x1b[K");
}

void TProgressBar::Finish() { Tell(FShown >= 0 ? "\r\x1b[K" : ""); }

void TProgressLines::Update(const TProgressState& State) {
  constexpr double Interval = 2;
  if (State.Seconds < FNext) {
    return;
  }
  FNext = State.Seconds + Interval;
  Tell(fmt::format("{}  {} left\n", StateText(State), TimeText(State.SecondsLeft)));
}

} // namespace

double SecondsLeft(double Seconds, double MostSeconds, double Generation, double MostGenerations) {
  const double ByTime = MostSeconds - Seconds;
  return Generation > 0 ? std::min(ByTime, Seconds * (MostGenerations / Generation - 1)) : ByTime;
}

std::unique_ptr<TProgress> NewProgress() {
  if (TerminalWidth(STDERR_FILENO)) {
    return std::make_unique<TProgressBar>();
  }
  return std::make_unique<TProgressLines>();
}

} // namespace qxevolve
