#include "archive/mail/MailItem.h"

#include <string>
#include <utility>

#include "archive/mail/HeaderFields.h"
#include "archive/mail/LineEnds.h"
#include "archive/mail/MailAttachments.h"
#include "archive/mail/MailBodies.h"
#include "archive/mail/MailDate.h"
#include "archive/mail/MailLayout.h"
#include "archive/mail/ParseMail.h"
#include "archive/mail/PartialMail.h"
#include "archive/mail/TnefParts.h"
#include "archive/text/AsciiText.h"
#include "archive/text/BodyText.h"

namespace tarn::archive::mail {
namespace {

// Larger files in UTF-16 are not read.
constexpr size_t kLargestUtf16 = size_t{64} << 20;
// A header section is no larger where the mail was parsed at all.
constexpr size_t kLargestHeaders = size_t{16} << 20;

constexpr std::string_view kNote = "IPM.Note";

class MailItem final : public Item {
 public:
  explicit MailItem(MailSource source)
      : source_(std::move(source)), tnefs_(source_.place, source_.depth) {}

  const ItemPlace& place() const override { return source_.place; }
  const ItemFields& fields(Detail detail) override;
  Bodies bodies() override;
  Outcome<std::string> originalHeaders() override;
  const std::vector<Attachment>& attachments() override;
  Outcome<std::unique_ptr<ByteSource>> open(size_t index) override;
  Outcome<std::unique_ptr<Item>> embedded(size_t index) override;
  Outcome<std::unique_ptr<ByteSource>> original() override {
    return SourceOf(source_.whole != nullptr ? source_.whole : source_.bytes);
  }
  mapi::MapiMessage* properties() override;
  const std::vector<Trouble>& troubles() const override { return troubles_; }

 private:
  void parse();
  void noteTroubles();
  std::string classOfMessages();
  // Null, with a trouble, for one that cannot be had.
  const AttachmentSource* sourceOf(size_t index, Trouble& trouble);

  MailSource source_;
  std::optional<ParsedMail> mail_;
  MailLayout layout_;
  TnefParts tnefs_;
  bool isHeadlineRead_ = false;
  bool isEnvelopeRead_ = false;
  ItemFields fields_;
  std::optional<MailAttachments> attachments_;
  std::vector<Trouble> troubles_;
};

void MailItem::parse() {
  if (mail_) return;
  mail_ = ParseMail(source_.bytes);
  layout_ = LayOut(mail_->message.get(), mail_->sawUuencode);
  troubles_ = source_.troubles;
  troubles_.insert(troubles_.end(), mail_->troubles.begin(), mail_->troubles.end());
}

void MailItem::noteTroubles() {
  for (Trouble& trouble : tnefs_.takeTroubles()) troubles_.push_back(std::move(trouble));
}

// What a message within the mail is, as an invitation: the mail only carries it.
std::string MailItem::classOfMessages() {
  for (const LaidPart& laid : layout_.parts) {
    Item* const message = tnefs_.of(laid);
    if (message == nullptr) continue;
    const std::string& own = message->fields(Detail::Headline).messageClass;
    if (!own.empty()) return own;
  }
  return std::string(kNote);
}

mapi::MapiMessage* MailItem::properties() {
  parse();
  for (const LaidPart& laid : layout_.parts) {
    Item* const message = tnefs_.of(laid);
    if (message != nullptr && message->properties() != nullptr) return message->properties();
  }
  noteTroubles();
  return nullptr;
}

const ItemFields& MailItem::fields(Detail detail) {
  parse();
  if (!isHeadlineRead_) {
    isHeadlineRead_ = true;
    ReadHeadline(mail_->message.get(), fields_);
    if (!fields_.received) fields_.received = MomentOfMboxLine(source_.mboxLine);
    fields_.messageClass = ClassOf(mail_->message.get(), layout_);
    if (fields_.messageClass == kNote) fields_.messageClass = classOfMessages();
    fields_.size = (source_.whole != nullptr ? source_.whole : source_.bytes)->size();
    fields_.attachmentCount =
        attachments_ ? attachments_->list.size() : CountAttachments(layout_, tnefs_);
    fields_.hasAttachments = fields_.attachmentCount != 0;
    noteTroubles();
  }
  if (detail == Detail::Envelope && !isEnvelopeRead_) {
    isEnvelopeRead_ = true;
    ReadEnvelope(mail_->message.get(), fields_);
  }
  return fields_;
}

Bodies MailItem::bodies() {
  parse();
  Bodies bodies = BodiesOf(layout_, mail_->sawUuencode);
  AddPieceOfMail(mail_->message.get(), bodies);
  tnefs_.addTo(bodies, layout_);
  noteTroubles();
  return bodies;
}

Outcome<std::string> MailItem::originalHeaders() {
  const Outcome<std::string> start = ReadRange(*source_.bytes, 0, 1024);
  if (!start) return start.trouble();
  if (!IsHeaderLine(std::string_view(*start).substr(0, start->find('\n')))) return std::string();
  const Outcome<HeaderSection> headers = FindHeaders(*source_.bytes, 0);
  if (!headers) return headers.trouble();
  if (headers->end > kLargestHeaders) {
    return Trouble{TroubleKind::TooLarge, "the headers are larger than what is read of them"};
  }
  return ReadRange(*source_.bytes, 0, static_cast<size_t>(headers->end));
}

const std::vector<Attachment>& MailItem::attachments() {
  parse();
  if (!attachments_) {
    attachments_ = ReadAttachments(*source_.bytes, layout_, tnefs_);
    noteTroubles();
  }
  return attachments_->list;
}

const AttachmentSource* MailItem::sourceOf(size_t index, Trouble& trouble) {
  const std::vector<Attachment>& list = attachments();
  if (index >= list.size()) {
    trouble = {TroubleKind::Missing, "there is no such attachment"};
    return nullptr;
  }
  if (list[index].trouble) {
    trouble = *list[index].trouble;
    return nullptr;
  }
  return &attachments_->sources[index];
}

Outcome<std::unique_ptr<ByteSource>> MailItem::open(size_t index) {
  Trouble trouble;
  const AttachmentSource* source = sourceOf(index, trouble);
  if (source == nullptr) return trouble;
  return OpenAttachment(source_.bytes, *source);
}

Outcome<std::unique_ptr<Item>> MailItem::embedded(size_t index) {
  Trouble trouble;
  const AttachmentSource* source = sourceOf(index, trouble);
  if (source == nullptr) return trouble;
  if (attachments_->list[index].kind != AttachmentKind::Item) {
    return Trouble{TroubleKind::Missing, "the attachment is no mail"};
  }
  if (source_.depth >= kDeepestItem) {
    return Trouble{TroubleKind::TooDeep, "mails within mails beyond what is read"};
  }
  if (source->message != nullptr) return tnefs_.embedded(*source->laid, source->file, index);
  Outcome<SharedBytes> bytes = BytesOfEmbedded(source_.bytes, *source->laid);
  if (!bytes) return bytes.trouble();
  ItemPlace place{source_.place.id + "/" + std::to_string(index + 1), source_.place.id,
                  source_.place.folder};
  Outcome<MailSource> embedded = MailSourceOfFile(std::move(*bytes), std::move(place));
  if (!embedded) return embedded.trouble();
  embedded->depth = source_.depth + 1;
  return MakeMailItem(std::move(*embedded));
}

Outcome<SharedBytes> WithoutUtf16(SharedBytes bytes) {
  const Outcome<std::string> mark = ReadRange(*bytes, 0, 2);
  if (!mark) return mark.trouble();
  if (*mark != "\xFF\xFE" && *mark != "\xFE\xFF") return bytes;
  const Outcome<std::string> all = ReadAll(*SourceOf(bytes), kLargestUtf16);
  if (!all) return all.trouble();
  return BytesInMemory(Utf8Of(*all, "utf-16"));
}

}  // namespace

std::unique_ptr<Item> MakeMailItem(MailSource source) {
  return std::make_unique<MailItem>(std::move(source));
}

Outcome<SharedBytes> UsualText(SharedBytes bytes) {
  Outcome<SharedBytes> text = WithoutUtf16(std::move(bytes));
  return text ? WithLineFeeds(std::move(*text)) : text;
}

Outcome<MailSource> MailSourceOfFile(SharedBytes file, ItemPlace place) {
  Outcome<SharedBytes> text = UsualText(std::move(file));
  if (!text) return text.trouble();
  SharedBytes bytes = std::move(*text);
  Outcome<MailStart> start = FindMailStart(*bytes);
  if (!start) return start.trouble();
  MailSource source{std::move(place), bytes, std::move(start->mboxLine), 0, {}, nullptr};
  const uint64_t size = bytes->size();
  if (start->broken != start->offset) source.whole = RangeOf(bytes, start->broken, size);
  if (start->offset != 0) source.bytes = RangeOf(std::move(bytes), start->offset, size);
  return source;
}

}  // namespace tarn::archive::mail
