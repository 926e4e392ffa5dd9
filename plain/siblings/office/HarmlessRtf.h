// HarmlessRtf.h - an RTF document made fit for a reader that would do whatever it says.
//
// What is taken out: the data of embedded objects (their picture stays), embedded fonts, names of
// templates, of data sources and of other files, comments, and the instructions of fields (see
// FieldInstruction.h); an empty group takes their place. What is put in: the size of the paper,
// before anything that the document says of it, and the braces that are missing at the end of a
// document that was cut off. Everything else stays as it is, byte for byte.
#ifndef TARN_SIBLINGS_OFFICE_HARMLESSRTF_H
#define TARN_SIBLINGS_OFFICE_HARMLESSRTF_H

#include <cstdint>
#include <string>
#include <string_view>

#include "siblings/Pages.h"

namespace tarn::pages {

// Groups nest no deeper than that.
inline constexpr int32_t kDeepestGroup = 1000;

// Ends with the brace that ends the document. Trouble::BadDocument when the text does not begin
// with "{\rtf" and a number or none, or when its groups nest too deep.
std::string HarmlessRtf(std::string_view document, Paper paper);

}  // namespace tarn::pages

#endif
