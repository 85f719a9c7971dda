// A tour of the library for a new reader: the start-up an application performs, a few text and
// number conversions, and then the audit trail's main job: sessions recorded to a file. The rest
// of the tour, in scripts/demo.sh, checks the trail with the zenutl tool, edits it by hand, and
// lets the tool find the edit.
//
// Run it through scripts/demo.sh. It works in the folder given as its argument, or in a fresh
// temporary one, and leaves it behind for inspection; the folder's name is printed.
#include <zenutl/zenutl.h>

#include <algorithm>
#include <boost/filesystem.hpp>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

// Prints what the library tells the user, as a console application would.
class ConsoleUserComm : public MuteUserComm {
 public:
  void FatalError(const char* text, const char* title) override {
    std::printf("  [%s] error: %s\n", title, text);
  }
  void InformUser(const char* text, const char* title, unsigned long) override {
    std::printf("  [%s] %s\n", title, text);
  }
};

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void StartUp(const std::string& folder) {
  std::printf("== start-up, in the order an application uses\n");
  Locales::InitLibraries();
  LanguageString::SetResourceInstance(nullptr);  // the built-in English texts
  ZnLanguageStringVector::Initialize();
  Log::CreateInstance((folder + "/demo.log").c_str());
  delete UserComm::SetUserComm(new ConsoleUserComm);
  std::printf("  decimal separator of this machine: %s\n",
              Locales::GetDecimalSeparator() == 1 ? "comma" : "point");
}

void Conversions() {
  std::printf("== numbers and text\n");
  for (const char* text : {"1.5", "1,5", "  2.5e3 ", "12 apples", "1e999"}) {
    ZnString::EParseResult result;
    const double value = ZnString::ToDouble(text, result);
    std::printf("  ToDouble(\"%s\") = %g (result %d)\n", text, value, static_cast<int>(result));
  }
  std::printf("  missing value prints as: \"%s\"\n",
              ZnString::ToString(-99.0, nullptr, "n/a").GetString());
  std::printf("  FormatIndex(21) = %s (kept as the applications expect)\n",
              ZnString::FormatIndex(21).GetString());
  std::vector<std::string> names = {"file10", "file2", "file1", "file007"};
  std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
    return ZnString::znstrnumbercmp(a.c_str(), b.c_str()) < 0;
  });
  std::printf("  natural order:");
  for (const std::string& name : names) std::printf(" %s", name.c_str());
  std::printf("\n");
}

// One run of the application: open the trail, verify, record, seal and save.
void RecordRun(const std::string& path, int run) {
  AuditTrail trail(path.c_str(), "Demo project", nullptr);
  trail.GetAuditTrailSettings().SetLogEvents(1);
  trail.LoadAndUpdateLogEventsFromData();
  trail.BeginSessionAndVerifySignature();
  trail.AddEvent("Sample loaded", ("sample " + std::to_string(run)).c_str(), nullptr);
  trail.AddEvent("Result approved", "concentration = 12.5 mg/l", nullptr);
  trail.EndSessionAndSave();
}

void AuditTrailTour(const std::string& folder) {
  std::printf("== audit trail\n");
  const std::string path = folder + "/trail.xml";
  for (int run = 1; run <= 3; ++run) RecordRun(path, run);
  std::printf("  three runs of an application recorded three sessions in %s (%zu bytes)\n",
              path.c_str(), ReadFile(path).size());
}

}  // namespace

int main(int argc, char** argv) {
  const boost::filesystem::path folder =
      argc > 1 ? boost::filesystem::path(argv[1])
               : boost::filesystem::temp_directory_path() /
                     boost::filesystem::unique_path("zenutl-demo-%%%%");
  boost::filesystem::create_directories(folder);
  try {
    StartUp(folder.string());
    Conversions();
    AuditTrailTour(folder.string());
  } catch (const Exception& e) {
    std::printf("failed: %s\n", e.RecursiveWhy().GetString());
    return 1;
  }
  std::printf("== files are in %s\n", folder.string().c_str());
  return 0;
}
