// AsciiWords.h - the words of an index found sooner where a text is ASCII.
#ifndef TARN_ARCHIVE_ASCIIWORDS_H
#define TARN_ARCHIVE_ASCIIWORDS_H

#include "archive/catalogue/Database.h"

namespace tarn::archive {

// Puts a tokenizer of this program in the place of FTS5's own "unicode61", for this connection and
// with the options that the catalogue gives it. Its words are the same: texts that are not ASCII in
// small letters go to the other one. Called before a table of FTS5 is made.
void SplitAsciiSooner(const Database& database);

}  // namespace tarn::archive

#endif
