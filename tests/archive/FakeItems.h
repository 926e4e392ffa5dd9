// FakeItems.h - items and readers that a test writes down.
#ifndef TARN_TESTS_ARCHIVE_FAKEITEMS_H
#define TARN_TESTS_ARCHIVE_FAKEITEMS_H

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "archive/model/ItemReader.h"

namespace tarn::archive {

using FolderPath = std::shared_ptr<const std::vector<std::string>>;

inline FolderPath FolderOf(std::vector<std::string> names) {
  return std::make_shared<const std::vector<std::string>>(std::move(names));
}

// What a test describes; it outlives the items.
struct FakeItemText {
  std::string id = "1";
  FolderPath folder = FolderOf({});
  ItemFields fields;
  bool isHeadlineWrong = false;  // it tells the contrary of fields.hasAttachments
  Bodies bodies;
  std::vector<Attachment> attachments;
  std::map<size_t, FakeItemText> embedded;  // by index; its id and parent are made
  std::vector<Trouble> troubles;
};

// How often something was asked of any item.
struct Asked {
  size_t envelopes = 0;
  size_t attachments = 0;
  size_t alive = 0;
  size_t mostAlive = 0;
};

class FakeItem final : public Item {
 public:
  FakeItem(const FakeItemText& text, Asked& asked, std::optional<ItemPlace> parent = {},
           size_t index = 0)
      : text_(text), asked_(asked), place_{text.id, std::nullopt, text.folder} {
    if (parent) {
      place_ = {parent->id + "/" + std::to_string(index + 1), parent->id, parent->folder};
    }
    ++asked_.alive;
    asked_.mostAlive = std::max(asked_.mostAlive, asked_.alive);
  }
  ~FakeItem() override { --asked_.alive; }

  const ItemPlace& place() const override { return place_; }
  const ItemFields& fields(Detail detail) override {
    fields_ = text_.fields;
    if (detail == Detail::Envelope) {
      ++asked_.envelopes;
    } else if (text_.isHeadlineWrong) {
      fields_.hasAttachments = !fields_.hasAttachments;
    }
    return fields_;
  }
  Bodies bodies() override { return text_.bodies; }
  Outcome<std::string> originalHeaders() override { return std::string(); }
  const std::vector<Attachment>& attachments() override {
    ++asked_.attachments;
    return text_.attachments;
  }
  Outcome<std::unique_ptr<ByteSource>> open(size_t) override {
    return Trouble{TroubleKind::Missing, "no bytes"};
  }
  Outcome<std::unique_ptr<Item>> embedded(size_t index) override {
    const auto at = text_.embedded.find(index);
    if (at == text_.embedded.end()) return Trouble{TroubleKind::Damaged, "no message in it"};
    return std::unique_ptr<Item>(std::make_unique<FakeItem>(at->second, asked_, place_, index));
  }
  Outcome<std::unique_ptr<ByteSource>> original() override { return std::unique_ptr<ByteSource>(); }
  const std::vector<Trouble>& troubles() const override { return text_.troubles; }

 private:
  const FakeItemText& text_;
  Asked& asked_;
  ItemPlace place_;
  ItemFields fields_;
};

// Gives the entries in their order.
class FakeReader final : public ItemReader {
 public:
  using FakeEntry = std::variant<FakeItemText, FolderStart, PlaceTrouble>;

  explicit FakeReader(std::vector<FakeEntry> entries) : entries_(std::move(entries)) {}

  std::optional<Entry> next() override {
    if (at_ == entries_.size()) return std::nullopt;
    const FakeEntry& entry = entries_[at_++];
    if (const auto* const item = std::get_if<FakeItemText>(&entry)) {
      return Entry(std::make_unique<FakeItem>(*item, asked));
    }
    if (const auto* const folder = std::get_if<FolderStart>(&entry)) return Entry(*folder);
    return Entry(std::get<PlaceTrouble>(entry));
  }

  Outcome<std::unique_ptr<Item>> find(std::string_view id) override {
    for (const FakeEntry& entry : entries_) {
      const auto* const item = std::get_if<FakeItemText>(&entry);
      if (item != nullptr && item->id == id) {
        return std::unique_ptr<Item>(std::make_unique<FakeItem>(*item, asked));
      }
    }
    return Trouble{TroubleKind::Missing, "no such item"};
  }

  Asked asked;

 private:
  std::vector<FakeEntry> entries_;
  size_t at_ = 0;
};

}  // namespace tarn::archive

#endif
