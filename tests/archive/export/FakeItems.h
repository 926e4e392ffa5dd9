// FakeItems.h - items that a test writes out, and a reader that gives them.
#ifndef TARN_TESTS_ARCHIVE_EXPORT_FAKEITEMS_H
#define TARN_TESTS_ARCHIVE_EXPORT_FAKEITEMS_H

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "archive/model/ItemReader.h"

namespace tarn::test {

using Folder = std::shared_ptr<const std::vector<std::string>>;

inline Folder FolderOf(std::vector<std::string> names) {
  return std::make_shared<const std::vector<std::string>>(std::move(names));
}

struct FakeAttachment {
  archive::Attachment attachment;
  std::string bytes;
};

class FakeItem final : public archive::Item {
 public:
  FakeItem(std::string id, std::string subject, Folder folder = FolderOf({})) {
    place_.id = std::move(id);
    place_.folder = std::move(folder);
    fields_.messageClass = "IPM.Note";
    fields_.subject = std::move(subject);
    fields_.sent = archive::Moment{1714559696, std::nullopt};  // 2024-05-01T10:34:56Z
  }

  archive::ItemFields& own() { return fields_; }
  archive::Bodies& ownBodies() { return bodies_; }
  std::vector<FakeAttachment>& ownAttachments() { return attached_; }
  int bodyReads() const { return bodyReads_; }

  const archive::ItemPlace& place() const override { return place_; }
  const archive::ItemFields& fields(archive::Detail) override { return fields_; }
  archive::Bodies bodies() override {
    ++bodyReads_;
    return bodies_;
  }
  archive::Outcome<std::string> originalHeaders() override { return std::string(); }
  const std::vector<archive::Attachment>& attachments() override {
    list_.clear();
    for (const FakeAttachment& one : attached_) list_.push_back(one.attachment);
    return list_;
  }
  archive::Outcome<std::unique_ptr<archive::ByteSource>> open(size_t index) override {
    if (index >= attached_.size()) {
      return archive::Trouble{archive::TroubleKind::Missing, "no such attachment"};
    }
    return archive::BytesOf(attached_[index].bytes);
  }
  archive::Outcome<std::unique_ptr<archive::Item>> embedded(size_t) override {
    return archive::Trouble{archive::TroubleKind::Missing, "no item"};
  }
  archive::Outcome<std::unique_ptr<archive::ByteSource>> original() override {
    return std::unique_ptr<archive::ByteSource>();
  }
  const std::vector<archive::Trouble>& troubles() const override { return troubles_; }

 private:
  archive::ItemPlace place_;
  archive::ItemFields fields_;
  archive::Bodies bodies_;
  int bodyReads_ = 0;
  std::vector<FakeAttachment> attached_;
  std::vector<archive::Attachment> list_;
  std::vector<archive::Trouble> troubles_;
};

class FakeReader final : public archive::ItemReader {
 public:
  void folder(Folder path) { entries_.emplace_back(archive::FolderStart{std::move(path), {}}); }
  FakeItem& item(std::string id, std::string subject, Folder folder = FolderOf({})) {
    auto made = std::make_unique<FakeItem>(std::move(id), std::move(subject), std::move(folder));
    FakeItem& item = *made;
    entries_.emplace_back(std::move(made));
    return item;
  }
  void trouble(std::string id, std::string reason, Folder folder = FolderOf({})) {
    archive::ItemPlace place;
    place.id = std::move(id);
    place.folder = std::move(folder);
    entries_.emplace_back(archive::PlaceTrouble{
        std::move(place), {archive::TroubleKind::Damaged, std::move(reason)}});
  }

  std::optional<archive::Entry> next() override {
    if (at_ == entries_.size()) return std::nullopt;
    return std::move(entries_[at_++]);
  }
  archive::Outcome<std::unique_ptr<archive::Item>> find(std::string_view) override {
    return archive::Trouble{archive::TroubleKind::Missing, "not looked for"};
  }

 private:
  std::vector<archive::Entry> entries_;
  size_t at_ = 0;
};

}  // namespace tarn::test

#endif
