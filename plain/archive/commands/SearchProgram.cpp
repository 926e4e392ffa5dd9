// tarnmail-search - searches in what was exported. tarnmail starts it for that command, which is
// over sooner than the libraries are loaded that read mail.

#include <CLI/CLI.hpp>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "archive/commands/Commands.h"
#include "archive/commands/FilterArguments.h"
#include "archive/commands/ProgramRun.h"
#include "console/Arguments.h"
#include "console/Text.h"
#include "console/Usage.h"

namespace tarn::archive {
namespace {

void AddSearch(CLI::App& app, SearchOptions& options) {
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
}

host::ExitStatus Run(std::vector<std::string> words) {
  CLI::App app("Searches mail archives.", "tarnmail");
  app.require_subcommand(1);
  app.allow_windows_style_options(false);
  SearchOptions options;
  AddSearch(app, options);
  return ReadWords(app, std::move(words)) ? Search(options) : host::ExitStatus::Done;
}

}  // namespace
}  // namespace tarn::archive

int main(int argc, char** argv) {
  return tarn::archive::RunProgram(argc, argv, tarn::archive::Run);
}
