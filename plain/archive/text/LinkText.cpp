#include "archive/text/LinkText.h"

#include <algorithm>

#include "archive/text/AsciiText.h"

namespace tarn::archive {
namespace {

constexpr std::string_view kLineBlanks = " \t\r\n";

// What a person would say of an address.
std::string_view Core(std::string_view text) {
  text = Trimmed(text, kLineBlanks);
  if (text.starts_with('<') && text.ends_with('>')) text = text.substr(1, text.size() - 2);
  for (const std::string_view scheme : {"mailto:", "http://", "https://", "tel:"}) {
    if (StartsWithNoCase(text, scheme)) {
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
  return said.size() == meant.size() && StartsWithNoCase(said, meant);
}

std::string AddressOfHyperlink(std::string_view instruction) {
  constexpr std::string_view kHyperlink = "HYPERLINK";
  std::string_view rest = Trimmed(instruction, kLineBlanks);
  if (!StartsWithNoCase(rest, kHyperlink)) return {};
  rest = Trimmed(rest.substr(kHyperlink.size()), kLineBlanks);
  if (rest.starts_with('\\')) return {};
  if (!rest.starts_with('"')) return std::string(rest.substr(0, rest.find_first_of(kLineBlanks)));
  rest.remove_prefix(1);
  return std::string(rest.substr(0, rest.find('"')));
}

}  // namespace tarn::archive
