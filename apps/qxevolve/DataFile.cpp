#include "DataFile.h"

#include "Error.h"
#include "ShellText.h"
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

// The first of the columns that is needed, or nullptr.
const qx::TFaultyColumn* FirstNeeded(const std::vector<qx::TFaultyColumn>& Columns,
                                     const std::vector<std::string>& Needed) {
  const auto Found = std::ranges::find_if(Columns, [&](const qx::TFaultyColumn& Column) {
    return std::ranges::find(Needed, Column.Name) != Needed.end();
  });
  return Found != Columns.end() ? &*Found : nullptr;
}

// The option that leaves columns out: by their numbers where names would need quotes within quotes.
std::string IgnoreAdvice(const std::vector<qx::TFaultyColumn>& Columns) {
  std::string Names;
  for (const qx::TFaultyColumn& Column : Columns) {
    const bool IsPlain = Column.Name.find_first_of(",\"'\n") == std::string::npos;
    Names += (Names.empty() ? "" : ",") + (IsPlain ? Column.Name : std::to_string(Column.Number));
  }
  return fmt::format("--ignore {} leaves {} out", ShellText({Names}),
                     Columns.size() > 1 ? "these columns" : "the column");
}

} // namespace

void TDataFile::AddOptions(CLI::App& App) {
  const auto Group = "Data";
  App.add_option("--ignore", Ignored,
                 "Columns to leave out, names or texts, say: by their names, or numbers from 1 on")
      ->delimiter(',')
      ->type_name("NAME,...")
      ->group(Group);
  App.add_option(
         "--separator", Separator,
         "Between cells; \"tab\" and \"blank\" (any number of them) too. Without it, the first lines tell: "
         "tabs, semicolons, |, commas or blanks")
      ->type_name("CHAR")
      ->group(Group);
  App.add_option("--decimal-point", DecimalPoint, "In numbers; a comma needs another separator [.]")
      ->type_name("CHAR")
      ->check(CLI::IsMember({".", ","}))
      ->group(Group);
  App.add_flag("--thousands", Thousands, "Numbers may be written as in 1,234.5 and 12%")->group(Group);
  App.add_flag("--no-header", NoHeader, "The first line has numbers; columns are called x1, x2 and so on")
      ->group(Group);
}

void TDataFile::AddMissingOption(CLI::App& App) {
  App.add_option(
         "--missing", MissingValues,
         "What to do with cells that are empty or say NA, N/A, NaN, NULL, ? or -: refuse the table, or skip "
         "their rows, and those with infinite numbers")
      ->type_name("refuse|skip")
      ->check(CLI::IsMember({"refuse", "skip"}))
      ->capture_default_str()
      ->group("Data");
}

void TDataFile::InheritFormat(const TDataFile& Other) {
  Separator = Separator.empty() ? Other.Separator : Separator;
  DecimalPoint = DecimalPoint.empty() ? Other.DecimalPoint : DecimalPoint;
  NoHeader = NoHeader || Other.NoHeader;
  Thousands = Thousands || Other.Thousands;
}

qx::TCSVFormat TDataFile::Format() const {
  qx::TCSVFormat Format;
  if (Separator == "tab") {
    Format.Separator = '\t';
  } else if (Separator == "blank") {
    Format.Separator = ' ';
  } else if (Separator.size() > 1) {
    throw EUsageError("--separator takes one character, tab or blank");
  } else if (!Separator.empty()) {
    Format.Separator = Separator[0];
  }
  Format.DecimalPoint = DecimalPoint == "," ? ',' : '.';
  Format.Thousands = Thousands;
  Format.Header = !NoHeader;
  Format.MissingValues = MissingValues == "skip"   ? qx::mvSkipRow
                         : MissingValues == "keep" ? qx::mvKeep
                                                   : qx::mvRefuse;
  Format.Ignored = Ignored;
  return Format;
}

TTable TDataFile::Read(const std::vector<std::string>& Needed, const std::vector<std::string>& Wanted,
                       const std::vector<std::string>& Texts) const {
  const std::string Text = ReadText();
  RequireReadableText(Text);
  qx::TCSVFormat Format = this->Format();
  Format.Wanted = Wanted;
  try {
    std::istringstream Stream(Text);
    TTable Table{RequireReadableNames(qx::TQXDataSet::FromCSV(Stream, Format)), {}};
    for (const std::string& Name : Texts) {
      std::istringstream Again(Text);
      try {
        Table.Texts = qx::TQXDataSet::TextsFromCSV(Again, Format, Name);
        break;
      } catch (const std::out_of_range&) { // there may be the next one
      }
    }
    return Table;
  } catch (const qx::EDataError& Error) {
    throw EUsageError(Name() + ": " + Error.what() + Advice(Error, Needed));
  } catch (const std::out_of_range& Error) {
    throw EUsageError(Name() + ": " + Error.what());
  }
}

// What helps against an error of the reader.
std::string TDataFile::Advice(const qx::EDataError& Error, const std::vector<std::string>& Needed) const {
  switch (Error.Fault()) {
  case qx::dfEmpty:
    return ": it is empty; its first line should name the columns";
  case qx::dfName:
    return fmt::format("; --ignore {} leaves this one out", Error.Column());
  case qx::dfLength:
    return SeparatorAdvice(Error);
  case qx::dfMissing:
    return "; --missing skip leaves such rows out" +
           (FirstNeeded(Error.Columns(), Needed) != nullptr ? "" : ", " + IgnoreAdvice(Error.Columns()));
  case qx::dfText:
    return TextAdvice(Error, Needed);
  case qx::dfQuote:
    break;
  }
  return "";
}

// What cells are taken to be separated by may be a wrong guess.
std::string TDataFile::SeparatorAdvice(const qx::EDataError& Error) const {
  if (!Separator.empty()) {
    return "";
  }
  constexpr std::string_view Separators = "\t ;|,";
  constexpr std::string_view Names[] = {"tabs", "blanks", "semicolons", "|", "commas"};
  return fmt::format("; cells are taken to be separated by {}, --separator CHAR says otherwise",
                     Names[Separators.find(Error.Separator())]);
}

std::string TDataFile::TextAdvice(const qx::EDataError& Error, const std::vector<std::string>& Needed) const {
  const std::string& Cell = Error.Columns().front().Cell;
  std::string WithPoint = Cell;
  std::ranges::replace(WithPoint, ',', '.');
  std::string WithoutMarks = Cell;
  std::erase_if(WithoutMarks, [&](char C) { return C == '%' || C == (DecimalPoint == "," ? '.' : ','); });
  std::ranges::replace(WithoutMarks, ',', '.');
  const bool HasComma = DecimalPoint != "," && qx::ParseReal(WithPoint).has_value();
  const bool HasMarks = !Thousands && qx::ParseReal(WithoutMarks).has_value();
  const auto Comma = Cell.find(',');
  const bool MayBeThousands = HasMarks && (!HasComma || Cell.size() - Comma == 4);
  if (HasComma || MayBeThousands) {
    return fmt::format("; {}{}{} reads such numbers", HasComma ? "--decimal-point ," : "",
                       HasComma && MayBeThousands ? " or " : "", MayBeThousands ? "--thousands" : "");
  }
  std::string Others = ";|\t,";
  std::erase(Others, Error.Separator());
  const bool HasSeparator = Cell.find_first_of(Others) != std::string::npos ||
                            Error.Columns().front().Name.find_first_of(Others + ':') != std::string::npos;
  if (Separator.empty() && HasSeparator) {
    return SeparatorAdvice(Error);
  }
  if (const auto* const Column = FirstNeeded(Error.Columns(), Needed)) {
    return fmt::format("; \"{}\" is needed, with a number in each row", Column->Name);
  }
  return "; " + IgnoreAdvice(Error.Columns());
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
