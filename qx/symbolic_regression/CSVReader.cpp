// Tables of numbers from text.

#include <qx/platform/Numbers.h>
#include <qx/platform/Text.h>
#include <qx/symbolic_regression/DataSet.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <fstream>
#include <iterator>
#include <limits>
#include <optional>
#include <sstream>
#include <system_error>
#include <utility>

namespace qx {

EDataError::EDataError(const std::string& Message, int Line, int Column)
    : std::runtime_error(Message), FLine(Line), FColumn(Column) {}

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

class TCSVReader {
public:
  TCSVReader(std::string_view Text, TCSVFormat Format) : FRest(Text), FFormat(std::move(Format)) {
    constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";
    if (FRest.starts_with(ByteOrderMark)) {
      FRest.remove_prefix(ByteOrderMark.size());
    }
    if (FFormat.Separator == 0) {
      FFormat.Separator = UsualSeparator();
    }
  }

  TQXDataSet Read() {
    std::optional<TRow> Row = NextRow();
    if (!Row) {
      throw EDataError("The text has no columns", FLine, 0);
    }
    ReadNames(*Row);
    FColumns.resize(FNames.size());
    if (FFormat.Header) {
      Row = NextRow();
    }
    for (; Row; Row = NextRow()) {
      ReadValues(*Row);
    }
    TQXDataSet Result;
    for (std::size_t I = 0; I < FNames.size(); ++I) {
      if (!FIsIgnored[I]) {
        Result.AddColumn(FNames[I], FColumns[I]);
      }
    }
    return Result;
  }

private:
  [[noreturn]] static void Raise(int Line, std::size_t Place, const std::string& What) {
    const int Column = static_cast<int>(Place) + 1;
    throw EDataError("Line " + std::to_string(Line) + ", column " + std::to_string(Column) + ": " + What,
                     Line, Column);
  }

  char UsualSeparator() const {
    constexpr std::string_view Candidates = ",;\t";
    std::size_t Counts[Candidates.size()] = {};
    bool Quoted = false;
    bool Empty = true;
    for (const char C : FRest) {
      Quoted ^= C == FFormat.Quote;
      if (C == '\n' && !Quoted && !Empty) {
        break;
      }
      Empty = Empty && (C == ' ' || C == '\r' || C == '\n');
      if (const auto Place = Candidates.find(C); Place != std::string_view::npos && !Quoted) {
        ++Counts[Place];
      }
    }
    return Candidates[static_cast<std::size_t>(std::ranges::max_element(Counts) - Counts)];
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
    const auto Start = std::min(FRest.find_first_not_of(' '), FRest.size());
    FWasQuoted = Start < FRest.size() && FRest[Start] == FFormat.Quote;
    std::string Cell;
    if (FWasQuoted) {
      FRest.remove_prefix(Start + 1);
      Cell = QuotedText(Row);
    }
    const char Ends[] = {FFormat.Separator, '\n', 0};
    const auto End = std::min(FRest.find_first_of(Ends), FRest.size());
    std::string_view Text = FRest.substr(0, End);
    EndsLine = End == FRest.size() || FRest[End] == '\n';
    if (EndsLine && Text.ends_with('\r')) {
      Text.remove_suffix(1);
    }
    if (FWasQuoted && !Trimmed(Text).empty()) {
      Raise(FLine, Row.Cells.size(), "there is text after the closing quote");
    }
    FRest.remove_prefix(std::min(End + 1, FRest.size()));
    FLine += EndsLine ? 1 : 0;
    return FWasQuoted ? Cell : std::string(Trimmed(Text));
  }

  std::string QuotedText(const TRow& Row) {
    std::string Text;
    const int Line = FLine;
    for (;;) {
      const auto End = FRest.find(FFormat.Quote);
      if (End == std::string_view::npos) {
        Raise(Line, Row.Cells.size(), "the quote is not closed");
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
      std::string Name = FFormat.Header ? Row.Cells[I] : "x" + std::to_string(I + 1);
      if (Name.empty()) {
        Name = "column" + std::to_string(I + 1);
      }
      if (std::ranges::find(FNames, Name) != FNames.end()) {
        Raise(Row.Line, I, "there is a column " + Shown(Name) + " already");
      }
      FNames.push_back(Name);
    }
    for (const std::string& Name : FNames) {
      const auto& Wanted = FFormat.Wanted;
      FIsIgnored.push_back(!Wanted.empty() && std::ranges::find(Wanted, Name) == Wanted.end());
    }
    for (const std::string& Name : FFormat.Ignored) {
      const auto Found = std::ranges::find(FNames, Name);
      if (Found == FNames.end()) {
        throw std::out_of_range("There is no column " + Shown(Name) + " to leave out");
      }
      FIsIgnored[static_cast<std::size_t>(Found - FNames.begin())] = true;
    }
  }

  void ReadValues(const TRow& Row) {
    if (Row.Cells.size() != FNames.size()) {
      throw EDataError("Line " + std::to_string(Row.Line) + ": there are " +
                           std::to_string(Row.Cells.size()) + " cells, not " + std::to_string(FNames.size()),
                       Row.Line, 0);
    }
    FValues.clear();
    bool Skipped = false;
    for (std::size_t I = 0; I < Row.Cells.size(); ++I) {
      FValues.push_back(FIsIgnored[I] ? 0 : ValueOf(Row, I));
      Skipped |= FFormat.MissingValues == mvSkipRow && FValues.back() != FValues.back();
    }
    for (std::size_t I = 0; I < FValues.size() && !Skipped; ++I) {
      if (!FIsIgnored[I]) {
        FColumns[I].push_back(FValues[I]);
      }
    }
  }

  double ValueOf(const TRow& Row, std::size_t Place) const {
    std::string Text = Row.Cells[Place];
    const std::string Where = Shown(FNames[Place]) + ' ';
    bool IsNumber = true;
    if (FFormat.DecimalPoint != '.') {
      IsNumber = Text.find('.') == std::string::npos;
      std::ranges::replace(Text, FFormat.DecimalPoint, '.');
    }
    const bool IsMissing = Trimmed(Text).empty() || SameText(Trimmed(Text), "NA");
    const auto Value = IsMissing ? std::numeric_limits<double>::quiet_NaN() : ParseReal(Text);
    if (!Value || !IsNumber) {
      Raise(Row.Line, Place, Where + "is no number: " + Shown(Row.Cells[Place]));
    }
    if (std::isnan(*Value) && FFormat.MissingValues == mvRefuse) {
      Raise(Row.Line, Place, Where + "has no number");
    }
    return *Value;
  }

  std::string_view FRest;
  TCSVFormat FFormat;
  int FLine = 1;
  bool FWasQuoted = false; // the last cell
  std::vector<std::string> FNames;
  std::vector<bool> FIsIgnored;
  std::vector<std::vector<double>> FColumns;
  std::vector<double> FValues;
};

} // namespace

TQXDataSet TQXDataSet::FromCSV(std::istream& Stream, const TCSVFormat& Format) {
  const std::string Text{std::istreambuf_iterator<char>(Stream), {}};
  return TCSVReader(Text, Format).Read();
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
    throw EDataError(FileName + ": " + Error.what(), Error.Line(), Error.Column());
  } catch (const std::ios_base::failure& Failure) { // a folder, say
    throw std::system_error(Failure.code(), "Cannot read \"" + FileName + "\"");
  }
}

} // namespace qx
