// Usage: WriteForms PATH FOLDER
// Writes each item of a mail file into the folder in all
// forms: 1.eml, 1.html, 1.json, 1.txt, 1.vcf, 1.ics, 2.eml ..., contacts and calendars of items
// that are none too, and all of them into one all.mbox. Prints for each what the reader of the
// archive gives of it, and what it gives of the mail that was written, as JSON Lines:
//   {"place":1,"bodies":...,"attachments":...,"again":{the same of 1.eml},"isSameAgain":true}
// The last tells whether the mail that is written of 1.eml has its very bytes.
#include <glib.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "archive/common/JsonWriter.h"
#include "archive/mail/MailReaders.h"
#include "archive/sources/OpenSource.h"
#include "archive/text/BodyText.h"
#include "archive/writers/Writers.h"

namespace {

using namespace tarn::archive;

class FileSink final : public ByteSink {
 public:
  FileSink(const std::filesystem::path& path, const char* mode)
      : file_(std::fopen(path.c_str(), mode), std::fclose) {}
  std::optional<Trouble> write(std::string_view bytes) override {
    if (file_ && std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) == bytes.size()) {
      return std::nullopt;
    }
    return Trouble{TroubleKind::Unreadable, "the file cannot be written"};
  }

 private:
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
};

// Keeps the hash of what is written alone.
class HashSink final : public ByteSink {
 public:
  HashSink() : sum_(g_checksum_new(G_CHECKSUM_SHA256), g_checksum_free) {}
  std::optional<Trouble> write(std::string_view bytes) override {
    g_checksum_update(sum_.get(), reinterpret_cast<const guchar*>(bytes.data()),
                      static_cast<gssize>(bytes.size()));
    return std::nullopt;
  }
  std::string hash() const { return g_checksum_get_string(sum_.get()); }

 private:
  std::unique_ptr<GChecksum, void (*)(GChecksum*)> sum_;
};

std::string HashOf(ByteSource& source, bool& isWhole) {
  HashSink sink;
  isWhole = !CopyAll(source, sink).reading;
  return sink.hash();
}

void PutAddresses(const char* name, const std::vector<Address>& people, JsonWriter& json) {
  json.name(name);
  json.openArray();
  for (const Address& person : people) json.text(person.address);
  json.closeArray();
}

void PutItem(Item& item, JsonWriter& json);

void PutAttachment(Item& item, size_t index, JsonWriter& json) {
  const Attachment& attachment = item.attachments()[index];
  json.openObject();
  json.name("name");
  json.text(attachment.name);
  json.name("kind");
  json.number(static_cast<uint64_t>(attachment.kind));
  const Outcome<std::unique_ptr<ByteSource>> source = item.open(index);
  if (source && attachment.kind != AttachmentKind::Item && !attachment.trouble) {
    bool isWhole = false;
    const std::string hash = HashOf(**source, isWhole);
    json.name(isWhole ? "sha256" : "broken");
    json.text(hash);
  }
  if (attachment.kind == AttachmentKind::Item) {
    const Outcome<std::unique_ptr<Item>> inner = item.embedded(index);
    json.name("item");
    if (inner) {
      PutItem(**inner, json);
    } else {
      json.null();
    }
  }
  json.closeObject();
}

void PutItem(Item& item, JsonWriter& json) {
  json.openObject();
  const ItemFields fields = item.fields(Detail::Envelope);
  json.name("subject");
  json.text(fields.subject);
  PutAddresses("from", {fields.from}, json);
  PutAddresses("to", fields.to, json);
  PutAddresses("cc", fields.cc, json);
  json.name("sent");
  json.text(fields.sent ? Iso8601(*fields.sent) : "");
  const Bodies bodies = item.bodies();
  if (bodies.text) {
    json.name("text");
    json.text(*bodies.text);
  } else if (!bodies.html && bodies.rtf) {
    json.name("text");
    json.text(TextOfRtf(*bodies.rtf));
  }
  if (bodies.html) {
    json.name("html");
    json.text(Utf8OfHtml(*bodies.html));
  }
  json.name("attachments");
  json.openArray();
  for (size_t index = 0; index < item.attachments().size(); ++index)
    PutAttachment(item, index, json);
  json.closeArray();
  json.closeObject();
}

std::unique_ptr<Item> FirstItem(ItemReader& reader) {
  std::optional<Entry> entry = reader.next();
  if (!entry || !std::holds_alternative<std::unique_ptr<Item>>(*entry)) return nullptr;
  return std::move(std::get<std::unique_ptr<Item>>(*entry));
}

void PutAgain(const std::filesystem::path& mail, const std::string& hash, JsonWriter& json) {
  const Outcome<std::unique_ptr<ItemReader>> reader = OpenMail(mail);
  const std::unique_ptr<Item> item = reader ? FirstItem(**reader) : nullptr;
  json.name("again");
  if (item == nullptr) return json.null();
  PutItem(*item, json);
  HashSink sink;
  WriteEml(*item, sink);
  json.name("isSameAgain");
  json.boolean(sink.hash() == hash);
}

void WriteItem(Item& item, const std::filesystem::path& folder, uint64_t place) {
  const std::string stem = std::to_string(place);
  const auto path = [&](const char* form) { return folder / (stem + form); };
  JsonWriter json;
  json.openObject();
  json.name("place");
  json.number(place);
  json.name("class");
  json.text(item.fields(Detail::Envelope).messageClass);
  json.name("isMail");
  const Outcome<std::unique_ptr<ByteSource>> original = item.original();
  json.boolean(original && *original != nullptr);
  json.name("item");
  PutItem(item, json);
  {
    FileSink eml(path(".eml"), "wb");
    FileSink html(path(".html"), "wb");
    FileSink whole(path(".json"), "wb");
    FileSink mbox(folder / "all.mbox", "ab");
    json.name("lost");
    json.number(uint64_t{WriteEml(item, eml).lost.size()});
    WriteHtml(item, {}, html);
    WriteJson(item, whole);
    FileSink text(path(".txt"), "wb");
    FileSink card(path(".vcf"), "wb");
    FileSink calendar(path(".ics"), "wb");
    WriteText(item, text);
    WriteVcard(item, card);
    WriteIcalendar(item, calendar);
    WriteMbox(item, mbox);
  }
  HashSink again;
  WriteEml(item, again);
  PutAgain(path(".eml"), again.hash(), json);
  json.closeObject();
  std::printf("%s\n", json.take().c_str());
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) {
    std::fputs("usage: WriteForms PATH FOLDER\n", stderr);
    return 2;
  }
  const auto kind = KindOfFile(arguments[1]);
  if (!kind || !*kind) {
    std::fprintf(stderr, "%s: no mail file\n", arguments[1]);
    return 1;
  }
  const auto reader = OpenSource(arguments[1], **kind, {});
  if (!reader) {
    std::fprintf(stderr, "%s: %s\n", arguments[1], reader.trouble().reason.c_str());
    return 1;
  }
  uint64_t place = 0;
  while (std::optional<Entry> entry = (*reader)->next()) {
    auto* const item = std::get_if<std::unique_ptr<Item>>(&*entry);
    if (item != nullptr) WriteItem(**item, arguments[2], ++place);
  }
  return 0;
}
