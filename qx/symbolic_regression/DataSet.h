#pragma once

#include <qx/symbolic_regression/AlignedVector.h>

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace qx {

/// What keeps a text from being a table of numbers.
enum TDataFault : std::uint8_t {
  /// It has no columns.
  dfEmpty,
  /// A quote is not closed, or something follows it.
  dfQuote,
  /// A name is there twice.
  dfName,
  /// A row is of another length than the first line.
  dfLength,
  /// Cells have no number where none may be missing.
  dfMissing,
  /// Cells are something else than numbers.
  dfText
};

/// A column that is no column of numbers, and its first cell that is none.
struct TFaultyColumn {
  std::string Name;
  int Number = 0; // from 1
  int Line = 0;
  std::string Cell;
};

/// A text that is no table of numbers: the line, and the number of the column in it, both from 1. The column
/// is 0 where the line as a whole is at fault.
class EDataError : public std::runtime_error {
public:
  EDataError(const std::string& Message, int Line, int Column, TDataFault Fault, char Separator = 0,
             int ColumnCount = 0, std::vector<TFaultyColumn> Columns = {});
  int Line() const { return FLine; }
  int Column() const { return FColumn; }
  TDataFault Fault() const { return FFault; }
  /// What the cells were taken to be separated by.
  char Separator() const { return FSeparator; }
  /// How many columns the text has, as far as is known.
  int ColumnCount() const { return FColumnCount; }
  /// All columns with that fault, when it is one of cells.
  const std::vector<TFaultyColumn>& Columns() const { return FColumns; }

private:
  int FLine;
  int FColumn;
  TDataFault FFault;
  char FSeparator;
  int FColumnCount;
  std::vector<TFaultyColumn> FColumns;
};

/// What happens to cells without a number: those that are empty, "NA", "N/A", "NaN", "NULL", "?" or "-".
enum TMissingValues : std::uint8_t {
  /// They are errors.
  mvRefuse,
  /// They become NaN.
  mvKeep,
  /// Their rows are left out, and those with an infinite number.
  mvSkipRow
};

/// How a text holds a table.
struct TCSVFormat {
  /// Between cells; a blank stands for any number of blanks and tabs. 0 stands for the one of tab, semicolon,
  /// "|", comma and blanks that makes as many cells in each of the first ten lines, or for the one in a first
  /// line "sep=;", as spreadsheets write it.
  char Separator = 0;
  char Quote = '"';
  char DecimalPoint = '.';
  /// Whether numbers may be written as in 1,234.5 (with a decimal comma, 1.234,5) and 12%.
  bool Thousands = false;
  /// Whether the first line names the columns; else they are called x1, x2 and so on.
  bool Header = true;
  TMissingValues MissingValues = mvRefuse;
  /// Names of columns that are left out, whatever their cells hold; or their numbers, as in "#1" for the
  /// first one, where no column is called so.
  std::vector<std::string> Ignored = {};
  /// Names of the only ones that are read, as far as they are there; without it all are.
  std::optional<std::vector<std::string>> Wanted = std::nullopt;
};

/// The number in a cell of such a text: NaN where it is missing, nothing where the cell holds something else.
std::optional<double> NumberInCell(std::string_view Cell, const TCSVFormat& Format);

struct TDataSplit;

/// Named columns of numbers, all of one length: the rows. Names are unique and differ by the case of letters,
/// as the variables of a program do.
///
/// Columns are aligned to 64 bytes, and followed by copies of their last value up to a whole number of such
/// lines, so that kernels run over them without a rest.
class TQXDataSet {
public:
  /// Reads a table from text: cells between separators, quoted where they hold a separator, a line feed or a
  /// quote (which is doubled), blanks around them aside. Lines end in LF or CRLF; empty ones, and a UTF-8
  /// mark at the beginning, are skipped. TRUE is 1 and FALSE is 0. A column without a name is called "column"
  /// with its number. Raises EDataError (see `TDataFault`), which names all columns of text at once;
  /// std::out_of_range for a column to be left out that there is not.
  static TQXDataSet FromCSV(std::istream& Stream, const TCSVFormat& Format = {});
  /// Raises std::system_error, which names the file, when it cannot be read. The message of an EDataError
  /// names it too.
  static TQXDataSet FromCSV(const std::string& FileName, const TCSVFormat& Format = {});

  /// The cells of a column of such a text as they stand, one for each row; other columns may hold anything.
  /// Raises EDataError, and std::out_of_range for a column that there is not.
  static std::vector<std::string> TextsFromCSV(std::istream& Stream, const TCSVFormat& Format,
                                               std::string_view Column);

  int RowCount() const { return FRowCount; }
  int ColumnCount() const { return static_cast<int>(FColumns.size()); }
  /// Raises std::out_of_range.
  const std::string& ColumnName(int Index) const { return ColumnAt(Index).Name; }
  /// Place of a column, or -1.
  int IndexOf(std::string_view Name) const;
  /// The values of a column, one for each row. Raises std::out_of_range, which names the column.
  std::span<const double> Column(int Index) const;
  std::span<const double> Column(std::string_view Name) const;

  /// Adds a column; the first one decides how many rows there are. Raises std::invalid_argument, and changes
  /// nothing, when the name is empty or taken or the length another one.
  void AddColumn(std::string_view Name, std::span<const double> Values);
  void AddColumn(std::string_view Name, std::initializer_list<double> Values) {
    AddColumn(Name, std::span<const double>(Values.begin(), Values.size()));
  }

  /// The same without some of its columns; names that it does not have do not matter.
  TQXDataSet Without(std::span<const std::string> Names) const;
  /// The same with other names for some of its columns: the new ones by the former ones. Raises
  /// std::invalid_argument when two columns would have one name.
  TQXDataSet Renamed(const std::map<std::string, std::string>& NewNames) const;

  /// The rows of those numbers, in their order, as a data set of its own. Raises std::out_of_range.
  TQXDataSet Rows(std::span<const int> Indexes) const;
  /// So many rows from one on.
  TQXDataSet Rows(int First, int Count) const;

  /// The first rows are for training, the others for testing. The share, 0 to 1, is rounded to whole rows;
  /// raises std::invalid_argument for any other.
  TDataSplit SplitByShare(double TrainingShare) const;
  /// The same of the rows in an order that the seed decides, the same on every machine; nothing is drawn from
  /// the process-wide generator.
  TDataSplit SplitBySeed(double TrainingShare, std::uint64_t Seed) const;
  /// So many rows from one on are for training, the others for testing. Raises std::out_of_range.
  TDataSplit SplitByRange(int First, int Count) const;

private:
  struct TColumn {
    std::string Name;
    TAlignedVector<double> Values; // padded
  };

  const TColumn& ColumnAt(int Index) const;
  void RequireRows(int First, int Count) const;
  int TrainingRows(double Share) const;
  TDataSplit Split(std::span<const int> Order, int TrainingCount) const;

  int FRowCount = 0;
  std::vector<TColumn> FColumns;
};

/// The rows that programs are evolved on, and those that they are judged by.
struct TDataSplit {
  TQXDataSet Training;
  TQXDataSet Test;
};

} // namespace qx
