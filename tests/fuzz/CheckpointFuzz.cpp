// Checkpoints of both kinds of components, each into one that has a run to lose.

#include "FuzzSupport.h"
#include <qx/genetic_programming/QXGeneticProgramming.h>
#include <qx/platform/Random.h>

#include <support/Streams.h>

namespace qx::fuzz {
namespace {

using tests::CheckpointOf;

class TPrograms : public TQXGeneticProgramming {
public:
  TPrograms() {
    AddStandardInstruction(Instructions(), "Add");
    Instructions().Add().SetName("x");
    AddEphemeralConstant(Instructions(), "c", 0, 1);
    SetInitialPopulation(2);
    SetInitialDuplicatesRetries(0);
    OnEvaluateFitness = [](auto&, auto& Item, double& Fitness) {
      Fitness = Item.DNA() != nullptr ? Item.DNA()->Size() : 0;
    };
    Evolve(1);
  }
};

// A checkpoint that is refused changes nothing; one that is taken is written again and read again the same.
void Load(TQXCustomGeneticComponent& Component, const std::string& Text) {
  const std::string Before = CheckpointOf(Component);
  try {
    tests::LoadCheckpoint(Component, Text);
  } catch (const std::exception&) {
    Require(CheckpointOf(Component) == Before, "a load that failed has changed something");
    return;
  }
  const std::string Taken = CheckpointOf(Component);
  tests::LoadCheckpoint(Component, Taken);
  Require(CheckpointOf(Component) == Taken, "a checkpoint comes back as another one");
  constexpr int Many = 100;
  if (Component.InitialPopulation() < Many && Component.TournamentField() < Many &&
      Component.InitialDuplicatesRetries() < Many) {
    try {
      Component.Evolve();
    } catch (const std::exception&) { // a state in which nothing can be selected, say
    }
  }
}

} // namespace
} // namespace qx::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
  const std::string Text(Data, Data + Size);
  qx::SeedRandom(1);
  if (Text.find("TPrograms") != std::string::npos) {
    qx::fuzz::TPrograms Programs;
    qx::fuzz::Load(Programs, Text);
  } else {
    qx::fuzz::TLoaded Loaded;
    qx::fuzz::Load(Loaded.Component, Text);
  }
  return 0;
}
