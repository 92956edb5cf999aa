#pragma once

// Random programs over the standard instructions, and random data for them.

#include <qx/genetic_programming/GPFloat.h>
#include <qx/symbolic_regression/DataSet.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace qx::benchmarks {

using TFloatNode = generics::TQXGPNode<TGAFloat>;

constexpr int VariableCount = 5;

/// Functions that the programs consist of.
enum TFunctionSet : std::uint8_t { fsArithmetic, fsMixed };

/// 500 programs of 20 to 50 nodes: functions drawn evenly, four of five terminals variables, the others
/// constants from -1 to 1.
class TRandomTrees {
public:
  explicit TRandomTrees(TFunctionSet Functions);

  TQXGPFloatInstructions& Instructions() { return FInstructions; }
  const std::vector<TFloatNode::TPointer>& Trees() const { return FTrees; }
  std::int64_t NodeCount() const;

private:
  TFloatNode::TPointer RandomTree(int Nodes);

  std::mt19937_64 FEngine{2026};
  TQXGPFloatInstructions FInstructions{nullptr};
  std::vector<generics::TQXGPInstruction<TGAFloat>*> FUnary;
  std::vector<generics::TQXGPInstruction<TGAFloat>*> FBinary;
  std::vector<generics::TQXGPInstruction<TGAFloat>*> FVariables;
  generics::TQXGPInstruction<TGAFloat>* FConstant = nullptr;
  std::vector<TFloatNode::TPointer> FTrees;
};

/// That many rows of the variables x1 to x5, even from -5 to 5.
TQXDataSet RandomData(int Rows);

} // namespace qx::benchmarks
