#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace qx {

/// The code point that starts at `Offset`, which is moved behind it; nothing, and `Offset` stays, where the
/// bytes are no UTF-8 (overlong forms, surrogates and what lies beyond U+10FFFF included).
std::optional<char32_t> NextCodePoint(std::string_view Text, std::size_t& Offset);
/// Appends a code point, which is none of the surrogates.
void AppendCodePoint(std::string& Text, char32_t CodePoint);

} // namespace qx
