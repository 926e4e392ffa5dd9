// Both stages search from one fixed place again and again. Whatever they blanked holds nothing that
// they look for any more, nor does what they passed to get there, so that each search may go on
// after the last blank: the whole text is read once by each stage.
#include "rtf/ScrubHtmlBody.h"

#include <algorithm>
#include <cstddef>

#include "Common/ByteSearch.h"

namespace tarn {
namespace {

constexpr std::string_view kLeftoverTag = "<div>&nbsp;value=\"/";
constexpr std::string_view kTagEnd = "\">";
constexpr std::string_view kReference = "&#";

void Blank(char* from, const char* to) { std::fill_n(from, to - from, ' '); }

// Blanks each leftover tag through the next tag end. False ends the scrubbing: a tag end is before
// the tag, in the text that should be kept.
bool BlankLeftoverTags(char* start, const char* end) {
  const char* at = FindBytes(start, end, kLeftoverTag);
  while (at != nullptr && at < end) {
    const char* const tag = FindBytes(at, end, kLeftoverTag);
    const char* const tagEnd = FindBytes(at, end, kTagEnd);
    if (tag == nullptr || tagEnd == nullptr) return true;
    const char* const after = tagEnd + kTagEnd.size();
    if (after == tag) return true;
    if (after < tag) return false;
    Blank(start + (tag - start), after);
    at = after;
  }
  return true;
}

// Do the digits after a "&#" name a control character that is to go? The second byte is looked at
// only where the first leaves the answer open. 3 to 9, 10 and 13 stay.
bool NamesControlCharacter(const char* digits) {
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
void BlankLeadingReferences(char* start, const char* end) {
  constexpr ptrdiff_t kTooLong = 5;
  const char* at = FindBytes(start, end, kReference);
  while (at != nullptr && at < end) {
    const char* const reference = FindBytes(at, end, kReference);
    const char* const semicolon = FindByte(at, end, ';');
    if (reference == nullptr || semicolon == nullptr || semicolon < reference) return;
    if (semicolon - reference >= kTooLong) return;
    if (!NamesControlCharacter(reference + kReference.size())) return;
    Blank(start + (reference - start), semicolon + 1);
    at = semicolon + 1;
  }
}

}  // namespace

Status ScrubHtmlBody(char* text, uint64_t length) {
  if (text == nullptr) return StatusOk;
  const char* const nul = FindByte(text, text + length, '\0');
  const char* const end = nul != nullptr ? nul : text + length;
  if (BlankLeftoverTags(text, end)) BlankLeadingReferences(text, end);
  return StatusOk;
}

}  // namespace tarn
