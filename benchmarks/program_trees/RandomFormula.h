#pragma once

// Random formulas over + - * / and three variables, known when the program is compiled: each as a program
// tree and as the same formula in C++.

#include <qx/program_trees/QXGenerics.GeneticProgramEngine.h>

#include <cstdint>

namespace qx::benchmarks {

using TNode = generics::TQXGPNode<TGAFloat>;
using TNodePointer = TNode::TPointer;
using TContext = generics::TQXGPContext<TGAFloat>;
using TInstructions = generics::TQXGPInstructions<TGAFloat>;

/// Gives 1 for a division by 0.
inline double ProtectedQuotient(double Left, double Right) { return Right == 0 ? 1 : Left / Right; }

/// Adds the instructions that the formulas consist of, in the order in which they count them.
void AddArithmetic(TInstructions& Instructions);

constexpr std::uint64_t Mixed(std::uint64_t Seed) { // splitmix64
  Seed += 0x9e3779b97f4a7c15;
  Seed = (Seed ^ Seed >> 30) * 0xbf58476d1ce4e5b9;
  Seed = (Seed ^ Seed >> 27) * 0x94d049bb133111eb;
  return Seed ^ Seed >> 31;
}

/// A formula of so many nodes, an odd number; the sizes of both operands are random.
template <std::uint64_t Seed, int Nodes>
struct TRandomFormula {
  static constexpr std::uint64_t Draw = Mixed(Seed);
  static constexpr int Pairs = (Nodes - 1) / 2;
  static constexpr int LeftNodes = 1 + 2 * static_cast<int>((Draw >> 8) % Pairs);
  using TLeft = TRandomFormula<Mixed(Draw + 1), LeftNodes>;
  using TRight = TRandomFormula<Mixed(Draw + 2), Nodes - 1 - LeftNodes>;

  static double Value(double X, double Y, double Z) {
    const double Left = TLeft::Value(X, Y, Z);
    const double Right = TRight::Value(X, Y, Z);
    switch (Draw % 4) {
    case 0:
      return Left + Right;
    case 1:
      return Left - Right;
    case 2:
      return Left * Right;
    default:
      return ProtectedQuotient(Left, Right);
    }
  }
  static TNodePointer Tree(TInstructions& Instructions) {
    TNodePointer Node = generics::MakeNode<generics::TQXGPTreeNode<TGAFloat>>(&Instructions[Draw % 4]);
    Node->AddChild(TLeft::Tree(Instructions));
    Node->AddChild(TRight::Tree(Instructions));
    return Node;
  }
};

template <std::uint64_t Seed>
struct TRandomFormula<Seed, 1> {
  static constexpr int Variable = static_cast<int>(Mixed(Seed) % 3);

  static double Value(double X, double Y, double Z) { return Variable == 0 ? X : Variable == 1 ? Y : Z; }
  static TNodePointer Tree(TInstructions& Instructions) {
    return generics::MakeNode<generics::TQXGPTreeNode<TGAFloat>>(&Instructions[4 + Variable]);
  }
};

} // namespace qx::benchmarks
