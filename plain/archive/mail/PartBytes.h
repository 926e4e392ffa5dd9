// PartBytes.h - the bytes of a part after transfer decoding (RFC 2045 6, and uuencode).
#ifndef TARN_ARCHIVE_PARTBYTES_H
#define TARN_ARCHIVE_PARTBYTES_H

#include <gmime/gmime.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "archive/model/ByteSource.h"

namespace tarn::archive::mail {

// In pieces. A part without content has no bytes.
std::unique_ptr<ByteSource> OpenPart(GMimePart* part);

// Its first bytes; fewer where it is shorter or cannot be read.
std::string StartOfPart(GMimePart* part, size_t limit);

// How many, where that is known without decoding them.
std::optional<uint64_t> SizeOfPart(GMimePart* part);

// Text with LF at the ends of its lines, whatever it had, and without NULs at its end. Empty for
// null.
std::string TextOfLines(const char* text);
void EndLinesWithLf(std::string& text);

}  // namespace tarn::archive::mail

#endif
