// Finds Kepler's third law in the planets: from the measured semi-major axes and sidereal periods of the
// eight (J2000 mean elements and periods as published by NASA), a program for the period of any axis.
//
// Usage: kepler [--seed N] [--save FILE], which keeps the program for an executor (see run_program)

#include "../ProgramRun.h"
#include "../RunOptions.h"
#include <qx/platform/Random.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

struct TPlanet {
  const char* Name;
  double Axis;   // semi-major axis, au
  double Period; // sidereal period, days
};

constexpr std::array<TPlanet, 8> Planets = {{{"Mercury", 0.38709893, 87.969},
                                             {"Venus", 0.72333199, 224.701},
                                             {"Earth", 1.00000011, 365.256},
                                             {"Mars", 1.52366231, 686.980},
                                             {"Jupiter", 5.20336301, 4332.589},
                                             {"Saturn", 9.53707032, 10759.22},
                                             {"Uranus", 19.19126393, 30685.4},
                                             {"Neptune", 30.06896348, 60189.0}}};
constexpr double DaysOfAYear = 365.256;

/// The largest relative error against T = a^1.5 at 1,000 axes from 0.3 to 40 au.
template <class TPeriod>
double LargestError(TPeriod Period) {
  constexpr int Axes = 1000;
  constexpr double Least = 0.3;
  constexpr double Most = 40;
  double Largest = 0;
  for (int I = 0; I < Axes; ++I) {
    const double Axis = Least + (Most - Least) * I / (Axes - 1);
    const double Law = std::pow(Axis, 1.5);
    const double Error = std::fabs(Period(Axis) - Law) / Law;
    Largest = Error > Largest || std::isnan(Error) ? Error : Largest;
  }
  return Largest;
}

int Run(const TRunOptions& Options) {
  qx::SeedRandom(Options.Seed);

  qx::TQXGeneticProgramming gp;
  qx::AddStandardInstructions(gp.Instructions(), qx::sgArithmetic);
  qx::AddStandardInstruction(gp.Instructions(), "Sqrt");
  gp.Instructions().Add().SetName("a");
  SetUp(gp, 500);
  gp.SetBloatStrategy(qx::bsLexicographicParsimonyPressure);

  // The mean relative error, in steps of 0.02%: the measurements are no better, and of programs that differ
  // by less the shorter one is preferred.
  qx::TQXGPFloatContext Context;
  const auto PeriodOf = [&](auto& Program, double Axis) {
    Context.Values().AddOrSetValue("a", Axis);
    return Program.Execute(&Context);
  };
  gp.OnEvaluateFitness = [&](auto&, auto& Item, double& Fitness) {
    constexpr double Step = 2e-4;
    constexpr double Hopeless = 1e6;
    double Sum = 0;
    for (const TPlanet& Planet : Planets) {
      const double Period = Planet.Period / DaysOfAYear;
      Sum += std::fabs(PeriodOf(Item, Planet.Axis) - Period) / Period;
    }
    const double Mean = Sum / Planets.size();
    Fitness = std::isfinite(Mean) ? std::floor(std::min(Mean, Hopeless) / Step) * Step : Hopeless;
  };
  ShowProgress(gp, 5);
  gp.Evolve(40);

  auto& Best = *gp.FittestIndividual();
  std::printf("\nPeriod in years of the axis a in au: %s\n", qx::InfixText(*Best.DNA()).c_str());
  for (const TPlanet& Planet : Planets) {
    const double Period = PeriodOf(Best, Planet.Axis);
    std::printf("  %-8s a = %8.4f   program %9.4f   measured %9.4f\n", Planet.Name, Planet.Axis, Period,
                Planet.Period / DaysOfAYear);
  }
  const double Error = LargestError([&](double Axis) { return PeriodOf(Best, Axis); });
  const bool Found = Error < 1e-3;
  if (!Options.Save.empty()) {
    qx::TQXGeneticProgrammingExecutor Executor;
    Executor.SetInstructions(gp.Instructions());
    Executor.SetGPProgram(*Best.DNA());
    Executor.SaveToFile(Options.Save);
  }
  std::printf("Largest error against a^1.5 at 1000 axes from 0.3 to 40 au: %.4f%%\n", Error * 100);
  std::printf(Found ? "Kepler's third law is found.\n" : "The law was not found.\n");
  return Found ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int Count, char** Arguments) { return RunExample(Count, Arguments, Run, SavesFile); }
