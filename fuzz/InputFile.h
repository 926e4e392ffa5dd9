// InputFile.h - an input as a file of this process's own, for readers that open files.
#ifndef TARN_FUZZ_INPUTFILE_H
#define TARN_FUZZ_INPUTFILE_H

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <string_view>

namespace tarn::fuzz {

// Goes with the object.
class InputFile {
 public:
  InputFile() {
    const char* const temp = std::getenv("TMPDIR");
    path_ = std::string(temp != nullptr ? temp : "/tmp") + "/tarn-fuzz-XXXXXX";
    file_ = mkstemp(path_.data());
    if (file_ < 0) std::abort();
  }
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  ~InputFile() {
    close(file_);
    unlink(path_.c_str());
  }

  // Puts the bytes in the place of those before; gives the file's path.
  const std::string& write(std::string_view bytes) const {
    if (ftruncate(file_, 0) != 0 ||
        pwrite(file_, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
      std::abort();
    }
    return path_;
  }

 private:
  std::string path_;
  int file_;
};

}  // namespace tarn::fuzz

#endif
