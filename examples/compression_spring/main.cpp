// Designs a helical compression spring of the least wire volume (Sandgren 1990, "Nonlinear integer and
// discrete programming in mechanical design optimization", Journal of Mechanical Design 112): a whole number
// of coils, a free mean coil diameter, and a wire diameter from the list of standard ones.
//
// Usage: compression_spring [--seed N] [--load FILE] [--save FILE]

#include "../RunOptions.h"
#include <qx/genetic_algorithm/QXGeneticAlgorithm.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <numbers>
#include <string>

namespace {

constexpr std::array WireDiameters = {
    "0.009", "0.0095", "0.0104", "0.0118", "0.0128", "0.0132", "0.014", "0.015",  "0.0162", "0.0173", "0.018",
    "0.020", "0.023",  "0.025",  "0.028",  "0.032",  "0.035",  "0.041", "0.047",  "0.054",  "0.063",  "0.072",
    "0.080", "0.092",  "0.105",  "0.120",  "0.135",  "0.148",  "0.162", "0.177",  "0.192",  "0.207",  "0.225",
    "0.244", "0.263",  "0.283",  "0.307",  "0.331",  "0.362",  "0.394", "0.4375", "0.500"};

constexpr double BestKnownVolume = 2.6586;

struct TSpring {
  double Coils;        // N
  double CoilDiameter; // D, in
  double Wire;         // d, in

  double Volume() const {
    return std::numbers::pi * std::numbers::pi * CoilDiameter * Wire * Wire * (Coils + 2) / 4;
  }
};

struct TConstraint {
  const char* Meaning;
  const char* Unit;
  double Value; // holds when it is not above 0
};

std::array<TConstraint, 8> Constraints(const TSpring& Spring) {
  constexpr double MaximumLoad = 1000;       // Fmax, lb
  constexpr double AllowableStress = 189e3;  // S, psi
  constexpr double ShearModulus = 11.5e6;    // G, psi
  constexpr double MaximumFreeLength = 14;   // lmax, in
  constexpr double SmallestWire = 0.2;       // dmin, in
  constexpr double LargestCoil = 3;          // Dmax, in
  constexpr double Preload = 300;            // Fp, lb
  constexpr double PreloadDeflection = 6;    // spm, in
  constexpr double WorkingDeflection = 1.25; // sw, in
  const double N = Spring.Coils;
  const double D = Spring.CoilDiameter;
  const double d = Spring.Wire;
  const double Wahl = (4 * D / d - 1) / (4 * D / d - 4) + 0.615 * d / D;        // Cf
  const double Rate = ShearModulus * std::pow(d, 4) / (8 * N * std::pow(D, 3)); // K, lb/in
  const double AtPreload = Preload / Rate;                                      // sp
  const double Solid = 1.05 * (N + 2) * d;
  const double FreeLength = MaximumLoad / Rate + Solid; // lf
  const double Stroke = (MaximumLoad - Preload) / Rate;
  return {{{"shear stress", "psi",
            8 * Wahl * MaximumLoad * D / (std::numbers::pi * std::pow(d, 3)) - AllowableStress},
           {"free length", "in", FreeLength - MaximumFreeLength},
           {"smallest wire", "in", SmallestWire - d},
           {"largest coil", "in", D - LargestCoil},
           {"spring index", "", 3 - D / d},
           {"deflection at preload", "in", AtPreload - PreloadDeflection},
           {"combined deflection", "in", AtPreload + Stroke + Solid - FreeLength},
           {"working deflection", "in", WorkingDeflection - Stroke}}};
}

bool Holds(const TConstraint& Constraint) {
  constexpr double Rounding = 1e-9; // the combined deflection is an identity
  return Constraint.Value <= Rounding;
}

/// The genotype of a spring: which bits of a chromosome mean what.
class TSpringGenes {
public:
  explicit TSpringGenes(qx::TQXGAGenes& Genes)
      : FCoils(Genes.Add()), FCoilDiameter(Genes.Add()), FWire(Genes.Add()) {
    Genes.SetDecoding(qx::gdAlwaysValid); // every chromosome is a spring
    FCoils.SetName("N");
    FCoils.SetGeneType(qx::gtInteger);
    FCoils.SetSize(7);
    FCoils.SetMaxValue(70);
    FCoils.SetMinValue(1);
    FCoilDiameter.SetName("D");
    FCoilDiameter.SetGeneType(qx::gtFloat);
    FCoilDiameter.SetSize(20);
    FCoilDiameter.SetMaxValue(3.0);
    FCoilDiameter.SetMinValue(0.6);
    FWire.SetName("d");
    FWire.SetGeneType(qx::gtEnumeration);
    for (const char* const Diameter : WireDiameters) {
      FWire.Enumerations().Add(Diameter);
    }
  }

  TSpring Read(const qx::TQXGABits& Bits) const {
    return {static_cast<double>(FCoils.GeneAsInteger(Bits)), FCoilDiameter.GeneAsDouble(Bits),
            std::strtod(FWire.GeneAsEnumeration(Bits).c_str(), nullptr)};
  }

private:
  qx::TQXGAGene& FCoils;
  qx::TQXGAGene& FCoilDiameter;
  qx::TQXGAGene& FWire;
};

/// The volume, and a penalty for each constraint that does not hold, in proportion to how far.
double Judge(const TSpring& Spring) {
  constexpr std::array Scales = {189e3, 14.0, 0.2, 3.0, 3.0, 6.0, 6.0, 1.25};
  double Penalty = 0;
  const auto All = Constraints(Spring);
  for (std::size_t C = 0; C < All.size(); ++C) {
    if (!Holds(All[C])) {
      Penalty += 1 + 10 * All[C].Value / Scales[C];
    }
  }
  return Spring.Volume() + Penalty;
}

int Report(const TSpring& Spring) {
  const double Excess = (Spring.Volume() / BestKnownVolume - 1) * 100;
  bool AllHold = true;
  std::printf("\nSpring: %.0f coils, mean coil diameter %.4f in, wire diameter %.4g in\n", Spring.Coils,
              Spring.CoilDiameter, Spring.Wire);
  std::printf("Wire volume %.4f in^3 (%+.2f%% against the best design known, %.4f in^3)\n", Spring.Volume(),
              Excess, BestKnownVolume);
  std::printf("Constraints:\n");
  for (const TConstraint& Constraint : Constraints(Spring)) {
    AllHold = AllHold && Holds(Constraint);
    std::printf("  %-22s slack %10.4f %-4s %s\n", Constraint.Meaning, 0 - Constraint.Value, Constraint.Unit,
                Holds(Constraint) ? "held" : "VIOLATED");
  }
  std::printf(AllHold ? "All constraints are held.\n" : "The design is not feasible.\n");
  return AllHold ? EXIT_SUCCESS : EXIT_FAILURE;
}

int Run(const TRunOptions& Options) {
  qx::SeedRandom(Options.Seed);

  qx::TQXGeneticAlgorithm ga;
  const TSpringGenes Genes(ga.Genes());
  ga.SetInitialPopulation(2000);
  ga.SetCrossoverMethod(qx::cmBitBoundary);
  ga.SetMutationProbability(0.03);
  ga.SetInversionProbability(0.05);
  ga.SetSelectionMethod(qx::smTournament);

  ga.OnEvaluateFitness = [&](auto&, auto& Item, double& Fitness) {
    Fitness = Judge(Genes.Read(Item.Bits()));
  };
  ga.OnEvolve = [&](auto& Sender) {
    if (Sender.Generation() % 30 == 0) {
      std::printf("generation %4d   best volume %.4f in^3   of this generation %.4f\n", Sender.Generation(),
                  Sender.BestEver()->Fitness(), Sender.MinFitness());
      std::fflush(stdout);
    }
  };
  if (!Options.Load.empty()) {
    ga.LoadFromFile(Options.Load);
  }
  ga.Evolve(300);
  const int Result = Report(Genes.Read(ga.BestEver()->Bits()));
  if (!Options.Save.empty()) {
    ga.SaveToFile(Options.Save);
    std::printf("Saved generation %d to %s\n", ga.Generation(), Options.Save.c_str());
  }
  return Result;
}

} // namespace

int main(int Count, char** Arguments) { return RunExample(Count, Arguments, Run, LoadsAndSavesFile); }
