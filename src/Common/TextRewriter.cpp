#include "Common/TextRewriter.h"

namespace tarn {

bool TextRewriter::open(SizedBytes& text, const TextGrowth& growth) {
  const uint64_t gap = growth.most();
  const uint64_t length = text.length();
  if (!text.fitBlock(gap)) return false;
  block_ = text.take();
  if (length != 0) std::memmove(block_.get() + gap, block_.get(), length);
  text_ = &text;
  old_ = {block_.get() + gap, length};
  taken_ = 0;
  written_ = 0;
  return true;
}

void TextRewriter::keepUpTo(uint64_t place) {
  const uint64_t count = place - taken_;
  if (count != 0) std::memmove(block_.get() + written_, old_.data() + taken_, count);
  taken_ = place;
  written_ += count;
}

void TextRewriter::replace(uint64_t start, uint64_t end, std::string_view replacement) {
  keepUpTo(start);
  taken_ = end;
  replacement.copy(block_.get() + written_, replacement.size());
  written_ += replacement.size();
}

void TextRewriter::close() {
  keepUpTo(old_.size());
  const auto size = static_cast<uint64_t>(old_.data() + old_.size() - block_.get());
  text_->adopt(std::move(block_), written_);
  // The block may stay as large as it is.
  if (written_ != size) text_->fitBlock();
}

}  // namespace tarn
