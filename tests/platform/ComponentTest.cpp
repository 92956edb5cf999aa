#include <qx/platform/Component.h>

#include <gtest/gtest.h>

#include <stdexcept>

namespace qx {
namespace {

TEST(Component, AnOwnerKnowsItsComponentsByName) {
  TComponent Owner;
  TComponent First(&Owner);
  TComponent Second(&Owner);
  First.SetName("first");
  EXPECT_EQ(Owner.ComponentCount(), 2);
  EXPECT_EQ(&Owner.Components(1), &Second);
  EXPECT_EQ(Owner.FindComponent("FIRST"), &First);
  EXPECT_EQ(Owner.FindComponent("none"), nullptr);
  EXPECT_EQ(First.Owner(), &Owner);
  EXPECT_THROW(Owner.Components(2), std::out_of_range);
}

TEST(Component, ANameIsTakenOnceInAnOwner) {
  TComponent Owner;
  TComponent First(&Owner);
  TComponent Second(&Owner);
  First.SetName("engine");
  EXPECT_THROW(Second.SetName("Engine"), std::invalid_argument);
  EXPECT_EQ(Second.Name(), "");
  First.SetName("engine");
  First.SetName("");
  Second.SetName("");
  Second.SetName("engine");
  EXPECT_EQ(Second.Name(), "engine");
}

TEST(Component, WhoDiesFirstLeavesNoDanglingReference) {
  auto Owner = std::make_unique<TComponent>();
  TComponent Outliving(Owner.get());
  {
    const TComponent Short(Owner.get());
    EXPECT_EQ(Owner->ComponentCount(), 2);
  }
  EXPECT_EQ(Owner->ComponentCount(), 1);
  Owner.reset();
  EXPECT_EQ(Outliving.Owner(), nullptr);
}

struct TWatched : TComponent {
  explicit TWatched(int& Deaths, TComponent* Owner = nullptr) : TComponent(Owner), FDeaths(Deaths) {}
  ~TWatched() override { ++FDeaths; }
  int& FDeaths;
};

TEST(Component, AnAdoptedComponentDiesWithItsOwner) {
  int Deaths = 0;
  {
    TComponent Former;
    TComponent Owner;
    Owner.Adopt(std::make_unique<TWatched>(Deaths));
    Owner.Adopt(std::make_unique<TWatched>(Deaths, &Owner));
    TComponent& Moved = Owner.Adopt(std::make_unique<TWatched>(Deaths, &Former));
    EXPECT_EQ(Moved.Owner(), &Owner);
    EXPECT_EQ(Former.ComponentCount(), 0);
    EXPECT_EQ(Owner.ComponentCount(), 3);
  }
  EXPECT_EQ(Deaths, 3);
}

TEST(Component, AdoptionRefusesATakenNameAndNothing) {
  TComponent Owner;
  TComponent Present(&Owner);
  Present.SetName("a");
  auto Rival = std::make_unique<TComponent>();
  Rival->SetName("A");
  EXPECT_THROW(Owner.Adopt(std::move(Rival)), std::invalid_argument);
  ASSERT_NE(Rival, nullptr);
  EXPECT_EQ(Rival->Name(), "A");
  EXPECT_THROW(Owner.Adopt(std::unique_ptr<TComponent>()), std::invalid_argument);
  EXPECT_EQ(Owner.ComponentCount(), 1);
}

TEST(Component, CannotAdoptItsOwnOwner) {
  auto Owner = std::make_unique<TComponent>();
  TComponent Owned(Owner.get());
  EXPECT_THROW(Owned.Adopt(std::move(Owner)), std::invalid_argument);
  EXPECT_EQ(Owned.Owner(), Owner.get());
}

TEST(Component, NobodyIsFoundByTheEmptyName) {
  TComponent Owner;
  const TComponent Unnamed(&Owner);
  EXPECT_EQ(Owner.FindComponent(""), nullptr);
}

} // namespace
} // namespace qx
