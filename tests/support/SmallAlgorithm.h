#pragma once

#include <qx/genetic_algorithm/QXGeneticAlgorithm.h>

#include <sstream>
#include <string>
#include <support/Streams.h>

namespace qx::tests {

/// A text as often as wanted, one behind the other.
inline std::string Repeated(std::string_view Text, int Times) {
  std::string All;
  for (int I = 0; I < Times; ++I) {
    All += Text;
  }
  return All;
}

inline TQXGAGene& AddGene(TQXGAGenes& Genes, std::string_view Name, TGeneType Type, int Size) {
  TQXGAGene& Gene = Genes.Add();
  Gene.SetName(Name);
  Gene.SetGeneType(Type);
  Gene.SetSize(Size);
  return Gene;
}

/// Three individuals with a gene of each kind; the fitness is the number of ones.
class TSmallAlgorithm : public TQXGeneticAlgorithm {
public:
  explicit TSmallAlgorithm(std::initializer_list<std::string_view> Chromosomes = {"111001000", "000010111",
                                                                                  "111110000"}) {
    Flag = &AddGene(Genes(), "flag", gtBoolean, 1);
    Number = &AddGene(Genes(), "number", gtInteger, 3);
    Number->SetPreserveSignBit(true);
    Colour = &AddGene(Genes(), "colour", gtEnumeration, 2);
    for (const char* const Text : {"red", "green", "blue"}) {
      Colour->Enumerations().Add(Text);
    }
    Level = &AddGene(Genes(), "level", gtFloat, 3);
    CountOnes(*this);
    SetInitialPopulation(static_cast<int>(Chromosomes.size()));
    OnInitialization = [&](auto& Sender, bool& Filled) {
      int I = 0;
      for (const std::string_view Bits : Chromosomes) {
        Sender.Population()[I++].Bits().SetAsBitString(0, Sender.GeneSize(), Bits);
      }
      Filled = true;
    };
    Initialize();
    OnInitialization = nullptr;
  }

  static void CountOnes(TQXGeneticAlgorithm& Algorithm) {
    Algorithm.OnEvaluateFitness = [](auto&, auto& Item, double& Fitness) {
      Fitness = Item.Bits().CountOnes();
    };
  }

  TQXGAGene* Flag = nullptr;
  TQXGAGene* Number = nullptr;
  TQXGAGene* Colour = nullptr;
  TQXGAGene* Level = nullptr;
};

/// Everything that can be asked of a component: its stream, both generations, the fittest, the statistics.
inline std::string StateOf(TQXGeneticAlgorithm& Algorithm) {
  std::ostringstream Text;
  Text << Written(Algorithm);
  if (Algorithm.PreviousGeneration() != nullptr) {
    for (TQXGAIndividual& Individual : *Algorithm.PreviousGeneration()) {
      Text << Individual.ID() << ' ' << Individual.Bits().ToBitString() << ' ' << Individual.NeedFitness()
           << '\n';
    }
  }
  for (TQXGAIndividual& Individual : Algorithm.Population()) {
    Text << &Individual << ' ' << Individual.ID() << ' ' << Individual.NeedFitness() << '\n';
  }
  for (TQXGAGene& Gene : Algorithm.Genes()) {
    Text << &Gene << ' ' << Gene.ID() << ' ' << Gene.Offset() << '\n';
  }
  Text << Algorithm.FittestIndividual() << ' ' << Algorithm.MaxFitness() << ' ' << Algorithm.MinFitness()
       << ' ' << Algorithm.AvgFitness() << ' ' << Algorithm.AvgWeightedFitness() << ' '
       << Algorithm.Initialized();
  for (const std::string& Warning : Algorithm.LoadWarnings()) {
    Text << '\n' << Warning;
  }
  return Text.str();
}

} // namespace qx::tests
