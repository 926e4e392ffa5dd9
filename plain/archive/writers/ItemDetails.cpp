// The properties are those of MS-OXOCNTC, MS-OXOCAL, MS-OXOTASK and MS-OXOJRNL.
#include "archive/writers/ItemDetails.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>

#include "archive/common/FoldedText.h"
#include "archive/writers/CalendarEvent.h"
#include "archive/writers/CalendarKeys.h"
#include "archive/writers/CalendarZone.h"
#include "archive/writers/ContactKeys.h"
#include "archive/writers/ItemText.h"
#include "archive/writers/NamedValues.h"
#include "archive/writers/RecurrencePattern.h"

namespace tarn::archive {
namespace {

constexpr PropertySetId kLogProperties = {0x0A, 0x20, 0x06, 0, 0, 0, 0, 0,
                                          0xC0, 0,    0,    0, 0, 0, 0, 0x46};
constexpr PropertyKey kLogType = {&kLogProperties, 0x8700};
constexpr PropertyKey kLogStart = {&kLogProperties, 0x8706};
constexpr PropertyKey kLogMinutes = {&kLogProperties, 0x8707};
constexpr PropertyKey kTaskOwner = {&kTaskProperties, 0x811F};
constexpr PropertyKey kRecurrenceText = {&kAppointmentProperties, 0x8232};

std::string DayText(int64_t seconds) { return Iso8601({seconds, std::nullopt}).substr(0, 10); }

std::string MinutesText(int64_t minutes) {
  const auto count = [](int64_t number, const std::string& unit) {
    return std::to_string(number) + " " + unit + (number == 1 ? "" : "s");
  };
  if (minutes != 0 && minutes % (24 * 60) == 0) return count(minutes / (24 * 60), "day");
  if (minutes != 0 && minutes % 60 == 0) return count(minutes / 60, "hour");
  return count(minutes, "minute");
}

class Details {
 public:
  Details(mapi::MapiMessage& message, TextOfTime textOfTime)
      : values_(&message, lost_), textOfTime_(textOfTime) {}

  void addContact();
  void addAppointment();
  void addTask();
  void addJournal();

  std::vector<std::pair<std::string, std::string>> take() { return std::move(found_); }

 private:
  void add(const std::string& label, const std::string& value) {
    if (value.find_first_not_of(" \r\n\t") != value.npos) found_.emplace_back(label, value);
  }
  void addText(const std::string& label, const PropertyKey& key) { add(label, values_.text(key)); }
  void addDay(const std::string& label, const std::optional<Moment>& midnight) {
    if (midnight) add(label, DayText(NearestDay(midnight->seconds)));
  }
  void addTime(const std::string& label, const std::optional<Moment>& time) {
    if (time) add(label, textOfTime_(*time));
  }
  void addCategories() {
    std::string all;
    for (const std::string& name : values_.categories()) all += (all.empty() ? "" : ", ") + name;
    add("Categories", all);
  }
  void addCommon();
  void addEmails();
  void addAddresses();
  void addSpan(bool isAllDay);
  void addRecurrence(const PropertyKey& key, bool isAppointment);

  std::vector<Trouble> lost_;
  NamedValues values_;
  const TextOfTime textOfTime_;
  std::vector<std::pair<std::string, std::string>> found_;
};

void Details::addContact() {
  addText("Name", kDisplayName);
  addText("Nickname", kNickname);
  addText("Company", kCompany);
  addText("Department", kDepartment);
  addText("Job title", kJobTitle);
  addText("Profession", kProfession);
  addEmails();
  for (const ContactLine& line : kTelephones) addText(line.label, line.key);
  addAddresses();
  addText("Messenger", kInstantMessaging);
  for (const ContactLine& line : kPages) addText(line.label, line.key);
  addText("Free and busy", kFreeBusyUrl);
  const auto local = [this](const PropertyKey& key, const PropertyKey& other) {
    const std::optional<Moment> day = values_.time(key);
    return day ? day : values_.time(other);
  };
  addDay("Birthday", local(kBirthdayLocal, kBirthday));
  addDay("Anniversary", local(kAnniversaryLocal, kAnniversary));
  addText("Spouse", kSpouse);
  addText("Manager", kManager);
  addText("Assistant", kAssistant);
  addCategories();
}

void Details::addEmails() {
  int number = 0;
  for (const ContactEmail& email : kEmails) {
    ++number;
    std::string address = values_.text(email.address);
    const std::string original = values_.text(email.original);
    if (address.find('@') == address.npos && original.find('@') != original.npos) {
      address = original;
    }
    add(number == 1 ? "E-mail" : "E-mail " + std::to_string(number), address);
  }
}

void Details::addAddresses() {
  for (const ContactAddress& address : kAddresses) {
    std::string whole = values_.text(address.whole);
    if (whole.empty()) {
      const std::string town = values_.text(address.postalCode) + " " + values_.text(address.city);
      for (const std::string& line : {values_.text(address.box), values_.text(address.street), town,
                                      values_.text(address.state), values_.text(address.country)}) {
        if (line.find_first_not_of(' ') == line.npos) continue;
        whole += (whole.empty() ? "" : "\n") + line.substr(line.find_first_not_of(' '));
      }
    }
    add(address.label, whole);
  }
}

// Of whole days the last one is told, not the midnight at its end.
void Details::addSpan(bool isAllDay) {
  std::optional<Moment> start = values_.time(kStartWhole);
  if (!start) start = values_.time(kCommonStart);
  std::optional<Moment> end = values_.time(kEndWhole);
  if (!end) end = values_.time(kCommonEnd);
  const std::optional<CalendarZone> zone = ZoneOfEvent(values_);
  const auto local = [&](const Moment& time) {
    return zone ? zone->localOf(time.seconds) : NearestDay(time.seconds);
  };
  for (const auto& [label, time] : {std::pair("Start", start), std::pair("End", end)}) {
    if (!time) continue;
    if (isAllDay) {
      const bool isEnd = time == end && start && end->seconds - start->seconds >= kSecondsOfDay;
      add(label, DayText(local(*time) - (isEnd ? kSecondsOfDay : 0)));
      continue;
    }
    Moment shown = *time;
    if (zone) {
      shown.offsetMinutes =
          static_cast<int32_t>((zone->localOf(time->seconds) - time->seconds) / 60);
    }
    addTime(label, shown);
  }
}

void Details::addRecurrence(const PropertyKey& key, bool isAppointment) {
  const std::optional<RecurrencePattern> pattern =
      ReadRecurrence(values_.binary(key), isAppointment);
  if (!pattern) {
    if (isAppointment) addText("Recurrence", kRecurrenceText);
    return;
  }
  std::string text = RuleInWords(pattern->rule);
  if (pattern->count) {
    text += ", " + std::to_string(*pattern->count) + (*pattern->count == 1 ? " time" : " times");
  } else if (pattern->lastDay) {
    text += ", until " + DayText(*pattern->lastDay);
  }
  const size_t changed = pattern->exceptions.size();
  const size_t gone = pattern->deletedDays.size() - std::min(changed, pattern->deletedDays.size());
  if (gone != 0) text += "; not on " + std::to_string(gone) + (gone == 1 ? " day" : " days");
  if (changed != 0) {
    text += "; otherwise on " + std::to_string(changed) + (changed == 1 ? " day" : " days");
  }
  add("Recurrence", text);
}

void Details::addCommon() {
  const int64_t importance = values_.integer(kImportance).value_or(1);
  if (importance == 0 || importance == 2) add("Importance", importance == 0 ? "low" : "high");
  const int64_t sensitivity = values_.integer(kSensitivity).value_or(0);
  if (sensitivity > 0) add("Sensitivity", sensitivity == 3 ? "confidential" : "private");
  addCategories();
}

void Details::addAppointment() {
  const bool isAllDay = values_.isSet(kIsAllDay);
  addSpan(isAllDay);
  if (isAllDay) add("All day", "yes");
  addText("Location", kLocation);
  addRecurrence(kRecurrence, true);
  constexpr std::array<const char*, 5> kShown = {"free", "tentative", "busy", "out of office",
                                                 "working elsewhere"};
  const int64_t busy = values_.integer(kBusyStatus).value_or(-1);
  if (busy >= 0 && busy < static_cast<int64_t>(kShown.size())) {
    add("Shown as", kShown[static_cast<size_t>(busy)]);
  }
  if ((values_.integer(kStateFlags).value_or(0) & kStateCanceled) != 0) add("Status", "canceled");
  if (values_.isSet(kHasReminder)) {
    const int64_t minutes = values_.integer(kReminderMinutes).value_or(15);
    if (minutes >= 0) add("Reminder", MinutesText(minutes) + " before");
  }
  addCommon();
}

void Details::addTask() {
  constexpr std::array<const char*, 5> kStatuses = {"not started", "in progress", "complete",
                                                    "waiting on someone else", "deferred"};
  const int64_t status = values_.integer(kTaskStatus).value_or(-1);
  if (status >= 0 && status < static_cast<int64_t>(kStatuses.size())) {
    add("Status", kStatuses[static_cast<size_t>(status)]);
  }
  const std::optional<double> share = values_.real(kTaskPercent);
  if (share && *share >= 0 && *share <= 1) {
    std::array<char, 16> text;
    std::snprintf(text.data(), text.size(), "%.0f %%", *share * 100);
    add("Done", text.data());
  }
  addDay("Start", values_.time(kTaskStart));
  addDay("Due", values_.time(kTaskDue));
  addDay("Completed", values_.time(kTaskCompleted));
  addRecurrence(kTaskRecurrence, false);
  if (values_.isSet(kHasReminder)) addTime("Reminder", values_.time(kReminderTime));
  addText("Owner", kTaskOwner);
  addCommon();
}

void Details::addJournal() {
  addText("Type", kLogType);
  addTime("Start", values_.time(kLogStart));
  const std::optional<int64_t> minutes = values_.integer(kLogMinutes);
  if (minutes) add("Duration", std::to_string(*minutes) + " minutes");
  addCategories();
}

std::string TextForFiles(const Moment& moment) { return DateText(moment, UnknownZone::Utc); }

}  // namespace

std::vector<std::pair<std::string, std::string>> DetailsOf(Item& item, TextOfTime textOfTime) {
  using Add = void (Details::*)();
  constexpr std::array<std::pair<std::string_view, Add>, 5> kClasses = {
      {{"ipm.contact", &Details::addContact},
       {"ipm.appointment", &Details::addAppointment},
       {"ipm.schedule.meeting", &Details::addAppointment},
       {"ipm.task", &Details::addTask},
       {"ipm.activity", &Details::addJournal}}};
  const std::string folded = Folded(item.fields(Detail::Headline).messageClass);
  const auto known = std::find_if(kClasses.begin(), kClasses.end(),
                                  [&](const auto& one) { return folded.starts_with(one.first); });
  mapi::MapiMessage* const message = known == kClasses.end() ? nullptr : item.properties();
  if (message == nullptr) return {};
  Details details(*message, textOfTime);
  (details.*known->second)();
  return details.take();
}

std::vector<std::pair<std::string, std::string>> DetailsOf(Item& item) {
  return DetailsOf(item, TextForFiles);
}

}  // namespace tarn::archive
