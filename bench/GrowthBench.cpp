// GrowthBench: how the cost of every command grows with every hostile shape. Each shape is made in
// three sizes, n, 2n and 4n; each command runs on each in a process of its own. A line has the
// shape, the command, what the smallest size cost beyond a file of one item, and the ratios 2n/n
// and 4n/2n of processor time, instructions and peak memory: 2 and 2 for a cost in proportion to
// the size, 4 and 4 for its square. Lines whose last ratio of time is above 2.6 end in "<--"; where
// time is short, say below 50 ms, that may be chance: ask for --rounds.
//
// Instructions are "-" where the machine does not count them.

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "MeasuredProcess.h"
#include "support/hostile/HostileShapes.h"

namespace {

using tarn::bench::Measure;
using tarn::bench::ProcessCost;
using tarn::test::HostileFormat;
using tarn::test::HostileShape;

namespace fs = std::filesystem;

struct Choices {
  std::string folder = fs::path(TARN_BUILD_FOLDER).string();
  std::string group;
  std::string shape;
  std::string command;
  bool details = false;
  double times = 1;
  int rounds = 3;
  unsigned mostSeconds = 60;
};

struct Group {
  const char* name;
  std::span<const HostileShape> shapes;
};

struct Command {
  const char* name;
  std::vector<std::string> words;  // "FILE", "OUT" and "PLAN" are replaced
  bool isOfFilter;                 // for formats that the filter reads
  bool isDetail;
  std::vector<std::vector<std::string>> before = {};  // commands that are not measured
};

std::vector<std::string> Export(const char* forms, bool hasCatalogue) {
  std::vector<std::string> words = {"export", "FILE", "-o", "OUT", "-j", "1", "--to", forms};
  if (!hasCatalogue) words.emplace_back("--no-catalogue");
  return words;
}

const std::vector<std::string> kPlan = {"plan", "FILE", "-o", "PLAN", "--to", "text"};

const std::vector<Command>& Commands() {
  static const std::vector<Command> commands = {
      {"document", {"document", "FILE"}, true, false},
      {"attachments", {"attachments", "FILE"}, true, false},
      {"list", {"list", "--json", "FILE"}, false, false},
      {"show", {"show", "FILE"}, false, false},
      {"export", Export("html,text,eml,mbox,json", true), false, false},
      {"info", {"info", "FILE"}, true, true},
      {"text", {"document", "--text", "FILE"}, true, true},
      {"extract", {"extract", "FILE", "1"}, true, true},
      // In a namespace of its own the end of a helper would tell nothing of what it cost.
      {"pages", {"pages", "FILE", "--pdf", "-o", "OUT", "--no-sandbox"}, true, true},
      {"html", Export("html", false), false, true},
      {"plain", Export("text", false), false, true},
      {"eml", Export("eml", false), false, true},
      {"mbox", Export("mbox", false), false, true},
      {"json", Export("json", false), false, true},
      {"catalogue", Export("text", true), false, true},
      {"verify", {"verify", "OUT"}, false, true, {Export("text", false)}},
      {"search", {"search", "OUT", "Shape", "--json"}, false, true, {Export("text", true)}},
      {"plan", {"plan", "FILE", "-o", "PLAN", "--to", "text"}, false, true},
      {"run-task", {"run-task", "PLAN", "--task", "0", "-o", "OUT"}, false, true, {kPlan}},
      {"merge",
       {"merge", "PLAN", "OUT"},
       false,
       true,
       {kPlan, {"run-task", "PLAN", "--task", "0", "-o", "OUT"}}},
  };
  return commands;
}

class Bench {
 public:
  explicit Bench(const Choices& choices) : choices_(choices) {
    work_ = fs::temp_directory_path() / ("GrowthBench-" + std::to_string(getpid()));
    fs::create_directory(work_);
  }
  Bench(const Bench&) = delete;
  Bench& operator=(const Bench&) = delete;
  ~Bench() {
    std::error_code ignored;
    fs::remove_all(work_, ignored);
  }

  void run(const Group& group) {
    for (const HostileShape& shape : group.shapes) {
      if (!choices_.shape.empty() && choices_.shape != shape.name) continue;
      const auto count = std::max<size_t>(
          1, static_cast<size_t>(choices_.times * static_cast<double>(shape.count)));
      const std::array<fs::path, 4> files = {write(shape, 0, 1), write(shape, 1, count),
                                             write(shape, 2, 2 * count),
                                             write(shape, 3, 4 * count)};
      for (const Command& command : Commands()) {
        const bool isRead =
            shape.format != HostileFormat::Tnef && shape.format != HostileFormat::Mbox;
        if (command.isOfFilter && !isRead) continue;
        if (!isWanted(command)) continue;
        compare(group, shape, command, files);
      }
    }
  }

 private:
  bool isWanted(const Command& command) const {
    if (!choices_.command.empty()) return choices_.command == command.name;
    return choices_.details || !command.isDetail;
  }

  fs::path write(const HostileShape& shape, int size, size_t count) const {
    const fs::path path =
        work_ / (std::to_string(size) + "." + tarn::test::ExtensionOf(shape.format));
    tarn::bench::InAnotherProcess([&] {
      const std::string bytes = shape.file(count);
      std::ofstream(path, std::ios::binary)
          .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    });
    return path;
  }

  std::vector<std::string> commandLine(const std::vector<std::string>& words,
                                       const fs::path& file) const {
    std::vector<std::string> line = {choices_.folder + "/tarnmail"};
    for (const std::string& word : words) {
      line.push_back(word == "FILE"   ? file.string()
                     : word == "OUT"  ? (work_ / "out").string()
                     : word == "PLAN" ? (work_ / "plan").string()
                                      : word);
    }
    return line;
  }

  // The cheapest of the rounds.
  ProcessCost cost(const Command& command, const fs::path& file) const {
    ProcessCost least;
    for (int round = 0; round < choices_.rounds; ++round) {
      for (const auto& words : command.before) {
        Measure(commandLine(words, file), choices_.mostSeconds);
      }
      const ProcessCost one = Measure(commandLine(command.words, file), choices_.mostSeconds);
      for (const char* const made : {"out", "out.attempts.jsonl", "plan"}) {
        fs::remove_all(work_ / made);
      }
      if (round == 0 || one.seconds < least.seconds) least = one;
      if (one.tookTooLong) break;
    }
    return least;
  }

  void compare(const Group& group, const HostileShape& shape, const Command& command,
               const std::array<fs::path, 4>& files) const {
    std::array<ProcessCost, 4> costs;
    for (size_t i = 0; i < files.size(); ++i) costs[i] = cost(command, files[i]);
    const auto seconds = [&](size_t i) { return costs[i].seconds - costs[0].seconds; };
    const auto memory = [&](size_t i) {
      return static_cast<double>(costs[i].peakKilobytes) -
             static_cast<double>(costs[0].peakKilobytes);
    };
    std::printf("%-10s %-26s %-11s %8.1f KB %7.1f ms %7.1f MB  status %d  time %5.2f %5.2f",
                group.name, shape.name, command.name,
                static_cast<double>(fs::file_size(files[1])) / 1024, 1e3 * seconds(1),
                memory(1) / 1024, costs[3].exitStatus, seconds(2) / seconds(1),
                seconds(3) / seconds(2));
    showInstructions(costs);
    std::printf("  memory %5.2f %5.2f", memory(2) / memory(1), memory(3) / memory(2));
    if (costs[3].tookTooLong) std::printf("  ended after %u s", choices_.mostSeconds);
    const bool isWorse = seconds(3) > 2.6 * seconds(2) && seconds(3) > 0.02;
    std::printf(isWorse || costs[3].tookTooLong ? "  <--\n" : "\n");
    std::fflush(stdout);
  }

  static void showInstructions(const std::array<ProcessCost, 4>& costs) {
    if (!costs[0].instructions) {
      std::printf("  instructions -");
      return;
    }
    const auto beyondOne = [&](size_t i) {
      return static_cast<double>(*costs[i].instructions) -
             static_cast<double>(*costs[0].instructions);
    };
    std::printf("  instructions %5.2f %5.2f", beyondOne(2) / beyondOne(1),
                beyondOne(3) / beyondOne(2));
  }

  const Choices& choices_;
  fs::path work_;
};

void RunAll(const Choices& choices) {
  Bench bench(choices);
  const Group groups[] = {
      {"mail", tarn::test::HostileMails()},   {"body", tarn::test::HostileBodies()},
      {"msg", tarn::test::HostileMsgFiles()}, {"rtf", tarn::test::HostileRichTexts()},
      {"store", tarn::test::HostileStores()}, {"container", tarn::test::HostileContainers()}};
  for (const Group& group : groups) {
    if (choices.group.empty() || choices.group == group.name) bench.run(group);
  }
}

}  // namespace

int main(int count, char** words) {
  Choices choices;
  CLI::App app("How the cost of every command grows with every hostile shape.");
  app.add_option("--group", choices.group, "mail, body, msg, rtf, store or container alone");
  app.add_option("--shape", choices.shape, "this shape alone");
  app.add_option("--command", choices.command, "this command alone");
  app.add_flag("--details", choices.details,
               "also info, plain text, extraction, pages, each form alone, and what is done with "
               "exports");
  app.add_option("--times", choices.times,
                 "begin with so many times as many items; 0.1 is right for pages")
      ->check(CLI::Range(0.001, 1000.0));
  app.add_option("--rounds", choices.rounds, "runs of which the cheapest counts")
      ->check(CLI::Range(1, 100));
  app.add_option("--seconds", choices.mostSeconds, "the most for a run")
      ->check(CLI::Range(1, 3600));
  app.add_option("--build", choices.folder, "the folder of tarnmail");
  CLI11_PARSE(app, count, words);
  try {
    RunAll(choices);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "GrowthBench: %s\n", error.what());
    return 1;
  }
  return 0;
}
