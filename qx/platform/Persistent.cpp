#include <qx/platform/ClassName.h>
#include <qx/platform/Persistent.h>

#include <stdexcept>
#include <typeinfo>

namespace qx {

void TPersistent::Assign(const TPersistent& Source) { Source.AssignTo(*this); }

std::string TPersistent::ClassName() const { return ClassNameOf(typeid(*this)); }

void TPersistent::AssignTo(TPersistent& Dest) const {
  throw std::invalid_argument("Cannot assign a " + ClassName() + " to a " + Dest.ClassName());
}

} // namespace qx
