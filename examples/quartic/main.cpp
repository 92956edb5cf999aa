// Koza's quartic (Koza 1992, "Genetic Programming", chapter 7.3): from 20 points in [-1, 1], a program that
// equals x^4 + x^3 + x^2 + x; on n-ary and on binary trees.
//
// Usage: quartic [--seed N]

#include "../ProgramRun.h"
#include "../RunOptions.h"
#include <qx/platform/Random.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr int Points = 20;
double PointAt(int Index) { return -1 + 2.0 * Index / (Points - 1); }
double Quartic(double x) { return x * x * x * x + x * x * x + x * x + x; }

template <class TProgramming>
bool Solve(const char* Trees) {
  TProgramming gp;
  for (const char* const Name : {"Add", "Sub", "Mul", "Div"}) {
    qx::AddStandardInstruction(gp.Instructions(), Name);
  }
  gp.Instructions().Add().SetName("x");
  SetUp(gp, 500);

  // The largest error at a point.
  qx::TQXGPFloatContext Context;
  gp.OnEvaluateFitness = [&](auto&, auto& Item, double& Fitness) {
    constexpr double Hopeless = 1e6;
    Fitness = 0;
    for (int I = 0; I < Points; ++I) {
      Context.Values().AddOrSetValue("x", PointAt(I));
      const double Error = std::fabs(Item.Execute(&Context) - Quartic(PointAt(I)));
      Fitness = Error < Hopeless ? std::max(Fitness, Error) : Hopeless;
    }
  };
  gp.SetUseFitnessCutoff(true);
  gp.SetFitnessCutoff(0.01);
  std::printf("%s trees\n", Trees);
  ShowProgress(gp, 5);
  gp.Evolve(50);

  auto& Best = *gp.FittestIndividual();
  const bool Solved = Best.Fitness() <= gp.FitnessCutoff();
  std::printf("%s\n", qx::InfixText(*Best.DNA()).c_str());
  std::printf("%s trees: %s, largest error %.3g\n\n", Trees, Solved ? "solved" : "not solved",
              Best.Fitness());
  return Solved;
}

int Run(const TRunOptions& Options) {
  qx::SeedRandom(Options.Seed);
  const bool Nary = Solve<qx::TQXGeneticProgramming>("n-ary");
  const bool Binary = Solve<qx::TQXBinaryGeneticProgramming>("binary");
  return Nary && Binary ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int Count, char** Arguments) { return RunExample(Count, Arguments, Run, NoFiles); }
