// The 11-bit multiplexer (Koza 1992, chapter 7.4): three address bits tell which of eight data bits is the
// output. A program of And, Or, Not and If over the eleven truths that is right in all 2,048 cases.
//
// Usage: multiplexer [--seed N]

#include "../ProgramRun.h"
#include "../RunOptions.h"
#include <qx/platform/Random.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

constexpr int AddressBits = 3;
constexpr int Bits = AddressBits + (1 << AddressBits);
constexpr int Cases = 1 << Bits;

bool BitOf(int Case, int Bit) { return (Case >> Bit & 1) != 0; }
bool OutputOf(int Case) { return BitOf(Case, AddressBits + Case % (1 << AddressBits)); }

int Run(const TRunOptions& Options) {
  qx::SeedRandom(Options.Seed);

  qx::TQXGeneticProgrammingVariant gp;
  for (const char* const Name : {"And", "Or", "Not", "If"}) {
    qx::AddStandardInstruction(gp.Instructions(), Name);
  }
  std::vector<std::string> Names;
  for (int Bit = 0; Bit < Bits; ++Bit) {
    Names.push_back(Bit < AddressBits ? "a" + std::to_string(Bit) : "d" + std::to_string(Bit - AddressBits));
    gp.Instructions().Add().SetName(Names.back());
  }
  SetUp(gp, 4000);
  gp.SetBloatStrategy(qx::bsLexicographicParsimonyPressure);

  // A context for every case, made once.
  std::vector<qx::TQXGPVariantContext> Contexts(Cases);
  for (int Case = 0; Case < Cases; ++Case) {
    for (int Bit = 0; Bit < Bits; ++Bit) {
      Contexts[static_cast<std::size_t>(Case)].Values().Add(Names[static_cast<std::size_t>(Bit)],
                                                            BitOf(Case, Bit));
    }
  }
  gp.OnEvaluateFitness = [&](auto&, auto& Item, double& Fitness) { // the number of wrong answers
    Fitness = 0;
    for (int Case = 0; Case < Cases; ++Case) {
      Fitness +=
          Item.Execute(&Contexts[static_cast<std::size_t>(Case)]).AsBoolean() != OutputOf(Case) ? 1 : 0;
    }
  };
  gp.SetUseFitnessCutoff(true);
  gp.SetFitnessCutoff(0);
  ShowProgress(gp, 1);
  const int Generations = gp.Evolve(100);

  auto& Best = *gp.FittestIndividual();
  std::printf("\n%s\n", qx::InfixText(*Best.DNA()).c_str());
  std::printf("%d of %d cases right after %d generations\n", Cases - static_cast<int>(Best.Fitness()), Cases,
              Generations);
  return Best.Fitness() == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int Count, char** Arguments) { return RunExample(Count, Arguments, Run); }
