#include "archive/mail/MailAttachments.h"

#include <unordered_set>
#include <utility>

#include "archive/mail/EmbeddedMail.h"
#include "archive/mail/GObjectPtr.h"
#include "archive/mail/HeaderFields.h"
#include "archive/mail/MailBodies.h"
#include "archive/mail/PartBytes.h"
#include "archive/mail/Uuencode.h"
#include "archive/text/AsciiText.h"
#include "archive/text/BodyText.h"

namespace tarn::archive::mail {
namespace {

// An encoded mail within a mail beyond this is not read.
constexpr size_t kLargestEncodedMail = size_t{64} << 20;

// What the HTML of the mail shows. Read only where a part could be named.
class ShownParts {
 public:
  explicit ShownParts(const MailLayout& layout) : layout_(layout) {}

  bool has(const Attachment& attachment, const LaidPart& laid) {
    if (attachment.contentId.empty() && attachment.contentLocation.empty()) return false;
    if (!isRead_) read();
    if (!attachment.contentId.empty() && ids_.count(attachment.contentId) != 0) return true;
    if (attachment.contentLocation.empty() || !laid.isRelated) return false;
    return html_.find(attachment.contentLocation) != std::string::npos;
  }

 private:
  void read() {
    isRead_ = true;
    for (const BodyPiece& piece : layout_.pieces) {
      for (const BodyPart& part : piece.parts) {
        if (!part.isHtml) continue;
        const Outcome<std::string> bytes = BytesOfText(part.part);
        if (!bytes) continue;
        const HtmlBody html{*bytes, ParameterOf(GMIME_OBJECT(part.part), "charset")};
        ids_.merge(ContentIdsOf(html));
        html_ += Utf8OfHtml(html);
      }
    }
  }

  const MailLayout& layout_;
  bool isRead_ = false;
  std::unordered_set<std::string> ids_;
  std::string html_;
};

bool IsDispositionInline(GMimeObject* part) {
  const char* disposition = g_mime_object_get_disposition(part);
  return disposition != nullptr && EqualsNoCase(disposition, "inline");
}

// Where an external body is (RFC 2046 5.2.3, RFC 2017).
std::string TargetOf(GMimeObject* part) {
  std::string url = ParameterOf(part, "url");
  if (!url.empty()) return url;
  const std::string access = LoweredAscii(ParameterOf(part, "access-type"));
  const std::string site = ParameterOf(part, "site");
  const std::string directory = ParameterOf(part, "directory");
  std::string name = ParameterOf(part, "name");
  if (access == "mail-server") return "mailto:" + ParameterOf(part, "server");
  if (site.empty()) return name;
  std::string target = (access == "tftp" ? "tftp://" : "ftp://") + site + "/";
  if (!directory.empty()) target += directory + "/";
  return target + name;
}

Attachment Describe(MailBytes& mail, const LaidPart& laid) {
  Attachment attachment;
  attachment.kind = laid.kind;
  attachment.name = FileNameOf(laid.part);
  attachment.mediaType = MediaTypeOf(laid.part);
  if (attachment.mediaType.starts_with("text/")) {
    attachment.charset = ParameterOf(laid.part, "charset");
  }
  attachment.contentId = TextOf(g_mime_object_get_content_id(laid.part));
  if (GMIME_IS_PART(laid.part)) {
    GMimePart* part = GMIME_PART(laid.part);
    attachment.contentLocation = DecodedHeader(laid.part, "Content-Location");
    attachment.size = SizeOfPart(part);
  } else if (GMIME_IS_MESSAGE_PART(laid.part)) {
    const Outcome<ByteRange> range = RangeOfEmbedded(mail, laid);
    if (range) {
      attachment.size = range->end - range->start;
    } else {
      attachment.trouble = range.trouble();
    }
  }
  if (laid.kind == AttachmentKind::Reference) {
    attachment.target = TargetOf(laid.part);
    attachment.size.reset();
  }
  return attachment;
}

Trouble OutOfPlace() { return {TroubleKind::Missing, "the text has no such file"}; }

Outcome<std::unique_ptr<ByteSource>> OpenUuencoded(const AttachmentSource& source) {
  const Outcome<std::string> text = BytesOfText(source.laid->uuencoded);
  if (!text) return text.trouble();
  const UuencodedText split = SplitUuencode(*text);
  if (source.file >= split.files.size()) return OutOfPlace();
  return BytesOf(DecodeUuencode(split.files[source.file].lines));
}

void AddUuencoded(const LaidPart& laid, MailAttachments& attachments) {
  const Outcome<std::string> text = BytesOfText(laid.uuencoded);
  if (!text) return;
  const UuencodedText split = SplitUuencode(*text);
  for (size_t i = 0; i < split.files.size(); ++i) {
    Attachment attachment;
    attachment.name = Utf8Of(split.files[i].name, "");
    attachment.size = DecodeUuencode(split.files[i].lines).size();
    attachments.list.push_back(std::move(attachment));
    attachments.sources.push_back({&laid, i});
  }
}

void AddOfMessage(const LaidPart& laid, Item& message, MailAttachments& attachments) {
  const std::vector<Attachment>& list = message.attachments();
  for (size_t i = 0; i < list.size(); ++i) {
    attachments.list.push_back(list[i]);
    attachments.sources.push_back({&laid, i, &message});
  }
}

}  // namespace

size_t CountAttachments(const MailLayout& layout, TnefParts& tnefs) {
  size_t count = 0;
  for (const LaidPart& laid : layout.parts) {
    if (Item* const message = tnefs.of(laid)) {
      count += message->attachments().size();
    } else if (laid.uuencoded == nullptr) {
      ++count;
    } else if (const Outcome<std::string> text = BytesOfText(laid.uuencoded)) {
      count += SplitUuencode(*text).files.size();
    }
  }
  return count;
}

MailAttachments ReadAttachments(MailBytes& mail, const MailLayout& layout, TnefParts& tnefs) {
  MailAttachments attachments;
  ShownParts shown(layout);
  for (const LaidPart& laid : layout.parts) {
    if (laid.uuencoded != nullptr) {
      AddUuencoded(laid, attachments);
      continue;
    }
    if (Item* const message = tnefs.of(laid)) {
      AddOfMessage(laid, *message, attachments);
      continue;
    }
    Attachment attachment = Describe(mail, laid);
    const bool saysInline = IsDispositionInline(laid.part) && !attachment.contentId.empty();
    attachment.isInline = saysInline || shown.has(attachment, laid);
    attachments.list.push_back(std::move(attachment));
    attachments.sources.push_back({&laid});
  }
  return attachments;
}

Outcome<std::unique_ptr<ByteSource>> OpenAttachment(const SharedBytes& mail,
                                                    const AttachmentSource& source) {
  if (source.message != nullptr) return source.message->open(source.file);
  if (source.laid->uuencoded != nullptr) return OpenUuencoded(source);
  if (source.laid->kind == AttachmentKind::Reference) {
    return Trouble{TroubleKind::Missing, "the attachment is elsewhere"};
  }
  if (GMIME_IS_PART(source.laid->part)) return OpenPart(GMIME_PART(source.laid->part));
  Outcome<SharedBytes> bytes = BytesOfEmbedded(mail, *source.laid);
  if (!bytes) return bytes.trouble();
  return SourceOf(std::move(*bytes));
}

Outcome<SharedBytes> BytesOfEmbedded(const SharedBytes& mail, const LaidPart& part) {
  if (GMIME_IS_PART(part.part)) {
    Outcome<std::string> bytes = ReadAll(*OpenPart(GMIME_PART(part.part)), kLargestEncodedMail);
    if (!bytes) return bytes.trouble();
    return BytesInMemory(std::move(*bytes));
  }
  const Outcome<ByteRange> range = RangeOfEmbedded(*mail, part);
  if (!range) return range.trouble();
  return RangeOf(mail, range->start, range->end);
}

}  // namespace tarn::archive::mail
