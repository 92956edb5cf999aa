#pragma once

#include <qx/foundation/EnumPropertyText.h>
#include <qx/platform/Collection.h>
#include <qx/platform/XML.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qx {

class TQXCustomGeneticComponent;
class TQXPopulation;

/// Holds a load together. While it runs, whatever is about to be changed is told to the scope; when the scope
/// is left without `Done`, all of that is undone, the last change first, and the component is as it was when
/// the scope began. Scopes nest: what one inside has done is undone as well when the outer one fails. Without
/// a component a scope stands for itself.
class TLoadScope {
public:
  /// Raises std::logic_error while individuals are in use: they must not go.
  explicit TLoadScope(TQXCustomGeneticComponent* Component);
  TLoadScope(const TLoadScope&) = delete;
  TLoadScope& operator=(const TLoadScope&) = delete;
  ~TLoadScope();

  /// Registers how a change that comes next is undone.
  void OnFailure(std::function<void()> Undo) { FOutermost->FUndo.push_back(std::move(Undo)); }
  /// Empties the collection until the load has succeeded. What is returned lives as long.
  TSetAsideItems& SetAside(TOwnedCollection& Items);
  /// Lets the fitnesses of a generation's members, stale or not, come back.
  void RememberFitnesses(TQXPopulation& Population);
  /// Bytes that the genomes of a load may have in all: as many as a document may have, unless told otherwise.
  std::uint64_t Room() const { return FOutermost->FRoom; }
  void SetRoom(std::uint64_t Bytes) { FOutermost->FRoom = Bytes; }
  /// Adds to the component's `LoadWarnings`.
  void Warn(std::string Warning) { FOutermost->FWarnings.push_back(std::move(Warning)); }
  /// Warns when a setting has become another value than that which was read.
  template <class T>
  void WarnIfMoved(std::string_view Name, const T& Wanted, const T& Stored) {
    const std::string WantedText = TPropertyText<T>::Make(Wanted);
    const std::string StoredText = TPropertyText<T>::Make(Stored);
    if (StoredText != WantedText) {
      Warn(std::string(Name) + ": " + WantedText + " became " + StoredText);
    }
  }
  /// The value of that name; warns and gives the present one where none has the name.
  template <class TEnum>
  TEnum ValueOr(std::string_view Element, const std::string& Name, TEnum Present) {
    const std::optional<TEnum> Value = EnumValue<TEnum>(Name);
    if (!Value) {
      WarnUnknown(Element, Name, EnumName(Present));
    }
    return Value.value_or(Present);
  }

  /// The load has succeeded.
  void Done();

private:
  void WarnUnknown(std::string_view Element, const std::string& Name, std::string_view Present);
  void UndoToMark();

  TQXCustomGeneticComponent* FComponent;
  TLoadScope* FOutermost;
  bool FDone = false;
  std::uint64_t FRoom = DefaultXMLLimits.Bytes;
  // What the outermost scope held when this one began.
  std::size_t FUndoMark;
  std::size_t FWarningMark;
  std::vector<std::function<void()>> FUndo;
  std::vector<std::string> FWarnings;
};

} // namespace qx
