#pragma once

#include <qx/platform/Text.h>

#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace qx {

/// What an instruction does to many rows at once: the values of each argument, and where those of the
/// function go. All spans are of one length.
using TBatchFunction =
    std::function<void(std::span<const std::span<const double>> Arguments, std::span<double> Results)>;

/// A host's own kernels for its instructions, by name. An instruction that has one here never runs its
/// `OnExecute` in batch evaluation; what both do should be the same. So too for a standard instruction: a
/// formula's text knows that one alone.
///
///     functions.SetBlockFunction("Hypot", [](auto Arguments, auto Results) {
///       for (std::size_t I = 0; I < Results.size(); ++I) {
///         Results[I] = std::hypot(Arguments[0][I], Arguments[1][I]);
///       }
///     });
class TQXBatchFunctions {
public:
  /// Of a function whose value in a row depends on the arguments in that row alone: it is called with blocks
  /// of rows.
  void SetBlockFunction(std::string_view Instruction, TBatchFunction Function) {
    FEntries.insert_or_assign(LowerText(Instruction), TEntry{std::move(Function), false});
  }
  /// Of a function that looks at other rows too, such as a lag or a rolling mean: it is called with whole
  /// columns.
  void SetColumnFunction(std::string_view Instruction, TBatchFunction Function) {
    FEntries.insert_or_assign(LowerText(Instruction), TEntry{std::move(Function), true});
  }
  void Remove(std::string_view Instruction) { FEntries.erase(LowerText(Instruction)); }

  struct TEntry {
    TBatchFunction Function;
    bool WholeColumns;
  };
  /// The function for an instruction, or nullptr.
  const TEntry* Find(std::string_view Instruction) const {
    const auto Found = FEntries.find(LowerText(Instruction));
    return Found != FEntries.end() ? &Found->second : nullptr;
  }

private:
  std::map<std::string, TEntry> FEntries;
};

} // namespace qx
