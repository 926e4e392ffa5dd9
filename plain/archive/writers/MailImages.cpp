#include "archive/writers/MailImages.h"

#include <algorithm>
#include <span>

#include "archive/text/AsciiText.h"
#include "archive/writers/ItemText.h"

namespace tarn::archive {
namespace {

constexpr size_t kStartOfImage = 32;

int DigitOf(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

std::string WithoutPercents(std::string_view text) {
  std::string plain;
  for (size_t at = 0; at < text.size(); ++at) {
    const int high = at + 2 < text.size() ? DigitOf(text[at + 1]) : -1;
    const int low = high < 0 ? -1 : DigitOf(text[at + 2]);
    if (text[at] != '%' || low < 0) {
      plain += text[at];
      continue;
    }
    plain += static_cast<char>(high * 16 + low);
    at += 2;
  }
  return plain;
}

// As much of a source as tells whether it is a picture.
Outcome<std::string> ReadStart(ByteSource& source) {
  std::string start(kStartOfImage, '\0');
  size_t size = 0;
  while (size < start.size()) {
    const Outcome<size_t> read = source.read(std::span<char>(start).subspan(size));
    if (!read) return read.trouble();
    if (*read == 0) break;
    size += *read;
  }
  start.resize(size);
  return start;
}

}  // namespace

std::string_view ImageTypeOf(std::string_view bytes) {
  using namespace std::string_view_literals;
  if (bytes.starts_with("\x89PNG\r\n\x1A\n")) return "image/png";
  if (bytes.starts_with("\xFF\xD8\xFF")) return "image/jpeg";
  if (bytes.starts_with("GIF87a") || bytes.starts_with("GIF89a")) return "image/gif";
  if (bytes.starts_with("RIFF") &&
      bytes.substr(std::min<size_t>(8, bytes.size())).starts_with("WEBP")) {
    return "image/webp";
  }
  if (bytes.starts_with("BM") && bytes.size() > 26 && bytes.substr(6, 4) == "\0\0\0\0"sv) {
    return "image/bmp";
  }
  if (bytes.starts_with("\0\0\1\0"sv) && bytes.size() > 22) return "image/x-icon";
  return {};
}

MailImages::MailImages(Item& item, std::vector<Trouble>& lost) : item_(item), lost_(lost) {
  const std::vector<Attachment>& attachments = item.attachments();
  for (size_t index = 0; index < attachments.size(); ++index) {
    const Attachment& attachment = attachments[index];
    if (!attachment.contentId.empty()) ids_.emplace(LoweredAscii(attachment.contentId), index);
    if (!attachment.contentLocation.empty()) places_.emplace(attachment.contentLocation, index);
    if (attachment.name.empty()) continue;
    places_.emplace(attachment.name, index);
    if (attachment.contentId.empty()) idsByName_.emplace(LoweredAscii(attachment.name), index);
  }
}

std::optional<size_t> MailImages::find(std::string_view address) const {
  const auto at = places_.find(address);
  if (at != places_.end()) return at->second;
  if (address.size() < 4 || LoweredAscii(address.substr(0, 4)) != "cid:") return std::nullopt;
  const std::string id = LoweredAscii(address.substr(4));
  for (const std::string& spelling : {id, WithoutPercents(id)}) {
    const auto found = ids_.find(spelling);
    if (found != ids_.end()) return found->second;
  }
  for (const std::string& spelling : {id, WithoutPercents(id)}) {
    const auto found = idsByName_.find(spelling.substr(0, spelling.find('@')));
    if (found != idsByName_.end()) return found->second;
  }
  return std::nullopt;
}

std::optional<MailImage> MailImages::load(size_t index) {
  const Attachment& attachment = item_.attachments()[index];
  if (attachment.kind != AttachmentKind::Data || attachment.trouble || failed_.contains(index)) {
    return std::nullopt;
  }
  const size_t limit = std::min(kLargestImage, room_);
  if (attachment.size && *attachment.size > limit) return std::nullopt;
  const auto fail = [&](const Trouble& trouble) {
    failed_.insert(index);
    if (trouble.kind == TroubleKind::TooLarge) return std::nullopt;
    lost_.push_back({trouble.kind, "the picture " + AttachmentTitle(attachment, index) +
                                       " is not shown: " + trouble.reason});
    return std::nullopt;
  };
  const Outcome<std::unique_ptr<ByteSource>> source = item_.open(index);
  if (!source) return fail(source.trouble());
  Outcome<std::string> bytes = ReadStart(**source);
  if (!bytes) return fail(bytes.trouble());
  const std::string_view type = ImageTypeOf(*bytes);
  if (type.empty()) {
    failed_.insert(index);
    return std::nullopt;
  }
  if (bytes->size() > limit) return std::nullopt;
  const Outcome<std::string> rest = ReadAll(**source, limit - bytes->size());
  if (!rest) return fail(rest.trouble());
  *bytes += *rest;
  room_ -= bytes->size();
  return MailImage{type, std::move(*bytes)};
}

void PutDataUrl(const MailImage& image, SinkBuffer& out) {
  out.put("data:").put(image.type).put(";base64,");
  PutBase64(image.bytes, Base64Lines::None, out);
}

}  // namespace tarn::archive
