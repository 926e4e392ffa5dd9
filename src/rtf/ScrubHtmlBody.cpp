// Both stages search from one fixed place again and again. Whatever they blanked holds nothing that
// they look for any more, nor does what they passed to get there, so that each search may go on
// after the last blank: the whole text is read once by each stage.
#include "rtf/ScrubHtmlBody.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>

#include "Common/ByteSearch.h"

namespace tarn {
namespace {

constexpr std::string_view kLeftoverTag = "<div>&nbsp;value=\"/";
constexpr std::string_view kTagEnd = "\">";
constexpr std::string_view kReference = "&#";

constexpr size_t kNowhere = std::string_view::npos;

void Blank(std::span<char> bytes, size_t from, size_t to) {
  std::fill_n(bytes.data() + from, to - from, ' ');
}

// Blanks each leftover tag through the next tag end. False ends the scrubbing: a tag end is before
// the tag, in the text that should be kept.
bool BlankLeftoverTags(std::span<char> bytes) {
  const std::string_view text(bytes.data(), bytes.size());
  size_t at = FindBytes(text, kLeftoverTag);
  while (at < text.size()) {
    const size_t tag = FindBytes(text, kLeftoverTag, at);
    const size_t tagEnd = FindBytes(text, kTagEnd, at);
    if (tag == kNowhere || tagEnd == kNowhere) return true;
    const size_t after = tagEnd + kTagEnd.size();
    if (after == tag) return true;
    if (after < tag) return false;
    Blank(bytes, tag, after);
    at = after;
  }
  return true;
}

// Do the digits after a "&#" name a control character that is to go? The second byte is looked at
// only where the first leaves the answer open. 3 to 9, 10 and 13 stay.
bool NamesControlCharacter(std::string_view digits) {
  switch (digits[0]) {
    case '1':
      return digits[1] != '0' && digits[1] != '3';
    case '2':
      return true;
    case '3':
      return digits[1] == '0' || digits[1] == '1';
    default:
      return false;
  }
}

// Blanks the first run of references to control characters. Anything else that looks like a
// reference ends it, and so does a ";" in the text between two of them.
void BlankLeadingReferences(std::span<char> bytes) {
  constexpr size_t kTooLong = 5;
  const std::string_view text(bytes.data(), bytes.size());
  size_t at = FindBytes(text, kReference);
  while (at < text.size()) {
    const size_t reference = FindBytes(text, kReference, at);
    const size_t semicolon = FindByte(text, ';', at);
    if (reference == kNowhere || semicolon == kNowhere || semicolon < reference) return;
    if (semicolon - reference >= kTooLong) return;
    if (!NamesControlCharacter(text.substr(reference + kReference.size()))) return;
    Blank(bytes, reference, semicolon + 1);
    at = semicolon + 1;
  }
}

}  // namespace

Status ScrubHtmlBody(char* text, uint64_t length) {
  if (text == nullptr) return StatusOk;
  const size_t nul = FindByte({text, length}, '\0');
  const std::span<char> bytes(text, std::min<size_t>(nul, length));
  if (BlankLeftoverTags(bytes)) BlankLeadingReferences(bytes);
  return StatusOk;
}

}  // namespace tarn
