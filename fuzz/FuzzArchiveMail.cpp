// Internet mail as the archive reads it: each input is read as one mail and as an mbox, whole, and
// as the name of a file and of a folder in a Maildir.

#include <algorithm>
#include <string>
#include <string_view>

#include "ArchiveItems.h"
#include "InputFile.h"
#include "archive/mail/MailReaders.h"
#include "archive/mail/MaildirNames.h"

namespace {

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
  static const tarn::fuzz::InputFile file;
  const std::string& path = file.write({reinterpret_cast<const char*>(data), size});
  const auto mail = tarn::archive::OpenMail(path);
  tarn::fuzz::Expect(mail.ok(), "a mail that does not open");
  tarn::fuzz::ReadAllItems(**mail);
  const auto mbox = tarn::archive::OpenMbox(path);
  tarn::fuzz::Expect(mbox.ok(), "an mbox that does not open");
  tarn::fuzz::ReadAllItems(**mbox);
  return 0;
}
