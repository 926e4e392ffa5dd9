#include "DocumentWords.h"

#include <gtest/gtest.h>
#include <iconv.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <map>
#include <set>
#include <sstream>
#include <utility>
#include <vector>

namespace tarn::test {
namespace {

std::string Utf8Of(uint32_t character) {
  const auto part = [](uint32_t bits) { return static_cast<char>(bits); };
  if (character < 0x80) return {part(character)};
  if (character < 0x800) return {part(0xC0 | character >> 6), part(0x80 | (character & 0x3F))};
  if (character < 0x10000) {
    return {part(0xE0 | character >> 12), part(0x80 | (character >> 6 & 0x3F)),
            part(0x80 | (character & 0x3F))};
  }
  return {part(0xF0 | character >> 18), part(0x80 | (character >> 12 & 0x3F)),
          part(0x80 | (character >> 6 & 0x3F)), part(0x80 | (character & 0x3F))};
}

void ReplaceAll(std::string& text, std::string_view what, std::string_view by) {
  for (size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size()) {
    text.replace(at, what.size(), by);
  }
}

std::string Converted(std::string bytes, const char* charset) {
  if (bytes.empty()) return {};
  const iconv_t converter = iconv_open("UTF-8", charset);
  std::string text(bytes.size() * 4, '\0');
  char* from = bytes.data();
  char* to = text.data();
  size_t fromLeft = bytes.size();
  size_t toLeft = text.size();
  EXPECT_NE(iconv(converter, &from, &fromLeft, &to, &toLeft), static_cast<size_t>(-1)) << bytes;
  iconv_close(converter);
  text.resize(text.size() - toLeft);
  return text;
}

std::string Lower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return lower;
}

std::string Reference(std::string_view name) {
  static const std::map<std::string_view, std::string> kNamed = {
      {"nbsp", " "}, {"lt", "<"}, {"gt", ">"}, {"amp", "&"}, {"quot", "\""}, {"euro", "\u20AC"}};
  if (name.substr(0, 1) == "#") {
    return Utf8Of(static_cast<uint32_t>(std::atoi(std::string(name.substr(1)).c_str())));
  }
  const auto found = kNamed.find(name);
  EXPECT_NE(found, kNamed.end()) << name;
  return found == kNamed.end() ? std::string() : found->second;
}

// Are the words before and after the tag in one line?
bool IsWithinALine(std::string_view tag) {
  static const std::set<std::string, std::less<>> kInline = {
      "a", "b", "i", "u", "em", "strong", "span", "font", "o:p", "img", "html", "body"};
  const size_t begin = tag.substr(0, 1) == "/" ? 1 : 0;
  const size_t end = tag.find_first_of(" \t\r\n/", begin);
  return kInline.contains(Lower(tag.substr(begin, end - begin)));
}

// Reads RTF word by control word.
class RtfWords {
 public:
  explicit RtfWords(std::string_view document) : document_(document) {}

  std::string read() {
    while (at_ < document_.size()) readNext();
    flush();
    return Words(text_);
  }

 private:
  struct Group {
    bool isHidden = false;
    bool isFontTable = false;
    int font = 0;
  };

  void readNext() {
    const char c = document_[at_++];
    if (c == '{') {
      groups_.push_back(groups_.back());
    } else if (c == '}') {
      flush();
      if (groups_.size() > 1) groups_.pop_back();
    } else if (c == '\\') {
      readControl();
    } else if (c != '\r' && c != '\n') {
      bytes_ += groups_.back().isHidden ? std::string() : std::string(1, c);
    }
  }

  void readControl() {
    const char c = document_[at_];
    if (std::isalpha(static_cast<unsigned char>(c)) == 0) {
      ++at_;
      if (c == '\'') {
        const std::string digits(document_.substr(at_, 2));
        at_ += 2;
        if (!groups_.back().isHidden) {
          bytes_ += static_cast<char>(std::strtol(digits.c_str(), nullptr, 16));
        }
      } else if (c == '*') {
        groups_.back().isHidden = true;
      } else if (!groups_.back().isHidden) {
        bytes_ += c == '~' ? ' ' : c;
      }
      return;
    }
    const size_t nameEnd = std::min(
        document_.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ", at_),
        document_.size());
    const std::string name(document_.substr(at_, nameEnd - at_));
    const size_t end =
        std::min(document_.find_first_not_of("-0123456789", nameEnd), document_.size());
    const int number = std::atoi(std::string(document_.substr(nameEnd, end - nameEnd)).c_str());
    at_ = end < document_.size() && document_[end] == ' ' ? end + 1 : end;
    apply(name, number);
  }

  void apply(const std::string& name, int number) {
    static const std::set<std::string> kHidden = {"fonttbl", "colortbl", "stylesheet", "info",
                                                  "pict"};
    static const std::set<std::string> kBlanks = {"par", "tab", "cell", "row", "line", "page"};
    flush();
    Group& group = groups_.back();
    if (kHidden.contains(name)) group.isHidden = true;
    if (name == "fonttbl") group.isFontTable = true;
    if (name == "f") group.font = number;
    if (name == "fcharset" && group.isFontTable) charsets_[group.font] = number;
    if (group.isHidden) return;
    if (kBlanks.contains(name)) text_ += ' ';
    if (name == "u") {
      text_ += Utf8Of(static_cast<uint16_t>(number));
      ++at_;  // what programs without Unicode show
    }
  }

  void flush() {
    const auto charset = charsets_.find(groups_.back().font);
    const bool isJapanese = charset != charsets_.end() && charset->second == 128;
    text_ += Converted(std::exchange(bytes_, {}), isJapanese ? "CP932" : "CP1252");
  }

  std::string_view document_;
  size_t at_ = 0;
  std::vector<Group> groups_ = {Group()};
  std::map<int, int> charsets_;
  std::string bytes_;
  std::string text_;
};

}  // namespace

std::string Words(std::string_view text) {
  std::string plain(text);
  for (const char* blank : {"\u00A0", "\u2003", "\u2002"}) ReplaceAll(plain, blank, " ");
  std::istringstream stream(plain);
  std::string words;
  for (std::string word; stream >> word;) words += (words.empty() ? "" : " ") + word;
  return words;
}

std::string WordsOfText(std::string_view document) {
  if (document.starts_with("\xFF\xFE")) {
    std::string text(document.substr(2));
    std::erase(text, '\0');
    return Words(text);
  }
  for (const std::string_view mark : {"\xEF\xBB\xBF", "+/v"}) {
    if (document.starts_with(mark)) document.remove_prefix(mark.size());
  }
  while (document.ends_with('\0')) document.remove_suffix(1);
  return Words(document);
}

std::string WordsOfHtml(std::string_view document) {
  if (document.starts_with("+/v")) document.remove_prefix(3);
  const size_t head = document.find("<head");
  const size_t headEnd = document.find("</head>");
  std::string text;
  for (size_t at = 0; at < document.size();) {
    if (at == head && headEnd != std::string_view::npos) {
      at = headEnd;
    } else if (document.substr(at, 4) == "<!--") {
      at = document.find("-->", at) + 3;
    } else if (document[at] == '<') {
      const size_t end = std::min(document.find('>', at), document.size());
      if (!IsWithinALine(document.substr(at + 1, end - at - 1))) text += ' ';
      at = end + 1;
    } else if (document[at] == '&' && document.find(';', at) < at + 10) {
      const size_t end = document.find(';', at);
      text += Reference(document.substr(at + 1, end - at - 1));
      at = end + 1;
    } else {
      text += document[at++] == '\0' ? ' ' : document[at - 1];
    }
  }
  return Words(text);
}

std::string WordsOfRtf(std::string_view document) { return RtfWords(document).read(); }

}  // namespace tarn::test
