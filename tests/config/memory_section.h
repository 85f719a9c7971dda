// A ConfigurationSection on an in-memory tree, for testing the base class's typed operations and
// the path utilities independently of any file format. Sections are '/'-joined paths; a section
// exists once created or once it holds a key. Copies share the data, as cursors of a real store
// do. Every text read goes through ReadKey(CString&) and every write lands in the char overload,
// which the call counters let a test confirm.
#ifndef ZENUTL_TESTS_CONFIG_MEMORY_SECTION_H_
#define ZENUTL_TESTS_CONFIG_MEMORY_SECTION_H_

#include <map>
#include <memory>
#include <set>
#include <string>

#include "zenutl/configuration_section.h"

namespace zenutl_test {

struct MemoryStore {
  std::map<std::string, std::map<std::string, std::string> > keys;  // section -> key -> value
  std::set<std::string> sections;
  int narrowWrites = 0;
  int wideWrites = 0;
};

class MemorySection : public ConfigurationSection {
 public:
  MemorySection() : store_(std::make_shared<MemoryStore>()) {}
  MemorySection(std::shared_ptr<MemoryStore> store, std::string path)
      : store_(std::move(store)), path_(std::move(path)) {}

  using ConfigurationSection::ReadKey;
  using ConfigurationSection::WriteKey;

  MemoryStore& store() { return *store_; }
  const std::string& path() const { return path_; }
  // Stores raw text, bypassing every typed write.
  void Put(const std::string& key, const std::string& value) {
    store_->keys[path_][key] = value;
    store_->sections.insert(path_);
  }
  const std::string& Get(const std::string& key) const { return store_->keys[path_][key]; }

  ConfigurationSection* Copy() const override { return new MemorySection(*this); }
  void ChangeSection(const char* name) override { path_ = name; }
  bool ChangeSubSection(const char* name, int index) override {
    const std::string child = Child(name, index);
    if (store_->sections.count(child) == 0) return false;
    path_ = child;
    return true;
  }
  bool ChangeSubSection(const char* name) override { return ChangeSubSection(name, 0); }
  ConfigurationSection* CreateSubSection(const char* name, int index) const override {
    const std::string child = Child(name, index);
    store_->sections.insert(child);
    return new MemorySection(store_, child);
  }
  ConfigurationSection* CreateSubSection(const char* name) const override {
    return CreateSubSection(name, 0);
  }
  bool SupportsSubSections() const override { return true; }

  bool DeleteKey(const char* key) override { return store_->keys[path_].erase(key) > 0; }
  bool DeleteSection() override {
    store_->keys.erase(path_);
    return store_->sections.erase(path_) > 0;
  }
  bool Flush() const override { return true; }
  bool IsEmpty() const override { return store_->keys[path_].empty(); }
  bool HasSection(const char* name, int index) const override {
    return store_->sections.count(Child(name, index)) > 0;
  }
  bool HasKey(const char* key) const override { return store_->keys[path_].count(key) > 0; }

  bool ReadKey(const char* key, wchar_t* buffer, unsigned int size) const override {
    std::wstring text;
    if (!ReadKey(key, text)) return false;
    text.resize(std::min<std::size_t>(text.size(), size - 1));
    std::copy(text.begin(), text.end(), buffer);
    buffer[text.size()] = L'\0';
    return true;
  }
  bool ReadKey(const char* key, std::wstring& value) const override {
    CString text;
    if (!ReadKey(key, text)) return false;
    value = CStringW(text).str();
    return true;
  }
  bool ReadKey(const char* key, CString& value) const override {
    const auto section = store_->keys.find(path_);
    if (section == store_->keys.end()) return false;
    const auto found = section->second.find(key);
    if (found == section->second.end()) return false;
    value = found->second.c_str();
    return true;
  }

  bool WriteKey(const char* key, const wchar_t* value) override {
    ++store_->wideWrites;
    Put(key, CString(CStringW(value)).str());
    return true;
  }
  bool WriteKey(const char* key, const char* value) override {
    ++store_->narrowWrites;
    Put(key, value);
    return true;
  }
  bool WriteToSection(ConfigurationSection*) const override { return false; }

 private:
  std::string Child(const char* name, int index) const {
    std::string child = path_ + "/" + (name ? name : "");
    if (index > 0) child += "#" + std::to_string(index);
    return child;
  }

  std::shared_ptr<MemoryStore> store_;
  std::string path_;
};

}  // namespace zenutl_test

#endif  // ZENUTL_TESTS_CONFIG_MEMORY_SECTION_H_
