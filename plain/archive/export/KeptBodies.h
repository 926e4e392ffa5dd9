// KeptBodies.h - an item whose bodies are read from the source once, however often they are asked
// for.
#ifndef TARN_ARCHIVE_KEPTBODIES_H
#define TARN_ARCHIVE_KEPTBODIES_H

#include <cstddef>
#include <optional>

#include "archive/model/Item.h"

namespace tarn::archive {

// Bodies with more bytes than that are read again instead.
inline constexpr size_t kMostKeptBodies = size_t{4} << 20;

class KeptBodies final : public Item {
 public:
  // The item must outlive this one.
  explicit KeptBodies(Item& item) : item_(item) {}

  Bodies bodies() override;

  const ItemPlace& place() const override { return item_.place(); }
  const ItemFields& fields(Detail detail) override { return item_.fields(detail); }
  Outcome<std::string> originalHeaders() override { return item_.originalHeaders(); }
  const std::vector<Attachment>& attachments() override { return item_.attachments(); }
  Outcome<std::unique_ptr<ByteSource>> open(size_t index) override { return item_.open(index); }
  Outcome<std::unique_ptr<Item>> embedded(size_t index) override { return item_.embedded(index); }
  Outcome<std::unique_ptr<ByteSource>> original() override { return item_.original(); }
  mapi::MapiMessage* properties() override { return item_.properties(); }
  const std::vector<Trouble>& troubles() const override { return item_.troubles(); }

 private:
  Item& item_;
  std::optional<Bodies> kept_;
};

}  // namespace tarn::archive

#endif
