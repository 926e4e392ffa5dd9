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

  // A zone as POSIX writes it, such as "CET-1CEST,M3.5.0,M10.5.0/3".
  void use(const char* zone);

 private:
  std::optional<std::string> before_;
};

}  // namespace tarn::test

#endif
