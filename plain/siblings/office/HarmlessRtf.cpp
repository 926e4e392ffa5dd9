#include "siblings/office/HarmlessRtf.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "siblings/office/FieldInstruction.h"
#include "siblings/office/RtfScanner.h"
#include "siblings/office/RtfText.h"

namespace tarn::pages {

namespace {

// Groups that are left out. Sorted, as the list after it.
constexpr std::array<std::string_view, 32> kDroppedGroups = {
    "annotation",      "atnauthor",   "atndate",  "atnicn",    "atnid",     "atnparent",
    "atnref",          "atntime",     "atrfend",  "atrfstart", "datafield", "datastore",
    "docvar",          "filetbl",     "fontemb",  "fontfile",  "formfield", "info",
    "linkval",         "mailmerge",   "nextfile", "objalias",  "objdata",   "objsect",
    "passwordhash",    "protusertbl", "template", "themedata", "userprops", "wgrffmtfilter",
    "writereservhash", "xmlnstbl"};

// Words that are left out: other documents, and the time of reading.
constexpr std::array<std::string_view, 8> kDroppedWords = {
    "chatn", "chdate", "chdpa", "chdpl", "chtime", "linkself", "linkstyles", "subdocument"};

// In the place of what is left out: what is before it must not run into what is after it.
constexpr std::string_view kNothing = "{}";

template <size_t Count>
bool Holds(const std::array<std::string_view, Count>& names, std::string_view name) {
  return std::binary_search(names.begin(), names.end(), name);
}

// Is it the property of a shape that names a picture elsewhere?
bool NamesFile(std::string_view property) {
  return property.find("BlipName") != std::string_view::npos || property == "pibName" ||
         property == "pihlShape";
}

// The names of properties are words; whatever else is in the group is none.
bool IsPropertyName(std::string_view property) {
  constexpr size_t kLongest = 64;
  return !property.empty() && property.size() <= kLongest &&
         std::all_of(property.begin(), property.end(), [](char c) {
           return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
         });
}

// A link becomes one in a PDF when a style of letters goes with it, whatever that style is.
constexpr std::string_view kLinkStyle = R"({\stylesheet{\*\cs31999 \additive link;}})";
constexpr std::string_view kLinkWord = R"(\cs31999 )";

std::string_view PaperWords(Paper paper) {
  return paper == Paper::Letter ? R"(\paperw12240\paperh15840)" : R"(\paperw11906\paperh16838)";
}

class Rewriting {
 public:
  Rewriting(std::string_view document, Paper paper) : scanner_(document), paper_(paper) {
    result_.reserve(document.size() + 64);
  }

  std::string run() {
    readStart();
    while (depth_ > 0) {
      const auto token = scanner_.next();
      if (!token || !token->whole) break;
      write(*token);
    }
    result_.append(static_cast<size_t>(depth_), '}');
    return std::move(result_);
  }

 private:
  void readStart() {
    const auto brace = scanner_.next();
    const auto word = scanner_.next();
    if (!word || brace->kind != RtfTokenKind::GroupStart || word->name != "rtf") {
      throw PageFailure(Trouble::BadDocument, "the document is not RTF");
    }
    depth_ = 1;
    result_ += R"({\rtf1)";
    result_ += PaperWords(paper_);
    result_ += kLinkStyle;
  }

  void write(const RtfToken& token) {
    if (token.kind == RtfTokenKind::Word) return writeWord(token);
    if (token.kind == RtfTokenKind::GroupStart) {
      if (++depth_ > kDeepestGroup) {
        throw PageFailure(Trouble::BadDocument, "the groups of the RTF nest too deep");
      }
      groupStart_ = result_.size();
    } else if (token.kind == RtfTokenKind::GroupEnd) {
      --depth_;
      if (depth_ < linkDepth_) linkDepth_ = 0;
    }
    result_ += token.bytes;
    if (token.kind != RtfTokenKind::GroupStart && token.symbol != '*') groupStart_.reset();
  }

  void writeWord(const RtfToken& token) {
    if (Holds(kDroppedGroups, token.name)) return dropGroup();
    groupStart_.reset();
    if (token.name == "fldinst") {
      const std::string instruction = HarmlessInstruction(RestOfGroup(scanner_));
      linkComes_ = instruction.rfind("HYPERLINK", 0) == 0;
      endGroup(R"(\fldinst )" + instruction);
    } else if (token.name == "sn") {
      const std::string property = RestOfGroup(scanner_);
      const bool isHarmless = IsPropertyName(property) && !NamesFile(property);
      endGroup(R"(\sn )" + (isHarmless ? property : "none"));
    } else {
      result_ += Holds(kDroppedWords, token.name) ? kNothing : token.bytes;
      styleLink(token.name);
    }
  }

  // "\plain" takes the style away.
  void styleLink(std::string_view word) {
    if (word == "fldrslt" && std::exchange(linkComes_, false)) {
      if (linkDepth_ == 0) linkDepth_ = depth_;
    } else if (word != "plain" || linkDepth_ == 0) {
      return;
    }
    result_ += kLinkWord;
  }

  // A group that becomes such a one in its middle loses its rest.
  void dropGroup() {
    RestOfGroup(scanner_);
    if (!groupStart_) return endGroup({});
    result_.resize(*groupStart_);
    result_ += kNothing;
    groupStart_.reset();
    --depth_;
  }

  void endGroup(std::string_view text) {
    result_ += text;
    result_ += '}';
    --depth_;
  }

  RtfScanner scanner_;
  Paper paper_;
  std::string result_;
  int32_t depth_ = 0;
  int32_t linkDepth_ = 0;             // of the text of a link; 0: outside of any
  bool linkComes_ = false;            // the next result of a field is that text
  std::optional<size_t> groupStart_;  // while nothing but "\*" has followed the last "{"
};

}  // namespace

std::string HarmlessRtf(std::string_view document, Paper paper) {
  return Rewriting(document, paper).run();
}

}  // namespace tarn::pages
