// Formulas for a column of a table, from small ones to exact ones. Usage: regression FILE.csv COLUMN
#include <qx/symbolic_regression/QXSymbolicRegression.h>

#include <iostream>
int main(int Count, char** Arguments) try {
  qx::TQXSymbolicRegression Regression;
  Regression.SetData(qx::TQXDataSet::FromCSV(Count > 2 ? Arguments[1] : "FILE.csv"), Arguments[Count - 1]);
  Regression.Evolve(50);
  for (const qx::TRegressionModel& Model : Regression.Front()) {
    std::cout << Model.Error << "  " << qx::TQXFormula(Model).Simplify().Text(qx::fsInfix) << "\n";
  }
} catch (const std::exception& Error) {
  std::cerr << Error.what() << "\n";
  return 1;
}
