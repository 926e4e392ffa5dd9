// TextSink.h - a sink that keeps all that is written in memory.
#ifndef TARN_ARCHIVE_TEXTSINK_H
#define TARN_ARCHIVE_TEXTSINK_H

#include <string>

#include "archive/model/ByteSink.h"

namespace tarn::archive {

class TextSink final : public ByteSink {
 public:
  std::optional<Trouble> write(std::string_view bytes) override {
    text.append(bytes);
    return std::nullopt;
  }

  std::string text;
};

}  // namespace tarn::archive

#endif
