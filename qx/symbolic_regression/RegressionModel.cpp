#include <qx/symbolic_regression/RegressionModel.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace qx {

const std::string& ColumnOf(const generics::TQXGPInstruction<TGAFloat>& Variable, const TColumnNames* Names) {
  const auto Found = Names != nullptr ? Names->find(Variable.Name()) : TColumnNames::const_iterator();
  return Names != nullptr && Found != Names->end() ? Found->second : Variable.Name();
}

bool TRegressionFront::Wants(int Size, double Error) const {
  const auto Larger = std::ranges::upper_bound(FModels, Size, {}, &TRegressionModel::Size);
  return std::isfinite(Error) && (Larger == FModels.begin() || Error < std::prev(Larger)->Error);
}

void TRegressionFront::Add(TRegressionModel Model) {
  if (!Wants(Model.Size(), Model.Error)) {
    return;
  }
  const auto First = std::ranges::lower_bound(FModels, Model.Size(), {}, &TRegressionModel::Size);
  const auto Last = std::find_if(First, FModels.end(),
                                 [&](const TRegressionModel& Other) { return Other.Error < Model.Error; });
  FModels.insert(FModels.erase(First, Last), std::move(Model));
}

TRegressionFront TRegressionFront::Clone() const {
  TRegressionFront Copy;
  for (const TRegressionModel& Model : FModels) {
    Copy.FModels.push_back(Model.Clone());
  }
  return Copy;
}

} // namespace qx
