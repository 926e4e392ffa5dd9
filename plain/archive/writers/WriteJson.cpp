#include "archive/common/ItemFilter.h"
#include "archive/common/JsonWriter.h"
#include "archive/text/BodyText.h"
#include "archive/writers/ItemText.h"
#include "archive/writers/JsonProperties.h"
#include "archive/writers/SinkBuffer.h"
#include "archive/writers/Writers.h"

namespace tarn::archive {
namespace {

void PutText(std::string_view name, std::string_view text, JsonWriter& json) {
  json.name(name);
  json.text(text);
}

// Nothing where there is no text.
void PutTextIfAny(std::string_view name, std::string_view text, JsonWriter& json) {
  if (!text.empty()) PutText(name, text, json);
}

void PutAddress(const Address& address, JsonWriter& json) {
  json.openObject();
  PutText("name", address.name, json);
  PutText("address", address.address, json);
  json.closeObject();
}

void PutAddresses(std::string_view name, const std::vector<Address>& addresses, JsonWriter& json) {
  json.name(name);
  json.openArray();
  for (const Address& address : addresses) PutAddress(address, json);
  json.closeArray();
}

void PutMoment(const std::string& name, const std::optional<Moment>& moment, JsonWriter& json) {
  json.name(name);
  if (!moment) return json.null();
  json.text(Iso8601(*moment));
  if (!moment->offsetMinutes) return;
  json.name(name + "OffsetMinutes");
  json.integer(*moment->offsetMinutes);
}

void PutPlace(const ItemPlace& place, JsonWriter& json) {
  PutText("id", place.id, json);
  if (place.parent) PutText("parent", *place.parent, json);
  PutText("folder", FolderText(*place.folder), json);
  json.name("folderNames");
  json.openArray();
  for (const std::string& name : *place.folder) json.text(name);
  json.closeArray();
}

void PutFields(const ItemFields& fields, JsonWriter& json) {
  PutText("class", fields.messageClass, json);
  PutText("subject", fields.subject, json);
  json.name("from");
  PutAddress(fields.from, json);
  if (fields.sender) {
    json.name("sender");
    PutAddress(*fields.sender, json);
  }
  PutAddresses("to", fields.to, json);
  PutAddresses("cc", fields.cc, json);
  PutAddresses("bcc", fields.bcc, json);
  PutMoment("sent", fields.sent, json);
  PutMoment("received", fields.received, json);
  PutText("messageId", fields.messageId, json);
  json.name("size");
  if (fields.size) {
    json.number(*fields.size);
  } else {
    json.null();
  }
}

void PutHeaders(Item& item, JsonWriter& json, std::vector<Trouble>& lost) {
  const Outcome<std::string> headers = item.originalHeaders();
  if (!headers) {
    lost.push_back(headers.trouble());
  } else if (!headers->empty()) {
    PutText("headers", Utf8Of(*headers, {}), json);
  }
}

void PutBodies(Item& item, JsonWriter& json, SinkBuffer& out, std::vector<Trouble>& lost) {
  Bodies bodies = item.bodies();
  AppendTroubles(bodies.troubles, lost);
  json.name("bodies");
  json.openObject();
  if (bodies.text) PutText("text", *bodies.text, json);
  bodies.text.reset();
  out.put(json.take());
  if (bodies.html) {
    PutText("html", Utf8OfHtml(*bodies.html), json);
    PutText("htmlCharset", bodies.html->charset, json);
  }
  bodies.html.reset();
  out.put(json.take());
  if (bodies.rtf) PutText("rtf", *bodies.rtf, json);
  json.closeObject();
  out.put(json.take());
}

void PutAttachment(const Attachment& attachment, size_t index, JsonWriter& json) {
  json.openObject();
  json.name("index");
  json.number(uint64_t{index + 1});
  PutText("kind", NameOf(attachment.kind), json);
  PutText("name", attachment.name, json);
  PutText("mediaType", attachment.mediaType, json);
  PutTextIfAny("contentId", attachment.contentId, json);
  PutTextIfAny("contentLocation", attachment.contentLocation, json);
  json.name("inline");
  json.boolean(attachment.isInline);
  json.name("size");
  if (attachment.size) {
    json.number(*attachment.size);
  } else {
    json.null();
  }
  PutTextIfAny("target", attachment.target, json);
  if (attachment.trouble) PutText("trouble", attachment.trouble->reason, json);
  json.closeObject();
}

void PutTroubles(const std::vector<Trouble>& troubles, JsonWriter& json) {
  json.name("troubles");
  json.openArray();
  for (const Trouble& trouble : troubles) json.text(trouble.reason);
  json.closeArray();
}

}  // namespace

Written WriteJson(Item& item, ByteSink& sink) {
  Written written;
  SinkBuffer out(sink);
  JsonWriter json;
  json.openObject();
  PutPlace(item.place(), json);
  PutFields(item.fields(Detail::Envelope), json);
  PutHeaders(item, json, written.lost);
  PutBodies(item, json, out, written.lost);
  json.name("attachments");
  json.openArray();
  const std::vector<Attachment>& attachments = item.attachments();
  for (size_t index = 0; index < attachments.size() && !out.isFull(); ++index) {
    PutAttachment(attachments[index], index, json);
    out.put(json.take());
  }
  json.closeArray();
  if (mapi::MapiMessage* const message = item.properties()) {
    json.name("properties");
    PutJsonProperties(*message, json, out, written.lost);
  }
  AppendTroubles(item.troubles(), written.lost);
  PutTroubles(written.lost, json);
  json.closeObject();
  out.put(json.take()).put("\n");
  written.full = out.finish();
  return written;
}

}  // namespace tarn::archive
