// Files of each kind that the archive reads, to the end of each form that it writes: every item of
// a store, an MSG file, TNEF, an mbox, a mail, and a Maildir that holds the input as its one
// message, with what is embedded, as HTML, text, mail, mbox, JSON, vCard and iCalendar. Besides
// what the sanitizers see, a run aborts when a file is not of its form.
#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "HarmlessPage.h"
#include "InputFile.h"
#include "WrittenMail.h"
#include "archive/sources/OpenSource.h"
#include "archive/writers/Writers.h"
#include "console/Json.h"
#include "mutators/CallScript.h"
#include "mutators/CompoundMutator.h"
#include "mutators/LibFuzzer.h"
#include "mutators/MailMutator.h"
#include "mutators/PstMutator.h"
#include "support/pst/PstDamage.h"

namespace {

using namespace tarn;
using namespace tarn::archive;
using fuzz::Expect;
using fuzz::TextSink;

// A small file can describe many items.
constexpr int kMostItems = 30;
constexpr size_t kMostAttachments = 20;

using Writer = Written (*)(Item&, ByteSink&);

std::string WrittenBy(Writer writer, Item& item) {
  TextSink sink;
  Expect(!writer(item, sink).full, "a sink that is full");
  return std::move(sink.text);
}

// JSON's own check throws at what is none.
void ExpectUtf8(const std::string& text) { (void)host::JsonLine(nlohmann::json(text)); }

void ExpectLines(const std::string& text, std::string_view first, std::string_view last) {
  Expect(text.starts_with(first) && text.ends_with(last), "no vCard or iCalendar");
  ExpectUtf8(text);
}

// A mail that another one holds, and that has no bytes.
bool IsEmptyMail(Item& item) {
  const auto original = item.original();
  if (!original || *original == nullptr) return false;
  const auto bytes = ReadAll(**original, 1);
  return bytes && bytes->empty();
}

void WriteAll(Item& item) {
  TextSink page;
  WriteHtml(item, {}, page);
  fuzz::ExpectHarmlessPage(page.text);
  const std::string text = WrittenBy(WriteText, item);
  ExpectUtf8(text);
  Expect(text.find('\0') == text.npos, "a NUL in a text");
  const std::string json = WrittenBy(WriteJson, item);
  Expect(json.find('\n') == json.size() - 1, "another number of lines than one");
  Expect(host::ParsedJson<nlohmann::json>(json).is_object(), "no object");
  Expect(!WrittenBy(WriteEml, item).empty() || IsEmptyMail(item), "no mail");
  const std::string box = WrittenBy(WriteMbox, item);
  Expect(box.starts_with("From ") && box.ends_with("\n\n"), "no mail of an mbox");
  Expect(box.find("\nFrom ") == box.npos, "a line that begins a mail");
  const std::string messageClass = item.fields(Detail::Headline).messageClass;
  if (item.properties() != nullptr || IsContact(messageClass)) {
    ExpectLines(WrittenBy(WriteVcard, item), "BEGIN:VCARD\r\n", "END:VCARD\r\n");
  }
  if (item.properties() != nullptr || IsCalendar(messageClass)) {
    ExpectLines(WrittenBy(WriteIcalendar, item), "BEGIN:VCALENDAR\r\n", "END:VCALENDAR\r\n");
  }
}

void WriteWithEmbedded(Item& item, int& itemsLeft) {
  if (--itemsLeft < 0) return;
  WriteAll(item);
  const size_t count = std::min(item.attachments().size(), kMostAttachments);
  for (size_t index = 0; index < count; ++index) {
    if (const auto inner = item.embedded(index)) WriteWithEmbedded(**inner, itemsLeft);
  }
}

void WriteSource(const std::filesystem::path& path, SourceKind kind) {
  const auto reader = OpenSource(path, kind, ReaderOptions{true});
  if (!reader) return;
  int itemsLeft = kMostItems;
  while (itemsLeft > 0) {
    auto entry = (*reader)->next();
    if (!entry) return;
    auto* const item = std::get_if<std::unique_ptr<Item>>(&*entry);
    if (item != nullptr) WriteWithEmbedded(**item, itemsLeft);
  }
}

// A Maildir whose one message is the file.
class Maildir {
 public:
  explicit Maildir(const std::string& file) : folder_(file + ".maildir") {
    for (const char* const name : {"cur", "new"})
      std::filesystem::create_directories(folder_ / name);
    std::filesystem::create_hard_link(file, folder_ / "cur" / "1.a:2,S");
  }
  Maildir(const Maildir&) = delete;
  Maildir& operator=(const Maildir&) = delete;
  ~Maildir() { std::filesystem::remove_all(folder_); }

  const std::filesystem::path& path() const { return folder_; }

 private:
  std::filesystem::path folder_;
};

std::optional<SourceKind> KindOf(std::string_view bytes) {
  return KindOfBeginning(bytes.substr(0, kTellingBytes));
}

bool MutateByKind(std::string& file, size_t most, fuzz::Dice& dice,
                  const fuzz::ByteMutation& mutate) {
  switch (KindOf(file).value_or(SourceKind::Tnef)) {
    case SourceKind::Store:
      return fuzz::MutatePstImage(file, most, dice, mutate);
    case SourceKind::Compound:
      return fuzz::MutateCompoundFile(file, most, dice, mutate);
    case SourceKind::Mbox:
    case SourceKind::Mail:
      return fuzz::MutateMail(file, most, dice, mutate);
    default:
      return false;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const fuzz::InputFile file;
  static const Maildir maildir(file.write(""));
  std::string bytes(reinterpret_cast<const char*>(data), size);
  const auto kind = KindOf(bytes);
  if (!kind) return 0;
  if (kind == SourceKind::Store) test::RepairPstImage(bytes);
  WriteSource(file.write(bytes), *kind);
  if (kind == SourceKind::Mail) WriteSource(maildir.path(), SourceKind::Maildir);
  return 0;
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned seed) {
  return fuzz::MutateInput(data, size, most, seed, MutateByKind, fuzz::MutateAsLibFuzzer);
}
