// DumpAnswers FOLDER [FILE...]: writes a line for everything that the exports answer, for the files
// below the folder that are named, relative to it, or for all of them, sorted by name; DumpLines.h
// has the lines. Nothing in them depends on the place of the build, of the folder or of temporary
// files, nor on the time or its zone, so that two builds are compared with `diff`. They do depend
// on the machine's code pages and fonts.
//
// With --raw the answers' own bytes go to a file in place of their lines.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

#include "DumpFile.h"
#include "support/LocalZone.h"
#include "support/TempDirectory.h"
#include "support/road/AllCalls.h"

namespace {

using namespace tarn::test;

// Five hours west of Greenwich with the summer time of the United States, the one rule that the
// runtimes of all systems know.
constexpr const char* kZone = "EST5EDT,M3.2.0,M11.1.0";

constexpr const char* kNoFile = "-";

// The process works in a folder of its own: the kernel's temporary files then have the same paths
// in every process, but for what is drawn by chance. Paths have a part in the answers: the names of
// images have so much room, and no more.
class WorkFolder {
 public:
  WorkFolder() : before_(std::filesystem::current_path()) {
    std::filesystem::current_path(folder_.path());
  }
  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;
  ~WorkFolder() {
    std::error_code ignored;
    std::filesystem::current_path(before_, ignored);
  }

 private:
  TempDirectory folder_;
  std::filesystem::path before_;
};

std::string NameOf(const std::filesystem::path& path) {
  const std::u8string utf8 = path.generic_u8string();
  return {utf8.begin(), utf8.end()};
}

std::vector<std::string> FilesBelow(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file()) names.push_back(NameOf(entry.path().lexically_relative(folder)));
  }
  std::sort(names.begin(), names.end());
  names.insert(names.begin(), kNoFile);
  return names;
}

struct Arguments {
  std::string folder;
  std::vector<std::string> files;
  std::string raw;
  DumpOptions options;
};

bool Dump(const Arguments& arguments) {
  const std::filesystem::path folder = std::filesystem::absolute(arguments.folder);
  const auto files = arguments.files.empty() ? FilesBelow(folder) : arguments.files;
  DumpLines lines(stdout);
  if (!arguments.raw.empty() && !lines.openRaw(arguments.raw)) {
    std::fprintf(stderr, "cannot write %s\n", arguments.raw.c_str());
    return false;
  }
  const WorkFolder work;
  DumpOptions options = arguments.options;
  options.tempFolder = "temp";
  options.outFolder = "out";
  std::filesystem::create_directory(options.tempFolder);
  std::filesystem::create_directory(options.outFolder);
  for (const std::string& name : files) {
    if (name == kNoFile) {
      MakeCallsWithoutFile([&](const Answer& answer) { lines.answer(name, "-", answer); });
    } else {
      DumpFile(folder / name, name, options, lines);
    }
  }
  std::fprintf(stderr, "%llu answers\n", static_cast<unsigned long long>(lines.answers()));
  return lines.finish();
}

}  // namespace

int main(int count, char** words) {
  LocalZone zone;
  zone.use(kZone);
  Arguments arguments;
  CLI::App app("Writes a line for everything that the exports answer.");
  app.add_option("--raw", arguments.raw, "write the answers' bytes to this file instead");
  app.add_option("--messages", arguments.options.messages, "the most messages of a store")
      ->check(CLI::Range(1, 100000));
  app.add_option("--languages", arguments.options.languages, "how many of the five languages")
      ->check(CLI::Range(1, 5));
  app.add_option("FOLDER", arguments.folder)->required()->check(CLI::ExistingDirectory);
  app.add_option("FILE", arguments.files);
  CLI11_PARSE(app, count, words);
  try {
    return Dump(arguments) ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
