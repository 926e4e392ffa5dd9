#include <algorithm>
#include <cmath>

#include "archive/writers/CalendarEvent.h"
#include "archive/writers/CalendarKeys.h"
#include "archive/writers/CalendarObject.h"
#include "archive/writers/ItemText.h"
#include "archive/writers/RecurrencePattern.h"

namespace tarn::archive {
namespace {

enum TaskStatus : int64_t { kNotStarted = 0, kInProgress = 1, kComplete = 2 };

icalproperty_status StatusOf(int64_t status) {
  if (status == kComplete) return ICAL_STATUS_COMPLETED;
  return status == kInProgress ? ICAL_STATUS_INPROCESS : ICAL_STATUS_NEEDSACTION;
}

}  // namespace

// Days of tasks are midnights in UTC.
void AddTask(const CalendarItem& source, icalcomponent* calendar, std::vector<Trouble>& lost) {
  NamedValues& values = source.values;
  icalcomponent* const task = AddComponent(calendar, ICAL_VTODO_COMPONENT);
  AddCommon(source, task);
  const std::string blob = values.binary(kTaskRecurrence);
  const std::optional<RecurrencePattern> pattern = ReadRecurrence(blob, false);
  if (!blob.empty() && !pattern) {
    lost.push_back({TroubleKind::Damaged, "the recurrence cannot be read"});
  }
  std::optional<Moment> start = values.time(kTaskStart);
  if (!start && pattern) start = Moment{pattern->firstDay, {}};
  const auto addDay = [&](icalproperty_kind kind, const std::optional<Moment>& day) {
    if (day) AddTime(task, kind, NearestDay(day->seconds), TimeForm::Day);
  };
  addDay(ICAL_DTSTART_PROPERTY, start);
  addDay(ICAL_DUE_PROPERTY, values.time(kTaskDue));
  const std::optional<Moment> completed = values.time(kTaskCompleted);
  if (completed) AddTime(task, ICAL_COMPLETED_PROPERTY, completed->seconds, TimeForm::Utc);
  const std::optional<int64_t> status = values.integer(kTaskStatus);
  if (status) icalcomponent_add_property(task, icalproperty_new_status(StatusOf(*status)));
  const std::optional<double> part = values.real(kTaskPercent);
  if (part && *part >= 0 && *part <= 1) {
    AddInteger(task, ICAL_PERCENTCOMPLETE_PROPERTY, static_cast<int>(std::lround(*part * 100)));
  }
  const std::optional<Moment> reminder = values.time(kReminderTime);
  if (reminder && values.isSet(kHasReminder)) {
    AddAlarmAt(task, OneLine(source.item.fields(Detail::Envelope).subject), reminder->seconds);
  }
  if (!pattern) return;
  AddRule(task, RuleText(*pattern, pattern->lastDay ? TimeText(*pattern->lastDay, TimeForm::Day)
                                                    : std::string()));
}

}  // namespace tarn::archive
