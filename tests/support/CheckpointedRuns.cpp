#include "CheckpointedRuns.h"

#include <qx/genetic_algorithm/GeneticAlgorithm.h>
#include <qx/genetic_programming/QXGeneticProgramming.h>
#include <qx/platform/Random.h>

#include <cmath>
#include <sstream>

namespace qx::tests {

namespace {

void Prepare(TQXCustomGeneticComponent& Component, TGASelectionMethod Selection) {
  Component.SetInitialPopulation(31);
  Component.SetSelectionMethod(Selection);
  Component.SetFitnessMethod(Selection == smTournament ? fmWeightedMaximize : fmMaximize);
  if (Selection == smCustom) {
    Component.OnSelection = [](auto&, TQXPopulation& Population, TQXIndividual*& Parent) {
      Parent = &Population[static_cast<int>(Random() * Random() * Population.Count())];
    };
  }
  Component.SetMutationProbability(0.2);
}

std::unique_ptr<TQXCustomGeneticComponent> MakeAlgorithm(TGASelectionMethod Selection) {
  auto Algorithm = std::make_unique<TQXGeneticAlgorithm>();
  for (const char* const Name : {"a", "b", "c"}) {
    TQXGAGene& Gene = Algorithm->Genes().Add();
    Gene.SetName(Name);
    Gene.SetGeneType(gtFloat);
    Gene.SetSize(17);
    Gene.SetMinValue(-1.0 / 3);
    Gene.SetMaxValue(2.0 / 3);
  }
  Prepare(*Algorithm, Selection);
  Algorithm->OnEvaluateFitness = [](auto& Sender, auto& Item, double& Fitness) {
    Fitness = 1 + Random() / 100; // a noisy measurement, which must not be taken twice
    for (const TQXGAGene& Gene : Sender.Genes()) {
      Fitness += Gene.GeneAsDouble(Item.Bits());
    }
  };
  return Algorithm;
}

template <class TProgramming>
std::unique_ptr<TQXCustomGeneticComponent> MakeProgramming(TGASelectionMethod Selection,
                                                           TGPBloatStrategy Strategy) {
  auto Programming = std::make_unique<TProgramming>();
  using TValue = typename TProgramming::TValue;
  for (const char* const Name : {"Add", "Sub", "Mul", "Neg"}) {
    AddStandardInstruction(Programming->Instructions(), Name);
  }
  Programming->Instructions().Add().SetName("x");
  AddEphemeralConstant(Programming->Instructions(), "c", -1, 1);
  Prepare(*Programming, Selection);
  Programming->SetBloatStrategy(Strategy);
  Programming->SetBloatLimit(12);
  Programming->SetInitializationMethod(imHalfAndHalf);
  Programming->SetMutationWeights({20, 10, 30, 10, 10, 20});
  Programming->OnConstantMutation = TGaussianConstantMutation(0.1);
  Programming->OnEvaluateFitness = [](auto&, auto& Item, double& Fitness) {
    generics::TQXGPContext<TValue> Context;
    double Error = Random() / 100;
    for (const double X : {-1.0, -0.3, 0.4, 1.1}) {
      Context.Values().AddOrSetValue("x", X);
      Error += std::fabs(static_cast<double>(Variant(Item.Execute(&Context)).AsReal()) - (X * X + X + 0.3));
    }
    Fitness = 1 / (1 + Error);
  };
  return Programming;
}

} // namespace

std::vector<TCheckpointedRun> CheckpointedRuns() {
  std::vector<TCheckpointedRun> Runs;
  const auto AddPrograms = [&Runs](TGASelectionMethod Selection, TGPBloatStrategy Strategy) {
    const std::string Name = std::string(EnumName(Selection)) + '-' + std::string(EnumName(Strategy));
    Runs.push_back(
        {"float-" + Name, [=] { return MakeProgramming<TQXGeneticProgramming>(Selection, Strategy); }});
    Runs.push_back({"binary-" + Name,
                    [=] { return MakeProgramming<TQXBinaryGeneticProgramming>(Selection, Strategy); }});
    Runs.push_back({"variant-" + Name,
                    [=] { return MakeProgramming<TQXGeneticProgrammingVariant>(Selection, Strategy); }});
  };
  for (std::size_t I = 0; I < EnumNames<TGASelectionMethod>().size(); ++I) {
    const auto Selection = static_cast<TGASelectionMethod>(I);
    Runs.push_back({"bits-" + std::string(EnumName(Selection)), [=] { return MakeAlgorithm(Selection); }});
    AddPrograms(Selection, bsNone);
  }
  for (std::size_t I = 1; I < EnumNames<TGPBloatStrategy>().size(); ++I) {
    AddPrograms(smTournament, static_cast<TGPBloatStrategy>(I));
    AddPrograms(smRoulette, static_cast<TGPBloatStrategy>(I));
  }
  return Runs;
}

std::string PictureOf(TQXCustomGeneticComponent& Component) {
  std::ostringstream Text;
  Component.SaveCheckpoint(Text);
  Text << std::hexfloat << Component.Generation() << ' ' << Component.AvgFitness() << ' '
       << Component.AvgWeightedFitness() << ' ' << Component.FittestIndividual()->Index() << '\n';
  for (const TQXIndividual& Individual : Component.Population()) {
    Text << Individual.Fitness() << ' ' << Individual.WeightedFitness() << '\n';
  }
  for (int I = 0; I < 5; ++I) {
    Text << Random() << '\n';
  }
  return Text.str();
}

} // namespace qx::tests
