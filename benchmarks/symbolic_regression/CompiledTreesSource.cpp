// Writes the first of the random programs as C++, each as a loop over rows: what evaluation is measured
// against.

#include <qx/symbolic_regression/Formula.h>

#include <benchmarks/symbolic_regression/CompiledTrees.h>
#include <benchmarks/symbolic_regression/RandomTrees.h>
#include <cstdio>
#include <string>

int main() {
  using namespace qx;
  using namespace qx::benchmarks;
  std::puts("#include <benchmarks/symbolic_regression/CompiledTrees.h>\n#include <cmath>\n");
  for (const TFunctionSet Functions : {fsArithmetic, fsMixed}) {
    const std::string Set = Functions == fsArithmetic ? "arithmetic" : "mixed";
    const TRandomTrees Sample(Functions);
    std::string Table;
    for (int I = 0; I < CompiledTreeCount; ++I) {
      const TQXFormula Formula(*Sample.Trees()[static_cast<std::size_t>(I)]);
      const std::string Space = Set + std::to_string(I);
      std::string Arguments;
      for (const std::string& Variable : Formula.Variables()) {
        Arguments +=
            (Arguments.empty() ? "" : ", ") + ("columns[" + std::to_string(Variable[1] - '1') + "][row]");
      }
      const std::string Text = Formula.Text(fsCpp, "formula");
      std::printf("namespace %s {\n%s\nvoid run(const double* const* columns, double* __restrict results, "
                  "int rows) {\n"
                  "  for (int row = 0; row < rows; ++row) {\n    results[row] = formula(%s);\n  }\n}\n}\n",
                  Space.c_str(), ("static " + Text.substr(Text.find("double"))).c_str(), Arguments.c_str());
      Table += Space + "::run, ";
    }
    std::printf("const qx::benchmarks::TCompiledTree qx::benchmarks::Compiled%s[] = {%s};\n",
                Functions == fsArithmetic ? "Arithmetic" : "Mixed", Table.c_str());
  }
}
