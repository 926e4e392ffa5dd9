// Frame.h - the exports as the library's own functions; TarnPst.h says what each does.
#ifndef TARN_FILEFORMATS_PST_FRAME_H
#define TARN_FILEFORMATS_PST_FRAME_H

#include "TarnPst.h"

namespace tarn {

int32_t FilterInfo(FilterInfoContext* context);
int32_t FilterLoad(FilterLoadContext* context);
int32_t FreeFilterData(void* data, int32_t value);
int32_t GetAttachmentInfo(GetAttachmentInfoContext* context);
int32_t ExtractAttachment(ExtractAttachmentContext* context);

}  // namespace tarn

#endif
