#include <algorithm>
#include <string>
#include <string_view>

#include "archive/mapi/Hexadecimal.h"
#include "archive/text/AsciiText.h"
#include "archive/text/BodyText.h"
#include "archive/writers/CalendarEvent.h"
#include "archive/writers/CalendarKeys.h"
#include "archive/writers/CalendarObject.h"
#include "archive/writers/ItemText.h"
#include "archive/writers/SinkBuffer.h"
#include "archive/writers/Writers.h"

namespace tarn::archive {
namespace {

constexpr size_t kDescriptionColumns = 100000;  // a description is not broken into lines

// The id that all copies of an appointment share (MS-OXOCAL 2.2.1.27): one that came by iCalendar
// is in it as it was there.
std::string UidOf(NamedValues& values, const Item& item) {
  constexpr size_t kHeader = 40;
  constexpr std::string_view kForeign("vCal-Uid\x01\0\0\0", 12);
  std::string id = values.binary(kCleanGlobalId);
  if (id.empty()) id = values.binary(kGlobalId);
  const std::string_view data = std::string_view(id).substr(std::min(id.size(), kHeader));
  if (data.starts_with(kForeign)) {
    const std::string_view uid = data.substr(kForeign.size());
    std::string shown = OneLine(uid.substr(0, uid.find('\0')));
    if (!shown.empty()) return shown;
  }
  if (id.empty()) id = values.binary(kKey);
  return id.empty() ? "item-" + OneLine(item.place().id) : mapi::HexadecimalOf(id);
}

// The calendar that an internet mail carries.
std::optional<size_t> FindCalendarPart(Item& item) {
  const std::vector<Attachment>& attachments = item.attachments();
  for (size_t index = 0; index < attachments.size(); ++index) {
    if (attachments[index].mediaType == "text/calendar") return index;
  }
  return std::nullopt;
}

class BoundedText final : public ByteSink {
 public:
  static constexpr size_t kLargest = size_t{64} << 20;

  std::optional<Trouble> write(std::string_view bytes) override {
    if (bytes.size() > kLargest - text.size()) {
      return Trouble{TroubleKind::TooLarge, "the calendar is larger than " + SizeText(kLargest)};
    }
    text.append(bytes);
    return std::nullopt;
  }
  std::string text;
};

// Its bytes, in UTF-8 where the mail names another charset: a file has no place for the name.
void PutCalendarPart(Item& item, size_t index, SinkBuffer& out, std::vector<Trouble>& lost) {
  const Outcome<std::unique_ptr<ByteSource>> source = item.open(index);
  if (!source) {
    lost.push_back(source.trouble());
    return;
  }
  const std::string charset = LoweredAscii(item.attachments()[index].charset);
  const bool isUtf8 = charset.empty() || charset == "utf-8" || charset == "utf8" ||
                      charset == "us-ascii" || charset == "ascii";
  BoundedText text;
  SinkBuffer toText(text);
  const std::optional<Trouble> broken = PutAll(**source, isUtf8 ? out : toText);
  if (broken) lost.push_back(*broken);
  if (const std::optional<Trouble> full = toText.finish()) lost.push_back(*full);
  out.put(Utf8Of(text.text, charset));
}

icalproperty_method MethodOf(const std::string& lowerClass) {
  constexpr std::string_view kMeeting = "ipm.schedule.meeting.";
  if (!lowerClass.starts_with(kMeeting)) return ICAL_METHOD_NONE;
  const std::string_view kind = std::string_view(lowerClass).substr(kMeeting.size());
  if (kind.starts_with("request")) return ICAL_METHOD_REQUEST;
  if (kind.starts_with("canceled")) return ICAL_METHOD_CANCEL;
  return kind.starts_with("resp") ? ICAL_METHOD_REPLY : ICAL_METHOD_NONE;
}

}  // namespace

void AddCommon(const CalendarItem& source, icalcomponent* component, bool hasDescription) {
  NamedValues& values = source.values;
  const ItemFields& fields = source.item.fields(Detail::Envelope);
  AddText(component, ICAL_UID_PROPERTY, source.uid);
  const std::optional<Moment> changed = values.time(kChanged);
  const Moment stamp = changed ? *changed : fields.sent.value_or(Moment());
  AddTime(component, ICAL_DTSTAMP_PROPERTY, stamp.seconds, TimeForm::Utc);
  const std::optional<Moment> created = values.time(kCreated);
  if (created) AddTime(component, ICAL_CREATED_PROPERTY, created->seconds, TimeForm::Utc);
  if (changed) AddTime(component, ICAL_LASTMODIFIED_PROPERTY, changed->seconds, TimeForm::Utc);
  AddText(component, ICAL_SUMMARY_PROPERTY, OneLine(fields.subject));
  if (hasDescription) AddText(component, ICAL_DESCRIPTION_PROPERTY, source.description);
  const std::optional<int64_t> importance = values.integer(kImportance);
  if (importance && *importance != 1) {
    AddInteger(component, ICAL_PRIORITY_PROPERTY, *importance == 2 ? 1 : 9);
  }
  const int64_t sensitivity = values.integer(kSensitivity).value_or(0);
  if (sensitivity > 0) {
    icalcomponent_add_property(
        component,
        icalproperty_new_class(sensitivity == 3 ? ICAL_CLASS_CONFIDENTIAL : ICAL_CLASS_PRIVATE));
  }
  for (const std::string& category : values.categories()) {
    AddText(component, ICAL_CATEGORIES_PROPERTY, OneLine(category));
  }
}

Written WriteIcalendar(Item& item, ByteSink& sink) {
  Written written;
  SinkBuffer out(sink);
  const std::optional<size_t> part =
      item.properties() == nullptr ? FindCalendarPart(item) : std::nullopt;
  if (part) {
    PutCalendarPart(item, *part, out, written.lost);
    AppendTroubles(item.troubles(), written.lost);
    written.full = out.finish();
    return written;
  }
  const OwnedComponent calendar(icalcomponent_new(ICAL_VCALENDAR_COMPONENT));
  icalcomponent_add_property(calendar.get(), icalproperty_new_version("2.0"));
  icalcomponent_add_property(calendar.get(), icalproperty_new_prodid("-//Tarn//Archive//EN"));
  const std::string messageClass = LoweredAscii(item.fields(Detail::Envelope).messageClass);
  const icalproperty_method method = MethodOf(messageClass);
  if (method != ICAL_METHOD_NONE) {
    icalcomponent_add_property(calendar.get(), icalproperty_new_method(method));
  }
  NamedValues values(item.properties(), written.lost);
  const Bodies bodies = item.bodies();
  AppendTroubles(bodies.troubles, written.lost);
  std::string description = BestText(bodies, kDescriptionColumns);
  description.resize(description.find_last_not_of(" \r\n") + 1);
  const CalendarItem source{item, values, UidOf(values, item), std::move(description),
                            messageClass};
  if (messageClass.starts_with("ipm.task")) {
    AddTask(source, calendar.get(), written.lost);
  } else {
    AddEvent(source, calendar.get(), written.lost);
  }
  out.put(TextOf(calendar.get()));
  AppendTroubles(item.troubles(), written.lost);
  written.full = out.finish();
  return written;
}

}  // namespace tarn::archive
