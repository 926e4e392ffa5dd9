// tarnmail-archive - the archive commands of tarnmail, which starts it.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <functional>
#include <new>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "archive/commands/Commands.h"
#include "archive/commands/OutputBuffer.h"
#include "archive/export/Export.h"
#include "archive/export/Worker.h"
#include "archive/export/WorkerMessages.h"
#include "console/Arguments.h"
#include "console/Failure.h"
#include "console/StandardStreams.h"
#include "console/Text.h"
#include "console/Usage.h"

namespace tarn::archive {
namespace {

using host::ExitStatus;
using host::Failure;

// The options of each command, and the one that was chosen.
struct CommandLine {
  ListOptions list;
  ShowOptions show;
  SearchOptions search;
  ExportOptions exporting;
  VerifyOptions verify;
  std::function<ExitStatus()> chosen;
};

void AddTemporary(CLI::App& command, std::optional<std::string>& temporary) {
  command.add_option("--temp", temporary, "Directory for the copy of standard input or a pipe")
      ->type_name("DIR");
}

void AddSpan(CLI::App& command, const std::string& name, std::optional<Span>& span,
             const std::string& help) {
  const auto take = [name, &span](const std::string& text) {
    span = ParseSpan(text);
    if (!span) {
      throw CLI::ValidationError(name, host::Named(text) +
                                           " is no date such as 2024-05-01, 2024-05 or "
                                           "2024-05-01T12:30+02:00");
    }
  };
  command.add_option_function<std::string>(name, take, help)->type_name("DATE");
}

// Where --to has another meaning, recipients go by another name.
void AddFilter(CLI::App& command, FilterOptions& filter, const char* recipients = "--to") {
  command
      .add_option("--folder", filter.folder,
                  "Only in this folder and those below it: its path, or a pattern with * and ?")
      ->type_name("FOLDER");
  command.add_option("--from", filter.from, "Only with this in the sender's name or address")
      ->type_name("TEXT");
  command.add_option(recipients, filter.to, "Only with this in a name or address of To, Cc or Bcc")
      ->type_name("TEXT");
  command.add_option("--subject", filter.subject, "Only with this in the subject")
      ->type_name("TEXT");
  AddSpan(command, "--since", filter.since,
          "Only from this date on: 2024, 2024-05, 2024-05-01 or 2024-05-01T12:30, local time "
          "unless it ends in Z or an offset as +02:00");
  AddSpan(command, "--until", filter.until, "Only up to this date, which is included");
  command.add_flag("--has-attachment", filter.hasAttachment, "Only with attachments");
  command
      .add_option("--class", filter.messageClass,
                  "Only items whose class begins so, as IPM.Appointment")
      ->type_name("CLASS");
}

void AddList(CLI::App& app, CommandLine& line) {
  ListOptions& options = line.list;
  CLI::App* const list = app.add_subcommand(
      "list", "List every message of stores, MSG files, mails and folders of them");
  list->add_option(
          "PATH", options.paths,
          "Stores, MSG files, mails, mboxes, Maildirs, or folders to search; - is standard "
          "input")
      ->required()
      ->type_name("");
  list->add_flag("--json", options.json, "JSON Lines for machines, embedded messages too");
  list->add_flag("--folders", options.folders, "The folders, with the number of messages in each");
  list->add_flag("--embedded", options.embedded, "Messages attached to messages too");
  AddFilter(*list, options.filter);
  list->add_flag("--recover", options.recover, "Also what a store holds and no table names");
  AddTemporary(*list, options.temporary);
  list->callback([&line] { line.chosen = [&line] { return List(line.list); }; });
}

void AddShow(CLI::App& app, CommandLine& line) {
  ShowOptions& options = line.show;
  CLI::App* const show = app.add_subcommand("show", "Show one message, or save its attachments");
  show->add_option("PATH", options.path,
                   "A store, MSG file, mail, mbox or Maildir; - is standard input")
      ->required()
      ->type_name("");
  show->add_option("ID", options.id, "The message's id, as list tells it; not needed for one alone")
      ->type_name("");
  show->add_flag("--headers", options.headers, "The original headers of the mail");
  const auto takeNumber = [&options](const std::string& text) {
    const std::optional<int32_t> number = host::ParseNumber(text);
    if (!number || *number < 1) {
      throw CLI::ValidationError("--attachment", host::Named(text) + " is no number from 1");
    }
    options.attachment = static_cast<size_t>(*number);
  };
  show->add_option_function<std::string>("--attachment", takeNumber,
                                         "Write attachment number K, from 1")
      ->type_name("K");
  show->add_option("-o,--output", options.output,
                   "File for the attachment or the headers; - is standard output")
      ->type_name("OUT");
  show->add_option("--all-attachments", options.attachmentFolder,
                   "Write all attachments into this folder, which is made if need be")
      ->type_name("DIR");
  AddTemporary(*show, options.temporary);
  show->callback([&line] { line.chosen = [&line] { return Show(line.show); }; });
}

void AddSearch(CLI::App& app, CommandLine& line) {
  SearchOptions& options = line.search;
  CLI::App* const search = app.add_subcommand(
      "search", "Find messages in what was exported, by words of their text and attachments");
  search->add_option("DIR", options.directory, "The folder that export has written")
      ->required()
      ->type_name("");
  search
      ->add_option("WORDS", options.words,
                   "Words that must all occur; '\"a phrase\"', begin*, a OR b, NOT c, "
                   "subject: from: to: body: attachment: before a word")
      ->required()
      ->type_name("");
  search->add_flag("--json", options.json, "JSON Lines for machines");
  const auto takeNumber = [&options](const std::string& text) {
    const std::optional<int32_t> number = host::ParseNumber(text);
    if (!number || *number < 0) {
      throw CLI::ValidationError("--limit", host::Named(text) + " is no number from 0");
    }
    options.limit = static_cast<size_t>(*number);
  };
  search
      ->add_option_function<std::string>("--limit", takeNumber,
                                         "At most N messages, 0 for all; on a terminal 20")
      ->type_name("N");
  AddFilter(*search, options.filter);
  search->callback([&line] { line.chosen = [&line] { return Search(line.search); }; });
}

// "html,text" as the forms that they are.
std::set<ExportForm> FormsOf(const std::string& text) {
  std::set<ExportForm> forms;
  std::istringstream names(text);
  for (std::string name; std::getline(names, name, ',');) {
    const std::vector<ExportForm> all = AllForms();
    const auto form =
        std::find_if(all.begin(), all.end(), [&](ExportForm one) { return NameOf(one) == name; });
    if (form == all.end()) {
      std::string known;
      for (const ExportForm one : all) {
        known += (known.empty() ? "" : ", ") + std::string(NameOf(one));
      }
      throw CLI::ValidationError("--to", host::Named(name) + " is none of " + known);
    }
    forms.insert(*form);
  }
  if (forms.empty()) throw CLI::ValidationError("--to", "no form is named");
  return forms;
}

pages::Paper PaperOf(const std::string& text) {
  if (text == "a4") return pages::Paper::A4;
  if (text == "letter") return pages::Paper::Letter;
  throw CLI::ValidationError("--paper", host::Named(text) + " is neither a4 nor letter");
}

void AddExport(CLI::App& app, CommandLine& line) {
  ExportOptions& options = line.exporting;
  options.choices.forms = {AllForms().front()};
  CLI::App* const command =
      app.add_subcommand("export", "Write every message as files, with a manifest of them");
  command
      ->add_option("PATH", options.paths,
                   "Stores, MSG files, mails, mboxes, Maildirs, or folders to search; - is "
                   "standard input")
      ->required()
      ->type_name("");
  command->add_option("-o,--output", options.folder, "Folder for the files, new or empty")
      ->required()
      ->type_name("DIR");
  command
      ->add_option_function<std::string>(
          "--to", [&options](const std::string& text) { options.choices.forms = FormsOf(text); },
          "What becomes of each message, several with commas: html (if nothing is said), text, "
          "eml, mbox, json, pdf")
      ->type_name("FORMS");
  command->add_flag("--one-pdf", options.choices.onePdf,
                    "One PDF a folder, messages.pdf, with bookmarks; pdf if nothing else is said");
  command->add_flag_callback(
      "--no-attachments", [&options] { options.choices.attachments = false; },
      "Attachments are not written beside");
  command->add_flag_callback(
      "--no-catalogue", [&options] { options.choices.catalogue = false; },
      "Neither catalogue.sqlite nor index.html are made");
  command
      ->add_option_function<std::string>(
          "--paper",
          [&options](const std::string& text) { options.choices.pages.paper = PaperOf(text); },
          "Of pdf: a4 (default) or letter")
      ->type_name("PAPER");
  command->add_flag_callback(
      "--no-sandbox", [&options] { options.choices.pages.sandbox = false; },
      "Of pdf: lay out even where the machine has no way to keep helpers apart");
  command->add_flag("--dedupe", options.dedupe,
                    "Of messages with the same content only the first is written");
  AddFilter(*command, options.filter, "--recipient");
  command->add_flag("--recover", options.recover, "Also what a store holds and no table names");
  command->add_flag("--resume", options.resume, "Go on with an export that was ended early");
  command->add_option("-j,--jobs", options.workers, "Processes that read at the same time")
      ->check(CLI::Range(1, 64).description(""))
      ->type_name("N");
  command
      ->add_option("--seconds", options.seconds,
                   "Time for one message, 120 unless said otherwise; then it is given up")
      ->check(CLI::Range(1, 86'400).description(""))
      ->type_name("N");
  constexpr uint64_t kMegabyte = uint64_t{1} << 20;
  command
      ->add_option_function<uint64_t>(
          "--memory", [&options](uint64_t size) { options.memory = size * kMegabyte; },
          "Memory of each process in MB, 1024 unless said otherwise")
      ->check(CLI::Range(128, 1 << 20).description(""))
      ->type_name("MB");
  AddTemporary(*command, options.temporary);
  command->callback([&line, command] {
    ExportChoices& choices = line.exporting.choices;
    if (choices.onePdf && command->count("--to") == 0) choices.forms = {ExportForm::Pdf};
    if (choices.onePdf && !choices.forms.contains(ExportForm::Pdf)) {
      throw CLI::ValidationError("--one-pdf", "pdf is not among the forms of --to");
    }
    line.chosen = [&line] { return Export(line.exporting); };
  });
}

void AddVerify(CLI::App& app, CommandLine& line) {
  CLI::App* const verify =
      app.add_subcommand("verify", "Compare the files of an export with its manifest");
  verify->add_option("DIR", line.verify.folder, "The folder of the export")
      ->required()
      ->type_name("");
  verify->callback([&line] { line.chosen = [&line] { return Verify(line.verify); }; });
}

ExitStatus Run(std::vector<std::string> words) {
  // A process that an export has started; see there.
  if (!words.empty() && words.front() == kWorkerWord) {
    words.erase(words.begin());
    return static_cast<ExitStatus>(RunWorker(words));
  }
  CLI::App app("Reads whole mail archives.", "tarnmail");
  app.require_subcommand(1);
  app.allow_windows_style_options(false);
  CommandLine line;
  AddList(app, line);
  AddShow(app, line);
  AddSearch(app, line);
  AddExport(app, line);
  AddVerify(app, line);
  try {
    // The parser takes the words from the end.
    std::reverse(words.begin(), words.end());
    app.parse(std::move(words));
  } catch (const CLI::ParseError& error) {
    std::ostringstream text;
    std::ostringstream ignored;
    if (app.exit(error, text, ignored) != 0) {
      throw Failure(ExitStatus::Usage, host::UsageLine(app, error));
    }
    WriteOut(text.str());
    return ExitStatus::Done;
  }
  return line.chosen();
}

int Report(ExitStatus status, const std::string& line) {
  host::WriteStandardError("tarnmail: " + host::Printable(line) + "\n");
  return static_cast<int>(status);
}

}  // namespace
}  // namespace tarn::archive

int main(int argc, char** argv) {
  using tarn::archive::Report;
  using tarn::host::ExitStatus;
  tarn::host::PrepareStandardStreams();
  try {
    return static_cast<int>(tarn::archive::Run(tarn::host::CommandLineWords(argc, argv)));
  } catch (const tarn::archive::NobodyReads&) {
    return static_cast<int>(ExitStatus::Done);
  } catch (const tarn::host::Failure& failure) {
    return Report(failure.status(), failure.what());
  } catch (const std::bad_alloc&) {
    return Report(ExitStatus::Failed, "out of memory");
  } catch (const std::exception& error) {
    return Report(ExitStatus::Broken, std::string("internal error: ") + error.what());
  }
}
