// Writes an MSG file with one attachment of the given size, and that attachment beside it, for
// msg-process.sh: MakeMsg MEGABYTES MSG ATTACHMENT.
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>

#include "support/msg/MsgBuilder.h"

namespace {

bool Write(const char* path, const std::string& bytes) {
  std::ofstream file(path, std::ios::binary);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return file.good();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  std::string content(std::strtoull(argv[1], nullptr, 10) << 20, '\0');
  uint32_t state = 2463534242;
  for (char& byte : content) {
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    byte = static_cast<char>(state);
  }
  tarn::test::MsgBuilder msg;
  msg.text(0x0037, u"Large").text(0x0C1A, u"Ann").text(0x1000, u"See the attachment.");
  msg.attachment(u"large.bin", content);
  return Write(argv[2], msg.write()) && Write(argv[3], content) ? 0 : 1;
}
