#include <qx/symbolic_regression/DataSet.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <set>
#include <utility>

namespace qx {

namespace {

constexpr std::size_t RowsPerLine = 16; // of the narrower numbers that kernels work on

std::vector<int> AllRows(int Count) {
  std::vector<int> Rows(static_cast<std::size_t>(Count));
  std::iota(Rows.begin(), Rows.end(), 0);
  return Rows;
}

// A generator for orders alone (Steele, Lea and Flood 2014), so that a split draws nothing from that of the
// process.
std::uint64_t NextWord(std::uint64_t& State) {
  State += 0x9e3779b97f4a7c15U;
  std::uint64_t Word = State;
  Word = (Word ^ Word >> 30) * 0xbf58476d1ce4e5b9U;
  Word = (Word ^ Word >> 27) * 0x94d049bb133111ebU;
  return Word ^ Word >> 31;
}

void Shuffle(std::vector<int>& Rows, std::uint64_t Seed) {
  __extension__ using TWide = unsigned __int128;
  for (std::size_t Left = Rows.size(); Left > 1; --Left) {
    std::swap(Rows[Left - 1], Rows[static_cast<std::size_t>(TWide(NextWord(Seed)) * Left >> 64)]);
  }
}

} // namespace

int TQXDataSet::IndexOf(std::string_view Name) const {
  const auto Found = std::ranges::find(FColumns, Name, &TColumn::Name);
  return Found != FColumns.end() ? static_cast<int>(Found - FColumns.begin()) : -1;
}

const TQXDataSet::TColumn& TQXDataSet::ColumnAt(int Index) const {
  if (Index < 0 || Index >= ColumnCount()) {
    throw std::out_of_range("There is no column " + std::to_string(Index) + ", only " +
                            std::to_string(ColumnCount()) + " of them");
  }
  return FColumns[static_cast<std::size_t>(Index)];
}

std::span<const double> TQXDataSet::Column(int Index) const {
  return std::span(ColumnAt(Index).Values).first(static_cast<std::size_t>(FRowCount));
}

std::span<const double> TQXDataSet::Column(std::string_view Name) const {
  const int Index = IndexOf(Name);
  if (Index < 0) {
    throw std::out_of_range("There is no column \"" + std::string(Name) + "\"");
  }
  return Column(Index);
}

void TQXDataSet::AddColumn(std::string_view Name, std::span<const double> Values) {
  if (Name.empty()) {
    throw std::invalid_argument("A column needs a name");
  }
  if (IndexOf(Name) >= 0) {
    throw std::invalid_argument("There is a column \"" + std::string(Name) + "\" already");
  }
  if (!FColumns.empty() && std::cmp_not_equal(Values.size(), FRowCount)) {
    throw std::invalid_argument("The column \"" + std::string(Name) + "\" has " +
                                std::to_string(Values.size()) + " rows, not " + std::to_string(FRowCount));
  }
  if (!std::in_range<int>(Values.size())) {
    throw std::invalid_argument("The column \"" + std::string(Name) + "\" has too many rows");
  }
  TColumn Added{std::string(Name), {Values.begin(), Values.end()}};
  Added.Values.resize((Values.size() + RowsPerLine - 1) / RowsPerLine * RowsPerLine,
                      Values.empty() ? 0 : Values.back());
  FColumns.push_back(std::move(Added));
  FRowCount = static_cast<int>(Values.size());
}

TQXDataSet TQXDataSet::Without(std::span<const std::string> Names) const {
  TQXDataSet Result = *this;
  std::erase_if(Result.FColumns,
                [&](const TColumn& Column) { return std::ranges::find(Names, Column.Name) != Names.end(); });
  return Result;
}

TQXDataSet TQXDataSet::Renamed(const std::map<std::string, std::string>& NewNames) const {
  TQXDataSet Result = *this;
  std::set<std::string_view> Taken;
  for (TColumn& Column : Result.FColumns) {
    if (const auto Found = NewNames.find(Column.Name); Found != NewNames.end()) {
      Column.Name = Found->second;
    }
    if (!Taken.insert(Column.Name).second) {
      throw std::invalid_argument("There would be two columns \"" + Column.Name + "\"");
    }
  }
  return Result;
}

TQXDataSet TQXDataSet::Rows(std::span<const int> Indexes) const {
  for (const int Index : Indexes) {
    RequireRows(Index, 1);
  }
  TQXDataSet Result;
  std::vector<double> Values(Indexes.size());
  for (const TColumn& Source : FColumns) {
    std::ranges::transform(Indexes, Values.begin(),
                           [&](int Index) { return Source.Values[static_cast<std::size_t>(Index)]; });
    Result.AddColumn(Source.Name, Values);
  }
  return Result;
}

TQXDataSet TQXDataSet::Rows(int First, int Count) const {
  RequireRows(First, Count);
  std::vector<int> Indexes(static_cast<std::size_t>(Count));
  std::iota(Indexes.begin(), Indexes.end(), First);
  return Rows(Indexes);
}

TDataSplit TQXDataSet::SplitByShare(double TrainingShare) const {
  return Split(AllRows(FRowCount), TrainingRows(TrainingShare));
}

TDataSplit TQXDataSet::SplitBySeed(double TrainingShare, std::uint64_t Seed) const {
  const int TrainingCount = TrainingRows(TrainingShare);
  auto Order = AllRows(FRowCount);
  Shuffle(Order, Seed);
  return Split(Order, TrainingCount);
}

TDataSplit TQXDataSet::SplitByRange(int First, int Count) const {
  RequireRows(First, Count);
  auto Order = AllRows(FRowCount);
  std::rotate(Order.begin(), Order.begin() + First, Order.begin() + First + Count);
  return Split(Order, Count);
}

void TQXDataSet::RequireRows(int First, int Count) const {
  if (First < 0 || Count < 0 || First > FRowCount - Count) {
    throw std::out_of_range("There are no " + std::to_string(Count) + " rows from " + std::to_string(First) +
                            " on, only " + std::to_string(FRowCount) + " in all");
  }
}

int TQXDataSet::TrainingRows(double Share) const {
  if (!(Share >= 0 && Share <= 1)) {
    throw std::invalid_argument("The share of training rows is " + std::to_string(Share) + ", not 0 to 1");
  }
  return static_cast<int>(std::lround(Share * FRowCount));
}

TDataSplit TQXDataSet::Split(std::span<const int> Order, int TrainingCount) const {
  const auto Count = static_cast<std::size_t>(TrainingCount);
  return {Rows(Order.first(Count)), Rows(Order.subspan(Count))};
}

} // namespace qx
