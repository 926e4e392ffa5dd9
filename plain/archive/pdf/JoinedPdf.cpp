#include "archive/pdf/JoinedPdf.h"

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFEmbeddedFileDocumentHelper.hh>
#include <qpdf/QPDFFileSpecObjectHelper.hh>
#include <qpdf/QPDFNameTreeObjectHelper.hh>
#include <qpdf/QPDFObjGen.hh>
#include <qpdf/QPDFWriter.hh>

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <map>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

namespace tarn::archive {
namespace {

// All parts of a file are open until it is written.
constexpr size_t kPartsAtOnce = 64;

// A link that leads to a page of the same document.
struct InnerLink {
  size_t page = 0;  // from 0, as all pages here
  int place = 0;    // among the page's annotations
  size_t target = 0;
  std::vector<QPDFObjectHandle> view;  // what follows the page in a destination
};

// The pages of one document by the numbers of their objects.
std::map<QPDFObjGen, size_t> PagesByObject(const std::vector<QPDFObjectHandle>& pages) {
  std::map<QPDFObjGen, size_t> numbers;
  for (size_t i = 0; i < pages.size(); ++i) numbers[pages[i].getObjGen()] = i;
  return numbers;
}

// The array that a destination is in the end, or null.
QPDFObjectHandle ExplicitDestination(QPDF& document, QPDFObjectHandle destination) {
  QPDFObjectHandle root = document.getRoot();
  if (destination.isString()) {
    QPDFObjectHandle names = root.getKey("/Names");
    QPDFObjectHandle tree = names.isDictionary() ? names.getKey("/Dests") : QPDFObjectHandle();
    QPDFObjectHandle found = QPDFObjectHandle::newNull();
    if (tree.isInitialized() && tree.isDictionary()) {
      QPDFNameTreeObjectHelper(tree, document).findObject(destination.getUTF8Value(), found);
    }
    destination = found;
  } else if (destination.isName()) {
    QPDFObjectHandle table = root.getKey("/Dests");
    destination =
        table.isDictionary() ? table.getKey(destination.getName()) : QPDFObjectHandle::newNull();
  }
  if (destination.isDictionary()) destination = destination.getKey("/D");
  return destination.isArray() ? destination : QPDFObjectHandle::newNull();
}

QPDFObjectHandle DestinationOf(QPDFObjectHandle annotation) {
  if (!annotation.isDictionary() || !annotation.getKey("/Subtype").isNameAndEquals("/Link")) {
    return QPDFObjectHandle::newNull();
  }
  QPDFObjectHandle action = annotation.getKey("/A");
  if (action.isDictionary()) {
    return action.getKey("/S").isNameAndEquals("/GoTo") ? action.getKey("/D")
                                                        : QPDFObjectHandle::newNull();
  }
  return annotation.getKey("/Dest");
}

// Takes the inner links out of the pages, since a page that is copied alone leads nowhere.
std::vector<InnerLink> TakeInnerLinks(QPDF& document, std::vector<QPDFObjectHandle> pages) {
  const std::map<QPDFObjGen, size_t> numbers = PagesByObject(pages);
  std::vector<InnerLink> links;
  for (size_t page = 0; page < pages.size(); ++page) {
    QPDFObjectHandle annotations = pages[page].getKey("/Annots");
    const int count = annotations.isArray() ? annotations.getArrayNItems() : 0;
    for (int place = 0; place < count; ++place) {
      QPDFObjectHandle annotation = annotations.getArrayItem(place);
      QPDFObjectHandle destination = DestinationOf(annotation);
      if (destination.isNull()) continue;
      destination = ExplicitDestination(document, destination);
      annotation.removeKey("/A");
      annotation.removeKey("/Dest");
      if (!destination.isArray() || destination.getArrayNItems() == 0) continue;
      const auto target = numbers.find(destination.getArrayItem(0).getObjGen());
      if (target == numbers.end()) continue;
      InnerLink link{page, place, target->second, {}};
      for (int i = 1; i < destination.getArrayNItems(); ++i) {
        if (!destination.getArrayItem(i).isIndirect()) {
          link.view.push_back(destination.getArrayItem(i));
        }
      }
      links.push_back(std::move(link));
    }
  }
  return links;
}

QPDFObjectHandle PageDestination(const QPDFObjectHandle& page,
                                 const std::vector<QPDFObjectHandle>& view) {
  QPDFObjectHandle destination = QPDFObjectHandle::newArray();
  destination.appendItem(page);
  for (const QPDFObjectHandle& item : view) destination.appendItem(item);
  return destination;
}

QPDFObjectHandle WholePage(const QPDFObjectHandle& page) {
  return PageDestination(page, {QPDFObjectHandle::newName("/XYZ"), QPDFObjectHandle::newNull(),
                                QPDFObjectHandle::newNull(), QPDFObjectHandle::newNull()});
}

std::string Numbered(std::string_view before, size_t number) {
  std::array<char, 32> digits;
  std::snprintf(digits.data(), digits.size(), "%08zu", number);
  return std::string(before) + digits.data();
}

// Parts that become one document. The sources must live until it is written.
class Joining {
 public:
  Joining() { target_.emptyPDF(); }

  // Names of the part's files are made unique by `prefix`. Gives the number of pages.
  size_t add(const std::string& path, const std::string& prefix) {
    sources_.push_back(std::make_unique<QPDF>());
    QPDF& source = *sources_.back();
    source.setSuppressWarnings(true);
    source.processFile(path.c_str());
    const std::vector<QPDFObjectHandle> pages = source.getAllPages();
    const std::vector<InnerLink> links = TakeInnerLinks(source, pages);
    const size_t first = pages_.size();
    for (const QPDFObjectHandle& page : pages) {
      target_.addPage(page, false);
      pages_.push_back(target_.getAllPages().back());
    }
    for (const InnerLink& link : links) {
      QPDFObjectHandle annotation =
          pages_[first + link.page].getKey("/Annots").getArrayItem(link.place);
      annotation.replaceKey("/Dest", PageDestination(pages_[first + link.target], link.view));
    }
    addFiles(source, prefix, first);
    return pages.size();
  }

  QPDF& document() { return target_; }
  const std::vector<QPDFObjectHandle>& pages() const { return pages_; }

  void write(const std::string& path) {
    QPDFWriter writer(target_, path.c_str());
    writer.setMinimumPDFVersion("1.7");
    writer.setDeterministicID(true);
    writer.setObjectStreamMode(qpdf_o_generate);
    writer.write();
  }

 private:
  void addFiles(QPDF& source, const std::string& prefix, size_t firstPage) {
    QPDFEmbeddedFileDocumentHelper from(source);
    QPDFEmbeddedFileDocumentHelper to(target_);
    QPDFObjectHandle associated = QPDFObjectHandle::newArray();
    for (const auto& [key, file] : from.getEmbeddedFiles()) {
      QPDFObjectHandle copy = target_.copyForeignObject(file->getObjectHandle());
      to.replaceEmbeddedFile(prefix + key, QPDFFileSpecObjectHelper(copy));
      associated.appendItem(copy);
    }
    // Of a mail's own file the document has them, of several mails together each one's first page.
    const bool isOneMail = source.getRoot().getKey("/AF").isArray();
    if (isOneMail && firstPage < pages_.size()) pages_[firstPage].replaceKey("/AF", associated);
  }

  QPDF target_;
  std::vector<std::unique_ptr<QPDF>> sources_;
  std::vector<QPDFObjectHandle> pages_;
};

struct Bookmark {
  std::string title;
  size_t page = 0;
  size_t depth = 0;
};

// One that others are below, or the list of all.
struct OpenBookmark {
  QPDFObjectHandle object;
  size_t depth = 0;
  QPDFObjectHandle last;  // of those below
  long long count = 0;    // of those directly below
};

// Readers show the outermost ones, and those below when they are asked to.
void CloseBookmark(OpenBookmark& bookmark, bool isList) {
  if (bookmark.count == 0) return;
  bookmark.object.replaceKey("/Last", bookmark.last);
  bookmark.object.replaceKey(
      "/Count", QPDFObjectHandle::newInteger(isList ? bookmark.count : -bookmark.count));
}

void AddBookmarks(QPDF& document, const std::vector<QPDFObjectHandle>& pages,
                  const std::vector<Bookmark>& bookmarks) {
  if (bookmarks.empty()) return;
  QPDFObjectHandle outlines = document.makeIndirectObject(QPDFObjectHandle::newDictionary());
  outlines.replaceKey("/Type", QPDFObjectHandle::newName("/Outlines"));
  std::vector<OpenBookmark> open(1);
  open.front().object = outlines;
  for (const Bookmark& bookmark : bookmarks) {
    for (; open.size() > 1 && open.back().depth >= bookmark.depth; open.pop_back()) {
      CloseBookmark(open.back(), false);
    }
    OpenBookmark& above = open.back();
    QPDFObjectHandle item = document.makeIndirectObject(QPDFObjectHandle::newDictionary());
    item.replaceKey("/Title", QPDFObjectHandle::newUnicodeString(bookmark.title));
    item.replaceKey("/Parent", above.object);
    item.replaceKey("/Dest", WholePage(pages[bookmark.page]));
    if (above.count++ == 0) {
      above.object.replaceKey("/First", item);
    } else {
      item.replaceKey("/Prev", above.last);
      above.last.replaceKey("/Next", item);
    }
    above.last = item;
    open.push_back({item, bookmark.depth, {}, 0});
  }
  for (; !open.empty(); open.pop_back()) CloseBookmark(open.back(), open.size() == 1);
  document.getRoot().replaceKey("/Outlines", outlines);
  document.getRoot().replaceKey("/PageMode", QPDFObjectHandle::newName("/UseOutlines"));
}

void AddTitle(QPDF& document, const std::string& title) {
  QPDFObjectHandle information = QPDFObjectHandle::newDictionary();
  information.replaceKey("/Producer", QPDFObjectHandle::newString("tarnmail"));
  if (!title.empty()) {
    information.replaceKey("/Title", QPDFObjectHandle::newUnicodeString(title));
    QPDFObjectHandle preferences = QPDFObjectHandle::newDictionary();
    preferences.replaceKey("/DisplayDocTitle", QPDFObjectHandle::newBool(true));
    document.getRoot().replaceKey("/ViewerPreferences", preferences);
  }
  document.getTrailer().replaceKey("/Info", document.makeIndirectObject(information));
}

// Files that are there while the joining lasts.
class TemporaryFiles {
 public:
  explicit TemporaryFiles(std::string path) : path_(std::move(path)) {}
  TemporaryFiles(const TemporaryFiles&) = delete;
  TemporaryFiles& operator=(const TemporaryFiles&) = delete;
  ~TemporaryFiles() {
    for (const std::string& file : files_) {
      std::error_code ignored;
      std::filesystem::remove(file, ignored);
    }
  }

  const std::string& add() {
    files_.push_back(Numbered(path_ + ".part", files_.size() + 1));
    return files_.back();
  }
  const std::vector<std::string>& all() const { return files_; }

 private:
  std::string path_;
  std::vector<std::string> files_;
};

// What is being read, for a message.
struct Progress {
  std::string part;
};

void Join(const std::vector<PdfPart>& parts, const std::string& title, const std::string& path,
          Progress& progress) {
  std::vector<Bookmark> bookmarks;
  size_t pageCount = 0;
  const auto addParts = [&](Joining& joining, size_t first, size_t end) {
    for (size_t i = first; i < end; ++i) {
      progress.part = parts[i].path;
      const size_t pages = joining.add(parts[i].path, Numbered("", i + 1) + "-");
      if (pages > 0) bookmarks.push_back({parts[i].bookmark, pageCount, parts[i].depth});
      pageCount += pages;
    }
    progress.part.clear();
  };

  Joining whole;
  TemporaryFiles groups(path);
  if (parts.size() <= kPartsAtOnce) {
    addParts(whole, 0, parts.size());
  } else {
    for (size_t first = 0; first < parts.size(); first += kPartsAtOnce) {
      Joining group;
      addParts(group, first, std::min(parts.size(), first + kPartsAtOnce));
      group.write(groups.add());
    }
    for (const std::string& group : groups.all()) whole.add(group, "");
  }
  AddBookmarks(whole.document(), whole.pages(), bookmarks);
  AddTitle(whole.document(), title);
  whole.write(path);
}

}  // namespace

std::optional<Trouble> JoinPdfs(const std::vector<PdfPart>& parts, const std::string& title,
                                const std::string& path) {
  Progress progress;
  try {
    Join(parts, title, path, progress);
    return std::nullopt;
  } catch (const std::exception& failure) {
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
    if (dynamic_cast<const std::bad_alloc*>(&failure) != nullptr) throw;
    if (!progress.part.empty()) {
      return Trouble{TroubleKind::Damaged,
                     progress.part + " cannot be joined to others: " + failure.what()};
    }
    return Trouble{TroubleKind::Unreadable, path + " cannot be written: " + failure.what()};
  }
}

}  // namespace tarn::archive
