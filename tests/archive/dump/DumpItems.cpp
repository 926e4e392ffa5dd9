#include "DumpItems.h"

#include <glib.h>

#include <array>
#include <memory>
#include <string>

#include "JsonLine.h"

namespace tarn::test {
namespace {

using archive::Address;
using archive::Attachment;
using archive::AttachmentKind;
using archive::ByteSource;
using archive::Item;
using archive::Moment;
using archive::Outcome;
using archive::Trouble;

struct FreeChecksum {
  void operator()(GChecksum* sum) const { g_checksum_free(sum); }
};

class Dumper {
 public:
  void entry(archive::Entry& entry);
  const std::string& line() const { return json_.line(); }

 private:
  void item(Item& item);
  void fields(Item& item);
  void bodies(Item& item);
  void attachment(Item& item, size_t index);
  void place(const archive::ItemPlace& place);
  void address(const Address& address);
  void addresses(const char* name, const std::vector<Address>& list);
  void moment(const char* name, const std::optional<Moment>& moment);
  void bytes(const Outcome<std::unique_ptr<ByteSource>>& source);
  void body(const char* name, const std::string& bytes);
  void trouble(const Trouble& trouble);
  void troubles(const std::vector<Trouble>& list);
  void text(const char* name, std::string_view value);

  JsonLine json_;
};

void Dumper::text(const char* name, std::string_view value) {
  json_.name(name);
  json_.text(value);
}

void Dumper::trouble(const Trouble& trouble) { text("trouble", trouble.reason); }

void Dumper::troubles(const std::vector<Trouble>& list) {
  json_.name("troubles");
  json_.open('[');
  for (const Trouble& one : list) json_.text(one.reason);
  json_.close(']');
}

void Dumper::address(const Address& address) {
  json_.open('{');
  text("name", address.name);
  text("address", address.address);
  json_.close('}');
}

void Dumper::addresses(const char* name, const std::vector<Address>& list) {
  json_.name(name);
  json_.open('[');
  for (const Address& one : list) address(one);
  json_.close(']');
}

void Dumper::moment(const char* name, const std::optional<Moment>& moment) {
  json_.name(name);
  if (!moment) return json_.null();
  json_.open('{');
  text("utc", Iso8601(*moment));
  json_.name("offset");
  moment->offsetMinutes ? json_.number(*moment->offsetMinutes) : json_.null();
  json_.close('}');
}

// "bytes" and "sha256", or "trouble".
void Dumper::bytes(const Outcome<std::unique_ptr<ByteSource>>& source) {
  if (!source) return trouble(source.trouble());
  if (*source == nullptr) return;
  const std::unique_ptr<GChecksum, FreeChecksum> sum(g_checksum_new(G_CHECKSUM_SHA256));
  std::array<char, 65536> buffer;
  int64_t length = 0;
  for (;;) {
    const Outcome<size_t> count = (*source)->read(buffer);
    if (!count) return trouble(count.trouble());
    if (*count == 0) break;
    length += static_cast<int64_t>(*count);
    g_checksum_update(sum.get(), reinterpret_cast<const guchar*>(buffer.data()),
                      static_cast<gssize>(*count));
  }
  json_.name("bytes");
  json_.number(length);
  text("sha256", g_checksum_get_string(sum.get()));
}

void Dumper::body(const char* name, const std::string& content) {
  json_.name(name);
  json_.open('{');
  bytes(archive::BytesOf(content));
  json_.close('}');
}

void Dumper::place(const archive::ItemPlace& place) {
  text("id", place.id);
  if (place.parent) text("parent", *place.parent);
  json_.name("folder");
  json_.open('[');
  for (const std::string& folder : *place.folder) json_.text(folder);
  json_.close(']');
}

void Dumper::fields(Item& item) {
  const archive::ItemFields& fields = item.fields(archive::Detail::Envelope);
  text("class", fields.messageClass);
  text("subject", fields.subject);
  json_.name("from");
  address(fields.from);
  addresses("to", fields.to);
  addresses("cc", fields.cc);
  addresses("bcc", fields.bcc);
  if (fields.sender) {
    json_.name("sender");
    address(*fields.sender);
  }
  moment("sent", fields.sent);
  moment("received", fields.received);
  text("messageId", fields.messageId);
  json_.name("size");
  fields.size ? json_.number(static_cast<int64_t>(*fields.size)) : json_.null();
  json_.name("hasAttachments");
  json_.boolean(fields.hasAttachments);
  json_.name("attachmentCount");
  json_.number(static_cast<int64_t>(fields.attachmentCount));
}

void Dumper::bodies(Item& item) {
  const archive::Bodies bodies = item.bodies();
  json_.name("bodies");
  json_.open('{');
  if (bodies.text) body("text", *bodies.text);
  if (bodies.html) {
    body("html", bodies.html->bytes);
    text("charset", bodies.html->charset);
  }
  if (bodies.rtf) body("rtf", *bodies.rtf);
  troubles(bodies.troubles);
  json_.close('}');
}

void Dumper::attachment(Item& item, size_t index) {
  const Attachment attachment = item.attachments()[index];
  json_.open('{');
  text("kind", NameOf(attachment.kind));
  text("name", attachment.name);
  text("mediaType", attachment.mediaType);
  text("contentId", attachment.contentId);
  text("contentLocation", attachment.contentLocation);
  json_.name("isInline");
  json_.boolean(attachment.isInline);
  json_.name("size");
  attachment.size ? json_.number(static_cast<int64_t>(*attachment.size)) : json_.null();
  text("target", attachment.target);
  if (attachment.trouble) {
    trouble(*attachment.trouble);
  } else if (attachment.kind != AttachmentKind::Reference) {
    bytes(item.open(index));
  }
  if (attachment.kind == AttachmentKind::Item) {
    Outcome<std::unique_ptr<Item>> embedded = item.embedded(index);
    json_.name("item");
    json_.open('{');
    embedded ? this->item(**embedded) : trouble(embedded.trouble());
    json_.close('}');
  }
  json_.close('}');
}

void Dumper::item(Item& item) {
  place(item.place());
  fields(item);
  bodies(item);
  const Outcome<std::string> headers = item.originalHeaders();
  headers ? body("headers", *headers) : trouble(headers.trouble());
  json_.name("attachments");
  json_.open('[');
  const size_t count = item.attachments().size();
  for (size_t i = 0; i < count; ++i) attachment(item, i);
  json_.close(']');
  json_.name("original");
  json_.open('{');
  bytes(item.original());
  json_.close('}');
  troubles(item.troubles());
}

void Dumper::entry(archive::Entry& entry) {
  json_.open('{');
  if (auto* found = std::get_if<std::unique_ptr<Item>>(&entry)) {
    item(**found);
  } else if (const auto* folder = std::get_if<archive::FolderStart>(&entry)) {
    json_.name("enters");
    json_.open('[');
    for (const std::string& name : *folder->path) json_.text(name);
    json_.close(']');
    if (folder->declaredItems) {
      json_.name("declared");
      json_.number(static_cast<int64_t>(*folder->declaredItems));
    }
  } else if (const auto* broken = std::get_if<archive::PlaceTrouble>(&entry)) {
    place(broken->place);
    trouble(broken->trouble);
  }
  json_.close('}');
}

}  // namespace

void DumpItems(archive::ItemReader& reader, std::FILE* out) {
  while (auto entry = reader.next()) {
    Dumper dumper;
    dumper.entry(*entry);
    std::fprintf(out, "%s\n", dumper.line().c_str());
  }
}

}  // namespace tarn::test
