// Reading configuration key by key, the way applications and the audit settings do: 10,000 keys
// from a store of 1,000 sections with 10 keys each, one ReadKey call per key.
//
// Each store has its own section below, with its own fixture that builds the file once. The
// measured loop is the same for every store: walk the sections in order, and in each read its
// ten keys through a ConfigurationSection, so figures compare directly.
#include <benchmark/benchmark.h>

#include <fstream>
#include <memory>
#include <string>

#include "scratch_folder.h"
#include "zenutl/configuration_section.h"
#include "zenutl/ini_file_section.h"
#include "zenutl/xml_section.h"

namespace {

const int kSections = 1000;
const int kKeysPerSection = 10;

std::string SectionName(int section) {
  return "Section" + std::to_string(section);
}
std::string KeyName(int key) {
  return "Key" + std::to_string(key);
}
std::string Value(int section, int key) {
  return "value of " + std::to_string(section) + "/" + std::to_string(key);
}

// The measured work: every key of every section, one read each. Answers how many were found.
int ReadAllKeys(ConfigurationSection& store) {
  int found = 0;
  CString value;
  for (int s = 0; s < kSections; ++s) {
    store.ChangeSection(SectionName(s).c_str());
    for (int k = 0; k < kKeysPerSection; ++k) {
      if (store.ReadKey(KeyName(k).c_str(), value)) ++found;
      benchmark::DoNotOptimize(value);
    }
  }
  return found;
}

using zenutl_bench::ScratchFolder;

// ---- INI file ---------------------------------------------------------------------------------

// The timed part shared by both stores: every key, one by one, each iteration.
void TimeReadingAllKeys(benchmark::State& state, ConfigurationSection& store) {
  for (auto _ : state) {
    if (ReadAllKeys(store) != kSections * kKeysPerSection) {
      state.SkipWithError("keys went missing");
      break;
    }
  }
  state.SetItemsProcessed(state.iterations() * kSections * kKeysPerSection);
}

void BM_IniFileSection_Read10000KeysOneByOne(benchmark::State& state) {
  ScratchFolder folder;
  const std::string file = folder.File("settings.ini");
  {
    std::ofstream out(file);
    for (int s = 0; s < kSections; ++s) {
      out << "[" << SectionName(s) << "]\n";
      for (int k = 0; k < kKeysPerSection; ++k) out << KeyName(k) << "=" << Value(s, k) << "\n";
    }
  }
  IniFileSection store(file.c_str(), "");
  TimeReadingAllKeys(state, store);
}
BENCHMARK(BM_IniFileSection_Read10000KeysOneByOne)->Unit(benchmark::kMillisecond);

// ---- XML file ---------------------------------------------------------------------------------

// The same content as an XML configuration file: one root element holding the sections as
// children, the keys as attributes. The file is parsed once; reading is from the document.
void BM_XMLSection_Read10000KeysOneByOne(benchmark::State& state) {
  ScratchFolder folder;
  const std::string file = folder.File("settings.zxl");
  {
    std::ofstream out(file);
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Settings>\n";
    for (int s = 0; s < kSections; ++s) {
      out << "  <" << SectionName(s);
      for (int k = 0; k < kKeysPerSection; ++k)
        out << " " << KeyName(k) << "=\"" << Value(s, k) << "\"";
      out << "/>\n";
    }
    out << "</Settings>\n";
  }
  XMLSection store(file.c_str(), false);
  if (!store.ChangeSubSection("Settings") || !store.ChangeSubSection(SectionName(0).c_str())) {
    state.SkipWithError("the file did not parse as written");
    return;
  }
  TimeReadingAllKeys(state, store);
}
BENCHMARK(BM_XMLSection_Read10000KeysOneByOne)->Unit(benchmark::kMillisecond);

}  // namespace
