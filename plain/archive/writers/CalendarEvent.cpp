#include "archive/writers/CalendarEvent.h"

#include <algorithm>
#include <set>

#include "archive/writers/CalendarKeys.h"
#include "archive/writers/CalendarObject.h"
#include "archive/writers/CalendarZone.h"
#include "archive/writers/ItemText.h"
#include "archive/writers/RecurrencePattern.h"

namespace tarn::archive {
namespace {

int64_t DayOf(int64_t seconds) {
  return seconds - ((seconds % kSecondsOfDay) + kSecondsOfDay) % kSecondsOfDay;
}

// Busy as items tell it.
enum Busy : int64_t { kFree = 0, kTentative = 1 };

// When an appointment is, by the clock of its zone where that is known, else in UTC.
class EventTimes {
 public:
  EventTimes(std::optional<CalendarZone> zone, bool isAllDay)
      : zone_(std::move(zone)), isAllDay_(isAllDay) {}

  const CalendarZone* zone() const { return zone_ ? &*zone_ : nullptr; }
  bool isAllDay() const { return isAllDay_; }

  // Of a moment as the form of this event has it.
  int64_t ofUtc(int64_t utc) const {
    if (isAllDay_ && !zone_) return NearestDay(utc);
    return zone_ ? zone_->localOf(utc) : utc;
  }
  // Of a local time of the pattern, for a form that may be another than that of the event. Without
  // a zone, `shift` leads from that to UTC.
  int64_t ofLocal(int64_t local, bool isAllDay) const {
    return zone_ || isAllDay ? local : local + shift_;
  }
  void learnShift(int64_t utc, int64_t local) { shift_ = utc - local; }

  std::string until(int64_t local) const {
    if (isAllDay_) return TimeText(local, TimeForm::Day);
    return TimeText(zone_ ? zone_->utcOf(local) : local + shift_, TimeForm::Utc);
  }

  void add(icalcomponent* component, icalproperty_kind kind, int64_t time, bool isAllDay) const {
    const TimeForm form = isAllDay ? TimeForm::Day : zone_ ? TimeForm::Local : TimeForm::Utc;
    AddTime(component, kind, time, form, zone_ ? &*zone_ : nullptr);
  }
  void add(icalcomponent* component, icalproperty_kind kind, int64_t time) const {
    add(component, kind, time, isAllDay_);
  }

 private:
  std::optional<CalendarZone> zone_;
  bool isAllDay_;
  int64_t shift_ = 0;
};

constexpr std::string_view kResponse = "ipm.schedule.meeting.resp";

bool IsResponse(const CalendarItem& source) { return source.messageClass.starts_with(kResponse); }

icalparameter_partstat AnswerOf(const CalendarItem& source) {
  const std::string_view answer = std::string_view(source.messageClass).substr(kResponse.size());
  if (answer.starts_with(".pos")) return ICAL_PARTSTAT_ACCEPTED;
  if (answer.starts_with(".neg")) return ICAL_PARTSTAT_DECLINED;
  return answer.starts_with(".tent") ? ICAL_PARTSTAT_TENTATIVE : ICAL_PARTSTAT_NEEDSACTION;
}

// A response is from the one who attends to the one who organizes (RFC 5546 3.2.3).
void AddPeopleOfResponse(const CalendarItem& source, icalcomponent* event) {
  const ItemFields& fields = source.item.fields(Detail::Envelope);
  if (!fields.to.empty()) AddPerson(event, ICAL_ORGANIZER_PROPERTY, fields.to.front());
  if (AddressText(fields.from).empty()) return;
  AddPerson(event, ICAL_ATTENDEE_PROPERTY, fields.from, ICAL_ROLE_NONE, AnswerOf(source));
}

void AddPeople(const CalendarItem& source, icalcomponent* event) {
  if (IsResponse(source)) return AddPeopleOfResponse(source, event);
  const ItemFields& fields = source.item.fields(Detail::Envelope);
  const bool isMeeting = (source.values.integer(kStateFlags).value_or(0) & kStateMeeting) != 0;
  if (!isMeeting && fields.to.empty() && fields.cc.empty()) return;
  if (!AddressText(fields.from).empty()) AddPerson(event, ICAL_ORGANIZER_PROPERTY, fields.from);
  const auto addAll = [&](const std::vector<Address>& people, icalparameter_role role) {
    for (const Address& person : people) AddPerson(event, ICAL_ATTENDEE_PROPERTY, person, role);
  };
  addAll(fields.to, ICAL_ROLE_REQPARTICIPANT);
  addAll(fields.cc, ICAL_ROLE_OPTPARTICIPANT);
  addAll(fields.bcc, ICAL_ROLE_NONPARTICIPANT);
}

void AddStatus(int64_t busy, bool isCanceled, icalcomponent* event) {
  const icalproperty_status status = isCanceled           ? ICAL_STATUS_CANCELLED
                                     : busy == kTentative ? ICAL_STATUS_TENTATIVE
                                                          : ICAL_STATUS_CONFIRMED;
  icalcomponent_add_property(event, icalproperty_new_status(status));
  icalcomponent_add_property(
      event, icalproperty_new_transp(busy == kFree ? ICAL_TRANSP_TRANSPARENT : ICAL_TRANSP_OPAQUE));
}

// Responses have none (RFC 5546 3.2.3).
void AddReminder(const CalendarItem& source, icalcomponent* event) {
  if (!source.values.isSet(kHasReminder) || IsResponse(source)) return;
  AddAlarmBefore(event, OneLine(source.item.fields(Detail::Envelope).subject),
                 source.values.integer(kReminderMinutes).value_or(15));
}

// The occurrences that are gone, not those that are elsewhere.
void AddDeleted(const RecurrencePattern& pattern, const EventTimes& times, icalcomponent* event) {
  std::set<int64_t> changed;
  for (const RecurrenceException& exception : pattern.exceptions) {
    changed.insert(DayOf(exception.original));
  }
  for (const int64_t day : pattern.deletedDays) {
    if (changed.contains(day)) continue;
    times.add(event, ICAL_EXDATE_PROPERTY,
              times.ofLocal(day + pattern.startMinute * int64_t{60}, times.isAllDay()));
  }
}

void AddException(const CalendarItem& source, const RecurrenceException& exception,
                  const EventTimes& times, bool hasDescription, icalcomponent* calendar) {
  icalcomponent* const event = AddComponent(calendar, ICAL_VEVENT_COMPONENT);
  AddCommon(source, event, hasDescription);
  if (exception.subject) {
    icalcomponent_set_summary(event, OneLine(*exception.subject).c_str());
  }
  AddText(event, ICAL_LOCATION_PROPERTY,
          exception.location.value_or(source.values.text(kLocation)));
  times.add(event, ICAL_RECURRENCEID_PROPERTY, times.ofLocal(exception.original, times.isAllDay()));
  const bool isWholeDay = exception.isAllDay.value_or(times.isAllDay());
  times.add(event, ICAL_DTSTART_PROPERTY, times.ofLocal(exception.start, isWholeDay), isWholeDay);
  times.add(event, ICAL_DTEND_PROPERTY, times.ofLocal(exception.end, isWholeDay), isWholeDay);
  AddStatus(
      exception.busyStatus ? *exception.busyStatus : source.values.integer(kBusyStatus).value_or(2),
      false, event);
}

// Each has the description again, up to a limit.
void AddExceptions(const CalendarItem& source, const RecurrencePattern& pattern,
                   const EventTimes& times, icalcomponent* calendar, std::vector<Trouble>& lost) {
  constexpr size_t kMostDescriptions = size_t{1} << 20;
  size_t size = 0;
  bool isCut = false;
  for (const RecurrenceException& exception : pattern.exceptions) {
    size += source.description.size();
    const bool hasDescription = size <= kMostDescriptions;
    isCut = isCut || !hasDescription;
    AddException(source, exception, times, hasDescription, calendar);
  }
  if (isCut) {
    lost.push_back({TroubleKind::TooLarge, "not all changed occurrences have the description"});
  }
}

// Whether a time of the event, or of a changed occurrence, is by the clock of its zone.
bool HasLocalTimes(const EventTimes& times, const std::optional<RecurrencePattern>& pattern) {
  if (times.zone() == nullptr) return false;
  return !times.isAllDay() ||
         (pattern && std::any_of(pattern->exceptions.begin(), pattern->exceptions.end(),
                                 [](const RecurrenceException& exception) {
                                   return !exception.isAllDay.value_or(true);
                                 }));
}

}  // namespace

std::optional<CalendarZone> ZoneOfEvent(NamedValues& values) {
  std::optional<CalendarZone> zone = ReadZoneDefinition(values.binary(kZoneOfRecurrence));
  if (!zone) zone = ReadZoneDefinition(values.binary(kZoneOfStart));
  if (!zone) zone = ReadZoneStruct(values.binary(kZoneStruct), values.text(kZoneName));
  return zone;
}

int64_t NearestDay(int64_t midnight) {
  constexpr int64_t kFarthestEast = 14 * 60 * 60;
  return DayOf(midnight + kFarthestEast - 1);
}

std::string RuleText(const RecurrencePattern& pattern, const std::string& until) {
  if (pattern.count) return pattern.rule + ";COUNT=" + std::to_string(*pattern.count);
  return until.empty() ? pattern.rule : pattern.rule + ";UNTIL=" + until;
}

void AddEvent(const CalendarItem& source, icalcomponent* calendar, std::vector<Trouble>& lost) {
  NamedValues& values = source.values;
  std::optional<Moment> start = values.time(kStartWhole);
  if (!start) start = values.time(kCommonStart);
  std::optional<Moment> end = values.time(kEndWhole);
  if (!end) end = values.time(kCommonEnd);
  const bool isAllDay = values.isSet(kIsAllDay);
  EventTimes times(ZoneOfEvent(values), isAllDay);

  const std::string blob = values.binary(kRecurrence);
  const std::optional<RecurrencePattern> pattern = ReadRecurrence(blob, true);
  if (!blob.empty() && (!pattern || !pattern->isWhole)) {
    lost.push_back({TroubleKind::Damaged, pattern ? "changed occurrences cannot be read"
                                                  : "the recurrence cannot be read"});
  }
  if (!start && pattern) start = Moment{pattern->firstDay + pattern->startMinute * int64_t{60}, {}};
  if (pattern && start) {
    times.learnShift(start->seconds, pattern->firstDay + pattern->startMinute * int64_t{60});
  }
  if (HasLocalTimes(times, pattern)) {
    AddZone(calendar, *times.zone(),
            std::min(1970, CalendarTimeOf(start ? start->seconds : 0).year));
  }

  icalcomponent* const event = AddComponent(calendar, ICAL_VEVENT_COMPONENT);
  AddCommon(source, event);
  AddText(event, ICAL_LOCATION_PROPERTY, values.text(kLocation));
  if (start) times.add(event, ICAL_DTSTART_PROPERTY, times.ofUtc(start->seconds));
  if (start && end && end->seconds >= start->seconds) {
    times.add(event, ICAL_DTEND_PROPERTY, times.ofUtc(end->seconds));
  }
  const bool isCanceled = (values.integer(kStateFlags).value_or(0) & kStateCanceled) != 0;
  AddStatus(values.integer(kBusyStatus).value_or(2), isCanceled, event);
  const std::optional<int64_t> sequence = values.integer(kSequence);
  if (sequence && *sequence >= 0) {
    AddInteger(event, ICAL_SEQUENCE_PROPERTY,
               static_cast<int>(std::min<int64_t>(*sequence, INT32_MAX)));
  }
  AddPeople(source, event);
  AddReminder(source, event);
  if (!pattern) return;
  const int64_t startMinute = pattern->startMinute * int64_t{60};
  AddRule(event, RuleText(*pattern, pattern->lastDay ? times.until(*pattern->lastDay + startMinute)
                                                     : std::string()));
  AddDeleted(*pattern, times, event);
  AddExceptions(source, *pattern, times, calendar, lost);
}

}  // namespace tarn::archive
