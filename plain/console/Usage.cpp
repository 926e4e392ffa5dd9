#include "Usage.h"

#include <vector>

namespace tarn::host {
namespace {

bool LooksLikeOption(const std::string& word) { return word.size() > 1 && word[0] == '-'; }

// A word that nobody takes, and where it is; empty when there is none. `before` are those that are
// before the command, `all` those after it too.
std::string UnexpectedWord(const std::vector<std::string>& before,
                           const std::vector<std::string>& all) {
  if (!before.empty()) return "unknown option before the command: " + before[0];
  for (const std::string& word : all) {
    if (LooksLikeOption(word)) {
      return std::string("unknown option: ")
          .append(word)
          .append(" (write ./")
          .append(word)
          .append(" for a file of that name)");
    }
  }
  return all.empty() ? "" : "unexpected argument: " + Named(all[0]);
}

}  // namespace

std::string Named(const std::string& text) { return text.empty() ? "an empty text" : text; }

std::string UsageLine(const CLI::App& app, const CLI::ParseError& error) {
  const std::vector<std::string> unknown = app.remaining();
  const bool isOption = !unknown.empty() && LooksLikeOption(unknown[0]);
  if (!unknown.empty() && !isOption) {
    const std::string what =
        unknown[0].empty() ? "empty command" : "unknown command: " + unknown[0];
    return what + "; see tarnmail --help";
  }
  const bool misses = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr ||
                      dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr;
  std::string what = error.what();
  const std::vector<CLI::App*> commands = app.get_subcommands();
  if (!commands.empty()) {
    const std::string unexpected = misses ? UnexpectedWord(unknown, app.remaining(true)) : "";
    if (!unexpected.empty()) what = unexpected;
    return what + "; see tarnmail " + commands[0]->get_name() + " --help";
  }
  if (error.get_name() == "RequiredError") {
    what = isOption ? "unknown option: " + unknown[0] : "no command given";
  }
  return what + "; see tarnmail --help";
}

}  // namespace tarn::host
