#include "archive/mail/LineScan.h"

#include <algorithm>

namespace tarn::archive::mail {

bool LineScan::fill() {
  chunkStart_ += size_;
  size_ = 0;
  at_ = 0;
  const Outcome<size_t> count = bytes_.readAt(chunkStart_, chunk_);
  if (!count) {
    trouble_ = count.trouble();
    return false;
  }
  size_ = *count;
  return size_ != 0;
}

void LineScan::goTo(uint64_t offset) {
  if (offset >= chunkStart_ && offset <= chunkStart_ + size_) {
    at_ = static_cast<size_t>(offset - chunkStart_);
    return;
  }
  chunkStart_ = offset;
  size_ = 0;
  at_ = 0;
}

bool LineScan::skipOthers(std::string_view beginnings, uint64_t limit) {
  const std::string_view chunk(chunk_.data(), size_);
  const size_t before = at_;
  while (at_ < size_ && beginnings.find(chunk[at_]) == std::string_view::npos) {
    const size_t newline = chunk.find('\n', at_);
    if (newline == std::string_view::npos || chunkStart_ + newline >= limit) break;
    at_ = newline + 1;
  }
  return at_ != before;
}

std::optional<LineScan::Line> LineScan::next() {
  if (trouble_) return std::nullopt;
  if (at_ == size_ && !fill()) return std::nullopt;
  Line line;
  line.start = chunkStart_ + at_;
  pieces_.clear();
  bool isPieced = false;
  for (;;) {
    const std::string_view rest(chunk_.data() + at_, size_ - at_);
    const size_t newline = rest.find('\n');
    const bool ends = newline != std::string_view::npos;
    const std::string_view piece = rest.substr(0, ends ? newline + 1 : rest.size());
    at_ += piece.size();
    line.end = chunkStart_ + at_;
    if (ends && !isPieced) {
      line.text = piece.substr(0, kKept);
      break;
    }
    isPieced = true;
    pieces_ += piece.substr(0, kKept - std::min(kKept, pieces_.size()));
    line.text = pieces_;
    if (ends || !fill()) break;
  }
  while (!line.text.empty() && (line.text.back() == '\n' || line.text.back() == '\r')) {
    line.text.remove_suffix(1);
  }
  return line;
}

}  // namespace tarn::archive::mail
