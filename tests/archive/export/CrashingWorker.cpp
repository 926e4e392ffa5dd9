// A worker as that of tarnmail-archive which does at certain items what hostile ones may bring
// about: the ids of mails alone are known here, so that it looks for a file beside the program's
// input.
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "archive/export/Worker.h"

namespace {

void Crash() {
  // Sanitizers would make an exit of it.
  std::signal(SIGSEGV, SIG_DFL);
  std::raise(SIGSEGV);
}

}  // namespace

int main(int argc, char** argv) {
  // "export-worker" and the words after it.
  const std::vector<std::string> words(argv + 2, argv + argc);
  return tarn::archive::RunWorker(words, [&words](const std::string& id) {
    if (id.empty()) {
      if (std::getenv("CRASH_IN_SUMS") != nullptr) Crash();
      return;
    }
    if (id == "0" || id == "2500" || id == "7500") Crash();
    if (id == "7250") {
      // The second time alone.
      const std::string met = words.back() + ".met";
      if (std::ifstream(met)) Crash();
      std::ofstream(met) << id;
    }
    if (id == "200") {
      for (;;) pause();
    }
  });
}
