#include "archive/msg/MsgMessage.h"

#include <algorithm>
#include <string>
#include <utility>

#include "archive/mapi/Tags.h"
#include "archive/msg/MsgStreamNames.h"
#include "archive/msg/StorageCopy.h"

namespace tarn::archive::msg {
namespace {

using mapi::kTagAttachData;
using mapi::MapiMessage;
using mapi::PropertySet;

void AddMissing(std::vector<Trouble>& troubles, size_t declared, size_t found, const char* what) {
  if (declared <= found) return;
  troubles.push_back({TroubleKind::Missing, std::to_string(declared - found) + " of " +
                                                std::to_string(declared) + " " + what +
                                                " are missing"});
}

}  // namespace

MsgMessage::MsgMessage(StorageFile& file, const MsgNames& names, EntryNumber storage)
    : file_(file),
      names_(names),
      properties_(file, storage, SetOf::Message),
      recipients_(storagesOf(storage, kRecipientPrefix)),
      attachments_(storagesOf(storage, kAttachmentPrefix)) {
  if (storage == kRootEntry) {
    troubles_ = names.troubles();
    if (file.isDirectoryDamaged()) {
      troubles_.push_back(
          {TroubleKind::Damaged, "the directory of the file is damaged, and parts may be missing"});
    }
  }
  AddMissing(troubles_, properties_.declaredRecipients(), recipients_.size(), "recipients");
  AddMissing(troubles_, properties_.declaredAttachments(), attachments_.size(), "attachments");
}

std::vector<EntryNumber> MsgMessage::storagesOf(EntryNumber storage,
                                                std::string_view prefix) const {
  struct Numbered {
    uint32_t number;
    EntryNumber entry;
  };
  std::vector<Numbered> found;
  for (const EntryNumber entry : file_.children(storage)) {
    const std::string_view name = file_.name(entry);
    if (!file_.isStorage(entry) || name.substr(0, prefix.size()) != prefix) continue;
    found.push_back({ParseHexadecimal(name.substr(prefix.size()), 8).value_or(UINT32_MAX), entry});
  }
  std::stable_sort(found.begin(), found.end(), [](const Numbered& left, const Numbered& right) {
    return left.number < right.number;
  });
  std::vector<EntryNumber> entries;
  entries.reserve(found.size());
  for (const Numbered& one : found) entries.push_back(one.entry);
  return entries;
}

Outcome<std::unique_ptr<PropertySet>> MsgMessage::setOf(const std::vector<EntryNumber>& storages,
                                                        size_t index) {
  if (index >= storages.size()) return Trouble{TroubleKind::Missing, "there is no such storage"};
  auto set = std::make_unique<MsgProperties>(file_, storages[index], SetOf::Part);
  if (set->tags().empty()) return Trouble{TroubleKind::Damaged, "its storage has no properties"};
  return std::unique_ptr<PropertySet>(std::move(set));
}

Outcome<std::unique_ptr<PropertySet>> MsgMessage::recipient(size_t index) {
  return setOf(recipients_, index);
}

Outcome<std::unique_ptr<PropertySet>> MsgMessage::attachment(size_t index) {
  return setOf(attachments_, index);
}

Outcome<std::unique_ptr<MapiMessage>> MsgMessage::embedded(size_t index) {
  if (index >= attachments_.size()) {
    return Trouble{TroubleKind::Missing, "there is no such attachment"};
  }
  const MsgProperties set(file_, attachments_[index], SetOf::Part);
  const std::optional<EntryNumber> storage = set.storageOf(kTagAttachData);
  if (!storage) {
    return Trouble{TroubleKind::Missing, "the storage of the embedded message is missing"};
  }
  if (!IsMessageStorage(file_, *storage)) {
    return Trouble{TroubleKind::Damaged, "the storage of the embedded message holds no message"};
  }
  return std::unique_ptr<MapiMessage>(std::make_unique<MsgMessage>(file_, names_, *storage));
}

Outcome<std::unique_ptr<ByteSource>> MsgMessage::object(size_t index) {
  if (index >= attachments_.size()) {
    return Trouble{TroubleKind::Missing, "there is no such attachment"};
  }
  MsgProperties set(file_, attachments_[index], SetOf::Part);
  if (const std::optional<EntryNumber> storage = set.storageOf(kTagAttachData)) {
    return CopyStorage(file_, *storage);
  }
  return set.stream(kTagAttachData);
}

}  // namespace tarn::archive::msg
