#include <algorithm>
#include <string_view>

#include "archive/writers/Writers.h"

namespace tarn::archive {
namespace {

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

// Whether a class is the one or below it.
bool IsBelow(std::string_view messageClass, std::string_view lower) {
  if (messageClass.size() < lower.size()) return false;
  const bool isEqual = std::equal(lower.begin(), lower.end(), messageClass.begin(),
                                  [](char a, char b) { return a == Lower(b); });
  return isEqual && (messageClass.size() == lower.size() || messageClass[lower.size()] == '.');
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
