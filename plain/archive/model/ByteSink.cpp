#include "archive/model/ByteSink.h"

#include <array>

namespace tarn::archive {

Copied CopyAll(ByteSource& source, ByteSink& sink) {
  std::array<char, 65536> buffer;
  for (;;) {
    const Outcome<size_t> count = source.read(buffer);
    if (!count) return {count.trouble(), std::nullopt};
    if (*count == 0) return {};
    if (auto full = sink.write({buffer.data(), *count})) return {std::nullopt, std::move(full)};
  }
}

}  // namespace tarn::archive
