/* TarnPstLayout.h - proves, wherever TarnPst.h is compiled, that its records have the offsets and
 * sizes that the interface fixes. Nothing in it is for hosts to use.
 */
#ifndef TARNPST_LAYOUT_H
#define TARNPST_LAYOUT_H

#include "TarnPst.h"

#define TARN_OFFSET(record, field, offset) \
  static_assert(offsetof(record, field) == (offset), #record "." #field)
#define TARN_SIZE(record, bytes) static_assert(sizeof(record) == (bytes), #record)

TARN_SIZE(void*, 8);

TARN_OFFSET(HostFileInfo, size, 0);
TARN_OFFSET(HostFileInfo, format, 4);
TARN_OFFSET(HostFileInfo, width, 1032);
TARN_OFFSET(HostFileInfo, height, 1036);
TARN_OFFSET(HostFileInfo, depth, 1040);
TARN_OFFSET(HostFileInfo, dataSize, 1052);
TARN_OFFSET(HostFileInfo, answered1104, 1104);
TARN_OFFSET(HostFileInfo, pageNumber, 1108);
TARN_OFFSET(HostFileInfo, pageCount, 1112);
TARN_OFFSET(HostFileInfo, xResolution, 1116);
TARN_OFFSET(HostFileInfo, yResolution, 1120);
TARN_OFFSET(HostFileInfo, flags, 1124);
TARN_OFFSET(HostFileInfo, answered2188, 2188);
TARN_OFFSET(HostFileInfo, widthInches, 2192);
TARN_OFFSET(HostFileInfo, heightInches, 2200);
TARN_OFFSET(HostFileInfo, answered2208, 2208);
TARN_OFFSET(HostFileInfo, messageCount, 2280);
TARN_OFFSET(HostFileInfo, siblingData, 2292);
TARN_OFFSET(HostFileInfo, siblingDataSize, 2300);
TARN_OFFSET(HostFileInfo, siblingDataFormat, 2308);
TARN_OFFSET(HostFileInfo, attachmentCount, 2312);
TARN_SIZE(HostFileInfo, 2316);

TARN_OFFSET(HostLoadOptions, size, 0);
TARN_OFFSET(HostLoadOptions, pageNumber, 20);
TARN_OFFSET(HostLoadOptions, flags, 56);
TARN_OFFSET(HostLoadOptions, data, 60);
TARN_OFFSET(HostLoadOptions, dataSize, 68);
TARN_OFFSET(HostLoadOptions, dataFormat, 76);
TARN_OFFSET(HostLoadOptions, lastWord, 80);
TARN_SIZE(HostLoadOptions, 84);

TARN_OFFSET(FilterDataSlot, data, 12);
TARN_OFFSET(FilterDataSlot, defaultFormat, 24);
TARN_OFFSET(FilterDataSlot, dataSize, 56);
TARN_OFFSET(FilterDataSlot, dataFormat, 64);
TARN_SIZE(FilterDataSlot, 68);

TARN_OFFSET(FilterDataEntry, data, 0);
TARN_OFFSET(FilterDataEntry, size, 8);
TARN_OFFSET(FilterDataEntry, format, 16);
TARN_OFFSET(FilterDataEntry, flags, 20);
TARN_SIZE(FilterDataEntry, 24);

TARN_OFFSET(FilterDataList, signature, 0);
TARN_OFFSET(FilterDataList, count, 4);
TARN_OFFSET(FilterDataList, size, 8);
TARN_OFFSET(FilterDataList, entries, 16);
TARN_SIZE(FilterDataList, 40);

TARN_OFFSET(HostRasterOptions, xResolution, 56);
TARN_OFFSET(HostRasterOptions, yResolution, 60);
TARN_SIZE(HostRasterOptions, 68);

TARN_OFFSET(FilterInfoContext, path, 0);
TARN_OFFSET(FilterInfoContext, handle, 12);
TARN_OFFSET(FilterInfoContext, info, 20);
TARN_OFFSET(FilterInfoContext, slot, 28);
TARN_OFFSET(FilterInfoContext, options, 56);
TARN_OFFSET(FilterInfoContext, infoByName, 856);
TARN_OFFSET(FilterInfoContext, infoFromMemory, 888);
TARN_OFFSET(FilterInfoContext, raster, 948);
TARN_OFFSET(FilterInfoContext, messageNumber, 1124);
TARN_OFFSET(FilterInfoContext, textOnly, 1128);
TARN_OFFSET(FilterInfoContext, siblingResult, 1368);
TARN_SIZE(FilterInfoContext, 1372);

TARN_OFFSET(FilterLoadContext, path, 0);
TARN_OFFSET(FilterLoadContext, bitmap, 8);
TARN_OFFSET(FilterLoadContext, callback, 20);
TARN_OFFSET(FilterLoadContext, userValue, 28);
TARN_OFFSET(FilterLoadContext, info, 72);
TARN_OFFSET(FilterLoadContext, slot, 80);
TARN_OFFSET(FilterLoadContext, options, 2000);
TARN_OFFSET(FilterLoadContext, status, 2028);
TARN_OFFSET(FilterLoadContext, messageNumber, 2344);
TARN_OFFSET(FilterLoadContext, textOnly, 2348);
TARN_OFFSET(FilterLoadContext, opaque, 2352);
TARN_OFFSET(FilterLoadContext, target, 2360);
TARN_OFFSET(FilterLoadContext, loadByName, 2376);
TARN_OFFSET(FilterLoadContext, loadFromMemory, 2384);
TARN_OFFSET(FilterLoadContext, targetByName, 2620);
TARN_OFFSET(FilterLoadContext, targetFromMemory, 2628);
TARN_SIZE(FilterLoadContext, 2636);

TARN_OFFSET(AttachmentOptions, messageNumber, 4);
TARN_SIZE(AttachmentOptions, 8);

TARN_OFFSET(AttachmentProperty, name, 0);
TARN_OFFSET(AttachmentProperty, value, 256);
TARN_SIZE(AttachmentProperty, 512);

TARN_OFFSET(AttachmentInfoItem, number, 0);
TARN_OFFSET(AttachmentInfoItem, name, 8);
TARN_OFFSET(AttachmentInfoItem, reserved0, 16);
TARN_OFFSET(AttachmentInfoItem, description, 24);
TARN_OFFSET(AttachmentInfoItem, size, 32);
TARN_OFFSET(AttachmentInfoItem, creationTime, 40);
TARN_OFFSET(AttachmentInfoItem, modificationTime, 48);
TARN_OFFSET(AttachmentInfoItem, propertyCount, 56);
TARN_OFFSET(AttachmentInfoItem, properties, 64);
TARN_OFFSET(AttachmentInfoItem, reserved1, 72);
TARN_OFFSET(AttachmentInfoItem, reserved2, 80);
TARN_SIZE(AttachmentInfoItem, 88);

TARN_OFFSET(AttachmentInfoBlock, reserved0, 0);
TARN_OFFSET(AttachmentInfoBlock, format, 4);
TARN_OFFSET(AttachmentInfoBlock, reserved1, 8);
TARN_OFFSET(AttachmentInfoBlock, itemSize, 12);
TARN_OFFSET(AttachmentInfoBlock, itemCount, 16);
TARN_OFFSET(AttachmentInfoBlock, items, 24);
TARN_SIZE(AttachmentInfoBlock, 32);

TARN_OFFSET(GetAttachmentInfoContext, path, 8);
TARN_OFFSET(GetAttachmentInfoContext, block, 40);
TARN_OFFSET(GetAttachmentInfoContext, options, 60);
TARN_SIZE(GetAttachmentInfoContext, 68);

TARN_OFFSET(ExtractAttachmentContext, path, 8);
TARN_OFFSET(ExtractAttachmentContext, attachmentNumber, 40);
TARN_OFFSET(ExtractAttachmentContext, outputPath, 48);
TARN_OFFSET(ExtractAttachmentContext, data, 56);
TARN_OFFSET(ExtractAttachmentContext, size, 64);
TARN_OFFSET(ExtractAttachmentContext, options, 84);
TARN_SIZE(ExtractAttachmentContext, 92);

#undef TARN_OFFSET
#undef TARN_SIZE

#endif
