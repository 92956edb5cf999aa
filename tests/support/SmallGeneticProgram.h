#pragma once

#include <qx/genetic_programming/QXGeneticProgramming.h>

#include <gtest/gtest.h>

#include <string>
#include <support/ScriptedRandom.h>
#include <support/SmallPrograms.h>
#include <utility>

namespace qx::tests {

/// A program component whose steps a test can take one by one.
template <class TBase>
class TOpenProgramming : public TBase {
public:
  using TBase::CreateSizeFairRoulette;
  using TBase::DoAntiBloating;
  using TBase::DoConstantMutation;
  using TBase::DoCrossover;
  using TBase::DoFairCrossover;
  using TBase::DoHoistMutation;
  using TBase::DoInitialize;
  using TBase::DoInvert;
  using TBase::DoMutate;
  using TBase::DoPointMutation;
  using TBase::DoReplacementMutation;
  using TBase::DoReproduce;
  using TBase::DoShrinkMutation;
  using TBase::DoSubtreeMutation;
  using TBase::InstructionOperationUpdate;
  using TBase::SelectSizeFairNode;
  using typename TBase::TIndividual;
  using typename TBase::TNode;

  auto DoInitializeFull(int Depth) { return TBase::DoInitializeFull(nullptr, 0, Depth); }
  auto DoInitializeGrow(int Depth) { return TBase::DoInitializeGrow(nullptr, 0, Depth); }

  auto& Function(const std::string& Name, int Arity) {
    auto& Added = this->Instructions().Add();
    Added.SetName(Name);
    Added.SetArity(Arity);
    return Added;
  }
  auto& Variable(const std::string& Name) {
    auto& Added = this->Instructions().Add();
    Added.SetName(Name);
    return Added;
  }
  template <class T>
  auto& Constant(const std::string& Name, const T& Value) {
    auto& Added = Variable(Name);
    Added.SetOperation(gpConstant);
    Added.SetValue(Value);
    return Added;
  }
  /// An individual with the program of a text; see `ReadTree`.
  TIndividual& Add(const std::string& Tree) {
    TIndividual& Added = this->Population().Add();
    Added.AssignDNA(ReadTree<typename TBase::TValue>(*this, Tree));
    return Added;
  }
};

/// Floating-point programs over the functions Add, Mul and Neg, the variables x and y and the constant c;
/// every program's fitness is its size, unless a test says otherwise.
template <class TBase = TQXGeneticProgramming>
class TArithmeticProgramming : public TOpenProgramming<TBase> {
public:
  TArithmeticProgramming() {
    AddStandardInstruction(this->Instructions(), "Add");
    AddStandardInstruction(this->Instructions(), "Mul");
    AddStandardInstruction(this->Instructions(), "Neg");
    this->Variable("x");
    this->Variable("y");
    this->Constant("c", 1.5);
    this->OnEvaluateFitness = [](auto&, auto& Item, double& Fitness) { Fitness = Item.DNA()->Size(); };
  }
};

template <class T>
std::string Program(const generics::TQXGPIndividual<T>& Individual) {
  return Individual.DNA() != nullptr ? Individual.DNA()->ToString() : "none";
}

/// Whether the list of nodes is that of the tree.
template <class T>
void ExpectWhole(generics::TQXGPIndividual<T>& Individual) {
  const auto Listed = Individual.FlattenedDNA();
  ASSERT_NE(Individual.DNA(), nullptr);
  std::vector<generics::TQXGPNode<T>*> Nodes;
  Individual.DNA()->ForEach([&](auto& Node) { Nodes.push_back(&Node); });
  EXPECT_EQ(Listed, Nodes);
}

/// The draws by which the node at a place of a list of `Count` is selected at once.
inline std::vector<TScriptedDraw> Pick(int Index, int Count) { return {R(0.5), I(Index, Count), R(0.99)}; }

} // namespace qx::tests
