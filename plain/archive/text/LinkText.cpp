#include "archive/text/LinkText.h"

#include <algorithm>

namespace tarn::archive {
namespace {

constexpr std::string_view kSpace = " \t\r\n";

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool StartsWithIgnoringCase(std::string_view text, std::string_view prefix) {
  return text.size() >= prefix.size() &&
         std::equal(prefix.begin(), prefix.end(), text.begin(),
                    [](char a, char b) { return Lower(a) == Lower(b); });
}

std::string_view Trimmed(std::string_view text) {
  const size_t first = text.find_first_not_of(kSpace);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

// What a person would say of an address.
std::string_view Core(std::string_view text) {
  text = Trimmed(text);
  if (text.starts_with('<') && text.ends_with('>')) text = text.substr(1, text.size() - 2);
  for (const std::string_view scheme : {"mailto:", "http://", "https://", "tel:"}) {
    if (StartsWithIgnoringCase(text, scheme)) {
      text.remove_prefix(scheme.size());
      break;
    }
  }
  if (text.ends_with('/')) text.remove_suffix(1);
  return text;
}

}  // namespace

bool TellsAddress(std::string_view text, std::string_view address) {
  const std::string_view said = Core(text);
  const std::string_view meant = Core(address);
  return said.size() == meant.size() && StartsWithIgnoringCase(said, meant);
}

std::string AddressOfHyperlink(std::string_view instruction) {
  constexpr std::string_view kHyperlink = "HYPERLINK";
  std::string_view rest = Trimmed(instruction);
  if (!StartsWithIgnoringCase(rest, kHyperlink)) return {};
  rest = Trimmed(rest.substr(kHyperlink.size()));
  if (rest.starts_with('\\')) return {};
  if (!rest.starts_with('"')) return std::string(rest.substr(0, rest.find_first_of(kSpace)));
  rest.remove_prefix(1);
  return std::string(rest.substr(0, rest.find('"')));
}

}  // namespace tarn::archive
