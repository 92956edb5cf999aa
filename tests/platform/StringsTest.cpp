#include <qx/platform/Strings.h>

#include <gtest/gtest.h>

#include <stdexcept>

namespace qx {
namespace {

struct TCountedStrings : TStrings {
  TCountedStrings() {
    OnChange = [this](TStrings&) { ++Changes; };
  }
  int Changes = 0;
};

TEST(Strings, EveryChangeFiresOnce) {
  TCountedStrings List;
  List.Add("a");
  EXPECT_EQ(List.Changes, 1);
  List.Insert(0, "b");
  List.SetStrings(1, "c");
  List.SetObjects(0, &List);
  List.Delete(0);
  EXPECT_EQ(List.Changes, 5);
  List.Clear();
  EXPECT_EQ(List.Changes, 6);
  List.Clear(); // nothing to change
  EXPECT_EQ(List.Changes, 6);
}

TEST(Strings, AnUpdateFiresOnceAtItsEnd) {
  TCountedStrings List;
  List.BeginUpdate();
  List.BeginUpdate();
  List.Add("a");
  List.Add("b");
  List.EndUpdate();
  EXPECT_EQ(List.Changes, 0);
  List.EndUpdate();
  EXPECT_EQ(List.Changes, 1);
  EXPECT_THROW(List.EndUpdate(), std::logic_error);
}

TEST(Strings, AssignTakesTextsAndObjectsAndFiresOnce) {
  TStrings Source{"x", "y"};
  Source.SetObjects(1, &Source);
  TCountedStrings List;
  List.Assign(Source);
  EXPECT_EQ(List.Changes, 1);
  EXPECT_EQ(List.Text(), "x\ny\n");
  EXPECT_EQ(List.Objects(0), nullptr);
  EXPECT_EQ(List.Objects(1), &Source);
  List.Assign(List);
  EXPECT_EQ(List.Count(), 2);
}

TEST(Strings, TextsAreFoundExactly) {
  const TStrings List{"a", "B", "b", "B"};
  EXPECT_EQ(List.IndexOf("B"), 1);
  EXPECT_EQ(List.IndexOf("b"), 2);
  EXPECT_EQ(List.IndexOf("A"), -1);
}

TEST(Strings, AnIndexOutsideRaises) {
  TStrings List{"a"};
  EXPECT_THROW(List.Strings(1), std::out_of_range);
  EXPECT_THROW(List.Delete(-1), std::out_of_range);
  EXPECT_THROW(List.Insert(2, "b"), std::out_of_range);
  List.Insert(1, "b");
  EXPECT_EQ(List[1], "b");
}

TEST(Strings, AForeignSourceIsRefusedByName) {
  struct TOther : TPersistent {};
  TStrings List;
  try {
    List.Assign(TOther());
    FAIL();
  } catch (const std::invalid_argument& Error) {
    EXPECT_STREQ(Error.what(), "Cannot assign a TOther to a TStrings");
  }
}

} // namespace
} // namespace qx
