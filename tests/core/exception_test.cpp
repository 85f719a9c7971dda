#include "zenutl/exception.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

TEST(Exception, DefaultHasNoMessageAndNoCause) {
  Exception e;
  EXPECT_STREQ(e.Why(), "");
  EXPECT_STREQ(e.RecursiveWhy(), "");
  EXPECT_EQ(e.GetInnerException(), nullptr);
}

TEST(Exception, RecursiveWhyListsTheChainOutermostFirst) {
  Exception e("a", Exception("b", Exception("c")));
  EXPECT_STREQ(e.Why(), "a");
  EXPECT_STREQ(e.RecursiveWhy(), "a\nb\nc");
  Exception withEmptyLink("top", Exception(""));
  EXPECT_STREQ(withEmptyLink.RecursiveWhy(), "top\n");
}

TEST(Exception, CauseKeepsItsDynamicType) {
  Exception e("outer", OverflowError("too big"));
  ASSERT_NE(e.GetInnerException(), nullptr);
  EXPECT_NE(dynamic_cast<const OverflowError*>(e.GetInnerException()), nullptr);
  EXPECT_STREQ(e.GetInnerException()->Why(), "too big");
}

TEST(Exception, ChainSurvivesTheCallersCause) {
  std::unique_ptr<Exception> cause(new InvalidArgument("gone"));
  Exception e("outer", *cause);
  cause.reset();
  EXPECT_STREQ(e.RecursiveWhy(), "outer\ngone");
}

TEST(Exception, CopiesAndClonesShareTheCause) {
  Exception e("outer", Exception("inner"));
  Exception copy(e);
  std::unique_ptr<Exception> clone(e.Clone());
  EXPECT_EQ(copy.GetInnerException(), e.GetInnerException());
  EXPECT_EQ(clone->GetInnerException(), e.GetInnerException());
  Exception assigned;
  assigned = e;
  EXPECT_EQ(assigned.GetInnerException(), e.GetInnerException());
  EXPECT_STREQ(assigned.Why(), "outer");
}

TEST(Exception, CloneThroughBaseKeepsTheDerivedType) {
  StreamException stream("read past end");
  const Exception& base = stream;
  std::unique_ptr<Exception> clone(base.Clone());
  EXPECT_NE(dynamic_cast<StreamException*>(clone.get()), nullptr);
  EXPECT_STREQ(clone->Why(), "read past end");
  // Built empty, it still names itself.
  EXPECT_STREQ(StreamException().Why(), "StreamException");
}

TEST(Exception, DerivedClassesAddNoData) {
  EXPECT_EQ(sizeof(UnderflowError), sizeof(Exception));
  EXPECT_EQ(sizeof(StreamException), sizeof(Exception));
  EXPECT_EQ(sizeof(DeadlockException), sizeof(Exception));
}

TEST(Exception, IsNotAStandardException) {
  bool caughtAsException = false;
  try {
    try {
      throw CancelException("cancelled");
    } catch (const std::exception&) {
      FAIL() << "caught as std::exception";
    }
  } catch (const Exception& e) {
    caughtAsException = true;
    EXPECT_STREQ(e.Why(), "cancelled");
  }
  EXPECT_TRUE(caughtAsException);
}

TEST(Exception, CopiesMayDieOnOtherThreads) {
  Exception e("outer", Exception("inner"));
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([copy = e]() {
      for (int k = 0; k < 1000; ++k) {
        Exception again(copy);
        EXPECT_STREQ(again.RecursiveWhy(), "outer\ninner");
      }
    });
  }
  for (auto& t : threads) t.join();
  EXPECT_STREQ(e.RecursiveWhy(), "outer\ninner");
}

}  // namespace
