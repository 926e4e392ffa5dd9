#include <string_view>

#include "Common/ByteSearch.h"
#include "Internal/Tarnclasses_.h"
#include "render/Renderer.h"

namespace tarn {
namespace {

constexpr std::string_view kHead = "<head>";
constexpr std::string_view kMeta =
    "<meta http-equiv=Content-Type content=\"text/html; charset=utf-8\">";
static_assert(kMeta.size() == 65);

}  // namespace

int32_t EnsureHtmlCharsetMeta(char*& text, uint64_t& size) {
  if (text == nullptr) return StatusOk;
  if (FindBytes(text, text + size, "charset") != nullptr) return StatusOk;
  const char* const head = FindBytes(text, text + size, kHead);
  if (head == nullptr) return StatusOk;

  const uint64_t oldSize = size;
  const uint64_t offset = static_cast<uint64_t>(head - text) + kHead.size();
  const auto scratch = AllocateZeroBlock<char>(oldSize, TARN_HERE);
  if (!scratch) return StatusOutOfMemory;
  std::memcpy(scratch.get(), text, oldSize);
  KernelFree(text, TARN_HERE);
  text = nullptr;

  // The size counts one NUL behind the text, and the block has one more behind that.
  size = oldSize + kMeta.size() + 1;
  auto document = AllocateZeroBlock<char>(size + 1, TARN_HERE);
  if (!document) return StatusOutOfMemory;
  char* const meta = document.get() + offset;
  std::memcpy(document.get(), scratch.get(), offset);
  std::memcpy(meta, kMeta.data(), kMeta.size());
  std::memcpy(meta + kMeta.size(), scratch.get() + offset, oldSize - offset);
  text = document.take();
  return StatusOk;
}

}  // namespace tarn
