// The validator family with the built-in English texts: verdicts and messages for each kind of
// name, the typing rule of numbers, and the message box of Error.
#include "zenutl/zentri_filter_validator.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "support/temp_dir.h"
#include "zenutl/host_dialogs.h"
#include "zenutl/language_string.h"
#include "zenutl/locales.h"
#include "zenutl/resource_module.h"

namespace {

typedef std::function<ZentriFilterValidator*()> Factory;

template <typename Validator>
Factory Make() {
  return [] { return new Validator("caption"); };
}

TEST(Validators, JudgeEachKindOfNameAndSayWhy) {
  const std::string longest(1023, 'v');
  const char* const kValid = "The text is valid.";
  const char* const kUnchecked = "The text has not been checked yet.";
  const struct {
    Factory make;
    std::string text;
    bool valid;
    const char* message;
  } rows[] = {
      {Make<FileNameValidator>(), "a b.txt", true, kValid},
      {Make<FileNameValidator>(), "a:b", false,
       "A file name cannot contain any of these characters: \\/:*\"?<>|"},
      {Make<FileNameValidator>(), "", false, "A file name cannot be empty."},
      {Make<NCProjectNameValidator>(), "", false, "A project name cannot be empty."},
      {Make<TessaVariableNameValidator>(), "a[1]", false,
       "A variable name cannot contain any of these characters: ~*?\\=[]$"},
      {Make<DatasetNameValidator>(), "abcdefgh", true, kValid},
      {Make<DatasetNameValidator>(), "abcdefghi", false,
       "A dataset name cannot be longer than 8 characters."},
      {Make<NCVariableNameValidator>(), "a*b", true, kValid},
      {Make<NCVariableNameValidator>(), "a\x01z", false,
       "A variable name contains non printable characters"},
      {Make<NCVariableNameValidator>(), "a\tb caf\xc3\xa9 \xff", true, kValid},
      {Make<NCVariableNameValidator>(), longest, true, kValid},
      {Make<NCVariableNameValidator>(), longest + "v", false,
       "A variable name cannot be longer than 1023 characters."},
      {Make<NCObservationNameValidator>(), " \n ", false,
       "An observation name cannot consist of spaces only."},
      {Make<NCOrvikModelNameValidator>(), "a?b", true, kValid},
      {Make<FloatValidator>(), "", false, "Please enter a number."},
      {Make<FloatValidator>(), "1.5x", false, "'1.5x' is not a valid number."},
      {Make<FloatValidator>(), " 2e3 ", true, kUnchecked},
      {Make<NCProjectPathValidator>(), " \t", false, "The path cannot be blank."},
      {Make<NCProjectPathValidator>(), "C:\\x", true, kUnchecked},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text.substr(0, 20) + " => " + row.message);
    std::unique_ptr<ZentriFilterValidator> validator(row.make());
    EXPECT_EQ(row.valid, validator->IsValid(row.text.c_str()));
    EXPECT_STREQ(row.message, validator->GetErrorMessage());
    EXPECT_EQ(row.valid, validator->IsValidInput(&std::string(row.text)[0], true));
  }
}

TEST(Validators, ListTheirRefusedCharactersInTheSetsOrder) {
  EXPECT_STREQ("?*=\\/:*\"<>|", DatasetNameValidator().GetIllegalChars());
  EXPECT_STREQ("", ZentriFilterValidator().GetIllegalChars());
  EXPECT_STREQ("", FloatValidator().GetAllIllegalChars());
  const CString all = NCObservationNameValidator().GetAllIllegalChars();
  ASSERT_EQ(31, all.GetLength());
  EXPECT_EQ('$', all[0]);
  EXPECT_EQ(1, all[1]);
  EXPECT_EQ(8, all[8]);
  EXPECT_EQ(10, all[9]);
  EXPECT_EQ(31, all[30]);
}

TEST(Validators, AUnnamedRootAndANullTextStillGiveAMessage) {
  ZentriFilterValidator root;
  EXPECT_FALSE(root.IsValid(nullptr));
  EXPECT_STREQ("(null) cannot be empty.", root.GetErrorMessage());
  EXPECT_TRUE(root.IsValid("anything?"));
  EXPECT_FALSE(FloatValidator().IsValid(nullptr));
  EXPECT_FALSE(NCProjectPathValidator().IsValid(nullptr));
}

TEST(FloatValidator, TypingAcceptsOnlyTheSetSeparatorAndALoneSign) {
  FloatValidator validator;
  char comma[] = "1,5", point[] = "1.5", minus[] = "-", plus[] = "+", digits[] = "15";
  {
    Locales::SetDecimalSeparatorClass pointScope(Locales::eDecimalPoint);
    EXPECT_TRUE(validator.IsValid(comma));
    EXPECT_FALSE(validator.IsValidInput(comma, false));
    EXPECT_TRUE(validator.IsValidInput(point, false));
  }
  {
    Locales::SetDecimalSeparatorClass commaScope(Locales::eDecimalComma);
    EXPECT_TRUE(validator.IsValidInput(comma, false));
    EXPECT_FALSE(validator.IsValidInput(point, false));
    EXPECT_TRUE(validator.IsValidInput(digits, false));
  }
  EXPECT_FALSE(validator.IsValid(minus));
  EXPECT_TRUE(validator.IsValidInput(minus, false));
  EXPECT_TRUE(validator.IsValidInput(plus, false));
}

TEST(FloatValidator, CutsTheMessageOfAVeryLongTextToItsBuffer) {
  FloatValidator validator;
  const std::string text = "x" + std::string(5000, '9');
  EXPECT_FALSE(validator.IsValid(text.c_str()));
  const std::string message = validator.GetErrorMessage();
  EXPECT_EQ(999u, message.size());
  EXPECT_EQ("'x999", message.substr(0, 5));
}

// A catalogue that anyone can edit supplies the message formats: one that would read more than
// the validator passes, or write through %n, gives way to the English text. Texts are kept per
// number for the whole process once fetched, so this needs a process of its own, as CTest gives
// every test.
TEST(Validators, TranslatedMessagesReadOnlyWhatTheValidatorPasses) {
  zenutl_test::TempDir dir;
  zenutl_test::WriteWholeFile(dir.File("x.txt"),
                              "zenutl-catalogue 1\n"
                              "string 17057 %s%n\n"
                              "string 17058 %s %s %s %s\n"
                              "string 17065 %s max %u.\n");
  HINSTANCE module = ZnLoadResourceModule(dir.File("x.txt").c_str());
  ASSERT_NE(module, nullptr);
  LanguageString::SetResourceInstance(module);
  DatasetNameValidator validator;
  const std::string name = LanguageString::Get(17070);
  const bool empty = validator.IsValid("");
  const std::string emptyMessage = validator.GetErrorMessage();
  const bool illegal = validator.IsValid("a?");
  const std::string illegalMessage = validator.GetErrorMessage();
  const bool tooLong = validator.IsValid("abcdefghij");
  const std::string tooLongMessage = validator.GetErrorMessage();
  LanguageString::SetResourceInstance(nullptr);
  ZnFreeResourceModule(module);

  EXPECT_FALSE(empty);
  EXPECT_EQ(name + " cannot be empty.", emptyMessage);
  EXPECT_FALSE(illegal);
  EXPECT_EQ(name + " cannot contain any of these characters: " + validator.GetIllegalChars(),
            illegalMessage);
  EXPECT_FALSE(tooLong);
  EXPECT_EQ(name + " max 8.", tooLongMessage);
}

TEST(Validators, ErrorShowsTheMessageInAnErrorBoxOfTheHost) {
  std::vector<ZnHostDialogs::MessageBoxRequest> shown;
  ZnHostDialogs::ScopedMessageBoxHandler handler(
      [&](const ZnHostDialogs::MessageBoxRequest& request) {
        shown.push_back(request);
        return static_cast<int>(ZnHostDialogs::eAnswerOk);
      });
  CWnd* const parent = reinterpret_cast<CWnd*>(0x10);
  FileNameValidator withCaption("Rename");
  withCaption.IsValid("a?");
  withCaption.Error(parent);
  FileNameValidator().Error(nullptr);

  ASSERT_EQ(2u, shown.size());
  EXPECT_EQ(parent, shown[0].parent);
  EXPECT_EQ(CString(withCaption.GetErrorMessage()), shown[0].text);
  EXPECT_EQ(CString("Rename"), shown[0].caption);
  EXPECT_EQ(16u, shown[0].style);
  EXPECT_EQ(CString("Invalid Input"), shown[1].caption);
  EXPECT_EQ(CString("The text has not been checked yet."), shown[1].text);
}

}  // namespace
