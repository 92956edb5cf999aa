// What symbolic regression finds with its default settings: for each problem and ten seeds, the median R2 on
// test rows and how many formulas are exact, which is that the squared error on the test rows is below 1e-18
// of their variance. Usage: qx_accuracy [SECONDS for each run, 60] [NAME, or the beginning of names]

#include <qx/platform/Random.h>
#include <qx/symbolic_regression/Formula.h>
#include <qx/symbolic_regression/SymbolicRegression.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <numbers>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace qx;
using TPoint = std::vector<double>;
using TPoints = std::vector<TPoint>;
using TEngine = std::mt19937_64;

constexpr int Seeds = 10;

struct TProblem {
  std::string Name;
  std::function<double(const TPoint&)> Target;
  std::function<TPoints(TEngine&)> Training;
  std::function<TPoints(TEngine&)> Test;
  double Noise = 0; // standard deviation, as a share of that of the target
};

struct TRange {
  double Low;
  double High;
};

// Random points, even in a box.
std::function<TPoints(TEngine&)> Even(int Rows, std::vector<TRange> Box) {
  return [=](TEngine& Engine) {
    TPoints Points(static_cast<std::size_t>(Rows));
    for (TPoint& Point : Points) {
      for (const TRange& Range : Box) {
        Point.push_back(std::uniform_real_distribution<double>(Range.Low, Range.High)(Engine));
      }
    }
    return Points;
  };
}

std::function<TPoints(TEngine&)> Fixed(TPoints Points) {
  return [=](TEngine&) { return Points; };
}

TPoints Whole(int First, int Last) {
  TPoints Points;
  for (int X = First; X <= Last; ++X) {
    Points.push_back({static_cast<double>(X)});
  }
  return Points;
}

TPoints Grid(double Low, double Step, int Count) {
  TPoints Points;
  for (int I = 0; I < Count * Count; ++I) {
    Points.push_back({Low + Step * (I % Count), Low + Step * (I / Count)});
  }
  return Points;
}

double Polynomial(double X, int Degree) {
  double Sum = 0;
  for (int I = Degree; I > 0; --I) {
    Sum = (Sum + 1) * X;
  }
  return Sum;
}

double Harmonic(double X) {
  double Sum = 0;
  for (int I = 1; I <= X; ++I) {
    Sum += 1.0 / I;
  }
  return Sum;
}

void AddClassics(std::vector<TProblem>& Problems) {
  const auto Add = [&](std::string Name, auto Target, int Rows, std::vector<TRange> Box) {
    Problems.push_back({std::move(Name), Target, Even(Rows, Box), Even(100, Box)});
  };
  Add("Koza quartic", [](const TPoint& P) { return Polynomial(P[0], 4); }, 20, {{-1, 1}});
  for (int Degree = 3; Degree <= 6; ++Degree) {
    Add("Nguyen " + std::to_string(Degree - 2), [=](const TPoint& P) { return Polynomial(P[0], Degree); }, 20,
        {{-1, 1}});
  }
  Add("Nguyen 5", [](const TPoint& P) { return std::sin(P[0] * P[0]) * std::cos(P[0]) - 1; }, 20, {{-1, 1}});
  Add("Nguyen 6", [](const TPoint& P) { return std::sin(P[0]) + std::sin(P[0] + P[0] * P[0]); }, 20,
      {{-1, 1}});
  Add("Nguyen 7", [](const TPoint& P) { return std::log(P[0] + 1) + std::log(P[0] * P[0] + 1); }, 20,
      {{0, 2}});
  Add("Nguyen 8", [](const TPoint& P) { return std::sqrt(P[0]); }, 20, {{0, 4}});
  Add("Nguyen 9", [](const TPoint& P) { return std::sin(P[0]) + std::sin(P[1] * P[1]); }, 20,
      {{0, 1}, {0, 1}});
  Add("Nguyen 10", [](const TPoint& P) { return 2 * std::sin(P[0]) * std::cos(P[1]); }, 20, {{0, 1}, {0, 1}});
}

void AddHarder(std::vector<TProblem>& Problems) {
  Problems.push_back({"Keijzer 6", [](const TPoint& P) { return Harmonic(P[0]); }, Fixed(Whole(1, 50)),
                      Fixed(Whole(1, 120))});
  Problems.push_back(
      {"Pagie 1", [](const TPoint& P) { return 1 / (1 + std::pow(P[0], -4)) + 1 / (1 + std::pow(P[1], -4)); },
       Fixed(Grid(-5, 0.4, 26)), Even(1000, {{-5, 5}, {-5, 5}})});
  Problems.push_back({"Vladislavleva 4",
                      [](const TPoint& P) {
                        double Sum = 5;
                        for (const double X : P) {
                          Sum += (X - 3) * (X - 3);
                        }
                        return 10 / Sum;
                      },
                      Even(1024, std::vector<TRange>(5, {0.05, 6.05})),
                      Even(5000, std::vector<TRange>(5, {-0.25, 6.35}))});
  Problems.push_back(
      {"Korns 12", [](const TPoint& P) { return 2 - 2.1 * std::cos(9.8 * P[0]) * std::sin(1.3 * P[4]); },
       Even(10'000, std::vector<TRange>(5, {-50, 50})), Even(10'000, std::vector<TRange>(5, {-50, 50}))});
  // Half the long axes of the eight planets, in astronomical units; the test is on other orbits.
  Problems.push_back({"Kepler", [](const TPoint& P) { return std::pow(P[0], 1.5); },
                      Fixed({{0.3871}, {0.7233}, {1}, {1.5237}, {5.2029}, {9.537}, {19.189}, {30.07}}),
                      Even(100, {{0.3, 40}})});
  const auto Friedman = Even(1000, std::vector<TRange>(5, {0, 1}));
  Problems.push_back({"Friedman 1",
                      [](const TPoint& P) {
                        return 10 * std::sin(std::numbers::pi * P[0] * P[1]) +
                               20 * (P[2] - 0.5) * (P[2] - 0.5) + 10 * P[3] + 5 * P[4];
                      },
                      Friedman, Friedman});
}

// Five equations out of Feynman's lectures, by their numbers in the collection of Udrescu and Tegmark (2020).
void AddFeynman(std::vector<TProblem>& Problems) {
  struct TEquation {
    const char* Name;
    std::function<double(const TPoint&)> Target;
    std::vector<TRange> Box;
  };
  constexpr double Pi = std::numbers::pi;
  const TEquation Equations[] = {
      {"I.6.20a", [](const TPoint& P) { return std::exp(-P[0] * P[0] / 2) / std::sqrt(2 * Pi); }, {{1, 3}}},
      {"I.10.7",
       [](const TPoint& P) { return P[0] / std::sqrt(1 - P[1] * P[1] / (P[2] * P[2])); },
       {{1, 5}, {1, 2}, {3, 10}}},
      {"I.12.2",
       [](const TPoint& P) { return P[0] * P[1] / (4 * Pi * P[2] * P[3] * P[3]); },
       {{1, 5}, {1, 5}, {1, 5}, {1, 5}}},
      {"I.27.6", [](const TPoint& P) { return 1 / (1 / P[0] + P[2] / P[1]); }, {{1, 5}, {1, 5}, {1, 5}}},
      {"I.50.26",
       [](const TPoint& P) {
         const double Wave = std::cos(P[1] * P[2]);
         return P[0] * (Wave + P[3] * Wave * Wave);
       },
       {{1, 3}, {1, 3}, {1, 3}, {1, 3}}}};
  for (const TEquation& Equation : Equations) {
    for (const int Percent : {0, 1, 10}) {
      Problems.push_back(
          {"Feynman " + std::string(Equation.Name) + ", noise " + std::to_string(Percent) + "%",
           Equation.Target, Even(1000, Equation.Box), Even(1000, Equation.Box), Percent / 100.0});
    }
  }
}

TQXDataSet DataOf(const TProblem& Problem, const TPoints& Points, double Noise, TEngine& Engine) {
  std::vector<double> Target;
  std::ranges::transform(Points, std::back_inserter(Target), Problem.Target);
  double Mean = 0;
  double Variance = 0;
  for (const double Value : Target) {
    Mean += Value / static_cast<double>(Target.size());
  }
  for (const double Value : Target) {
    Variance += (Value - Mean) * (Value - Mean) / static_cast<double>(Target.size());
  }
  std::normal_distribution<double> Error(0, 1);
  for (double& Value : Target) {
    Value += Noise > 0 ? Noise * std::sqrt(Variance) * Error(Engine) : 0;
  }
  TQXDataSet Data;
  for (std::size_t I = 0; I < Points[0].size(); ++I) {
    std::vector<double> Column;
    std::ranges::transform(Points, std::back_inserter(Column), [&](const TPoint& Point) { return Point[I]; });
    Data.AddColumn("x" + std::to_string(I + 1), Column);
  }
  Data.AddColumn("y", Target);
  return Data;
}

struct TOutcome {
  double R2;
  double Seconds;
  bool Exact;
};

TOutcome Run(const TProblem& Problem, int Seed, double Limit) {
  TEngine Engine(static_cast<std::uint64_t>(Seed));
  const TQXDataSet Training = DataOf(Problem, Problem.Training(Engine), Problem.Noise, Engine);
  const TQXDataSet Test = DataOf(Problem, Problem.Test(Engine), 0, Engine);
  const auto Start = std::chrono::steady_clock::now();
  const auto Elapsed = [&] {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - Start).count();
  };
  SeedRandom(static_cast<std::uint64_t>(Seed));
  TQXSymbolicRegression Regression;
  Regression.SetData(Training, "y");
  Regression.OnEvolve = [&](auto& Sender) { Sender.SetHalt(Elapsed() > Limit); };
  Regression.Evolve(1'000'000);
  const double Error = Regression.Error(*Regression.BestModel(), Test, emNMSE);
  constexpr double Exact = 1e-18;
  if (std::getenv("QX_SHOW_FORMULAS") != nullptr) {
    std::printf("  %d: %s\n", Seed, TQXFormula(*Regression.BestModel()).Simplify().Text(fsInfix).c_str());
  }
  return {1 - Error, Elapsed(), Error < Exact};
}

} // namespace

int main(int Count, char** Arguments) {
  const double Limit = Count > 1 ? std::atof(Arguments[1]) : 60;
  const std::string_view Wanted = Count > 2 ? Arguments[2] : "";
  std::vector<TProblem> Problems;
  AddClassics(Problems);
  AddHarder(Problems);
  AddFeynman(Problems);
  std::printf("| problem | exact | median test R2 | least | mean seconds |\n|---|---|---|---|---|\n");
  for (const TProblem& Problem : Problems) {
    if (!Problem.Name.starts_with(Wanted)) {
      continue;
    }
    std::vector<double> R2;
    int Exact = 0;
    double Seconds = 0;
    for (int Seed = 1; Seed <= Seeds; ++Seed) {
      const TOutcome Outcome = Run(Problem, Seed, Limit);
      R2.push_back(Outcome.R2);
      Exact += Outcome.Exact ? 1 : 0;
      Seconds += Outcome.Seconds / Seeds;
    }
    std::ranges::sort(R2);
    std::printf("| %s | %d of %d | %.6f | %.6f | %.1f |\n", Problem.Name.c_str(), Exact, Seeds,
                (R2[Seeds / 2 - 1] + R2[Seeds / 2]) / 2, R2.front(), Seconds);
    std::fflush(stdout);
  }
  return 0;
}
