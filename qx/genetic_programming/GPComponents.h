#pragma once

#include <qx/genetic_programming/GPFloat.h>
#include <qx/genetic_programming/GPVariant.h>
#include <qx/genetic_programming/QXGenerics.GeneticProgramming.h>

#include <memory>

namespace qx {

/// Narrows a program component as `TQXTypedGeneticComponent` does, and the events that it adds.
template <class TBase, class TSelf>
class TQXTypedGeneticProgramming : public TQXTypedGeneticComponent<TBase, TSelf, typename TBase::TIndividual,
                                                                   typename TBase::TPopulation> {
  using TTyped =
      TQXTypedGeneticComponent<TBase, TSelf, typename TBase::TIndividual, typename TBase::TPopulation>;
  using TGeneric = generics::TQXCustomGeneticProgramming<typename TBase::TValue>;

public:
  explicit TQXTypedGeneticProgramming(TComponent* Owner = nullptr) : TTyped(Owner) {}

  TQXTypedEvent<void(TSelf&, typename TBase::TNode&), typename TGeneric::TConstantMutationEvent::TSignature>
      OnConstantMutation{TGeneric::OnConstantMutation};
};

/// Binds a program component or an executor to a kind of programs: its instruction set and its nodes.
template <class TBase, class TInstructionSet, class TNodeClass>
class TQXGPKind : public TBase {
public:
  explicit TQXGPKind(TComponent* Owner = nullptr) : TBase(Owner) {}

  /// See `TQXProgramEngine`.
  TInstructionSet& Instructions() override { return static_cast<TInstructionSet&>(TBase::Instructions()); }
  const TInstructionSet& Instructions() const {
    return static_cast<const TInstructionSet&>(TBase::Instructions());
  }
  void SetInstructions(const TInstructionSet& Value) { TBase::SetInstructions(Value); }

  using TBase::CreateNode;
  typename TBase::TNodePointer CreateNode(typename TBase::TInstruction* Instruction) override {
    return generics::MakeNode<TNodeClass>(Instruction);
  }

protected:
  std::unique_ptr<generics::TQXGPInstructions<typename TBase::TValue>>
  CreateInstructions(TItemClass<typename TBase::TInstruction> /*ItemClass*/) override {
    return std::make_unique<TInstructionSet>(this);
  }
};

/// Genetic programming over floating-point programs, n-ary trees.
class TQXCustomGeneticProgramming
    : public TQXGPKind<TQXTypedGeneticProgramming<generics::TQXCustomGeneticProgramming<TGAFloat>,
                                                  TQXCustomGeneticProgramming>,
                       TQXGPFloatInstructions, TQXGPFloatNode> {
public:
  using TQXGPKind::TQXGPKind;
};

/// The component of floating-point programs that a host places and configures.
///
///     qx::TQXGeneticProgramming gp;
///     qx::AddStandardInstructions(gp.Instructions(), qx::sgArithmetic);
///     gp.Instructions().Add().SetName("x");
///     qx::TQXGPFloatContext context;
///     gp.OnEvaluateFitness = [&](auto&, auto& item, double& fitness) {
///       context.Values().AddOrSetValue("x", 3.0);
///       fitness = std::abs(item.Execute(&context) - 42);
///     };
///     gp.Evolve(50);
///     std::cout << gp.FittestIndividual()->DNA()->ToString();
class TQXGeneticProgramming
    : public TQXTypedGeneticProgramming<TQXCustomGeneticProgramming, TQXGeneticProgramming> {
public:
  using TQXTypedGeneticProgramming::TQXTypedGeneticProgramming;
};

/// Genetic programming over floating-point programs, binary trees: no function can have more than two
/// arguments. One that does raises EGPException when a program with it is built.
class TQXCustomBinaryGeneticProgramming
    : public TQXGPKind<TQXTypedGeneticProgramming<generics::TQXCustomGeneticProgramming<TGAFloat>,
                                                  TQXCustomBinaryGeneticProgramming>,
                       TQXGPFloatInstructions, TQXGPBinaryFloatNode> {
public:
  using TQXGPKind::TQXGPKind;
};

class TQXBinaryGeneticProgramming
    : public TQXTypedGeneticProgramming<TQXCustomBinaryGeneticProgramming, TQXBinaryGeneticProgramming> {
public:
  using TQXTypedGeneticProgramming::TQXTypedGeneticProgramming;
};

/// Genetic programming over programs whose values are variants.
class TQXCustomGeneticProgrammingVariant
    : public TQXGPKind<TQXTypedGeneticProgramming<generics::TQXCustomGeneticProgramming<Variant>,
                                                  TQXCustomGeneticProgrammingVariant>,
                       TQXGPVariantInstructions, TQXGPVariantNode> {
public:
  using TQXGPKind::TQXGPKind;
};

class TQXGeneticProgrammingVariant
    : public TQXTypedGeneticProgramming<TQXCustomGeneticProgrammingVariant, TQXGeneticProgrammingVariant> {
public:
  using TQXTypedGeneticProgramming::TQXTypedGeneticProgramming;
};

/// Runs one floating-point program.
class TQXCustomGeneticProgrammingExecutor
    : public TQXGPKind<generics::TQXCustomGeneticProgrammingExecutor<TGAFloat>, TQXGPFloatInstructions,
                       TQXGPFloatNode> {
public:
  using TQXGPKind::TQXGPKind;
};

class TQXGeneticProgrammingExecutor : public TQXCustomGeneticProgrammingExecutor {
public:
  using TQXCustomGeneticProgrammingExecutor::TQXCustomGeneticProgrammingExecutor;
};

/// Runs one variant program.
class TQXCustomGeneticProgrammingVariantExecutor
    : public TQXGPKind<generics::TQXCustomGeneticProgrammingExecutor<Variant>, TQXGPVariantInstructions,
                       TQXGPVariantNode> {
public:
  using TQXGPKind::TQXGPKind;
};

class TQXGeneticProgrammingVariantExecutor : public TQXCustomGeneticProgrammingVariantExecutor {
public:
  using TQXCustomGeneticProgrammingVariantExecutor::TQXCustomGeneticProgrammingVariantExecutor;
};

} // namespace qx
