// CharsetCodePages.h - the charsets of RTF's "\fcharset" with their code pages.
#ifndef TARN_RTF_CHARSETCODEPAGES_H
#define TARN_RTF_CHARSETCODEPAGES_H

#include <array>
#include <cstdint>

namespace tarn {

struct CharsetCodePage {
  uint32_t charset;
  uint32_t codePage;
  bool forText;  // FindCodePageForText may try the code page
};

// Sorted by charset; the order is also the order in which code pages are tried.
inline constexpr std::array<CharsetCodePage, 35> CharsetCodePageTable = {{
    {0, 1252, true},    {1, 0, false},      {2, 42, true},      {77, 10000, false},
    {78, 10001, false}, {79, 10003, false}, {80, 10008, false}, {81, 10002, false},
    {82, 1361, false},  {83, 10005, false}, {84, 10004, false}, {85, 10006, false},
    {86, 10081, false}, {87, 10021, false}, {88, 10029, false}, {89, 10007, false},
    {128, 932, true},   {129, 949, true},   {130, 1361, true},  {134, 936, false},
    {136, 950, false},  {161, 1253, true},  {162, 1254, true},  {163, 1258, true},
    {177, 1255, true},  {178, 1256, true},  {179, 1256, false}, {180, 1256, false},
    {181, 1255, false}, {186, 1257, true},  {204, 1251, true},  {222, 874, true},
    {238, 1250, true},  {254, 437, false},  {255, 850, false},
}};

}  // namespace tarn

#endif
