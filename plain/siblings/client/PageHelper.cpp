#include "PageHelper.h"

#include <utility>

#include "Conversation.h"
#include "FolderFiles.h"
#include "MemoryFile.h"
#include "Protocol.h"
#include "TimeBudget.h"
#include "WarmHelper.h"

namespace tarn::pages {
namespace {

bool IsPageSize(const PageSize& size) {
  // Not with a NaN either.
  const auto isSide = [](double side) { return side > 0 && side <= kMaxPageSide; };
  return isSide(size.width) && isSide(size.height);
}

// Not longer than what a message takes; whole characters of UTF-8.
std::string Shortened(const std::string& text) {
  if (text.size() <= kMaxProperty) return text;
  size_t end = kMaxProperty;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  return text.substr(0, end);
}

PageFailure NoSuchPage(int32_t pageCount) {
  const std::string pages = pageCount == 1 ? " page" : " pages";
  return PageFailure(Trouble::NoSuchPage, "the document has " + std::to_string(pageCount) + pages);
}

void CheckPage(const LaidOut& laidOut, int32_t page) {
  if (page < 1 || page > laidOut.pageCount) throw NoSuchPage(laidOut.pageCount);
}

// With a last page of its own.
PageRange InDocument(const LaidOut& laidOut, PageRange range) {
  if (range.last == 0) range.last = laidOut.pageCount;
  CheckPage(laidOut, range.first);
  CheckPage(laidOut, range.last);
  if (range.first > range.last) throw NoSuchPage(laidOut.pageCount);
  return range;
}

// The bitmap that a helper says it has put into the room.
bool TakeBitmap(const DrawnAnswer& drawn, AnswerRoom& room, Bitmap& bitmap) {
  if (drawn.width < 1 || drawn.height < 1) return false;
  const auto width = static_cast<uint64_t>(drawn.width);
  const auto height = static_cast<uint64_t>(drawn.height);
  if (height > kMaxBitmapBytes / 4 / width) return false;
  const uint64_t size = width * height * 4;
  if (room.size() < size) return false;
  bitmap = {drawn.width, drawn.height, std::vector<uint8_t>(static_cast<size_t>(size))};
  return room.take(bitmap.pixels);
}

bool TakePdf(const PdfMade& made, uint64_t most, AnswerRoom& room, std::string& pdf) {
  if (made.size < 1 || made.size > most || room.size() < made.size) return false;
  pdf.resize(static_cast<size_t>(made.size));
  return room.take({reinterpret_cast<uint8_t*>(pdf.data()), pdf.size()});
}

}  // namespace

class PageHelper::Impl {
 public:
  explicit Impl(HelperOptions options) : options_(std::move(options)) {}

  // One of the two programs, and the document that it holds.
  struct Desk {
    Desk(const HelperOptions& options, const char* name) : helper(options, name) {}
    bool holds(uint64_t id) const { return id != 0 && id == document && helper.isRunning(); }

    // For the next answer. What one process has done to its room is nothing to the next.
    int readyRoom() {
      if (std::exchange(roomOf, helper.starts()) != helper.starts()) room = AnswerRoom();
      return room.ready();
    }

    WarmHelper helper;
    AnswerRoom room;
    uint64_t roomOf = 0;  // of which of the helper's processes
    uint64_t document = 0;
    TimeBudget budget;  // of its pages
  };

  Desk& deskFor(DocumentKind kind) { return kind == DocumentKind::Rtf ? office_ : pages_; }

  Desk* deskWith(const LaidOut& laidOut) {
    for (Desk* const desk : {&pages_, &office_}) {
      if (desk->holds(laidOut.id)) return desk;
    }
    return nullptr;
  }

  Desk& deskThatHolds(const LaidOut& laidOut) {
    Desk* const desk = deskWith(laidOut);
    if (desk == nullptr) {
      throw PageFailure(Trouble::HelperDied, "the document is no longer laid out");
    }
    return *desk;
  }

  uint64_t newId() { return ++lastId_; }
  const HelperLimits& limits() const { return options_.limits; }

 private:
  const HelperOptions options_;
  Desk pages_{options_, "tarnmail-pages"};
  Desk office_{options_, "tarnmail-office"};
  uint64_t lastId_ = 0;
};

PageHelper::PageHelper(HelperOptions options) : impl_(std::make_unique<Impl>(std::move(options))) {}

PageHelper::~PageHelper() = default;

void PageHelper::prepare(DocumentKind kind) { impl_->deskFor(kind).helper.prepare(); }

LaidOut PageHelper::layOut(const DocumentOnPaper& document) {
  Impl::Desk& desk = impl_->deskFor(document.kind);
  desk.document = 0;
  desk.helper.makeReady();
  const LaidOutAnswer answer = desk.helper.converse([&](Conversation& conversation) {
    const FolderFiles files(document.folder);
    const Descriptor bytes = SealedCopy(document.bytes);
    conversation.offer(files);
    const auto laidOut = conversation.ask<LaidOutAnswer>(
        LayOutRequest{document.kind, document.paper, files.isOpen(), document.bytes.size()},
        bytes.get());
    if (laidOut.pageCount < 1 || laidOut.pageCount > kMaxPages || !IsPageSize(laidOut.firstPage)) {
      conversation.throwNonsense();
    }
    return laidOut;
  });
  desk.document = impl_->newId();
  desk.budget = TimeBudget(impl_->limits().timePerDocument);
  return {desk.document, answer.pageCount, answer.firstPage};
}

bool PageHelper::holds(const LaidOut& laidOut) const { return impl_->deskWith(laidOut) != nullptr; }

PageSize PageHelper::pageSize(const LaidOut& laidOut, int32_t page) {
  Impl::Desk& desk = impl_->deskThatHolds(laidOut);
  CheckPage(laidOut, page);
  return desk.helper.converse([&](Conversation& conversation) {
    const auto answer = conversation.ask<PageSizeAnswer>(PageSizeRequest{page});
    if (!IsPageSize(answer.size)) conversation.throwNonsense();
    return answer.size;
  });
}

Bitmap PageHelper::draw(const LaidOut& laidOut, int32_t page, int32_t dotsPerInch,
                        const ProgressCall& progress) {
  Impl::Desk& desk = impl_->deskThatHolds(laidOut);
  CheckPage(laidOut, page);
  if (dotsPerInch < 1 || dotsPerInch > kMaxDotsPerInch) {
    throw PageFailure(Trouble::TooLarge,
                      "pages are drawn at 1 to " + std::to_string(kMaxDotsPerInch) + " dpi");
  }
  desk.budget.ask(1);
  return desk.helper.converse([&](Conversation& conversation) {
    conversation.spendOf(desk.budget);
    conversation.report(progress);
    const auto drawn = conversation.ask<DrawnAnswer>(
        DrawRequest{page, dotsPerInch, static_cast<bool>(progress)}, desk.readyRoom());
    Bitmap bitmap;
    if (!TakeBitmap(drawn, desk.room, bitmap)) conversation.throwNonsense();
    return bitmap;
  });
}

std::string PageHelper::pdf(const LaidOut& laidOut, PageRange range,
                            const PdfProperties& properties, const ProgressCall& progress) {
  Impl::Desk& desk = impl_->deskThatHolds(laidOut);
  const PdfRequest request = {
      InDocument(laidOut, range),
      {Shortened(properties.title), Shortened(properties.author), Shortened(properties.date)},
      static_cast<bool>(progress)};
  desk.budget.ask(request.range.last - request.range.first + 1);
  return desk.helper.converse([&](Conversation& conversation) {
    conversation.spendOf(desk.budget);
    conversation.report(progress);
    const auto made = conversation.ask<PdfMade>(request, desk.readyRoom());
    std::string pdf;
    if (!TakePdf(made, impl_->limits().memory, desk.room, pdf)) conversation.throwNonsense();
    return pdf;
  });
}

}  // namespace tarn::pages
