/* StatusTextInC.h - what a C host gets of the header's inline function. */
#ifndef TARN_TESTS_ROAD_STATUSTEXTINC_H
#define TARN_TESTS_ROAD_STATUSTEXTINC_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

const char* StatusTextFromC(int32_t status);

#ifdef __cplusplus
}
#endif

#endif
