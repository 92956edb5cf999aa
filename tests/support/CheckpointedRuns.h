#pragma once

#include <qx/engine/GeneticComponent.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace qx::tests {

/// A run that a test interrupts: a component with its handlers, as a host declares it in every process.
struct TCheckpointedRun {
  std::string Name;
  std::function<std::unique_ptr<TQXCustomGeneticComponent>()> Make;
};

/// Runs of every kind of component, by every selection method and under every bloat strategy.
std::vector<TCheckpointedRun> CheckpointedRuns();

/// All that can be seen of a component and of the random generator.
std::string PictureOf(TQXCustomGeneticComponent& Component);

} // namespace qx::tests
