#pragma once

#include <qx/platform/Random.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <deque>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

namespace qx::tests {

/// One draw of a script: the value that it gives and, for an integer draw, the range that must be asked for.
struct TScriptedDraw {
  double Value;
  std::optional<std::int64_t> Range;
};

/// A real draw of that value.
inline TScriptedDraw R(double Value) { return {Value, std::nullopt}; }
/// A draw of `Value` from 0 to `n` - 1.
inline TScriptedDraw I(std::int64_t Value, std::int64_t n) { return {static_cast<double>(Value), n}; }

/// Feeds chosen draws to the library while it lives, and fails the test when a draw is of another kind or
/// range than the script says, when there is one too many, or when one is left over.
class TScriptedRandom final : public TQXRandomSource {
public:
  TScriptedRandom(std::initializer_list<TScriptedDraw> Script) : FScript(Script), FScope(*this) {}
  ~TScriptedRandom() override { EXPECT_TRUE(FScript.empty()) << FScript.size() << " draws were not taken"; }

  void Add(std::initializer_list<TScriptedDraw> Script) {
    FScript.insert(FScript.end(), Script.begin(), Script.end());
  }
  void Add(const std::vector<TScriptedDraw>& Script) {
    FScript.insert(FScript.end(), Script.begin(), Script.end());
  }
  void Add(std::size_t Count, TScriptedDraw Draw) { FScript.insert(FScript.end(), Count, Draw); }

  std::int64_t Integer(std::int64_t n) override {
    const TScriptedDraw Draw = Next("integer draw of " + std::to_string(n));
    EXPECT_TRUE(Draw.Range.has_value()) << "an integer draw of " << n << " where a real one was expected";
    EXPECT_EQ(Draw.Range.value_or(n), n);
    return static_cast<std::int64_t>(Draw.Value);
  }

  double Real() override {
    const TScriptedDraw Draw = Next("real draw");
    EXPECT_FALSE(Draw.Range.has_value()) << "a real draw where an integer one was expected";
    return Draw.Value;
  }

private:
  TScriptedDraw Next(const std::string& Asked) {
    if (FScript.empty()) {
      ADD_FAILURE() << "the script is over, and there is another " << Asked;
      return {0, std::nullopt};
    }
    const TScriptedDraw Draw = FScript.front();
    FScript.pop_front();
    return Draw;
  }

  std::deque<TScriptedDraw> FScript;
  TQXRandomSourceScope FScope;
};

/// Counts the draws of a generator of its own, a linear congruential one that has nothing to do with the
/// library's.
class TCountingRandom final : public TQXRandomSource {
public:
  explicit TCountingRandom(std::uint64_t Seed = 1) : FState(Seed), FScope(*this) {}

  std::int64_t Integer(std::int64_t n) override {
    ++Integers;
    return n < 1 ? 0 : static_cast<std::int64_t>(Step() % static_cast<std::uint64_t>(n));
  }
  double Real() override {
    ++Reals;
    return static_cast<double>(Step()) * 0x1p-31;
  }

  int Integers = 0;
  int Reals = 0;

private:
  std::uint64_t Step() {
    FState = FState * 6364136223846793005 + 1442695040888963407;
    return FState >> 33;
  }

  std::uint64_t FState;
  TQXRandomSourceScope FScope;
};

} // namespace qx::tests
