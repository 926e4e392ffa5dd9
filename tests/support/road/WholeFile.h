// WholeFile.h - a file's bytes as a host of the filter reads them: through the kernel, which takes
// "\" and "/" alike.
#ifndef TARN_TESTS_SUPPORT_ROAD_WHOLEFILE_H
#define TARN_TESTS_SUPPORT_ROAD_WHOLEFILE_H

#include <optional>
#include <string>

namespace tarn::test {

// None when the file cannot be opened or read.
std::optional<std::string> WholeFile(const char16_t* path);

}  // namespace tarn::test

#endif
