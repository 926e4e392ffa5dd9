#include "archive/commands/ProgramRun.h"

#include <algorithm>
#include <exception>
#include <new>
#include <sstream>
#include <utility>

#include "archive/commands/OutputBuffer.h"
#include "console/Arguments.h"
#include "console/StandardStreams.h"
#include "console/Text.h"
#include "console/Usage.h"

namespace tarn::archive {
namespace {

using host::ExitStatus;
using host::Failure;

int Report(ExitStatus status, const std::string& line) {
  host::WriteStandardError("tarnmail: " + host::Printable(line) + "\n");
  return static_cast<int>(status);
}

}  // namespace

bool ReadWords(CLI::App& app, std::vector<std::string> words) {
  try {
    // The parser takes the words from the end.
    std::reverse(words.begin(), words.end());
    app.parse(std::move(words));
  } catch (const CLI::ParseError& error) {
    std::ostringstream text;
    std::ostringstream ignored;
    if (app.exit(error, text, ignored) != 0) {
      throw Failure(ExitStatus::Usage, host::UsageLine(app, error));
    }
    WriteOut(text.str());
    return false;
  }
  return true;
}

int RunProgram(int argc, char** argv,
               const std::function<ExitStatus(std::vector<std::string>)>& run) {
  host::PrepareStandardStreams();
  try {
    return static_cast<int>(run(host::CommandLineWords(argc, argv)));
  } catch (const NobodyReads&) {
    return static_cast<int>(ExitStatus::Done);
  } catch (const Failure& failure) {
    return Report(failure.status(), failure.what());
  } catch (const std::bad_alloc&) {
    return Report(ExitStatus::Failed, "out of memory");
  } catch (const std::exception& error) {
    return Report(ExitStatus::Broken, std::string("internal error: ") + error.what());
  }
}

}  // namespace tarn::archive
