#include <algorithm>
#include <array>
#include <exception>

#include "archive/commands/Commands.h"
#include "archive/commands/OutputBuffer.h"
#include "archive/commands/Pager.h"
#include "archive/commands/ShownItem.h"
#include "archive/commands/TerminalSize.h"
#include "archive/commands/TroubleReport.h"
#include "archive/common/NewFiles.h"
#include "archive/sources/ItemWalk.h"
#include "archive/sources/OpenSource.h"
#include "archive/sources/SourceSearch.h"
#include "archive/text/TerminalText.h"
#include "console/Output.h"
#include "console/Paths.h"
#include "console/PrivateFolder.h"
#include "console/StandardStreams.h"
#include "console/Text.h"

namespace tarn::archive {
namespace {

using host::ExitStatus;
using host::Failure;

constexpr size_t kReadAtOnce = 1 << 16;

// What the path leads to: one mail file.
FoundSource OneSource(const std::string& path, host::PrivateFolder& temporary) {
  SourceSearch search({path}, temporary);
  std::optional<FoundSource> found;
  while (std::optional<SourceStep> step = search.next()) {
    if (const auto* const trouble = std::get_if<SourceTrouble>(&*step)) {
      if (!trouble->isNamed) continue;
      throw Failure(ExitStatus::Usage, SpokenName(trouble->name), trouble->trouble.reason);
    }
    if (found) {
      throw Failure(ExitStatus::Usage, path,
                    "is a folder with several mail files: name one; tarnmail list shows them");
    }
    found = std::move(std::get<FoundSource>(*step));
  }
  if (!found) throw Failure(ExitStatus::Usage, path, "is a folder without a mail file");
  return *found;
}

// The id of the only item. Tells what of the source cannot be read.
std::string OnlyId(ItemReader& reader, const FoundSource& source, TroubleReport& report) {
  std::string id;
  uint64_t count = 0;
  bool isWhole = true;
  while (std::optional<Entry> entry = reader.next()) {
    if (const auto* const trouble = std::get_if<PlaceTrouble>(&*entry)) {
      report.tell(source.name, *trouble);
      isWhole = false;
    } else if (const auto* const item = std::get_if<std::unique_ptr<Item>>(&*entry)) {
      if (++count == 1) id = (*item)->place().id;
    }
  }
  if (count == 0) {
    throw Failure(ExitStatus::Failed, SpokenName(source.name),
                  isWhole ? "holds no message" : "holds no message that can be read");
  }
  if (count > 1) {
    throw Failure(ExitStatus::Usage, SpokenName(source.name),
                  "holds " + std::to_string(count) +
                      " messages: name one by its id, which tarnmail list tells");
  }
  return id;
}

// As a shell takes it as one word.
std::string Quoted(const std::string& word) {
  constexpr std::string_view kPlain =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-./=@:,+";
  if (!word.empty() && word.find_first_not_of(kPlain) == std::string::npos) return word;
  std::string quoted = "'";
  for (const char letter : word) {
    if (letter == '\'') {
      quoted += "'\\''";
    } else {
      quoted += letter;
    }
  }
  return quoted + "'";
}

class ShowRun {
 public:
  explicit ShowRun(const ShowOptions& options)
      : options_(options),
        temporary_(options.temporary),
        source_(OneSource(options.path, temporary_)),
        isTerminal_(host::StandardOutputIsTerminal()),
        output_(isTerminal_),
        report_(output_) {}

  ExitStatus run() {
    reader_ = open();
    std::string id = options_.id.value_or("");
    if (!options_.id) {
      id = OnlyId(*reader_, source_, report_);
      reader_ = open();
    }
    Outcome<ItemChain> found = FindItem(*reader_, id);
    if (!found) {
      const bool isMissing = found.trouble().kind == TroubleKind::Missing;
      throw Failure(
          isMissing ? ExitStatus::Usage : ExitStatus::Failed,
          SpokenName(source_.name) + ": item " + id,
          isMissing ? "is not there; tarnmail list tells which are" : found.trouble().reason);
    }
    chain_ = std::move(*found);
    Item& item = chain_.item();
    if (options_.attachment) {
      saveOne(item, *options_.attachment);
    } else if (options_.attachmentFolder) {
      saveAll(item);
    } else if (options_.headers) {
      showHeaders(item);
    } else {
      show(item);
    }
    for (const Trouble& trouble : item.troubles())
      report_.tell(source_.name, {item.place(), trouble});
    return report_.status();
  }

 private:
  std::unique_ptr<ItemReader> open() const {
    Outcome<std::unique_ptr<ItemReader>> reader =
        OpenSource(source_.path, source_.kind, ReaderOptions{true});
    if (!reader) {
      throw Failure(ExitStatus::Usage, SpokenName(source_.name), reader.trouble().reason);
    }
    return std::move(*reader);
  }

  std::string command() const { return "tarnmail show " + Quoted(source_.name); }

  void show(Item& item) {
    constexpr size_t kWidest = 100;
    const size_t width = isTerminal_ ? std::min(SizeOfTerminal().columns, kWidest) : 80;
    const ShownItem shown = ShowItem(item, width, command());
    page(shown.text);
    for (const Trouble& trouble : shown.troubles) {
      report_.tell(source_.name, {item.place(), trouble});
    }
  }

  void showHeaders(Item& item) {
    const Outcome<std::string> headers = item.originalHeaders();
    if (!headers) {
      report_.tell(source_.name, {item.place(), headers.trouble()});
    } else if (headers->empty()) {
      throw Failure(ExitStatus::Failed, SpokenName(source_.name) + ": item " + item.place().id,
                    "has no original headers");
    } else if (options_.output) {
      host::WriteOutput(options_.output, host::Utf8FromPath(source_.path), *headers);
    } else {
      page(HarmlessText(*headers));
    }
  }

  // Lines that the terminal breaks count as often as they are broken.
  static bool IsLongerThan(const TerminalSize& size, std::string_view text) {
    size_t rows = 0;
    while (!text.empty() && rows < size.rows) {
      const size_t end = text.find('\n');
      const size_t columns = Columns(text.substr(0, end));
      rows += std::max<size_t>((columns + size.columns - 1) / size.columns, 1);
      text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    }
    return rows >= size.rows;
  }

  void page(const std::string& text) {
    const bool isLong = isTerminal_ && IsLongerThan(SizeOfTerminal(), text);
    if (!isLong || !ShowThroughPager(text)) WriteOut(text);
  }

  Failure attachmentFailure(ExitStatus status, size_t number, const std::string& what) const {
    return {status,
            SpokenName(source_.name) + ": item " + chain_.item().place().id + ": attachment " +
                std::to_string(number),
            what};
  }

  // Why an attachment has no bytes.
  std::string noBytes(const Item& item, const Attachment& attachment, size_t number,
                      const Trouble& trouble) const {
    if (attachment.kind == AttachmentKind::Item) {
      return "is a message of its own: " + command() + " " + item.place().id + "/" +
             std::to_string(number);
    }
    if (attachment.kind == AttachmentKind::Reference) {
      return "is elsewhere: " + attachment.target;
    }
    return trouble.reason;
  }

  void saveOne(Item& item, size_t number) {
    const std::vector<Attachment>& attachments = item.attachments();
    if (number > attachments.size()) {
      const size_t count = attachments.size();
      throw attachmentFailure(
          ExitStatus::Usage, number,
          "is not there: the message has " + (count == 0 ? "none" : std::to_string(count)));
    }
    Outcome<std::unique_ptr<ByteSource>> bytes = item.open(number - 1);
    if (!bytes) {
      throw attachmentFailure(ExitStatus::Failed, number,
                              noBytes(item, attachments[number - 1], number, bytes.trouble()));
    }
    if (isTerminal_ && !options_.output) {
      writeToTerminal(**bytes, number);
      return;
    }
    host::OutputFile file(options_.output, host::Utf8FromPath(source_.path));
    const auto write = [this, &file](std::string_view piece) {
      if (!options_.output || *options_.output == host::kStandardStream) {
        WriteOut(piece);
      } else {
        file.write(piece);
      }
    };
    const std::optional<Trouble> trouble = copy(**bytes, write);
    if (trouble) throw attachmentFailure(ExitStatus::Failed, number, trouble->reason);
    file.finish();
  }

  // As extract does: nobody asked for bytes that are no text.
  void writeToTerminal(ByteSource& bytes, size_t number) const {
    constexpr size_t kLongestText = size_t{1} << 24;
    const Outcome<std::string> text = ReadAll(bytes, kLongestText);
    const bool isTooLarge = !text && text.trouble().kind == TroubleKind::TooLarge;
    if (!text && !isTooLarge) {
      throw attachmentFailure(ExitStatus::Failed, number, text.trouble().reason);
    }
    if (isTooLarge || !host::IsPlainText(*text)) {
      throw attachmentFailure(ExitStatus::Usage, number,
                              "is no text for a terminal; -o FILE writes it to a file, and -o - "
                              "here");
    }
    WriteOut(*text);
  }

  static std::optional<Trouble> copy(ByteSource& bytes, const NewFiles::Write& write) {
    std::array<char, kReadAtOnce> buffer;
    for (;;) {
      const Outcome<size_t> count = bytes.read(buffer);
      if (!count) return count.trouble();
      if (*count == 0) return std::nullopt;
      write({buffer.data(), *count});
    }
  }

  void saveAll(Item& item) {
    NewFiles files(*options_.attachmentFolder);
    const std::vector<Attachment>& attachments = item.attachments();
    if (attachments.empty()) report_.note("the message has no attachments");
    // All are saved, whether somebody reads their names or not.
    std::exception_ptr untold;
    for (size_t i = 0; i < attachments.size(); ++i) {
      const size_t number = i + 1;
      Outcome<std::unique_ptr<ByteSource>> bytes = item.open(i);
      if (!bytes) {
        notSaved(item, attachments[i], number, bytes.trouble());
        continue;
      }
      std::optional<Trouble> trouble;
      const std::string name =
          files.add(fileName(attachments[i], number), [&](const NewFiles::Write& write) {
            trouble = copy(**bytes, write);
            return !trouble;
          });
      if (trouble) {
        notSaved(item, attachments[i], number, *trouble);
      } else if (!untold) {
        try {
          output_.write(HarmlessLine(name) + "\n");
        } catch (const std::exception&) {
          untold = std::current_exception();
        }
      }
    }
    if (untold) std::rethrow_exception(untold);
    output_.flush();
  }

  static std::string fileName(const Attachment& attachment, size_t number) {
    std::string name = attachment.name;
    if (attachment.kind == AttachmentKind::Item && !name.ends_with(".eml") &&
        !name.ends_with(".msg")) {
      name += name.empty() ? "" : ".eml";
    }
    const bool isMail = attachment.kind == AttachmentKind::Item;
    return SafeName(name, "attachment-" + std::to_string(number) + (isMail ? ".eml" : ""));
  }

  // What has no bytes of its own is no failure.
  void notSaved(const Item& item, const Attachment& attachment, size_t number,
                const Trouble& trouble) {
    const std::string reason =
        "attachment " + std::to_string(number) + " " + noBytes(item, attachment, number, trouble);
    const bool hasNone =
        attachment.kind == AttachmentKind::Item || attachment.kind == AttachmentKind::Reference;
    if (hasNone) {
      report_.note(SpokenName(source_.name) + ": item " + item.place().id + ": " + reason);
    } else {
      report_.tell(source_.name, {item.place(),
                                  {trouble.kind, "attachment " + std::to_string(number) + ": " +
                                                     trouble.reason}});
    }
  }

  const ShowOptions& options_;
  host::PrivateFolder temporary_;
  FoundSource source_;
  bool isTerminal_;
  OutputBuffer output_;
  TroubleReport report_;
  std::unique_ptr<ItemReader> reader_;
  ItemChain chain_;  // of the reader, which outlives it
};

}  // namespace

ExitStatus Show(const ShowOptions& options) {
  const int wanted = int{options.headers} + int{options.attachment.has_value()} +
                     int{options.attachmentFolder.has_value()};
  if (wanted > 1) {
    throw Failure(ExitStatus::Usage,
                  "--headers, --attachment and --all-attachments exclude each other; see tarnmail "
                  "show --help");
  }
  if (options.output && !options.headers && !options.attachment) {
    throw Failure(ExitStatus::Usage,
                  "-o is for --attachment and --headers; see tarnmail show --help");
  }
  return ShowRun(options).run();
}

}  // namespace tarn::archive
