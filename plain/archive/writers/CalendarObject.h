// CalendarObject.h - components of iCalendar (RFC 5545) and their properties, written by libical.
#ifndef TARN_ARCHIVE_CALENDAROBJECT_H
#define TARN_ARCHIVE_CALENDAROBJECT_H

#include <libical/ical.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "archive/model/Item.h"
#include "archive/writers/CalendarZone.h"

namespace tarn::archive {

struct FreeComponent {
  void operator()(icalcomponent* component) const { icalcomponent_free(component); }
};
using OwnedComponent = std::unique_ptr<icalcomponent, FreeComponent>;

// A new component in another, which owns it.
icalcomponent* AddComponent(icalcomponent* parent, icalcomponent_kind kind);

// Text of many lines; nothing where it is empty.
void AddText(icalcomponent* component, icalproperty_kind kind, const std::string& text);

void AddInteger(icalcomponent* component, icalproperty_kind kind, int value);

// How a time is told: in UTC, by the clock of a zone (null: of no zone), or as a day.
enum class TimeForm : uint8_t { Utc, Local, Day };

// Seconds since 1970, in UTC or by the clock of the zone, as the form says.
void AddTime(icalcomponent* component, icalproperty_kind kind, int64_t seconds, TimeForm form,
             const CalendarZone* zone = nullptr);

// Of a rule that libical does not take, nothing.
void AddRule(icalcomponent* component, const std::string& rule);

// "20240501T103456Z", or "20240501" of a day.
std::string TimeText(int64_t seconds, TimeForm form);

// ORGANIZER or ATTENDEE.
void AddPerson(icalcomponent* component, icalproperty_kind kind, const Address& person,
               icalparameter_role role = ICAL_ROLE_NONE,
               icalparameter_partstat answer = ICAL_PARTSTAT_NONE);

// A reminder that shows the subject, so many minutes before the start.
void AddAlarmBefore(icalcomponent* component, const std::string& subject, int64_t minutes);

// The same at a moment, seconds since 1970.
void AddAlarmAt(icalcomponent* component, const std::string& subject, int64_t moment);

// What the zone is, for all years from `firstYear` on.
void AddZone(icalcomponent* calendar, const CalendarZone& zone, int firstYear);

// All of it, CRLF at the ends of lines.
std::string TextOf(icalcomponent* calendar);

}  // namespace tarn::archive

#endif
