#include "mutators/RtfMending.h"

#include <string_view>

#include "support/RtfCompressor.h"
#include "support/pst/PstBytes.h"

namespace tarn::fuzz {

using namespace tarn::test;

void MendCompressedRtf(std::string& bytes) {
  constexpr size_t kRawSize = 4;
  constexpr size_t kMagic = 8;
  constexpr size_t kCrc = 12;
  constexpr size_t kHeader = 16;
  if (bytes.size() < kHeader) return;
  const uint64_t magic = GetLe(bytes, kMagic, 4);
  if (magic != kLzfuMagic && magic != kMelaMagic) return;
  PutLe(bytes, 0, bytes.size() - kRawSize, 4);
  if (magic == kMelaMagic) PutLe(bytes, kRawSize, bytes.size() - kHeader, 4);
  PutLe(bytes, kCrc, LzfuChecksum(std::string_view(bytes).substr(kHeader)), 4);
}

}  // namespace tarn::fuzz
