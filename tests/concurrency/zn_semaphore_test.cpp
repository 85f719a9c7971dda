#include "zenutl/zn_semaphore.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <boost/filesystem.hpp>
#include <climits>
#include <cstdlib>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/semaphore_slots.h"
#include "support/child_process.h"
#include "support/exception_matchers.h"
#include "support/temp_dir.h"

namespace {

using zenutl::platform::SemaphoreFileName;

// Another process that opens the semaphore, tries to take a place, says whether it got one, and
// keeps it until this object goes or kills it.
class Holder {
 public:
  Holder(long places, const std::string& name) {
    int result[2], release[2];
    if (::pipe(result) != 0 || ::pipe(release) != 0) std::abort();
    std::fflush(nullptr);
    mPid = ::fork();
    if (mPid == 0) {
      ::close(result[0]);
      ::close(release[1]);
      // Other holders' children must see their parent let go, not wait for this one too.
      for (int other : OpenReleaseEnds()) ::close(other);
      char locked = 'x';
      try {
        ZnSemaphore semaphore;
        semaphore.Init(places, name.c_str());
        locked = semaphore.Lock() ? 'y' : 'n';
        (void)!::write(result[1], &locked, 1);
        char ignored;
        (void)!::read(release[0], &ignored, 1);  // until the parent lets go
      } catch (...) {
        (void)!::write(result[1], &locked, 1);
      }
      ::_exit(0);
    }
    ::close(result[1]);
    ::close(release[0]);
    mRelease = release[1];
    OpenReleaseEnds().insert(mRelease);
    // Generous: the machine may be busy, and a child that hangs must not hang the test.
    pollfd ready = {result[0], POLLIN, 0};
    char answer = 'x';
    if (::poll(&ready, 1, 60000) == 1) (void)!::read(result[0], &answer, 1);
    ::close(result[0]);
    mAnswer = answer;
  }
  ~Holder() {
    OpenReleaseEnds().erase(mRelease);
    ::close(mRelease);
    ::waitpid(mPid, nullptr, 0);
  }
  Holder(const Holder&) = delete;
  Holder& operator=(const Holder&) = delete;

  bool Locked() const { return mAnswer == 'y'; }
  bool Refused() const { return mAnswer == 'n'; }
  static std::set<int>& OpenReleaseEnds() {
    static std::set<int> ends;
    return ends;
  }

  void Kill() {
    ::kill(mPid, SIGKILL);
    ::waitpid(mPid, nullptr, 0);
    mPid = -1;
  }

 private:
  pid_t mPid;
  int mRelease;
  char mAnswer;
};

// Each test gets a runtime folder of its own, so that tests running side by side never share
// a semaphore.
class ZnSemaphoreTest : public zenutl_test::TempDirTest {
 protected:
  void SetUp() override {
    boost::filesystem::permissions(Dir(), boost::filesystem::owner_all);
    ::setenv("XDG_RUNTIME_DIR", Dir().c_str(), 1);
  }
  void TearDown() override { ::unsetenv("XDG_RUNTIME_DIR"); }
};

// A failed Init leaves the object uninitialised; a semaphore out of reach tells why inside.
TEST_F(ZnSemaphoreTest, InitFailuresSayWhatWentWrong) {
  zenutl_test::WriteWholeFile(File("zenutl"), "not a folder");  // where the lock files would go
  const struct {
    long places;
    const char* why;
  } rows[] = {{0, "ZnSemaphore: Zero users"},
              {-1, "ZnSemaphore: Zero users"},
              {LONG_MIN, "ZnSemaphore: Zero users"},
              {1, "Unknown exception when initialising ZnSemaphore"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.places);
    ZnSemaphore semaphore;
    EXPECT_THROW_WHY(semaphore.Init(row.places, "Seats"), Exception, row.why);
    EXPECT_THROW_WHY(semaphore.Lock(), Exception, "ZnSemaphore is not Initialised");
    EXPECT_FALSE(semaphore.UnLock());
  }
  try {
    ZnSemaphore().Init(1, "Seats");
  } catch (const Exception& e) {
    ASSERT_NE(e.GetInnerException(), nullptr);
    EXPECT_NE(std::string(e.GetInnerException()->Why()).find(File("zenutl")), std::string::npos);
  }
}

// N holders in other processes; the next is refused at once, and a place comes free as soon as
// a holder's process ends, normally or killed.
TEST_F(ZnSemaphoreTest, HoldersInOtherProcessesFreeTheirPlacesHoweverTheyEnd) {
  std::vector<std::unique_ptr<Holder>> holders;
  for (int i = 0; i < 3; ++i) {
    holders.emplace_back(new Holder(3, "Seats"));
    EXPECT_TRUE(holders.back()->Locked()) << i;
  }
  EXPECT_TRUE(Holder(3, "Seats").Refused());
  ZnSemaphore here;
  here.Init(3, "Seats");
  EXPECT_FALSE(here.Lock());
  holders.pop_back();  // that process ends normally
  EXPECT_TRUE(here.Lock());
  EXPECT_TRUE(Holder(3, "Seats").Refused());
  holders.back()->Kill();
  EXPECT_TRUE(Holder(3, "Seats").Locked());
}

TEST_F(ZnSemaphoreTest, ObjectsInOneProcessAreHoldersEachHoldingOnePlaceAtMost) {
  ZnSemaphore a, b, c;
  for (ZnSemaphore* s : {&a, &b, &c}) s->Init(2, "Seats");
  EXPECT_TRUE(a.Lock());
  EXPECT_TRUE(a.Lock());  // no second place
  EXPECT_TRUE(b.Lock());
  EXPECT_FALSE(c.Lock());
  EXPECT_TRUE(c.UnLock());  // holding nothing
  EXPECT_FALSE(c.Lock());
  EXPECT_TRUE(a.UnLock());
  EXPECT_TRUE(c.Lock());
  EXPECT_FALSE(a.Lock());
}

// Like a Windows semaphore, the first to open the name sets the number of places, and when
// everyone has gone the next one starts afresh: nothing is left over from earlier runs.
TEST_F(ZnSemaphoreTest, TheFirstOpenerSetsThePlacesUntilEveryoneHasGone) {
  {
    Holder first(1, "Seats");
    ASSERT_TRUE(first.Locked());
    ZnSemaphore later;
    later.Init(5, "Seats");
    EXPECT_FALSE(later.Lock());
  }
  std::vector<std::unique_ptr<Holder>> holders;
  for (int i = 0; i < 2; ++i) holders.emplace_back(new Holder(2, "Seats"));
  EXPECT_TRUE(holders[0]->Locked() && holders[1]->Locked());
  EXPECT_TRUE(Holder(7, "Seats").Refused());
}

TEST_F(ZnSemaphoreTest, AnyNameReachesTheSameSemaphoreFromAnotherProcess) {
  const std::string longName(300, 'n');
  const struct {
    std::string there, here;
    bool same;
  } rows[] = {
      {"with blanks", "with blanks", true},
      {"a/b", "a/b", true},
      {"C:\\data\\set", "C:\\data\\set", true},
      {"Sätze €", "Sätze €", true},
      {"Local\\Seats", "Seats", true},
      {longName, longName, true},
      {"Seats", "seats", false},
      {"a/b", "a%2Fb", false},
      {longName, longName + "m", false},
      {longName + "m", longName + "n", false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.there + " / " + row.here);
    Holder there(1, row.there);
    ASSERT_TRUE(there.Locked());
    ZnSemaphore here;
    here.Init(1, row.here.c_str());
    EXPECT_EQ(here.Lock(), !row.same);
  }
}

TEST(SemaphoreFileName, IsAValidFileNameDifferentForEachName) {
  const std::string names[] = {"",
                               "Seats",
                               "seats",
                               ".",
                               "..",
                               "a/b",
                               "a%2Fb",
                               "a b",
                               "C:\\x",
                               "\xC3\xA9",
                               "~",
                               "%7E",
                               std::string(1000, 'x'),
                               std::string(1000, 'x') + "y",
                               std::string(300, '/')};
  std::set<std::string> seen;
  for (const std::string& name : names) {
    SCOPED_TRACE(name);
    const std::string file = SemaphoreFileName(name);
    EXPECT_EQ(file, SemaphoreFileName(name));
    EXPECT_TRUE(seen.insert(file).second);
    EXPECT_LE(file.size(), 255u);
    EXPECT_EQ(file.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                     "0123456789-_.%~"),
              std::string::npos);
    EXPECT_EQ(file.compare(0, 10, "semaphore-"), 0);
  }
  EXPECT_EQ(SemaphoreFileName("C:/data set"), "semaphore-C%3A%2Fdata%20set");
  EXPECT_EQ(SemaphoreFileName("Local\\Users"), SemaphoreFileName("Users"));
}

// A copy is the same holder: either can take the place, and destroying either gives it back.
TEST_F(ZnSemaphoreTest, CopiesShareTheirHolder) {
  ZnSemaphore original, other;
  original.Init(1, "Seats");
  other.Init(1, "Seats");
  {
    ZnSemaphore copy(original);
    EXPECT_TRUE(copy.Lock());
    EXPECT_TRUE(original.Lock());
    EXPECT_FALSE(other.Lock());
  }
  EXPECT_TRUE(other.Lock());
  ZnSemaphore assigned;
  assigned = other;
  EXPECT_TRUE(assigned.UnLock());
  EXPECT_TRUE(original.Lock());
}

TEST_F(ZnSemaphoreTest, UnnamedSemaphoresBelongToTheirObjectAlone) {
  for (const char* name : {static_cast<const char*>(nullptr), ""}) {
    ZnSemaphore a, b;
    a.Init(1, name);
    b.Init(1, name);
    EXPECT_TRUE(a.Lock());
    EXPECT_TRUE(b.Lock());
  }
}

// Without a usable XDG_RUNTIME_DIR the files go to a private folder in /tmp.
TEST_F(ZnSemaphoreTest, FallsBackToAPrivateFolderInTmp) {
  const std::string folder = "/tmp/zenutl-" + std::to_string(::geteuid());
  const std::string name = "fallback-" + std::to_string(::getpid());
  zenutl_test::ExpectPassesInChild([&] {
    for (const char* runtime : {static_cast<const char*>(nullptr), "relative", "/proc"}) {
      if (runtime != nullptr) {
        ::setenv("XDG_RUNTIME_DIR", runtime, 1);
      } else {
        ::unsetenv("XDG_RUNTIME_DIR");
      }
      ZnSemaphore semaphore;
      semaphore.Init(1, name.c_str());
      struct stat status;
      ASSERT_EQ(::stat(folder.c_str(), &status), 0);
      EXPECT_EQ(status.st_mode & 0777, 0700u);
      EXPECT_TRUE(boost::filesystem::exists(folder + "/" + SemaphoreFileName(name)));
    }
  });
  boost::filesystem::remove(folder + "/" + SemaphoreFileName(name));
}

}  // namespace
