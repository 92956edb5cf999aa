#include <qx/program_trees/QXGenerics.GeneticProgramEngine.h>

#include <gtest/gtest.h>

#include <support/Allocations.h>
#include <support/Sanitizers.h>
#include <support/SmallPrograms.h>

namespace qx::generics {
namespace {

using tests::TArithmeticEngine;

// Under an address sanitizer every block comes from the heap.
#if !QX_ADDRESS_SANITIZER
TEST(NodeTest, CopiesAndExecutionNeedNoHeapOnceTheListOfFreeNodesIsFilled) {
  TArithmeticEngine Engine;
  const auto Tree = Engine.Tree("(Add (Mul x (Neg y)) (Add (Mul x 2) (Neg (Add x y x y x))))");
  TQXGPContext<TGAFloat> Context;
  Context.Values().Add("x", 1);
  Context.Values().Add("y", 2);
  const auto Use = [&] {
    const auto Copy = Tree->Clone();
    Copy->Children(0)->Assign(*Tree);
    EXPECT_EQ(Copy->Size(), 16 - 4 + 16);
    EXPECT_EQ(Copy->Execute(&Context), -4);
  };
  Use();
  const long Before = tests::Allocations();
  Use();
  EXPECT_EQ(tests::Allocations(), Before);
}
#endif

} // namespace
} // namespace qx::generics
