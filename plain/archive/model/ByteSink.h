// ByteSink.h - where bytes are written to, from the first to the last.
#ifndef TARN_ARCHIVE_BYTESINK_H
#define TARN_ARCHIVE_BYTESINK_H

#include <optional>
#include <string_view>

#include "archive/model/ByteSource.h"
#include "archive/model/Trouble.h"

namespace tarn::archive {

class ByteSink {
 public:
  ByteSink() = default;
  ByteSink(const ByteSink&) = delete;
  ByteSink& operator=(const ByteSink&) = delete;
  virtual ~ByteSink() = default;

  // A trouble says that the place takes no more, as a full disk: nothing is written after it.
  virtual std::optional<Trouble> write(std::string_view bytes) = 0;
};

// How a copy ended. Both are empty when all is there.
struct Copied {
  std::optional<Trouble> reading;  // the source broke off; what came before it is written
  std::optional<Trouble> writing;  // the sink takes no more
};

Copied CopyAll(ByteSource& source, ByteSink& sink);

}  // namespace tarn::archive

#endif
