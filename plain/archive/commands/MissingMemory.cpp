#include "archive/commands/MissingMemory.h"

#include <glib.h>

#include <cstdlib>
#include <exception>
#include <new>
#include <string_view>

#include "console/EndAtOnce.h"
#include "console/StandardStreams.h"

namespace tarn::archive {
namespace {

struct Ending {
  int exitStatus = 0;
  const char* line = "";
};

Ending ending;
std::terminate_handler usualEnd = std::abort;

[[noreturn]] void End() {
  host::WriteStandardError(ending.line);
  host::EndAtOnce(ending.exitStatus);
}

// GLib has no other name for this failure than its words.
bool IsWantOfMemory(GLogLevelFlags level, const char* message) {
  return (level & G_LOG_LEVEL_ERROR) != 0 && message != nullptr &&
         std::string_view(message).find("failed to allocate") != std::string_view::npos;
}

void TakeMessage(const gchar* domain, GLogLevelFlags level, const gchar* message, gpointer) {
  if (IsWantOfMemory(level, message)) End();
  g_log_default_handler(domain, level, message, nullptr);
}

void TakeException() {
  try {
    if (const std::exception_ptr thrown = std::current_exception()) std::rethrow_exception(thrown);
  } catch (const std::bad_alloc&) {
    End();
  } catch (...) {
    // What it is the usual handler tells.
  }
  usualEnd();
}

}  // namespace

void EndWhereMemoryIsMissing(int exitStatus, const char* line) {
  ending = {exitStatus, line};
  g_log_set_default_handler(TakeMessage, nullptr);
  usualEnd = std::set_terminate(TakeException);
}

}  // namespace tarn::archive
