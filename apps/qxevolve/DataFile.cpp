#include "DataFile.h"

#include "Error.h"
#include "ShellText.h"
#include <qx/platform/Numbers.h>
#include <qx/platform/Utf8.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <bit>
#include <cerrno>
#include <cmath>
#include <fmt/format.h>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace qxevolve {

namespace {

bool IsUTF8(std::string_view Text) {
  std::size_t Offset = 0;
  while (Offset < Text.size() && qx::NextCodePoint(Text, Offset)) {
  }
  return Offset == Text.size();
}

using TColumns = std::vector<qx::TFaultyColumn>;

// The first of the columns that is needed, or nullptr.
const qx::TFaultyColumn* FirstNeeded(const TColumns& Columns, const std::vector<std::string>& Needed) {
  const auto Found = std::ranges::find_if(Columns, [&](const qx::TFaultyColumn& Column) {
    return std::ranges::find(Needed, Column.Name) != Needed.end();
  });
  return Found != Columns.end() ? &*Found : nullptr;
}

// Columns as --ignore takes them: by their numbers where names would not reach it as they are.
std::string IgnoreWords(const TColumns& Columns) {
  std::string Words;
  for (const qx::TFaultyColumn& Column : Columns) {
    const std::string& Name = Column.Name;
    const bool IsPlain = Name.find_first_of("-#[\"'") != 0 && std::ranges::none_of(Name, [](char C) {
                           return static_cast<unsigned char>(C) < ' ' || C == ',';
                         });
    Words += (Words.empty() ? "" : ",") + (IsPlain ? Name : "#" + std::to_string(Column.Number));
  }
  return ShellText({Words});
}

std::string IgnoreAdvice(const TColumns& Columns) {
  return fmt::format("; --ignore {} leaves {} out", IgnoreWords(Columns),
                     Columns.size() > 1 ? "these columns" : "the column");
}

// Options under which texts may turn out to be numbers.
struct TReading {
  bool HasDecimalComma;
  bool HasThousands;

  bool Reads(const qx::TFaultyColumn& Column, qx::TCSVFormat Format) const {
    Format.DecimalPoint = HasDecimalComma ? ',' : Format.DecimalPoint;
    Format.Thousands = Format.Thousands || HasThousands;
    return qx::NumberInCell(Column.Cell, Format).has_value();
  }
  std::string Text() const {
    return std::string(HasDecimalComma ? "--decimal-point ," : "") +
           (HasDecimalComma && HasThousands ? " " : "") + (HasThousands ? "--thousands" : "");
  }
};
constexpr TReading Readings[] = {{true, false}, {false, true}, {true, true}};

} // namespace

void TDataFile::AddOptions(CLI::App& App) {
  const auto Group = "Data";
  App.add_option("--ignore", Ignored,
                 "Columns to leave out, names or texts, say; '#1' is the first one, whatever it is called")
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
}

void TDataFile::AddHeaderOption(CLI::App& App) {
  App.add_flag("--no-header", NoHeader, "The first line has numbers; columns are called x1, x2 and so on")
      ->group("Data");
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
  Format.MissingValues = MissingValues == "refuse" ? qx::mvRefuse : qx::mvKeep; // rows are skipped later
  Format.Ignored = Ignored;
  return Format;
}

TTable TDataFile::Read(const std::vector<std::string>& Needed,
                       const std::optional<std::vector<std::string>>& Wanted,
                       const std::vector<std::string>& Texts) const {
  const std::string Text = ReadText();
  RequireReadableText(Text);
  qx::TCSVFormat Format = this->Format();
  Format.Wanted = Wanted;
  try {
    std::istringstream Stream(Text);
    TTable Table{RequireReadableNames(qx::TQXDataSet::FromCSV(Stream, Format)), {}, {}};
    if (MissingValues == "skip") {
      SkipRows(Table);
    }
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

// Leaves out the rows that lack a number, and tells which columns are to blame.
void TDataFile::SkipRows(TTable& Table) {
  std::vector<bool> IsWhole(static_cast<std::size_t>(Table.Numbers.RowCount()), true);
  std::string Lacking;
  for (int I = 0; I < Table.Numbers.ColumnCount(); ++I) {
    const auto Values = Table.Numbers.Column(I);
    std::size_t Count = 0;
    for (std::size_t Row = 0; Row < Values.size(); ++Row) {
      if (!std::isfinite(Values[Row])) {
        IsWhole[Row] = false;
        ++Count;
      }
    }
    if (Count > 0) {
      Lacking +=
          fmt::format("{}\"{}\" in {}", Lacking.empty() ? "" : ", ", Table.Numbers.ColumnName(I),
                      Count < Values.size() ? std::to_string(Count) : "all, which --ignore can leave out");
    }
  }
  std::vector<int> Rows;
  for (std::size_t Row = 0; Row < IsWhole.size(); ++Row) {
    if (IsWhole[Row]) {
      Rows.push_back(static_cast<int>(Row));
    }
  }
  if (Rows.size() < IsWhole.size()) {
    Table.Skipped = fmt::format("{} of {} rows are left out: there is no number for {}",
                                IsWhole.size() - Rows.size(), IsWhole.size(), Lacking);
    Table.Numbers = Table.Numbers.Rows(Rows);
  }
}

// What helps against an error of the reader.
std::string TDataFile::Advice(const qx::EDataError& Error, const std::vector<std::string>& Needed) const {
  switch (Error.Fault()) {
  case qx::dfEmpty:
    return ": it is empty; its first line should name the columns";
  case qx::dfName:
    return fmt::format("; --ignore '#{}' leaves this one out", Error.Column());
  case qx::dfLength:
    return SeparatorAdvice(Error);
  case qx::dfMissing:
    return "; --missing skip leaves such rows out" +
           (FirstNeeded(Error.Columns(), Needed) != nullptr ? "" : IgnoreAdvice(Error.Columns()));
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
  const auto Place = Separators.find(Error.Separator());
  return fmt::format("; cells are taken to be separated by {}, --separator CHAR says otherwise",
                     Place < Separators.size() ? Names[Place] : "what the first line says");
}

std::string TDataFile::TextAdvice(const qx::EDataError& Error, const std::vector<std::string>& Needed) const {
  if (Error.ColumnCount() == 1) {
    return Separator.empty() ? SeparatorAdvice(Error) : "; there is one column only, with that --separator";
  }
  TColumns Texts = Error.Columns();
  std::string Advice = NumbersAdvice(Error.Separator(), Texts);
  if (const auto* const Column = FirstNeeded(Texts, Needed)) {
    return Advice + fmt::format("; \"{}\" is needed, with a number in each row", Column->Name);
  }
  if (!Texts.empty()) {
    Advice += IgnoreAdvice(Texts);
    const bool HasOther = std::ranges::any_of(Texts, [&](const qx::TFaultyColumn& Column) {
      return (Column.Cell + Column.Name).find_first_of(";|\t,:") != std::string::npos;
    });
    Advice += HasOther ? SeparatorAdvice(Error) : "";
  }
  return Advice;
}

// The options that read most of these columns, which are taken out.
std::string TDataFile::NumbersAdvice(char UsedSeparator, TColumns& Columns) const {
  const qx::TCSVFormat Used = Format();
  const auto CountBy = [&](const TReading& Reading) {
    return Reading.HasDecimalComma && UsedSeparator == ',' // cells would fall apart
               ? 0
               : std::ranges::count_if(Columns,
                                       [&](const auto& Column) { return Reading.Reads(Column, Used); });
  };
  std::string Text;
  const TReading* Best = nullptr;
  for (const TReading& Reading : Readings) {
    const auto Count = CountBy(Reading);
    const auto Most = Best != nullptr ? CountBy(*Best) : 0;
    if (Count > Most) {
      Best = &Reading;
      Text = Reading.Text();
    } else if (Count > 0 && Count == Most && !(Reading.HasDecimalComma && Reading.HasThousands)) {
      Text += " or " + Reading.Text();
    }
  }
  if (Best == nullptr) {
    return "";
  }
  std::erase_if(Columns, [&](const auto& Column) { return Best->Reads(Column, Used); });
  return fmt::format("; {} reads such numbers", Text);
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
  if (Text.find('\r') != std::string_view::npos && Text.find('\n') == std::string_view::npos) {
    throw EUsageError(Name() + " has carriage returns at the ends of lines; save it with line feeds");
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
