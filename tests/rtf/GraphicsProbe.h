// GraphicsProbe.h - sees, and may refuse, the device contexts and fonts that code under test makes.
//
// RtfTests links doubles of KernelCreateDC and KernelCreateFont before the kernel's; without a
// probe they hand every call on.
#ifndef TARN_TESTS_RTF_GRAPHICSPROBE_H
#define TARN_TESTS_RTF_GRAPHICSPROBE_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace tarn::test {

inline constexpr size_t kLogFontSize = 92;
using LogFontBytes = std::array<uint8_t, kLogFontSize>;

// Sees what is made while it lives. One at a time.
class GraphicsProbe {
 public:
  GraphicsProbe();
  GraphicsProbe(const GraphicsProbe&) = delete;
  GraphicsProbe& operator=(const GraphicsProbe&) = delete;
  ~GraphicsProbe();

  uint64_t contexts = 0;            // asked for so far
  std::vector<LogFontBytes> fonts;  // the records of those asked for so far
  bool refusesContexts = false;     // the next ones are null
  size_t refusedFont = 0;           // the one of that ordinal is null; 0: none

  // The face names of `fonts`, up to their NULs.
  std::vector<std::u16string> faceNames() const;
};

}  // namespace tarn::test

#endif
