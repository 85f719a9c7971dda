#include "zenutl/user_comm.h"

#include <gtest/gtest.h>

#include <atomic>
#include <boost/thread/barrier.hpp>
#include <boost/thread/thread.hpp>
#include <memory>
#include <vector>

#include "support/child_process.h"
#include "zenutl/mute_user_comm.h"

namespace {

using zenutl_test::ExpectPassesInChild;

// A channel that counts its instances and knows its owner's name; answers like MuteUserComm.
class TracedComm : public MuteUserComm {
 public:
  static std::atomic<int> sLive;
  TracedComm() : TracedComm(-1) {}
  explicit TracedComm(int owner, std::atomic<int>* deletions = nullptr)
      : mOwner(owner), mDeletions(deletions) {
    ++sLive;
  }
  ~TracedComm() override {
    --sLive;
    if (mDeletions) ++*mDeletions;
  }
  int Owner() const { return mOwner; }

 private:
  int mOwner;
  std::atomic<int>* mDeletions;
};
std::atomic<int> TracedComm::sLive(0);

// Runs `body` on a thread of its own and waits for the thread to end.
template <typename Body>
void OnNewThread(Body body) {
  boost::thread thread(body);
  thread.join();
}

TEST(UserComm, NewThreadGetsItsOwnMuteChannelAndKeepsIt) {
  UserComm* first = nullptr;
  UserComm* other = nullptr;
  OnNewThread([&] {
    first = UserComm::GetUserComm();
    EXPECT_NE(dynamic_cast<MuteUserComm*>(first), nullptr);
    EXPECT_EQ(UserComm::GetUserComm(), first);
    OnNewThread([&] { other = UserComm::GetUserComm(); });
    // Still alive: the inner thread's channel went with its thread, this one is still ours.
    EXPECT_EQ(UserComm::GetUserComm(), first);
  });
  EXPECT_NE(other, nullptr);
  EXPECT_NE(other, first);
}

TEST(UserComm, ChannelTakenBackBelongsToTheCallerAndTheInstalledOneToTheThread) {
  std::atomic<int> oldDeleted(0);
  std::atomic<int> workDeleted(0);
  UserComm* returned = nullptr;
  TracedComm* work = new TracedComm(2, &workDeleted);
  OnNewThread([&] {
    EXPECT_EQ(UserComm::SetUserComm(new TracedComm(1, &oldDeleted)), nullptr);
    UserComm* old = UserComm::GetUserComm();
    EXPECT_EQ(UserComm::SetUserComm(work), old);
    EXPECT_EQ(UserComm::GetUserComm(), work);
    returned = UserComm::SetUserComm(old);
    EXPECT_EQ(UserComm::GetUserComm(), old);
  });
  EXPECT_EQ(returned, work);
  EXPECT_EQ(oldDeleted, 1);
  EXPECT_EQ(workDeleted, 0);
  delete work;
  EXPECT_EQ(workDeleted, 1);
}

TEST(UserComm, SettingNullLeavesTheThreadWithoutAChannelUntilTheNextGet) {
  std::atomic<int> deleted(0);
  OnNewThread([&] {
    TracedComm* mine = new TracedComm(1, &deleted);
    UserComm::SetUserComm(mine);
    EXPECT_EQ(UserComm::SetUserComm(nullptr), mine);
    EXPECT_EQ(UserComm::SetUserComm(nullptr), nullptr);
    delete mine;
    UserComm* fresh = UserComm::GetUserComm();
    EXPECT_NE(dynamic_cast<MuteUserComm*>(fresh), nullptr);
    EXPECT_EQ(dynamic_cast<TracedComm*>(fresh), nullptr);
  });
  EXPECT_EQ(deleted, 1);
}

TEST(UserComm, ThreadsWorkingAtOnceEachSeeOnlyTheirOwnChannel) {
  const int kThreads = 8;
  std::atomic<int> deletions(0);
  std::atomic<int> mismatches(0);
  boost::barrier allInstalled(kThreads);
  boost::thread_group threads;
  for (int id = 0; id < kThreads; ++id) {
    threads.create_thread([&, id] {
      UserComm::SetUserComm(new TracedComm(id, &deletions));
      allInstalled.wait();
      for (int round = 0; round < 2000; ++round) {
        const TracedComm* comm = dynamic_cast<TracedComm*>(UserComm::GetUserComm());
        if (comm == nullptr || comm->Owner() != id) ++mismatches;
        if (round % 500 == 0) {
          // Swap in a temporary channel and back, as code does around a piece of work.
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
  ExpectPassesInChild([] {
    boost::barrier ready(2);
    boost::barrier changed(2);
    bool otherKeptMute = false;
    boost::thread other([&] {
      UserComm* before = UserComm::GetUserComm();
      ready.wait();
      changed.wait();
      otherKeptMute = UserComm::GetUserComm() == before &&
                      dynamic_cast<TracedComm*>(UserComm::GetUserComm()) == nullptr;
    });
    ready.wait();
    UserComm* mine = UserComm::GetUserComm();
    const int liveBefore = TracedComm::sLive;
    std::unique_ptr<UserComm> previous(UserComm::SetDefaultUserCommType<TracedComm>());
    EXPECT_EQ(previous.get(), mine);
    EXPECT_EQ(TracedComm::sLive, liveBefore + 1);
    EXPECT_NE(dynamic_cast<TracedComm*>(UserComm::GetUserComm()), nullptr);
    changed.wait();
    other.join();
    EXPECT_TRUE(otherKeptMute);

    OnNewThread([] { EXPECT_NE(dynamic_cast<TracedComm*>(UserComm::GetUserComm()), nullptr); });
    EXPECT_EQ(TracedComm::sLive, liveBefore + 1);

    delete UserComm::SetDefaultUserCommType<MuteUserComm>();
    EXPECT_EQ(TracedComm::sLive, liveBefore);
    OnNewThread([] { EXPECT_EQ(dynamic_cast<TracedComm*>(UserComm::GetUserComm()), nullptr); });
  });
}

TEST(MuteUserComm, AnswersEveryQuestionWithTheDefault) {
  MuteUserComm mute;
  UserComm& comm = mute;
  for (int answer : {-1, 0, 1, 2, 5, 42}) {
    SCOPED_TRACE(answer);
    EXPECT_EQ(comm.AskUserYesNo("Q", "I", "T", answer), answer);
    EXPECT_EQ(comm.AskUserYesNo("Q", "T", answer), answer);
    EXPECT_EQ(comm.AskUserYesYesToAllNoNoToAllCancel("Q", "I", "T", answer), answer);
    EXPECT_EQ(comm.AskUserYesYesToAllCancel(nullptr, nullptr, nullptr, answer), answer);
    EXPECT_EQ(comm.AskUserYesCancel("Q", "I", "T", answer), answer);
  }
}

}  // namespace
