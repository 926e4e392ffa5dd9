#include "host/Workplace.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

#include "Tarnbase/PlainKernel.h"

namespace tarn::fuzz {
namespace {

std::u16string Widen(const std::string& path) { return {path.begin(), path.end()}; }

}  // namespace

Workplace::Workplace() {
  const char* const temp = std::getenv("TMPDIR");
  folder_ = std::string(temp != nullptr ? temp : "/tmp") + "/tarn-fuzz-XXXXXX";
  if (mkdtemp(folder_.data()) == nullptr) std::abort();
  file_ = folder_ + "/file";
  output_ = folder_ + "/output";
  wideFile_ = Widen(file_);
  wideOutput_ = Widen(output_);
  wideNowhere_ = Widen(folder_ + "/nowhere/output");
  PlainKernelSetTempDirectory(Widen(folder_).c_str());
}

Workplace::~Workplace() {
  unlink(file_.c_str());
  unlink(output_.c_str());
  rmdir(folder_.c_str());
}

void Workplace::write(std::string_view bytes) const {
  const int file = open(file_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  const auto size = static_cast<ssize_t>(bytes.size());
  if (file < 0 || ::write(file, bytes.data(), bytes.size()) != size) std::abort();
  close(file);
}

std::string Workplace::takeOutput() const {
  std::string bytes;
  const int file = open(output_.c_str(), O_RDONLY);
  if (file < 0) return bytes;
  char piece[65536];
  for (ssize_t count = 0; (count = read(file, piece, sizeof piece)) > 0;) {
    bytes.append(piece, static_cast<size_t>(count));
  }
  close(file);
  unlink(output_.c_str());
  return bytes;
}

bool Workplace::hasOnlyTheFile() const {
  DIR* const folder = opendir(folder_.c_str());
  if (folder == nullptr) std::abort();
  bool others = false;
  while (const dirent* const entry = readdir(folder)) {
    const std::string name = entry->d_name;
    others |= name != "." && name != ".." && name != "file";
  }
  closedir(folder);
  return !others;
}

}  // namespace tarn::fuzz
