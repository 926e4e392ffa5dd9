#include "FileFormats/Pst/DetectFormat.h"

#include <string_view>

#include "Tarnbase/Kernel.h"

namespace tarn {
namespace {

constexpr uint32_t kSniffBytes = 12;
constexpr std::string_view kPstMagic = "!BDN";
constexpr std::string_view kCompoundMagic = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";

}  // namespace

Status DetectFormat(uint64_t handle, TarnFormat& format) {
  char bytes[kSniffBytes];
  if (KernelFileSeek(handle, 0, KERNEL_SEEK_START) != 0) return StatusReadFailed;
  if (KernelFileRead(handle, bytes, kSniffBytes) != kSniffBytes) return StatusReadFailed;

  const std::string_view head(bytes, kSniffBytes);
  if (head.starts_with(kPstMagic)) {
    format = FormatPst;
  } else if (head.starts_with(kCompoundMagic)) {
    format = FormatMsg;
  } else {
    format = FormatEml;
  }
  return StatusOk;
}

}  // namespace tarn
