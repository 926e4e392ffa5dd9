// The text conversions as the filter calls them.
#include "Faults.h"
#include "Platform/Characters.h"
#include "Platform/Utf8.h"
#include "Tarnbase/Kernel.h"
#include "Utf8.h"

namespace tarn::kernel {
namespace {

template <typename From, typename To>
int64_t Converted(size_t (*convert)(std::basic_string_view<From>, std::span<To>),
                  const From* source, int64_t sourceUnits, To* destination, int64_t room) {
  if (FaultDue(PlainKernelFaultText) || source == nullptr || destination == nullptr ||
      sourceUnits <= 0 || room <= 0) {
    return 0;
  }
  return static_cast<int64_t>(convert({source, static_cast<size_t>(sourceUnits)},
                                      {destination, static_cast<size_t>(room)}));
}

}  // namespace
}  // namespace tarn::kernel

using namespace tarn;

int64_t KernelWideToUtf8(const char16_t* source, int64_t units, char* destination, int64_t bytes) {
  return kernel::Converted(&kernel::EncodeUtf8, source, units, destination, bytes);
}

int64_t KernelUtf8ToWide(const char* source, int64_t bytes, char16_t* destination, int64_t units) {
  return kernel::Converted(&kernel::DecodeUtf8, source, bytes, destination, units);
}

const char16_t* KernelNextChar(const char16_t* position, int64_t unitsLeft) {
  if (position == nullptr || unitsLeft <= 0) return position;
  std::u16string_view text(position, static_cast<size_t>(unitsLeft));
  text.remove_prefix(platform::FirstCharacter(text).size);
  while (!text.empty()) {
    const platform::Character next = platform::FirstCharacter(text);
    if (!platform::IsCombiningMark(next.codePoint)) break;
    text.remove_prefix(next.size);
  }
  return text.data();
}
