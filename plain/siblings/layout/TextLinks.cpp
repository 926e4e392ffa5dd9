#include "siblings/layout/TextLinks.h"

#include <glib.h>

#include <algorithm>
#include <array>

#include "siblings/OutwardAddress.h"
#include "siblings/layout/AsciiText.h"

namespace tarn::pages {

namespace {

// How an address begins that nothing else marks as one.
constexpr std::array<std::string_view, 4> kStarts = {"http://", "https://", "ftp://", "mailto:"};
constexpr std::string_view kBareStart = "www.";

// How long the beginning is that makes this an address; 0 when nothing does.
size_t LengthOfStart(std::string_view text) {
  for (const std::string_view start : kStarts) {
    if (StartsWithAnyCase(text, start)) return start.size();
  }
  return StartsWithAnyCase(text, kBareStart) ? kBareStart.size() : 0;
}

bool IsWordCharacter(char c) { return g_ascii_isalnum(c) || static_cast<signed char>(c) < 0; }

bool EndsAddress(char c) {
  return static_cast<unsigned char>(c) <= 0x20 || c == '<' || c == '>' || c == '"';
}

std::string_view WithoutSentenceEnd(std::string_view address) {
  const auto opened = std::count(address.begin(), address.end(), '(');
  auto closed = std::count(address.begin(), address.end(), ')');
  while (!address.empty()) {
    const char last = address.back();
    if (std::string_view(".,;:!?'*)]}").find(last) == std::string_view::npos) break;
    if (last == ')' && closed-- <= opened) break;
    address.remove_suffix(1);
  }
  return address;
}

}  // namespace

std::vector<TextLink> FindTextLinks(std::string_view line) {
  std::vector<TextLink> links;
  for (size_t start = 0; start < line.size(); ++start) {
    const char first = line[start];
    if (std::string_view("hHfFmMwW").find(first) == std::string_view::npos) continue;
    if (start > 0 && IsWordCharacter(line[start - 1])) continue;
    const size_t head = LengthOfStart(line.substr(start));
    if (head == 0) continue;
    const auto stop =
        std::find_if(line.begin() + static_cast<std::ptrdiff_t>(start), line.end(), EndsAddress);
    const std::string_view address =
        WithoutSentenceEnd(line.substr(start, static_cast<size_t>(stop - line.begin()) - start));
    if (address.size() <= head) continue;
    if (address.size() <= kLongestAddress) {
      const bool bare = StartsWithAnyCase(address, kBareStart);
      links.push_back(
          {start, start + address.size(), (bare ? "http://" : "") + std::string(address)});
    }
    start += address.size() - 1;
  }
  return links;
}

}  // namespace tarn::pages
