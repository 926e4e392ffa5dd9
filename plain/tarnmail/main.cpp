// tarnmail - the plain host's command line.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "Commands.h"
#include "FilterLibrary.h"
#include "Settings.h"
#include "StartArchive.h"
#include "console/Arguments.h"
#include "console/Failure.h"
#include "console/Output.h"
#include "console/PrivateFolder.h"
#include "console/StandardStreams.h"
#include "console/Text.h"
#include "console/Usage.h"

namespace tarn::host {
namespace {

// All that the command line can say, with one slot a command.
struct CommandLine {
  Settings settings;
  InfoOptions info;
  DocumentOptions document;
  PagesOptions pages;
  AttachmentsOptions attachments;
  ExtractOptions extract;
  std::optional<std::string> helpTopic;
};

struct NumberRange {
  int32_t lowest;
  int32_t highest = INT32_MAX;
};

// Takes numbers of 32 bits in the range.
CLI::Option* AddNumber(CLI::App& app, const std::string& name, int32_t& number, NumberRange range,
                       const std::string& help) {
  const auto take = [name, range, &number](const std::string& text) {
    if (!IsNumber(text)) throw CLI::ValidationError(name, Named(text) + " is not a number");
    const std::optional<int32_t> parsed = ParseNumber(text);
    if (!parsed) throw CLI::ValidationError(name, text + " is out of range");
    if (*parsed < range.lowest) {
      throw CLI::ValidationError(name, text + " is below " + std::to_string(range.lowest));
    }
    if (*parsed > range.highest) {
      throw CLI::ValidationError(name, text + " is above " + std::to_string(range.highest));
    }
    number = *parsed;
  };
  return app.add_option_function<std::string>(name, take, help)->type_name("N");
}

// These come before the command or after it.
void AddSettings(CLI::App& app, Settings& settings) {
  const auto takeLanguage = [&settings](const std::string& text) {
    settings.language = ParseLangId(text);
    if (!settings.language) {
      throw CLI::ValidationError("--language",
                                 Named(text) + " is not a LANGID such as 0x0407 or 1031");
    }
  };
  app.add_option_function<std::string>("--language", takeLanguage,
                                       "Language of the header labels, as a Windows LANGID")
      ->type_name("LANGID");
  app.add_flag("--in-memory", settings.inMemory,
               "Write no temporary files: images become data: URLs (usual for document)");
  app.add_flag("--temp-files", settings.tempFiles,
               "HTML and its images as temporary files, as hosts get them (usual for info)");
  app.add_option("--temp", settings.tempDirectory,
                 "Directory for the folder that temporary files go to")
      ->type_name("DIR");
}

CLI::App* AddCommand(CLI::App& app, const std::string& name, const std::string& help,
                     Settings& settings, MessageChoice& message) {
  CLI::App* const command = app.add_subcommand(name, help);
  command->add_option("FILE", message.file, "A PST, MSG or EML file; - is standard input")
      ->required()
      ->type_name("");
  AddSettings(*command, settings);
  AddNumber(*command, "-m,--message", message.messageNumber, {1},
            "Message of a PST file, from 1 (default 1)");
  return command;
}

void AddTextOption(CLI::App& command, MessageChoice& message) {
  command.add_flag("--text", message.textOnly,
                   "Ask for plain text, which PST messages without another body need (an EML file "
                   "gives its own body all the same)");
}

void AddOutputOption(CLI::App& command, std::optional<std::string>& output) {
  command.add_option("-o,--output", output, "File to write; - is standard output")
      ->type_name("OUT");
}

void AddSandboxOption(CLI::App& command, bool& sandbox) {
  command.add_flag_callback(
      "--no-sandbox", [&sandbox] { sandbox = false; },
      "Lay documents out even where the machine cannot keep the helpers apart");
}

// "2", "1-3" or "3-".
void AddPageChoice(CLI::App& command, PageChoice& choice) {
  const auto take = [&choice](const std::string& text) {
    const std::optional<PageChoice> parsed = ParsePages(text);
    if (!parsed) {
      throw CLI::ValidationError("--pages", Named(text) + " is no range such as 2, 1-3 or 3-");
    }
    choice = *parsed;
  };
  command.add_option_function<std::string>("--pages", take, "Pages, as 2, 1-3 or 3- (default all)")
      ->type_name("RANGE");
}

CLI::Option* AddPaper(CLI::App& command, PaperFormat& paper) {
  const auto take = [&paper](const std::string& text) {
    if (text != "a4" && text != "letter") {
      throw CLI::ValidationError("--paper", Named(text) + " is neither a4 nor letter");
    }
    paper = text == "a4" ? PaperFormat::A4 : PaperFormat::Letter;
  };
  return command.add_option_function<std::string>("--paper", take, "a4 (default) or letter")
      ->type_name("PAPER");
}

void AddPagesCommand(CLI::App& app, CommandLine& line) {
  PagesOptions& options = line.pages;
  CLI::App* const command = AddCommand(app, "pages", "Write the pages of a message as PNG or PDF",
                                       line.settings, options.message);
  AddTextOption(*command, options.message);
  command
      ->add_option(
          "-o,--output", options.output,
          "Folder for page-0001.png and so on, made if need be; with --pdf the file, - for "
          "standard output, or a folder that is there")
      ->required()
      ->type_name("OUT");
  const CLI::Option* const pdf =
      command->add_flag("--pdf", options.pdf, "One PDF instead of PNG files");
  const CLI::Option* const resolution =
      AddNumber(*command, "--dpi", options.dotsPerInch, {10, 800},
                "Dots per inch of PNG files, from 10 to 800 (default 96)");
  command->parse_complete_callback([pdf, resolution] {
    if (pdf->count() > 0 && resolution->count() > 0) {
      throw CLI::ValidationError("--dpi", "a PDF has no resolution");
    }
  });
  AddPaper(*command, options.paper);
  AddPageChoice(*command, options.pages);
  AddSandboxOption(*command, options.sandbox);
}

// The commands of tarnmail-archive and tarnmail-search, which read their options themselves.
constexpr std::pair<const char*, const char*> kArchiveCommands[] = {
    {"list", "List every message of stores, MSG files, mails and folders of them"},
    {"show", "Show one message, or save its attachments"},
    {"search", "Find messages in what was exported, by words of their text and attachments"},
    {"export", "Write every message as files, with a manifest of them"},
    {"verify", "Compare the files of an export with its manifest"},
    {"plan", "Cut an export into numbered tasks for many machines"},
    {"run-task", "Do one task of a plan"},
    {"missing", "Tell the tasks of a plan that are not done"},
    {"merge", "Put the tasks of a plan together: an export as of one machine"},
};

bool IsArchiveCommand(const std::string& word) {
  return std::any_of(std::begin(kArchiveCommands), std::end(kArchiveCommands),
                     [&word](const auto& command) { return word == command.first; });
}

void AddArchiveCommands(CLI::App& app) {
  for (const auto& [name, help] : kArchiveCommands) {
    CLI::App* const command = app.add_subcommand(name, help);
    command->group("Archive commands");
    command->set_help_flag("");
    command->prefix_command();
  }
}

void AddHelpCommand(CLI::App& app, std::optional<std::string>& topic) {
  CLI::App* const help = app.add_subcommand("help", "Explain a command");
  help->add_option("COMMAND", topic, "One of the commands; all of them without")->type_name("");
}

void Describe(CLI::App& app, CommandLine& line) {
  app.require_subcommand(1);
  // "/" begins a path, on Windows too.
  app.allow_windows_style_options(false);
  app.set_version_flag("-V,--version", "tarnmail " TARNMAIL_VERSION);
  AddSettings(app, line.settings);

  CLI::App* const info =
      AddCommand(app, "info", "Tell what a mail file is", line.settings, line.info.message);
  AddTextOption(*info, line.info.message);
  info->add_flag("--json", line.info.json, "JSON for machines");
  const CLI::Option* const pages =
      info->add_flag("--pages", line.info.pages, "Lay the document out and count its pages");
  const CLI::Option* const paper = AddPaper(*info, line.info.paper);
  info->parse_complete_callback([pages, paper] {
    if (paper->count() > 0 && pages->count() == 0) {
      throw CLI::ValidationError("--paper", "is for --pages");
    }
  });
  AddSandboxOption(*info, line.info.sandbox);

  CLI::App* const document = AddCommand(app, "document", "Write the finished document of a message",
                                        line.settings, line.document.message);
  AddTextOption(*document, line.document.message);
  AddOutputOption(*document, line.document.output);

  AddPagesCommand(app, line);

  CLI::App* const attachments = AddCommand(app, "attachments", "List the attachments of a message",
                                           line.settings, line.attachments.message);
  attachments->add_flag("--json", line.attachments.json, "JSON for machines");

  CLI::App* const extract = AddCommand(app, "extract", "Write one attachment of a message",
                                       line.settings, line.extract.message);
  // The filter itself refuses the numbers below 1, and has a code for it.
  AddNumber(*extract, "K", line.extract.attachmentNumber, {INT32_MIN},
            "Number of the attachment, from 1")
      ->required();
  AddOutputOption(*extract, line.extract.output);

  AddHelpCommand(app, line.helpTopic);
  AddArchiveCommands(app);

  // Last, since commands take over the footer that there is when they are added.
  app.footer(
      "Exit status: 0 done, 1 refused by the filter or not written, 2 wrong usage, 3 broken\n"
      "or packages missing.\n"
      "tarnmail help COMMAND tells more.");
}

// What a run writes, and where.
struct Product {
  std::string text;
  std::optional<std::string> place;   // else standard output
  std::string source;                 // the mail file
  KernelBytes block;                  // in place of the text, as the filter gave it
  std::unique_ptr<PageFolder> pages;  // in place of the text: files
};

// As hosts get documents. But plain text comes from memory on either route, and HTML that comes in
// its place has its images in it on one of them only.
Route RouteForPages(const MessageChoice& message) {
  return message.textOnly ? Route::InMemory : Route::TempFiles;
}

// The folder for temporary files is gone when this returns.
Product RunCommand(const CLI::App& app, const CommandLine& line) {
  PrivateFolder folder(line.settings.tempDirectory);
  const FilterLibrary filter;
  const Workplace at = {filter, folder};
  const auto apply = [&](Route usual) {
    ApplySettings(line.settings, RouteOf(line.settings, usual), folder);
  };
  if (app.got_subcommand("info")) {
    apply(RouteForPages(line.info.message));
    return {InfoText(at, line.info), std::nullopt, line.info.message.file, {}, {}};
  }
  if (app.got_subcommand("document")) {
    apply(Route::InMemory);
    return {
        DocumentBytes(at, line.document), line.document.output, line.document.message.file, {}, {}};
  }
  if (app.got_subcommand("pages")) {
    apply(RouteForPages(line.pages.message));
    Pages made = MakePages(at, line.pages);
    return {std::move(made.pdf), made.place, line.pages.message.file, {}, std::move(made.folder)};
  }
  // Attachments are read without a document: on neither route are there temporary files.
  apply(Route::InMemory);
  if (app.got_subcommand("attachments")) {
    return {
        AttachmentsText(at, line.attachments), std::nullopt, line.attachments.message.file, {}, {}};
  }
  return {
      {}, line.extract.output, line.extract.message.file, AttachmentBytes(at, line.extract), {}};
}

void WriteProduct(const Product& product) {
  const bool hasBlock = product.block.hasBlock();
  const std::string left = WhatIsLeftInTheKernel(hasBlock ? 1 : 0);
  if (!left.empty()) throw Failure(ExitStatus::Broken, "internal error: left behind: " + left);
  if (product.pages) {
    product.pages->putInPlace();
    return;
  }
  WriteOutput(product.place, product.source,
              hasBlock ? product.block.view() : std::string_view(product.text));
}

void Run(std::vector<std::string> words);

// As --help after the command.
void Explain(const CLI::App& app, const std::optional<std::string>& topic) {
  std::vector<std::string> words = {"--help"};
  if (topic) {
    const auto isTopic = [&](const CLI::App* command) { return command->get_name() == *topic; };
    if (app.get_subcommands(isTopic).empty()) {
      throw Failure(ExitStatus::Usage, "unknown command: " + *topic + "; see tarnmail --help");
    }
    words.insert(words.begin(), *topic);
  }
  Run(words);
}

// Help and version are asked for by what the parser throws, too.
void Run(std::vector<std::string> words) {
  if (!words.empty() && IsArchiveCommand(words.front())) StartArchive(words);
  CLI::App app(
      "Reads mail files: whole archives as a mail program would, single messages as the mail "
      "filter "
      "gives them to a host.",
      "tarnmail");
  CommandLine line;
  Describe(app, line);
  try {
    // The parser takes the words from the end.
    std::reverse(words.begin(), words.end());
    app.parse(std::move(words));
  } catch (const CLI::ParseError& error) {
    std::ostringstream text;
    std::ostringstream ignored;
    if (app.exit(error, text, ignored) != 0) {
      throw Failure(ExitStatus::Usage, UsageLine(app, error));
    }
    WriteToStandardOutput(text.str());
    return;
  }

  const std::vector<CLI::App*> chosen = app.get_subcommands();
  if (!chosen.empty() && IsArchiveCommand(chosen.front()->get_name())) {
    const std::string name = chosen.front()->get_name();
    throw Failure(ExitStatus::Usage,
                  name + " takes its options after its name; see tarnmail " + name + " --help");
  }
  if (app.got_subcommand("help")) {
    Explain(app, line.helpTopic);
  } else {
    if (line.settings.inMemory && line.settings.tempFiles) {
      throw Failure(ExitStatus::Usage,
                    "--in-memory and --temp-files exclude each other; see tarnmail --help");
    }
    WriteProduct(RunCommand(app, line));
  }
}

int Report(ExitStatus status, const std::string& line) {
  const std::string text = "tarnmail: " + Printable(line) + "\n";
  WriteStandardError(text);
  return static_cast<int>(status);
}

}  // namespace
}  // namespace tarn::host

int main(int argc, char** argv) {
  using tarn::host::ExitStatus;
  tarn::host::PrepareStandardStreams();
  try {
    tarn::host::Run(tarn::host::CommandLineWords(argc, argv));
  } catch (const tarn::host::Failure& failure) {
    return tarn::host::Report(failure.status(), failure.what());
  } catch (const std::bad_alloc&) {
    return tarn::host::Report(ExitStatus::Failed, "out of memory");
  } catch (const std::exception& error) {
    return tarn::host::Report(ExitStatus::Broken, std::string("internal error: ") + error.what());
  }
  return static_cast<int>(ExitStatus::Done);
}
