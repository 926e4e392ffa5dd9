// HelperMain.h - the program of a helper: its arguments, its walls, its work.
#ifndef TARN_SIBLINGS_HELPER_HELPERMAIN_H
#define TARN_SIBLINGS_HELPER_HELPERMAIN_H

#include <filesystem>
#include <functional>

#include "Sandbox.h"
#include "Serve.h"

namespace tarn::pages {

struct HelperTrade {
  Files files = Files::ReadOnly;
  // Starts the engines, with a folder of their own. What they need of the system beyond reading
  // files and threads they have to take here.
  std::function<EngineFor(const std::filesystem::path& folder)> begin;
};

// Serves until its parent has gone; gives the exit status of the program, which is to end with it
// at once: there is nothing that anybody would miss.
int RunHelper(int argc, char** argv, const HelperTrade& trade);

}  // namespace tarn::pages

#endif
