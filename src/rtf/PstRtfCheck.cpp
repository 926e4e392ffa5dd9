#include "rtf/PstRtfCheck.h"

#include <algorithm>
#include <cstring>

#include "Common/Crc32.h"

namespace tarn {

void PstRtfCheck::take(Bytes bytes) {
  const uint64_t inHeader =
      std::min<uint64_t>(bytes.size(), headerBytes_.size() - std::min(taken_, headerBytes_.size()));
  if (inHeader != 0) {
    std::copy_n(bytes.begin(), inHeader, headerBytes_.data() + taken_);
    if (taken_ + inHeader == headerBytes_.size()) begin();
  }
  taken_ += bytes.size();
  takeContents(bytes.subspan(inHeader));
}

// The header is there. A body with room enough would keep its block and its length less the fixed
// text, and a last reference would have what is left of that room.
void PstRtfCheck::begin() {
  header_ = ReadCompressedRtfHeader(headerBytes_);
  if (header_.magic == kMagicStored) {
    bodyLength_ = 1;  // the terminator
    return;
  }
  const auto textSize = static_cast<uint64_t>(header_.rawSize);
  if (header_.magic != kMagicPacked ||
      textSize > LongestUnpackedText(length_ - kCompressedRtfHeaderSize)) {
    return;
  }
  const uint64_t end = kLzfuFixedSize + textSize;
  const bool keepsBlock = bodyLength_ >= end;
  packed_.emplace(textSize, keepsBlock ? std::min(bodyLength_ - end, kLzfuLongestToken) : 0);
  bodyLength_ = keepsBlock ? bodyLength_ - kLzfuFixedSize : textSize;
}

void PstRtfCheck::takeContents(Bytes contents) {
  crc_ = Crc32(contents.data(), contents.size(), crc_);
  if (packed_) packed_->take(contents);
  if (header_.magic != kMagicStored || hasEnded_) return;
  const auto nul = std::find(contents.begin(), contents.end(), '\0');
  bodyLength_ += Bytes(contents.begin(), nul).size();
  hasEnded_ = nul != contents.end();
}

Status PstRtfCheck::status() const {
  const bool isSound = header_.compressedSize == length_ - 4 && header_.crc == crc_;
  const bool unpacks = packed_ ? packed_->isWhole() : header_.magic == kMagicStored;
  return isSound && unpacks ? StatusOk : StatusNotSupported;
}

}  // namespace tarn
