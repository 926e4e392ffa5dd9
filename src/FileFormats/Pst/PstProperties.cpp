#include "FileFormats/Pst/PstProperties.h"

#include <stdexcept>

#include "FileFormats/Pst/PstStreams.h"
#include "FileFormats/Pst/StoreLimits.h"
#include "pststore/PropertyBag.h"

namespace tarn {

Status ReadText(const pststore::property_bag& properties, MessageProperty id, uint64_t& textLeft,
                pststore::wstring& text) {
  if (!TakeFrom(textLeft, TextBytes(properties, id))) return StatusOutOfMemory;
  text = properties.read_prop<pststore::wstring>(id);
  return StatusOk;
}

// The marker is the character 1 and one that tells the length of a prefix.
Status ReadSubject(const pststore::property_bag& properties, uint64_t& textLeft,
                   pststore::wstring& subject) {
  if (!properties.prop_exists(PR_SUBJECT)) {
    subject = u"No Subject";
    return StatusOk;
  }
  const Status status = ReadText(properties, PR_SUBJECT, textLeft, subject);
  if (status.ok() && !subject.empty() && subject.front() == u'\1') {
    if (subject.size() < 2) throw std::out_of_range("subject marker without its second character");
    subject.erase(0, 2);
  }
  return status;
}

}  // namespace tarn
