// Uuencode.h - files that a text has in it, uuencoded ("begin 644 name" ... "end", POSIX uuencode).
#ifndef TARN_ARCHIVE_UUENCODE_H
#define TARN_ARCHIVE_UUENCODE_H

#include <string>
#include <string_view>
#include <vector>

namespace tarn::archive::mail {

struct UuencodedFile {
  std::string_view name;   // as the text has it
  std::string_view lines;  // the encoded ones, with their line ends
};

struct UuencodedText {
  std::string text;  // without the files
  std::vector<UuencodedFile> files;
};

// The files of a text, in its order; they lie in the text that is given. What begins like a file
// and goes on otherwise, or does not end, is text.
UuencodedText SplitUuencode(std::string_view text);

std::string DecodeUuencode(std::string_view lines);

}  // namespace tarn::archive::mail

#endif
