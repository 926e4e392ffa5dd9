// ReadIcalendar FILE...: what libical reads of iCalendar files, a line of JSON a file: the number
// of its components within the calendar, zones left out, UID and summary of the first, and what
// libical finds wrong, against the rules of iTIP where a file has a method.
#include <libical/ical.h>

#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

namespace {

struct Free {
  void operator()(icalcomponent* component) const { icalcomponent_free(component); }
};

std::string TextOf(const char* text) { return text != nullptr ? text : ""; }

nlohmann::json Read(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  const std::unique_ptr<icalcomponent, Free> calendar(icalparser_parse_string(text.c_str()));
  nlohmann::json row = {{"components", 0}, {"errors", 1}, {"uid", ""}, {"summary", ""}};
  if (!calendar) return row;
  if (icalcomponent_isa(calendar.get()) != ICAL_VCALENDAR_COMPONENT) return row;
  int count = 0;
  for (icalcomponent* inner = icalcomponent_get_first_component(calendar.get(), ICAL_ANY_COMPONENT);
       inner != nullptr;
       inner = icalcomponent_get_next_component(calendar.get(), ICAL_ANY_COMPONENT)) {
    if (icalcomponent_isa(inner) == ICAL_VTIMEZONE_COMPONENT) continue;
    if (count++ != 0) continue;
    row["uid"] = TextOf(icalcomponent_get_uid(inner));
    row["summary"] = TextOf(icalcomponent_get_summary(inner));
  }
  row["components"] = count;
  row["errors"] = icalcomponent_count_errors(calendar.get());
  return row;
}

}  // namespace

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) std::cout << Read(argv[i]).dump() << "\n";
  return 0;
}
