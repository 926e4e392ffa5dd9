// CalendarKeys.h - the properties of appointments, meetings and tasks (MS-OXOCAL, MS-OXOTASK) that
// iCalendar has a place for.
#ifndef TARN_ARCHIVE_CALENDARKEYS_H
#define TARN_ARCHIVE_CALENDARKEYS_H

#include "archive/writers/NamedValues.h"

namespace tarn::archive {

inline constexpr PropertyKey kBusyStatus = {&kAppointmentProperties, 0x8205};
inline constexpr PropertyKey kLocation = {&kAppointmentProperties, 0x8208};
inline constexpr PropertyKey kStartWhole = {&kAppointmentProperties, 0x820D};
inline constexpr PropertyKey kEndWhole = {&kAppointmentProperties, 0x820E};
inline constexpr PropertyKey kIsAllDay = {&kAppointmentProperties, 0x8215};
inline constexpr PropertyKey kRecurrence = {&kAppointmentProperties, 0x8216};
inline constexpr PropertyKey kStateFlags = {&kAppointmentProperties, 0x8217};
inline constexpr PropertyKey kSequence = {&kAppointmentProperties, 0x8201};
inline constexpr PropertyKey kZoneStruct = {&kAppointmentProperties, 0x8233};
inline constexpr PropertyKey kZoneName = {&kAppointmentProperties, 0x8234};
inline constexpr PropertyKey kZoneOfStart = {&kAppointmentProperties, 0x825E};
inline constexpr PropertyKey kZoneOfRecurrence = {&kAppointmentProperties, 0x8260};
inline constexpr PropertyKey kGlobalId = {&kMeetingProperties, 0x0003};
inline constexpr PropertyKey kCleanGlobalId = {&kMeetingProperties, 0x0023};
inline constexpr PropertyKey kReminderMinutes = {&kCommonProperties, 0x8501};
inline constexpr PropertyKey kHasReminder = {&kCommonProperties, 0x8503};
inline constexpr PropertyKey kReminderTime = {&kCommonProperties, 0x8502};
inline constexpr PropertyKey kCommonStart = {&kCommonProperties, 0x8516};
inline constexpr PropertyKey kCommonEnd = {&kCommonProperties, 0x8517};

inline constexpr PropertyKey kTaskStatus = {&kTaskProperties, 0x8101};
inline constexpr PropertyKey kTaskPercent = {&kTaskProperties, 0x8102};
inline constexpr PropertyKey kTaskStart = {&kTaskProperties, 0x8104};
inline constexpr PropertyKey kTaskDue = {&kTaskProperties, 0x8105};
inline constexpr PropertyKey kTaskCompleted = {&kTaskProperties, 0x810F};
inline constexpr PropertyKey kTaskRecurrence = {&kTaskProperties, 0x8116};

inline constexpr PropertyKey kImportance = {nullptr, 0x0017};
inline constexpr PropertyKey kSensitivity = {nullptr, 0x0036};
inline constexpr PropertyKey kCreated = {nullptr, 0x3007};
inline constexpr PropertyKey kChanged = {nullptr, 0x3008};
inline constexpr PropertyKey kKey = {nullptr, 0x300B};

// Bits of kStateFlags.
inline constexpr int64_t kStateMeeting = 1;
inline constexpr int64_t kStateCanceled = 4;

}  // namespace tarn::archive

#endif
