#include <qx/symbolic_regression/DataSet.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <sstream>
#include <string>
#include <system_error>
#include <tests/support/TemporaryFolder.h>
#include <vector>

namespace {

using namespace qx;
using tests::TTemporaryFolder;
using tests::WriteFile;

TQXDataSet FromText(const std::string& Text, const TCSVFormat& Format = {}) {
  std::istringstream Stream(Text);
  return TQXDataSet::FromCSV(Stream, Format);
}

std::vector<double> ColumnOf(const TQXDataSet& Data, std::string_view Name) {
  const auto Values = Data.Column(Name);
  return {Values.begin(), Values.end()};
}

using TValues = std::vector<double>;

// What is wrong with a text: its line, its column and the message.
void ExpectError(const std::string& Text, int Line, int Column, const std::string& Message,
                 const TCSVFormat& Format = {}) {
  try {
    FromText(Text, Format);
    ADD_FAILURE() << "no error for " << Text;
  } catch (const EDataError& Error) {
    EXPECT_EQ(Error.Line(), Line) << Error.what();
    EXPECT_EQ(Error.Column(), Column) << Error.what();
    EXPECT_EQ(std::string(Error.what()), Message);
  }
}

TEST(DataSet, ColumnsWithoutNamesAreCalledByTheirNumbers) {
  std::istringstream Text(",x,\n0,1,2\n1,3,4\n");
  const auto Data = TQXDataSet::FromCSV(Text);
  ASSERT_EQ(Data.ColumnCount(), 3);
  EXPECT_EQ(Data.ColumnName(0), "column1");
  EXPECT_EQ(Data.ColumnName(2), "column3");
}

TEST(DataSet, OnlyWantedColumnsAreRead) {
  std::istringstream Text("planet,x,y\nMercury,1,\nVenus,3,4\n");
  TCSVFormat Format;
  Format.Wanted = {"x", "z"};
  const auto Data = TQXDataSet::FromCSV(Text, Format);
  ASSERT_EQ(Data.ColumnCount(), 1);
  EXPECT_EQ(Data.Column("x")[1], 3);
}

TEST(DataSet, IgnoredColumnsMayHoldAnything) {
  std::istringstream Text("planet,x,y\nMercury,1,2\n\"Venus, bright\",3,4\n,5,6\n");
  TCSVFormat Format;
  Format.Ignored = {"planet", "y"};
  const auto Data = TQXDataSet::FromCSV(Text, Format);
  ASSERT_EQ(Data.ColumnCount(), 1);
  EXPECT_EQ(Data.ColumnName(0), "x");
  EXPECT_EQ(Data.RowCount(), 3);
  EXPECT_EQ(Data.Column("x")[2], 5);
  std::istringstream Again("x,y\n1,2\n");
  Format.Ignored = {"z"};
  try {
    TQXDataSet::FromCSV(Again, Format);
    FAIL() << "nothing raised";
  } catch (const std::out_of_range& Error) {
    EXPECT_STREQ(Error.what(), "There is no column \"z\" to leave out");
  }
}

TEST(DataSet, ReadsNamesAndNumbers) {
  const auto Data = FromText("x,y\n1,2.5\n-3e2,+4\n");
  EXPECT_EQ(Data.RowCount(), 2);
  EXPECT_EQ(Data.ColumnCount(), 2);
  EXPECT_EQ(Data.ColumnName(0), "x");
  EXPECT_EQ(Data.ColumnName(1), "y");
  EXPECT_EQ(ColumnOf(Data, "x"), (TValues{1, -300}));
  EXPECT_EQ(ColumnOf(Data, "y"), (TValues{2.5, 4}));
}

TEST(DataSet, ReadsCarriageReturnsEmptyLinesMarksAndTextWithoutLastLineFeed) {
  const auto Data = FromText("\xEF\xBB\xBFx,y\r\n\r\n1,2\r\n   \n3,4");
  EXPECT_EQ(Data.ColumnName(0), "x");
  EXPECT_EQ(ColumnOf(Data, "x"), (TValues{1, 3}));
  EXPECT_EQ(ColumnOf(Data, "y"), (TValues{2, 4}));
}

TEST(DataSet, ReadsQuotedCells) {
  const auto Data = FromText("\"a, b\",\"say \"\"x\"\"\", \"two\nlines\" \n 1 ,\"2\", \" 3 \"\n");
  EXPECT_EQ(Data.ColumnName(0), "a, b");
  EXPECT_EQ(Data.ColumnName(1), "say \"x\"");
  EXPECT_EQ(Data.ColumnName(2), "two\nlines");
  EXPECT_EQ(Data.Column(0)[0], 1);
  EXPECT_EQ(Data.Column(1)[0], 2);
  EXPECT_EQ(Data.Column(2)[0], 3);
}

TEST(DataSet, FindsTheSeparatorInTheFirstLines) {
  EXPECT_EQ(ColumnOf(FromText("x;y,1;z\n1;2;3\n"), "y,1"), (TValues{2}));
  EXPECT_EQ(ColumnOf(FromText("x\ty\n1\t2\n"), "y"), (TValues{2}));
  EXPECT_EQ(ColumnOf(FromText("x\n1\n2\n"), "x"), (TValues{1, 2}));
  EXPECT_EQ(ColumnOf(FromText("x|y\n1 | 2\n"), "y"), (TValues{2}));
  EXPECT_EQ(ColumnOf(FromText("my x\n1\n2\n"), "my x"), (TValues{1, 2})) << "no blanks in the other lines";
  EXPECT_EQ(ColumnOf(FromText("a b;c d\n1;2\n"), "c d"), (TValues{2}));
  TCSVFormat Format;
  Format.DecimalPoint = ',';
  EXPECT_EQ(ColumnOf(FromText("x y\n1,5 2\n", Format), "x"), (TValues{1.5}));
  EXPECT_EQ(ColumnOf(FromText("1,5;2,5\n", {.DecimalPoint = ',', .Header = false}), "x2"), (TValues{2.5}));
}

TEST(DataSet, AQuoteWithinACellMisleadsNobody) {
  EXPECT_EQ(ColumnOf(FromText("len 5\";y\n1;2\n2;3\n"), "y"), (TValues{2, 3}));
  EXPECT_EQ(ColumnOf(FromText("\"a;\"\"b;\";y\n1;2\n"), "y"), (TValues{2}));
}

TEST(DataSet, ALineOfSpreadsheetsTellsTheSeparator) {
  EXPECT_EQ(ColumnOf(FromText("sep=:\r\nx:y\n1:2\n"), "y"), (TValues{2}));
  ExpectError("sep=;\nx;y\n1;z\n", 3, 2, "Line 3, column 2: \"y\" is no number: \"z\"");
}

TEST(DataSet, WithoutWantedColumnsThereAreRows) {
  const auto Data = FromText("x,y\n1,a\n2,b\n", {.Wanted = std::vector<std::string>()});
  EXPECT_EQ(Data.ColumnCount(), 0);
  EXPECT_EQ(Data.RowCount(), 2);
}

TEST(DataSet, AnyNumberOfBlanksAndTabsSeparatesCells) {
  const auto Data = FromText("  x   \"the y\" z \r\n 1  2\t 3\r\n   \r\n4 5   6");
  EXPECT_EQ(ColumnOf(Data, "x"), (TValues{1, 4}));
  EXPECT_EQ(ColumnOf(Data, "the y"), (TValues{2, 5}));
  EXPECT_EQ(ColumnOf(Data, "z"), (TValues{3, 6}));
  TCSVFormat Format;
  Format.Separator = ' ';
  ExpectError("x y\n1 2 3\n", 2, 0, "Line 2: there are 3 cells, not 2", Format);
  EXPECT_EQ(FromText("x y\n", Format).ColumnCount(), 2);
}

TEST(DataSet, TruthsAreNumbers) {
  EXPECT_EQ(ColumnOf(FromText("x\nTRUE\nfalse\nTrue\n"), "x"), (TValues{1, 0, 1}));
}

TEST(DataSet, MarksOfThousandsAndPercentagesAreReadOnRequest) {
  TCSVFormat Format;
  Format.Thousands = true;
  const auto Read = [&](const std::string& Cell) {
    return ColumnOf(FromText("x\n\"" + Cell + "\"\n", Format), "x").front();
  };
  EXPECT_EQ(Read("1,234.5"), 1234.5);
  EXPECT_EQ(Read("-12,345,678"), -12345678);
  EXPECT_EQ(Read("12%"), 0.12);
  EXPECT_EQ(Read("1,000 %"), 10);
  EXPECT_EQ(Read("999"), 999);
  for (const char* const Cell :
       {"1,23", "1234,567", ",123", "0,123", "1,2e5", "1,+23", "1,234,56", "1,2345", "1.5,000", "%", "1%%"}) {
    EXPECT_THROW(Read(Cell), EDataError) << Cell;
  }
  Format.DecimalPoint = ',';
  EXPECT_EQ(Read("1.234,5"), 1234.5);
  EXPECT_THROW(Read("1.5"), EDataError);
  EXPECT_THROW(FromText("x\n12%\n"), EDataError) << "not unless it is asked for";
}

TEST(DataSet, ColumnsAreLeftOutByNumberToo) {
  TCSVFormat Format;
  Format.Ignored = {"#3"};
  EXPECT_EQ(FromText("x,y,x\n1,2,text\n", Format).ColumnCount(), 2);
  Format.Ignored = {"x"};
  EXPECT_EQ(FromText("x,y,x\n1,2,text\n", Format).ColumnCount(), 1) << "all of that name";
  EXPECT_EQ(ColumnOf(FromText("1,x\n5,6\n", {.Ignored = {"#2"}}), "1"), (TValues{5}));
  EXPECT_EQ(ColumnOf(FromText("#2,x\n5,6\n", {.Ignored = {"#2"}}), "x"), (TValues{6})) << "names come first";
  EXPECT_THROW(FromText("x,y\n1,2\n", {.Ignored = {"#0"}}), std::out_of_range);
  EXPECT_THROW(FromText("x,y\n1,2\n", {.Ignored = {"#3"}}), std::out_of_range);
}

TEST(DataSet, AColumnCanBeReadAsTexts) {
  std::istringstream Text("name,x\n\"Tent, small\",1\nRope,\n");
  EXPECT_EQ(TQXDataSet::TextsFromCSV(Text, {}, "name"), (std::vector<std::string>{"Tent, small", "Rope"}));
  std::istringstream Other("name\nRope\n");
  EXPECT_THROW(TQXDataSet::TextsFromCSV(Other, {}, "x"), std::out_of_range);
}

TEST(DataSet, TakesSeparatorQuoteAndDecimalPointFromTheFormat) {
  TCSVFormat Format;
  Format.Separator = '|';
  Format.Quote = '\'';
  Format.DecimalPoint = ',';
  const auto Data = FromText("'x|1'|y\n1,5|2,25e1\n", Format);
  EXPECT_EQ(ColumnOf(Data, "x|1"), (TValues{1.5}));
  EXPECT_EQ(ColumnOf(Data, "y"), (TValues{22.5}));
  ExpectError("x|y\n1.5|2\n", 2, 1, "Line 2, column 1: \"x\" is no number: \"1.5\"", Format);
}

TEST(DataSet, FindsTheSeparatorBehindEmptyLinesAndOutsideQuotes) {
  EXPECT_EQ(ColumnOf(FromText("\xEF\xBB\xBF\r\n\na;b\n1;2\n"), "b"), (TValues{2}));
  EXPECT_EQ(ColumnOf(FromText("\"a,b,c\";d\n1;2\n"), "d"), (TValues{2}));
}

TEST(DataSet, APointIsNoDecimalCommaAtWhateverPlace) {
  TCSVFormat Format;
  Format.DecimalPoint = ',';
  Format.Separator = ';';
  ExpectError("x\n.5\n", 2, 1, "Line 2, column 1: \"x\" is no number: \".5\"", Format);
  ExpectError("x\n5.\n", 2, 1, "Line 2, column 1: \"x\" is no number: \"5.\"", Format);
}

TEST(DataSet, NoSpellingOfNaNIsANumber) {
  for (const char* const Cell :
       {"-NaN", "\" NaN \"", "nan", "\"\"", "\" \"", "na", "N/A", "null", "?", "-", "\" - \""}) {
    ExpectError("x,y\n" + std::string(Cell) + ",1\n", 2, 1, "Line 2, column 1: \"x\" has no number");
    TCSVFormat Format;
    Format.MissingValues = mvSkipRow;
    EXPECT_EQ(FromText("x,y\n" + std::string(Cell) + ",1\n2,3\n", Format).RowCount(), 1) << Cell;
  }
}

TEST(DataSet, ATabSeparatesEmptyCellsFromQuotedOnes) {
  TCSVFormat Format;
  Format.MissingValues = mvKeep;
  const auto Data = FromText("x\ty\n\t\"2\"\n", Format);
  EXPECT_TRUE(std::isnan(Data.Column("x")[0]));
  EXPECT_EQ(Data.Column("y")[0], 2);
}

TEST(DataSet, NumbersTheColumnsOfATableWithoutHeader) {
  TCSVFormat Format;
  Format.Header = false;
  const auto Data = FromText("1,2\n3,4\n", Format);
  EXPECT_EQ(ColumnOf(Data, "x1"), (TValues{1, 3}));
  EXPECT_EQ(ColumnOf(Data, "x2"), (TValues{2, 4}));
}

TEST(DataSet, NamesTheLineAndColumnOfWhatIsNoNumber) {
  ExpectError("x,y\n1,2\n3,four\n", 3, 2, "Line 3, column 2: \"y\" is no number: \"four\"");
  ExpectError("x,y\n\n1,2 3\n", 3, 2, "Line 3, column 2: \"y\" is no number: \"2 3\"");
  ExpectError("\"x\n\",y\n1,+\n", 3, 2, "Line 3, column 2: \"y\" is no number: \"+\"");
}

TEST(DataSet, NamesAllColumnsOfTextAtOnce) {
  const std::string Text = "a,b,c,d\n1,2,x,4\n5,,y,\"8\n9\"\nz,2,3,4\n";
  ExpectError(
      Text, 2, 3,
      "Line 2, column 3: \"c\" is no number: \"x\"; nor is \"d\" (line 3: \"8?9\"), \"a\" (line 5: \"z\")");
  ExpectError("a,b\n1,\n,2\n", 2, 2, "Line 2, column 2: \"b\" has no number; nor has \"a\" (line 3)");
  try {
    FromText(Text);
    ADD_FAILURE();
  } catch (const EDataError& Error) {
    EXPECT_EQ(Error.Fault(), dfText);
    EXPECT_EQ(Error.Separator(), ',');
    ASSERT_EQ(Error.Columns().size(), 3U);
    EXPECT_EQ(Error.Columns()[1].Name, "d");
    EXPECT_EQ(Error.Columns()[1].Number, 4);
    EXPECT_EQ(Error.Columns()[1].Cell, "8\n9");
  }
  std::string Names;
  std::string Cells;
  for (int I = 0; I < 14; ++I) {
    Names += (I > 0 ? ",c" : "c") + std::to_string(I);
    Cells += I > 0 ? ",t" : "t";
  }
  try {
    FromText(Names + "\n" + Cells + "\n");
    ADD_FAILURE();
  } catch (const EDataError& Error) {
    EXPECT_TRUE(std::string(Error.what()).ends_with("\"c9\" (line 2: \"t\") and 4 more")) << Error.what();
  }
}

TEST(DataSet, NamesTheLineOfARowOfAnotherLength) {
  ExpectError("x,y\n1,2\n3\n", 3, 0, "Line 3: there are 1 cells, not 2");
  ExpectError("x,y\n1,2,3\n", 2, 0, "Line 2: there are 3 cells, not 2");
}

TEST(DataSet, RefusesNamesThatAreEmptyOrThereTwice) {
  ExpectError("x,y,x\n1,2,3\n", 1, 3, "Line 1, column 3: there is a column \"x\" already");
  EXPECT_EQ(FromText("x,X\n1,2\n").ColumnCount(), 2); // variables differ by the case of letters
}

TEST(DataSet, RefusesQuotesThatAreNotClosedOrFollowedByText) {
  ExpectError("x,\"y\n1,2\n", 1, 2, "Line 1, column 2: the quote is not closed");
  ExpectError("x,y\n1,\"2\"3\n", 2, 2, "Line 2, column 2: there is text after the closing quote");
}

TEST(DataSet, RefusesATextWithoutColumns) {
  ExpectError("", 1, 0, "The text has no columns");
  ExpectError("\n\r\n", 3, 0, "The text has no columns");
}

TEST(DataSet, ColumnsCanBeLeftOutAndRenamed) {
  const auto Data = FromText("x,y,z\n1,2,3\n");
  const auto Less = Data.Without(std::vector<std::string>{"y", "none"});
  EXPECT_EQ(Less.ColumnCount(), 2);
  EXPECT_EQ(ColumnOf(Less, "z"), (TValues{3}));
  const auto Renamed = Data.Renamed({{"x", "y"}, {"y", "x"}, {"none", "z"}});
  EXPECT_EQ(ColumnOf(Renamed, "x"), (TValues{2}));
  EXPECT_EQ(ColumnOf(Renamed, "y"), (TValues{1}));
  EXPECT_THROW(Data.Renamed({{"x", "y"}}), std::invalid_argument);
}

TEST(DataSet, AHeaderAloneMakesColumnsWithoutRows) {
  const auto Data = FromText("x,y\n");
  EXPECT_EQ(Data.ColumnCount(), 2);
  EXPECT_EQ(Data.RowCount(), 0);
}

TEST(DataSet, MissingValuesAreErrorsUnlessTheFormatSaysOtherwise) {
  const std::string Text = "x,y\n1,\n2,NA\n3,nan\n4,5\n";
  ExpectError(Text, 2, 2, "Line 2, column 2: \"y\" has no number");
  TCSVFormat Format;
  Format.MissingValues = mvKeep;
  const auto Kept = FromText(Text, Format);
  EXPECT_EQ(Kept.RowCount(), 4);
  for (std::size_t Row = 0; Row < 3; ++Row) {
    EXPECT_TRUE(std::isnan(Kept.Column("y")[Row]));
  }
  Format.MissingValues = mvSkipRow;
  const auto Whole = FromText(Text, Format);
  EXPECT_EQ(ColumnOf(Whole, "x"), (TValues{4}));
  EXPECT_EQ(ColumnOf(Whole, "y"), (TValues{5}));
  EXPECT_EQ(ColumnOf(FromText("x\n1\ninf\n-Infinity\n2\n", Format), "x"), (TValues{1, 2}));
}

TEST(DataSet, ReadsFilesAndNamesThemInErrors) {
  const TTemporaryFolder Folder;
  const std::string Name = Folder.File("data.csv");
  WriteFile(Name, "x\n1\n2\n");
  EXPECT_EQ(TQXDataSet::FromCSV(Name).RowCount(), 2);
  WriteFile(Name, "x\none\n");
  try {
    TQXDataSet::FromCSV(Name);
    ADD_FAILURE();
  } catch (const EDataError& Error) {
    EXPECT_EQ(std::string(Error.what()), Name + ": Line 2, column 1: \"x\" is no number: \"one\"");
    EXPECT_EQ(Error.Line(), 2);
  }
  for (const std::string& Missing : {Folder.File("none.csv"), Folder.File("")}) {
    try {
      TQXDataSet::FromCSV(Missing);
      ADD_FAILURE();
    } catch (const std::system_error& Error) {
      EXPECT_NE(std::string(Error.what()).find(Missing), std::string::npos) << Error.what();
    }
  }
}

TEST(DataSet, AColumnThatDoesNotFitChangesNothing) {
  TQXDataSet Data;
  Data.AddColumn("x", {1, 2, 3});
  EXPECT_THROW(Data.AddColumn("x", {1, 2, 3}), std::invalid_argument);
  EXPECT_THROW(Data.AddColumn("y", {1, 2}), std::invalid_argument);
  EXPECT_THROW(Data.AddColumn("", {1, 2, 3}), std::invalid_argument);
  EXPECT_EQ(Data.ColumnCount(), 1);
  EXPECT_EQ(Data.RowCount(), 3);
}

TEST(DataSet, NamesTheColumnThatThereIsNot) {
  TQXDataSet Data;
  Data.AddColumn("x", {1});
  EXPECT_EQ(Data.IndexOf("y"), -1);
  EXPECT_THROW(Data.Column(1), std::out_of_range);
  EXPECT_THROW(Data.ColumnName(-1), std::out_of_range);
  try {
    Data.Column("why");
    ADD_FAILURE();
  } catch (const std::out_of_range& Error) {
    EXPECT_NE(std::string(Error.what()).find("why"), std::string::npos);
  }
}

TEST(DataSet, ColumnsAreAlignedAndPaddedWithTheirLastValue) {
  TQXDataSet Data;
  Data.AddColumn("x", {1, 2, 3});
  Data.AddColumn("y", {4, 5, 6});
  for (const char* const Name : {"x", "y"}) {
    const auto Values = Data.Column(Name);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(Values.data()) % 64, 0U);
    for (std::size_t I = 3; I < 16; ++I) {
      EXPECT_EQ(Values.data()[I], Values[2]);
    }
  }
}

TQXDataSet Numbered(int Rows) {
  TValues Values(static_cast<std::size_t>(Rows));
  std::iota(Values.begin(), Values.end(), 0);
  TQXDataSet Data;
  Data.AddColumn("n", Values);
  return Data;
}

TEST(DataSet, SplitsByShare) {
  const TDataSplit Split = Numbered(5).SplitByShare(0.5);
  EXPECT_EQ(ColumnOf(Split.Training, "n"), (TValues{0, 1, 2})); // 2.5 rounded
  EXPECT_EQ(ColumnOf(Split.Test, "n"), (TValues{3, 4}));
  EXPECT_EQ(Numbered(5).SplitByShare(0).Training.RowCount(), 0);
  EXPECT_EQ(Numbered(5).SplitByShare(1).Test.RowCount(), 0);
  EXPECT_THROW(Numbered(5).SplitByShare(1.1), std::invalid_argument);
  EXPECT_THROW(Numbered(5).SplitByShare(-0.1), std::invalid_argument);
  EXPECT_THROW(Numbered(5).SplitByShare(NAN), std::invalid_argument);
}

TEST(DataSet, SplitsByRange) {
  const TDataSplit Split = Numbered(6).SplitByRange(2, 3);
  EXPECT_EQ(ColumnOf(Split.Training, "n"), (TValues{2, 3, 4}));
  EXPECT_EQ(ColumnOf(Split.Test, "n"), (TValues{0, 1, 5}));
  EXPECT_THROW(Numbered(6).SplitByRange(4, 3), std::out_of_range);
  EXPECT_THROW(Numbered(6).SplitByRange(-1, 3), std::out_of_range);
  EXPECT_THROW(Numbered(6).SplitByRange(2, -1), std::out_of_range);
}

TEST(DataSet, SplitsBySeedAlikeForEverySeedAndEveryRowOnce) {
  const TQXDataSet Data = Numbered(100);
  const TDataSplit Split = Data.SplitBySeed(0.7, 1);
  EXPECT_EQ(Split.Training.RowCount(), 70);
  TValues All = ColumnOf(Split.Training, "n");
  const TValues Rest = ColumnOf(Split.Test, "n");
  All.insert(All.end(), Rest.begin(), Rest.end());
  EXPECT_FALSE(std::is_sorted(All.begin(), All.end()));
  std::sort(All.begin(), All.end());
  EXPECT_EQ(All, ColumnOf(Data, "n"));
  EXPECT_EQ(ColumnOf(Data.SplitBySeed(0.7, 1).Test, "n"), Rest);
  EXPECT_NE(ColumnOf(Data.SplitBySeed(0.7, 2).Test, "n"), Rest);
  // The same on every machine.
  EXPECT_EQ(ColumnOf(Numbered(8).SplitBySeed(0.5, 42).Training, "n"), (TValues{4, 3, 2, 0}));
}

TEST(DataSet, TakesRowsInAnyOrder) {
  EXPECT_EQ(ColumnOf(Numbered(5).Rows(std::vector<int>{4, 0, 4}), "n"), (TValues{4, 0, 4}));
  EXPECT_EQ(ColumnOf(Numbered(5).Rows(1, 2), "n"), (TValues{1, 2}));
  EXPECT_THROW(Numbered(5).Rows(std::vector<int>{5}), std::out_of_range);
  EXPECT_THROW(Numbered(5).Rows(4, 2), std::out_of_range);
}

} // namespace
