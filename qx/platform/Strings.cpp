#include <qx/platform/Strings.h>

#include <algorithm>
#include <stdexcept>

namespace qx {

TStrings::TStrings(std::initializer_list<std::string_view> Texts) {
  for (const std::string_view Text : Texts) {
    FLines.push_back({std::string(Text), nullptr});
  }
}

void TStrings::SetStrings(int Index, std::string_view Text) {
  FLines[CheckedIndex(Index)].Text = Text;
  Changed();
}

void TStrings::SetObjects(int Index, TPersistent* Object) {
  FLines[CheckedIndex(Index)].Object = Object;
  Changed();
}

int TStrings::AddObject(std::string_view Text, TPersistent* Object) {
  FLines.push_back({std::string(Text), Object});
  const int Index = Count() - 1;
  Changed();
  return Index;
}

void TStrings::Insert(int Index, std::string_view Text) {
  if (Index != Count()) {
    static_cast<void>(CheckedIndex(Index));
  }
  FLines.insert(FLines.begin() + Index, {std::string(Text), nullptr});
  Changed();
}

void TStrings::Delete(int Index) {
  FLines.erase(FLines.begin() + static_cast<std::ptrdiff_t>(CheckedIndex(Index)));
  Changed();
}

void TStrings::Clear() {
  if (!FLines.empty()) {
    FLines.clear();
    Changed();
  }
}

int TStrings::IndexOf(std::string_view Text) const {
  const auto Found =
      std::find_if(FLines.begin(), FLines.end(), [&](const TLine& Line) { return Line.Text == Text; });
  return Found == FLines.end() ? -1 : static_cast<int>(Found - FLines.begin());
}

std::string TStrings::Text() const {
  std::string All;
  for (const TLine& Line : FLines) {
    All += Line.Text;
    All += '\n';
  }
  return All;
}

void TStrings::Assign(const TPersistent& Source) {
  if (&Source == this) {
    return;
  }
  const auto* List = SourceAs<TStrings>(Source);
  if (List == nullptr) {
    TPersistent::Assign(Source);
    return;
  }
  FLines = List->FLines;
  Changed();
}

void TStrings::EndUpdate() {
  if (FUpdateCount == 0) {
    throw std::logic_error("EndUpdate of a string list without BeginUpdate");
  }
  --FUpdateCount;
  Changed();
}

std::size_t TStrings::CheckedIndex(int Index) const {
  if (Index < 0 || Index >= Count()) {
    throw std::out_of_range("Index " + std::to_string(Index) + " is outside the string list of " +
                            std::to_string(Count()) + " texts");
  }
  return static_cast<std::size_t>(Index);
}

void TStrings::Changed() {
  if (FUpdateCount == 0 && OnChange) {
    OnChange(*this);
  }
}

} // namespace qx
