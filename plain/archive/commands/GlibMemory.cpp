#include "archive/commands/GlibMemory.h"

#include <glib.h>

#include <string_view>

#include "console/EndAtOnce.h"
#include "console/StandardStreams.h"

namespace tarn::archive {
namespace {

struct Ending {
  int exitStatus = 0;
  const char* line = "";
};

// GLib has no other name for this failure than its words.
bool IsWantOfMemory(GLogLevelFlags level, const char* message) {
  return (level & G_LOG_LEVEL_ERROR) != 0 && message != nullptr &&
         std::string_view(message).find("failed to allocate") != std::string_view::npos;
}

void TakeMessage(const gchar* domain, GLogLevelFlags level, const gchar* message, gpointer data) {
  if (!IsWantOfMemory(level, message))
    return g_log_default_handler(domain, level, message, nullptr);
  const auto* const ending = static_cast<const Ending*>(data);
  host::WriteStandardError(ending->line);
  host::EndAtOnce(ending->exitStatus);
}

}  // namespace

void EndWhereGlibHasNoMemory(int exitStatus, const char* line) {
  static Ending ending;
  ending = {exitStatus, line};
  g_log_set_default_handler(TakeMessage, &ending);
}

}  // namespace tarn::archive
