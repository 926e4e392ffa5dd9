#include "mutators/MailTree.h"

#include <algorithm>
#include <cctype>

#include "support/EmlBuilder.h"

namespace tarn::fuzz {
namespace {

constexpr int kDeepest = 24;

char Lower(char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); }

bool EqualIgnoringCase(std::string_view text, std::string_view lower) {
  return text.size() == lower.size() && std::equal(text.begin(), text.end(), lower.begin(),
                                                   [](char a, char b) { return Lower(a) == b; });
}

// With its line end.
std::string_view TakeLine(std::string_view& text) {
  const size_t end = text.find('\n');
  const std::string_view line = text.substr(0, end == std::string_view::npos ? end : end + 1);
  text.remove_prefix(line.size());
  return line;
}

bool IsBlank(std::string_view line) { return line == "\n" || line == "\r\n"; }

bool IsDelimiter(std::string_view line, std::string_view boundary) {
  return line.starts_with("--") && line.substr(2).starts_with(boundary);
}

std::string_view NameOf(std::string_view line) { return line.substr(0, line.find(':')); }

MailEntity Read(std::string_view text, int depth);

// Splits what follows the header at the delimiters.
void ReadParts(std::string_view text, MailEntity& entity, int depth) {
  const std::string_view boundary = entity.boundary;
  std::string_view rest = text;
  size_t begin = 0;  // of the part, in text
  bool isInside = false;
  while (!rest.empty()) {
    const size_t at = text.size() - rest.size();
    const std::string_view line = TakeLine(rest);
    if (!IsDelimiter(line, boundary)) continue;
    const std::string_view before = text.substr(begin, at - begin);
    if (isInside) {
      entity.parts.push_back(Read(before, depth + 1));
    } else {
      entity.content = before;
    }
    if (isInside && line.substr(2 + boundary.size()).starts_with("--")) {
      entity.ending = text.substr(at);
      return;
    }
    isInside = true;
    entity.delimiters.emplace_back(line);
    begin = at + line.size();
  }
  if (isInside) {
    entity.parts.push_back(Read(text.substr(begin), depth + 1));
  } else {
    entity.content = text;
  }
}

MailEntity Read(std::string_view text, int depth) {
  MailEntity entity;
  while (!text.empty()) {
    const std::string_view line = TakeLine(text);
    if (IsBlank(line)) {
      entity.separator = line;
      break;
    }
    const bool isFolded = line[0] == ' ' || line[0] == '\t';
    if (isFolded && !entity.lines.empty()) {
      entity.lines.back() += line;
    } else {
      entity.lines.emplace_back(line);
    }
  }
  entity.boundary = ParameterValue(FieldValue(entity, "content-type"), "boundary");
  if (entity.boundary.empty() || depth >= kDeepest) {
    entity.content = text;
  } else {
    ReadParts(text, entity, depth);
  }
  return entity;
}

void Write(const MailEntity& entity, std::string& out) {
  for (const std::string& line : entity.lines) out += line;
  out += entity.separator;
  out += entity.content;
  for (size_t i = 0; i < entity.parts.size(); ++i) {
    out += entity.delimiters[i];
    Write(entity.parts[i], out);
  }
  out += entity.ending;
}

std::string DecodeBase64(std::string_view text) {
  constexpr std::string_view kAlphabet =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string bytes;
  uint32_t bits = 0;
  int count = 0;
  for (const char c : text) {
    const size_t value = kAlphabet.find(c);
    if (value == std::string_view::npos) continue;
    bits = bits << 6 | static_cast<uint32_t>(value);
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes.push_back(static_cast<char>(bits >> count));
  }
  return bytes;
}

std::string DecodeQuotedPrintable(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string bytes;
  for (size_t i = 0; i < text.size(); ++i) {
    const std::string_view rest = text.substr(i + 1);
    if (text[i] != '=') {
      bytes.push_back(text[i]);
    } else if (rest.starts_with("\r\n") || rest.starts_with("\n")) {
      i += rest[0] == '\r' ? 2 : 1;
    } else if (rest.size() >= 2 && kDigits.find(rest[0]) != std::string_view::npos &&
               kDigits.find(rest[1]) != std::string_view::npos) {
      bytes.push_back(static_cast<char>(kDigits.find(rest[0]) << 4 | kDigits.find(rest[1])));
      i += 2;
    } else {
      bytes.push_back('=');
    }
  }
  return bytes;
}

}  // namespace

MailEntity ReadMail(std::string_view mail) { return Read(mail, 0); }

std::string WriteMail(const MailEntity& entity) {
  std::string out;
  Write(entity, out);
  return out;
}

std::string_view FieldValue(const MailEntity& entity, std::string_view name) {
  for (const std::string_view line : entity.lines) {
    if (!EqualIgnoringCase(NameOf(line), name) || line.size() == name.size()) continue;
    std::string_view value = line.substr(name.size() + 1);
    value.remove_prefix(std::min(value.find_first_not_of(" \t"), value.size()));
    const size_t end = value.find_last_not_of(" \t\r\n");
    return value.substr(0, end == std::string_view::npos ? 0 : end + 1);
  }
  return {};
}

void SetField(MailEntity& entity, std::string_view name, std::string_view value) {
  std::string line(name);
  line.append(": ").append(value).append("\r\n");
  for (std::string& known : entity.lines) {
    if (!EqualIgnoringCase(NameOf(known), name)) continue;
    known = line;
    return;
  }
  entity.lines.push_back(line);
}

std::string_view ParameterValue(std::string_view value, std::string_view name) {
  for (size_t at = 0; at + name.size() < value.size(); ++at) {
    if (value[at + name.size()] != '=' || !EqualIgnoringCase(value.substr(at, name.size()), name)) {
      continue;
    }
    const std::string_view found = value.substr(at + name.size() + 1);
    if (found.starts_with('"')) return found.substr(1, found.find('"', 1) - 1);
    return found.substr(0, found.find_first_of("; \t\r\n"));
  }
  return {};
}

std::string DecodeContent(const MailEntity& entity) {
  const std::string_view encoding = FieldValue(entity, "content-transfer-encoding");
  if (EqualIgnoringCase(encoding, "base64")) return DecodeBase64(entity.content);
  if (EqualIgnoringCase(encoding, "quoted-printable")) return DecodeQuotedPrintable(entity.content);
  return entity.content;
}

void EncodeContent(MailEntity& entity, std::string_view bytes) {
  const std::string_view encoding = FieldValue(entity, "content-transfer-encoding");
  if (EqualIgnoringCase(encoding, "base64")) {
    entity.content = test::WriteBase64(bytes, test::kCrLf);
  } else if (EqualIgnoringCase(encoding, "quoted-printable")) {
    entity.content = test::WriteQuotedPrintable(bytes).append(test::kCrLf);
  } else {
    entity.content = bytes;
  }
}

}  // namespace tarn::fuzz
