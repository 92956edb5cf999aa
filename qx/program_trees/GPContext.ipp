#pragma once

// Definitions of GPContext.h.

#include <qx/program_trees/GPContext.h>

namespace qx::generics {

template <class T>
void TQXGPContext<T>::Assign(const TPersistent& Source) {
  if (const auto* Context = SourceAs<TQXGPContext>(Source)) {
    SetValues(Context->FValues);
  } else {
    TPersistent::Assign(Source);
  }
}

} // namespace qx::generics
