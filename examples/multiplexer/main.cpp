// The 11-bit multiplexer (Koza 1992, chapter 7.4): three address bits tell which of eight data bits is the
// output. A program of And, Or, Not and If over the eleven truths that is right in all 2,048 cases.
//
// Usage: multiplexer [--seed N]

#include "../ProgramRun.h"
#include "../RunOptions.h"
#include <qx/platform/Random.h>

#include <bit>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr int AddressBits = 3;
constexpr int Bits = AddressBits + (1 << AddressBits);
constexpr int Cases = 1 << Bits;

bool BitOf(int Case, int Bit) { return (Case >> Bit & 1) != 0; }
bool OutputOf(int Case) { return BitOf(Case, AddressBits + Case % (1 << AddressBits)); }

using TIndividual = qx::generics::TQXGPIndividual<qx::Variant>;

/// Swaps subtrees so that each takes the other's place. The library's crossover appends them to their new
/// siblings, which moves the other arguments too; for If, whose arguments mean different things, that breaks
/// more than it mends.
class TInPlaceIndividual : public TIndividual {
public:
  void Crossover(TNode& Node, TQXGPIndividual& Mate, TNode& MateNode) override {
    TNodePointer Mine = Node.Clone();
    TNodePointer Theirs = MateNode.Clone();
    Mate.Replace(MateNode, std::move(Mine));
    Replace(Node, std::move(Theirs));
  }
};

class TMultiplexerProgramming : public qx::TQXGeneticProgrammingVariant {
protected:
  std::unique_ptr<qx::TQXPopulation> CreatePopulation(qx::TItemClass<qx::TQXIndividual>) override {
    return std::make_unique<TPopulation>(this, qx::ItemClassOf<TInPlaceIndividual>());
  }
};

int Run(const TRunOptions& Options) {
  qx::SeedRandom(Options.Seed);

  TMultiplexerProgramming gp;
  for (const char* const Name : {"And", "Or", "Not", "If"}) {
    qx::AddStandardInstruction(gp.Instructions(), Name);
  }
  std::vector<std::string> Names;
  for (int Bit = 0; Bit < Bits; ++Bit) {
    Names.push_back(Bit < AddressBits ? "a" + std::to_string(Bit) : "d" + std::to_string(Bit - AddressBits));
    gp.Instructions().Add().SetName(Names.back());
  }
  SetUp(gp, 4000);
  gp.SetBloatStrategy(qx::bsDepthLimit);
  gp.SetBloatLimit(17);

  qx::TQXGPVariantContext Context;
  for (const std::string& Name : Names) {
    Context.Values().Add(Name, false);
  }
  // The number of wrong answers. From one case to the next, in the order of a Gray code, one truth changes.
  gp.OnEvaluateFitness = [&](auto&, auto& Item, double& Fitness) {
    Fitness = 0;
    int Case = 0;
    for (int I = 1; I <= Cases; ++I) {
      Fitness += Item.Execute(&Context).AsBoolean() != OutputOf(Case) ? 1 : 0;
      const int Bit = I < Cases ? std::countr_zero(static_cast<unsigned>(I)) : Bits - 1; // and back to 0
      Case ^= 1 << Bit;
      Context.Values().AddOrSetValue(Names[static_cast<std::size_t>(Bit)], BitOf(Case, Bit));
    }
  };
  gp.SetUseFitnessCutoff(true);
  gp.SetFitnessCutoff(0);
  qx::TCheckpoints Checkpoints(Options.Checkpoint, {.EveryGenerations = 5});
  const bool Keep = !Options.Checkpoint.empty();
  if (const auto File = Keep ? Checkpoints.Resume(gp) : std::nullopt) {
    std::printf("going on from %s\n", File->c_str());
  }
  ShowProgress(gp, 1, Keep ? &Checkpoints : nullptr);
  gp.Evolve(100 - gp.Generation());

  auto& Best = *gp.FittestIndividual();
  std::printf("\n%s\n", qx::InfixText(*Best.DNA()).c_str());
  std::printf("%d of %d cases right after %d generations\n", Cases - static_cast<int>(Best.Fitness()), Cases,
              gp.Generation());
  return Best.Fitness() == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int Count, char** Arguments) { return RunExample(Count, Arguments, Run, KeepsCheckpoints); }
