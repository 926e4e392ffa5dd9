#include "faults/StatedPlaces.h"

#include <string_view>
#include <vector>

#include "support/SampleMails.h"

namespace tarn::test {
namespace {

// ------------------------------------------------------------------------------------- helpers

// Whether the outcomes differ in these fields at most; names in blanks.
bool DifferOnlyIn(std::string_view allowed, const FaultOutcome& a, const FaultOutcome& b) {
  const std::string names = Differences(a, b);
  for (size_t at = 1; at < names.size();) {
    const size_t end = names.find(' ', at);
    if (allowed.find(" " + names.substr(at, end - at) + " ") == std::string_view::npos)
      return false;
    at = end + 1;
  }
  return true;
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

// Whether a text has the length of another, or lost a NUL at its end.
bool HasLengthOf(const std::string& whole, const std::string& seen) {
  return seen.size() == whole.size() || seen.size() + 1 == whole.size();
}

// Whether leaving out some of the characters of `whole` gives `part`.
bool IsWithout(std::string_view part, std::string_view whole) {
  size_t taken = 0;
  for (const char c : whole) {
    if (taken < part.size() && part[taken] == c) ++taken;
  }
  return taken == part.size();
}

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  for (size_t at = 0; at < text.size();) {
    const size_t end = std::min(text.find(separator, at), text.size());
    parts.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return parts;
}

enum ListField { kName = 1, kDescription = 2, kCreated = 4, kModified = 5, kProperties = 6 };

// Whether two lists have the same attachments, and their fields satisfy `fits` one by one. Of the
// properties, the shorter list may lack some.
bool ListsFit(const std::string& seen, const std::string& whole,
              bool (*fits)(size_t field, const std::string& seen, const std::string& whole)) {
  const std::vector<std::string> lines = Split(seen, '\n');
  const std::vector<std::string> wholeLines = Split(whole, '\n');
  if (lines.size() != wholeLines.size()) return false;
  for (size_t i = 0; i < lines.size(); ++i) {
    const std::vector<std::string> fields = Split(lines[i], '|');
    const std::vector<std::string> wholeFields = Split(wholeLines[i], '|');
    size_t at = 0;
    for (size_t k = 0; k < wholeFields.size(); ++k) {
      const bool isThere = at < fields.size() && (k < kProperties || fields[at] == wholeFields[k]);
      const std::string field = isThere ? fields[at] : "";
      if (field != wholeFields[k] && !fits(k, field, wholeFields[k])) return false;
      if (isThere) ++at;
    }
    if (at != fields.size()) return false;
  }
  return true;
}

bool IsEml(const FaultInput& input) { return input.format == FaultFormat::Eml; }
bool IsMsg(const FaultInput& input) { return input.format == FaultFormat::Msg; }
bool IsPst(const FaultInput& input) { return input.format == FaultFormat::Pst; }
bool MakesDocument(const FaultInput& input) {
  return input.call == FaultCall::Info || input.call == FaultCall::Load ||
         input.call == FaultCall::InfoThenLoad;
}
bool Extracts(const FaultInput& input) {
  return input.call == FaultCall::ExtractToMemory || input.call == FaultCall::ExtractToFile;
}
bool IsMemoryOrText(int32_t group) {
  return group == PlainKernelFaultMemory || group == PlainKernelFaultText;
}
bool Reads(int32_t group) {
  return group == PlainKernelFaultMemory || group == PlainKernelFaultRead ||
         group == PlainKernelFaultSeek;
}

// The references to images, in the order of the documents that have them.
std::vector<std::string> References(const FaultInput& input) {
  if (IsPst(input)) return {"cid:pic.png", "cid:two.png"};
  return {"cid:one@x", "cid:two@x"};
}

// The document with the references of some images as they were: bit i speaks of image i.
std::string WithReferences(const FaultInput& input, std::string document, uint32_t images) {
  const std::string open = "<img src=\"";
  size_t at = 0;
  uint32_t image = 0;
  for (const std::string& reference : References(input)) {
    at = document.find(open, at);
    if (at == std::string::npos) break;
    at += open.size();
    if ((images >> image++ & 1) != 0) {
      document.replace(at, document.find('"', at) - at, reference);
    }
  }
  return document;
}

constexpr uint32_t kEveryImage = 3;

// Whether some images, or none, are not in the document that was seen.
bool LacksImages(const FaultInput& input, const FaultOutcome& seen, const FaultOutcome& whole) {
  for (uint32_t images = 0; images <= kEveryImage; ++images) {
    if (seen.document == WithReferences(input, whole.document, images)) return true;
  }
  return false;
}

// --------------------------------------------------------------------------------------- mails

const std::string kWord = "=?iso-8859-1?Q?Gr=FC=DFe?=";
const std::string kGreeting =
    "Gr\xC3\xBC\xC3\x9F"
    "e";

const std::string kUmlaut = "\xC3\xA4";

struct Change {
  std::string from;
  std::string to;
};

// Whether the seen document is the whole one with some of the changes.
bool IsChanged(const std::string& seen, const std::string& whole,
               const std::vector<Change>& changes) {
  for (uint32_t chosen = 0; chosen < 1u << changes.size(); ++chosen) {
    std::string document = whole;
    for (size_t i = 0; i < changes.size(); ++i) {
      if ((chosen >> i & 1) != 0) document = Replaced(document, changes[i].from, changes[i].to);
    }
    if (document == seen) return true;
  }
  return false;
}

// Where no word is left that was converted, a field of raw bytes is.
bool LeavesWords(const FaultInput&, const FaultOutcome& seen, const FaultOutcome& whole) {
  return DifferOnlyIn(" document ", seen, whole) &&
         IsChanged(
             seen.document, whole.document,
             {{kGreeting + " and \xC3\xA4\xC3\xB6\xC3\xBC", kWord + " and =?utf-8?B?w6TDtsO8?="},
              {"f\xC3\xBCr \xE3\x81\x82 dich",
               "=?iso-8859-1?Q?f=FCr?= =?iso-2022-jp?B?GyRCJCIbKEI=?= dich"},
              {"J\xF6rg", "J\xC3\xB6rg"}});
}

bool LeavesFieldRaw(const FaultInput&, const FaultOutcome& seen, const FaultOutcome& whole) {
  const std::string row = "Subject:\t";
  return DifferOnlyIn(" document ", seen, whole) &&
         IsChanged(seen.document, whole.document,
                   {{row + kGreeting + "\r\n", ""},
                    {row + kGreeting, row + "Gr\xFC\xDF"
                                            "e"},
                    {EmlHtmlRow("Cc:", "J\xC3\xB6rg"), ""},
                    {"J\xC3\xB6rg", "J\xF6rg"}});
}

// Whether the text is a word of the samples in place of what it says.
bool IsWordFor(const std::string& seen, const std::string& whole) {
  const std::vector<Change> words = {{kGreeting, kWord},
                                     {kUmlaut, "=?iso-8859-1?Q?=E4?="},
                                     {kUmlaut + ".pdf", "=?iso-8859-1?Q?=E4=2Epdf?="},
                                     {"a.png", "=?utf-8?Q?a=2Epng?="}};
  return std::any_of(words.begin(), words.end(),
                     [&](const Change& word) { return word.from == whole && word.to == seen; });
}

bool LosesProperties(const FaultInput&, const FaultOutcome& seen, const FaultOutcome& whole) {
  return DifferOnlyIn(" list ", seen, whole) &&
         ListsFit(seen.list, whole.list,
                  [](size_t field, const std::string& part, const std::string& property) {
                    if (field == kName || field == kDescription) return IsWordFor(part, property);
                    if (field == kCreated || field == kModified) return part == "0";
                    return field >= kProperties && part.empty() &&
                           (property.starts_with("Content-Disposition=") ||
                            property.starts_with("MineType=") ||
                            property.starts_with("Content-ID="));
                  });
}

bool LosesKeptData(const FaultInput&, const FaultOutcome& seen, const FaultOutcome& whole) {
  return DifferOnlyIn(" records slot ", seen, whole) && seen.slot.find("now ") == std::string::npos;
}

bool StaysInTheProcess(const FaultInput&, const FaultOutcome& seen, const FaultOutcome&) {
  return (seen.status == StatusCreateFailed || seen.status == StatusWriteFailed) &&
         seen.siblings == 0 && seen.left.ends_with("objects 1 handles 1 ");
}

// ----------------------------------------------------------------------------------- MSG files

bool StaysRtf(const FaultInput&, const FaultOutcome& seen, const FaultOutcome& whole) {
  return DifferOnlyIn(" format document records ", seen, whole) &&
         seen.siblingFormat == SiblingRtf && seen.document.starts_with("{\\rtf1") &&
         seen.document.find("\\fromhtml1") != std::string::npos;
}

bool LeavesHexRun(const FaultInput&, const FaultOutcome& seen, const FaultOutcome& whole) {
  std::string units;
  for (int i = 0; i < 80; ++i) units += "&#xE9;";
  return DifferOnlyIn(" document ", seen, whole) &&
         seen.document == Replaced(whole.document, units, std::string(80, '\xE9'));
}

// fltLoad tells the failure in the context's status; fltInfo does not.
bool EndsImages(const FaultInput& input, const FaultOutcome& seen, const FaultOutcome& whole) {
  const bool isTold = input.call != FaultCall::Load || seen.loadStatus < StatusOk;
  return isTold && DifferOnlyIn(" document images attachmentCount loadStatus ", seen, whole) &&
         seen.attachmentCount <= whole.attachmentCount && LacksImages(input, seen, whole);
}

bool MissesContentId(const FaultInput& input, const FaultOutcome& seen, const FaultOutcome& whole) {
  return DifferOnlyIn(" document images ", seen, whole) && LacksImages(input, seen, whole);
}

bool LeavesImageFile(const FaultInput&, const FaultOutcome& seen, const FaultOutcome& whole) {
  return seen.left == "file one@x_a.png directory " &&
         (DifferOnlyIn(" left ", seen, whole) || seen.status == StatusOutOfMemory);
}

bool LosesName(const FaultInput&, const FaultOutcome& seen, const FaultOutcome& whole) {
  return DifferOnlyIn(" list ", seen, whole) &&
         ListsFit(seen.list, whole.list,
                  [](size_t field, const std::string& part, const std::string&) {
                    return field == kName && part == "(null)";
                  });
}

bool LeavesItems(const FaultInput&, const FaultOutcome& seen, const FaultOutcome&) {
  return seen.status <= StatusFailed && !seen.hasList && seen.left.starts_with("blocks ") &&
         seen.left.find(' ', 7) == seen.left.size() - 1;
}

bool WritesLess(const FaultInput& input, const FaultOutcome& seen, const FaultOutcome& whole) {
  return DifferOnlyIn(" extracted ", seen, whole) &&
         seen.hasExtracted == (input.call == FaultCall::ExtractToMemory) && !seen.extracted.empty();
}

bool ReadsLess(const FaultInput&, const FaultOutcome& seen, const FaultOutcome& whole) {
  return DifferOnlyIn(" document extracted ", seen, whole) &&
         HasLengthOf(whole.document, seen.document) &&
         seen.extracted.size() == whole.extracted.size();
}

// -------------------------------------------------------------------------------------- stores

// The rest of a folder is not read: a message of the next folder takes the place, or the record
// stays as far as it was read.
bool EndsFolder(const FaultInput& input, const FaultOutcome& seen, const FaultOutcome& whole) {
  const auto has = [&seen](const char* text) {
    return seen.document.find(text) != std::string::npos;
  };
  const bool isOther = has(input.textOnly ? "other" : "<p>other") || has("last</html>");
  const bool isUnfinished = has("<img src=\"cid:pic.png\">") ||
                            IsWithout(WithReferences(input, seen.document, kEveryImage),
                                      WithReferences(input, whole.document, kEveryImage));
  return DifferOnlyIn(" attachmentCount ", seen, whole) ||
         ((isOther || isUnfinished) &&
          DifferOnlyIn(" format document images records attachmentCount ", seen, whole));
}

bool LosesRows(const FaultInput&, const FaultOutcome& seen, const FaultOutcome& whole) {
  return DifferOnlyIn(" document ", seen, whole) && IsWithout(seen.document, whole.document);
}

bool LosesStoreImages(const FaultInput& input, const FaultOutcome& seen,
                      const FaultOutcome& whole) {
  return DifferOnlyIn(" document images ", seen, whole) &&
         IsWithout(WithReferences(input, seen.document, kEveryImage),
                   WithReferences(input, whole.document, kEveryImage));
}

bool EndsList(const FaultInput&, const FaultOutcome& seen, const FaultOutcome& whole) {
  return DifferOnlyIn(" list ", seen, whole) && seen.hasList && whole.list.starts_with(seen.list) &&
         seen.list.ends_with("\n");
}

bool ExtractsNothing(const FaultInput&, const FaultOutcome& seen, const FaultOutcome& whole) {
  return DifferOnlyIn(" extracted ", seen, whole) && !seen.hasExtracted && seen.extracted.empty();
}

}  // namespace

std::span<const StatedPlace> StatedPlaces() {
  static constexpr StatedPlace kPlaces[] = {
      {"an encoded word of a header field",
       [](const FaultInput& i, int32_t g) {
         return IsEml(i) && MakesDocument(i) && IsMemoryOrText(g);
       },
       LeavesWords, "EmlCharset"},
      {"a header field in a charset of its own",
       [](const FaultInput& i, int32_t g) {
         return IsEml(i) && MakesDocument(i) && IsMemoryOrText(g);
       },
       LeavesFieldRaw, "EmlRawField"},
      {"properties of a mail's attachment",
       [](const FaultInput& i, int32_t g) {
         return IsEml(i) && i.call == FaultCall::List && IsMemoryOrText(g);
       },
       LosesProperties, "EmlListOfNames"},
      {"what a sibling wants kept",
       [](const FaultInput& i, int32_t g) { return i.keeps && g == PlainKernelFaultMemory; },
       LosesKeptData, "EmlKeptData"},
      {"the HTML file of `fltLoad`",
       [](const FaultInput& i, int32_t g) {
         return i.call == FaultCall::Load && i.route == FaultRoute::ByFile &&
                (g == PlainKernelFaultOpen || g == PlainKernelFaultWrite);
       },
       StaysInTheProcess, "EmlHtmlLoadByFile"},
      {"RTF that wraps HTML",
       [](const FaultInput& i, int32_t g) {
         return IsMsg(i) && MakesDocument(i) && g == PlainKernelFaultMemory;
       },
       StaysRtf, "MsgWrapped"},
      {"a run of hexadecimal escapes",
       [](const FaultInput& i, int32_t g) {
         return IsMsg(i) && MakesDocument(i) && g == PlainKernelFaultMemory;
       },
       LeavesHexRun, "MsgWrapped"},
      {"images of an MSG file",
       [](const FaultInput& i, int32_t) { return IsMsg(i) && MakesDocument(i); }, EndsImages,
       "MsgImagesLoad"},
      {"the content id of an MSG file's image",
       [](const FaultInput& i, int32_t) { return IsMsg(i) && MakesDocument(i); }, MissesContentId,
       "MsgImagesLoad"},
      {"an image file that the record does not list",
       [](const FaultInput& i, int32_t g) {
         return i.route == FaultRoute::ByFile && g == PlainKernelFaultMemory;
       },
       LeavesImageFile, "MsgImagesByFile"},
      {"the name of an MSG file's attachment",
       [](const FaultInput& i, int32_t) { return IsMsg(i) && i.call == FaultCall::List; },
       LosesName, "MsgList"},
      {"items of a list that fails",
       [](const FaultInput& i, int32_t) { return i.call == FaultCall::List; }, LeavesItems,
       "EmlList"},
      {"writing an embedded message",
       [](const FaultInput& i, int32_t g) {
         return IsMsg(i) && Extracts(i) && i.attachment == 3 &&
                (g == PlainKernelFaultMemory || g == PlainKernelFaultWrite ||
                 g == PlainKernelFaultSeek);
       },
       WritesLess, "MsgExtractMessage"},
      {"short reads of an MSG file",
       [](const FaultInput& i, int32_t g) { return IsMsg(i) && g == PlainKernelFaultRead; },
       ReadsLess, "MsgExtractLarge"},
      {"a message of a store",
       [](const FaultInput& i, int32_t g) { return IsPst(i) && MakesDocument(i) && Reads(g); },
       EndsFolder, "PstImages"},
      {"header rows of a store's message",
       [](const FaultInput& i, int32_t g) {
         return IsPst(i) && MakesDocument(i) && IsMemoryOrText(g);
       },
       LosesRows, "PstImages"},
      {"images of a store's message",
       [](const FaultInput& i, int32_t) { return IsPst(i) && MakesDocument(i); }, LosesStoreImages,
       "PstImages"},
      {"attachments of a store's message",
       [](const FaultInput& i, int32_t g) {
         return IsPst(i) && i.call == FaultCall::List && Reads(g);
       },
       EndsList, "PstList"},
      {"an attachment of a store's message",
       [](const FaultInput& i, int32_t g) { return IsPst(i) && Extracts(i) && Reads(g); },
       ExtractsNothing, "PstExtract"},
  };
  return kPlaces;
}

}  // namespace tarn::test
