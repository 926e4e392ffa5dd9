#include "archive/writers/CalendarObject.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "archive/writers/ItemText.h"

namespace tarn::archive {
namespace {

icaltimetype TimeOf(int64_t seconds, TimeForm form) {
  const CalendarTime calendar = CalendarTimeOf(seconds);
  icaltimetype time = icaltime_null_time();
  time.year = calendar.year;
  time.month = static_cast<int>(calendar.month);
  time.day = static_cast<int>(calendar.day);
  if (form == TimeForm::Day) {
    time.is_date = 1;
    return time;
  }
  time.hour = static_cast<int>(calendar.hour);
  time.minute = static_cast<int>(calendar.minute);
  time.second = static_cast<int>(calendar.second);
  if (form == TimeForm::Utc) time.zone = icaltimezone_get_utc_timezone();
  return time;
}

std::string DayOfWeekText(const ClockChange& change) {
  constexpr std::array<const char*, 7> kDays = {"SU", "MO", "TU", "WE", "TH", "FR", "SA"};
  return (change.nth >= 5 ? "-1" : std::to_string(change.nth)) + kDays[change.weekday];
}

struct ZoneTime {
  icalcomponent_kind kind;
  int32_t from;
  int32_t to;
};

void AddZoneTime(icalcomponent* zone, const ZoneTime& time, const ClockChange* change, int year) {
  icalcomponent* const part = AddComponent(zone, time.kind);
  constexpr ClockChange kNewYear{1, 0, 1, 0};
  int64_t start = 0;
  if (change != nullptr) {
    start = TimeOfChange(*change, year);
  } else {
    start = TimeOfChange(kNewYear, year) / kSecondsOfDay * kSecondsOfDay;
    const CalendarTime day = CalendarTimeOf(start);
    start -= int64_t{day.day - 1} * kSecondsOfDay;
  }
  AddTime(part, ICAL_DTSTART_PROPERTY, start, TimeForm::Local);
  const auto addOffset = [&](icalproperty_kind kind, int32_t minutes) {
    icalproperty* const property = icalproperty_new(kind);
    icalproperty_set_value(property, icalvalue_new_utcoffset(minutes * 60));
    icalcomponent_add_property(part, property);
  };
  addOffset(ICAL_TZOFFSETFROM_PROPERTY, time.from);
  addOffset(ICAL_TZOFFSETTO_PROPERTY, time.to);
  if (change == nullptr) return;
  AddRule(part, "FREQ=YEARLY;BYMONTH=" + std::to_string(change->month) +
                    ";BYDAY=" + DayOfWeekText(*change));
}

void AddAlarm(icalcomponent* component, const std::string& subject,
              const icaltriggertype& trigger) {
  icalcomponent* const alarm = AddComponent(component, ICAL_VALARM_COMPONENT);
  icalcomponent_add_property(alarm, icalproperty_new_action(ICAL_ACTION_DISPLAY));
  AddText(alarm, ICAL_DESCRIPTION_PROPERTY, subject.empty() ? "Reminder" : subject);
  icalcomponent_add_property(alarm, icalproperty_new_trigger(trigger));
}

}  // namespace

icalcomponent* AddComponent(icalcomponent* parent, icalcomponent_kind kind) {
  icalcomponent* const component = icalcomponent_new(kind);
  icalcomponent_add_component(parent, component);
  return component;
}

void AddText(icalcomponent* component, icalproperty_kind kind, const std::string& text) {
  const std::string lines = ManyLines(text);
  if (lines.empty()) return;
  icalproperty* const property = icalproperty_new(kind);
  icalproperty_set_value(property, icalvalue_new_text(lines.c_str()));
  icalcomponent_add_property(component, property);
}

void AddInteger(icalcomponent* component, icalproperty_kind kind, int value) {
  icalproperty* const property = icalproperty_new(kind);
  icalproperty_set_value(property, icalvalue_new_integer(value));
  icalcomponent_add_property(component, property);
}

void AddTime(icalcomponent* component, icalproperty_kind kind, int64_t seconds, TimeForm form,
             const CalendarZone* zone) {
  const icaltimetype time = TimeOf(seconds, form);
  icalproperty* const property = icalproperty_new(kind);
  icalproperty_set_value(
      property, form == TimeForm::Day ? icalvalue_new_date(time) : icalvalue_new_datetime(time));
  if (form == TimeForm::Day) {
    icalproperty_add_parameter(property, icalparameter_new_value(ICAL_VALUE_DATE));
  } else if (form == TimeForm::Local && zone != nullptr) {
    icalproperty_add_parameter(property, icalparameter_new_tzid(zone->name.c_str()));
  }
  icalcomponent_add_property(component, property);
}

void AddRule(icalcomponent* component, const std::string& rule) {
  const icalrecurrencetype recurrence = icalrecurrencetype_from_string(rule.c_str());
  if (recurrence.freq == ICAL_NO_RECURRENCE) return;
  icalcomponent_add_property(component, icalproperty_new_rrule(recurrence));
}

std::string TimeText(int64_t seconds, TimeForm form) {
  char* const text = icaltime_as_ical_string_r(TimeOf(seconds, form));
  std::string copy = text == nullptr ? std::string() : text;
  icalmemory_free_buffer(text);
  return copy;
}

void AddPerson(icalcomponent* component, icalproperty_kind kind, const Address& person,
               icalparameter_role role, icalparameter_partstat answer) {
  const bool hasAddress = person.address.find('@') != std::string::npos;
  const std::string address =
      hasAddress ? "mailto:" + OneLine(person.address) : std::string("invalid:nomail");
  icalproperty* const property = icalproperty_new(kind);
  icalproperty_set_value(property, icalvalue_new_caladdress(address.c_str()));
  // Quotes have no escape in parameters.
  std::string name = OneLine(person.name.empty() && !hasAddress ? person.address : person.name);
  std::replace(name.begin(), name.end(), '"', '\'');
  if (!name.empty()) icalproperty_add_parameter(property, icalparameter_new_cn(name.c_str()));
  if (role != ICAL_ROLE_NONE) icalproperty_add_parameter(property, icalparameter_new_role(role));
  if (answer != ICAL_PARTSTAT_NONE) {
    icalproperty_add_parameter(property, icalparameter_new_partstat(answer));
  }
  icalcomponent_add_property(component, property);
}

void AddAlarmBefore(icalcomponent* component, const std::string& subject, int64_t minutes) {
  constexpr int64_t kMostMinutes = 366 * 24 * 60;
  const int64_t seconds = -60 * std::clamp<int64_t>(minutes, 0, kMostMinutes);
  AddAlarm(component, subject, icaltriggertype_from_int(static_cast<int>(seconds)));
}

void AddAlarmAt(icalcomponent* component, const std::string& subject, int64_t moment) {
  icaltriggertype trigger = icaltriggertype_from_int(0);
  trigger.time = TimeOf(moment, TimeForm::Utc);
  AddAlarm(component, subject, trigger);
}

void AddZone(icalcomponent* calendar, const CalendarZone& zone, int firstYear) {
  icalcomponent* const component = AddComponent(calendar, ICAL_VTIMEZONE_COMPONENT);
  AddText(component, ICAL_TZID_PROPERTY, zone.name);
  const int32_t standard = zone.standardOffset;
  if (!zone.changes()) {
    AddZoneTime(component, {ICAL_XSTANDARD_COMPONENT, standard, standard}, nullptr, firstYear);
    return;
  }
  const int32_t daylight = zone.daylightOffset;
  AddZoneTime(component, {ICAL_XSTANDARD_COMPONENT, daylight, standard}, &zone.toStandard,
              firstYear);
  AddZoneTime(component, {ICAL_XDAYLIGHT_COMPONENT, standard, daylight}, &zone.toDaylight,
              firstYear);
}

std::string TextOf(icalcomponent* calendar) {
  char* const text = icalcomponent_as_ical_string_r(calendar);
  std::string copy = text == nullptr ? std::string() : text;
  icalmemory_free_buffer(text);
  return copy;
}

}  // namespace tarn::archive
