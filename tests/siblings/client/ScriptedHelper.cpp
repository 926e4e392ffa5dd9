// A helper with the scripted engine: as tarnmail-pages one that only reads files, as
// tarnmail-office one that writes them.
#include <unistd.h>

#include <memory>

#include "Attempts.h"
#include "ScriptedEngine.h"
#include "siblings/helper/HelperMain.h"

int main(int argc, char** argv) {
  using namespace tarn::pages;
  const std::unique_ptr<Engine> engine = tarn::test::MakeScriptedEngine();
  const HelperTrade trade = {SCRIPTED_HELPER_FILES, [&engine](const std::filesystem::path&) {
                               tarn::test::StartEarlyThread();
                               return [&engine](DocumentKind) -> Engine& { return *engine; };
                             }};
  _exit(RunHelper(argc, argv, trade));
}
