#include <qx/genetic_programming/QXGenerics.GeneticProgramming.h>
#include <qx/platform/Random.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <support/Cases.h>
#include <support/SmallPrograms.h>
#include <utility>
#include <vector>

namespace qx::generics {
namespace {

/// A node of the plain model: what stands where, and nothing else.
struct TModel {
  std::string Name;
  std::vector<std::unique_ptr<TModel>> Slots; // two of them for a binary node
  TModel* Parent = nullptr;
  const void* Real = nullptr;

  bool IsFull() const { return Slots.size() == 2 && Slots[0] && Slots[1]; }
  int Count() const {
    return static_cast<int>(
        std::count_if(Slots.begin(), Slots.end(), [](const auto& Slot) { return Slot != nullptr; }));
  }
  int Size() const {
    int Sum = 1;
    for (const auto& Slot : Slots) {
      Sum += Slot ? Slot->Size() : 0;
    }
    return Sum;
  }
  int Depth() const {
    int Deepest = 0;
    for (const auto& Slot : Slots) {
      Deepest = Slot ? std::max(Deepest, Slot->Depth() + 1) : Deepest;
    }
    return Deepest;
  }
  std::string Text() const {
    std::string Whole = Name == "nil" ? "nil" : Count() > 0 ? "(" + Name : Name;
    for (const auto& Slot : Slots) {
      Whole += Slot ? " " + Slot->Text() : "";
    }
    return Count() > 0 ? Whole + ")" : Whole;
  }
  void List(std::vector<TModel*>& Nodes) {
    Nodes.push_back(this);
    for (const auto& Slot : Slots) {
      if (Slot) {
        Slot->List(Nodes);
      }
    }
  }
  bool IsWithin(const TModel& Outer) const {
    return this == &Outer || (Parent != nullptr && Parent->IsWithin(Outer));
  }
  std::unique_ptr<TModel> Copy() const {
    auto Whole = std::make_unique<TModel>();
    Whole->Name = Name;
    for (const auto& Slot : Slots) {
      Whole->Slots.push_back(Slot ? Slot->Copy() : nullptr);
      if (Slot) {
        Whole->Slots.back()->Parent = Whole.get();
      }
    }
    return Whole;
  }
};

using TModelPointer = std::unique_ptr<TModel>;

/// Does the same to two individuals and to models of them, and compares all there is to see.
template <class T>
class TTwin {
public:
  using TNode = TQXGPNode<T>;
  using TPointer = typename TNode::TPointer;
  using TIndividual = TQXGPIndividual<T>;

  TTwin(bool Binary, bool MeasureAlways) : FBinary(Binary), FMeasureAlways(MeasureAlways) {
    FEngine.Binary = Binary;
    for (auto& Root : FRoots) {
      FPopulation.Add().AssignDNA(FEngine.Tree("Add"));
      Root = NewModel("Add");
    }
    BindAll();
  }

  void Step() {
    FOther = Random(2) == 0;
    switch (Random(16)) {
    case 0:
    case 1:
    case 2:
    case 3:
    case 4:
      return AddNew();
    case 5:
    case 6:
      return InsertNew();
    case 7:
      return Extract();
    case 8:
      return Move();
    case 9:
      return Graft();
    case 10:
    case 11:
      return Crossover();
    case 12:
      return AssignSubtree();
    case 13:
      return ReplaceSide();
    case 14:
      return Random(8) == 0 ? Clear() : AddNew();
    default:
      return CopyAll();
    }
  }

  void Check() {
    for (int I = 0; I < 2; ++I) {
      CheckNode(*FRoots[I], *FPopulation[I].DNA(), nullptr);
      ASSERT_EQ(FPopulation[I].DNA()->ToString(), FRoots[I]->Text());
      std::vector<TModel*> Nodes;
      FRoots[I]->List(Nodes);
      const auto& Flat = FPopulation[I].FlattenedDNA();
      ASSERT_EQ(Flat.size(), Nodes.size());
      for (std::size_t K = 0; K < Nodes.size(); ++K) {
        ASSERT_EQ(Flat[K], Nodes[K]->Real);
      }
    }
  }

private:
  TModelPointer NewModel(const std::string& Name) const {
    auto Made = std::make_unique<TModel>();
    Made->Name = Name;
    Made->Slots.resize(FBinary ? 2 : 0);
    return Made;
  }
  std::pair<TPointer, TModelPointer> NewLeaf() {
    static const char* const Names[] = {"Add", "Mul", "Neg", "x", "y", "nil"};
    const std::string Name = Names[Random(6)];
    TPointer Node = FEngine.Tree(Name);
    TModelPointer Model = NewModel(Name);
    Model->Real = Node.get();
    return {std::move(Node), std::move(Model)};
  }

  int Here() const { return FOther ? 1 : 0; }
  TIndividual& Individual() { return FPopulation[Here()]; }
  TModelPointer& Root() { return FRoots[Here()]; }
  TModel& Pick(int I) {
    std::vector<TModel*> Nodes;
    FRoots[I]->List(Nodes);
    return *Nodes[Random(Nodes.size())];
  }
  static TNode& Real(const TModel& Model) {
    return const_cast<TNode&>(*static_cast<const TNode*>(Model.Real));
  }

  // The model's parts move as the nodes should.
  static std::size_t PlaceOf(const TModel& Model) {
    const auto& Slots = Model.Parent->Slots;
    return static_cast<std::size_t>(
        std::find_if(Slots.begin(), Slots.end(), [&](const auto& Slot) { return Slot.get() == &Model; }) -
        Slots.begin());
  }
  TModelPointer Take(TModel& Model) const {
    const std::size_t Place = PlaceOf(Model);
    TModel& Parent = *Model.Parent;
    TModelPointer Taken = std::move(Parent.Slots[Place]);
    if (!FBinary) {
      Parent.Slots.erase(Parent.Slots.begin() + static_cast<std::ptrdiff_t>(Place));
    }
    Taken->Parent = nullptr;
    return Taken;
  }
  void Append(TModel& Parent, TModelPointer Model) const {
    Model->Parent = &Parent;
    if (!FBinary) {
      Parent.Slots.push_back(std::move(Model));
    } else {
      (Parent.Slots[0] == nullptr ? Parent.Slots[0] : Parent.Slots[1]) = std::move(Model);
    }
  }
  static void Bind(TModel& Model, const TNode& Node) {
    Model.Real = &Node;
    const auto Slots = Node.Slots();
    for (std::size_t I = 0; I < Model.Slots.size() && I < Slots.size(); ++I) {
      if (Model.Slots[I] && Slots[I] != nullptr) {
        Bind(*Model.Slots[I], *Slots[I]);
      }
    }
  }
  void BindAll() {
    for (int I = 0; I < 2; ++I) {
      Bind(*FRoots[I], *FPopulation[I].DNA());
    }
  }
  void FlattenBoth() {
    FPopulation[0].FlattenDNA();
    FPopulation[1].FlattenDNA();
  }

  void AddNew() {
    TModel& Parent = Pick(Here());
    auto [Node, Model] = NewLeaf();
    if (Parent.IsFull() && FBinary) {
      EXPECT_THROW(Real(Parent).AddChild(std::move(Node)), EGPException);
      EXPECT_NE(Node, nullptr);
    } else {
      Real(Parent).AddChild(std::move(Node));
      Append(Parent, std::move(Model));
    }
    FlattenBoth();
  }
  void InsertNew() {
    TModel& Parent = Pick(Here());
    auto [Node, Model] = NewLeaf();
    if (FBinary) {
      const int Side = Random(2);
      if (!Parent.IsFull()) {
        Real(Parent).AttachChild(Side, std::move(Node));
        Model->Parent = &Parent;
        TModelPointer& Wanted = Parent.Slots[static_cast<std::size_t>(Side)];
        (Wanted ? Parent.Slots[static_cast<std::size_t>(1 - Side)] : Wanted) = std::move(Model);
      }
    } else {
      const int Place = Random(Parent.Count() + 1);
      Real(Parent).InsertChild(Place, std::move(Node));
      Model->Parent = &Parent;
      Parent.Slots.insert(Parent.Slots.begin() + Place, std::move(Model));
    }
    FlattenBoth();
  }
  void Extract() {
    TModel& Model = Pick(Here());
    if (Model.Parent != nullptr) {
      const TPointer Extracted = Real(*Model.Parent).ExtractChild(Real(Model));
      const TModelPointer Taken = Take(Model);
      EXPECT_EQ(Extracted->ToString(), Taken->Text());
      FlattenBoth();
    }
  }
  void Move() {
    TModel& Model = Pick(Here());
    TModel& Target = Pick(Random(2));
    if (Model.Parent == nullptr || &Target == Model.Parent) {
      return;
    }
    if (Target.IsWithin(Model)) {
      if (!(FBinary && Target.IsFull())) {
        EXPECT_THROW(Real(Model).SetParent(&Real(Target)), std::invalid_argument);
      }
    } else if (FBinary && Target.IsFull()) {
      EXPECT_THROW(Real(Model).SetParent(&Real(Target)), EGPException);
    } else {
      Real(Model).SetParent(&Real(Target));
      Append(Target, Take(Model));
    }
    FlattenBoth();
  }
  void Graft() {
    TModel& Model = Pick(Here());
    const TModel& Source = Pick(Random(2));
    TModelPointer New = Source.Copy();
    TPointer NewNode = Real(Source).Clone();
    Bind(*New, *NewNode);
    const TPointer Former = Individual().Graft(Real(Model), std::move(NewNode));
    EXPECT_EQ(Former.get(), Model.Real);
    if (Model.Parent == nullptr) {
      Root() = std::move(New);
    } else {
      TModel& Parent = *Model.Parent;
      Take(Model);
      Append(Parent, std::move(New));
    }
  }
  void Crossover() {
    TModel& Mine = Pick(Here());
    TModel& Theirs = Pick(1 - Here());
    Individual().Crossover(Real(Mine), FPopulation[1 - Here()], Real(Theirs));
    TModelPointer& MyRoot = Root();
    TModelPointer& TheirRoot = FRoots[1 - Here()];
    TModel* const MyParent = Mine.Parent;
    TModel* const TheirParent = Theirs.Parent;
    TModelPointer Going = MyParent != nullptr ? Take(Mine) : std::move(MyRoot);
    TModelPointer Coming = TheirParent != nullptr ? Take(Theirs) : std::move(TheirRoot);
    MyParent != nullptr ? Append(*MyParent, std::move(Coming)) : void(MyRoot = std::move(Coming));
    TheirParent != nullptr ? Append(*TheirParent, std::move(Going)) : void(TheirRoot = std::move(Going));
  }
  void AssignSubtree() {
    TModel& Model = Pick(Here());
    const TModel& Source = Pick(Random(2));
    if (Model.Size() + Source.Size() > 200) {
      return;
    }
    if (&Model != &Source) {
      TModelPointer Copy = Source.Copy();
      Real(Model).Assign(Real(Source));
      Model.Name = Copy->Name;
      Model.Slots = std::move(Copy->Slots);
      for (auto& Slot : Model.Slots) {
        if (Slot) {
          Slot->Parent = &Model;
        }
      }
      Bind(Model, Real(Model));
    }
    FlattenBoth();
  }
  void ReplaceSide() {
    if (!FBinary) {
      return;
    }
    auto& Node = static_cast<TQXGPBinaryNode<T>&>(Real(Pick(Here())));
    const TModel& Source = Pick(Random(2));
    const auto* const Given = Random(3) == 0 ? nullptr : static_cast<TQXGPBinaryNode<T>*>(&Real(Source));
    std::vector<TModel*> Nodes;
    Root()->List(Nodes);
    TModel& Model =
        **std::find_if(Nodes.begin(), Nodes.end(), [&](const TModel* M) { return M->Real == &Node; });
    const std::size_t Side = Random(std::size_t{2});
    TModelPointer Copy = Given != nullptr ? Source.Copy() : nullptr;
    const bool Same = Given == Node.Slots()[Side];
    Side == 0 ? Node.SetLeft(Given) : Node.SetRight(Given);
    if (!Same) {
      Model.Slots[Side] = std::move(Copy);
      if (Model.Slots[Side]) {
        Model.Slots[Side]->Parent = &Model;
      }
      Bind(Model, Node);
    }
    FlattenBoth();
  }
  void Clear() {
    TModel& Model = Pick(Here());
    Real(Model).Clear();
    Model.Name = "nil";
    Model.Slots.clear();
    Model.Slots.resize(FBinary ? 2 : 0);
    FlattenBoth();
  }
  void CopyAll() {
    if (Root()->Size() > 100) { // keeps the trees from growing without end
      Root() = NewModel("Mul");
      Individual().AssignDNA(FEngine.Tree("Mul"));
    } else if (Random(10) > 0) {
      Individual().SetDNA(*FPopulation[1 - Here()].DNA());
      Root() = FRoots[1 - Here()]->Copy();
    } else {
      const TModel& Source = Pick(Here());
      TModelPointer Copy = Source.Copy();
      Individual().SetDNA(Real(Source));
      Root() = std::move(Copy);
    }
    BindAll();
  }

  void CheckNode(const TModel& Model, const TNode& Node, const TNode* Parent) {
    ASSERT_EQ(&Node, Model.Real);
    ASSERT_EQ(Node.Parent(), Parent);
    ASSERT_EQ(Node.ChildCount(), Model.Count());
    ASSERT_EQ(Node.Slots().size(), Model.Slots.size());
    if (FMeasureAlways || Random(20) == 0) {
      ASSERT_EQ(Node.Size(), Model.Size());
      ASSERT_EQ(Node.Depth(), Model.Depth());
    }
    for (std::size_t I = 0; I < Model.Slots.size(); ++I) {
      ASSERT_EQ(Node.Slots()[I] != nullptr, Model.Slots[I] != nullptr);
      ASSERT_EQ(Node.Children(static_cast<int>(I)), Node.Slots()[I]);
      if (Model.Slots[I]) {
        CheckNode(*Model.Slots[I], *Node.Slots()[I], &Node);
      }
    }
  }

  bool FBinary;
  bool FMeasureAlways;
  bool FOther = false;
  tests::TArithmeticEngine<T> FEngine;
  TQXGPPopulation<T> FPopulation{&FEngine};
  TModelPointer FRoots[2];
};

template <class T>
void CompareWithModel(bool Binary) {
  constexpr int Seeds = 100;
  constexpr int Steps = tests::Cases(2000, 150);
  for (int Seed = 0; Seed < Seeds; ++Seed) {
    SeedRandom(static_cast<std::uint64_t>(Seed));
    TTwin<T> Twin(Binary, Seed % 2 == 0);
    for (int Step = 0; Step < Steps; ++Step) {
      Twin.Step();
      Twin.Check();
      ASSERT_FALSE(testing::Test::HasFailure()) << "seed " << Seed << ", step " << Step;
    }
  }
}

TEST(RandomOperationsTest, NaryFloatTreesFollowAPlainModel) { CompareWithModel<TGAFloat>(false); }
TEST(RandomOperationsTest, BinaryFloatTreesFollowAPlainModel) { CompareWithModel<TGAFloat>(true); }
TEST(RandomOperationsTest, NaryVariantTreesFollowAPlainModel) { CompareWithModel<Variant>(false); }
TEST(RandomOperationsTest, BinaryVariantTreesFollowAPlainModel) { CompareWithModel<Variant>(true); }

} // namespace
} // namespace qx::generics
