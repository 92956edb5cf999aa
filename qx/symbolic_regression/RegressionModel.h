#pragma once

#include <qx/genetic_programming/GPFloat.h>
#include <qx/symbolic_regression/ErrorMeasure.h>

#include <limits>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace qx {

/// The columns that variables stand for, by the variables' names, where these differ: the names of
/// instructions differ by more than the case of letters, those of columns need not.
using TColumnNames = std::map<std::string, std::string>;

/// The column that a variable stands for; that of its own name where there are no `Names`.
const std::string& ColumnOf(const generics::TQXGPInstruction<TGAFloat>& Variable, const TColumnNames* Names);

/// A formula for the target: `Scaling` of the program's value. It refers to the instructions of the component
/// that has found it, and is of no use after them; a `TQXFormula` made of it stands by itself.
struct TRegressionModel {
  using TNode = generics::TQXGPNode<TGAFloat>;

  TNode::TPointer Program;
  TLinearScaling Scaling;
  /// On the training rows, by the component's error measure.
  double Error = std::numeric_limits<double>::infinity();
  /// On the test rows; NaN when there are none.
  double TestError = std::numeric_limits<double>::quiet_NaN();
  /// Of the program's variables; nullptr when each column has its variable's name.
  std::shared_ptr<const TColumnNames> ColumnNames = nullptr;

  int Size() const { return Program->Size(); }
  /// The column that a variable stands for.
  const std::string& ColumnOf(const TNode::TInstruction& Variable) const {
    return qx::ColumnOf(Variable, ColumnNames.get());
  }
  TRegressionModel Clone() const { return {Program->Clone(), Scaling, Error, TestError, ColumnNames}; }
};

/// The models of which none is both smaller and better than another: the least error for each size of
/// program, by growing size and falling error.
class TRegressionFront {
public:
  /// Whether a model of that size and error would come in: it is better than all that are no larger.
  bool Wants(int Size, double Error) const;
  /// Takes a model in, and drops those that it beats; one that is not wanted is left out.
  void Add(TRegressionModel Model);
  void Clear() { FModels.clear(); }
  TRegressionFront Clone() const;

  int Count() const { return static_cast<int>(FModels.size()); }
  bool Empty() const { return FModels.empty(); }
  /// Raises std::out_of_range.
  const TRegressionModel& operator[](int Index) const { return FModels.at(static_cast<std::size_t>(Index)); }
  auto begin() const { return FModels.begin(); }
  auto end() const { return FModels.end(); }
  /// The largest model, whose error is the least; nullptr when the front is empty.
  const TRegressionModel* Last() const { return FModels.empty() ? nullptr : &FModels.back(); }

private:
  std::vector<TRegressionModel> FModels;
};

} // namespace qx
