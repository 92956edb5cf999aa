#pragma once

#include <qx/platform/Event.h>
#include <qx/platform/Persistent.h>

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace qx {

/// A list of texts, each with an object that may be attached to it (referred to, never owned).
///
/// Every change fires `OnChange`; between `BeginUpdate` and the matching `EndUpdate` changes are held back,
/// and the outermost `EndUpdate` fires once. Texts are compared exactly.
class TStrings : public TPersistent {
public:
  TStrings() = default;
  TStrings(std::initializer_list<std::string_view> Texts);

  int Count() const { return static_cast<int>(FLines.size()); }
  /// Raises std::out_of_range, as every operation here that takes an index.
  const std::string& Strings(int Index) const { return FLines[CheckedIndex(Index)].Text; }
  void SetStrings(int Index, std::string_view Text);
  const std::string& operator[](int Index) const { return Strings(Index); }
  TPersistent* Objects(int Index) const { return FLines[CheckedIndex(Index)].Object; }
  void SetObjects(int Index, TPersistent* Object);

  /// Appends a text; returns its index.
  int Add(std::string_view Text) { return AddObject(Text, nullptr); }
  int AddObject(std::string_view Text, TPersistent* Object);
  void Insert(int Index, std::string_view Text);
  void Delete(int Index);
  void Clear();
  /// Index of the first text that equals `Text`, or -1.
  int IndexOf(std::string_view Text) const;
  /// All texts, each followed by a line feed.
  std::string Text() const;

  /// Replaces the list by the texts and objects of another; `OnChange` fires once.
  void Assign(const TPersistent& Source) override;

  void BeginUpdate() { ++FUpdateCount; }
  /// Raises std::logic_error without a matching `BeginUpdate`.
  void EndUpdate();

  TQXEvent<void(TStrings& Sender)> OnChange;

private:
  struct TLine {
    std::string Text;
    TPersistent* Object = nullptr;
  };

  std::size_t CheckedIndex(int Index) const;
  void Changed();

  std::vector<TLine> FLines;
  int FUpdateCount = 0;
};

} // namespace qx
