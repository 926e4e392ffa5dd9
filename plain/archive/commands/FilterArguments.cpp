#include "archive/commands/FilterArguments.h"

#include <optional>

#include "console/Usage.h"

namespace tarn::archive {
namespace {

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

}  // namespace

void AddFilter(CLI::App& command, FilterOptions& filter, const char* recipients) {
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

}  // namespace tarn::archive
