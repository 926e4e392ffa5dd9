// AttachmentBlock.h - the answer of fltGetAttachmentInfo, as its host treats it.
#ifndef TARN_TESTS_SUPPORT_ROAD_ATTACHMENTBLOCK_H
#define TARN_TESTS_SUPPORT_ROAD_ATTACHMENTBLOCK_H

#include "TarnPst.h"

namespace tarn::test {

// Frees all that the block owns, and the block; null is fine.
void FreeAttachmentBlock(AttachmentInfoBlock* block);

}  // namespace tarn::test

#endif
