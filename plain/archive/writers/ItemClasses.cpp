#include <algorithm>
#include <string_view>

#include "archive/text/AsciiText.h"
#include "archive/writers/Writers.h"

namespace tarn::archive {
namespace {

// Whether a class is the one or below it.
bool IsBelow(std::string_view messageClass, std::string_view lower) {
  return StartsWithNoCase(messageClass, lower) &&
         (messageClass.size() == lower.size() || messageClass[lower.size()] == '.');
}

}  // namespace

bool IsContact(const std::string& messageClass) { return IsBelow(messageClass, "ipm.contact"); }

bool IsCalendar(const std::string& messageClass) {
  constexpr std::string_view kClasses[] = {"ipm.appointment", "ipm.schedule.meeting", "ipm.task",
                                           "ipm.taskrequest"};
  return std::any_of(std::begin(kClasses), std::end(kClasses),
                     [&](std::string_view known) { return IsBelow(messageClass, known); });
}

}  // namespace tarn::archive
