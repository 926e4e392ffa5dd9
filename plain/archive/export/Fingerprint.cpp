#include "archive/export/Fingerprint.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "archive/common/FoldedText.h"
#include "archive/export/Sha256.h"
#include "archive/mapi/MapiMessage.h"
#include "archive/writers/Writers.h"

namespace tarn::archive {
namespace {

// Adds up the lines of a vCard or iCalendar, but for those that a copy has otherwise.
class LineSum final : public ByteSink {
 public:
  explicit LineSum(Sha256& sum) : sum_(sum) {}

  std::optional<Trouble> write(std::string_view bytes) override {
    while (!bytes.empty()) {
      const size_t end = std::min(bytes.find('\n'), bytes.size() - 1) + 1;
      line_ += bytes.substr(0, end);
      bytes.remove_prefix(end);
      if (line_.ends_with('\n')) endLine();
    }
    return std::nullopt;
  }

 private:
  void endLine() {
    constexpr std::array<std::string_view, 5> kOwn = {"UID", "REV", "DTSTAMP", "CREATED",
                                                      "LAST-MODIFIED"};
    // A line that begins with a blank goes on with the one before.
    if (!line_.starts_with(' ')) {
      const std::string_view name = std::string_view(line_).substr(0, line_.find_first_of(":;"));
      isTaken_ = std::find(kOwn.begin(), kOwn.end(), name) == kOwn.end();
    }
    if (isTaken_) sum_.add(line_);
    line_.clear();
  }

  Sha256& sum_;
  std::string line_;
  bool isTaken_ = true;
};

bool IsMail(const std::string& messageClass) {
  const std::string folded = Folded(messageClass);
  constexpr std::array<std::string_view, 3> kMails = {"ipm.note", "ipm.post", "report"};
  return folded.empty() || std::any_of(kMails.begin(), kMails.end(), [&](std::string_view mail) {
           return folded == mail || folded.starts_with(std::string(mail) + '.');
         });
}

Outcome<std::vector<std::string>> ValuesOf(mapi::PropertySet& set, const mapi::PropertyTag& tag) {
  constexpr size_t kMostBytes = size_t{1} << 20;
  if ((tag.type & mapi::kMultipleValues) != 0) return set.values(tag.id, kMostBytes);
  Outcome<std::string> value = set.bytes(tag.id, kMostBytes);
  if (!value) return value.trouble();
  return std::vector<std::string>{std::move(*value)};
}

enum class Named : uint8_t { All, Words };

// When an appointment is, and what contacts hold, of which vCards keep the most.
bool IsContent(uint16_t id) {
  constexpr uint16_t kStart = 0x0060;
  constexpr uint16_t kEnd = 0x0061;
  return id == kStart || id == kEnd || (id >= 0x3A00 && id <= 0x3AFF);
}

// What a property is called in every source; empty for one that is not wanted.
std::string NameOf(mapi::MapiMessage& message, uint16_t id, Named wanted) {
  constexpr uint16_t kFirstNamed = 0x8000;
  if (id < kFirstNamed) return IsContent(id) ? std::to_string(id) : "";
  const std::optional<mapi::PropertyName> name = message.nameOf(id);
  if (!name || (wanted == Named::Words && name->name.empty())) return "";
  std::string text(name->set.begin(), name->set.end());
  text.append(reinterpret_cast<const char*>(name->name.data()), 2 * name->name.size());
  return text + "#" + std::to_string(name->number);
}

// What programs keep of an item in properties of their own, or of those only what a word names: the
// fields of forms that somebody made.
void AddProperties(mapi::MapiMessage& message, Named wanted, Sha256& sum) {
  std::vector<std::string> lines;
  for (const mapi::PropertyTag& tag : message.properties().tags()) {
    const std::string name = NameOf(message, tag.id, wanted);
    if (name.empty()) continue;
    const Outcome<std::vector<std::string>> values = ValuesOf(message.properties(), tag);
    if (!values) continue;
    // Ids of the same name differ between sources, and so does the order.
    Sha256 line;
    line.addText(name);
    for (const std::string& value : *values) line.addText(value);
    lines.push_back(line.digest());
  }
  std::sort(lines.begin(), lines.end());
  for (const std::string& line : lines) sum.addText(line);
}

// Whether it is known what the item is.
bool AddClass(Item& item, const std::string& messageClass, Sha256& sum) {
  if (IsMail(messageClass)) return false;
  sum.addText(messageClass);
  mapi::MapiMessage* const properties = item.properties();
  if (properties == nullptr) return false;
  LineSum lines(sum);
  const bool isContact = IsContact(messageClass);
  const bool isKnown = isContact || IsCalendar(messageClass);
  if (isKnown) (void)(isContact ? WriteVcard : WriteIcalendar)(item, lines);
  AddProperties(*properties, isKnown ? Named::Words : Named::All, sum);
  return isKnown;
}

}  // namespace

Fingerprint FingerprintOf(Item& item, const std::vector<std::string>& attachments) {
  Sha256 sum;
  // Later questions may change the item's own.
  const ItemFields fields = item.fields(Detail::Envelope);
  sum.addText(fields.messageId);
  sum.addText(fields.from.address.empty() ? fields.from.name : fields.from.address);
  sum.addText(fields.subject);
  sum.addText(fields.sent ? Iso8601(*fields.sent) : "");
  const Bodies bodies = item.bodies();
  const bool isRtf = !bodies.html && !bodies.text && bodies.rtf;
  const std::string_view html = bodies.html ? std::string_view(bodies.html->bytes) : "";
  const std::string_view text = bodies.text ? std::string_view(*bodies.text) : "";
  const std::string_view rtf = isRtf ? std::string_view(*bodies.rtf) : "";
  for (const std::string_view body : {html, text, rtf}) sum.addText(body);
  sum.addText(std::to_string(attachments.size()));
  for (const std::string& attachment : attachments) sum.addText(attachment);
  Fingerprint fingerprint;
  fingerprint.isTelling = AddClass(item, fields.messageClass, sum) || !fields.messageId.empty() ||
                          fields.sent || !html.empty() || !text.empty() || !rtf.empty() ||
                          !attachments.empty();
  constexpr size_t kDigits = 32;
  fingerprint.sum = sum.digest().substr(0, kDigits);
  return fingerprint;
}

}  // namespace tarn::archive
