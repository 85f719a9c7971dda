// Links the installed library through its umbrella header and exercises a little of it. Given
// a file name, it also records a one-session audit trail there, for the installed tool to check.
#include <zenutl/zenutl.h>

#include <cstdio>

int main(int argc, char** argv) {
  CString text("consumer");
  text += " ok";
  try {
    throw Exception(text);
  } catch (const Exception& e) {
    if (e.Why() != text) return 1;
  }
  if (argc > 1) {
    AuditTrail trail(argv[1], "Consumer", nullptr);
    trail.GetAuditTrailSettings().SetLogEvents(1);
    trail.Load();
    trail.BeginSessionAndVerifySignature();
    trail.AddEvent("Installed package used", "consumer", nullptr);
    trail.EndSessionAndSave();
    if (trail.IsModified()) return 1;
  }
  std::printf("%s\n", static_cast<const char*>(text));
  return 0;
}
