// Compressed RTF through both decoders, and what the first makes of RTF that wraps HTML.
//
// The input is the compressed RTF; its last byte also chooses the variant. In half of the variants
// the header is repaired, so that the bytes after it are unpacked. Besides what the
// sanitizers see, a run aborts when a decoder leaves anything behind in the kernel, changes the
// body of damaged data, or makes more than the data can hold.

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <string_view>

#include "Common/Crc32.h"
#include "Internal/MailMessage.h"
#include "KernelText.h"
#include "Tarnbase/PlainKernel.h"
#include "rtf/CompressedRtf.h"
#include "rtf/LzfuUnpack.h"
#include "rtf/PstRtfCheck.h"

namespace {

enum Variant : uint8_t {
  Repaired = 1,  // sizes, checksum and magic
  Stored = 2,    // the magic that repairing writes
  LongBody = 4,  // the body before is longer than most texts
  WholeText = 8  // of Repaired: as the raw size says, if the data can give it; else a smaller one
};

[[noreturn]] void Fail(const char* what) {
  std::fprintf(stderr, "%s\n", what);
  std::abort();
}

void Expect(bool holds, const char* what) {
  if (!holds) Fail(what);
}

void Put(std::string& bytes, size_t offset, uint32_t value) {
  for (size_t i = 0; i < 4; ++i) bytes[offset + i] = static_cast<char>(value >> (8 * i));
}

void Repair(std::string& bytes, uint8_t variant) {
  if (bytes.size() < tarn::kCompressedRtfHeaderSize) return;
  const std::string contents = bytes.substr(tarn::kCompressedRtfHeaderSize);
  const uint64_t longest = tarn::LongestUnpackedText(contents.size());
  uint32_t rawSize = 0;
  for (size_t i = 0; i < 4; ++i) {
    rawSize |= static_cast<uint32_t>(static_cast<unsigned char>(bytes[4 + i])) << (8 * i);
  }
  const uint64_t most = (variant & WholeText) != 0 ? longest : contents.size();
  Put(bytes, 0, static_cast<uint32_t>(bytes.size() - 4));
  Put(bytes, 4, static_cast<uint32_t>(rawSize % (most + 1)));
  Put(bytes, 8, (variant & Stored) != 0 ? tarn::kMagicStored : tarn::kMagicPacked);
  Put(bytes, 12, tarn::Crc32(contents.data(), contents.size()));
}

std::string OldBody(uint8_t variant) {
  return std::string((variant & LongBody) != 0 ? 1000 : 10, '.');
}

void CheckDamage(tarn::Status status, const tarn::MailMessage& message, const std::string& old) {
  Expect(status == StatusOk || status == StatusNotSupported || status == StatusOutOfMemory,
         "a status that no decoder has");
  if (status == StatusNotSupported) Expect(message.body.view() == old, "damage reached the body");
}

// A conditional comment too short for the one form is written over, and the terminator with it.
bool EndsInShortComment(std::string_view text) {
  constexpr size_t kLength = std::string_view("<![if]!V").size();
  return text.size() >= kLength && text.substr(text.size() - kLength, 5) == "<![if" &&
         text.substr(text.size() - 2) == "!V";
}

void Unpack(const std::string& bytes, uint8_t variant) {
  const std::string old = OldBody(variant);
  tarn::MailMessage message;
  message.body = tarn::fuzz::KernelText(old);
  const tarn::Status status =
      tarn::DecodeCompressedRtf(tarn::fuzz::KernelText(bytes).take().take(), message, bytes.size());
  CheckDamage(status, message, old);
  if (status != StatusOk) return;
  Expect(message.body.length() != 0, "a text without its terminator");
  Expect(message.body.view().back() == '\0' || EndsInShortComment(message.body.view()),
         "a text without its terminator");
}

// The answer without the text is the decoder's, whatever pieces the bytes come in.
void CheckWithoutText(const std::string& bytes, uint64_t oldLength, tarn::Status status,
                      uint64_t length) {
  if (bytes.size() < tarn::kCompressedRtfHeaderSize || status == StatusOutOfMemory) return;
  for (const size_t piece : {size_t{1}, size_t{23}, bytes.size()}) {
    tarn::PstRtfCheck check(bytes.size(), oldLength);
    for (size_t at = 0; at < bytes.size(); at += piece) {
      const std::string part = bytes.substr(at, piece);
      check.take({reinterpret_cast<const unsigned char*>(part.data()), part.size()});
    }
    Expect(check.status() == status, "another answer without the text");
    Expect(status != StatusOk || check.bodyLength() == length, "another length without the text");
  }
}

void UnpackOfAStore(const std::string& bytes, uint8_t variant) {
  const std::string old = OldBody(variant);
  tarn::MailMessage message;
  message.body = tarn::fuzz::KernelText(old);
  std::istringstream stream(bytes);
  stream.seekg(0, std::ios::end);
  tarn::MessageList messages{1, &message};
  const tarn::Status status = tarn::DecodePstCompressedRtf(stream, messages, 0);
  CheckDamage(status, message, old);
  CheckWithoutText(bytes, old.size(), status, message.body.length());
  Expect(status == StatusNotSupported ||
             message.body.length() <= tarn::LongestUnpackedText(bytes.size()) + old.size(),
         "a text longer than its data");
}

PlainKernelUsageRecord Usage() {
  PlainKernelUsageRecord usage = {};
  PlainKernelUsage(&usage);
  return usage;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const uint8_t variant = data[size - 1];
  std::string bytes(reinterpret_cast<const char*>(data), size);
  if ((variant & Repaired) != 0) Repair(bytes, variant);

  const PlainKernelUsageRecord before = Usage();
  Unpack(bytes, variant);
  UnpackOfAStore(bytes, variant);
  Expect(Usage().liveBlocks == before.liveBlocks, "a decoder left something behind");
  return 0;
}
