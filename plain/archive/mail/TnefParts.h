// TnefParts.h - parts of a mail that hold a message of their own (winmail.dat, MS-OXTNEF), whose
// text and attachments are the mail's.
#ifndef TARN_ARCHIVE_TNEFPARTS_H
#define TARN_ARCHIVE_TNEFPARTS_H

#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

#include "archive/mail/MailLayout.h"
#include "archive/model/Item.h"

namespace tarn::archive::mail {

class TnefParts {
 public:
  // Bytes of all such parts of a mail that are read; they are kept in memory.
  static constexpr size_t kLargest = size_t{64} << 20;

  // `place` and `depth` are those of the mail.
  TnefParts(ItemPlace place, int depth) : place_(std::move(place)), depth_(depth) {}

  // The message of a part, read when it is first asked for. Null for other parts, and for one that
  // cannot be read: that is a trouble, and the part is an attachment as others are.
  Item* of(const LaidPart& laid);

  // The item that attachment `inner` of a part's message is, where it is attachment `index` of the
  // mail.
  Outcome<std::unique_ptr<Item>> embedded(const LaidPart& laid, size_t inner, size_t index);

  // Adds the text that the mail has not itself.
  void addTo(Bodies& bodies, const MailLayout& layout);

  // Those met since the last call.
  std::vector<Trouble> takeTroubles();

 private:
  struct ReadPart {
    std::unique_ptr<Item> item;
    size_t troublesTold = 0;
  };

  std::unique_ptr<Item> read(const LaidPart& laid);

  ItemPlace place_;
  int depth_;
  size_t left_ = kLargest;
  std::vector<ReadPart> parts_;
  std::unordered_map<const GMimeObject*, size_t> places_;  // in parts_
  std::vector<Trouble> troubles_;
};

}  // namespace tarn::archive::mail

#endif
