// Internet mail as the archive reads it: each input is read as one mail and as an mbox, whole, and
// as the name of a file and of a folder in a Maildir.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>

#include "ArchiveItems.h"
#include "archive/mail/MailReaders.h"
#include "archive/mail/MaildirNames.h"

namespace {

// A file of this process's own.
class InputFile {
 public:
  InputFile() {
    const char* const temp = std::getenv("TMPDIR");
    path_ = std::string(temp != nullptr ? temp : "/tmp") + "/tarn-fuzz-XXXXXX";
    file_ = mkstemp(path_.data());
    if (file_ < 0) std::abort();
  }
  ~InputFile() {
    close(file_);
    unlink(path_.c_str());
  }

  const std::string& write(const uint8_t* data, size_t size) const {
    if (ftruncate(file_, 0) != 0 || pwrite(file_, data, size, 0) != static_cast<ssize_t>(size)) {
      std::abort();
    }
    return path_;
  }

 private:
  std::string path_;
  int file_;
};

void ReadNames(std::string_view name) {
  const std::string_view unique = tarn::archive::mail::UniquePart(name);
  tarn::fuzz::Expect(name.starts_with(unique), "a unique part that is not of its name");
  const size_t dots = static_cast<size_t>(std::count(name.begin(), name.end(), '.'));
  const auto folder = tarn::archive::mail::FolderOfMaildirName(name);
  tarn::fuzz::Expect(folder.size() <= dots, "more folders than the name has dots");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  ReadNames({reinterpret_cast<const char*>(data), size});
  static const InputFile file;
  const std::string& path = file.write(data, size);
  const auto mail = tarn::archive::OpenMail(path);
  tarn::fuzz::Expect(mail.ok(), "a mail that does not open");
  tarn::fuzz::ReadAllItems(**mail);
  const auto mbox = tarn::archive::OpenMbox(path);
  tarn::fuzz::Expect(mbox.ok(), "an mbox that does not open");
  tarn::fuzz::ReadAllItems(**mbox);
  return 0;
}
