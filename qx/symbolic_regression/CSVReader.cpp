// Tables of numbers from text.

#include <qx/platform/Numbers.h>
#include <qx/platform/Text.h>
#include <qx/symbolic_regression/DataSet.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <fstream>
#include <iterator>
#include <limits>
#include <optional>
#include <set>
#include <sstream>
#include <system_error>
#include <utility>

namespace qx {

EDataError::EDataError(const std::string& Message, int Line, int Column, TDataFault Fault, char Separator,
                       int ColumnCount, std::vector<TFaultyColumn> Columns)
    : std::runtime_error(Message), FLine(Line), FColumn(Column), FFault(Fault), FSeparator(Separator),
      FColumnCount(ColumnCount), FColumns(std::move(Columns)) {}

namespace {

// One line of cells, which goes over more than one line of the text where a quoted cell does.
struct TRow {
  int Line = 0;
  std::vector<std::string> Cells;
};

// A cell or name as a message shows it: not too long, and without what ends lines and texts.
std::string Shown(std::string_view Text) {
  constexpr std::size_t Longest = 60;
  std::size_t End = std::min(Text.size(), Longest);
  while (End < Text.size() && End > 0 && (static_cast<unsigned char>(Text[End]) & 0xc0) == 0x80) {
    --End; // not within a character
  }
  std::string Result(Text.substr(0, End));
  std::ranges::replace_if(
      Result, [](char C) { return static_cast<unsigned char>(C) < ' '; }, '?');
  return '"' + Result + (End < Text.size() ? "...\"" : "\"");
}

// --- Separators --------------------------------------------------------------------------------------------

constexpr std::string_view Candidates = "\t;|, "; // a blank for any number of them
constexpr std::string_view Blanks = " \t\r";      // between such cells

// How many separators of each kind a line has, outside quotes.
using TCounts = std::array<int, Candidates.size()>;

class TSeparatorGuess {
public:
  TSeparatorGuess(std::string_view Text, const TCSVFormat& Format) {
    TLine Line;
    for (const char C : Text) {
      if (C != '\n' || Line.IsQuoted) {
        Line.Take(C, Format);
      } else if (!Line.IsEmpty) {
        FLines.push_back(std::exchange(Line, TLine()).Counts);
        if (FLines.size() == LookedAt) {
          return;
        }
      }
    }
    if (!Line.IsEmpty || FLines.empty()) {
      FLines.push_back(Line.Counts);
    }
  }

  // The first kind that makes as many cells in each line, or else what the first line has most of. Blanks are
  // within cells where there is anything else.
  char Separator() const {
    const TCounts& First = FLines.front();
    const auto Most = std::max_element(First.begin(), First.end() - 1);
    for (std::size_t I = 0; I < Candidates.size(); ++I) {
      const bool Fits = std::ranges::all_of(FLines, [&](const TCounts& Line) { return Line[I] == First[I]; });
      if (First[I] > 0 && Fits && (Candidates[I] != ' ' || (FLines.size() > 1 && *Most == 0))) {
        return Candidates[I];
      }
    }
    return *Most > 0 ? Candidates[static_cast<std::size_t>(Most - First.begin())] : ',';
  }

private:
  static constexpr std::size_t LookedAt = 10;

  struct TLine {
    TCounts Counts{};
    bool IsEmpty = true;
    bool AfterBlank = false;
    bool IsQuoted = false;
    bool MayBeQuoted = true; // at the beginning of a cell, or after a quote, which may be a doubled one

    void Take(char C, const TCSVFormat& Format) {
      if (C == Format.Quote && (IsQuoted || MayBeQuoted)) {
        IsQuoted = !IsQuoted;
        MayBeQuoted = !IsQuoted;
      } else if (!IsQuoted) {
        const auto Place = Candidates.find(C);
        const bool Separates = Place < Candidates.size() - 1 && C != Format.DecimalPoint;
        const bool IsBlank = Blanks.find(C) != std::string_view::npos;
        Counts[Separates ? Place : 0] += Separates ? 1 : 0;
        MayBeQuoted = Separates || IsBlank;
        if (IsBlank) {
          AfterBlank = !IsEmpty;
          return;
        }
      }
      Counts.back() += AfterBlank ? 1 : 0;
      AfterBlank = IsEmpty = false;
    }
  };

  std::vector<TCounts> FLines;
};

// --- Numbers -----------------------------------------------------------------------------------------------

bool IsMissing(std::string_view Cell) {
  constexpr std::string_view Words[] = {"NA", "N/A", "NULL", "?", "-"};
  return Cell.empty() ||
         std::ranges::any_of(Words, [&](std::string_view Word) { return SameText(Cell, Word); });
}

// Takes the marks out of a number that has one before each three digits of its whole part.
void DropThousands(std::string& Text, char Mark, char DecimalPoint) {
  const auto End = std::min(Text.find(DecimalPoint), Text.size());
  const std::size_t Start = Text.starts_with('-') || Text.starts_with('+') ? 1 : 0;
  constexpr std::size_t Group = 3;
  const std::size_t FirstMark = Text.find(Mark);
  if (FirstMark >= End || FirstMark == Start || FirstMark > Start + Group || Text[Start] == '0' ||
      (End - FirstMark) % (Group + 1) != 0) {
    return;
  }
  std::string Whole = Text.substr(0, Start);
  for (std::size_t I = Start; I < End; ++I) {
    const bool IsMark = I >= FirstMark && (I - FirstMark) % (Group + 1) == 0;
    if (IsMark ? Text[I] != Mark : Text[I] < '0' || Text[I] > '9') {
      return;
    }
    Whole += IsMark ? std::string() : std::string(1, Text[I]);
  }
  Text.replace(0, End, Whole);
}

} // namespace

std::optional<double> NumberInCell(std::string_view Cell, const TCSVFormat& Format) {
  std::string Text(Trimmed(Cell));
  if (IsMissing(Text)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  if (SameText(Text, "TRUE") || SameText(Text, "FALSE")) {
    return SameText(Text, "TRUE") ? 1 : 0;
  }
  double Unit = 1;
  if (Format.Thousands) {
    constexpr double Hundredth = 100;
    if (Text.ends_with('%')) {
      Text.pop_back();
      Text = Trimmed(Text);
      Unit = Hundredth;
    }
    DropThousands(Text, Format.DecimalPoint == '.' ? ',' : '.', Format.DecimalPoint);
  }
  if (Format.DecimalPoint != '.') {
    if (Text.find('.') != std::string::npos) {
      return std::nullopt;
    }
    std::ranges::replace(Text, Format.DecimalPoint, '.');
  }
  const auto Value = ParseReal(Text);
  return Value ? std::optional(*Value / Unit) : std::nullopt;
}

namespace {

// --- The table ---------------------------------------------------------------------------------------------

class TCSVReader {
public:
  TCSVReader(std::string_view Text, TCSVFormat Format) : FRest(Text), FFormat(std::move(Format)) {
    constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";
    if (FRest.starts_with(ByteOrderMark)) {
      FRest.remove_prefix(ByteOrderMark.size());
    }
    ReadSeparatorLine();
    if (FFormat.Separator == 0) {
      FFormat.Separator = TSeparatorGuess(FRest, FFormat).Separator();
    }
    FEnds = FFormat.Separator == ' ' ? std::string(Blanks) : std::string(1, FFormat.Separator);
    FEnds += '\n';
  }

  TQXDataSet Read() {
    ReadRows([&](const TRow& Row) { ReadValues(Row); });
    RequireNumbers();
    TQXDataSet Result;
    for (std::size_t I = 0; I < FNames.size(); ++I) {
      if (!FIsIgnored[I]) {
        Result.AddColumn(FNames[I], FColumns[I]);
      }
    }
    return Result;
  }
  int RowCount() const { return FRowCount; }

  std::vector<std::string> ReadTexts(std::string_view Column) {
    std::vector<std::string> Texts;
    std::size_t Place = 0;
    ReadRows([&](const TRow& Row) {
      Place = static_cast<std::size_t>(std::ranges::find(FNames, Column) - FNames.begin());
      if (Place < FNames.size()) {
        Texts.push_back(Row.Cells[Place]);
      }
    });
    if (std::ranges::find(FNames, Column) == FNames.end()) {
      throw std::out_of_range("There is no column " + Shown(Column));
    }
    return Texts;
  }

private:
  [[noreturn]] void Raise(TDataFault Fault, int Line, std::size_t Place, const std::string& What) const {
    const int Column = static_cast<int>(Place) + 1;
    throw EDataError("Line " + std::to_string(Line) + ", column " + std::to_string(Column) + ": " + What,
                     Line, Column, Fault, FFormat.Separator);
  }

  // The first line of some spreadsheets.
  void ReadSeparatorLine() {
    constexpr std::string_view Begin = "sep=";
    const std::string_view Line = FRest.substr(0, FRest.find('\n'));
    if (FFormat.Separator == 0 && Line.size() > Begin.size() && Line.starts_with(Begin) &&
        Trimmed(Line.substr(Begin.size() + 1)).empty()) {
      FFormat.Separator = Line[Begin.size()];
      FRest.remove_prefix(std::min(Line.size() + 1, FRest.size()));
      ++FLine;
    }
  }

  template <class TTake>
  void ReadRows(TTake Take) {
    std::optional<TRow> Row = NextRow();
    if (!Row) {
      throw EDataError("The text has no columns", FLine, 0, dfEmpty);
    }
    ReadNames(*Row);
    FColumns.resize(FNames.size());
    FFaults.resize(FNames.size());
    if (FFormat.Header) {
      Row = NextRow();
    }
    for (; Row; Row = NextRow()) {
      if (Row->Cells.size() != FNames.size()) {
        throw EDataError("Line " + std::to_string(Row->Line) + ": there are " +
                             std::to_string(Row->Cells.size()) + " cells, not " +
                             std::to_string(FNames.size()),
                         Row->Line, 0, dfLength, FFormat.Separator, static_cast<int>(FNames.size()));
      }
      Take(*Row);
    }
  }

  // The next line that is not empty.
  std::optional<TRow> NextRow() {
    while (!FRest.empty()) {
      TRow Row{FLine, {}};
      bool Ends = false;
      while (!Ends) {
        Row.Cells.push_back(NextCell(Row, Ends));
      }
      if (Row.Cells.size() > 1 || FWasQuoted || !Row.Cells.front().empty()) {
        return Row;
      }
    }
    return std::nullopt;
  }

  std::string NextCell(const TRow& Row, bool& EndsLine) {
    const bool BetweenBlanks = FFormat.Separator == ' ';
    const auto Start = std::min(FRest.find_first_not_of(BetweenBlanks ? Blanks : " "), FRest.size());
    FWasQuoted = Start < FRest.size() && FRest[Start] == FFormat.Quote;
    std::string Cell;
    if (FWasQuoted) {
      FRest.remove_prefix(Start + 1);
      Cell = QuotedText(Row);
    } else if (BetweenBlanks) {
      FRest.remove_prefix(Start);
    }
    const auto End = std::min(FRest.find_first_of(FEnds), FRest.size());
    const std::string_view Text = Trimmed(FRest.substr(0, End));
    if (FWasQuoted && !Text.empty()) {
      Raise(dfQuote, FLine, Row.Cells.size(), "there is text after the closing quote");
    }
    FRest.remove_prefix(End);
    if (BetweenBlanks) { // those at the end of a line separate nothing
      FRest.remove_prefix(std::min(FRest.find_first_not_of(Blanks), FRest.size()));
    }
    EndsLine = FRest.empty() || FRest.front() == '\n';
    FLine += EndsLine ? 1 : 0;
    if (!FRest.empty() && (EndsLine || !BetweenBlanks)) {
      FRest.remove_prefix(1);
    }
    return FWasQuoted ? Cell : std::string(Text);
  }

  std::string QuotedText(const TRow& Row) {
    std::string Text;
    const int Line = FLine;
    for (;;) {
      const auto End = FRest.find(FFormat.Quote);
      if (End == std::string_view::npos) {
        Raise(dfQuote, Line, Row.Cells.size(), "the quote is not closed");
      }
      Text += FRest.substr(0, End);
      FLine +=
          static_cast<int>(std::count(FRest.begin(), FRest.begin() + static_cast<std::ptrdiff_t>(End), '\n'));
      FRest.remove_prefix(End + 1);
      if (!FRest.starts_with(FFormat.Quote)) {
        return Text;
      }
      Text += FFormat.Quote;
      FRest.remove_prefix(1);
    }
  }

  void ReadNames(const TRow& Row) {
    for (std::size_t I = 0; I < Row.Cells.size(); ++I) {
      FNames.push_back(FFormat.Header ? Row.Cells[I] : "x" + std::to_string(I + 1));
      if (FNames.back().empty()) {
        FNames.back() = "column" + std::to_string(I + 1);
      }
    }
    for (const std::string& Name : FNames) {
      const auto& Wanted = FFormat.Wanted;
      FIsIgnored.push_back(Wanted && std::ranges::find(*Wanted, Name) == Wanted->end());
    }
    std::ranges::for_each(FFormat.Ignored, [&](const std::string& Name) { Ignore(Name); });
    std::set<std::string_view> Taken;
    for (std::size_t I = 0; I < FNames.size(); ++I) {
      if (!FIsIgnored[I] && !Taken.insert(FNames[I]).second) {
        Raise(dfName, Row.Line, I, "there is a column " + Shown(FNames[I]) + " already");
      }
    }
  }

  // Leaves out all columns of that name or, when there is none, the one of that number.
  void Ignore(const std::string& Name) {
    bool IsThere = false;
    for (std::size_t I = 0; I < FNames.size(); ++I) {
      if (FNames[I] == Name) {
        FIsIgnored[I] = IsThere = true;
      }
    }
    const bool MayBeNumber = !IsThere && Name.starts_with('#');
    const auto Number = MayBeNumber ? ParseInteger(Name.substr(1)) : std::nullopt;
    if (Number && *Number >= 1 && std::cmp_less_equal(*Number, FNames.size())) {
      FIsIgnored[static_cast<std::size_t>(*Number - 1)] = IsThere = true;
    }
    if (!IsThere) {
      throw std::out_of_range("There is no column " + Shown(Name) + " to leave out");
    }
  }

  void ReadValues(const TRow& Row) {
    FValues.clear();
    bool Skipped = false;
    for (std::size_t I = 0; I < Row.Cells.size(); ++I) {
      FValues.push_back(FIsIgnored[I] ? 0 : ValueOf(Row, I));
      Skipped |= FFormat.MissingValues == mvSkipRow && !std::isfinite(FValues.back());
    }
    FRowCount += Skipped ? 0 : 1;
    for (std::size_t I = 0; I < FValues.size() && !Skipped; ++I) {
      if (!FIsIgnored[I]) {
        FColumns[I].push_back(FValues[I]);
      }
    }
  }

  // Notes the first cells of a column that are no numbers.
  double ValueOf(const TRow& Row, std::size_t Place) {
    const auto Value = NumberInCell(Row.Cells[Place], FFormat);
    const auto Note = [&](std::optional<TCell>& Fault) {
      if (!Fault) {
        Fault = TCell{Row.Line, Row.Cells[Place]};
      }
    };
    if (!Value) {
      Note(FFaults[Place].Text);
    } else if (std::isnan(*Value) && FFormat.MissingValues == mvRefuse) {
      Note(FFaults[Place].Missing);
    }
    return Value.value_or(0);
  }

  void RequireNumbers() const {
    RequireNone(dfText, &TFaults::Text,
                [](const TFaultyColumn& Column) { return "is no number: " + Shown(Column.Cell); });
    RequireNone(dfMissing, &TFaults::Missing, [](const TFaultyColumn&) { return "has no number"; });
  }

  // Tells of the first one in the text, and of the other columns.
  template <class TWhat>
  void RequireNone(TDataFault Fault, auto Member, TWhat What) const {
    std::vector<TFaultyColumn> Columns;
    for (std::size_t I = 0; I < FFaults.size(); ++I) {
      if (const auto& Cell = FFaults[I].*Member) {
        Columns.push_back({FNames[I], static_cast<int>(I) + 1, Cell->Line, Cell->Text});
      }
    }
    if (Columns.empty()) {
      return;
    }
    std::ranges::stable_sort(Columns, {}, &TFaultyColumn::Line);
    const TFaultyColumn& First = Columns.front();
    std::string Message = "Line " + std::to_string(First.Line) + ", column " + std::to_string(First.Number) +
                          ": " + Shown(First.Name) + ' ' + What(First);
    constexpr std::size_t Most = 10;
    for (std::size_t I = 1; I < std::min(Columns.size(), Most); ++I) {
      Message += (I == 1 ? (Fault == dfText ? "; nor is " : "; nor has ") : ", ") + Shown(Columns[I].Name) +
                 " (line " + std::to_string(Columns[I].Line) +
                 (Fault == dfText ? ": " + Shown(Columns[I].Cell) + ")" : ")");
    }
    if (Columns.size() > Most) {
      Message += " and " + std::to_string(Columns.size() - Most) + " more";
    }
    const int Line = First.Line;
    const int Number = First.Number;
    throw EDataError(Message, Line, Number, Fault, FFormat.Separator, static_cast<int>(FNames.size()),
                     std::move(Columns));
  }

  struct TCell {
    int Line;
    std::string Text;
  };
  struct TFaults {
    std::optional<TCell> Text;
    std::optional<TCell> Missing;
  };

  std::string_view FRest;
  TCSVFormat FFormat;
  std::string FEnds; // what a cell ends with
  int FLine = 1;
  bool FWasQuoted = false; // the last cell
  std::vector<std::string> FNames;
  std::vector<bool> FIsIgnored;
  std::vector<TFaults> FFaults; // of each column
  std::vector<std::vector<double>> FColumns;
  std::vector<double> FValues;
  int FRowCount = 0;
};

} // namespace

TQXDataSet TQXDataSet::FromCSV(std::istream& Stream, const TCSVFormat& Format) {
  const std::string Text{std::istreambuf_iterator<char>(Stream), {}};
  TCSVReader Reader(Text, Format);
  TQXDataSet Result = Reader.Read();
  Result.FRowCount = Reader.RowCount(); // also without columns
  return Result;
}

std::vector<std::string> TQXDataSet::TextsFromCSV(std::istream& Stream, const TCSVFormat& Format,
                                                  std::string_view Column) {
  const std::string Text{std::istreambuf_iterator<char>(Stream), {}};
  return TCSVReader(Text, Format).ReadTexts(Column);
}

TQXDataSet TQXDataSet::FromCSV(const std::string& FileName, const TCSVFormat& Format) {
  errno = 0;
  std::ifstream Stream(FileName, std::ios::binary);
  if (!Stream) {
    throw std::system_error(errno, std::generic_category(), "Cannot read \"" + FileName + "\"");
  }
  try {
    return FromCSV(Stream, Format);
  } catch (const EDataError& Error) {
    throw EDataError(FileName + ": " + Error.what(), Error.Line(), Error.Column(), Error.Fault(),
                     Error.Separator(), Error.ColumnCount(), Error.Columns());
  } catch (const std::ios_base::failure& Failure) { // a folder, say
    throw std::system_error(Failure.code(), "Cannot read \"" + FileName + "\"");
  }
}

} // namespace qx
