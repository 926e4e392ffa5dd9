// TnefOldValues.h - attributes that are older than lists of properties (MS-OXTNEF 2.1.3.3), as
// properties. They count where the list does not have the property.
#ifndef TARN_ARCHIVE_TNEFOLDVALUES_H
#define TARN_ARCHIVE_TNEFOLDVALUES_H

#include "archive/tnef/TnefAttributes.h"
#include "archive/tnef/TnefProperties.h"

namespace tarn::archive::tnef {

// One of a message. An attribute that no field of an item is made of adds nothing.
void AddMessageValue(const Attribute& attribute, TnefProperties& properties);

// One of an attachment, the rendering apart.
void AddAttachmentValue(const Attribute& attribute, TnefProperties& properties);

// What the attribute that begins an attachment tells.
struct Rendering {
  bool isOle = false;
};
Rendering ReadRendering(std::string_view bytes);

}  // namespace tarn::archive::tnef

#endif
