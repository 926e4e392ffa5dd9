#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

#include "archive/mapi/Hexadecimal.h"
#include "archive/model/TextSink.h"
#include "archive/text/BodyText.h"
#include "archive/writers/CalendarEvent.h"
#include "archive/writers/ContactKeys.h"
#include "archive/writers/ItemText.h"
#include "archive/writers/MailImages.h"
#include "archive/writers/NamedValues.h"
#include "archive/writers/SinkBuffer.h"
#include "archive/writers/VcardLines.h"
#include "archive/writers/Writers.h"

namespace tarn::archive {
namespace {

constexpr uint16_t kTagAttachmentContactPhoto = 0x7FFF;
constexpr size_t kNoteColumns = 100000;  // a note is not broken into lines

// "19800229". A day is kept as the moment of its midnight in the time of whoever wrote it.
std::string DayText(const Moment& midnight) {
  const CalendarTime day = CalendarTimeOf(NearestDay(midnight.seconds));
  std::array<char, 16> text;
  std::snprintf(text.data(), text.size(), "%04d%02u%02u", day.year, day.month, day.day);
  return text.data();
}

std::string UtcText(const Moment& moment) {
  const CalendarTime time = CalendarTimeOf(moment.seconds);
  std::array<char, 24> text;
  std::snprintf(text.data(), text.size(), "%04d%02u%02uT%02u%02u%02uZ", time.year, time.month,
                time.day, time.hour, time.minute, time.second);
  return text.data();
}

// Every card has a name to show.
std::string ShownName(NamedValues& values, const ItemFields& fields) {
  std::string name = values.text(kDisplayName);
  if (name.empty()) name = fields.subject;
  if (name.empty()) name = values.text(kFileUnder);
  if (name.empty()) name = values.text(kCompany);
  name = OneLine(name);
  return name.find_first_not_of(' ') == name.npos ? "Unnamed" : name;
}

void PutNames(NamedValues& values, const ItemFields& fields, VcardLines& lines) {
  lines.putText("FN", ShownName(values, fields));
  lines.putComponents("N",
                      {values.text(kSurname), values.text(kGivenName), values.text(kMiddleName),
                       values.text(kNamePrefix), values.text(kGeneration)});
  lines.putText("NICKNAME", values.text(kNickname));
  lines.putComponents("ORG", {values.text(kCompany), values.text(kDepartment)});
  lines.putText("TITLE", values.text(kJobTitle));
  lines.putText("ROLE", values.text(kProfession));
}

void PutEmails(NamedValues& values, VcardLines& lines) {
  for (const ContactEmail& email : kEmails) {
    std::string address = values.text(email.address);
    if (address.find('@') == address.npos) {
      const std::string original = values.text(email.original);
      if (original.find('@') != original.npos) address = original;
    }
    lines.putText("EMAIL", OneLine(address));
  }
}

void PutAddresses(NamedValues& values, VcardLines& lines) {
  for (const ContactAddress& address : kAddresses) {
    lines.putComponents(address.name,
                        {values.text(address.box), "", values.text(address.street),
                         values.text(address.city), values.text(address.state),
                         values.text(address.postalCode), values.text(address.country)});
  }
}

// What URIs do not have as it is, is there by its bytes. Where no scheme is told, the usual one is
// meant.
void PutUri(std::string_view name, std::string_view text, std::string_view scheme,
            VcardLines& lines) {
  const size_t start = text.find_first_not_of(" \t\r\n");
  if (start == text.npos) return;
  text = text.substr(start, text.find_last_not_of(" \t\r\n") + 1 - start);
  const size_t colon = text.find_first_of(":/?#@.");
  const bool hasScheme = colon != text.npos && colon != 0 && text[colon] == ':';
  std::string uri(hasScheme ? std::string_view() : scheme);
  for (const char c : text) {
    constexpr std::string_view kNever = "\"<>\\^`{|}\x7F";
    if (static_cast<unsigned char>(c) > ' ' && c > 0 && kNever.find(c) == kNever.npos) {
      uri += c;
    } else {
      uri += '%';
      uri += mapi::Hexadecimal(static_cast<unsigned char>(c), 2);
    }
  }
  lines.put(name, uri);
}

void PutDays(NamedValues& values, VcardLines& lines) {
  const auto put = [&](std::string_view name, const PropertyKey& local, const PropertyKey& other) {
    std::optional<Moment> day = values.time(local);
    if (!day) day = values.time(other);
    if (day) lines.put(name, DayText(*day));
  };
  put("BDAY", kBirthdayLocal, kBirthday);
  put("ANNIVERSARY", kAnniversaryLocal, kAnniversary);
  const std::optional<int64_t> gender = values.integer(kGender);
  if (gender == 1) lines.put("GENDER", "F");
  if (gender == 2) lines.put("GENDER", "M");
}

void PutPeople(NamedValues& values, VcardLines& lines) {
  lines.putText("RELATED;TYPE=spouse;VALUE=text", values.text(kSpouse));
  lines.putText("RELATED;TYPE=co-worker;VALUE=text", values.text(kManager));
  lines.putText("RELATED;TYPE=agent;VALUE=text", values.text(kAssistant));
}

// The attachment that is the photo of a contact (MS-OXOCNTC 2.2.1.8.3).
std::optional<size_t> FindPhoto(Item& item) {
  mapi::MapiMessage* const message = item.properties();
  if (message == nullptr) return std::nullopt;
  for (size_t index = 0; index < item.attachments().size(); ++index) {
    const Outcome<std::unique_ptr<mapi::PropertySet>> set = message->attachment(index);
    if (!set) continue;
    mapi::PropertyValues values(**set, std::nullopt);
    if (values.boolean(kTagAttachmentContactPhoto).value_or(false)) return index;
  }
  return std::nullopt;
}

void PutPhoto(Item& item, VcardLines& lines, std::vector<Trouble>& lost) {
  const std::optional<size_t> index = FindPhoto(item);
  if (!index) return;
  MailImages images(item, lost);
  const std::optional<MailImage> image = images.load(*index);
  if (!image) return;
  TextSink url;
  SinkBuffer out(url);
  PutDataUrl(*image, out);
  out.finish();
  lines.put("PHOTO", url.text);
}

std::string Joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) {
    if (!text.empty()) text += ',';
    text += EscapedVcardText(name);
  }
  return text;
}

}  // namespace

Written WriteVcard(Item& item, ByteSink& sink) {
  Written written;
  SinkBuffer out(sink);
  VcardLines lines(out);
  NamedValues values(item.properties(), written.lost);
  lines.put("BEGIN", "VCARD");
  lines.put("VERSION", "4.0");
  PutNames(values, item.fields(Detail::Envelope), lines);
  PutEmails(values, lines);
  for (const ContactLine& line : kTelephones) lines.putText(line.name, values.text(line.key));
  PutAddresses(values, lines);
  for (const ContactLine& line : kPages) PutUri(line.name, values.text(line.key), "http://", lines);
  PutUri("IMPP", values.text(kInstantMessaging), "im:", lines);
  PutUri("FBURL", values.text(kFreeBusyUrl), "http://", lines);
  PutDays(values, lines);
  PutPeople(values, lines);
  const std::vector<std::string> categories = values.categories();
  if (!categories.empty()) lines.put("CATEGORIES", Joined(categories));
  const Bodies bodies = item.bodies();
  AppendTroubles(bodies.troubles, written.lost);
  std::string note = BestText(bodies, kNoteColumns);
  note.resize(note.find_last_not_of(" \r\n") + 1);
  lines.putText("NOTE", note);
  PutPhoto(item, lines, written.lost);
  const std::string key = values.binary(kSearchKey);
  if (!key.empty()) lines.put("UID;VALUE=text", mapi::HexadecimalOf(key));
  const std::optional<Moment> changed = values.time(kLastModified);
  if (changed) lines.put("REV", UtcText(*changed));
  lines.put("END", "VCARD");
  AppendTroubles(item.troubles(), written.lost);
  written.full = out.finish();
  return written;
}

}  // namespace tarn::archive
