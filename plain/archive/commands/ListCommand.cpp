#include "archive/commands/Commands.h"
#include "archive/commands/FolderCounts.h"
#include "archive/commands/ListLines.h"
#include "archive/commands/OutputBuffer.h"
#include "archive/commands/TerminalSize.h"
#include "archive/commands/TroubleReport.h"
#include "archive/sources/ItemWalk.h"
#include "archive/sources/OpenSource.h"
#include "archive/sources/SourceSearch.h"
#include "console/PrivateFolder.h"
#include "console/StandardStreams.h"

namespace tarn::archive {
namespace {

std::unique_ptr<ListLines> LinesFor(const ListOptions& options, bool isTerminal) {
  if (options.json) return JsonLines();
  return isTerminal ? AlignedLines(SizeOfTerminal().columns) : TabbedLines();
}

class ListRun {
 public:
  explicit ListRun(const ListOptions& options)
      : options_(options),
        temporary_(options.temporary),
        isTerminal_(host::StandardOutputIsTerminal()),
        output_(isTerminal_),
        report_(output_),
        search_(options.paths, temporary_),
        filter_(options.filter),
        lines_(LinesFor(options, isTerminal_)) {}

  host::ExitStatus run() {
    while (const std::optional<SourceStep> step = search_.next()) {
      if (const auto* const trouble = std::get_if<SourceTrouble>(&*step)) {
        report_.tell(*trouble);
      } else {
        listSource(std::get<FoundSource>(*step));
      }
    }
    output_.flush();
    if (search_.otherFiles() != 0) {
      const bool isOne = search_.otherFiles() == 1;
      report_.note(std::to_string(search_.otherFiles()) +
                   (isOne ? " file is no mail file" : " files are no mail files"));
    }
    if (filter_.hasMissedFolder()) {
      report_.note("no folder matches " + *options_.filter.folder +
                   "; list --folders shows which there are");
    }
    report_.summarise("all else is listed");
    return report_.status();
  }

 private:
  void listSource(const FoundSource& source) {
    ReaderOptions readerOptions;
    readerOptions.recover = options_.recover;
    Outcome<std::unique_ptr<ItemReader>> reader =
        OpenSource(source.path, source.kind, readerOptions);
    if (!reader) {
      if (IsOtherFile(source, reader.trouble())) {
        search_.countOtherFile();
      } else {
        report_.tell(SourceTrouble{source.name, reader.trouble(), source.isNamed});
      }
      return;
    }
    const ListedSource from{source, search_.mayFindSeveral()};
    const bool withEmbedded = !options_.folders && (options_.json || options_.embedded);
    ItemWalk walk(**reader, withEmbedded ? EmbeddedItems::Walk : EmbeddedItems::Leave);
    FolderCounts counts;
    while (std::optional<WalkStep> step = walk.next()) {
      if (const auto* const trouble = std::get_if<PlaceTrouble>(&*step)) {
        report_.tell(source.name, *trouble);
      } else if (const auto* const folder = std::get_if<FolderStart>(&*step)) {
        if (filter_.takesFolder(folder->path)) counts.meet(folder->path);
      } else {
        listItem(*std::get<Item*>(*step), from, counts);
      }
    }
    if (options_.folders) writeFolders(counts, from);
  }

  void listItem(Item& item, const ListedSource& from, FolderCounts& counts) {
    if (!filter_.takes(item)) return;
    if (options_.folders) {
      counts.add(item.place().folder);
    } else {
      output_.write(lines_->lineOf(item, from));
    }
  }

  void writeFolders(const FolderCounts& counts, const ListedSource& from) {
    if (options_.json) {
      output_.write(counts.asJson(from));
    } else {
      output_.write(isTerminal_ ? counts.asTree(from) : counts.asTabbed(from));
    }
  }

  const ListOptions& options_;
  host::PrivateFolder temporary_;
  bool isTerminal_;
  OutputBuffer output_;
  TroubleReport report_;
  SourceSearch search_;
  ItemFilter filter_;
  std::unique_ptr<ListLines> lines_;
};

}  // namespace

host::ExitStatus List(const ListOptions& options) { return ListRun(options).run(); }

}  // namespace tarn::archive
