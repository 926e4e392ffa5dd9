#include <charconv>
#include <ctime>
#include <iterator>
#include <system_error>

#include "Common/FileTime.h"
#include "Platform/LocalTime.h"
#include "render/HeaderLabels.h"

namespace tarn {
namespace {

constexpr size_t kMostCharacters = 100;

// A text of several pieces, all of which have to fit.
class DateText {
 public:
  void add(const char* format, const std::tm& fields) {
    const size_t written = std::strftime(text_ + length_, sizeof(text_) - length_, format, &fields);
    isWhole_ = isWhole_ && written != 0;
    length_ += written;
  }

  void add(int64_t number) {
    const auto [end, error] = std::to_chars(text_ + length_, std::end(text_), number);
    isWhole_ = isWhole_ && error == std::errc();
    if (isWhole_) length_ = static_cast<size_t>(end - text_);
  }

  bool isWhole() const { return isWhole_; }
  std::string_view view() const { return {text_, length_}; }

 private:
  char text_[kMostCharacters];
  size_t length_ = 0;
  bool isWhole_ = true;
};

}  // namespace

Status FormatFileTime(int64_t fileTime, SizedBytes& text) {
  std::tm fields = {};
  if (!platform::BreakDownLocalTime(SecondsSince1970(fileTime), fields)) return StatusTimeFailed;

  // "%a %b %d, %Y %I:%M %p", but some runtimes format years of four digits only.
  DateText formatted;
  formatted.add("%a %b %d, ", fields);
  formatted.add(int64_t{1900} + fields.tm_year);
  formatted.add(" %I:%M %p", fields);
  if (!formatted.isWhole()) return StatusTimeFailed;
  return text.append(formatted.view());
}

}  // namespace tarn
