#include "siblings/office/FieldInstruction.h"

#include <algorithm>
#include <optional>

#include "siblings/OutwardAddress.h"

namespace tarn::pages {

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

bool SameWord(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char a, char b) { return Lower(a) == Lower(b); });
}

// Words and quoted texts, the quotes taken off.
class Arguments {
 public:
  explicit Arguments(std::string_view text) : rest_(text) {}

  std::optional<std::string_view> next() {
    while (!rest_.empty() && IsBlank(rest_.front())) rest_.remove_prefix(1);
    if (rest_.empty()) return std::nullopt;
    if (rest_.front() == '"') {
      rest_.remove_prefix(1);
      return cut(rest_.find('"'), 1);
    }
    const auto* end = std::find_if(rest_.begin(), rest_.end(), IsBlank);
    return cut(static_cast<size_t>(end - rest_.begin()), 0);
  }

 private:
  std::string_view cut(size_t length, size_t skipped) {
    const std::string_view argument = rest_.substr(0, length);
    rest_.remove_prefix(std::min(argument.size() + skipped, rest_.size()));
    return argument;
  }

  std::string_view rest_;
};

bool IsBookmark(std::string_view name) {
  return !name.empty() && name.size() <= 40 && std::all_of(name.begin(), name.end(), [](char c) {
    return (Lower(c) >= 'a' && Lower(c) <= 'z') || (c >= '0' && c <= '9') || c == '_';
  });
}

std::string Escaped(std::string_view address) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string escaped;
  for (const char c : address) {
    if (c > ' ' && c < 0x7F && std::string_view("\"\\{}<>").find(c) == std::string_view::npos) {
      escaped += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      escaped += '%';
      escaped += kDigits[byte >> 4];
      escaped += kDigits[byte & 15];
    }
  }
  return escaped;
}

std::string Link(Arguments arguments) {
  std::string_view address;
  std::string_view bookmark;
  while (const auto argument = arguments.next()) {
    if (argument->empty() || argument->front() != '\\') {
      if (address.empty()) address = *argument;
      continue;
    }
    // Of the switches, \l names the bookmark, \o and \t have a value of no use here.
    const std::string_view name = argument->substr(1);
    if (!SameWord(name, "l") && !SameWord(name, "o") && !SameWord(name, "t")) continue;
    const auto value = arguments.next();
    if (value && SameWord(name, "l")) bookmark = *value;
  }
  address = WithoutBlanksAround(address);
  if (IsOutwardAddress(address)) {
    const std::string anchor = IsBookmark(bookmark) ? "#" + std::string(bookmark) : "";
    return "HYPERLINK \"" + Escaped(address) + anchor + '"';
  }
  if (address.empty() && IsBookmark(bookmark)) {
    return R"(HYPERLINK \\l ")" + std::string(bookmark) + '"';
  }
  return {};
}

}  // namespace

std::string HarmlessInstruction(std::string_view instruction) {
  Arguments arguments(instruction);
  const std::string_view name = arguments.next().value_or("");
  if (SameWord(name, "HYPERLINK")) return Link(arguments);
  if (SameWord(name, "PAGE")) return "PAGE";
  if (SameWord(name, "NUMPAGES")) return "NUMPAGES";
  return {};
}

}  // namespace tarn::pages
