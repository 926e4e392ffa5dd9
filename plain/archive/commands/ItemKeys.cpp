#include "archive/commands/ItemKeys.h"

#include <memory>
#include <optional>
#include <vector>

#include "archive/common/ItemFilter.h"
#include "archive/common/MomentText.h"

namespace tarn::archive {
namespace {

void PutText(const char* name, const std::string& value, JsonWriter& json) {
  json.name(name);
  json.text(value);
}

void PutAddress(const Address& value, JsonWriter& json) {
  json.openObject();
  PutText("name", value.name, json);
  PutText("address", value.address, json);
  json.closeObject();
}

void PutAddresses(const char* name, const std::vector<Address>& values, JsonWriter& json) {
  json.name(name);
  json.openArray();
  for (const Address& value : values) PutAddress(value, json);
  json.closeArray();
}

void PutMoment(const char* name, const std::optional<Moment>& value, JsonWriter& json) {
  json.name(name);
  if (value) {
    json.text(Iso8601(*value));
  } else {
    json.null();
  }
}

}  // namespace

void PutListKeys(Item& item, const std::string& source, JsonWriter& json) {
  const ItemPlace& place = item.place();
  const ItemFields& fields = item.fields(Detail::Envelope);
  PutText("source", source, json);
  PutText("id", place.id, json);
  if (place.parent) PutText("parent", *place.parent, json);
  PutText("folder", FolderText(*place.folder), json);
  PutText("class", fields.messageClass, json);
  PutText("subject", fields.subject, json);
  json.name("from");
  PutAddress(fields.from, json);
  PutAddresses("to", fields.to, json);
  PutAddresses("cc", fields.cc, json);
  PutAddresses("bcc", fields.bcc, json);
  PutMoment("sent", fields.sent, json);
  PutMoment("received", fields.received, json);
  json.name("attachments");
  json.number(fields.attachmentCount);
  json.name("size");
  if (fields.size) {
    json.number(*fields.size);
  } else {
    json.null();
  }
}

std::string DateText(const ItemFields& fields) {
  const std::optional<Moment>& date = fields.sent ? fields.sent : fields.received;
  return date ? LocalMinute(*date) : "";
}

const std::string& SenderText(const Address& from) {
  return from.name.empty() ? from.address : from.name;
}

}  // namespace tarn::archive
