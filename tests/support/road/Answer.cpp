#include "support/road/Answer.h"

#include <algorithm>
#include <vector>

#include "Tarnbase/Kernel.h"

namespace tarn::test {

void Answer::add(std::string_view part, std::string_view content) {
  bytes.append(part).append(" ").append(std::to_string(content.size())).append("\n");
  bytes.append(content).append("\n");
}

std::string BytesBut(std::string after, std::string_view before,
                     std::span<const size_t> addresses) {
  constexpr std::string_view kNull("\0\0\0\0\0\0\0\0", 8);
  for (const size_t at : addresses) {
    const std::string_view now = std::string_view(after).substr(at, kNull.size());
    const char* told = "(other) ";
    if (now == before.substr(at, kNull.size())) {
      told = "(same)  ";
    } else if (now == kNull) {
      told = "(null)  ";
    }
    after.replace(at, kNull.size(), told);
  }
  return after;
}

std::string TextOf(const char16_t* text) {
  if (text == nullptr) return "(null)";
  const int64_t units = static_cast<int64_t>(std::u16string_view(text).size());
  std::vector<char> utf8(static_cast<size_t>(units) * 3 + 1);
  const int64_t size =
      KernelWideToUtf8(text, units, utf8.data(), static_cast<int64_t>(utf8.size()));
  return {utf8.data(), static_cast<size_t>(size)};
}

}  // namespace tarn::test
