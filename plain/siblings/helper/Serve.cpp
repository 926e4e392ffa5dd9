#include "Serve.h"

#include <cmath>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "siblings/client/MemoryFile.h"
#include "siblings/client/Protocol.h"

namespace tarn::pages {
namespace {

// The other end was closed, or says what is not understood: no more answers.
struct EndOfTalk {
  Served why;
};

void Send(Channel& channel, const std::string& message) {
  if (!channel.send(message)) throw EndOfTalk{Served::ToTheEnd};
}

template <class Answer>
Answer Receive(Channel& channel, Descriptor& file) {
  std::string message;
  if (channel.receive(message, file) == Heard::End) throw EndOfTalk{Served::ToTheEnd};
  Answer answer;
  if (!Decode(message, answer)) throw EndOfTalk{Served::Nonsense};
  return answer;
}

std::string ReadBytes(const Descriptor& file, uint64_t size) {
  std::string bytes(static_cast<size_t>(size), '\0');
  if (!ReadAll(file.get(), {reinterpret_cast<uint8_t*>(bytes.data()), bytes.size()})) {
    throw EndOfTalk{Served::Nonsense};
  }
  return bytes;
}

// The files beside the document, which the other end opens.
class AskedFolder : public DocumentFolder {
 public:
  AskedFolder(Channel& channel, bool isThere) : channel_(channel), isThere_(isThere) {}

  std::optional<std::string> read(std::string_view name) override {
    if (!isThere_ || name.size() > kMaxFileName) return std::nullopt;
    Send(channel_, Encode(FileRequest{std::string(name)}));
    Descriptor file;
    const auto answer = Receive<FileAnswer>(channel_, file);
    if (!answer.found) return std::nullopt;
    return ReadBytes(file, answer.size);
  }

 private:
  Channel& channel_;
  const bool isThere_;
};

// Says each step of a hundred once, and waits to hear whether to go on.
class ReportedProgress : public Progress {
 public:
  ReportedProgress(Channel& channel, bool isHeard) : channel_(channel), isHeard_(isHeard) {}

  bool at(int percent) override {
    if (!isHeard_ || !goesOn_ || percent <= last_ || percent > 100) return goesOn_;
    last_ = percent;
    Send(channel_, Encode(ProgressReport{percent}));
    Descriptor none;
    goesOn_ = Receive<ProgressAnswer>(channel_, none).goOn;
    return goesOn_;
  }

 private:
  Channel& channel_;
  const bool isHeard_;
  bool goesOn_ = true;
  int last_ = -1;
};

class Server {
 public:
  Server(Channel& channel, const EngineFor& engineFor) : channel_(channel), engineFor_(engineFor) {}

  // Takes one request and answers it.
  void serveNext() {
    std::string message;
    Descriptor file;
    const Heard heard = channel_.receive(message, file);
    if (heard == Heard::End) throw EndOfTalk{Served::ToTheEnd};
    if (heard == Heard::Nonsense) throw EndOfTalk{Served::Nonsense};
    Send(channel_, answerOrFailure(message, file));
  }

 private:
  std::string answerOrFailure(std::string_view message, Descriptor& file) {
    try {
      return answer(message, file);
    } catch (const PageFailure& failure) {
      return failed(failure.trouble(), failure.what());
    } catch (const std::bad_alloc&) {
      return failed(Trouble::TooLarge, "the document takes more memory than there is");
    } catch (const std::exception& error) {
      return failed(Trouble::BadDocument, error.what());
    }
  }

  static std::string failed(Trouble trouble, std::string_view line) {
    return Encode(Failed{trouble, std::string(line.substr(0, kMaxProperty))});
  }

  std::string answer(std::string_view message, Descriptor& file) {
    LayOutRequest layOutRequest;
    PageSizeRequest sizeRequest;
    DrawRequest drawRequest;
    PdfRequest pdfRequest;
    if (Decode(message, layOutRequest)) return layOut(layOutRequest, file);
    if (Decode(message, sizeRequest)) return Encode(PageSizeAnswer{sizeOf(sizeRequest.page)});
    if (Decode(message, drawRequest)) return draw(drawRequest, file);
    if (Decode(message, pdfRequest)) return makePdf(pdfRequest, file);
    throw EndOfTalk{Served::Nonsense};
  }

  std::string layOut(const LayOutRequest& request, Descriptor& file) {
    layout_.reset();
    std::string document = ReadBytes(file, request.size);
    file.close();
    AskedFolder folder(channel_, request.hasFolder);
    std::unique_ptr<Layout> layout =
        engineFor_(request.kind).layOut(request.kind, std::move(document), request.paper, folder);
    if (!layout || layout->pageCount() < 1) {
      throw PageFailure(Trouble::BadDocument, "the document has no pages");
    }
    if (layout->pageCount() > kMaxPages) {
      throw PageFailure(Trouble::TooLarge, "the document has too many pages");
    }
    layout_ = std::move(layout);
    return Encode(LaidOutAnswer{layout_->pageCount(), layout_->pageSize(1)});
  }

  // Of the document that there must be, and of a page in it.
  PageSize sizeOf(int32_t page) {
    if (!layout_ || page < 1 || page > layout_->pageCount()) {
      throw PageFailure(Trouble::NoSuchPage, "there is no page " + std::to_string(page));
    }
    return layout_->pageSize(page);
  }

  std::string draw(const DrawRequest& request, const Descriptor& room) {
    const PageSize size = sizeOf(request.page);
    const double scale = request.dotsPerInch / 72.0;
    const double pixels = std::ceil(size.width * scale) * std::ceil(size.height * scale);
    if (!(pixels * 4 <= static_cast<double>(kMaxBitmapBytes))) {
      throw PageFailure(Trouble::TooLarge, "the page is too large to be drawn at " +
                                               std::to_string(request.dotsPerInch) + " dpi");
    }
    ReportedProgress progress(channel_, request.hearsProgress);
    goOn(progress, 0);
    const Bitmap bitmap = layout_->draw(request.page, request.dotsPerInch, progress);
    goOn(progress, 100);
    const auto width = static_cast<uint64_t>(bitmap.width);
    if (bitmap.pixels.size() != width * static_cast<uint64_t>(bitmap.height) * 4) {
      throw PageFailure(Trouble::BadDocument, "the bitmap is not of its size");
    }
    write(room, {reinterpret_cast<const char*>(bitmap.pixels.data()), bitmap.pixels.size()});
    return Encode(DrawnAnswer{bitmap.width, bitmap.height});
  }

  std::string makePdf(const PdfRequest& request, const Descriptor& room) {
    (void)sizeOf(request.range.first);
    ReportedProgress progress(channel_, request.hearsProgress);
    const std::string pdf = layout_->pdf(request.range, request.properties, progress);
    write(room, pdf);
    return Encode(PdfMade{pdf.size()});
  }

  static void goOn(ReportedProgress& progress, int percent) {
    if (!progress.at(percent)) throw PageFailure(Trouble::Stopped, "stopped");
  }

  static void write(const Descriptor& room, std::string_view bytes) {
    if (WriteAll(room.get(), bytes)) return;
    throw PageFailure(Trouble::TooLarge, "the pages take more memory than there is");
  }

  Channel& channel_;
  const EngineFor& engineFor_;
  std::unique_ptr<Layout> layout_;
};

}  // namespace

Served Serve(Channel& channel, const EngineFor& engineFor) {
  Server server(channel, engineFor);
  try {
    for (;;) server.serveNext();
  } catch (const EndOfTalk& end) {
    return end.why;
  }
}

}  // namespace tarn::pages
