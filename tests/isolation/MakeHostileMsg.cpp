// MakeHostileMsg KIND BODY PATH OUT: writes an MSG file whose body is the file BODY, KIND "rtf" or
// "html", and whose attachments say that their bytes are elsewhere: at PATH.
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "support/RtfCompressor.h"
#include "support/msg/MsgBuilder.h"

namespace {

// MS-OXCMSG 2.2.2.9: how an attachment is there.
enum AttachMethod : uint32_t {
  ByReference = 2,
  ByReferenceResolved = 3,
  ByReferenceOnly = 4,
  ByWebReference = 7
};

std::string ReadFile(const char* path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::u16string Wide(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) {
    std::cerr << "usage: MakeHostileMsg rtf|html BODY PATH OUT\n";
    return 2;
  }
  const std::string body = ReadFile(argv[2]);
  const std::u16string path = Wide(argv[3]);
  tarn::test::MsgBuilder message;
  message.text(0x0037, u"Elsewhere").text(0x0C1A, u"Ann").text(0x1035, u"<elsewhere@example.com>");
  if (std::string(argv[1]) == "rtf") {
    message.binary(0x1009, tarn::test::PackRtf(body));
  } else {
    message.binary(0x1013, body);
  }
  for (const AttachMethod method :
       {ByReference, ByReferenceResolved, ByReferenceOnly, ByWebReference}) {
    message.attachment()
        .integer(0x3705, method)
        .text(0x3707, path)
        .text(0x3704, path)
        .text(0x3708, path)
        .text(0x370D, path)
        .text(0x3713, path)
        .text(0x3712, path);
  }
  message.attachment(u"../../escaped", "escaped");
  const std::string bytes = message.write();
  std::ofstream(argv[4], std::ios::binary).write(bytes.data(), static_cast<long>(bytes.size()));
  return 0;
}
