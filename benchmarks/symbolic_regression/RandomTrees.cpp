#include <qx/genetic_programming/StandardInstructions.h>

#include <algorithm>
#include <benchmarks/symbolic_regression/RandomTrees.h>

namespace qx::benchmarks {

namespace {

constexpr int TreeCount = 500;
constexpr int LeastNodes = 20;
constexpr int MostNodes = 50;

} // namespace

TRandomTrees::TRandomTrees(TFunctionSet Functions) {
  for (const char* const Name : {"Add", "Sub", "Mul", "Div"}) {
    FBinary.push_back(&AddStandardInstruction(FInstructions, Name));
  }
  if (Functions == fsMixed) {
    for (const char* const Name : {"Sin", "Cos", "Exp", "Log", "Sqrt"}) {
      FUnary.push_back(&AddStandardInstruction(FInstructions, Name));
    }
  }
  for (int I = 1; I <= VariableCount; ++I) {
    FVariables.push_back(&FInstructions.Add());
    FVariables.back()->SetName("x" + std::to_string(I));
  }
  FConstant = &FInstructions.Add();
  FConstant->SetName("c");
  FConstant->SetOperation(gpConstant);
  for (int I = 0; I < TreeCount; ++I) {
    FTrees.push_back(RandomTree(std::uniform_int_distribution(LeastNodes, MostNodes)(FEngine)));
  }
}

TFloatNode::TPointer TRandomTrees::RandomTree(int Nodes) {
  const auto Draw = [&](const auto& List) { return List[FEngine() % List.size()]; };
  if (Nodes == 1) {
    const bool IsConstant = FEngine() % 5 == 0;
    auto Terminal = MakeNode<TQXGPFloatNode>(IsConstant ? FConstant : Draw(FVariables));
    if (IsConstant) {
      Terminal->SetValue(std::uniform_real_distribution<double>(-1, 1)(FEngine));
    }
    return Terminal;
  }
  // Of an even number of nodes, some function has one argument; without such functions the sizes are odd.
  const std::size_t Functions = FUnary.size() + FBinary.size();
  const bool Unary = !FUnary.empty() && (Nodes == 2 || FEngine() % Functions < FUnary.size());
  auto Node = MakeNode<TQXGPFloatNode>(Draw(Unary ? FUnary : FBinary));
  if (Unary) {
    Node->AddChild(RandomTree(Nodes - 1));
    return Node;
  }
  int Left = std::uniform_int_distribution(1, std::max(1, Nodes - 2))(FEngine);
  if (FUnary.empty()) {
    Left |= 1; // a tree of operators of two arguments has an odd number of nodes
  }
  Node->AddChild(RandomTree(Left));
  Node->AddChild(RandomTree(std::max(1, Nodes - 1 - Left)));
  return Node;
}

std::int64_t TRandomTrees::NodeCount() const {
  std::int64_t Count = 0;
  for (const auto& Tree : FTrees) {
    Count += Tree->Size();
  }
  return Count;
}

TQXDataSet RandomData(int Rows) {
  std::mt19937_64 Engine(1);
  std::uniform_real_distribution<double> Values(-5, 5);
  TQXDataSet Data;
  for (int I = 1; I <= VariableCount; ++I) {
    std::vector<double> Column(static_cast<std::size_t>(Rows));
    std::ranges::generate(Column, [&] { return Values(Engine); });
    Data.AddColumn("x" + std::to_string(I), Column);
  }
  return Data;
}

} // namespace qx::benchmarks
