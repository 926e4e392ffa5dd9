#include "Platform/posix/CodePageSpecs.h"

#include <algorithm>
#include <array>

namespace tarn::platform {
namespace {

// The tables of DOS pages follow the machine's convention for three control bytes; Windows does
// not.
constexpr Overlay kControls1A{0x1A, 1, 0x001A};
constexpr Overlay kControls1C{0x1C, 1, 0x001C};
constexpr Overlay kControls7F{0x7F, 1, 0x007F};
constexpr Overlay kMicroSign{0xE6, 1, 0x00B5, true};

constexpr Overlay kDos[] = {kControls1A, kControls1C, kControls7F};
constexpr Overlay kDosMicro[] = {kControls1A, kControls1C, kControls7F, kMicroSign};
constexpr Overlay kDos852[] = {kControls1A, kControls1C, kControls7F, {0xAA, 1, 0x00AC}};
constexpr Overlay kDos857[] = {kControls1A,       kControls1C,       kControls7F,
                               {0xD5, 1, 0xF8BB}, {0xE7, 1, 0xF8BC}, {0xF2, 1, 0xF8BD}};
constexpr Overlay kJapanese[] = {kControls1A,       kControls1C,       kControls7F,
                                 {0x80, 1, 0x0080}, {0xA0, 1, 0xF8F0}, {0xFD, 3, 0xF8F1}};
constexpr Overlay kGreek[] = {{0xAA, 1, 0xF8F9}, {0xD2, 1, 0xF8FA}, {0xFF, 1, 0xF8FB}};
constexpr Overlay kHebrew[] = {
    {0xCA, 1, 0x05BA}, {0xD9, 7, 0xF88D}, {0xFB, 2, 0xF894}, {0xFF, 1, 0xF896}};
constexpr Overlay kBaltic[] = {{0xA1, 1, 0xF8FC}, {0xA5, 1, 0xF8FD}};
constexpr Overlay kJohab[] = {
    {0x80, 4, 0x0080}, {0xD4, 4, 0xF8EC}, {0xDF, 1, 0xF8F0}, {0xFA, 6, 0xF8F1}};
constexpr Overlay kMacOhmSign[] = {{0xBD, 1, 0x2126}};
constexpr Overlay kMacGreek[] = {{0x9C, 1, 0x00AD}, {0xAF, 1, 0x0387}, {0xFF, 1, 0xF8A0}};
constexpr Overlay kMacCyrillic[] = {{0xA2, 1, 0x00A2}, {0xB6, 1, 0x2202}, {0xFF, 1, 0x00A4}};
// The high bit is dropped.
constexpr Overlay kAscii[] = {{0x80, 128, 0x0000}};
constexpr Overlay kUkrainian[] = {{0xAE, 1, 0x045E}, {0xBE, 1, 0x040E}};
constexpr Overlay kIsoLatin3[] = {{0xA5, 1, 0xF7F5}, {0xAE, 1, 0xF7F6}, {0xBE, 1, 0xF7F7},
                                  {0xC3, 1, 0xF7F8}, {0xD0, 1, 0xF7F9}, {0xE3, 1, 0xF7FA},
                                  {0xF0, 1, 0xF7FB}};
constexpr Overlay kIsoArabic[] = {{0xA1, 3, 0xF7C8}, {0xA5, 7, 0xF7CB}, {0xAE, 13, 0xF7D2},
                                  {0xBC, 3, 0xF7DF}, {0xC0, 1, 0xF7E2}, {0xDB, 5, 0xF7E3},
                                  {0xF3, 13, 0xF7E8}};
constexpr Overlay kIsoGreek[] = {{0xA1, 1, 0x02BD}, {0xA2, 1, 0x02BC}, {0xA4, 2, 0xF7C2},
                                 {0xAA, 1, 0xF7C4}, {0xAE, 1, 0xF7C5}, {0xD2, 1, 0xF7C6},
                                 {0xFF, 1, 0xF7C7}};
constexpr Overlay kIsoHebrew[] = {
    {0xA1, 1, 0xF79C}, {0xAF, 1, 0x203E}, {0xBF, 32, 0xF79D}, {0xFB, 5, 0xF7BD}};

constexpr LeadRange kJapaneseLeads[] = {{0x81, 0x9F}, {0xE0, 0xFC}};
constexpr LeadRange kEastAsianLeads[] = {{0x81, 0xFE}};
constexpr LeadRange kJohabLeads[] = {{0x84, 0xD3}, {0xD8, 0xDE}, {0xE0, 0xF9}};

// Best fit is on where the converter's one-way mappings are those of Windows, or a part of them,
// and off where they are others.
constexpr std::array<CodePageSpec, kCodePageCount> kSpecs = {{
    {437, "ibm-437_P100-1995", true, kDosMicro},
    {737, "ibm-737_P100-1997", true, kDos},
    {775, "ibm-775_P100-1996", true, kDos},
    {850, "ibm-850_P100-1995", true, kDos},
    {852, "ibm-852_P100-1995", true, kDos852},
    {855, "ibm-855_P100-1995", false, kDos},
    {857, "ibm-857_P100-1995", true, kDos857},
    {860, "ibm-860_P100-1995", false, kDosMicro},
    {861, "ibm-861_P100-1995", false, kDosMicro},
    {862, "ibm-862_P100-1995", true, kDosMicro},
    {863, "ibm-863_P100-1995", false, kDosMicro},
    {865, "ibm-865_P100-1995", false, kDosMicro},
    {866, "ibm-866_P100-1995", true, kDos},
    {874, "windows-874-2000", true},
    {932, "ibm-943_P15A-2003", false, kJapanese, kJapaneseLeads, u'\u30FB'},
    {936, "windows-936-2000", true, {}, kEastAsianLeads},
    {949, "windows-949-2000", true, {}, kEastAsianLeads},
    {950, "windows-950-2000", true, {}, kEastAsianLeads},
    {1250, "ibm-5346_P100-1998", true},
    {1251, "ibm-5347_P100-1998", true},
    {1252, "ibm-5348_P100-1997", true},
    {1253, "ibm-5349_P100-1998", true, kGreek},
    {1254, "ibm-5350_P100-1998", true},
    {1255, "ibm-9447_P100-2002", true, kHebrew},
    {1256, "ibm-9448_X100-2005", true},
    {1257, "ibm-9449_P100-2002", true, kBaltic},
    {1258, "ibm-5354_P100-1998", true},
    {kCodePageJohab, "windows-949-2000", false, kJohab, kJohabLeads},
    {10000, "macos-0_2-10.2", false, kMacOhmSign},
    {10006, "macos-6_2-10.4", false, kMacGreek},
    {10007, "macos-7_3-10.2", false, kMacCyrillic},
    {10029, "macos-29-10.2", false},
    {10081, "macos-35-10.2", false, kMacOhmSign},
    {20127, "US-ASCII", false, kAscii},
    {20866, "KOI8-R", false},
    {21866, "KOI8-U", false, kUkrainian},
    {28591, "ISO-8859-1", false},
    {28592, "ISO-8859-2", false},
    {28593, "ISO-8859-3", true, kIsoLatin3},
    {28594, "ISO-8859-4", true},
    {28595, "ISO-8859-5", true},
    {28596, "ISO-8859-6", false, kIsoArabic},
    {28597, "ISO-8859-7", false, kIsoGreek},
    {28598, "ISO-8859-8", false, kIsoHebrew},
    {28599, "ISO-8859-9", true},
    {28603, "ISO-8859-13", true},
    {28605, "ISO-8859-15", true},
}};

consteval bool HaveRisingNumbers() {
  for (size_t at = 1; at < kSpecs.size(); ++at) {
    if (kSpecs[at - 1].number >= kSpecs[at].number) return false;
  }
  return true;
}
static_assert(HaveRisingNumbers());

}  // namespace

std::span<const CodePageSpec, kCodePageCount> AllCodePageSpecs() noexcept { return kSpecs; }

size_t FindCodePageSpec(uint32_t number) noexcept {
  const auto found = std::lower_bound(
      kSpecs.begin(), kSpecs.end(), number,
      [](const CodePageSpec& spec, uint32_t wanted) { return spec.number < wanted; });
  if (found == kSpecs.end() || found->number != number) return kCodePageCount;
  return static_cast<size_t>(found - kSpecs.begin());
}

}  // namespace tarn::platform
