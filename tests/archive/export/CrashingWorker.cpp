// A worker as that of tarnmail-archive which does at certain items what hostile ones may bring
// about: the ids of mails alone are known here, so that it looks for a file beside the program's
// input.
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>
#include <vector>

#include "archive/export/Worker.h"

int main(int argc, char** argv) {
  // "export-worker" and the words after it.
  const std::vector<std::string> words(argv + 2, argv + argc);
  return tarn::archive::RunWorker(words, [](const std::string& id) {
    if (id == "0") {
      // Sanitizers would make an exit of it.
      std::signal(SIGSEGV, SIG_DFL);
      std::raise(SIGSEGV);
    }
    if (id == "200") {
      for (;;) pause();
    }
  });
}
