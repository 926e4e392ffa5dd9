#include "archive/mapi/CodePageNames.h"

#include <algorithm>
#include <iterator>

namespace tarn::archive::mapi {
namespace {

struct NamedPage {
  uint32_t number;
  std::string_view charset;
};

// In the order of their numbers.
constexpr NamedPage kPages[] = {{437, "ibm437"},
                                {708, "iso-8859-6"},
                                {737, "cp737"},
                                {775, "ibm775"},
                                {850, "ibm850"},
                                {852, "ibm852"},
                                {855, "ibm855"},
                                {857, "ibm857"},
                                {858, "ibm00858"},
                                {860, "ibm860"},
                                {861, "ibm861"},
                                {862, "ibm862"},
                                {863, "ibm863"},
                                {864, "ibm864"},
                                {865, "ibm865"},
                                {866, "ibm866"},
                                {869, "ibm869"},
                                {874, "windows-874"},
                                {932, "shift_jis"},
                                {936, "gbk"},
                                {949, "ks_c_5601-1987"},
                                {950, "big5"},
                                {1200, "utf-16le"},
                                {1201, "utf-16be"},
                                {1250, "windows-1250"},
                                {1251, "windows-1251"},
                                {1252, "windows-1252"},
                                {1253, "windows-1253"},
                                {1254, "windows-1254"},
                                {1255, "windows-1255"},
                                {1256, "windows-1256"},
                                {1257, "windows-1257"},
                                {1258, "windows-1258"},
                                {10000, "macintosh"},
                                {10007, "x-mac-cyrillic"},
                                {12000, "utf-32le"},
                                {12001, "utf-32be"},
                                {20127, "us-ascii"},
                                {20866, "koi8-r"},
                                {20932, "euc-jp"},
                                {20936, "gb2312"},
                                {21866, "koi8-u"},
                                {28591, "iso-8859-1"},
                                {28592, "iso-8859-2"},
                                {28593, "iso-8859-3"},
                                {28594, "iso-8859-4"},
                                {28595, "iso-8859-5"},
                                {28596, "iso-8859-6"},
                                {28597, "iso-8859-7"},
                                {28598, "iso-8859-8"},
                                {28599, "iso-8859-9"},
                                {28600, "iso-8859-10"},
                                {28603, "iso-8859-13"},
                                {28604, "iso-8859-14"},
                                {28605, "iso-8859-15"},
                                {28606, "iso-8859-16"},
                                {38596, "iso-8859-6"},
                                {38598, "iso-8859-8-i"},
                                {50220, "iso-2022-jp"},
                                {50221, "iso-2022-jp"},
                                {50222, "iso-2022-jp"},
                                {50225, "iso-2022-kr"},
                                {51932, "euc-jp"},
                                {51936, "gb2312"},
                                {51949, "euc-kr"},
                                {51950, "big5"},
                                {52936, "hz-gb-2312"},
                                {54936, "gb18030"},
                                {65000, "utf-7"},
                                {65001, "utf-8"}};

constexpr bool Before(const NamedPage& left, const NamedPage& right) {
  return left.number < right.number;
}

static_assert(std::is_sorted(std::begin(kPages), std::end(kPages), Before));

}  // namespace

std::string_view CharsetOfCodePage(uint32_t codePage) {
  const NamedPage* const end = std::end(kPages);
  const NamedPage* const at =
      std::lower_bound(std::begin(kPages), end, NamedPage{codePage, {}}, Before);
  return at != end && at->number == codePage ? at->charset : std::string_view();
}

}  // namespace tarn::archive::mapi
