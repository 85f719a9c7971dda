// Environment variables set for one scope, and the time zone as the C library sees it.
#ifndef ZENUTL_TESTS_SUPPORT_SCOPED_ENVIRONMENT_H_
#define ZENUTL_TESTS_SUPPORT_SCOPED_ENVIRONMENT_H_

#include <stdlib.h>
#include <time.h>

#include <string>

namespace zenutl_test {

// Sets (or, with null, removes) a variable and puts the previous state back afterwards.
class ScopedEnvironmentVariable {
 public:
  ScopedEnvironmentVariable(const char* name, const char* value) : name_(name) {
    const char* previous = getenv(name);
    hadPrevious_ = previous != nullptr;
    if (hadPrevious_) previous_ = previous;
    value ? setenv(name, value, 1) : unsetenv(name);
  }
  ~ScopedEnvironmentVariable() {
    hadPrevious_ ? setenv(name_.c_str(), previous_.c_str(), 1) : unsetenv(name_.c_str());
  }
  ScopedEnvironmentVariable(const ScopedEnvironmentVariable&) = delete;
  ScopedEnvironmentVariable& operator=(const ScopedEnvironmentVariable&) = delete;

 private:
  std::string name_;
  bool hadPrevious_ = false;
  std::string previous_;
};

// TZ for one scope, with tzset called on the way in and again once TZ is restored.
class ScopedTimeZone {
 public:
  explicit ScopedTimeZone(const char* zone) : variable_("TZ", zone) { tzset(); }

 private:
  struct TzsetOnExit {
    ~TzsetOnExit() { tzset(); }
  } tzsetOnExit_;  // destroyed after variable_
  ScopedEnvironmentVariable variable_;
};

}  // namespace zenutl_test

#endif  // ZENUTL_TESTS_SUPPORT_SCOPED_ENVIRONMENT_H_
