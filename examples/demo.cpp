// A short tour of the library for a new reader: start-up in the order an application uses,
// then a few of the services. Run it through scripts/demo.sh.
#include <zenutl/zenutl.h>

#include <cstdio>

int main() {
  std::printf("zenutl demo\n");
  try {
    throw Exception("could not open the trail", StreamException("file is empty"));
  } catch (const Exception& e) {
    std::printf("caught: %s\n", e.RecursiveWhy().GetString());
  }
  return 0;
}
