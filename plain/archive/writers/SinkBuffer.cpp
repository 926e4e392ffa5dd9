#include "archive/writers/SinkBuffer.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

namespace tarn::archive {
namespace {

constexpr size_t kPiece = size_t{64} << 10;

// Bytes of one line of base64, and of a piece of whole lines.
constexpr size_t kLineBytes = 57;
constexpr size_t kLinesOfPiece = 1024;

constexpr std::string_view kDigits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Fills the buffer as far as there are bytes.
size_t Fill(ByteSource& source, std::span<char> buffer, std::optional<Trouble>& broken) {
  size_t size = 0;
  while (size < buffer.size()) {
    Outcome<size_t> read = source.read(buffer.subspan(size));
    if (!read) {
      broken = read.trouble();
      break;
    }
    if (*read == 0) break;
    size += *read;
  }
  return size;
}

void AppendBase64(std::string_view bytes, std::string& text) {
  const auto byte = [&](size_t at) {
    return static_cast<uint32_t>(static_cast<uint8_t>(bytes[at]));
  };
  size_t at = 0;
  const auto digit = [&](uint32_t bits, int shift) { text += kDigits[(bits >> shift) & 63]; };
  for (; at + 3 <= bytes.size(); at += 3) {
    const uint32_t bits = byte(at) << 16 | byte(at + 1) << 8 | byte(at + 2);
    for (const int shift : {18, 12, 6, 0}) digit(bits, shift);
  }
  if (at == bytes.size()) return;
  const bool isPair = at + 2 == bytes.size();
  const uint32_t bits = byte(at) << 16 | (isPair ? byte(at + 1) << 8 : 0);
  digit(bits, 18);
  digit(bits, 12);
  if (isPair) digit(bits, 6);
  text += isPair ? "=" : "==";
}

}  // namespace

SinkBuffer& SinkBuffer::put(std::string_view bytes) {
  if (full_) return *this;
  if (waiting_.size() + bytes.size() < kPiece) {
    waiting_ += bytes;
    return *this;
  }
  finish();
  if (bytes.size() < kPiece) {
    waiting_ += bytes;
  } else if (!full_) {
    full_ = sink_.write(bytes);
  }
  return *this;
}

std::optional<Trouble> SinkBuffer::finish() {
  if (!full_ && !waiting_.empty()) full_ = sink_.write(waiting_);
  waiting_.clear();
  return full_;
}

std::optional<Trouble> PutAll(ByteSource& source, SinkBuffer& out) {
  std::optional<Trouble> broken;
  std::string piece(kPiece, '\0');
  while (!out.isFull() && !broken) {
    const size_t size = Fill(source, piece, broken);
    if (size == 0) break;
    out.put(std::string_view(piece).substr(0, size));
  }
  return broken;
}

std::optional<Trouble> PutBase64(ByteSource& source, Base64Lines lines, SinkBuffer& out) {
  std::optional<Trouble> broken;
  std::string piece(kLineBytes * kLinesOfPiece, '\0');
  while (!out.isFull() && !broken) {
    const size_t size = Fill(source, piece, broken);
    if (size == 0) break;
    PutBase64(std::string_view(piece).substr(0, size), lines, out);
  }
  return broken;
}

void PutBase64(std::string_view bytes, Base64Lines lines, SinkBuffer& out) {
  const size_t step = lines == Base64Lines::Mime ? kLineBytes : kLineBytes * kLinesOfPiece;
  std::string text;
  text.reserve(step / 3 * 4 + 4);
  while (!bytes.empty() && !out.isFull()) {
    text.clear();
    AppendBase64(bytes.substr(0, step), text);
    if (lines == Base64Lines::Mime) text += "\r\n";
    out.put(text);
    bytes.remove_prefix(std::min(step, bytes.size()));
  }
}

}  // namespace tarn::archive
