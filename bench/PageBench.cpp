// PageBench PROGRAMS TIMES FILE...: lays documents out again and again through warm helpers, as a
// PDF and as the first page at 96 dots per inch. FILE ends in .html, .txt or .rtf, and says by that
// what it is. PROGRAMS is the folder with the helpers.
//
// Prints milliseconds a document: of the first one, which starts the helper, and then the mean; and
// the most memory that the helper has had: one that drew the pages, and the one that made PDFs too.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "siblings/Processes.h"
#include "siblings/client/PageHelper.h"

namespace {

using tarn::pages::DocumentKind;

struct Document {
  DocumentKind kind;
  std::string bytes;
};

DocumentKind KindOf(const std::filesystem::path& file) {
  if (file.extension() == ".rtf") return DocumentKind::Rtf;
  return file.extension() == ".txt" ? DocumentKind::Text : DocumentKind::Html;
}

class Stopwatch {
 public:
  double milliseconds() const {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start_)
        .count();
  }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

struct Times {
  double layout = 0;
  double page = 0;
  double pdf = 0;
};

Times Measure(tarn::pages::PageHelper& helper, const Document& document) {
  Times times;
  const Stopwatch first;
  const tarn::pages::LaidOut laidOut =
      helper.layOut({.kind = document.kind, .bytes = document.bytes, .folder = {}});
  times.layout = first.milliseconds();
  const Stopwatch second;
  helper.draw(laidOut, 1, 96);
  times.page = second.milliseconds();
  const Stopwatch third;
  helper.pdf(laidOut, {}, {.title = "A mail", .author = "", .date = ""});
  times.pdf = third.milliseconds();
  return times;
}

void Print(const char* what, const Times& times, double count) {
  std::printf("%-6s layout %7.2f   first page %7.2f   PDF %7.2f   layout and PDF %7.2f ms\n", what,
              times.layout / count, times.page / count, times.pdf / count,
              (times.layout + times.pdf) / count);
}

// The peak of resident memory in kB, libraries that others have too included.
long PeakOfHelper(const std::string& programs) {
  long peak = 0;
  for (const pid_t process : tarn::test::DescendantsOf(getpid(), programs)) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(status, line);) {
      if (line.starts_with("VmHWM:")) peak = std::max(peak, std::atol(line.c_str() + 6));
    }
  }
  return peak;
}

// In MB, of a helper that draws the first page of each document.
double PeakOfDrawing(const tarn::pages::HelperOptions& options,
                     const std::vector<Document>& documents) {
  tarn::pages::PageHelper helper(options);
  for (const Document& document : documents) {
    helper.draw(helper.layOut({.kind = document.kind, .bytes = document.bytes, .folder = {}}), 1,
                96);
  }
  return static_cast<double>(PeakOfHelper(options.programs.string())) / 1024;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) {
    std::fprintf(stderr, "usage: PageBench PROGRAMS TIMES FILE...\n");
    return 2;
  }
  const int rounds = std::atoi(argv[2]);
  std::vector<Document> documents;
  for (int i = 3; i < argc; ++i) {
    std::ifstream file(argv[i], std::ios::binary);
    documents.push_back({KindOf(argv[i]), std::string(std::istreambuf_iterator<char>(file), {})});
  }
  try {
    tarn::pages::HelperOptions options;
    options.programs = std::filesystem::absolute(argv[1]);
    const double drawing = PeakOfDrawing(options, documents);
    tarn::pages::PageHelper helper(options);
    Print("first", Measure(helper, documents.front()), 1);
    Times all;
    for (int round = 0; round < rounds; ++round) {
      for (const Document& document : documents) {
        const Times times = Measure(helper, document);
        all.layout += times.layout;
        all.page += times.page;
        all.pdf += times.pdf;
      }
    }
    Print("warm", all, static_cast<double>(documents.size()) * rounds);
    std::printf("peak memory of the helper: pages %.1f MB, PDFs too %.1f MB\n", drawing,
                static_cast<double>(PeakOfHelper(options.programs.string())) / 1024);
  } catch (const tarn::pages::PageFailure& failure) {
    std::fprintf(stderr, "PageBench: %s\n", failure.what());
    return 1;
  }
  return 0;
}
