#include "Common/ApiUtils.h"

#include <algorithm>

namespace tarn {

uint64_t WideLength(const char16_t* text) { return std::u16string_view(text).size(); }

bool ConvertToWide(std::string_view utf8, std::span<char16_t> room) {
  std::fill(room.begin(), room.end(), u'\0');
  return utf8.empty() || KernelUtf8ToWide(utf8.data(), static_cast<int64_t>(utf8.size()),
                                          room.data(), static_cast<int64_t>(room.size())) != 0;
}

uint64_t ConvertToUtf8(std::u16string_view wide, std::span<char> room) {
  const int64_t written = KernelWideToUtf8(wide.data(), static_cast<int64_t>(wide.size()),
                                           room.data(), static_cast<int64_t>(room.size()));
  return static_cast<uint64_t>(std::max<int64_t>(written, 0));
}

WideText::WideText(const char* utf8) {
  if (utf8 == nullptr || *utf8 == '\0') {
    text_ = u"";
    return;
  }
  const uint64_t bytes = std::strlen(utf8) + 1;
  const uint64_t units = 4 * bytes;
  block_.reset(static_cast<char16_t*>(KernelRealloc(nullptr, units * sizeof(char16_t), TARN_HERE)));
  if (!block_) {
    status_ = StatusOutOfMemory;
    return;
  }
  if (KernelUtf8ToWide(utf8, static_cast<int64_t>(bytes), block_.get(),
                       static_cast<int64_t>(units)) == 0) {
    status_ = StatusPathFromUtf8Failed;
    return;
  }
  text_ = block_.get();
}

Utf8Text::Utf8Text(const char16_t* wide) {
  if (wide == nullptr || *wide == u'\0') {
    text_ = "";
    return;
  }
  const uint64_t units = WideLength(wide) + 1;
  const uint64_t bytes = 4 * units;
  block_.reset(static_cast<char*>(KernelRealloc(nullptr, bytes, TARN_HERE)));
  if (!block_) {
    status_ = StatusOutOfMemory;
    return;
  }
  if (ConvertToUtf8({wide, units}, {block_.get(), bytes}) == 0) {
    status_ = StatusPathToUtf8Failed;
    return;
  }
  text_ = block_.get();
}

void FileGuard::close() {
  if (!isOpen()) return;
  if (mode_ == Raw) {
    KernelRawFileClose(handle_, 0);
  } else {
    KernelFileClose(handle_);
  }
  handle_ = KERNEL_BAD_HANDLE;
}

void MemoryFileGuard::open(void* state, void** block) {
  end();
  state_ = state;
  open_ = true;
  block_ = block;
  opened_ = block == nullptr ? nullptr : *block;
  length_ = 0;
  capacity_ = 0;
}

void MemoryFileGuard::end() {
  if (!open_) return;
  open_ = false;
  if (block_ == nullptr || *block_ != opened_) {
    KernelMemFileClose(state_, nullptr, nullptr, nullptr);
    return;
  }
  void* block = opened_;
  if (KernelMemFileClose(state_, &block, &length_, &capacity_) != StatusOk) return;
  if (block != opened_) *block_ = block;
}

}  // namespace tarn
