#pragma once

// Internal to the XML wrapper; not installed.

#include <qx/platform/XML.h>

#include <cstddef>
#include <memory>
#include <pugixml.hpp>
#include <string>
#include <string_view>

namespace qx::detail {

struct TXMLTree {
  std::string Source; // what was parsed, as UTF-8; empty for a new document
  pugi::xml_document Document;
};

/// Raises EXMLError at a byte of the text.
[[noreturn]] void RaiseXMLError(const std::string& Message, std::string_view Text, std::size_t Offset);

/// Whether XML allows the character in a text.
bool IsXMLCharacter(char32_t CodePoint);

/// Whether XML allows the name for an element or an attribute, with or without a name space.
bool IsXMLName(std::string_view Name);

std::shared_ptr<TXMLTree> ReadXML(std::string Bytes, const TXMLLimits& Limits);
std::string WriteXML(const pugi::xml_document& Document);

} // namespace qx::detail
