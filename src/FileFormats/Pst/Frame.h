// Frame.h - the exports as the library's own functions: fltInfo, fltLoad, fltFreeData,
// fltGetAttachmentInfo and fltExtractAttachment of TarnPst.h, which has their outcomes.
#ifndef TARN_FILEFORMATS_PST_FRAME_H
#define TARN_FILEFORMATS_PST_FRAME_H

#include "Internal/Status.h"

namespace tarn {

Status FilterInfo(FilterInfoContext* context);
Status FilterLoad(FilterLoadContext* context);
Status FreeFilterData(void* data, int32_t value);
Status GetAttachmentInfo(GetAttachmentInfoContext* context);
Status ExtractAttachment(ExtractAttachmentContext* context);

}  // namespace tarn

#endif
