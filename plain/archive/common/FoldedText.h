// FoldedText.h - text as it is compared: without case, width, ligatures and what nobody sees.
#ifndef TARN_ARCHIVE_FOLDEDTEXT_H
#define TARN_ARCHIVE_FOLDEDTEXT_H

#include <string>
#include <string_view>

namespace tarn::archive {

// UTF-8 by Unicode's toNFKC_Casefold: "STRASSE" and "straße" become the same. What is no UTF-8
// becomes U+FFFD.
std::string Folded(std::string_view text);

// Whether the folded text holds the folded part.
bool HoldsFolded(std::string_view text, std::string_view foldedPart);

}  // namespace tarn::archive

#endif
