#include "archive/mail/LineEnds.h"

#include <algorithm>
#include <string>
#include <utility>

namespace tarn::archive::mail {
namespace {

// Longer headers without LF are none.
constexpr size_t kLongestHeader = 65536;

class LineFeedBytes final : public MailBytes {
 public:
  explicit LineFeedBytes(SharedBytes bytes) : bytes_(std::move(bytes)) {}

  uint64_t size() const override { return bytes_->size(); }

  Outcome<size_t> readAt(uint64_t offset, std::span<char> buffer) override {
    Outcome<size_t> count = bytes_->readAt(offset, buffer);
    if (count) {
      const std::span<char> read = buffer.first(*count);
      std::replace(read.begin(), read.end(), '\r', '\n');
    }
    return count;
  }

 private:
  SharedBytes bytes_;
};

// Whether lines end with CR alone. Some texts end them with CR CR LF.
bool HasCrAlone(std::string_view text) {
  const size_t feed = text.find('\n');
  if (feed == std::string_view::npos) return text.find('\r') != std::string_view::npos;
  const size_t empty = text.find("\r\r");
  return empty != std::string_view::npos && empty + 2 < feed;
}

}  // namespace

Outcome<SharedBytes> WithLineFeeds(SharedBytes bytes) {
  constexpr size_t kLine = 1024;
  Outcome<std::string> start = ReadRange(*bytes, 0, kLine);
  // Most have their first line end there.
  if (start && start->size() == kLine && start->find('\n') == std::string::npos) {
    start = ReadRange(*bytes, 0, kLongestHeader);
  }
  if (!start) return start.trouble();
  if (!HasCrAlone(*start)) return bytes;
  return SharedBytes(std::make_shared<LineFeedBytes>(std::move(bytes)));
}

}  // namespace tarn::archive::mail
