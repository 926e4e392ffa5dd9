#include "archive/export/PlanRange.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "archive/export/ItemNames.h"
#include "archive/export/Packing.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;

using Folder = std::shared_ptr<const std::vector<std::string>>;

void Put(Packer& packer, const std::vector<std::string>& folder) {
  packer.put(folder.size());
  for (const std::string& name : folder) packer.put(name);
}

Folder TakeFolder(Unpacker& fields, size_t most) {
  std::vector<std::string> folder(std::min<uint64_t>(fields.number(), most));
  for (std::string& name : folder) name = fields.text();
  return std::make_shared<const std::vector<std::string>>(std::move(folder));
}

class RangePlanner {
 public:
  RangePlanner(ItemReader& reader, ItemFilter& filter, const PlanRange& range, GrowingFile& plan)
      : reader_(reader), filter_(filter), range_(range), plan_(plan) {}

  // What is wrong with the source.
  std::optional<Trouble> run(const std::function<void()>& beat) {
    for (const PlanRun& run : range_.runs) {
      if (std::optional<Trouble> trouble = reader_.goTo(run.place, run.folder)) return trouble;
      if (std::optional<Trouble> trouble = takeRun(run, beat)) return trouble;
    }
    addGaps();
    if (entries_ != range_.entries) return otherItems();
    flush();
    return std::nullopt;
  }

  // Why the plan cannot be written.
  const std::optional<Trouble>& full() const { return full_; }

 private:
  static Trouble otherItems() {
    return {TroubleKind::Damaged, "has other items than when it was planned"};
  }

  std::optional<Trouble> takeRun(const PlanRun& run, const std::function<void()>& beat) {
    for (uint64_t row = 0; row < run.rows && !full_;) {
      std::optional<Entry> entry = reader_.next();
      if (!entry) return otherItems();
      beat();
      // The range tells what cannot be read.
      auto* const item = std::get_if<std::unique_ptr<Item>>(&*entry);
      if (item == nullptr) continue;
      if (++row != 1 && !reader_.place().value_or(ReadingPlace()).follows) return otherItems();
      take(**item, run);
    }
    return std::nullopt;
  }

  void take(Item& item, const PlanRun& run) {
    addGaps();
    const std::string name = ItemName(item.fields(Detail::Headline));
    if (!filter_.takes(item)) return;
    PlanEntry entry;
    entry.id = item.place().id;
    entry.parent = item.place().parent;
    entry.folder = run.folder;
    entry.folderPath = run.folderPath;
    entry.isShared = HasNumber(range_.shared, entries_);
    const bool hasId = entry.isShared || NeedsId(name);
    entry.name = hasId ? ItemNameWithId(name, entry.id) : name;
    add(entry);
  }

  // Those that come before the entry that is next.
  void addGaps() {
    while (nextGap_ < range_.gaps.size() && range_.gaps[nextGap_].entry == entries_) {
      add(range_.gaps[nextGap_++].trouble);
    }
  }

  void add(const PlanEntry& entry) {
    constexpr size_t kPiece = size_t{64} << 10;
    ++entries_;
    waiting_ += Packed(entry);
    if (waiting_.size() >= kPiece) flush();
  }

  void flush() {
    if (!full_) full_ = plan_.append(waiting_);
    waiting_.clear();
  }

  ItemReader& reader_;
  ItemFilter& filter_;
  const PlanRange& range_;
  GrowingFile& plan_;
  size_t nextGap_ = 0;
  uint64_t entries_ = 0;
  std::string waiting_;
  std::optional<Trouble> full_;
};

}  // namespace

void RangeBuilder::add(PlanEntry entry) {
  const uint64_t number = range_.entries++;
  if (entry.kind != PlanKind::Item) {
    range_.gaps.push_back({number, std::move(entry)});
    return;
  }
  if (entry.isShared) AddNumber(range_.shared, number);
  const bool isSame = !range_.runs.empty() && entry.run == run_;
  if (!isSame) {
    range_.runs.push_back({entry.folder, entry.folderPath, *entry.place, 0});
    run_ = entry.run;
    firstRow_ = entry.row;
  }
  range_.runs.back().rows = entry.row - firstRow_ + 1;
}

PlanRange RangeBuilder::take() { return std::exchange(range_, {}); }

std::string Packed(const PlanRange& range) {
  Packer packer;
  packer.put(range.entries).put(range.runs.size());
  for (const PlanRun& run : range.runs) {
    Put(packer, *run.folder);
    packer.put(run.folderPath).put(run.place.folder).put(run.place.row).put(run.rows);
  }
  packer.put(range.shared.size());
  for (const NumberSpan& span : range.shared) packer.put(span.first).put(span.last);
  packer.put(range.gaps.size());
  for (const PlanGap& gap : range.gaps) {
    const PlanEntry& trouble = gap.trouble;
    packer.put(gap.entry).put(static_cast<uint64_t>(trouble.kind)).put(trouble.id);
    packer.put(trouble.parent);
    Put(packer, *trouble.folder);
    packer.put(trouble.folderPath).put(trouble.reason);
  }
  return std::move(packer.bytes());
}

PlanRange UnpackedRange(std::string_view bytes) {
  const size_t most = bytes.size();
  Unpacker fields(bytes);
  PlanRange range;
  range.entries = fields.number();
  range.runs.resize(std::min<uint64_t>(fields.number(), most));
  for (PlanRun& run : range.runs) {
    run.folder = TakeFolder(fields, most);
    run.folderPath = fields.text();
    run.place.folder = fields.number();
    run.place.row = fields.number();
    run.rows = fields.number();
  }
  range.shared.resize(std::min<uint64_t>(fields.number(), most));
  for (NumberSpan& span : range.shared) {
    span.first = fields.number();
    span.last = fields.number();
  }
  range.gaps.resize(std::min<uint64_t>(fields.number(), most));
  for (PlanGap& gap : range.gaps) {
    gap.entry = fields.number();
    gap.trouble.kind = static_cast<PlanKind>(fields.number());
    gap.trouble.id = fields.text();
    gap.trouble.parent = fields.optionalText();
    gap.trouble.folder = TakeFolder(fields, most);
    gap.trouble.folderPath = fields.text();
    gap.trouble.reason = fields.text();
  }
  return range;
}

Outcome<std::optional<Trouble>> WriteRangePlan(ItemReader& reader, ItemFilter& filter,
                                               const PlanRange& range, const fs::path& path,
                                               const std::function<void()>& beat) {
  std::error_code ignored;
  fs::remove(path, ignored);
  Outcome<std::unique_ptr<GrowingFile>> plan = GrowingFile::open(path);
  if (!plan) return plan.trouble();
  RangePlanner planner(reader, filter, range, **plan);
  std::optional<Trouble> trouble = planner.run(beat);
  if (planner.full()) return *planner.full();
  return trouble;
}

}  // namespace tarn::archive
