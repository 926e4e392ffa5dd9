// WorkerMessages.h - what an export and its workers say to each other.
#ifndef TARN_ARCHIVE_WORKERMESSAGES_H
#define TARN_ARCHIVE_WORKERMESSAGES_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "archive/common/ItemFilter.h"
#include "archive/export/ItemExport.h"
#include "archive/export/SourcePlan.h"
#include "archive/sources/SourceKind.h"

namespace tarn::archive {

// The words that start a worker: this one, its memory in bytes, the file of its beats.
inline constexpr const char* kWorkerWord = "export-worker";
// The descriptor of its end of the channel.
inline constexpr int kWorkerSocket = 3;

// How it ends where it has no more memory; other ends are not of its own choice.
inline constexpr int kOutOfMemory = 12;
// The beats of a worker that adds up a source begin there; those of one that plans begin at 0. One
// that does both adds up first.
inline constexpr uint64_t kBeatsOfSum = uint64_t{1} << 63;
// A worker that exports beats so often when it is done with an entry, and once within one.
inline constexpr uint64_t kBeatsOfEntry = uint64_t{1} << 32;

enum class WorkerTask : uint8_t { Sum, Plan, SumAndPlan, Export };

struct WorkerRequest {
  WorkerTask task = WorkerTask::Plan;
  std::string name;  // of the source, as the manifest has it
  std::string path;
  SourceKind kind = SourceKind::Mail;
  bool recover = false;
  PlanPlace plan;  // of Plan: where it goes

  // Plan:
  FilterOptions filter;
  PlanLimits limits;
  std::string range;  // the file of a PlanRange, without limits then; empty: the whole source

  // Export:
  ExportChoices choices;
  uint64_t textSeconds = 60;  // for what the catalogue is told of an item
  std::string tree;           // the folder of the source within the export
  std::string folder;         // of what the worker writes: N for the N-th entry, rows, mails, texts
  uint64_t offset = 0;
  uint64_t first = 0;  // the number of the entry there
  uint64_t count = 0;
};

// The files in the folder of a worker that all its entries are added to, one after the other.
enum class WorkerPart : uint8_t {
  Rows,   // of the journal
  Mails,  // for the mbox of the folder
  Texts,  // what the catalogue is told
  Pages   // PDFs, to be joined to those of the folder
};
inline constexpr size_t kWorkerParts = 4;
const char* NameOf(WorkerPart part);

// A place in each of them.
struct WorkerParts {
  std::array<uint64_t, kWorkerParts> places = {};
  uint64_t of(WorkerPart part) const { return places[static_cast<size_t>(part)]; }
};

enum class WorkerWord : uint8_t {
  Summed,  // text: the sum of the source, empty where it cannot be had
  Planned,
  Unopened,  // text: why the source cannot be read
  Exported,  // one entry; text: its fingerprint
  Done,      // all entries of the request
  Stopped    // text: why nothing more can be written
};

struct WorkerReply {
  WorkerWord word = WorkerWord::Done;
  std::string text = {};

  uint64_t entries = 0;                        // of Planned
  std::string plan = {};                       // of Planned: a short one
  std::string reason = {};                     // of Summed: why there is no sum
  bool hasMissedFolder = false;                // of Planned: as ItemFilter has it
  TroubleKind kind = TroubleKind::Unreadable;  // of Unopened
  bool hasFolder = false;                      // of Exported
  WorkerParts ends = {};                       // of Exported: where its parts end
  uint64_t bytes = 0;                          // of the source, or of the entry's files
};

std::string Packed(const WorkerRequest& request);
WorkerRequest UnpackedRequest(std::string_view message);

// A message is a reply or several, one after the other.
std::string Packed(const WorkerReply& reply);
std::vector<WorkerReply> UnpackedReplies(std::string_view message);

}  // namespace tarn::archive

#endif
