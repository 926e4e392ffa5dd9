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

Status EnsureHtmlCharsetMeta(TrackedBuffer<char>& document) {
  const std::string_view text = document.view();
  if (text.data() == nullptr) return StatusOk;
  if (FindBytes(text, "charset") != std::string_view::npos) return StatusOk;
  const size_t head = FindBytes(text, kHead);
  if (head == std::string_view::npos) return StatusOk;

  const uint64_t oldSize = text.size();
  const uint64_t offset = head + kHead.size();
  const auto scratch = AllocateZeroBlock<char>(oldSize, TARN_HERE);
  if (!scratch) return StatusOutOfMemory;
  std::memcpy(scratch.get(), text.data(), oldSize);
  document.replaceBlock({}, 0, 0);

  // The size counts one NUL after the text, and the block has one more after that.
  const uint64_t size = oldSize + kMeta.size() + 1;
  auto made = AllocateZeroBlock<char>(size + 1, TARN_HERE);
  if (!made) return StatusOutOfMemory;
  char* const meta = made.get() + offset;
  std::memcpy(made.get(), scratch.get(), offset);
  std::memcpy(meta, kMeta.data(), kMeta.size());
  std::memcpy(meta + kMeta.size(), scratch.get() + offset, oldSize - offset);
  document.replaceBlock(std::move(made), size, size + 1);
  return StatusOk;
}

}  // namespace tarn
