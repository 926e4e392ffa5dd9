// PageHelper.h - the process that lays documents out, seen from the program that wants pages.
//
// A helper is started at the first document of its kinds, kept for those that follow, started again
// when it has died or was stopped for taking too long, and ends with this process. It is kept
// apart: it has no network, and of the files nothing but programs, libraries and fonts, to read.
// What it asks for of the document's folder is opened here, by plain names and without following
// links. Nothing it answers is believed unseen: a document may have taken it over.
//
// A helper also ends with the thread that started it; the next call then starts another.
#ifndef TARN_SIBLINGS_CLIENT_PAGEHELPER_H
#define TARN_SIBLINGS_CLIENT_PAGEHELPER_H

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "siblings/Pages.h"

namespace tarn::pages {

struct HelperLimits {
  // For its layout, for each drawn page, and for each PDF. All pages and PDFs of a document
  // together take no longer than that and a sixtieth of it for each page asked for. What callbacks
  // take does not count.
  std::chrono::milliseconds timePerDocument = std::chrono::seconds(60);
  uint64_t memory = uint64_t{1} << 30;
};

// What keeps a helper apart from the rest of the machine.
enum class Wall : uint8_t {
  // bubblewrap: it sees no other files, no other processes, no network; then SystemCalls as well.
  Namespaces,
  // A filter of system calls: no network, no programs, no signals to others, no writing of files.
  // Other files cannot be opened where the system has Landlock. Where it has not, a helper for HTML
  // and text could read files, and give them to nobody but its document's own pages;
  // tarnmail-office,
  // which has to write, is refused.
  SystemCalls
};

struct HelperOptions {
  std::filesystem::path programs;  // the folder with tarnmail-pages and tarnmail-office
  // Helpers that write have folders here while they run. Empty: the system's temporary folder.
  std::filesystem::path temporary;
  HelperLimits limits;
  bool sandbox = true;  // false: without isolation, for a machine that has none
  // The first that the machine allows is used.
  std::vector<Wall> walls = {Wall::Namespaces, Wall::SystemCalls};
};

// Called with per cent from time to time; false stops. What it throws ends the helper and comes
// out.
using ProgressCall = std::function<bool(int)>;

struct DocumentOnPaper {
  DocumentKind kind = DocumentKind::Html;
  std::string_view bytes;
  std::filesystem::path folder;  // of its images; empty: none
  Paper paper = Paper::A4;
};

struct LaidOut {
  uint64_t id = 0;  // names it in the calls that follow, until the next document of the same helper
  int32_t pageCount = 0;
  PageSize firstPage;
};

// Not for several threads at once. All calls throw PageFailure; after one, the next works again.
class PageHelper {
 public:
  explicit PageHelper(HelperOptions options);
  PageHelper(const PageHelper&) = delete;
  PageHelper& operator=(const PageHelper&) = delete;
  ~PageHelper();

  // Starts the helper for documents of that kind, if it does not run, and does not wait for it: one
  // will come soon. Says nothing of what fails; layOut does.
  void prepare(DocumentKind kind);

  LaidOut layOut(const DocumentOnPaper& document);
  // Is the helper still holding that document?
  bool holds(const LaidOut& laidOut) const;
  PageSize pageSize(const LaidOut& laidOut, int32_t page);
  Bitmap draw(const LaidOut& laidOut, int32_t page, int32_t dotsPerInch,
              const ProgressCall& progress = {});
  std::string pdf(const LaidOut& laidOut, PageRange range, const PdfProperties& properties,
                  const ProgressCall& progress = {});

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace tarn::pages

#endif
