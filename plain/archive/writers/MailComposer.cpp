#include "archive/writers/MailComposer.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "archive/mapi/Hexadecimal.h"
#include "archive/mapi/PropertyValues.h"
#include "archive/text/AsciiText.h"
#include "archive/text/BodyText.h"
#include "archive/text/Charsets.h"
#include "archive/writers/ItemText.h"

namespace tarn::archive {
namespace {

constexpr uint16_t kTagInternetReferences = 0x1039;
constexpr uint16_t kTagInReplyToId = 0x1042;

// FNV-1a: boundaries are to differ, and nobody has to be kept from making the same.
uint64_t HashOf(std::string_view text, uint64_t hash) {
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
  return hash;
}

std::string SeedOf(Item& item) {
  const ItemFields& fields = item.fields(Detail::Envelope);
  uint64_t hash = HashOf(item.place().id, 0xCBF29CE484222325);
  hash = HashOf(fields.messageId, hash);
  hash = HashOf(fields.subject, hash);
  return mapi::Hexadecimal(static_cast<uint32_t>(hash >> 32), 8) +
         mapi::Hexadecimal(static_cast<uint32_t>(hash), 8);
}

bool IsPlainName(std::string_view charset) {
  return !charset.empty() && std::all_of(charset.begin(), charset.end(), [](char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-' ||
           c == '_' || c == '.' || c == ':' || c == '+';
  });
}

// Whether ASCII is itself in a charset, as far as that is known.
bool HasAscii(const std::string& charset) {
  constexpr std::string_view kAscii = "\r\n <p>Ab09";
  std::optional<CharsetDecoder> decoder = CharsetDecoder::ForName(charset);
  if (!decoder) return true;
  std::string text;
  decoder->append(kAscii, text);
  return text == kAscii;
}

ThreadFields ThreadOf(Item& item) {
  mapi::MapiMessage* const message = item.properties();
  if (message == nullptr) return {};
  mapi::PropertyValues values(message->properties(), mapi::TextCodePage(message->properties()));
  return {values.text(kTagInReplyToId).value_or(""),
          values.text(kTagInternetReferences).value_or("")};
}

// Whether a class is that of a signed or an encrypted mail.
bool IsSecured(std::string_view messageClass) {
  return StartsWithNoCase(messageClass, "ipm.note.smime");
}

// Where the type of a part is in bytes that begin with its headers: first, or after the version of
// MIME, which the mail has before it. None in other bytes.
std::optional<size_t> PlaceOfType(Item& item, size_t index) {
  const Outcome<std::unique_ptr<ByteSource>> source = item.open(index);
  if (!source) return std::nullopt;
  std::string start(256, '\0');
  const Outcome<size_t> size = (*source)->read(start);
  if (!size) return std::nullopt;
  start.resize(*size);
  std::string_view headers = start;
  if (StartsWithNoCase(headers, "mime-version:")) {
    headers.remove_prefix(std::min(headers.find('\n'), headers.size() - 1) + 1);
  }
  if (!StartsWithNoCase(headers, "content-type:")) return std::nullopt;
  return start.size() - headers.size();
}

// Parts of these types have rules of their own, that bytes which are only carried may not keep.
std::string CarriedType(const std::string& mediaType) {
  const bool isStructure = mediaType.starts_with("multipart/") || mediaType.starts_with("message/");
  return isStructure ? "application/octet-stream" : mediaType;
}

}  // namespace

void MailComposer::put(Item& item) {
  const Outcome<std::unique_ptr<ByteSource>> original = item.original();
  if (!original) {
    lost_.push_back(original.trouble());
  } else if (*original) {
    const std::optional<Trouble> broken = PutAll(**original, out_);
    if (broken) lost_.push_back(*broken);
    return;
  }
  compose(item);
}

void MailComposer::compose(Item& item) {
  const std::string outer = std::exchange(seed_, SeedOf(item));
  putHeaders(item);
  if (putSecured(item)) {
    AppendTroubles(item.troubles(), lost_);
    seed_ = outer;
    return;
  }
  const Plan plan = planOf(item);
  if (plan.others.empty()) {
    putTexts(item, plan);
  } else {
    const std::string boundary = startMultipart("mixed");
    if (!plan.texts.empty()) {
      putDelimiter(boundary);
      putTexts(item, plan);
    }
    for (const size_t index : plan.others) {
      if (out_.isFull()) break;
      putDelimiter(boundary);
      putAttachment(item, index, false);
    }
    endMultipart(boundary);
  }
  AppendTroubles(item.troubles(), lost_);
  seed_ = outer;
}

void MailComposer::putHeaders(Item& item) {
  OriginalHeaders kept;
  const Outcome<std::string> original = item.originalHeaders();
  if (original) {
    kept = KeptHeaders(*original);
  } else {
    lost_.push_back(original.trouble());
  }
  std::sort(kept.names.begin(), kept.names.end());
  out_.put(kept.text);
  out_.put(MailHeaders(item.fields(Detail::Envelope), ThreadOf(item), [&](std::string_view name) {
    return std::binary_search(kept.names.begin(), kept.names.end(), name);
  }));
  out_.put("MIME-Version: 1.0\r\n");
}

// The one attachment of a signed mail is all of its content, with its headers; that of an encrypted
// one is the encrypted bytes. False, and nothing written, for all other items.
bool MailComposer::putSecured(Item& item) {
  if (!IsSecured(item.fields(Detail::Envelope).messageClass)) return false;
  const std::vector<Attachment>& attachments = item.attachments();
  if (attachments.size() != 1 || attachments[0].trouble ||
      attachments[0].kind != AttachmentKind::Data) {
    return false;
  }
  const std::string& type = attachments[0].mediaType;
  const std::optional<size_t> place =
      type == "multipart/signed" ? PlaceOfType(item, 0) : std::nullopt;
  if (place) {
    const Outcome<std::unique_ptr<ByteSource>> source = item.open(0);
    std::string before(*place, '\0');
    if (source && *place != 0) (void)(*source)->read(before);
    const std::optional<Trouble> broken = source ? PutAll(**source, out_) : source.trouble();
    if (broken) lose(attachments[0], 0, *broken);
    return true;
  }
  if (type != "application/pkcs7-mime" && type != "application/x-pkcs7-mime") return false;
  putAttachment(item, 0, false);
  return true;
}

MailComposer::Plan MailComposer::planOf(Item& item) {
  Plan plan;
  Bodies bodies = item.bodies();
  AppendTroubles(bodies.troubles, lost_);
  if (!bodies.text && !bodies.html && bodies.rtf) bodies.text = TextOfRtf(*bodies.rtf);
  if (bodies.text) plan.texts.push_back({"text/plain", "utf-8", EncodeText(*bodies.text)});
  if (bodies.html) {
    // Line ends of mail are those of ASCII, which UTF-16 and EBCDIC do not have.
    HtmlBody& html = *bodies.html;
    const bool isKept =
        html.bytes.find('\0') == std::string::npos &&
        (html.charset.empty() || (IsPlainName(html.charset) && HasAscii(html.charset)));
    if (!isKept) html = {Utf8OfHtml(html), "utf-8"};
    plan.texts.push_back({"text/html", html.charset, EncodeText(html.bytes)});
  }
  const std::vector<Attachment>& attachments = item.attachments();
  for (size_t index = 0; index < attachments.size(); ++index) {
    const Attachment& attachment = attachments[index];
    if (attachment.trouble) {
      lose(attachment, index, *attachment.trouble);
      continue;
    }
    const bool isRelated = bodies.html && attachment.isInline &&
                           attachment.kind == AttachmentKind::Data &&
                           !(attachment.contentId.empty() && attachment.contentLocation.empty());
    (isRelated ? plan.related : plan.others).push_back(index);
  }
  if (plan.texts.empty() && plan.others.empty()) {
    plan.texts.push_back({"text/plain", "utf-8", {}});
  }
  return plan;
}

void MailComposer::putTexts(Item& item, const Plan& plan) {
  if (plan.texts.size() == 1) return putRelated(item, plan);
  const std::string boundary = startMultipart("alternative");
  putDelimiter(boundary);
  putText(plan.texts.front());
  putDelimiter(boundary);
  putRelated(item, plan);
  endMultipart(boundary);
}

void MailComposer::putRelated(Item& item, const Plan& plan) {
  if (plan.related.empty()) return putText(plan.texts.back());
  const std::string boundary = startMultipart("related");
  putDelimiter(boundary);
  putText(plan.texts.back());
  for (const size_t index : plan.related) {
    if (out_.isFull()) break;
    putDelimiter(boundary);
    putAttachment(item, index, true);
  }
  endMultipart(boundary);
}

void MailComposer::putText(const Text& text) {
  PartHeaders headers;
  headers.mediaType = text.mediaType;
  if (!text.charset.empty()) headers.parameters.emplace_back("charset", text.charset);
  headers.encoding = text.encoded.encoding;
  out_.put(TextOf(headers)).put(text.encoded.content);
  // The last line of a mail ends too; that of a part does where the delimiter begins.
  if (boundaries_ == 0 && !text.encoded.content.ends_with("\r\n")) out_.put("\r\n");
}

void MailComposer::putAttachment(Item& item, size_t index, bool isRelated) {
  const Attachment& attachment = item.attachments()[index];
  PartHeaders headers;
  headers.mediaType = attachment.mediaType;
  headers.disposition = isRelated ? "inline" : "attachment";
  headers.fileName = attachment.name;
  headers.contentId = attachment.contentId;
  headers.contentLocation = attachment.contentLocation;
  switch (attachment.kind) {
    case AttachmentKind::Item:
      return putEmbedded(item, index, std::move(headers));
    case AttachmentKind::Reference:
      headers.mediaType = "message/external-body";
      headers.parameters = {{"access-type", "URL"}, {"URL", attachment.target}};
      out_.put(TextOf(headers)).put("Content-Type: application/octet-stream\r\n\r\n");
      return;
    case AttachmentKind::Data:
    case AttachmentKind::Ole:
    case AttachmentKind::Signature:
      return putData(item, index, std::move(headers));
  }
}

void MailComposer::putData(Item& item, size_t index, PartHeaders headers) {
  headers.mediaType = CarriedType(headers.mediaType);
  headers.encoding = "base64";
  out_.put(TextOf(headers));
  const Outcome<std::unique_ptr<ByteSource>> source = item.open(index);
  const std::optional<Trouble> broken =
      source ? PutBase64(**source, Base64Lines::Mime, out_) : source.trouble();
  if (broken) lose(item.attachments()[index], index, *broken);
}

void MailComposer::putEmbedded(Item& item, size_t index, PartHeaders headers) {
  const Outcome<std::unique_ptr<Item>> inner = item.embedded(index);
  if (!inner) {
    lose(item.attachments()[index], index, inner.trouble());
    headers.mediaType = "text/plain";
    out_.put(TextOf(headers));
    return;
  }
  headers.mediaType = "message/rfc822";
  out_.put(TextOf(headers));
  put(**inner);
}

void MailComposer::lose(const Attachment& attachment, size_t index, const Trouble& trouble) {
  lost_.push_back({trouble.kind, "the attachment " + AttachmentTitle(attachment, index) +
                                     " cannot be read: " + trouble.reason});
}

std::string MailComposer::startMultipart(std::string_view subtype) {
  std::string boundary = "=_" + seed_ + "_" + std::to_string(++boundaries_);
  PartHeaders headers;
  headers.mediaType = "multipart/" + std::string(subtype);
  headers.parameters.emplace_back("boundary", boundary);
  out_.put(TextOf(headers));
  return boundary;
}

void MailComposer::putDelimiter(const std::string& boundary) {
  out_.put("\r\n--").put(boundary).put("\r\n");
}

void MailComposer::endMultipart(const std::string& boundary) {
  out_.put("\r\n--").put(boundary).put("--\r\n");
}

}  // namespace tarn::archive
