// CharsetCodePages.h - the charsets of RTF's "\fcharset" with their code pages.
#ifndef TARN_RTF_CHARSETCODEPAGES_H
#define TARN_RTF_CHARSETCODEPAGES_H

#include <array>
#include <cstdint>

namespace tarn {

struct CharsetCodePage {
  uint32_t charset;
  uint32_t codePage;
  uint32_t forText;  // 1: FindCodePageForText may try the code page
};

// Sorted by charset; the order is also the order in which code pages are tried.
inline constexpr std::array<CharsetCodePage, 35> CharsetCodePageTable = {{
    {0, 1252, 1},   {1, 0, 0},      {2, 42, 1},     {77, 10000, 0}, {78, 10001, 0}, {79, 10003, 0},
    {80, 10008, 0}, {81, 10002, 0}, {82, 1361, 0},  {83, 10005, 0}, {84, 10004, 0}, {85, 10006, 0},
    {86, 10081, 0}, {87, 10021, 0}, {88, 10029, 0}, {89, 10007, 0}, {128, 932, 1},  {129, 949, 1},
    {130, 1361, 1}, {134, 936, 0},  {136, 950, 0},  {161, 1253, 1}, {162, 1254, 1}, {163, 1258, 1},
    {177, 1255, 1}, {178, 1256, 1}, {179, 1256, 0}, {180, 1256, 0}, {181, 1255, 0}, {186, 1257, 1},
    {204, 1251, 1}, {222, 874, 1},  {238, 1250, 1}, {254, 437, 0},  {255, 850, 0},
}};

}  // namespace tarn

#endif
