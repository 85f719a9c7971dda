#include "zenutl/user_comm.h"

#include <gtest/gtest.h>

#include <atomic>
#include <boost/thread/barrier.hpp>
#include <boost/thread/thread.hpp>
#include <memory>

#include "support/child_process.h"
#include "zenutl/mute_user_comm.h"

namespace {

// A channel that knows its owner and counts its deletions.
class TracedComm : public MuteUserComm {
 public:
  static std::atomic<int> sLive;
  explicit TracedComm(int owner = -1, std::atomic<int>* deletions = nullptr)
      : owner(owner), deletions(deletions) {
    ++sLive;
  }
  ~TracedComm() override {
    --sLive;
    if (deletions) ++*deletions;
  }
  const int owner;
  std::atomic<int>* const deletions;
};
std::atomic<int> TracedComm::sLive(0);

template <typename Body>
void OnNewThread(Body body) {
  boost::thread(body).join();
}

bool IsTraced(UserComm* comm) {
  return dynamic_cast<TracedComm*>(comm) != nullptr;
}

TEST(UserComm, EachNewThreadGetsAMuteChannelOfItsOwnAndKeepsIt) {
  UserComm* first = nullptr;
  UserComm* inner = nullptr;
  OnNewThread([&] {
    first = UserComm::GetUserComm();
    EXPECT_NE(dynamic_cast<MuteUserComm*>(first), nullptr);
    OnNewThread([&] { inner = UserComm::GetUserComm(); });
    EXPECT_EQ(UserComm::GetUserComm(), first);
  });
  EXPECT_NE(inner, first);
}

TEST(UserComm, TheThreadDeletesWhatItHoldsAndTheCallerWhatItTookBack) {
  std::atomic<int> oldDeleted(0), workDeleted(0);
  TracedComm* work = new TracedComm(2, &workDeleted);
  UserComm* returned = nullptr;
  OnNewThread([&] {
    EXPECT_EQ(UserComm::SetUserComm(new TracedComm(1, &oldDeleted)), nullptr);
    UserComm* old = UserComm::GetUserComm();
    // Setting the present channel again hands nothing out: it stays the thread's alone.
    EXPECT_EQ(UserComm::SetUserComm(old), nullptr);
    EXPECT_EQ(UserComm::GetUserComm(), old);
    EXPECT_EQ(UserComm::SetUserComm(work), old);
    EXPECT_EQ(UserComm::GetUserComm(), work);
    returned = UserComm::SetUserComm(old);
    // Without a channel, the next Get makes a fresh default one.
    EXPECT_EQ(UserComm::SetUserComm(nullptr), old);
    EXPECT_EQ(UserComm::SetUserComm(nullptr), nullptr);
    EXPECT_FALSE(IsTraced(UserComm::GetUserComm()));
    delete UserComm::SetUserComm(old);
  });
  EXPECT_EQ(returned, work);
  EXPECT_EQ(oldDeleted, 1);
  EXPECT_EQ(workDeleted, 0);
  delete work;
}

TEST(UserComm, ThreadsWorkingAtOnceEachSeeOnlyTheirOwnChannel) {
  const int kThreads = 8;
  std::atomic<int> deletions(0), mismatches(0);
  boost::barrier allInstalled(kThreads);
  boost::thread_group threads;
  for (int id = 0; id < kThreads; ++id) {
    threads.create_thread([&, id] {
      UserComm::SetUserComm(new TracedComm(id, &deletions));
      allInstalled.wait();
      for (int round = 0; round < 2000; ++round) {
        const TracedComm* comm = dynamic_cast<TracedComm*>(UserComm::GetUserComm());
        if (comm == nullptr || comm->owner != id) ++mismatches;
        if (round % 500 == 0) {  // a channel just around a piece of work, then the old one back
          TracedComm temporary(100 + id);
          UserComm* previous = UserComm::SetUserComm(&temporary);
          if (UserComm::GetUserComm() != &temporary) ++mismatches;
          if (UserComm::SetUserComm(previous) != &temporary) ++mismatches;
        }
      }
    });
  }
  threads.join_all();
  EXPECT_EQ(mismatches, 0);
  EXPECT_EQ(deletions, kThreads);
}

TEST(UserComm, DefaultTypeChangesTheCallerAndNewThreadsButNotOthers) {
  // The default type is process-wide, so this runs in a process of its own.
  zenutl_test::ExpectPassesInChild([] {
    boost::barrier ready(2), changed(2);
    bool otherKept = false;
    boost::thread other([&] {
      UserComm* before = UserComm::GetUserComm();
      ready.wait();
      changed.wait();
      otherKept = UserComm::GetUserComm() == before && !IsTraced(before);
    });
    ready.wait();
    UserComm* mine = UserComm::GetUserComm();
    std::unique_ptr<UserComm> previous(UserComm::SetDefaultUserCommType<TracedComm>());
    EXPECT_EQ(previous.get(), mine);
    EXPECT_TRUE(IsTraced(UserComm::GetUserComm()));
    changed.wait();
    other.join();
    EXPECT_TRUE(otherKept);
    OnNewThread([] { EXPECT_TRUE(IsTraced(UserComm::GetUserComm())); });
    EXPECT_EQ(TracedComm::sLive, 1);
    delete UserComm::SetDefaultUserCommType<MuteUserComm>();
    EXPECT_EQ(TracedComm::sLive, 0);
  });
}

TEST(MuteUserComm, AnswersEveryQuestionWithTheDefault) {
  MuteUserComm mute;
  UserComm& comm = mute;
  for (int answer : {-1, 0, 2, 42}) {
    EXPECT_EQ(comm.AskUserYesNo("Q", "I", "T", answer), answer);
    EXPECT_EQ(comm.AskUserYesNo("Q", "T", answer), answer);
    EXPECT_EQ(comm.AskUserYesYesToAllNoNoToAllCancel("Q", "I", "T", answer), answer);
    EXPECT_EQ(comm.AskUserYesYesToAllCancel(nullptr, nullptr, nullptr, answer), answer);
    EXPECT_EQ(comm.AskUserYesCancel("Q", "I", "T", answer), answer);
  }
}

}  // namespace
