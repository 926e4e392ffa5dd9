#include "MsgReason.h"

#include <array>
#include <cstring>
#include <string_view>

#include "KernelFile.h"
#include "compound/CompoundStream.h"

namespace tarn::host {
namespace {

constexpr std::string_view kCompressedRtf = "__substg1.0_10090102";
constexpr std::string_view kPlainBody = "__substg1.0_1000001F";

// Whether the message has compressed RTF that the filter unpacks: the bytes 8 to 11 tell.
bool HasCompressedRtf(CompoundFile& file) {
  std::array<unsigned char, 12> head = {};
  std::optional<CompoundStream> stream = file.open(kCompressedRtf);
  if (!stream || StreamRead(*stream, 0, head) != head.size()) return false;
  return std::memcmp(&head[8], "LZFu", 4) == 0 || std::memcmp(&head[8], "MELA", 4) == 0;
}

bool HasEmptyPlainBody(CompoundFile& file) {
  const std::optional<CompoundStream> stream = file.open(kPlainBody);
  return stream && stream->size() == 0;
}

}  // namespace

std::optional<std::string> MsgReason(const char16_t* path) {
  const KernelFile file(path);
  if (!file.isOpen()) return std::nullopt;
  CompoundFile compound = CompoundFile::open(file.handle());
  if (compound.result() != CompoundOk) {
    return "begins like an MSG file, but its compound file is damaged";
  }
  if (HasCompressedRtf(compound)) return "the message's compressed RTF is damaged";
  if (HasEmptyPlainBody(compound)) return "the message has no body that can be shown";
  return std::nullopt;
}

}  // namespace tarn::host
