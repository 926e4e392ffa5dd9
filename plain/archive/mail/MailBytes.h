// MailBytes.h - the bytes of a file, of a mail in it, or of a mail inside that: read at any place,
// and nothing kept of them.
#ifndef TARN_ARCHIVE_MAILBYTES_H
#define TARN_ARCHIVE_MAILBYTES_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "archive/model/ByteSource.h"
#include "archive/model/Trouble.h"

namespace tarn::archive::mail {

class MailBytes {
 public:
  MailBytes() = default;
  MailBytes(const MailBytes&) = delete;
  MailBytes& operator=(const MailBytes&) = delete;
  virtual ~MailBytes() = default;

  virtual uint64_t size() const = 0;

  // As many bytes as there are from `offset` on, and as fit; 0 at the end. Unreadable when the
  // system does not give them. Throws nothing.
  virtual Outcome<size_t> readAt(uint64_t offset, std::span<char> buffer) = 0;
};

using SharedBytes = std::shared_ptr<MailBytes>;

Outcome<SharedBytes> OpenFile(const std::filesystem::path& path);

SharedBytes BytesInMemory(std::string bytes);

// The bytes from `start` to `end`, without those at the places `left` (ascending, from the start
// of `whole` counted).
SharedBytes RangeOf(SharedBytes whole, uint64_t start, uint64_t end,
                    std::vector<uint64_t> left = {});

// All bytes, from the first to the last.
std::unique_ptr<ByteSource> SourceOf(SharedBytes bytes);

// Up to `limit` bytes from `offset` on.
Outcome<std::string> ReadRange(MailBytes& bytes, uint64_t offset, size_t limit);

}  // namespace tarn::archive::mail

#endif
