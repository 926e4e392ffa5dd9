// SearchQuery.h - what somebody looks for, as the index is asked for it.
#ifndef TARN_ARCHIVE_SEARCHQUERY_H
#define TARN_ARCHIVE_SEARCHQUERY_H

#include <optional>
#include <string>
#include <string_view>

namespace tarn::archive {

// An expression of FTS5 for words as people write them. All words must occur; "a phrase" is in
// quotes; a star after a word or a phrase finds what begins so; OR between two words asks for one
// of them, and NOT before one for items without it; "subject:", "from:", "to:", "body:" and
// "attachment:" before a word look for it there alone. Everything else is text: no input is wrong.
// None when there is no word to look for, or none but those that must not occur.
std::optional<std::string> QueryOf(std::string_view words);

}  // namespace tarn::archive

#endif
