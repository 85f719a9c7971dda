// Links the installed library through its umbrella header and exercises a little of it.
#include <zenutl/zenutl.h>

#include <cstdio>

int main() {
  CString text("consumer");
  text += " ok";
  try {
    throw Exception(text);
  } catch (const Exception& e) {
    if (e.Why() != text) return 1;
  }
  std::printf("%s\n", static_cast<const char*>(text));
  return 0;
}
