#pragma once

#include <string>
#include <typeinfo>

namespace qx {

/// The bare name of a class, as people write it: no namespaces, template arguments kept.
std::string ClassNameOf(const std::type_info& Type);

} // namespace qx
