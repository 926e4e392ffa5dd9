// WriteInputs FOLDER: writes the files that the tests of whole roads make for themselves, the same
// bytes each time.

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <set>
#include <stdexcept>
#include <string>

#include "BadNameMail.h"
#include "BadStores.h"
#include "MsgSamples.h"
#include "PstSamples.h"
#include "faults/FaultInputs.h"
#include "support/SampleMails.h"

namespace {

using namespace tarn::test;

class Folder {
 public:
  explicit Folder(std::filesystem::path path) : path_(std::move(path)) {
    std::filesystem::create_directories(path_);
  }

  void write(const std::string& name, const std::string& bytes) const {
    std::ofstream file(path_ / name, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) throw std::runtime_error("cannot write " + (path_ / name).string());
  }

 private:
  std::filesystem::path path_;
};

// Rows share files.
void WriteFaultInputs(const Folder& folder) {
  std::set<std::string (*)()> written;
  for (const FaultInput& input : FaultInputs()) {
    if (!written.insert(input.file).second) continue;
    const char* const type = input.format == FaultFormat::Eml   ? ".eml"
                             : input.format == FaultFormat::Msg ? ".msg"
                                                                : ".pst";
    folder.write(input.name + std::string(type), input.file());
  }
}

void WriteSamples(const Folder& folder) {
  folder.write("html.eml", kHtmlMail);
  folder.write("plain.eml", kPlainMail);
  folder.write("image.eml", kImageMail);
  folder.write("attachment.eml", kAttachmentMail);
  folder.write("plain.msg", PlainMsg().write());
  folder.write("attached.msg", AttachedMsg().write());
  MsgBuilder rtf = PlainMsg();
  rtf.binary(0x1009, PackRtf(kMsgRtf));
  folder.write("rtf.msg", rtf.write());
  for (const auto encoding : {PstEncoding::None, PstEncoding::Permute, PstEncoding::Cyclic}) {
    const std::string number = std::to_string(static_cast<int>(encoding));
    folder.write("unicode-" + number + ".pst", SampleStore(PstLayout::Unicode, encoding));
    folder.write("ansi-" + number + ".pst", SampleStore(PstLayout::Ansi, encoding));
  }
}

// Files that are refused, each at another place.
void WriteBadFiles(const Folder& folder) {
  int number = 0;
  for (const BadStore& store : BadStores()) {
    folder.write("store-" + std::to_string(++number) + ".pst", store.bytes);
  }
  const std::string msg = AttachedMsg().write();
  folder.write("cut.msg", msg.substr(0, msg.size() / 2));
  folder.write("head.msg", msg.substr(0, 512));
  folder.write("eleven-bytes.eml", "From: a@b.c");
  folder.write("twelve-bytes.eml", "From: a@b.cd");
  folder.write("empty.eml", "");
  folder.write("name.eml", BadNameMail());
  folder.write("cut.eml", kImageMail.substr(0, kImageMail.size() / 2));
}

// Names of images for which there is no room in a path, from some length on.
void WriteLongNames(const Folder& folder) {
  const std::string name = "pic.png";
  for (size_t length = 150; length <= 270; length += 10) {
    std::string mail = kImageMail;
    for (size_t at = mail.find(name); at != std::string::npos; at = mail.find(name, at + length)) {
      mail.replace(at, name.size(), std::string(length, 'n') + ".png");
    }
    folder.write("image-" + std::to_string(length) + ".eml", mail);
  }
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::fputs("usage: WriteInputs FOLDER\n", stderr);
    return 2;
  }
  try {
    const std::filesystem::path path = arguments[1];
    WriteFaultInputs(Folder(path / "faults"));
    WriteSamples(Folder(path / "samples"));
    WriteBadFiles(Folder(path / "bad"));
    WriteLongNames(Folder(path / "names"));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  return 0;
}
