#include "archive/writers/ItemText.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>

#include "Platform/Utf8.h"
#include "archive/text/CountWhile.h"

namespace tarn::archive {
namespace {

constexpr std::array<const char*, 7> kWeekdays = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr std::array<const char*, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                 "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

constexpr int64_t kFirstSecond = -62135596800;  // 0001-01-01T00:00:00Z
constexpr int64_t kLastSecond = 253402300799;   // 9999-12-31T23:59:59Z

constexpr char32_t kByteOrderMark = 0xFEFF;

bool IsControl(char32_t c) { return c < 0x20 || (c >= 0x7F && c < 0xA0); }

// How many characters a text begins with that are ASCII and shown, or LF.
size_t PlainAscii(std::string_view text) {
  const auto isPlain = [](auto c) { return ((c >= 0x20) & (c < 0x7F)) | (c == '\n'); };
  return CountWhile(text, isPlain);
}

bool BreaksLines(char32_t c) { return c == 0x2028 || c == 0x2029; }

void AppendCharacter(char32_t codePoint, std::string& text) {
  std::array<char, 4> bytes;
  text.append(bytes.data(), platform::WriteCharacter(codePoint, bytes));
}

// Printed by a format of no more than 63 characters.
template <typename... Values>
std::string Printed(const char* format, Values... values) {
  std::array<char, 64> text;
  const int size = std::snprintf(text.data(), text.size(), format, values...);
  return std::string(text.data(), static_cast<size_t>(std::clamp(size, 0, 63)));
}

}  // namespace

std::string DateText(const Moment& moment, UnknownZone unknown) {
  const int32_t offset = moment.offsetMinutes.value_or(0);
  const CalendarTime time =
      CalendarTimeOf(std::clamp(moment.seconds, kFirstSecond, kLastSecond) + int64_t{offset} * 60);
  std::string text =
      Printed("%s, %u %s %04d %02u:%02u:%02u ", kWeekdays[time.weekday], time.day,
              kMonths[time.month - 1], time.year, time.hour, time.minute, time.second);
  if (!moment.offsetMinutes) return text + (unknown == UnknownZone::Utc ? "UTC" : "-0000");
  const int32_t size = std::abs(offset);
  return text + Printed("%c%02d%02d", offset < 0 ? '-' : '+', size / 60, size % 60);
}

std::string MboxDateText(const Moment& moment) {
  const CalendarTime time = CalendarTimeOf(moment.seconds);
  return Printed("%s %s %2u %02u:%02u:%02u %04d", kWeekdays[time.weekday], kMonths[time.month - 1],
                 time.day, time.hour, time.minute, time.second, time.year);
}

std::string AddressText(const Address& address) {
  const bool isPath =
      address.address.starts_with('/') && address.address.find('@') == std::string::npos;
  if (address.address.empty() || (isPath && !address.name.empty())) return OneLine(address.name);
  if (address.name.empty() || address.name == address.address) return OneLine(address.address);
  return OneLine(address.name + " <" + address.address + ">");
}

std::string AddressesText(const std::vector<Address>& addresses) {
  std::string text;
  for (const Address& address : addresses) {
    if (!text.empty()) text += ", ";
    text += AddressText(address);
  }
  return text;
}

std::string SizeText(uint64_t bytes) {
  if (bytes == 1) return "1 byte";
  if (bytes < 1000) return std::to_string(bytes) + " bytes";
  auto size = static_cast<double>(bytes);
  const char* unit = "";
  for (const char* next : {"KB", "MB", "GB", "TB"}) {
    if (size < 999.95 && *unit != '\0') break;
    size /= 1000;
    unit = next;
  }
  return Printed("%.1f %s", size, unit);
}

std::string AttachmentTitle(const Attachment& attachment, size_t index) {
  if (!attachment.name.empty()) return OneLine(attachment.name);
  if (attachment.kind == AttachmentKind::Reference && !attachment.target.empty()) {
    return OneLine(attachment.target);
  }
  return "attachment " + std::to_string(index + 1);
}

std::string OneLine(std::string_view text) {
  std::string line;
  line.reserve(text.size());
  while (!text.empty()) {
    const platform::Character character = platform::FirstCharacter(text);
    text.remove_prefix(character.size);
    const bool isBreak = IsControl(character.codePoint) || BreaksLines(character.codePoint);
    AppendCharacter(isBreak ? U' ' : character.codePoint, line);
  }
  return line;
}

std::string ManyLines(std::string_view text) {
  std::string lines;
  lines.reserve(text.size());
  while (!text.empty()) {
    // Most of a text is these, and they stay as they are.
    const size_t plain = PlainAscii(text);
    lines += text.substr(0, plain);
    text.remove_prefix(plain);
    if (text.empty()) break;
    const platform::Character character = platform::FirstCharacter(text);
    text.remove_prefix(character.size);
    const char32_t c = character.codePoint;
    if (c == '\r') {
      if (!text.starts_with('\n')) lines += '\n';
    } else if (c == '\n' || c == '\t' || !(IsControl(c) || c == kByteOrderMark)) {
      AppendCharacter(c, lines);
    }
  }
  return lines;
}

void AppendTroubles(const std::vector<Trouble>& from, std::vector<Trouble>& to) {
  to.insert(to.end(), from.begin(), from.end());
}

}  // namespace tarn::archive
