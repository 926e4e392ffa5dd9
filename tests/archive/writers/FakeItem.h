// FakeItem.h - an item whose fields, bodies and attachments a test writes down.
#ifndef TARN_TESTS_ARCHIVE_FAKEITEM_H
#define TARN_TESTS_ARCHIVE_FAKEITEM_H

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "archive/model/ByteSink.h"
#include "archive/model/Item.h"
#include "archive/model/TextSink.h"

namespace tarn::archive {

// Takes so many bytes, and no more.
class SmallSink final : public ByteSink {
 public:
  explicit SmallSink(size_t room) : room_(room) {}
  std::optional<Trouble> write(std::string_view bytes) override {
    if (isFull) ++writesAfterFull;
    isFull = bytes.size() > room_;
    if (isFull) return Trouble{TroubleKind::Unreadable, "the disk is full"};
    room_ -= bytes.size();
    return std::nullopt;
  }
  bool isFull = false;
  size_t writesAfterFull = 0;

 private:
  size_t room_;
};

// Bytes that break off.
class BrokenSource final : public ByteSource {
 public:
  explicit BrokenSource(std::string before) : before_(std::move(before)) {}
  Outcome<size_t> read(std::span<char> buffer) override {
    if (before_.empty()) return Trouble{TroubleKind::Damaged, "a block is missing"};
    const size_t size = before_.copy(buffer.data(), buffer.size());
    before_.erase(0, size);
    return size;
  }

 private:
  std::string before_;
};

class FakeItem;

// What a FakeItem is made of.
struct FakeContent {
  ItemPlace place;
  ItemFields fields;
  Bodies bodies;
  std::string headers;
  std::optional<Trouble> headersTrouble;
  std::vector<Attachment> list;
  std::map<size_t, std::string> bytes;
  std::set<size_t> broken;  // attachments whose bytes break off
  std::map<size_t, std::shared_ptr<FakeContent>> items;
  std::optional<std::string> mail;
  mapi::MapiMessage* message = nullptr;
  std::vector<Trouble> troubles;

  explicit FakeContent(std::string id = "2097188") {
    place.id = std::move(id);
    place.folder =
        std::make_shared<const std::vector<std::string>>(std::vector<std::string>{"Top", "Inbox"});
    fields.messageClass = "IPM.Note";
  }

  Attachment& attach(std::string name, std::string mediaType, std::string content) {
    Attachment& added = list.emplace_back();
    added.name = std::move(name);
    added.mediaType = std::move(mediaType);
    added.size = content.size();
    bytes[list.size() - 1] = std::move(content);
    return added;
  }

  FakeContent& attachItem(std::string name) {
    Attachment& added = list.emplace_back();
    added.kind = AttachmentKind::Item;
    added.name = std::move(name);
    added.mediaType = "message/rfc822";
    auto& inner = items[list.size() - 1];
    inner = std::make_shared<FakeContent>(place.id + "/" + std::to_string(list.size()));
    inner->place.parent = place.id;
    return *inner;
  }
};

// The content outlives it.
class FakeItem final : public Item {
 public:
  explicit FakeItem(const FakeContent& content) : content_(content) {}

  const ItemPlace& place() const override { return content_.place; }
  const ItemFields& fields(Detail) override { return content_.fields; }
  Bodies bodies() override { return content_.bodies; }
  Outcome<std::string> originalHeaders() override {
    if (content_.headersTrouble) return *content_.headersTrouble;
    return content_.headers;
  }
  const std::vector<Attachment>& attachments() override { return content_.list; }
  Outcome<std::unique_ptr<ByteSource>> open(size_t index) override {
    ++opened;
    const auto at = content_.bytes.find(index);
    if (at == content_.bytes.end()) return Trouble{TroubleKind::Missing, "no bytes"};
    if (content_.broken.contains(index)) {
      return std::unique_ptr<ByteSource>(std::make_unique<BrokenSource>(at->second));
    }
    return BytesOf(at->second);
  }
  Outcome<std::unique_ptr<Item>> embedded(size_t index) override {
    const auto at = content_.items.find(index);
    if (at == content_.items.end()) return Trouble{TroubleKind::Missing, "no item"};
    return std::unique_ptr<Item>(std::make_unique<FakeItem>(*at->second));
  }
  Outcome<std::unique_ptr<ByteSource>> original() override {
    if (!content_.mail) return std::unique_ptr<ByteSource>();
    return BytesOf(*content_.mail);
  }
  mapi::MapiMessage* properties() override { return content_.message; }
  const std::vector<Trouble>& troubles() const override { return content_.troubles; }

  size_t opened = 0;  // attachments, as often as they were

 private:
  const FakeContent& content_;
};

}  // namespace tarn::archive

#endif
