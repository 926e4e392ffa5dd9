// ArchiveItem.h - reads all that an item has, with all items in it.
#ifndef TARN_FUZZ_ARCHIVEITEM_H
#define TARN_FUZZ_ARCHIVEITEM_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "archive/mapi/MapiMessage.h"
#include "archive/model/Item.h"

namespace tarn::fuzz {

inline void Expect(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "%s\n", what);
  std::abort();
}

class ItemWalk {
 public:
  // Reads no more than that many items, so that no run takes seconds.
  explicit ItemWalk(size_t mostItems) : itemsLeft_(mostItems) {}

  void read(archive::Item& item, int depth = 0) {
    Expect(depth <= archive::kDeepestItem, "an item that is too deep");
    if (itemsLeft_ == 0) return;
    --itemsLeft_;
    const archive::ItemFields fields = item.fields(archive::Detail::Envelope);
    item.bodies();
    item.originalHeaders();
    const std::vector<archive::Attachment> attachments = item.attachments();
    Expect(attachments.size() == fields.attachmentCount, "another number of attachments");
    for (size_t index = 0; index < attachments.size(); ++index) {
      if (const auto source = item.open(index)) readAll(**source, attachments[index]);
      if (const auto inner = item.embedded(index)) read(**inner, depth + 1);
    }
    Expect(!item.open(attachments.size()).ok(), "an attachment that is not there");
    if (archive::mapi::MapiMessage* const message = item.properties()) {
      readSet(message->properties());
    }
  }

 private:
  static void readAll(archive::ByteSource& source, const archive::Attachment& attachment) {
    std::array<char, 4096> buffer;
    uint64_t total = 0;
    for (;;) {
      const archive::Outcome<size_t> count = source.read(buffer);
      if (!count) return;
      if (*count == 0) break;
      total += *count;
    }
    if (attachment.size) Expect(total == *attachment.size, "another size than told");
  }

  static void readSet(archive::mapi::PropertySet& set) {
    constexpr size_t kLimit = size_t{1} << 20;
    for (const archive::mapi::PropertyTag tag : set.tags()) {
      const auto bytes = set.bytes(tag.id, kLimit);
      if (bytes) Expect(bytes->size() <= kLimit, "a value beyond its limit");
      set.values(tag.id, kLimit);
      Expect(set.typeOf(tag.id) == tag.type, "another type than told");
    }
  }

  size_t itemsLeft_;
};

}  // namespace tarn::fuzz

#endif
