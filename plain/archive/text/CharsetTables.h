// CharsetTables.h - the names of charsets and the code pages that they mean, and ICU's tables for
// those.
#ifndef TARN_ARCHIVE_CHARSETTABLES_H
#define TARN_ARCHIVE_CHARSETTABLES_H

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace tarn::archive {

// What mails mean by a name, where ICU's own reading is a smaller set, or none.
struct CharsetAlias {
  std::string_view name;
  uint32_t codePage;
};

inline constexpr CharsetAlias kCharsetAliases[] = {
    {"big5", 950},
    {"cn-big5", 950},
    {"csbig5", 950},
    {"cseuckr", 949},
    {"csgb2312", 54936},
    {"csiso2022jp", 50220},
    {"csisolatin1", 1252},
    {"csisolatin5", 1254},
    {"csksc56011987", 949},
    {"csshiftjis", 932},
    {"dos-720", 720},
    {"euc-cn", 54936},
    {"euc-kr", 949},
    {"euckr", 949},
    {"gb2312", 54936},
    {"gb2312-80", 54936},
    {"gb-2312", 54936},
    {"gb_2312-80", 54936},
    {"gbk", 54936},
    {"iso-2022-jp", 50220},
    {"iso-2022-jp-1", 50220},
    {"iso-2022-jp-ms", 50220},
    {"iso-8859-1", 1252},
    {"iso-8859-11", 874},
    {"iso-8859-6-e", 28596},
    {"iso-8859-6-i", 28596},
    {"iso-8859-8-e", 28598},
    {"iso-8859-8-i", 28598},
    {"iso-8859-9", 1254},
    {"iso8859-1", 1252},
    {"iso8859-9", 1254},
    {"iso_8859-1", 1252},
    {"iso_8859-9", 1254},
    {"johab", 1361},
    {"koi8", 20866},
    {"ks_c_5601", 949},
    {"ks_c_5601-1987", 949},
    {"ks_c_5601-1989", 949},
    {"ksc_5601", 949},
    {"ksc5601", 949},
    {"l1", 1252},
    {"latin-1", 1252},
    {"latin1", 1252},
    {"latin5", 1254},
    {"mac", 10000},
    {"macintosh", 10000},
    {"ms_kanji", 932},
    {"shift-jis", 932},
    {"shift_jis", 932},
    {"shiftjis", 932},
    {"sjis", 932},
    {"tis-620", 874},

    {"unicode-1-1-utf-7", 65000},
    {"unicode-1-1-utf-8", 65001},
    {"unicodefffe", 1201},

    {"utf-16be", 1201},
    {"utf-16le", 1200},
    {"utf-7", 65000},
    {"utf-8", 65001},

    {"utf7", 65000},
    {"utf8", 65001},
    {"windows-31j", 932},
    {"x-euc", 51932},
    {"x-gbk", 54936},
    {"x-mac-roman", 10000},
    {"x-sjis", 932},
    {"x-utf-8", 65001},
};

inline constexpr const char* kShiftJis = "ibm-943_P15A-2003";

// UTF-16 in an order that only the bytes tell.
inline constexpr std::string_view kUtf16Names[] = {"ucs-2", "unicode", "utf-16", "utf16"};

// The exact tables, sorted: the short aliases of ICU open others.
struct CodePageTable {
  uint32_t codePage;
  const char* table;
};

inline constexpr CodePageTable kCodePageTables[] = {
    {437, "ibm-437_P100-1995"},
    {720, "ibm-720_P100-1997"},
    {737, "ibm-737_P100-1997"},
    {775, "ibm-775_P100-1996"},
    {819, "ibm-5348_P100-1997"},
    {850, "ibm-850_P100-1995"},
    {852, "ibm-852_P100-1995"},
    {855, "ibm-855_P100-1995"},
    {857, "ibm-857_P100-1995"},
    {858, "ibm-858_P100-1997"},
    {860, "ibm-860_P100-1995"},
    {861, "ibm-861_P100-1995"},
    {862, "ibm-862_P100-1995"},
    {863, "ibm-863_P100-1995"},
    {864, "ibm-864_X110-1999"},
    {865, "ibm-865_P100-1995"},
    {866, "ibm-866_P100-1995"},
    {869, "ibm-869_P100-1995"},
    {874, "windows-874-2000"},
    {932, kShiftJis},
    {936, "windows-936-2000"},
    {949, "windows-949-2000"},
    {950, "windows-950-2000"},
    {1250, "ibm-5346_P100-1998"},
    {1251, "ibm-5347_P100-1998"},
    {1252, "ibm-5348_P100-1997"},
    {1253, "ibm-5349_P100-1998"},
    {1254, "ibm-5350_P100-1998"},
    {1255, "ibm-9447_P100-2002"},
    {1256, "ibm-9448_X100-2005"},
    {1257, "ibm-9449_P100-2002"},
    {1258, "ibm-5354_P100-1998"},
    {10000, "macos-0_2-10.2"},
    {10006, "macos-6_2-10.4"},
    {10007, "macos-7_3-10.2"},
    {10029, "macos-29-10.2"},
    {10081, "macos-35-10.2"},
    {12000, "UTF-32LE"},
    {12001, "UTF-32BE"},
    {20127, "ibm-5348_P100-1997"},
    {20866, "KOI8-R"},
    {20932, "EUC-JP"},
    {20936, "gb18030"},
    {20949, "windows-949-2000"},
    {21866, "KOI8-U"},
    {28591, "ibm-5348_P100-1997"},
    {28592, "ISO-8859-2"},
    {28593, "ISO-8859-3"},
    {28594, "ISO-8859-4"},
    {28595, "ISO-8859-5"},
    {28596, "ISO-8859-6"},
    {28597, "ISO-8859-7"},
    {28598, "ISO-8859-8"},
    {28599, "ibm-5350_P100-1998"},
    {28603, "ISO-8859-13"},
    {28605, "ISO-8859-15"},
    {38598, "ISO-8859-8"},
    {50225, "ISO-2022-KR"},
    {50227, "ISO-2022-CN"},
    {51932, "EUC-JP"},
    {51936, "gb18030"},
    {51949, "windows-949-2000"},
    {52936, "HZ"},
    {54936, "gb18030"},
    {65000, "UTF-7"},
};

consteval bool HaveRisingNumbers() {
  for (size_t at = 1; at < std::size(kCodePageTables); ++at) {
    if (kCodePageTables[at - 1].codePage >= kCodePageTables[at].codePage) return false;
  }
  return true;
}
static_assert(HaveRisingNumbers());

}  // namespace tarn::archive

#endif
