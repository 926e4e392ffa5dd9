#include "archive/text/HtmlReferences.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>

#include "archive/text/Charsets.h"

namespace tarn::archive {
namespace {

constexpr char32_t kFirstOfLatin1 = 160;
constexpr std::string_view kLatin1Names[] = {
    "nbsp",   "iexcl",  "cent",   "pound",  "curren", "yen",    "brvbar", "sect",   "uml",
    "copy",   "ordf",   "laquo",  "not",    "shy",    "reg",    "macr",   "deg",    "plusmn",
    "sup2",   "sup3",   "acute",  "micro",  "para",   "middot", "cedil",  "sup1",   "ordm",
    "raquo",  "frac14", "frac12", "frac34", "iquest", "Agrave", "Aacute", "Acirc",  "Atilde",
    "Auml",   "Aring",  "AElig",  "Ccedil", "Egrave", "Eacute", "Ecirc",  "Euml",   "Igrave",
    "Iacute", "Icirc",  "Iuml",   "ETH",    "Ntilde", "Ograve", "Oacute", "Ocirc",  "Otilde",
    "Ouml",   "times",  "Oslash", "Ugrave", "Uacute", "Ucirc",  "Uuml",   "Yacute", "THORN",
    "szlig",  "agrave", "aacute", "acirc",  "atilde", "auml",   "aring",  "aelig",  "ccedil",
    "egrave", "eacute", "ecirc",  "euml",   "igrave", "iacute", "icirc",  "iuml",   "eth",
    "ntilde", "ograve", "oacute", "ocirc",  "otilde", "ouml",   "divide", "oslash", "ugrave",
    "uacute", "ucirc",  "uuml",   "yacute", "thorn",  "yuml"};

struct NamedCharacter {
  std::string_view name;
  char32_t codePoint;
};

// These too need no semicolon.
constexpr NamedCharacter kMarkupNames[] = {{"amp", '&'},  {"lt", '<'}, {"gt", '>'}, {"quot", '"'},
                                           {"AMP", '&'},  {"LT", '<'}, {"GT", '>'}, {"QUOT", '"'},
                                           {"COPY", 169}, {"REG", 174}};

constexpr NamedCharacter kNames[] = {{"apos", '\''},
                                     {"OElig", 338},
                                     {"oelig", 339},
                                     {"Scaron", 352},
                                     {"scaron", 353},
                                     {"Yuml", 376},
                                     {"fnof", 402},
                                     {"circ", 710},
                                     {"tilde", 732},
                                     {"Alpha", 913},
                                     {"Beta", 914},
                                     {"Gamma", 915},
                                     {"Delta", 916},
                                     {"Epsilon", 917},
                                     {"Zeta", 918},
                                     {"Eta", 919},
                                     {"Theta", 920},
                                     {"Iota", 921},
                                     {"Kappa", 922},
                                     {"Lambda", 923},
                                     {"Mu", 924},
                                     {"Nu", 925},
                                     {"Xi", 926},
                                     {"Omicron", 927},
                                     {"Pi", 928},
                                     {"Rho", 929},
                                     {"Sigma", 931},
                                     {"Tau", 932},
                                     {"Upsilon", 933},
                                     {"Phi", 934},
                                     {"Chi", 935},
                                     {"Psi", 936},
                                     {"Omega", 937},
                                     {"alpha", 945},
                                     {"beta", 946},
                                     {"gamma", 947},
                                     {"delta", 948},
                                     {"epsilon", 949},
                                     {"zeta", 950},
                                     {"eta", 951},
                                     {"theta", 952},
                                     {"iota", 953},
                                     {"kappa", 954},
                                     {"lambda", 955},
                                     {"mu", 956},
                                     {"nu", 957},
                                     {"xi", 958},
                                     {"omicron", 959},
                                     {"pi", 960},
                                     {"rho", 961},
                                     {"sigmaf", 962},
                                     {"sigma", 963},
                                     {"tau", 964},
                                     {"upsilon", 965},
                                     {"phi", 966},
                                     {"chi", 967},
                                     {"psi", 968},
                                     {"omega", 969},
                                     {"thetasym", 977},
                                     {"upsih", 978},
                                     {"piv", 982},
                                     {"ensp", 8194},
                                     {"emsp", 8195},
                                     {"thinsp", 8201},
                                     {"zwnj", 8204},
                                     {"zwj", 8205},
                                     {"lrm", 8206},
                                     {"rlm", 8207},
                                     {"ndash", 8211},
                                     {"mdash", 8212},
                                     {"lsquo", 8216},
                                     {"rsquo", 8217},
                                     {"sbquo", 8218},
                                     {"ldquo", 8220},
                                     {"rdquo", 8221},
                                     {"bdquo", 8222},
                                     {"dagger", 8224},
                                     {"Dagger", 8225},
                                     {"bull", 8226},
                                     {"hellip", 8230},
                                     {"permil", 8240},
                                     {"prime", 8242},
                                     {"Prime", 8243},
                                     {"lsaquo", 8249},
                                     {"rsaquo", 8250},
                                     {"oline", 8254},
                                     {"frasl", 8260},
                                     {"euro", 8364},
                                     {"image", 8465},
                                     {"weierp", 8472},
                                     {"real", 8476},
                                     {"trade", 8482},
                                     {"alefsym", 8501},
                                     {"larr", 8592},
                                     {"uarr", 8593},
                                     {"rarr", 8594},
                                     {"darr", 8595},
                                     {"harr", 8596},
                                     {"crarr", 8629},
                                     {"lArr", 8656},
                                     {"uArr", 8657},
                                     {"rArr", 8658},
                                     {"dArr", 8659},
                                     {"hArr", 8660},
                                     {"forall", 8704},
                                     {"part", 8706},
                                     {"exist", 8707},
                                     {"empty", 8709},
                                     {"nabla", 8711},
                                     {"isin", 8712},
                                     {"notin", 8713},
                                     {"ni", 8715},
                                     {"prod", 8719},
                                     {"sum", 8721},
                                     {"minus", 8722},
                                     {"lowast", 8727},
                                     {"radic", 8730},
                                     {"prop", 8733},
                                     {"infin", 8734},
                                     {"ang", 8736},
                                     {"and", 8743},
                                     {"or", 8744},
                                     {"cap", 8745},
                                     {"cup", 8746},
                                     {"int", 8747},
                                     {"there4", 8756},
                                     {"sim", 8764},
                                     {"cong", 8773},
                                     {"asymp", 8776},
                                     {"ne", 8800},
                                     {"equiv", 8801},
                                     {"le", 8804},
                                     {"ge", 8805},
                                     {"sub", 8834},
                                     {"sup", 8835},
                                     {"nsub", 8836},
                                     {"sube", 8838},
                                     {"supe", 8839},
                                     {"oplus", 8853},
                                     {"otimes", 8855},
                                     {"perp", 8869},
                                     {"sdot", 8901},
                                     {"lceil", 8968},
                                     {"rceil", 8969},
                                     {"lfloor", 8970},
                                     {"rfloor", 8971},
                                     {"lang", 9001},
                                     {"rang", 9002},
                                     {"loz", 9674},
                                     {"spades", 9824},
                                     {"clubs", 9827},
                                     {"hearts", 9829},
                                     {"diams", 9830},
                                     {"NewLine", '\n'},
                                     {"Tab", '\t'},
                                     {"colon", ':'},
                                     {"comma", ','},
                                     {"period", '.'},
                                     {"sol", '/'},
                                     {"bsol", '\\'},
                                     {"lbrack", '['},
                                     {"rbrack", ']'},
                                     {"lsqb", '['},
                                     {"rsqb", ']'},
                                     {"lcub", '{'},
                                     {"rcub", '}'},
                                     {"verbar", '|'},
                                     {"ast", '*'},
                                     {"num", '#'},
                                     {"commat", '@'},
                                     {"lpar", '('},
                                     {"rpar", ')'},
                                     {"excl", '!'},
                                     {"quest", '?'},
                                     {"semi", ';'},
                                     {"equals", '='},
                                     {"plus", '+'},
                                     {"percnt", '%'},
                                     {"dollar", '$'},
                                     {"lowbar", '_'},
                                     {"hyphen", 8208},
                                     {"dash", 8208},
                                     {"check", 10003},
                                     {"star", 9734},
                                     {"starf", 9733},
                                     {"phone", 9742},
                                     {"nbhy", 8209},
                                     {"numsp", 8199},
                                     {"puncsp", 8200},
                                     {"hairsp", 8202},
                                     {"ZeroWidthSpace", 8203}};

struct Known {
  char32_t codePoint;
  bool needsSemicolon;
};

const std::map<std::string_view, Known>& KnownNames() {
  static const std::map<std::string_view, Known> names = [] {
    std::map<std::string_view, Known> all;
    char32_t next = kFirstOfLatin1;
    for (const std::string_view name : kLatin1Names) all[name] = {next++, false};
    for (const NamedCharacter& one : kMarkupNames) all[one.name] = {one.codePoint, false};
    for (const NamedCharacter& one : kNames) all[one.name] = {one.codePoint, true};
    return all;
  }();
  return names;
}

bool IsAlphanumeric(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

// Numbers that pages of Windows-1252 use as if they were Unicode.
char32_t CharacterOfNumber(uint32_t number) {
  static constexpr char32_t kWindows[32] = {
      0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
      0x2039, 0x0152, 0x8D,   0x017D, 0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
      0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};
  if (number >= 0x80 && number < 0xA0) return kWindows[number - 0x80];
  const bool isCharacter = number != 0 && number <= 0x10FFFF && (number & 0xFFFFF800) != 0xD800;
  return isCharacter ? number : U'\uFFFD';
}

// Takes a reference off the front of the text; nothing where there is none.
std::optional<char32_t> TakeNumber(std::string_view& text) {
  const bool isHex = text.size() > 2 && (text[2] | 0x20) == 'x';
  const size_t start = isHex ? 3 : 2;
  size_t at = start;
  uint32_t number = 0;
  for (; at < text.size(); ++at) {
    const char c = text[at];
    const char lower = static_cast<char>(c | 0x20);
    const bool isDigit = c >= '0' && c <= '9';
    if (!isDigit && !(isHex && lower >= 'a' && lower <= 'f')) break;
    const auto digit = static_cast<uint32_t>(isDigit ? c - '0' : lower - 'a' + 10);
    number = std::min<uint32_t>(number * (isHex ? 16 : 10) + digit, 0x110000);
  }
  if (at == start) return std::nullopt;
  if (at < text.size() && text[at] == ';') ++at;
  text.remove_prefix(at);
  return CharacterOfNumber(number);
}

enum class Where : uint8_t { Text, Value };

std::optional<char32_t> TakeName(std::string_view& text, Where where) {
  constexpr size_t kLongestName = 14;
  size_t end = 1;
  while (end < text.size() && end <= kLongestName && IsAlphanumeric(text[end])) ++end;
  const bool isClosed = end < text.size() && text[end] == ';';
  // Without a semicolon the longest name that the letters begin with counts.
  for (size_t size = end - 1; size >= 2; --size) {
    const auto known = KnownNames().find(text.substr(1, size));
    const bool isWhole = isClosed && size == end - 1;
    if (known == KnownNames().end() || (known->second.needsSemicolon && !isWhole)) continue;
    const bool goesOn =
        1 + size < text.size() && (text[1 + size] == '=' || IsAlphanumeric(text[1 + size]));
    if (where == Where::Value && goesOn) return std::nullopt;
    text.remove_prefix(1 + size + (isWhole ? 1 : 0));
    return known->second.codePoint;
  }
  return std::nullopt;
}

std::string Decoded(std::string_view text, Where where) {
  std::string decoded;
  decoded.reserve(text.size());
  while (!text.empty()) {
    const size_t plain = std::min(text.find('&'), text.size());
    decoded += text.substr(0, plain);
    text.remove_prefix(plain);
    if (text.empty()) break;
    const bool isNumber = text.size() > 1 && text[1] == '#';
    if (const std::optional<char32_t> character =
            isNumber ? TakeNumber(text) : TakeName(text, where)) {
      AppendCharacter(*character, decoded);
    } else {
      decoded += '&';
      text.remove_prefix(1);
    }
  }
  return decoded;
}

}  // namespace

std::string DecodedHtmlText(std::string_view text) { return Decoded(text, Where::Text); }

std::string DecodedHtmlValue(std::string_view value) { return Decoded(value, Where::Value); }

}  // namespace tarn::archive
