// CalendarEvent.h - an appointment or a task as components of a calendar.
#ifndef TARN_ARCHIVE_CALENDAREVENT_H
#define TARN_ARCHIVE_CALENDAREVENT_H

#include <libical/ical.h>

#include <optional>
#include <string>

#include "archive/model/Item.h"
#include "archive/writers/CalendarZone.h"
#include "archive/writers/NamedValues.h"

namespace tarn::archive {

// What appointments and tasks have in common.
struct CalendarItem {
  Item& item;
  NamedValues& values;
  std::string uid;
  std::string description;
  std::string messageClass;  // lower case
};

// UID, when it was made and changed, what of, for whom, categories.
void AddCommon(const CalendarItem& source, icalcomponent* component, bool hasDescription = true);

// A VEVENT, one more for each occurrence that was changed, and the time zone that they are in.
void AddEvent(const CalendarItem& source, icalcomponent* calendar, std::vector<Trouble>& lost);

// A VTODO.
void AddTask(const CalendarItem& source, icalcomponent* calendar, std::vector<Trouble>& lost);

// That of an appointment: of its recurrence, else of its start.
std::optional<CalendarZone> ZoneOfEvent(NamedValues& values);

// A rule with its end.
struct RecurrencePattern;
std::string RuleText(const RecurrencePattern& pattern, const std::string& until);

// The day of a moment that is midnight by a clock that is not known, as seconds since 1970. Taken
// for such are clocks from 10 hours west of Greenwich to just below 14 hours east of it. Those of
// the few places beyond have midnight when one of these has it, on another day.
int64_t NearestDay(int64_t midnight);

}  // namespace tarn::archive

#endif
