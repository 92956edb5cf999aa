#include <qx/foundation/FloatPriorityQueue.h>

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace qx {
namespace {

struct TNamed {
  char Name;
};

class FloatPriorityQueue : public testing::Test {
protected:
  std::string Order() {
    std::string Text;
    for (int I = 0; I < Queue.Count(); ++I) {
      Text += Queue[I].Name;
    }
    return Text;
  }

  TNamed A{'a'};
  TNamed B{'b'};
  TNamed C{'c'};
  TNamed D{'d'};
  TFloatPriorityQueue<TNamed> Queue;
};

TEST_F(FloatPriorityQueue, PutsTheLowestKeyFirst) {
  Queue.Push(A, 3);
  Queue.Push(B, 1);
  Queue.Push(C, 2);
  EXPECT_EQ(Order(), "bca");
}

TEST_F(FloatPriorityQueue, PutsTheHighestKeyFirstWhenTold) {
  Queue.Push(A, 3);
  Queue.Push(B, 1);
  Queue.SetHighestFirst(true);
  Queue.Push(C, 2);
  EXPECT_EQ(Order(), "acb");
  EXPECT_TRUE(Queue.HighestFirst());
}

TEST_F(FloatPriorityQueue, EqualKeysKeepTheOrderOfPushing) {
  Queue.Push(D, 1);
  Queue.Push(A, 1);
  Queue.Push(C, 1);
  EXPECT_EQ(Order(), "dac");
  Queue.SetHighestFirst(true);
  EXPECT_EQ(Order(), "dac");
}

TEST_F(FloatPriorityQueue, NotANumberComesLastEitherWay) {
  Queue.Push(A, std::nanf(""));
  Queue.Push(B, 1);
  Queue.Push(C, std::nanf(""));
  Queue.Push(D, 2);
  EXPECT_EQ(Order(), "bdac");
  Queue.SetHighestFirst(true);
  EXPECT_EQ(Order(), "dbac");
}

TEST_F(FloatPriorityQueue, RemovedObjectsLeaveIt) {
  Queue.Push(A, 1);
  Queue.Push(B, 2);
  Queue.Push(C, 3);
  Queue.Remove(B);
  EXPECT_EQ(Order(), "ac");
  Queue.Remove(D);
  Queue.Push(B, 0);
  EXPECT_EQ(Order(), "bac");
  Queue.Remove(B);
  Queue.Push(B, 2); // comes again after it went
  EXPECT_EQ(Order(), "abc");
  Queue.Clear();
  EXPECT_EQ(Queue.Count(), 0);
}

TEST_F(FloatPriorityQueue, EqualKeysKeepTheirOrderWhenSomeHaveGone) {
  Queue.Push(A, 1);
  Queue.Push(B, 1);
  Queue.Push(C, 1);
  Queue.Remove(A);
  Queue.Push(D, 1);
  EXPECT_EQ(Order(), "bcd");
}

} // namespace
} // namespace qx
