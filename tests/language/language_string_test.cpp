#include "zenutl/language_string.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "support/scoped_catalogue.h"
#include "zenutl/zn_string.h"

// Texts fetched by Get are kept for the whole process, so each test that loads its own texts
// uses numbers no other test asks for.
namespace {

using SelectedModule = zenutl_test::ScopedCatalogue;

TEST(LanguageString, BuiltInCatalogueAnswersEveryNumberTheLibraryUsesInItsFormat) {
  ASSERT_EQ(LanguageString::GetResourceInstance(), nullptr);
  for (unsigned int id = 17054; id <= 17093; ++id) {
    const bool unused = id == 17068 || id == 17069 || id == 17072 || id == 17073;
    EXPECT_EQ(*LanguageString::Get(id) == 0, unused) << id;
  }
  for (unsigned int id = 0x42BF; id <= 0x42C4; ++id) EXPECT_NE(*LanguageString::Get(id), 0) << id;
  EXPECT_STREQ(LanguageString::Get(0xF022), "The resource could not be loaded.");
  EXPECT_STREQ(LanguageString::Get(424242), "");
  // Each format takes exactly the arguments its callers pass, in order; texts shown without
  // formatting hold no conversion at all.
  EXPECT_STREQ(ZnString::Format(17058ul, "NAME", "SET"),
               "NAME cannot contain any of these characters: SET");
  EXPECT_STREQ(ZnString::Format(17065ul, "NAME", 8u), "NAME cannot be longer than 8 characters.");
  EXPECT_STREQ(ZnString::Format(17081ul, "/p"),
               "The folder /p does not exist. Do you want to create it?");
  for (unsigned int id :
       {17054u, 17055u, 17056u, 17078u, 17080u, 17082u, 17083u, 17084u, 17085u, 17086u, 0xF022u}) {
    EXPECT_EQ(std::strchr(LanguageString::Get(id), '%'), nullptr) << id;
  }
}

TEST(LanguageString, ReturnsTheSamePointerForeverAndKeepsTheOldLanguage) {
  zenutl_test::TempDir dir;
  const char* first = nullptr;
  {
    SelectedModule english(dir.File("en.txt"), "string 910001 Save\nstring 910002 Open\n");
    first = LanguageString::Get(910001);
    EXPECT_STREQ(first, "Save");
    EXPECT_EQ(LanguageString::Get(910001), first);
  }
  {
    SelectedModule swedish(dir.File("sv.txt"), "string 910001 Spara\nstring 910003 Stäng\n");
    // Loaded before the change: the old language stays, at the same address.
    EXPECT_EQ(LanguageString::Get(910001), first);
    EXPECT_STREQ(first, "Save");
    EXPECT_STREQ(LanguageString::Get(910003), "Stäng");
    EXPECT_STREQ(LanguageString::Get(910002), "");
  }
  // The modules are freed; what Get handed out stays valid.
  EXPECT_STREQ(first, "Save");
  EXPECT_STREQ(LanguageString::Get(910003), "Stäng");
}

TEST(LanguageString, CutsTextsAt1023Characters) {
  zenutl_test::TempDir dir;
  SelectedModule module(dir.File("long.txt"), "string 910101 " + std::string(5000, 'x') +
                                                  "\nstring 910102 " + std::string(1023, 'y') +
                                                  "\n");
  EXPECT_EQ(std::string(LanguageString::Get(910101)), std::string(1023, 'x'));
  EXPECT_EQ(std::string(LanguageString::Get(910102)), std::string(1023, 'y'));
}

TEST(LanguageString, GetIsSafeFromManyThreadsAtOnce) {
  zenutl_test::TempDir dir;
  std::string entries;
  const unsigned int kFirst = 920000;
  const unsigned int kCount = 200;
  for (unsigned int id = kFirst; id < kFirst + kCount; ++id) {
    entries += "string " + std::to_string(id) + " text " + std::to_string(id) + "\n";
  }
  SelectedModule module(dir.File("many.txt"), entries);

  const int kThreads = 8;
  std::vector<std::vector<const char*> > seen(kThreads, std::vector<const char*>(kCount));
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&seen, t, kFirst, kCount] {
      // Every thread walks the numbers from a different starting point.
      for (unsigned int n = 0; n < kCount; ++n) {
        const unsigned int index = (n + static_cast<unsigned int>(t) * 37) % kCount;
        seen[t][index] = LanguageString::Get(kFirst + index);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (unsigned int index = 0; index < kCount; ++index) {
    SCOPED_TRACE(index);
    EXPECT_EQ(std::string(seen[0][index]), "text " + std::to_string(kFirst + index));
    for (int t = 1; t < kThreads; ++t) EXPECT_EQ(seen[t][index], seen[0][index]);
  }
}

// The registry of tables is process-wide. Every test below leaves it as it found it: no
// registry at all, which the last table to go guarantees.
class LanguageStringVector : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(ZnLanguageStringSubject::Peek(), nullptr); }
  void TearDown() override { EXPECT_EQ(ZnLanguageStringSubject::Peek(), nullptr); }
};

TEST_F(LanguageStringVector, StaysEmptyUntilInitializeThenHoldsCopies) {
  ZnLanguageStringVector table(17057, -1, -2, 0);
  ASSERT_EQ(table.GetSize(), 3);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(table[i], nullptr);

  ZnLanguageStringVector::Initialize();
  ZnLanguageStringVector::Initialize();  // refills, freeing the first copies
  EXPECT_STREQ(table[0], LanguageString::Get(17057));
  EXPECT_NE(table[0], LanguageString::Get(17057)) << "an entry is the table's own copy";
  EXPECT_EQ(table[1], nullptr);
  ASSERT_NE(table[2], nullptr);
  EXPECT_STREQ(table[2], "");

  const char** asArray = table;
  char** asMutable = table;
  EXPECT_EQ(asArray[0], table[0]);
  EXPECT_EQ(asMutable[2], table[2]);
}

TEST_F(LanguageStringVector, TableMadeAfterInitializeIsFilledAtOnce) {
  ZnLanguageStringVector early(17055, 0);
  ZnLanguageStringVector::Initialize();
  ZnLanguageStringVector late(17058, 17059, 0);
  EXPECT_STREQ(late[0], LanguageString::Get(17058));
  EXPECT_STREQ(late[1], LanguageString::Get(17059));
}

TEST_F(LanguageStringVector, FirstIdentifierIsTakenEvenWhenZero) {
  zenutl_test::TempDir dir;
  SelectedModule module(dir.File("zero.txt"), "string 0 string zero\nstring 930001 after\n");
  ZnLanguageStringVector table(0, 930001, 0, 17057);
  ASSERT_EQ(table.GetSize(), 2);
  ZnLanguageStringVector::Initialize();
  EXPECT_STREQ(table[0], "string zero");
  EXPECT_STREQ(table[1], "after");
}

TEST_F(LanguageStringVector, RegistryCountsTablesAndGoesWithTheLast) {
  auto first = std::make_unique<ZnLanguageStringVector>(17054u, 0);
  ZnLanguageStringSubject* subject = ZnLanguageStringSubject::Peek();
  ASSERT_NE(subject, nullptr);
  {
    ZnLanguageStringVector second(17055, 0);
    EXPECT_EQ(subject->GetReferenceCount(), 2);
  }
  EXPECT_FALSE(subject->IsInitialized());
  ZnLanguageStringVector::Initialize();
  EXPECT_TRUE(subject->IsInitialized());
  EXPECT_EQ(subject->GetReferenceCount(), 1);
  first.reset();
  EXPECT_EQ(ZnLanguageStringSubject::Peek(), nullptr);
  // A table made now starts a fresh registry that waits for the next Initialize.
  ZnLanguageStringVector afterwards(17054, 0);
  EXPECT_EQ(afterwards[0], nullptr);
}

TEST_F(LanguageStringVector, InitializeWithoutTablesIsRememberedForLaterTables) {
  ZnLanguageStringVector::Initialize();
  ASSERT_NE(ZnLanguageStringSubject::Peek(), nullptr);
  EXPECT_EQ(ZnLanguageStringSubject::Peek()->GetReferenceCount(), 0);
  ZnLanguageStringVector table(17061, 0);
  EXPECT_STREQ(table[0], LanguageString::Get(17061));
}

TEST_F(LanguageStringVector, DisconnectedTableStillLeavesTheRegistryWhenDestroyed) {
  ZnLanguageStringVector keeper(17054, 0);
  {
    auto table = std::make_unique<ZnLanguageStringVector>(17055u, 0);
    table->Disconnect();
    table.reset();
  }
  // Initialize must not reach the destroyed table (the address checker would catch it).
  ZnLanguageStringVector::Initialize();
  EXPECT_EQ(ZnLanguageStringSubject::Peek()->GetReferenceCount(), 1);
  keeper.Connect(ZnLanguageStringSubject::Peek());
  EXPECT_STREQ(keeper[0], LanguageString::Get(17054));
}

}  // namespace
