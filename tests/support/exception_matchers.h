// Assertions on the library's Exception family.
#ifndef ZENUTL_TESTS_SUPPORT_EXCEPTION_MATCHERS_H_
#define ZENUTL_TESTS_SUPPORT_EXCEPTION_MATCHERS_H_

#include <gtest/gtest.h>

#include <string>

#include "zenutl/exception.h"

// Passes when `statement` throws `Type` whose Why() is exactly `expected_why`.
#define EXPECT_THROW_WHY(statement, Type, expected_why)                              \
  do {                                                                               \
    bool zenutl_thrown = false;                                                      \
    try {                                                                            \
      statement;                                                                     \
    } catch (const Type& zenutl_e) {                                                 \
      zenutl_thrown = true;                                                          \
      EXPECT_EQ(std::string(zenutl_e.Why().GetString()), std::string(expected_why)); \
    }                                                                                \
    EXPECT_TRUE(zenutl_thrown) << "expected " #Type " from " #statement;             \
  } while (0)

#endif  // ZENUTL_TESTS_SUPPORT_EXCEPTION_MATCHERS_H_
