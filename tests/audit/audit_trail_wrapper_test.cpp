#include "zenutl/audit_trail_wrapper.h"

#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "audit/audit_test_support.h"

namespace {

using zenutl_test::CountOf;
using zenutl_test::SavedText;

boost::shared_ptr<AuditTrail> OpenTrail() {
  boost::shared_ptr<AuditTrail> trail(new AuditTrail());
  trail->BeginSession();
  return trail;
}

TEST(AuditTrailWrapper, PoppedSubTrailBecomesOneEventWithNestedEvents) {
  AuditTrailWrapper wrapper(OpenTrail());
  wrapper.PushSubTrail();
  wrapper.AddEvent("step 1", "", nullptr);
  wrapper.AddEvent("step 2", "", nullptr);
  EXPECT_EQ(CountOf(SavedText(*wrapper.GetTrail()), "<Event "), 0);
  wrapper.PopSubTrail("Calibration", "");
  const std::string text = SavedText(*wrapper.GetTrail());
  EXPECT_TRUE(std::regex_search(
      text, std::regex("<Events><Event [^>]*>Calibration<Details/><Events><Event [^>]*>step "
                       "1<Details/></Event><Event [^>]*>step 2<Details/></Event></Events>"
                       "</Event></Events>")));
  EXPECT_EQ(CountOf(text, "<CheckSum"), 0);
}

TEST(AuditTrailWrapper, NestedPushesCarryBothLevels) {
  AuditTrailWrapper wrapper(OpenTrail());
  wrapper.PushSubTrail();
  wrapper.AddEvent("outer step", "", nullptr);
  wrapper.PushSubTrail();
  wrapper.AddEvent("inner step", "", nullptr);
  wrapper.PopSubTrail("inner", "");
  EXPECT_EQ(CountOf(SavedText(*wrapper.GetTrail()), "<Event "), 0);
  wrapper.PopSubTrail("outer", "d");
  const std::string text = SavedText(*wrapper.GetTrail());
  EXPECT_TRUE(std::regex_search(
      text, std::regex(">outer<Details>d</Details><Events><Event [^>]*>outer step<Details/>"
                       "</Event><Event [^>]*>inner<Details/><Events><Event [^>]*>inner step")));
}

TEST(AuditTrailWrapper, WithoutATrailNothingIsRecordedAndPopsDrop) {
  AuditTrailWrapper wrapper;
  EXPECT_FALSE(wrapper.IsTrailing());
  wrapper.PushSubTrail();
  wrapper.AddEvent("lost", "", nullptr);
  wrapper.PopSubTrail("lost too", "");
  boost::shared_ptr<AuditTrail> trail = OpenTrail();
  wrapper.SetTrail(trail);
  wrapper.PopSubTrail("plain", "");
  const std::string text = SavedText(*trail);
  EXPECT_EQ(CountOf(text, "<Event "), 1);
  EXPECT_NE(text.find(">plain<Details/></Event>"), std::string::npos);
}

TEST(AuditTrailWrapper, CopiesShareTheTrailButNotTheStack) {
  AuditTrailWrapper first(OpenTrail());
  AuditTrailWrapper second(first);
  first.PushSubTrail();
  second.AddEvent("direct", "", nullptr);
  first.AddEvent("nested", "", nullptr);
  first.PopSubTrail("group", "");
  EXPECT_EQ(first.GetTrail(), second.GetTrail());
  const std::string text = SavedText(*first.GetTrail());
  EXPECT_TRUE(std::regex_search(text, std::regex(">direct<Details/></Event><Event [^>]*>group")));
}

TEST(AuditTrailWrapper, GetTrailAndIsTrailingLookAtTheMainTrailOnly) {
  boost::shared_ptr<AuditTrail> trail(new AuditTrail("", "", nullptr));  // level 0
  AuditTrailWrapper wrapper(trail);
  wrapper.PushSubTrail();
  EXPECT_EQ(wrapper.GetTrail(), trail);
  EXPECT_FALSE(wrapper.IsTrailing());
  trail->GetAuditTrailSettings().SetLogEvents(-1);
  EXPECT_TRUE(wrapper.IsTrailing());
  EXPECT_FALSE(trail->GetAuditTrailSettings().GetLogEvents());
  wrapper.DiscardTrail();
  EXPECT_FALSE(wrapper.GetTrail());
}

TEST(AuditTrailWrapper, RefusedOuterEventLosesTheSubTrail) {
  boost::shared_ptr<AuditTrail> trail(new AuditTrail("", "", nullptr));  // level 0
  trail->BeginSession();
  AuditTrailWrapper wrapper(trail);
  wrapper.PushSubTrail();
  wrapper.AddEvent("recorded in the sub-trail", "", nullptr);
  wrapper.PopSubTrail("refused", "");
  EXPECT_EQ(CountOf(SavedText(*trail), "<Event "), 0);
}

TEST(AuditTrailWrapper, CreateNewTrailOpensAMemoryTrail) {
  AuditTrailWrapper wrapper;
  wrapper.CreateNewTrail(nullptr);
  ASSERT_TRUE(wrapper.GetTrail());
  EXPECT_TRUE(wrapper.IsTrailing());
  wrapper.AddEvent("first", "", nullptr);
  EXPECT_EQ(CountOf(SavedText(*wrapper.GetTrail()), "<Event "), 1);
}

class Instrument : public AuditTrailAble {
 public:
  void Measure() {
    if (IsTrailing()) AddEvent("measured", "", nullptr);
  }
};

TEST(AuditTrailAble, RecordsThroughItsOwnWrapper) {
  Instrument instrument;
  instrument.Measure();
  AuditTrailWrapper wrapper(OpenTrail());
  instrument.SetAuditTrailWrapper(wrapper);
  instrument.Measure();
  Instrument copy(instrument);
  copy.Measure();
  EXPECT_EQ(CountOf(SavedText(*wrapper.GetTrail()), ">measured<"), 2);
  EXPECT_EQ(instrument.GetAuditTrailWrapper()->GetTrail(), wrapper.GetTrail());
}

}  // namespace
