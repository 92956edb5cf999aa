#pragma once

#include <qx/genetic_programming/QXGenerics.GeneticProgramming.h>

#include <gtest/gtest.h>

#include <string>
#include <support/SmallPrograms.h>

namespace qx::tests {

/// A population of floating-point programs whose engine knows a little arithmetic.
class ProgramIndividualTest : public testing::Test {
protected:
  using TIndividual = generics::TQXGPIndividual<TGAFloat>;
  using TPopulation = generics::TQXGPPopulation<TGAFloat>;
  using TNode = generics::TQXGPNode<TGAFloat>;

  TIndividual& Add(const std::string& Tree) {
    TIndividual& Individual = Population.Add();
    Individual.AssignDNA(Engine.Tree(Tree));
    return Individual;
  }
  static std::string Flat(const TIndividual& Individual) {
    std::string Text;
    for (const TNode* const Node : Individual.FlattenedDNA()) {
      const auto* const Instruction = Node->Instruction();
      Text += (Text.empty() ? "" : " ") + (Instruction != nullptr ? Instruction->Name() : "nil");
    }
    return Text;
  }
  static std::string Program(const TIndividual& Individual) { return Individual.DNA()->ToString(); }

  TArithmeticEngine<> Engine;
  TPopulation Population{&Engine};
};

} // namespace qx::tests
