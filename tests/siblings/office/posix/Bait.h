// Bait.h - what a hostile document may go for: a file, and a port of this machine.
#ifndef TARN_TESTS_SIBLINGS_OFFICE_POSIX_BAIT_H
#define TARN_TESTS_SIBLINGS_OFFICE_POSIX_BAIT_H

#include <filesystem>
#include <string>

#include "support/TempDirectory.h"

namespace tarn::test {

class Bait {
 public:
  Bait();
  Bait(const Bait&) = delete;
  Bait& operator=(const Bait&) = delete;
  ~Bait();

  // A picture that can be read.
  std::filesystem::path file() const { return file_; }
  // "http://127.0.0.1:PORT/", where somebody listens.
  std::string address() const { return "http://127.0.0.1:" + std::to_string(port_) + '/'; }

  // Has anyone opened the file, or called, since this was last asked?
  bool taken();

 private:
  TempDirectory directory_;
  std::filesystem::path file_;
  int watch_ = -1;
  int listener_ = -1;
  int port_ = 0;
};

}  // namespace tarn::test

#endif
