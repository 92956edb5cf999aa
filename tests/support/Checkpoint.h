#pragma once

#include <qx/engine/GeneticComponent.h>

#include <sstream>
#include <stdexcept>
#include <string>

namespace qx::tests {

inline std::string CheckpointOf(TQXCustomGeneticComponent& Component) {
  std::ostringstream Stream;
  Component.SaveCheckpoint(Stream);
  return Stream.str();
}

inline void LoadCheckpoint(TQXCustomGeneticComponent& Component, const std::string& Text) {
  std::istringstream Stream(Text);
  Component.LoadCheckpoint(Stream);
}

inline std::string Replaced(std::string Text, const std::string& What, const std::string& With) {
  const std::size_t Place = Text.find(What);
  if (Place == std::string::npos) {
    throw std::invalid_argument("No \"" + What + "\" in the text");
  }
  return Text.replace(Place, What.size(), With);
}

} // namespace qx::tests
