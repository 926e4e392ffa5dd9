#include "archive/export/Worker.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <new>
#include <optional>
#include <utility>

#include "archive/export/Beat.h"
#include "archive/export/ItemExport.h"
#include "archive/export/ManifestRows.h"
#include "archive/export/OnePdf.h"
#include "archive/export/PlanRange.h"
#include "archive/export/SourcePlan.h"
#include "archive/export/SourceSum.h"
#include "archive/export/WorkerMessages.h"
#include "archive/sources/OpenSource.h"
#include "siblings/client/Channel.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;

// Fewer messages are fewer changes between processes. What a worker did not tell is done again
// where it ends before.
constexpr uint64_t kEntriesOfMessage = 8;

class FileSink final : public ByteSink {
 public:
  explicit FileSink(GrowingFile& file) : file_(file) {}
  std::optional<Trouble> write(std::string_view bytes) override {
    constexpr size_t kPiece = size_t{256} << 10;
    waiting_ += bytes;
    return waiting_.size() < kPiece ? std::nullopt : flush();
  }
  std::optional<Trouble> flush() {
    if (waiting_.empty()) return std::nullopt;
    std::optional<Trouble> trouble = file_.append(waiting_);
    waiting_.clear();
    return trouble;
  }
  uint64_t end() const { return file_.size() + waiting_.size(); }

 private:
  GrowingFile& file_;
  std::string waiting_;
};

class Worker {
 public:
  Worker(pages::Channel channel, Beat beat, const ItemHook& hook)
      : channel_(std::move(channel)), beat_(std::move(beat)), hook_(hook) {}

  int run() {
    std::string message;
    while (channel_.receive(message) == pages::Heard::Message) {
      const WorkerRequest request = UnpackedRequest(message);
      const std::optional<Trouble> trouble = answer(request);
      if (!trouble) continue;
      unsaid_.clear();
      say({WorkerWord::Stopped, trouble->reason});
    }
    return 0;
  }

 private:
  std::optional<Trouble> answer(const WorkerRequest& request) {
    switch (request.task) {
      case WorkerTask::Sum:
        say(sumOf(request));
        return std::nullopt;
      case WorkerTask::SumAndPlan:
        unsaid_ += Packed(sumOf(request));
        return plan(request);
      case WorkerTask::Plan:
        return plan(request);
      case WorkerTask::Export:
        break;
    }
    return exportEntries(request);
  }

  void say(const WorkerReply& reply) {
    (void)channel_.send(std::exchange(unsaid_, {}) + Packed(reply));
  }
  void sayUnopened(const Trouble& trouble) {
    WorkerReply reply{WorkerWord::Unopened, trouble.reason};
    reply.kind = trouble.kind;
    say(reply);
  }

  // Kept open from one request to the next.
  Outcome<ItemReader*> open(const WorkerRequest& request) {
    if (reader_ && path_ == request.path) return reader_.get();
    reader_.reset();
    ReaderOptions options;
    options.recover = request.recover;
    Outcome<std::unique_ptr<ItemReader>> opened = OpenSource(request.path, request.kind, options);
    if (!opened) return opened.trouble();
    reader_ = std::move(*opened);
    path_ = request.path;
    return reader_.get();
  }

  // Whether the source is still the same is looked after by who made the range.
  std::optional<Trouble> planRange(const WorkerRequest& request) {
    std::string packed;
    std::optional<Trouble> unread = ReadInPieces(request.range, [&packed](std::string_view piece) {
      packed += piece;
      return true;
    });
    if (unread) return unread;
    const PlanRange range = UnpackedRange(packed);
    const Outcome<ItemReader*> reader = open(request);
    if (!reader) {
      sayUnopened(reader.trouble());
      return std::nullopt;
    }
    ItemFilter filter(request.filter);
    const Outcome<std::optional<Trouble>> written =
        WriteRangePlan(**reader, filter, range, request.plan.path, [this] { beat_.tick(); });
    if (!written) return written.trouble();
    if (*written) {
      sayUnopened(**written);
      return std::nullopt;
    }
    WorkerReply reply{WorkerWord::Planned};
    reply.entries = range.entries;
    say(reply);
    return std::nullopt;
  }

  WorkerReply sumOf(const WorkerRequest& request) {
    beat_.set(kBeatsOfSum);
    if (hook_) hook_("");
    const Outcome<FileSum> sum = SumOfSource(request.path, request.kind, [this] { beat_.tick(); });
    beat_.set(0);
    WorkerReply reply{WorkerWord::Summed};
    if (sum) {
      reply.text = sum->sha256;
      reply.bytes = sum->bytes;
    } else {
      reply.reason = sum.trouble().reason;
    }
    return reply;
  }

  std::optional<Trouble> plan(const WorkerRequest& request) {
    if (!request.range.empty()) return planRange(request);
    reader_.reset();
    const Outcome<ItemReader*> reader = open(request);
    if (!reader) {
      sayUnopened(reader.trouble());
      return std::nullopt;
    }
    ItemFilter filter(request.filter);
    Outcome<WrittenPlan> plan =
        WritePlan(**reader, filter, request.limits, request.plan.path, [this] { beat_.tick(); });
    if (!plan) return plan.trouble();
    WorkerReply reply{WorkerWord::Planned};
    reply.entries = plan->entries;
    reply.plan = std::move(plan->bytes);
    reply.hasMissedFolder = filter.hasMissedFolder();
    say(reply);
    return std::nullopt;
  }

  std::optional<Trouble> exportEntries(const WorkerRequest& request) {
    const Outcome<ItemReader*> reader = open(request);
    if (!reader) {
      sayUnopened(reader.trouble());
      return std::nullopt;
    }
    const fs::path folder = request.folder;
    const auto openPart = [&](WorkerPart part) { return GrowingFile::open(folder / NameOf(part)); };
    const Outcome<std::unique_ptr<GrowingFile>> rows = openPart(WorkerPart::Rows);
    const Outcome<std::unique_ptr<GrowingFile>> mails = openPart(WorkerPart::Mails);
    const Outcome<std::unique_ptr<GrowingFile>> texts = openPart(WorkerPart::Texts);
    const Outcome<std::unique_ptr<GrowingFile>> pages = openPart(WorkerPart::Pages);
    Outcome<std::unique_ptr<PlanReader>> plan = PlanReader::open(request.plan, request.offset);
    for (const auto* const file : {&rows, &mails, &texts, &pages}) {
      if (!*file) return file->trouble();
    }
    if (!plan) return plan.trouble();
    Sinks sinks = {FileSink(**rows), FileSink(**mails), FileSink(**texts), FileSink(**pages)};
    for (uint64_t done = 0; done < request.count; ++done) {
      const Outcome<std::optional<PlanEntry>> entry = (*plan)->next();
      if (!entry) return entry.trouble();
      if (!*entry) return Trouble{TroubleKind::Damaged, "the plan of a source is too short"};
      std::optional<Trouble> trouble =
          exportEntry(request, **entry, **reader, request.first + done, sinks);
      if (trouble) return trouble;
      beat_.tick(kBeatsOfEntry);
      const bool isLast = done + 1 == request.count;
      if (!isLast && (done + 1) % kEntriesOfMessage != 0) continue;
      for (FileSink* const sink : {&sinks.rows, &sinks.mails, &sinks.texts, &sinks.pages}) {
        if (std::optional<Trouble> full = sink->flush()) return full;
      }
      if (!isLast) (void)channel_.send(std::exchange(unsaid_, {}));
    }
    say({WorkerWord::Done, ""});
    return std::nullopt;
  }

  struct Sinks {
    FileSink rows;
    FileSink mails;
    FileSink texts;
    FileSink pages;
  };

  std::optional<Trouble> exportEntry(const WorkerRequest& request, const PlanEntry& entry,
                                     ItemReader& reader, uint64_t number, Sinks& sinks) {
    ItemResult result;
    if (entry.kind != PlanKind::Item) {
      result.rows = RowOfLost(entry, request.name, entry.reason);
    } else {
      if (hook_) hook_(entry.id);
      const Outcome<std::unique_ptr<Item>> item = reader.findIn(entry.folder, entry.id);
      if (!item) {
        result.rows = RowOfLost(entry, request.name, item.trouble().reason);
      } else {
        const std::string folder =
            request.tree + (entry.folderPath.empty() ? "" : "/" + entry.folderPath);
        const ItemTarget target = {
            request.name,
            folder + "/" + entry.name,
            folder + "/" + kMboxName,
            fs::path(request.folder) / std::to_string(number),
            sinks.mails,
            sinks.texts,
            sinks.pages,
            entry.name,
            folder + "/" + OnePdfName(1),
            layout(request.choices),
            {std::chrono::seconds(request.textSeconds), [this] { beat_.tick(); }}};
        Outcome<ItemResult> exported = ExportItem(**item, request.choices, target);
        if (!exported) return exported.trouble();
        result = std::move(*exported);
      }
    }
    if (std::optional<Trouble> full = sinks.rows.write(result.rows)) return full;
    WorkerReply reply{WorkerWord::Exported, result.fingerprint};
    reply.hasFolder = result.hasFolder;
    reply.bytes = result.bytes;
    reply.ends.places = {sinks.rows.end(), sinks.mails.end(), sinks.texts.end(), sinks.pages.end()};
    unsaid_ += Packed(reply);
    return std::nullopt;
  }

  // Its helper is kept from one item to the next.
  PageLayout* layout(const ExportChoices& choices) {
    if (!layout_ && choices.forms.contains(ExportForm::Pdf)) {
      layout_ = HelperLayout(HelpersOf(choices.pages), choices.pages.paper);
    }
    return layout_.get();
  }

  pages::Channel channel_;
  Beat beat_;
  const ItemHook& hook_;
  std::unique_ptr<ItemReader> reader_;
  std::string path_;
  std::string unsaid_;  // replies, for entries of which all is in files when they are said
  std::unique_ptr<PageLayout> layout_;
};

}  // namespace

int RunWorker(const std::vector<std::string>& words, const ItemHook& hook) {
  if (words.size() != 2) return 2;
  PrepareWorker(std::stoull(words[0]));
  Outcome<Beat> beat = Beat::open(words[1]);
  pages::Channel channel{pages::Descriptor(kWorkerSocket)};
  if (!beat) {
    (void)channel.send(Packed(WorkerReply{WorkerWord::Stopped, beat.trouble().reason, {}}));
    return 1;
  }
  try {
    return Worker(std::move(channel), std::move(*beat), hook).run();
  } catch (const std::bad_alloc&) {
    // It costs the item: the process ends.
    return kOutOfMemory;
  }
}

}  // namespace tarn::archive
