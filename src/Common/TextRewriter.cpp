#include "Common/TextRewriter.h"

namespace tarn {

bool TextRewriter::open(SizedBytes& text, const TextGrowth& growth) {
  const uint64_t gap = growth.most();
  if (gap > UINT64_MAX - text.length()) return false;
  auto* const block =
      static_cast<char*>(KernelRealloc(text.data(), text.length() + gap, TARN_HERE));
  if (block == nullptr) return false;
  text.setData(block);
  if (text.length() != 0) std::memmove(block + gap, block, text.length());
  text_ = &text;
  old_ = {block + gap, text.length()};
  taken_ = 0;
  written_ = 0;
  return true;
}

void TextRewriter::keepUpTo(uint64_t place) {
  const uint64_t count = place - taken_;
  if (count != 0) std::memmove(text_->data() + written_, old_.data() + taken_, count);
  taken_ = place;
  written_ += count;
}

void TextRewriter::replace(uint64_t start, uint64_t end, std::string_view replacement) {
  keepUpTo(start);
  taken_ = end;
  if (!replacement.empty())
    std::memcpy(text_->data() + written_, replacement.data(), replacement.size());
  written_ += replacement.size();
}

void TextRewriter::close() {
  keepUpTo(old_.size());
  const auto block = static_cast<uint64_t>(old_.data() + old_.size() - text_->data());
  text_->setLength(written_);
  if (written_ == block) return;
  // The block may stay as large as it is.
  void* const smaller = KernelRealloc(text_->data(), written_, TARN_HERE);
  if (smaller != nullptr) text_->setData(static_cast<char*>(smaller));
}

}  // namespace tarn
