// tarnmail-archive - the archive commands of tarnmail, which starts it.

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "archive/commands/ClusterArguments.h"
#include "archive/commands/Commands.h"
#include "archive/commands/ExportArguments.h"
#include "archive/commands/MissingMemory.h"
#include "archive/commands/ProgramRun.h"
#include "archive/export/Export.h"
#include "archive/export/Worker.h"
#include "archive/export/WorkerMessages.h"
#include "console/Arguments.h"
#include "console/Failure.h"
#include "console/Text.h"
#include "console/Usage.h"

namespace tarn::archive {
namespace {

using host::ExitStatus;

// The options of each command, and the one that was chosen.
struct CommandLine {
  ListOptions list;
  ShowOptions show;
  ExportOptions exporting;
  VerifyOptions verify;
  ClusterCommands cluster;
  std::function<ExitStatus()> chosen;
};

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

void AddExport(CLI::App& app, CommandLine& line) {
  ExportOptions& options = line.exporting;
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
  AddExportChoices(*command, options);
  command->add_flag("--resume", options.resume, "Go on with an export that was ended early");
  command->add_option("-j,--jobs", options.workers, "Processes that read at the same time")
      ->check(CLI::Range(1, 64).description(""))
      ->type_name("N");
  AddWorkerLimits(*command, options);
  AddTemporary(*command, options.temporary);
  command->callback([&line, command] {
    CombineExportChoices(*command, line.exporting);
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
    EndWhereMemoryIsMissing(kOutOfMemory, "");
    return static_cast<ExitStatus>(RunWorker(words));
  }
  EndWhereMemoryIsMissing(static_cast<int>(ExitStatus::Failed), "tarnmail: out of memory\n");
  CLI::App app("Reads whole mail archives.", "tarnmail");
  app.require_subcommand(1);
  app.allow_windows_style_options(false);
  CommandLine line;
  AddList(app, line);
  AddShow(app, line);
  AddExport(app, line);
  AddVerify(app, line);
  AddCluster(app, line.cluster, line.chosen);
  if (!ReadWords(app, std::move(words))) return ExitStatus::Done;
  return line.chosen();
}

}  // namespace
}  // namespace tarn::archive

int main(int argc, char** argv) {
  return tarn::archive::RunProgram(argc, argv, tarn::archive::Run);
}
