// OnMachine WITHOUT... -- PROGRAM ARGUMENT...: runs a program as on a machine that has no
// namespaces, no Landlock, no seccomp: each WITHOUT is one of these words.
#include <unistd.h>

#include <cstdio>
#include <string_view>

#include "ThisMachine.h"

int main(int argc, char** argv) {
  tarn::test::Machine machine;
  for (int i = 1; i < argc; ++i) {
    const std::string_view word = argv[i];
    if (word == "namespaces") {
      machine.hasNamespaces = false;
    } else if (word == "landlock") {
      machine.hasLandlock = false;
    } else if (word == "seccomp") {
      machine.hasSeccomp = false;
    } else if (word == "--" && i + 1 < argc && tarn::test::BecomeMachine(machine)) {
      execvp(argv[i + 1], argv + i + 1);
      break;
    } else {
      break;
    }
  }
  std::fputs("OnMachine: cannot run that\n", stderr);
  return 120;
}
