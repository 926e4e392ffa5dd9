// SourcePlan.h - what of a source is to be exported, and under which names: one process writes it,
// and others read it.
#ifndef TARN_ARCHIVE_SOURCEPLAN_H
#define TARN_ARCHIVE_SOURCEPLAN_H

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "archive/common/ItemFilter.h"
#include "archive/export/HashedFile.h"
#include "archive/model/ItemReader.h"

namespace tarn::archive {

enum class PlanKind : uint8_t {
  Item,
  LostItem,  // one that is known to be there and cannot be read
  Trouble    // something of the source that cannot be read and is no item
};

struct PlanEntry {
  PlanKind kind = PlanKind::Item;
  std::string id;
  std::optional<std::string> parent;
  std::shared_ptr<const std::vector<std::string>> folder;  // never null
  std::string folderPath;  // the folder within that of the source; "" for its root
  std::string name;        // of the item's folder there
  std::string reason;      // why it cannot be read

  // Of Item, for who cuts the plan:
  std::optional<ReadingPlace> place;  // as the reader tells it
  uint64_t run = 0;                   // the same for items that follow each other
  uint64_t row = 0;                   // the items that the reader gave before it, taken or not
  uint64_t bytes = 0;                 // of the item; 0 where it is not known
  bool isShared = false;              // another item has its name, without the ids
};

// As bytes with their length before them, as a plan has them.
std::string Packed(const PlanEntry& entry);

// Where a plan is: a short one goes from process to process as it is.
struct PlanPlace {
  std::filesystem::path path;
  std::string bytes;  // all of it; empty: they are in the file
};
inline constexpr size_t kShortPlan = 4096;

// The entries of a plan from an offset on.
class PlanReader {
 public:
  static Outcome<std::unique_ptr<PlanReader>> open(PlanPlace plan, uint64_t offset = 0);
  static Outcome<std::unique_ptr<PlanReader>> open(const std::filesystem::path& path,
                                                   uint64_t offset = 0);
  // Of a plan in memory.
  static std::unique_ptr<PlanReader> of(std::string bytes, uint64_t offset = 0);

  // None at the end.
  Outcome<std::optional<PlanEntry>> next();
  // Of the entry that comes next.
  uint64_t offset() const { return offset_; }

 private:
  PlanReader(std::unique_ptr<GrowingFile> file, uint64_t offset)
      : file_(std::move(file)), offset_(offset) {}
  Outcome<bool> fill(size_t bytes);

  std::unique_ptr<GrowingFile> file_;  // null: all is in the buffer
  uint64_t offset_;
  std::string buffer_;
  size_t taken_ = 0;
};

// Where the mbox of a folder is in it; no folder of an item has that name.
inline constexpr const char* kMboxName = "messages.mbox";

struct PlanLimits {
  uint64_t entries = UINT64_MAX;  // what the reader gives after so many is left out
  std::string reasonAfter;        // then an entry of this trouble is the last
  // Entries of the reader that nothing is asked of but where they are, by their numbers: each
  // becomes one that is lost for the reason.
  std::map<uint64_t, std::string> passedOver = {};
};

struct WrittenPlan {
  uint64_t entries = 0;
  std::string bytes;  // of one that is no longer than kShortPlan, which is in no file
};

// Goes through the reader, the headlines of items alone unless the filter wants more, and writes
// the plan; what an attempt that was ended early has left at the path is gone then, or of no use.
// `beat` is called after each entry of the reader. Holds 8 bytes an item. A trouble says that the
// plan cannot be written.
Outcome<WrittenPlan> WritePlan(ItemReader& reader, ItemFilter& filter, const PlanLimits& limits,
                               const std::filesystem::path& path,
                               const std::function<void()>& beat);

}  // namespace tarn::archive

#endif
