// CalendarEvent.h - an appointment or a task as components of a calendar.
#ifndef TARN_ARCHIVE_CALENDAREVENT_H
#define TARN_ARCHIVE_CALENDAREVENT_H

#include <libical/ical.h>

#include <string>

#include "archive/model/Item.h"
#include "archive/writers/NamedValues.h"

namespace tarn::archive {

// What appointments and tasks have in common.
struct CalendarItem {
  Item& item;
  NamedValues& values;
  std::string uid;
  std::string description;
};

// UID, when it was made and changed, what of, for whom, categories.
void AddCommon(const CalendarItem& source, icalcomponent* component);

// A VEVENT, one more for each occurrence that was changed, and the time zone that they are in.
void AddEvent(const CalendarItem& source, icalcomponent* calendar, std::vector<Trouble>& lost);

// A VTODO.
void AddTask(const CalendarItem& source, icalcomponent* calendar, std::vector<Trouble>& lost);

// A rule with its end.
struct RecurrencePattern;
std::string RuleText(const RecurrencePattern& pattern, const std::string& until);

// The day of a moment that is midnight by a clock that is not known, as seconds since 1970.
int64_t NearestDay(int64_t midnight);

}  // namespace tarn::archive

#endif
