// A text catalogue written to a file, loaded and selected as the language of LanguageString for
// one scope; the built-in English texts come back afterwards.
#ifndef ZENUTL_TESTS_SUPPORT_SCOPED_CATALOGUE_H_
#define ZENUTL_TESTS_SUPPORT_SCOPED_CATALOGUE_H_

#include <gtest/gtest.h>

#include <string>

#include "support/temp_dir.h"
#include "zenutl/language_string.h"
#include "zenutl/resource_module.h"

namespace zenutl_test {

class ScopedCatalogue {
 public:
  // `entries` are the catalogue's lines after its first, "zenutl-catalogue 1".
  ScopedCatalogue(const std::string& path, const std::string& entries) {
    WriteWholeFile(path, "zenutl-catalogue 1\n" + entries);
    CString error;
    module_ = ZnLoadResourceModule(path.c_str(), &error);
    EXPECT_NE(module_, nullptr) << error.GetString();
    LanguageString::SetResourceInstance(module_);
  }
  ~ScopedCatalogue() {
    LanguageString::SetResourceInstance(nullptr);
    ZnFreeResourceModule(module_);
  }
  ScopedCatalogue(const ScopedCatalogue&) = delete;
  ScopedCatalogue& operator=(const ScopedCatalogue&) = delete;

 private:
  HINSTANCE module_ = nullptr;
};

}  // namespace zenutl_test

#endif  // ZENUTL_TESTS_SUPPORT_SCOPED_CATALOGUE_H_
