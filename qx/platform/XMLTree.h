#pragma once

// Internal to the XML wrapper; not installed.

#include <qx/platform/XML.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <pugixml.hpp>
#include <string>
#include <string_view>

namespace qx::detail {

struct TXMLTree {
  std::string Source; // what was parsed, as UTF-8; empty for a new document
  pugi::xml_document Document;
  int Readers = 0; // scopes in which nothing is added
};

/// Raises EXMLError at a byte of the text.
[[noreturn]] void RaiseXMLError(const std::string& Message, std::string_view Text, std::size_t Offset);

/// Whether XML allows the character in a text.
bool IsXMLCharacter(char32_t CodePoint);

/// What no document can hold: bytes that are not UTF-8, or a character that XML does not allow.
struct TXMLFault {
  std::size_t Offset;
  std::string What;
};
/// The first fault of a text, if it has one.
std::optional<TXMLFault> FindXMLFault(std::string_view Text);

/// Whether XML allows the name for an element or an attribute, with or without a name space.
bool IsXMLName(std::string_view Name);

std::shared_ptr<TXMLTree> ReadXML(std::string Bytes, const TXMLLimits& Limits);
std::string WriteXML(const pugi::xml_document& Document);

} // namespace qx::detail
