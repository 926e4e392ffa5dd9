#include <algorithm>

#include "archive/text/BodyText.h"
#include "archive/writers/ItemDetails.h"
#include "archive/writers/ItemText.h"
#include "archive/writers/SinkBuffer.h"
#include "archive/writers/Writers.h"

namespace tarn::archive {
namespace {

constexpr size_t kColumns = 78;

void PutField(std::string_view name, const std::string& value, SinkBuffer& out) {
  if (!value.empty()) out.put(name).put(": ").put(value).put("\n");
}

void PutFields(const ItemFields& fields, SinkBuffer& out) {
  PutField("From", AddressText(fields.from), out);
  if (fields.sender) PutField("Sender", AddressText(*fields.sender), out);
  PutField("To", AddressesText(fields.to), out);
  PutField("Cc", AddressesText(fields.cc), out);
  PutField("Bcc", AddressesText(fields.bcc), out);
  const std::optional<Moment>& date = fields.sent ? fields.sent : fields.received;
  if (date) PutField("Date", DateText(*date, UnknownZone::Utc), out);
  PutField("Subject", OneLine(fields.subject), out);
}

// An address of many lines with commas between them.
std::string LinesInOne(const std::string& lines) {
  std::string line;
  for (size_t begin = 0; begin < lines.size();) {
    const size_t end = std::min(lines.find('\n', begin), lines.size());
    line += (line.empty() ? "" : ", ") + lines.substr(begin, end - begin);
    begin = end + 1;
  }
  return line;
}

void PutAttachments(const std::vector<Attachment>& attachments, SinkBuffer& out) {
  if (attachments.empty()) return;
  out.put("\nAttachments:\n");
  for (size_t index = 0; index < attachments.size(); ++index) {
    const Attachment& attachment = attachments[index];
    out.put("  ").put(AttachmentTitle(attachment, index));
    std::string facts = OneLine(attachment.mediaType);
    if (attachment.size) facts += (facts.empty() ? "" : ", ") + SizeText(*attachment.size);
    if (!facts.empty()) out.put(" (").put(facts).put(")");
    out.put("\n");
  }
}

}  // namespace

Written WriteText(Item& item, ByteSink& sink) {
  Written written;
  SinkBuffer out(sink);
  PutFields(item.fields(Detail::Envelope), out);
  for (const auto& [label, value] : DetailsOf(item)) {
    PutField(label, LinesInOne(ManyLines(value)), out);
  }
  out.put("\n");
  const Bodies bodies = item.bodies();
  AppendTroubles(bodies.troubles, written.lost);
  const std::string text = ManyLines(BestText(bodies, kColumns));
  out.put(text);
  if (!text.empty() && text.back() != '\n') out.put("\n");
  PutAttachments(item.attachments(), out);
  AppendTroubles(item.troubles(), written.lost);
  written.full = out.finish();
  return written;
}

}  // namespace tarn::archive
