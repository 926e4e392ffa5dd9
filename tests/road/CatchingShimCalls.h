/* CatchingShimCalls.h - calls of the shim from C. */
#ifndef TARN_TESTS_ROAD_CATCHINGSHIMCALLS_H
#define TARN_TESTS_ROAD_CATCHINGSHIMCALLS_H

#include "catching-shim.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The result of listing the attachments of the first message; frees nothing, for files without. */
int32_t ListFromC(const char16_t* path);

/* The result of extracting the first attachment. */
int32_t ExtractFromC(const char16_t* path);

#ifdef __cplusplus
}
#endif

#endif
