#include <benchmarks/program_trees/RandomFormula.h>

namespace qx::benchmarks {

namespace {

template <class TOperation>
void AddFunction(TInstructions& Instructions, const char* Name, TOperation Operation) {
  auto& Function = Instructions.Add();
  Function.SetName(Name);
  Function.SetArity(2);
  Function.OnExecute = [Operation](auto&, TNode& Node, TContext* Context, double& Result) {
    const double Left = Node.ExecuteChild(0, Context);
    Result = Operation(Left, Node.ExecuteChild(1, Context));
  };
}

} // namespace

void AddArithmetic(TInstructions& Instructions) {
  AddFunction(Instructions, "Add", [](double Left, double Right) { return Left + Right; });
  AddFunction(Instructions, "Sub", [](double Left, double Right) { return Left - Right; });
  AddFunction(Instructions, "Mul", [](double Left, double Right) { return Left * Right; });
  AddFunction(Instructions, "Div", ProtectedQuotient);
  for (const char* const Name : {"x", "y", "z"}) {
    Instructions.Add().SetName(Name);
  }
}

} // namespace qx::benchmarks
