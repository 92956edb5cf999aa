#pragma once

#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>

namespace qx {

/// Base of the errors that the library itself raises; it carries a message and nothing else.
class EQXException : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// Fills the placeholders of a message ("%s", "%d", "%i") with the arguments, in order.
std::string FormatText(std::string_view Template, std::initializer_list<std::string_view> Arguments);

} // namespace qx
