// LocalZone.h - a time zone for one test: UTC unless the test names another.
#ifndef TARN_TESTS_SUPPORT_LOCALZONE_H
#define TARN_TESTS_SUPPORT_LOCALZONE_H

#include <optional>
#include <string>

namespace tarn::test {

// Sets the process's time zone, and gives the old one back in the end.
class LocalZone {
 public:
  LocalZone();
  LocalZone(const LocalZone&) = delete;
  LocalZone& operator=(const LocalZone&) = delete;
  ~LocalZone();

  // A zone as POSIX writes it, such as "IST-5:30". One with summer time has the rules of the United
  // States, "EST5EDT,M3.2.0,M11.1.0": Windows' runtime has no others for zones that a program sets.
  void use(const char* zone);

 private:
  std::optional<std::string> before_;
};

}  // namespace tarn::test

#endif
