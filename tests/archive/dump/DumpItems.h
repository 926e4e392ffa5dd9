// DumpItems.h - everything that a reader of the archive gives, as JSON Lines, for comparing with
// what others read of the same file.
#ifndef TARN_TESTS_ARCHIVE_DUMPITEMS_H
#define TARN_TESTS_ARCHIVE_DUMPITEMS_H

#include <cstdio>

#include "archive/model/ItemReader.h"

namespace tarn::test {

// One line for each entry. Bodies, attachments and originals come as their length and SHA-256,
// embedded items within the attachment that they are.
void DumpItems(archive::ItemReader& reader, std::FILE* out);

}  // namespace tarn::test

#endif
