// Shared pieces of the audit trail tests: a trail subclass that opens the protected checksum,
// a user channel that records what the trail tells the user, and text helpers.
#ifndef ZENUTL_TESTS_AUDIT_AUDIT_TEST_SUPPORT_H_
#define ZENUTL_TESTS_AUDIT_AUDIT_TEST_SUPPORT_H_

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "zenutl/audit_trail.h"
#include "zenutl/user_comm.h"

namespace zenutl_test {

class InspectableTrail : public AuditTrail {
 public:
  using AuditTrail::AuditTrail;
  using AuditTrail::ComputeSessionSignature;
};

// Everything the trail says to the user, in order.
class RecordingUserComm : public UserComm {
 public:
  struct Message {
    std::string kind, text, title;
  };
  std::vector<Message>* messages;

  explicit RecordingUserComm(std::vector<Message>* sink) : messages(sink) {}
  int AskUserYesNo(const char*, const char*, const char*, int answer) override { return answer; }
  int AskUserYesNo(const char*, const char*, int answer) override { return answer; }
  int AskUserYesYesToAllNoNoToAllCancel(const char*, const char*, const char*,
                                        int answer) override {
    return answer;
  }
  int AskUserYesYesToAllCancel(const char*, const char*, const char*, int answer) override {
    return answer;
  }
  int AskUserYesCancel(const char*, const char*, const char*, int answer) override {
    return answer;
  }
  void FatalError(const char* text, const char* title) override {
    messages->push_back({"FatalError", text, title});
  }
  void InformUser(const char* text, const char* title, unsigned long) override {
    messages->push_back({"InformUser", text, title});
  }
};

// Installs a recording channel on this thread for the life of the object.
class UserCommRecorder {
 public:
  UserCommRecorder() : previous_(UserComm::SetUserComm(new RecordingUserComm(&messages))) {}
  ~UserCommRecorder() { delete UserComm::SetUserComm(previous_); }
  std::vector<RecordingUserComm::Message> messages;

 private:
  UserComm* previous_;
};

inline std::string SavedText(AuditTrail& trail) {
  std::ostringstream out;
  trail.Save(out);
  return out.str();
}

inline int CountOf(const std::string& text, const std::string& piece) {
  int count = 0;
  for (std::size_t at = text.find(piece); at != std::string::npos;
       at = text.find(piece, at + piece.size())) {
    ++count;
  }
  return count;
}

}  // namespace zenutl_test

#endif  // ZENUTL_TESTS_AUDIT_AUDIT_TEST_SUPPORT_H_
