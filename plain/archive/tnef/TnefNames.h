// TnefNames.h - the ids of a message's named properties.
#ifndef TARN_ARCHIVE_TNEFNAMES_H
#define TARN_ARCHIVE_TNEFNAMES_H

#include <cstdint>
#include <map>
#include <optional>
#include <utility>

#include "archive/mapi/MapiMessage.h"

namespace tarn::archive::tnef {

// TNEF has the name with every property and promises nothing of the ids. A name keeps the id that
// it comes with unless another name has it.
class TnefNames {
 public:
  // None once all ids are taken.
  std::optional<uint16_t> add(uint16_t id, const mapi::PropertyName& name);

  std::optional<uint16_t> idOf(const mapi::PropertyName& name) const;
  std::optional<mapi::PropertyName> nameOf(uint16_t id) const;

 private:
  struct Less {
    bool operator()(const mapi::PropertyName& left, const mapi::PropertyName& right) const;
  };

  std::map<mapi::PropertyName, uint16_t, Less> ids_;
  std::map<uint16_t, mapi::PropertyName> names_;
  uint32_t nextFree_ = 0x8000;
};

}  // namespace tarn::archive::tnef

#endif
