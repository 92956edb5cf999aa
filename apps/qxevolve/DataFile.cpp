#include "DataFile.h"

#include "Error.h"
#include <qx/platform/Numbers.h>
#include <qx/platform/Utf8.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <bit>
#include <cerrno>
#include <fmt/format.h>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace qxevolve {

namespace {

bool IsUTF8(std::string_view Text) {
  std::size_t Offset = 0;
  while (Offset < Text.size() && qx::NextCodePoint(Text, Offset)) {
  }
  return Offset == Text.size();
}

} // namespace

void TDataFile::AddOptions(CLI::App& App) {
  const auto Group = "Data";
  App.add_option("--ignore", Ignored, "Columns to leave out: names or texts, say")
      ->delimiter(',')
      ->type_name("NAME,...")
      ->group(Group);
  App.add_option("--separator", Separator,
                 "Between cells; \"tab\" too. Without it, the comma, semicolon or tab of the first line")
      ->type_name("CHAR")
      ->group(Group);
  App.add_option("--decimal-point", DecimalPoint, "In numbers; a comma needs another separator [.]")
      ->type_name("CHAR")
      ->check(CLI::IsMember({".", ","}))
      ->group(Group);
  App.add_flag("--no-header", NoHeader, "The first line has numbers; columns are called x1, x2 and so on")
      ->group(Group);
}

void TDataFile::AddMissingOption(CLI::App& App) {
  App.add_option("--missing", MissingValues,
                 "What to do with cells that are empty or say NA: refuse the table, or skip their rows")
      ->type_name("refuse|skip")
      ->check(CLI::IsMember({"refuse", "skip"}))
      ->capture_default_str()
      ->group("Data");
}

void TDataFile::InheritFormat(const TDataFile& Other) {
  Separator = Separator.empty() ? Other.Separator : Separator;
  DecimalPoint = DecimalPoint.empty() ? Other.DecimalPoint : DecimalPoint;
  NoHeader = NoHeader || Other.NoHeader;
}

qx::TQXDataSet TDataFile::Read(const std::vector<std::string>& Wanted) const {
  const std::string Text = ReadText();
  RequireReadableText(Text);
  qx::TCSVFormat Format;
  if (!Separator.empty()) {
    if (Separator.size() > 1 && Separator != "tab") {
      throw EUsageError("--separator takes one character, or \"tab\"");
    }
    Format.Separator = Separator == "tab" ? '\t' : Separator[0];
  }
  Format.DecimalPoint = DecimalPoint == "," ? ',' : '.';
  Format.Header = !NoHeader;
  Format.MissingValues = MissingValues == "skip"   ? qx::mvSkipRow
                         : MissingValues == "keep" ? qx::mvKeep
                                                   : qx::mvRefuse;
  Format.Ignored = Ignored;
  Format.Wanted = Wanted;
  try {
    std::istringstream Stream(Text);
    return RequireReadableNames(qx::TQXDataSet::FromCSV(Stream, Format));
  } catch (const qx::EDataError& Error) {
    throw EUsageError(Name() + ": " + Error.what() + Advice(Error.what()));
  } catch (const std::out_of_range& Error) {
    throw EUsageError(Name() + ": " + Error.what());
  }
}

// What helps against an error of the reader.
std::string TDataFile::Advice(const std::string& Message) {
  if (Message.ends_with("has no number")) {
    return "; --missing skip leaves such rows out, --ignore the column";
  }
  if (Message.ends_with("has no columns")) {
    return ": it is empty; its first line should name the columns";
  }
  constexpr std::string_view Refused = " is no number: \"";
  const auto Place = Message.find(Refused);
  if (Place == std::string::npos) {
    return "";
  }
  std::string Cell = Message.substr(Place + Refused.size());
  Cell.pop_back();
  std::ranges::replace(Cell, ',', '.');
  return qx::ParseReal(Cell) ? "; --decimal-point , reads such numbers" : "; --ignore leaves a column out";
}

std::string TDataFile::ReadText() const {
  const auto Rest = [](std::istream& Stream) {
    return std::string(std::istreambuf_iterator<char>(Stream), {});
  };
  if (FileName == "-") {
    return Rest(std::cin);
  }
  const std::string Failed = "Cannot read \"" + FileName + '"';
  errno = 0;
  std::ifstream Stream(FileName, std::ios::binary);
  if (!Stream) {
    throw std::system_error(errno, std::generic_category(), Failed);
  }
  try {
    return Rest(Stream);
  } catch (const std::ios_base::failure& Failure) { // a folder, say
    throw std::system_error(Failure.code(), Failed);
  }
}

// A text of another encoding would be met only when it is written.
void TDataFile::RequireReadableText(std::string_view Text) const {
  if (Text.starts_with("\xff\xfe") || Text.starts_with("\xfe\xff")) {
    throw EUsageError(Name() + " is UTF-16; save it as UTF-8");
  }
}

qx::TQXDataSet TDataFile::RequireReadableNames(qx::TQXDataSet Data) const {
  for (int I = 0; I < Data.ColumnCount(); ++I) {
    const std::string& Column = Data.ColumnName(I);
    if (!IsUTF8(Column)) {
      throw EUsageError(
          fmt::format("{}: the name of column {} is not UTF-8; save the table as UTF-8", Name(), I + 1));
    }
    if (std::ranges::any_of(Column, [](char C) { return static_cast<unsigned char>(C) < ' '; })) {
      throw EUsageError(fmt::format("{}: the name of column {} goes over more than one line", Name(), I + 1));
    }
  }
  return Data;
}

std::uint64_t Fingerprint(const qx::TQXDataSet& Data) { // FNV-1a
  std::uint64_t Hash = 0xcbf29ce484222325;
  const auto Take = [&](std::uint64_t Value) { Hash = (Hash ^ Value) * 0x100000001b3; };
  for (int I = 0; I < Data.ColumnCount(); ++I) {
    for (const char C : Data.ColumnName(I)) {
      Take(static_cast<unsigned char>(C));
    }
    for (const double Value : Data.Column(I)) {
      Take(std::bit_cast<std::uint64_t>(Value));
    }
  }
  return Hash;
}

} // namespace qxevolve
