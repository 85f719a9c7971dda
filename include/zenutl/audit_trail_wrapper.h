// AuditTrailWrapper and AuditTrailAble: how application objects hold an audit trail.
//
// A wrapper is a counted handle on one trail plus a stack of sub-trails. A long operation
// pushes a sub-trail, its steps record events there, and when it pops, the whole sub-trail
// becomes one event, with the steps nested inside it, in the trail underneath. Copies of a
// wrapper share the trail and the sub-trails on the stack at the time of the copy, and then
// push and pop on their own.
//
// Nothing here reports errors: events that the trail does not take are dropped, as in
// AuditTrail::AddEvent. A wrapper is used from one thread at a time.
#ifndef ZENUTL_AUDIT_TRAIL_WRAPPER_H_
#define ZENUTL_AUDIT_TRAIL_WRAPPER_H_

#include <boost/shared_ptr.hpp>
#include <deque>

#include "zenutl/audit_trail.h"

class ConfigurationSection;

class AuditTrailWrapper {
 public:
  AuditTrailWrapper() = default;
  explicit AuditTrailWrapper(boost::shared_ptr<AuditTrail> trail) : mTrail(trail) {}

  // Makes a new memory-only trail with `section` the trail, and opens its session.
  void CreateNewTrail(ConfigurationSection* section);
  // Replaces the main trail; the stack of sub-trails stays.
  void SetTrail(boost::shared_ptr<AuditTrail> trail) { mTrail = trail; }
  // The main trail, never a sub-trail.
  boost::shared_ptr<AuditTrail> GetTrail() { return mTrail; }
  void DiscardTrail() { mTrail.reset(); }
  // A trail is there and its log level is not 0 (a negative level counts as trailing).
  bool IsTrailing() const;

  // Starts a memory-only sub-trail on top of the stack; works without a main trail.
  void PushSubTrail();
  // Records `message` and `details` as one event, with the top sub-trail's events nested in
  // it, into the sub-trail below or the main trail. With nothing pushed, a plain event.
  void PopSubTrail(const char* message, const char* details);
  // To the top sub-trail, or the main trail when nothing is pushed; nothing without a main
  // trail.
  void AddEvent(const char* message, const char* details, AuditTrail* subTrail);

 private:
  boost::shared_ptr<AuditTrail> mTrail;
  std::deque<boost::shared_ptr<AuditTrail> > mSubTrails;
};

// Mixin for application classes that record events through their own wrapper.
class AuditTrailAble {
 public:
  AuditTrailAble() = default;
  AuditTrailAble(const AuditTrailAble&) = default;
  AuditTrailAble& operator=(const AuditTrailAble&) = default;
  ~AuditTrailAble() = default;

  AuditTrailWrapper* GetAuditTrailWrapper() { return &mAuditTrailWrapper; }
  // Takes the handle and the stack of `wrapper`.
  void SetAuditTrailWrapper(AuditTrailWrapper& wrapper) { mAuditTrailWrapper = wrapper; }

 protected:
  void AddEvent(const char* message, const char* details, AuditTrail* subTrail) {
    mAuditTrailWrapper.AddEvent(message, details, subTrail);
  }
  bool IsTrailing() { return mAuditTrailWrapper.IsTrailing(); }

 private:
  AuditTrailWrapper mAuditTrailWrapper;
};

#endif  // ZENUTL_AUDIT_TRAIL_WRAPPER_H_
