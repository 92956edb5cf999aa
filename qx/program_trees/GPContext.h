#pragma once

#include <qx/collections/QXGenerics.Collections.h>
#include <qx/foundation/QXGAConsts.h>
#include <qx/platform/Persistent.h>
#include <qx/platform/Variant.h>

#include <string>

namespace qx::generics {

/// Values of variables by name. Unlike the names of instructions, keys differ by the case of letters.
template <class T>
using TQXGPValues = TQXDictionary<std::string, T>;

/// What a program is executed on: the values of its variables. Make one, and set its values anew for each
/// case; a variable finds its value the faster when no names come or go between.
template <class T>
class TQXGPContext : public TPersistent {
public:
  TQXGPValues<T>& Values() { return FValues; }
  const TQXGPValues<T>& Values() const { return FValues; }
  /// Copies the table.
  void SetValues(const TQXGPValues<T>& Value) { FValues.Assign(Value); }

  /// Copies the values of another context.
  void Assign(const TPersistent& Source) override;

private:
  TQXGPValues<T> FValues;
};

extern template class TQXGPContext<TGAFloat>;
extern template class TQXGPContext<Variant>;

} // namespace qx::generics
