#pragma once

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace qxevolve {

/// Writes to standard output. Raises std::system_error when it does not take all of it: a full disk, say.
void Print(std::string_view Text);
/// What tells how things go, to standard error.
void Tell(std::string_view Text);

/// Puts text into a file, wholly or not at all; "-" is standard output.
void WriteOutput(const std::string& FileName, std::string_view Text);
/// Raises std::system_error when nothing can be written under that name, so that nobody computes in vain.
/// What is there stays as it is.
void RequireWritable(const std::string& FileName);

/// Raises EUsageError when a file to be written is one of those that are read.
void RequireOther(const std::string& FileName, std::initializer_list<std::string> Inputs);

/// Columns of the terminal behind a descriptor, or nothing when there is none.
std::optional<std::size_t> TerminalWidth(int Descriptor);

/// A line cut to so many bytes, between characters, with "..." at its end; a width below 20 cuts nothing.
std::string Shortened(const std::string& Line, std::size_t Width);

/// Significant digits of numbers for people.
inline constexpr int ShownDigits = 6;
/// A number for people, with a decimal point.
std::string Short(double Value);
/// A value in JSON, null for what is no finite number.
std::string JSON(double Value);
std::string JSON(std::string_view Text);
/// A cell of a table that reads back as the same text.
std::string CSVCell(const std::string& Text);
/// A text within HTML.
std::string HTML(std::string_view Text);

} // namespace qxevolve
