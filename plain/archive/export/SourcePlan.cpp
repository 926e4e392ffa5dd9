#include "archive/export/SourcePlan.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <set>
#include <string_view>
#include <system_error>

#include "archive/export/ItemNames.h"
#include "archive/export/Packing.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;

constexpr size_t kPieceOfPlan = size_t{64} << 10;

// A new file, whatever is there.
Outcome<std::unique_ptr<GrowingFile>> NewFile(const fs::path& path) {
  Outcome<std::unique_ptr<GrowingFile>> file = GrowingFile::open(path);
  if (!file || (*file)->size() == 0) return file;
  if (const std::optional<Trouble> trouble = (*file)->cutTo(0)) return *trouble;
  return file;
}

PlanEntry Unpacked(std::string_view body) {
  Unpacker fields(body);
  PlanEntry entry;
  entry.kind = static_cast<PlanKind>(fields.number());
  entry.id = fields.text();
  entry.parent = fields.optionalText();
  std::vector<std::string> folder(std::min<uint64_t>(fields.number(), body.size()));
  for (std::string& name : folder) name = fields.text();
  entry.folder = std::make_shared<const std::vector<std::string>>(std::move(folder));
  entry.folderPath = fields.text();
  entry.name = fields.text();
  entry.reason = fields.text();
  const bool hasPlace = fields.flag();
  const uint64_t placeFolder = fields.number();
  const uint64_t placeRow = fields.number();
  const bool follows = fields.flag();
  if (hasPlace) entry.place = ReadingPlace{placeFolder, placeRow, follows};
  entry.run = fields.number();
  entry.row = fields.number();
  entry.bytes = fields.number();
  entry.isShared = fields.flag();
  return entry;
}

// First the entries with the names that the items have by themselves, together with the hashes of
// all names in the source; then the same with the ids where names meet.
class Planner {
 public:
  Planner(ItemFilter& filter, fs::path draftPath)
      : filter_(filter), draftPath_(std::move(draftPath)) {}

  // `place` is that of an item.
  std::optional<Trouble> take(Entry entry, const std::optional<ReadingPlace>& place) {
    place_ = place;
    if (auto* const folder = std::get_if<FolderStart>(&entry)) {
      meetFolder(*folder->path);
      return std::nullopt;
    }
    if (auto* const trouble = std::get_if<PlaceTrouble>(&entry)) return takeTrouble(*trouble);
    return takeItem(*std::get<std::unique_ptr<Item>>(entry));
  }

  std::optional<Trouble> passOver(Entry entry, const std::string& reason) {
    const auto* const item = std::get_if<std::unique_ptr<Item>>(&entry);
    if (item == nullptr) return take(std::move(entry), std::nullopt);
    // What comes after it does not follow what was before it.
    ++run_;
    return takeTrouble({(*item)->place(), {TroubleKind::Damaged, reason}});
  }

  std::optional<Trouble> takeTrouble(const PlaceTrouble& trouble) {
    PlanEntry entry;
    entry.kind = trouble.place.id.empty() ? PlanKind::Trouble : PlanKind::LostItem;
    entry.id = trouble.place.id;
    entry.parent = trouble.place.parent;
    entry.folder = trouble.place.folder ? trouble.place.folder
                                        : std::make_shared<const std::vector<std::string>>();
    if (!filter_.takesFolder(entry.folder)) return std::nullopt;
    entry.folderPath = meetFolder(*entry.folder);
    entry.reason = trouble.trouble.reason;
    return add(entry);
  }

  // Everything that was taken. Of most sources it is so little that there is no file.
  Outcome<std::unique_ptr<PlanReader>> draft() {
    if (!draft_) return PlanReader::of(std::move(waiting_));
    if (const std::optional<Trouble> trouble = flush()) return *trouble;
    return PlanReader::open(draftPath_);
  }

  // It is of no more use.
  void removeDraft() const {
    std::error_code ignored;
    if (draft_) fs::remove(draftPath_, ignored);
  }

  // The hashes that two names have.
  std::vector<uint64_t> shared() {
    std::sort(hashes_.begin(), hashes_.end());
    std::vector<uint64_t> twice;
    for (size_t at = 1; at < hashes_.size(); ++at) {
      if (hashes_[at] == hashes_[at - 1]) twice.push_back(hashes_[at]);
    }
    hashes_ = {};
    return twice;
  }

 private:
  std::optional<Trouble> takeItem(Item& item) {
    PlanEntry entry;
    entry.place = place_;
    if (!place_ || !place_->follows) ++run_;
    entry.run = run_;
    entry.row = rows_++;
    entry.id = item.place().id;
    entry.parent = item.place().parent;
    entry.folder = item.place().folder;
    entry.folderPath = meetFolder(*entry.folder);
    const ItemFields& fields = item.fields(Detail::Headline);
    entry.bytes = fields.size.value_or(0);
    entry.name = ItemName(fields);
    hashes_.push_back(NameHash(entry.folderPath, entry.name));
    return filter_.takes(item) ? add(entry) : std::nullopt;
  }

  // Its name and the one of its mbox are no item's.
  const std::string& meetFolder(const std::vector<std::string>& folder) {
    const bool isNew = !last_ || *last_ != folder;
    const std::string& path = paths_.pathOf(folder);
    if (isNew) {
      last_ = folder;
      if (met_.insert(path).second) {
        const size_t slash = path.rfind('/');
        const bool isBelow = slash != std::string::npos;
        if (!path.empty()) {
          hashes_.push_back(NameHash(isBelow ? path.substr(0, slash) : "",
                                     isBelow ? path.substr(slash + 1) : path));
        }
        hashes_.push_back(NameHash(path, kMboxName));
      }
    }
    return path;
  }

  std::optional<Trouble> add(const PlanEntry& entry) {
    waiting_ += Packed(entry);
    return waiting_.size() < kPieceOfPlan ? std::nullopt : flush();
  }

  std::optional<Trouble> flush() {
    if (!draft_) {
      Outcome<std::unique_ptr<GrowingFile>> opened = NewFile(draftPath_);
      if (!opened) return opened.trouble();
      draft_ = std::move(*opened);
    }
    std::optional<Trouble> trouble = draft_->append(waiting_);
    waiting_.clear();
    return trouble;
  }

  ItemFilter& filter_;
  const fs::path draftPath_;
  std::unique_ptr<GrowingFile> draft_;
  FolderPaths paths_;
  std::optional<std::vector<std::string>> last_;
  std::set<std::string> met_;
  std::vector<uint64_t> hashes_;
  std::string waiting_;
  std::optional<ReadingPlace> place_;
  uint64_t run_ = 0;
  uint64_t rows_ = 0;
};

Outcome<WrittenPlan> WriteNames(PlanReader& draft, const std::vector<uint64_t>& shared,
                                const fs::path& path) {
  std::unique_ptr<GrowingFile> plan;
  uint64_t entries = 0;
  std::string waiting;
  for (;; ++entries) {
    Outcome<std::optional<PlanEntry>> next = draft.next();
    if (!next) return next.trouble();
    if (*next) {
      PlanEntry& entry = **next;
      entry.isShared =
          entry.kind == PlanKind::Item &&
          std::binary_search(shared.begin(), shared.end(), NameHash(entry.folderPath, entry.name));
      if (entry.kind == PlanKind::Item && (entry.isShared || NeedsId(entry.name))) {
        entry.name = ItemNameWithId(entry.name, entry.id);
      }
      waiting += Packed(entry);
    }
    if (!*next && !plan && waiting.size() <= kShortPlan) return WrittenPlan{entries, waiting};
    if (!*next || waiting.size() >= kPieceOfPlan) {
      if (!plan) {
        Outcome<std::unique_ptr<GrowingFile>> opened = NewFile(path);
        if (!opened) return opened.trouble();
        plan = std::move(*opened);
      }
      if (const std::optional<Trouble> trouble = plan->append(waiting)) return *trouble;
      waiting.clear();
    }
    if (!*next) return WrittenPlan{entries, {}};
  }
}

}  // namespace

std::string Packed(const PlanEntry& entry) {
  Packer body;
  body.put(static_cast<uint64_t>(entry.kind)).put(entry.id).put(entry.parent);
  body.put(entry.folder->size());
  for (const std::string& name : *entry.folder) body.put(name);
  body.put(entry.folderPath).put(entry.name).put(entry.reason);
  const ReadingPlace place = entry.place.value_or(ReadingPlace());
  body.put(entry.place.has_value()).put(place.folder).put(place.row).put(place.follows);
  body.put(entry.run).put(entry.row).put(entry.bytes).put(entry.isShared);
  return std::move(Packer().put(body.bytes()).bytes());
}

Outcome<std::unique_ptr<PlanReader>> PlanReader::open(const fs::path& path, uint64_t offset) {
  Outcome<std::unique_ptr<GrowingFile>> file = GrowingFile::open(path);
  if (!file) return file.trouble();
  return std::unique_ptr<PlanReader>(new PlanReader(std::move(*file), offset));
}

Outcome<std::unique_ptr<PlanReader>> PlanReader::open(PlanPlace plan, uint64_t offset) {
  return plan.bytes.empty() ? open(plan.path, offset) : of(std::move(plan.bytes), offset);
}

std::unique_ptr<PlanReader> PlanReader::of(std::string bytes, uint64_t offset) {
  offset = std::min<uint64_t>(offset, bytes.size());
  std::unique_ptr<PlanReader> reader(new PlanReader(nullptr, offset));
  reader->buffer_ = std::move(bytes);
  reader->taken_ = offset;
  return reader;
}

// False where the plan ends before.
Outcome<bool> PlanReader::fill(size_t bytes) {
  while (buffer_.size() - taken_ < bytes) {
    buffer_.erase(0, taken_);
    taken_ = 0;
    const uint64_t place = offset_ + buffer_.size();
    if (!file_ || place >= file_->size()) return false;
    const Outcome<std::string> more =
        file_->read(place, std::min<uint64_t>(kPieceOfPlan, file_->size() - place));
    if (!more) return more.trouble();
    buffer_ += *more;
  }
  return true;
}

Outcome<std::optional<PlanEntry>> PlanReader::next() {
  uint64_t size = 0;
  const Outcome<bool> hasSize = fill(sizeof size);
  if (!hasSize) return hasSize.trouble();
  if (!*hasSize) return std::optional<PlanEntry>();
  std::memcpy(&size, buffer_.data() + taken_, sizeof size);
  const Outcome<bool> hasBody = fill(sizeof size + size);
  if (!hasBody) return hasBody.trouble();
  if (!*hasBody) return Trouble{TroubleKind::Damaged, "the plan of a source breaks off"};
  PlanEntry entry = Unpacked(std::string_view(buffer_).substr(taken_ + sizeof size, size));
  taken_ += sizeof size + size;
  offset_ += sizeof size + size;
  return std::optional<PlanEntry>(std::move(entry));
}

Outcome<WrittenPlan> WritePlan(ItemReader& reader, ItemFilter& filter, const PlanLimits& limits,
                               const fs::path& path, const std::function<void()>& beat) {
  Planner planner(filter, path.string() + ".draft");
  std::optional<Trouble> trouble;
  uint64_t met = 0;
  for (; !trouble && met < limits.entries; ++met) {
    std::optional<Entry> entry = reader.next();
    if (!entry) break;
    const auto passed = limits.passedOver.find(met);
    trouble = passed == limits.passedOver.end()
                  ? planner.take(std::move(*entry), reader.place())
                  : planner.passOver(std::move(*entry), passed->second);
    beat();
  }
  if (!trouble && !limits.reasonAfter.empty() && met == limits.entries) {
    trouble = planner.takeTrouble({{}, {TroubleKind::Damaged, limits.reasonAfter}});
  }
  if (trouble) return *trouble;
  const Outcome<std::unique_ptr<PlanReader>> draft = planner.draft();
  if (!draft) return draft.trouble();
  Outcome<WrittenPlan> plan = WriteNames(**draft, planner.shared(), path);
  planner.removeDraft();
  return plan;
}

}  // namespace tarn::archive
