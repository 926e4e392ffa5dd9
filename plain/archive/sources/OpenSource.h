// OpenSource.h - the reader of a mail file.
#ifndef TARN_ARCHIVE_OPENSOURCE_H
#define TARN_ARCHIVE_OPENSOURCE_H

#include <filesystem>
#include <memory>

#include "archive/model/ItemReader.h"
#include "archive/sources/SourceKind.h"

namespace tarn::archive {

// Whether files of the kind hold one item, which needs no id to be named by.
constexpr bool HoldsOneItem(SourceKind kind) {
  return kind == SourceKind::Compound || kind == SourceKind::Tnef || kind == SourceKind::Mail;
}

Outcome<std::unique_ptr<ItemReader>> OpenSource(const std::filesystem::path& path, SourceKind kind,
                                                const ReaderOptions& options);

}  // namespace tarn::archive

#endif
