// Initialises Xerces-C once for a test program that includes this header, and terminates it
// after the last test.
#ifndef ZENUTL_TESTS_CONFIG_XERCES_ENVIRONMENT_H_
#define ZENUTL_TESTS_CONFIG_XERCES_ENVIRONMENT_H_

#include <gtest/gtest.h>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLString.hpp>

#include <string>

namespace zenutl_test {

class XercesEnvironment : public ::testing::Environment {
 public:
  void SetUp() override { xercesc::XMLPlatformUtils::Initialize(); }
  void TearDown() override { xercesc::XMLPlatformUtils::Terminate(); }
};

static ::testing::Environment* const kXercesEnvironment =
    ::testing::AddGlobalTestEnvironment(new XercesEnvironment);

// A Xerces string as std::string, for assertions on ASCII names and values.
inline std::string Narrow(const XMLCh* text) {
  std::string result;
  for (; text && *text; ++text) result.push_back(static_cast<char>(*text));
  return result;
}

// An ASCII text as a Xerces string.
inline std::u16string Wide(const std::string& text) {
  return std::u16string(text.begin(), text.end());
}

}  // namespace zenutl_test

#endif  // ZENUTL_TESTS_CONFIG_XERCES_ENVIRONMENT_H_
