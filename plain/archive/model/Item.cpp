#include "archive/model/Item.h"

namespace tarn::archive {

std::string_view NameOf(AttachmentKind kind) {
  switch (kind) {
    case AttachmentKind::Item:
      return "item";
    case AttachmentKind::Ole:
      return "ole";
    case AttachmentKind::Reference:
      return "reference";
    case AttachmentKind::Signature:
      return "signature";
    case AttachmentKind::Data:
      break;
  }
  return "data";
}

}  // namespace tarn::archive
