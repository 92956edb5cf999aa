// A stranger's program trees, over a value type that the library does not have compiled.

#include <qx/program_trees/QXGenerics.GeneticProgramEngine.ipp>

#include <iostream>

using namespace qx::generics;

int main() {
  TQXGPInstructions<float> set(nullptr);
  auto& x = set.Add();
  x.SetName("x");
  auto& add = set.Add();
  add.SetName("Add");
  add.SetArity(2);
  add.OnExecute = [](auto&, auto& node, auto* context, float& result) {
    result = node.ExecuteChild(0, context) + node.ExecuteChild(1, context);
  };
  auto tree = MakeNode<TQXGPTreeNode<float>>(&add);
  tree->AddChild(MakeNode<TQXGPTreeNode<float>>(&x));
  tree->AddChild(tree->Children(0)->Clone());
  TQXGPContext<float> context;
  context.Values().Add("x", 3);
  std::cout << tree->Execute(&context) << " is six\n";
}
