// Runs a saved program over a table: the first line of the CSV names the variables, and every other line gets
// the program's result appended. "kepler --save law.xml" makes such a program, of the variable a.
//
// Usage: run_program PROGRAM.xml < TABLE.csv

#include <qx/genetic_programming/QXGeneticProgramming.h>

#include <iostream>
#include <sstream>
#include <string>
#include <vector>

int main(int Count, char** Arguments) {
  try {
    qx::TQXGeneticProgrammingExecutor Executor;
    for (int Group = qx::sgArithmetic; Group <= qx::sgBoolean; ++Group) { // what the instructions do
      qx::AddStandardInstructions(Executor.Instructions(), static_cast<qx::TStandardGroup>(Group));
    }
    Executor.LoadFromFile(Count > 1 ? Arguments[1] : "");
    std::vector<std::string> Names;
    qx::TQXGPFloatContext Context;
    for (std::string Line; std::getline(std::cin, Line);) {
      std::istringstream Cells(Line);
      const bool First = Names.empty();
      std::size_t Column = 0;
      for (std::string Cell; std::getline(Cells, Cell, ','); ++Column) {
        First ? Names.push_back(Cell) : Context.Values().AddOrSetValue(Names.at(Column), std::stod(Cell));
      }
      std::cout << Line << ',';
      First ? std::cout << "result\n" : std::cout << Executor.Execute(&Context) << '\n';
    }
  } catch (const std::exception& Error) {
    std::cerr << Error.what() << "\nUsage: run_program PROGRAM.xml < TABLE.csv\n";
    return 1;
  }
}
