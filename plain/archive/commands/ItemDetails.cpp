// The properties are those of MS-OXOCNTC, MS-OXOCAL, MS-OXOTASK and MS-OXOJRNL.
#include "archive/commands/ItemDetails.h"

#include <array>
#include <cstdio>
#include <optional>
#include <span>

#include "archive/common/FoldedText.h"
#include "archive/common/MomentText.h"
#include "archive/mapi/PropertyValues.h"
#include "archive/mapi/Tags.h"

namespace tarn::archive {
namespace {

using Set = std::array<uint8_t, 16>;

// The sets differ in the first byte alone.
constexpr Set SetOf(uint8_t first) {
  return {first, 0x20, 0x06, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46};
}
constexpr Set kAppointmentSet = SetOf(0x02);
constexpr Set kTaskSet = SetOf(0x03);
constexpr Set kAddressSet = SetOf(0x04);
constexpr Set kLogSet = SetOf(0x0A);

enum class Form : uint8_t { Text, Time, Day, Minutes, Share, TaskStatus, YesOnly };

struct Field {
  const char* label;
  Form form;
  uint16_t tag;  // 0 for a named property
  const Set* set;
  uint32_t number;
};

constexpr Field kContact[] = {
    {"Name", Form::Text, 0x3001, nullptr, 0},
    {"Nickname", Form::Text, 0x3A4F, nullptr, 0},
    {"Company", Form::Text, 0x3A16, nullptr, 0},
    {"Department", Form::Text, 0x3A18, nullptr, 0},
    {"Job title", Form::Text, 0x3A17, nullptr, 0},
    {"E-mail", Form::Text, 0, &kAddressSet, 0x8083},
    {"E-mail 2", Form::Text, 0, &kAddressSet, 0x8093},
    {"E-mail 3", Form::Text, 0, &kAddressSet, 0x80A3},
    {"Business phone", Form::Text, 0x3A08, nullptr, 0},
    {"Business phone 2", Form::Text, 0x3A1B, nullptr, 0},
    {"Mobile phone", Form::Text, 0x3A1C, nullptr, 0},
    {"Home phone", Form::Text, 0x3A09, nullptr, 0},
    {"Business fax", Form::Text, 0x3A24, nullptr, 0},
    {"Business address", Form::Text, 0, &kAddressSet, 0x801B},
    {"Home address", Form::Text, 0, &kAddressSet, 0x801A},
    {"Other address", Form::Text, 0, &kAddressSet, 0x801C},
    {"Messenger", Form::Text, 0, &kAddressSet, 0x8062},
    {"Web page", Form::Text, 0x3A51, nullptr, 0},
    {"Birthday", Form::Day, 0x3A42, nullptr, 0},
    {"Anniversary", Form::Day, 0x3A41, nullptr, 0},
    {"Spouse", Form::Text, 0x3A48, nullptr, 0},
};

constexpr Field kAppointment[] = {
    {"Start", Form::Time, 0, &kAppointmentSet, 0x820D},
    {"End", Form::Time, 0, &kAppointmentSet, 0x820E},
    {"All day", Form::YesOnly, 0, &kAppointmentSet, 0x8215},
    {"Location", Form::Text, 0, &kAppointmentSet, 0x8208},
    {"Recurrence", Form::Text, 0, &kAppointmentSet, 0x8232},
};

constexpr Field kTask[] = {
    {"Status", Form::TaskStatus, 0, &kTaskSet, 0x8101}, {"Done", Form::Share, 0, &kTaskSet, 0x8102},
    {"Start", Form::Day, 0, &kTaskSet, 0x8104},         {"Due", Form::Day, 0, &kTaskSet, 0x8105},
    {"Completed", Form::Day, 0, &kTaskSet, 0x810F},     {"Owner", Form::Text, 0, &kTaskSet, 0x811F},
};

constexpr Field kJournal[] = {
    {"Type", Form::Text, 0, &kLogSet, 0x8700},
    {"Start", Form::Time, 0, &kLogSet, 0x8706},
    {"Duration", Form::Minutes, 0, &kLogSet, 0x8707},
};

std::span<const Field> DetailsFor(const std::string& messageClass) {
  const std::string folded = Folded(messageClass);
  if (folded.starts_with("ipm.contact")) return kContact;
  if (folded.starts_with("ipm.appointment") || folded.starts_with("ipm.schedule.meeting")) {
    return kAppointment;
  }
  if (folded.starts_with("ipm.task")) return kTask;
  if (folded.starts_with("ipm.activity")) return kJournal;
  return {};
}

std::optional<std::string> StatusText(std::optional<int64_t> status) {
  constexpr std::array<const char*, 5> kStatuses = {"not started", "in progress", "complete",
                                                    "waiting on someone else", "deferred"};
  if (!status || *status < 0 || *status >= static_cast<int64_t>(kStatuses.size())) {
    return std::nullopt;
  }
  return kStatuses[static_cast<size_t>(*status)];
}

std::optional<std::string> ShareText(std::optional<double> share) {
  if (!share || !(*share >= 0 && *share <= 1)) return std::nullopt;
  std::array<char, 16> text;
  std::snprintf(text.data(), text.size(), "%.0f %%", *share * 100);
  return text.data();
}

// Days are stored as midnight, of Greenwich (tasks) or of the place (contacts): the hour is left
// out, and what would be the day before by a clock west of Greenwich is not.
std::optional<std::string> DayText(const std::optional<Moment>& day) {
  if (!day) return std::nullopt;
  return Iso8601(*day).substr(0, 10);
}

std::optional<std::string> ValueText(mapi::PropertyValues& values, uint16_t id, Form form) {
  switch (form) {
    case Form::Text:
      return values.text(id);
    case Form::Time: {
      const std::optional<Moment> time = values.time(id);
      return time ? std::optional(LongDate(*time)) : std::nullopt;
    }
    case Form::Day:
      return DayText(values.time(id));
    case Form::Minutes: {
      const std::optional<int64_t> minutes = values.integer(id);
      return minutes ? std::optional(std::to_string(*minutes) + " minutes") : std::nullopt;
    }
    case Form::Share:
      return ShareText(values.real(id));
    case Form::TaskStatus:
      return StatusText(values.integer(id));
    case Form::YesOnly:
      return values.boolean(id).value_or(false) ? std::optional<std::string>("yes") : std::nullopt;
  }
  return std::nullopt;
}

}  // namespace

std::vector<std::pair<std::string, std::string>> DetailsOf(Item& item) {
  std::vector<std::pair<std::string, std::string>> found;
  const std::span<const Field> details = DetailsFor(item.fields(Detail::Headline).messageClass);
  mapi::MapiMessage* const message = details.empty() ? nullptr : item.properties();
  if (message == nullptr) return found;
  mapi::PropertyValues values(message->properties(), mapi::TextCodePage(message->properties()));
  for (const Field& detail : details) {
    std::optional<uint16_t> id = detail.tag;
    if (detail.set != nullptr) {
      mapi::PropertyName name;
      name.set = *detail.set;
      name.number = detail.number;
      id = message->idOf(name);
    }
    if (!id) continue;
    const std::optional<std::string> text = ValueText(values, *id, detail.form);
    if (text && !text->empty()) found.emplace_back(detail.label, *text);
  }
  return found;
}

}  // namespace tarn::archive
