#pragma once

// Components as texts: documents, component streams, checkpoints.

#include <qx/engine/GeneticComponent.h>
#include <qx/platform/Filer.h>

#include <sstream>
#include <stdexcept>
#include <string>

namespace qx::tests {

inline std::string Saved(TQXCustomGeneticComponent& Component) {
  std::ostringstream Stream;
  Component.SaveToStream(Stream);
  return Stream.str();
}

inline void Load(TQXCustomGeneticComponent& Component, const std::string& Text) {
  std::istringstream Stream(Text);
  Component.LoadFromStream(Stream);
}

inline std::string Written(TComponent& Component) {
  std::ostringstream Stream;
  WriteComponent(Stream, Component);
  return Stream.str();
}

inline void Read(TComponent& Component, const std::string& Text) {
  std::istringstream Stream(Text);
  ReadComponent(Stream, Component);
}

inline std::string CheckpointOf(TQXCustomGeneticComponent& Component) {
  std::ostringstream Stream;
  Component.SaveCheckpoint(Stream);
  return Stream.str();
}

inline void LoadCheckpoint(TQXCustomGeneticComponent& Component, const std::string& Text) {
  std::istringstream Stream(Text);
  Component.LoadCheckpoint(Stream);
}

/// The text with the first occurrence of a part replaced; raises std::invalid_argument when there is none.
inline std::string Replaced(std::string Text, const std::string& What, const std::string& With) {
  const std::size_t Place = Text.find(What);
  if (Place == std::string::npos) {
    throw std::invalid_argument("No \"" + What + "\" in the text");
  }
  return Text.replace(Place, What.size(), With);
}

/// The text of a checkpoint with another value of the first property of that name.
inline std::string WithValue(const std::string& Text, const std::string& Name, const std::string& Value) {
  const std::size_t Begin = Text.find(' ' + Name + " = ") + 1;
  const std::string Line = Text.substr(Begin, Text.find('\n', Begin) - Begin);
  return Replaced(Text, Line, Name + " = " + Value);
}

} // namespace qx::tests
