/* catching-shim.h - the filter's exports for hosts that cannot catch its exceptions: the same six
 * functions under names of their own, which always return.
 *
 * Arguments, results and ownership are those of TarnPst.h. An exception of the filter comes back as
 *
 *   StatusOutOfMemory  there was no memory
 *   StatusFailed       the store is damaged, or anything else; ShimWhat tells
 *
 * and has changed nothing in the records of the call but what the filter had set before it.
 */
#ifndef CATCHING_SHIM_H
#define CATCHING_SHIM_H

#include "TarnPst.h"

#if defined(_WIN32)
#if defined(CATCHING_SHIM_BUILD)
#define CATCHING_SHIM_API __declspec(dllexport)
#else
#define CATCHING_SHIM_API __declspec(dllimport)
#endif
#else
#define CATCHING_SHIM_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

CATCHING_SHIM_API int32_t ShimInfo(FilterInfoContext* context);
CATCHING_SHIM_API int32_t ShimLoad(FilterLoadContext* context);
CATCHING_SHIM_API int32_t ShimFreeData(void* data, int32_t value);
CATCHING_SHIM_API int32_t ShimGetAttachmentInfo(GetAttachmentInfoContext* context);
CATCHING_SHIM_API int32_t ShimExtractAttachment(ExtractAttachmentContext* context);
CATCHING_SHIM_API int64_t ShimTarnLoad(uint64_t a, uint64_t b, uint64_t c, uint64_t d);

/* The text of the last exception that a call of this thread met, cut to the room and terminated;
 * empty when there was none. Returns the bytes of the text, without the terminator. */
CATCHING_SHIM_API uint64_t ShimWhat(char* text, uint64_t room);

#ifdef __cplusplus
}
#endif

#endif
