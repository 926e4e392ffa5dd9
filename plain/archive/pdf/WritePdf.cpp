#include "archive/pdf/WritePdf.h"

#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "archive/common/SafeName.h"
#include "archive/pdf/MailPdf.h"
#include "archive/writers/ItemText.h"

namespace tarn::archive {
namespace {

// Keeps what is written, up to a limit.
class MemorySink final : public ByteSink {
 public:
  explicit MemorySink(size_t limit) : limit_(limit) {}

  std::optional<Trouble> write(std::string_view bytes) override {
    if (bytes.size() > limit_ - text.size()) {
      return Trouble{TroubleKind::TooLarge, "it is larger than " + SizeText(limit_)};
    }
    text += bytes;
    return std::nullopt;
  }

  std::string text;

 private:
  size_t limit_;
};

std::string TimeText(const std::optional<Moment>& moment) {
  return moment ? Iso8601WithOffset(*moment) : std::string();
}

std::vector<std::string> AddressTexts(const std::vector<Address>& addresses) {
  std::vector<std::string> texts;
  texts.reserve(addresses.size());
  for (const Address& address : addresses) texts.push_back(AddressText(address));
  return texts;
}

MailFacts FactsOf(const ItemFields& fields) {
  MailFacts facts;
  facts.subject = OneLine(fields.subject);
  facts.from = OneLine(AddressText(fields.from));
  facts.to = AddressTexts(fields.to);
  facts.cc = AddressTexts(fields.cc);
  facts.bcc = AddressTexts(fields.bcc);
  facts.sent = TimeText(fields.sent);
  facts.received = TimeText(fields.received);
  facts.messageId = fields.messageId;
  return facts;
}

// The files inside, as long as there is room.
class FilesInside {
 public:
  FilesInside(Item& item, size_t room, const std::string& name, std::vector<Trouble>& lost)
      : item_(item),
        room_(room),
        name_(name.empty() ? "" : SafeName(name, "message")),
        lost_(lost) {}

  void addMail() {
    MemorySink sink(room_);
    Written written = WriteEml(item_, sink);
    AppendTroubles(written.lost, lost_);
    if (written.full) {
      tellLost("the mail itself", *written.full);
    } else {
      add((name_.empty() ? "message" : name_) + ".eml", "message/rfc822", FileRelation::Mail,
          std::move(sink.text));
    }
  }

  void addAttachments() {
    const std::vector<Attachment>& attachments = item_.attachments();
    for (size_t i = 0; i < attachments.size(); ++i) addAttachment(attachments[i], i);
  }

  std::vector<FileInside> take() { return std::move(files_); }

 private:
  void addAttachment(const Attachment& attachment, size_t index) {
    if (attachment.kind == AttachmentKind::Reference) return;
    const std::string title = OneLine(AttachmentTitle(attachment, index));
    if (attachment.trouble) return tellLost(title, *attachment.trouble);
    const bool isItem = attachment.kind == AttachmentKind::Item;
    Outcome<std::string> bytes = isItem ? itemBytes(index) : dataBytes(index);
    if (!bytes) return tellLost(title, bytes.trouble());
    std::string name = SafeName(title, "attachment");
    if (isItem && !name.ends_with(".eml")) name += ".eml";
    if (!name_.empty()) name.insert(0, name_ + " - ");
    add(std::move(name), isItem ? "message/rfc822" : attachment.mediaType, FileRelation::Attachment,
        std::move(*bytes));
  }

  Outcome<std::string> dataBytes(size_t index) {
    Outcome<std::unique_ptr<ByteSource>> source = item_.open(index);
    if (!source) return source.trouble();
    return ReadAll(**source, room_);
  }

  Outcome<std::string> itemBytes(size_t index) {
    Outcome<std::unique_ptr<Item>> embedded = item_.embedded(index);
    if (!embedded) return embedded.trouble();
    MemorySink sink(room_);
    Written written = WriteEml(**embedded, sink);
    if (written.full) return *written.full;
    AppendTroubles(written.lost, lost_);
    return std::move(sink.text);
  }

  void add(std::string name, std::string mediaType, FileRelation relation, std::string bytes) {
    room_ -= bytes.size();
    name = names_.make(name);
    files_.push_back({std::move(name), std::move(mediaType), relation, std::move(bytes)});
  }

  void tellLost(const std::string& what, const Trouble& why) {
    lost_.push_back({why.kind, what + " is not in the PDF: " + why.reason});
  }

  Item& item_;
  size_t room_;
  const std::string name_;
  std::vector<Trouble>& lost_;
  std::vector<FileInside> files_;
  UniqueNames names_;
};

}  // namespace

WrittenPdf WritePdf(Item& item, PageLayout& layout, ByteSink& sink, const PdfLimits& limits,
                    const std::string& name) {
  WrittenPdf result;
  MemorySink html(limits.html);
  Written document = WriteHtml(item, {}, html);
  AppendTroubles(document.lost, result.lost);
  if (document.full) {
    result.noPages =
        Trouble{document.full->kind, "its text cannot be laid out: " + document.full->reason};
    return result;
  }

  const MailFacts facts = FactsOf(item.fields(Detail::Envelope));
  Outcome<std::string> pages = layout.pdf(html.text, {facts.subject, facts.from, facts.sent});
  html.text = std::string();
  if (!pages) {
    result.noPages = pages.trouble();
    return result;
  }

  FilesInside files(item, limits.inside, name, result.lost);
  files.addMail();
  files.addAttachments();
  const Outcome<MadePdf> pdf = MailPdf(*pages, facts, files.take());
  if (!pdf) {
    result.noPages = pdf.trouble();
    return result;
  }
  result.pages = pdf->pages;
  result.full = sink.write(pdf->bytes);
  return result;
}

}  // namespace tarn::archive
