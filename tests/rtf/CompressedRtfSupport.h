// CompressedRtfSupport.h - runs both decoders of compressed RTF over bytes.
#ifndef TARN_TESTS_RTF_COMPRESSEDRTFSUPPORT_H
#define TARN_TESTS_RTF_COMPRESSEDRTFSUPPORT_H

#include <gtest/gtest.h>

#include <cstring>
#include <ios>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

#include "Internal/MailMessage.h"
#include "Tarnbase/PlainKernel.h"
#include "rtf/CompressedRtf.h"
#include "support/PeakMemory.h"
#include "support/RtfCompressor.h"

namespace tarn::test {

// What a decoder has left; the body's bytes with all that its length counts.
struct Decoded {
  Status status;
  std::string body;
};

inline bool operator==(const Decoded& a, const Decoded& b) {
  return a.status == b.status && a.body == b.body;
}

inline std::ostream& operator<<(std::ostream& out, const Decoded& decoded) {
  return out << decoded.status.code() << ", " << decoded.body.size() << " bytes: \""
             << decoded.body.substr(0, 300) << '"';
}

// A kernel block of exactly these bytes.
inline char* KernelCopy(std::string_view bytes) {
  auto* const block = static_cast<char*>(KernelAlloc(bytes.size(), 1, TARN_HERE));
  if (!bytes.empty()) std::memcpy(block, bytes.data(), bytes.size());
  return block;
}

// What the body holds before a decoder runs.
inline void GiveBody(MailMessage& message, std::string_view bytes) {
  message.body.adopt(KernelBlock<char>(KernelCopy(bytes)), bytes.size());
}

inline Status Unpack(MailMessage& message, std::string_view bytes) {
  return DecodeCompressedRtf(KernelCopy(bytes), message, bytes.size());
}

// With a body to begin with, so that damage shows whether it stays.
inline Decoded Unpack(std::string_view bytes, std::string_view oldBody = "old") {
  MailMessage message;
  GiveBody(message, oldBody);
  const Status status = Unpack(message, bytes);
  return {status, std::string(message.body.view())};
}

inline Status UnpackPst(MailMessage& message, std::string_view bytes) {
  std::istringstream stream{std::string(bytes)};
  stream.seekg(0, std::ios::end);
  MessageList messages{1, &message};
  return DecodePstCompressedRtf(stream, messages, 0);
}

inline Decoded UnpackPst(std::string_view bytes, std::string_view oldBody = "old") {
  MailMessage message;
  GiveBody(message, oldBody);
  const Status status = UnpackPst(message, bytes);
  return {status, std::string(message.body.view())};
}

// Packed tokens with a header that names the raw size.
inline std::string Packed(uint32_t rawSize, const LzfuTokens& tokens) {
  CompressedRtfFields fields;
  fields.rawSize = rawSize;
  return WriteCompressedRtf(fields, tokens.bytes());
}

// Bytes that hold NULs, from a literal.
template <size_t N>
std::string Literal(const char (&literal)[N]) {
  return std::string(literal, N - 1);
}

// Something like RTF of about so many bytes: words that come back, runs, and bytes of all values.
inline std::string RandomRtf(std::mt19937& random, size_t size) {
  static constexpr std::string_view kWords[] = {"\\par ",
                                                "\\pard\\plain\\f0\\fs20 ",
                                                "{\\*\\htmltag84 <p>}",
                                                "\\'e9",
                                                "\r\n",
                                                "the ",
                                                "a quick brown fox ",
                                                "{\\fonttbl",
                                                "}",
                                                "\\htmlrtf \\htmlrtf0 "};
  std::string text = "{\\rtf1\\ansi ";
  while (text.size() < size) {
    const uint32_t kind = static_cast<uint32_t>(random() % 12);
    if (kind < 10) {
      text += kWords[kind];
    } else if (kind == 10) {
      text += std::string(random() % 60, static_cast<char>('a' + random() % 26));
    } else {
      for (uint64_t i = random() % 20; i > 0; --i) text += static_cast<char>(1 + random() % 255);
    }
  }
  text.resize(size);
  return text;
}

// MS-OXRTFCP, 4.1.1: "{\rtf1\ansi\ansicpg1252\pard hello world}" and a line end.
inline std::string PublishedHelloWorld() {
  return Literal(
      "\x2D\x00\x00\x00\x2B\x00\x00\x00\x4C\x5A\x46\x75\xF1\xC5\xC7\xA7"
      "\x03\x00\x0A\x00\x72\x63\x70\x67\x31\x32\x35\x42\x32\x0A\xF3\x20"
      "\x68\x65\x6C\x09\x00\x20\x62\x77\x05\xB0\x6C\x64\x7D\x0A\x80\x0F\xA0");
}

// MS-OXRTFCP, 4.1.2: a reference that reads what it has just written.
inline std::string PublishedCrossing() {
  return Literal(
      "\x1A\x00\x00\x00\x1C\x00\x00\x00\x4C\x5A\x46\x75\xE2\xD4\x4B\x51"
      "\x41\x00\x04\x20\x57\x58\x59\x5A\x0D\x6E\x7D\x01\x0E\xB0");
}

}  // namespace tarn::test

#endif
