#include "ScriptedEngine.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <new>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Attempts.h"
#include "siblings/client/Channel.h"
#include "siblings/client/HelperCall.h"
#include "siblings/client/Protocol.h"

namespace tarn::test {
namespace {

using namespace pages;

[[noreturn]] void Crash() {
  (void)std::signal(SIGSEGV, SIG_DFL);
  (void)std::raise(SIGSEGV);
  std::abort();
}

[[noreturn]] void GoOnForEver() {
  volatile bool goesOn = true;
  while (goesOn) {
  }
  std::abort();
}

[[noreturn]] void TakeAllMemory() {
  constexpr size_t kStep = size_t{1} << 22;
  for (;;) {
    void* const more =
        mmap(nullptr, kStep, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    // Whoever watches is to see it.
    if (more == MAP_FAILED) GoOnForEver();
    std::fill_n(static_cast<char*>(more), kStep, 'x');
  }
}

std::string Map(const std::string& size) {
  void* const room = mmap(nullptr, std::stoull(size), PROT_READ | PROT_WRITE,
                          MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (room == MAP_FAILED) return "refused";
  munmap(room, std::stoull(size));
  return "done";
}

// The helper's own end, beside the one who serves on it.
Channel HelperEnd() { return Channel(Descriptor(dup(kHelperSocket))); }

void Say(const std::string& hex) {
  std::string message;
  for (size_t i = 0; i + 1 < hex.size(); i += 2) {
    message += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  }
  (void)HelperEnd().send(message);
}

void PassFile() { (void)HelperEnd().send("??", STDIN_FILENO); }

std::string WhatComesWith(const std::string& name) {
  Channel channel = HelperEnd();
  if (!channel.send(Encode(FileRequest{name}))) return "nobody heard";
  std::string message;
  Descriptor file;
  FileAnswer answer;
  if (channel.receive(message, file) != Heard::Message || !Decode(message, answer))
    return "nonsense";
  return std::string(answer.found ? "found, " : "not found, ") + (file ? "a file" : "no file");
}

std::string CountFiles() {
  const std::filesystem::directory_iterator files("/proc/self/fd");
  // Without the one that counts.
  return std::to_string(std::distance(begin(files), end(files)) - 1);
}

std::string CountMemory() {
  std::ifstream statm("/proc/self/statm");
  uint64_t total = 0;
  uint64_t resident = 0;
  statm >> total >> resident;
  return std::to_string(resident * static_cast<uint64_t>(sysconf(_SC_PAGESIZE)));
}

struct Step {
  std::string when;
  std::string what;
  std::string with;
};

std::vector<Step> Parse(const std::string& document) {
  std::vector<Step> steps;
  std::istringstream lines(document);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    Step step;
    words >> step.when >> step.what >> std::ws;
    std::getline(words, step.with);
    steps.push_back(std::move(step));
  }
  return steps;
}

class ScriptedLayout : public Layout {
 public:
  ScriptedLayout(std::string document, DocumentKind kind, Paper paper)
      : document_(std::move(document)), steps_(Parse(document_)), kind_(kind), paper_(paper) {}

  void run(const std::string& when, DocumentFolder* folder, Progress* progress) {
    for (const Step& step : steps_) {
      if (step.when == when && !claim(step) && !misbehave(step) && !talk(step, folder, progress)) {
        log(step, Attempt(step.what, step.with).value_or("unknown"));
      }
    }
  }

  int32_t pageCount() const override { return pageCount_; }
  PageSize pageSize(int32_t page) const override {
    return {size_.width, size_.height * static_cast<double>(page)};
  }

  Bitmap draw(int32_t page, int32_t dotsPerInch, Progress& progress) override {
    run("draw", nullptr, &progress);
    const PageSize size = pageSize(page);
    Bitmap bitmap;
    bitmap.width = static_cast<int32_t>(std::lround(size.width * dotsPerInch / 72));
    bitmap.height = static_cast<int32_t>(std::lround(size.height * dotsPerInch / 72));
    const auto pixels = static_cast<size_t>(bitmap.width) * static_cast<size_t>(bitmap.height);
    bitmap.pixels.assign(pixelBytes_.value_or(pixels * 4), static_cast<uint8_t>(page));
    return bitmap;
  }

  std::string pdf(PageRange range, const PdfProperties& properties, Progress& progress) override {
    range_ = range;
    properties_ = properties;
    run("pdf", nullptr, &progress);
    return log_.empty() ? "%PDF" : log_;
  }

 private:
  // What it says of itself.
  bool claim(const Step& step) {
    if (step.what == "pages") {
      pageCount_ = std::stoi(step.with);
    } else if (step.what == "width") {
      size_.width = std::stod(step.with);
    } else if (step.what == "height") {
      size_.height = std::stod(step.with);
    } else if (step.what == "pixels") {
      pixelBytes_ = std::stoul(step.with);
    } else {
      return false;
    }
    return true;
  }

  static bool misbehave(const Step& step) {
    if (step.what == "throw" && step.with == "bad_alloc") throw std::bad_alloc();
    if (step.what == "throw") throw PageFailure(Trouble::BadDocument, step.with);
    if (step.what == "crash") Crash();
    if (step.what == "loop") GoOnForEver();
    if (step.what == "allocate") TakeAllMemory();
    if (step.what == "hang-up") {
      close(kHelperSocket);
      GoOnForEver();
    }
    if (step.what == "sleep") {
      std::this_thread::sleep_for(std::chrono::milliseconds(std::stoi(step.with)));
    } else if (step.what == "say") {
      Say(step.with);
    } else if (step.what == "pass") {
      PassFile();
    } else {
      return false;
    }
    return true;
  }

  bool talk(const Step& step, DocumentFolder* folder, Progress* progress) {
    if (step.what == "ask") {
      std::string name = step.with;
      std::replace(name.begin(), name.end(), '%', '\0');
      const auto bytes = folder->read(name);
      log(step,
          bytes ? "\"" + bytes->substr(0, 20) + "\" " + std::to_string(bytes->size()) : "none");
    } else if (step.what == "receive") {
      log(step, WhatComesWith(step.with));
    } else if (step.what == "report") {
      log(step, progress->at(std::stoi(step.with)) ? "go on" : "stop");
    } else if (step.what == "properties") {
      log(step, properties_.title + "|" + properties_.author + "|" + properties_.date);
    } else if (step.what == "range") {
      log(step, std::to_string(range_.first) + "-" + std::to_string(range_.last));
    } else if (step.what == "document") {
      log(step, document_.substr(document_.find('\n') + 1));
    } else if (step.what == "kind") {
      log(step,
          std::to_string(static_cast<int>(kind_)) + " " + std::to_string(static_cast<int>(paper_)));
    } else if (step.what == "files") {
      log(step, CountFiles());
    } else if (step.what == "memory") {
      log(step, CountMemory());
    } else if (step.what == "variable") {
      const char* const value = std::getenv(step.with.c_str());
      log(step, value == nullptr ? "none" : value);
    } else if (step.what == "map") {
      log(step, Map(step.with));
    } else {
      return false;
    }
    return true;
  }

  void log(const Step& step, const std::string& outcome) {
    log_ += step.what + (step.with.empty() ? "" : " " + step.with) + ": " + outcome + "\n";
  }

  const std::string document_;
  const std::vector<Step> steps_;
  const DocumentKind kind_;
  const Paper paper_;
  int32_t pageCount_ = 1;
  PageSize size_ = {36, 18};
  std::optional<size_t> pixelBytes_;
  PageRange range_;
  PdfProperties properties_;
  std::string log_;
};

class ScriptedEngine : public Engine {
 public:
  std::unique_ptr<Layout> layOut(DocumentKind kind, std::string document, Paper paper,
                                 DocumentFolder& folder) override {
    auto layout = std::make_unique<ScriptedLayout>(std::move(document), kind, paper);
    layout->run("layOut", &folder, nullptr);
    return layout;
  }
};

}  // namespace

std::unique_ptr<Engine> MakeScriptedEngine() { return std::make_unique<ScriptedEngine>(); }

}  // namespace tarn::test
