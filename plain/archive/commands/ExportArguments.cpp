#include "archive/commands/ExportArguments.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <sstream>
#include <vector>

#include "console/Usage.h"

namespace tarn::archive {
namespace {

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

}  // namespace

void AddTemporary(CLI::App& command, std::optional<std::string>& temporary) {
  command.add_option("--temp", temporary, "Directory for the copy of standard input or a pipe")
      ->type_name("DIR");
}

void AddExportChoices(CLI::App& command, ExportOptions& options) {
  options.choices.forms = {AllForms().front()};
  command
      .add_option_function<std::string>(
          "--to", [&options](const std::string& text) { options.choices.forms = FormsOf(text); },
          "What becomes of each message, several with commas or by several of this option: html "
          "(if "
          "nothing is said), text, eml, mbox, json, pdf")
      ->join(',')
      ->type_name("FORMS");
  command.add_flag("--one-pdf", options.choices.onePdf,
                   "One PDF a folder, messages.pdf, with bookmarks; pdf if nothing else is said");
  command.add_flag_callback(
      "--no-attachments", [&options] { options.choices.attachments = false; },
      "Attachments are not written beside");
  command.add_flag_callback(
      "--no-catalogue", [&options] { options.choices.catalogue = false; },
      "Neither catalogue.sqlite nor index.html are made");
  command
      .add_option_function<std::string>(
          "--paper",
          [&options](const std::string& text) { options.choices.pages.paper = PaperOf(text); },
          "Of pdf: a4 (default) or letter")
      ->type_name("PAPER");
  command.add_flag_callback(
      "--no-sandbox", [&options] { options.choices.pages.sandbox = false; },
      "Of pdf: lay out even where the machine has no way to keep helpers apart");
  command.add_flag("--dedupe", options.dedupe,
                   "Of messages with the same content only the first is written");
  AddFilter(command, options.filter, "--recipient");
  command.add_flag("--recover", options.recover, "Also what a store holds and no table names");
}

void CombineExportChoices(const CLI::App& command, ExportOptions& options) {
  ExportChoices& choices = options.choices;
  if (!choices.onePdf) return;
  if (command.count("--to") == 0) choices.forms = {ExportForm::Pdf};
  if (choices.forms.contains(ExportForm::Pdf)) return;
  throw CLI::ValidationError("--one-pdf", "pdf is not among the forms of --to");
}

void AddWorkerLimits(CLI::App& command, ExportOptions& options) {
  command
      .add_option("--seconds", options.seconds,
                  "Time for one message, 120 unless said otherwise; then it is given up")
      ->check(CLI::Range(1, 86'400).description(""))
      ->type_name("N");
  constexpr uint64_t kMegabyte = uint64_t{1} << 20;
  command
      .add_option_function<uint64_t>(
          "--memory", [&options](uint64_t size) { options.memory = size * kMegabyte; },
          "Memory of each process in MB, 1024 unless said otherwise")
      ->check(CLI::Range(128, 1 << 20).description(""))
      ->type_name("MB");
}

}  // namespace tarn::archive
