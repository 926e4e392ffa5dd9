#include "archive/mail/PartBytes.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "archive/mail/GObjectPtr.h"
#include "archive/text/BodyText.h"

namespace tarn::archive::mail {
namespace {

class PartSource final : public ByteSource {
 public:
  explicit PartSource(GObjectPtr<GMimeStream> stream) : stream_(std::move(stream)) {}

  Outcome<size_t> read(std::span<char> buffer) override {
    if (stream_ == nullptr || buffer.empty()) return size_t{0};
    const ssize_t count = g_mime_stream_read(stream_.get(), buffer.data(), buffer.size());
    if (count > 0) return static_cast<size_t>(count);
    stream_.reset();
    if (count == 0) return size_t{0};
    return Trouble{TroubleKind::Unreadable, "the attachment cannot be read to its end"};
  }

 private:
  GObjectPtr<GMimeStream> stream_;
};

bool IsEncoded(GMimeContentEncoding encoding) {
  return encoding == GMIME_CONTENT_ENCODING_BASE64 ||
         encoding == GMIME_CONTENT_ENCODING_QUOTEDPRINTABLE ||
         encoding == GMIME_CONTENT_ENCODING_UUENCODE;
}

// Where a content ends that comes before a delimiter. The line end before that is the delimiter's
// (RFC 2046 5.1.1), and GMime takes it to be as long as the one after.
gint64 EndBeforeDelimiter(GMimeStream* content) {
  constexpr gint64 kBefore = 1;
  constexpr gint64 kAfter = 4;
  const gint64 end = content->bound_end;
  if (end < kBefore) return end;
  const GObjectPtr<GMimeStream> around(
      g_mime_stream_substream(content, end - kBefore, end + kAfter));
  std::array<char, kBefore + kAfter> bytes;
  const ssize_t count = g_mime_stream_read(around.get(), bytes.data(), bytes.size());
  const std::string_view text(bytes.data(), count < 0 ? 0 : static_cast<size_t>(count));
  if (text.size() < bytes.size()) return end;
  if (text.starts_with("\r\n--")) return std::max(content->bound_start, end - 1);
  return text[1] != '\r' && text.substr(2) == "\n--" ? end + 1 : end;
}

// Where the raw content of a part is, in a stream of its own, so that two may read the same part;
// null without content.
GObjectPtr<GMimeStream> RawContentOf(GMimePart* part) {
  GMimeDataWrapper* content = g_mime_part_get_content(part);
  GMimeStream* raw = content == nullptr ? nullptr : g_mime_data_wrapper_get_stream(content);
  if (raw == nullptr) return nullptr;
  return GObjectPtr<GMimeStream>(
      g_mime_stream_substream(raw, raw->bound_start, EndBeforeDelimiter(raw)));
}

}  // namespace

std::unique_ptr<ByteSource> OpenPart(GMimePart* part) {
  GObjectPtr<GMimeStream> stream = RawContentOf(part);
  if (stream == nullptr) return std::make_unique<PartSource>(nullptr);
  const GMimeContentEncoding encoding =
      g_mime_data_wrapper_get_encoding(g_mime_part_get_content(part));
  if (!IsEncoded(encoding)) return std::make_unique<PartSource>(std::move(stream));
  GObjectPtr<GMimeStream> decoded(g_mime_stream_filter_new(stream.get()));
  const GObjectPtr<GMimeFilter> filter(g_mime_filter_basic_new(encoding, FALSE));
  g_mime_stream_filter_add(GMIME_STREAM_FILTER(decoded.get()), filter.get());
  return std::make_unique<PartSource>(std::move(decoded));
}

std::string StartOfPart(GMimePart* part, size_t limit) {
  const std::unique_ptr<ByteSource> source = OpenPart(part);
  std::string start;
  std::array<char, 4096> buffer;
  while (start.size() < limit) {
    const auto count =
        source->read(std::span(buffer).first(std::min(buffer.size(), limit - start.size())));
    if (!count || *count == 0) break;
    start.append(buffer.data(), *count);
  }
  return start;
}

std::optional<uint64_t> SizeOfPart(GMimePart* part) {
  GMimeDataWrapper* content = g_mime_part_get_content(part);
  if (content == nullptr) return uint64_t{0};
  if (IsEncoded(g_mime_data_wrapper_get_encoding(content))) return std::nullopt;
  const GObjectPtr<GMimeStream> raw = RawContentOf(part);
  if (raw == nullptr) return uint64_t{0};
  const gint64 length = g_mime_stream_length(raw.get());
  if (length < 0) return std::nullopt;
  return static_cast<uint64_t>(length);
}

std::string TextOfLines(const char* text) {
  if (text == nullptr) return {};
  std::string lines = Utf8Of(text, "");
  EndLinesWithLf(lines);
  return lines;
}

void EndLinesWithLf(std::string& text) {
  size_t kept = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const bool isBeforeLf = text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n';
    if (isBeforeLf) continue;
    text[kept++] = text[i] == '\r' ? '\n' : text[i];
  }
  text.resize(kept);
  while (!text.empty() && text.back() == '\0') text.pop_back();
}

}  // namespace tarn::archive::mail
