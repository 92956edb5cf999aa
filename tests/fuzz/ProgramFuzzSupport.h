#pragma once

// What the fuzz targets of program documents share.

#include "FuzzSupport.h"
#include <qx/genetic_programming/QXGeneticProgramming.h>

namespace qx::fuzz {

/// A component that has a run to lose, and an executor that has a program to lose.
class TLoadedProgram {
public:
  TLoadedProgram() {
    DefaultXMLLimits.Bytes = 1 << 16;
    for (const char* const Name : {"Add", "Neg"}) {
      AddStandardInstruction(Component.Instructions(), Name);
    }
    Component.Instructions().Add().SetName("x");
    AddEphemeralConstant(Component.Instructions(), "c", 0, 1);
    Component.SetInitialPopulation(3);
    Component.OnEvaluateFitness = [](auto&, auto& Item, double& Fitness) {
      Fitness = Item.DNA() != nullptr ? Item.DNA()->Size() : 0;
    };
    Component.Initialize();
    Executor.Instructions().AssignAll(Component.Instructions());
    Executor.SetGPProgram(*Component.Population()[0].DNA());
  }

  /// Everything that documents tell of both, and what they do not.
  std::string State() {
    std::ostringstream Text;
    Component.SaveToStream(Text);
    Executor.SaveToStream(Text);
    for (auto& Individual : *Component.PreviousGeneration()) {
      Text << Individual.ToString() << '\n';
    }
    for (int I = 0; I < Component.FunctionsCount(); ++I) {
      Text << Component.Functions(I).Name() << ' ';
    }
    for (int I = 0; I < Component.TerminalsCount(); ++I) {
      Text << Component.Terminals(I).Name() << ' ';
    }
    Text << Component.MutationWeightSum() << Component.Initialized();
    return Text.str();
  }

  TQXGeneticProgramming Component;
  TQXGeneticProgrammingExecutor Executor;
};

/// A document that was taken can be evaluated, saved, if it can be saved, and loaded again: unless it has
/// instructions without a name, which programs cannot refer to.
template <class TTarget>
void RequireReloadable(TTarget& Target) {
  for (const auto& Instruction : Target.Instructions()) {
    if (Instruction.Name().empty()) {
      return;
    }
  }
  std::stringstream Saved;
  try {
    Target.SaveToStream(Saved);
  } catch (const std::exception&) {
    return; // an arity beyond the format
  }
  if (Saved.str().size() <= DefaultXMLLimits.Bytes) {
    TTarget Again;
    Again.LoadFromStream(Saved);
  }
}

/// Tries two loads of one document, into the component and into the executor. When both raise, nothing may
/// have changed; what was taken can be evaluated, saved and loaded again.
template <class TLoadComponent, class TLoadExecutor>
void LoadAndCheckPrograms(TLoadComponent LoadComponent, TLoadExecutor LoadExecutor) {
  TLoadedProgram Loaded;
  const std::string Before = Loaded.State();
  const auto Succeeds = [](auto& Target, auto Load) {
    try {
      Load(Target);
      return true;
    } catch (const std::exception&) {
      return false;
    }
  };
  const bool Read = Succeeds(Loaded.Component, LoadComponent);
  const bool Held = Succeeds(Loaded.Executor, LoadExecutor);
  if (!Read && !Held) {
    Require(Loaded.State() == Before, "a load that failed has changed something");
  }
  if (Read) {
    Loaded.Component.EvaluateFitness();
    RequireReloadable(Loaded.Component);
  }
  if (Held) {
    RequireReloadable(Loaded.Executor);
  }
}

} // namespace qx::fuzz
