// The chain as a host goes it: fltInfo has the sibling lay the document out, and fltLoad has it
// draw a page. A PDF is asked of whoever laid the document out.
#include <algorithm>
#include <bit>
#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>

#include "Commands.h"
#include "StatusText.h"
#include "console/Failure.h"
#include "console/Paths.h"
#include "console/SystemFiles.h"
#include "pages/HelperPages.h"
#include "pages/HostBitmap.h"
#include "pages/HostSiblings.h"
#include "pages/MailProperties.h"
#include "pages/PngFile.h"
#include "pages/ProgressBar.h"
#include "siblings/client/InstalledHelpers.h"

namespace tarn::host {
namespace {

using pages::PageFailure;
using pages::Trouble;

ExitStatus ExitStatusOf(Trouble trouble) {
  switch (trouble) {
    case Trouble::NotInstalled:
    case Trouble::NoSandbox:
      return ExitStatus::Broken;
    case Trouble::NoSuchPage:
      return ExitStatus::Usage;
    default:
      return ExitStatus::Failed;
  }
}

// What the machine lacks is not about the file.
Failure FailureOf(const std::string& file, const PageFailure& failure) {
  const ExitStatus status = ExitStatusOf(failure.trouble());
  if (failure.trouble() == Trouble::NotInstalled) {
    return {status, failure.what(), pages::kHowToInstallHelpers};
  }
  if (status == ExitStatus::Broken) return {status, failure.what()};
  return {status, file, failure.what()};
}

pages::Paper PaperOf(PaperFormat paper) {
  return paper == PaperFormat::Letter ? pages::Paper::Letter : pages::Paper::A4;
}

// A message that is laid out, in the filter's hands and the siblings'. The file outlives it.
class PagedMail {
 public:
  PagedMail(const Workplace& at, const MailFile& mail, pages::Paper paper, bool sandbox)
      : maker_(pages::InstalledHelpers(at.folder, sandbox)),
        mail_(mail),
        siblings_(maker_, paper, mail_.format()),
        slot_(at.filter) {
    // A mail has no RTF: its helper starts while the filter reads.
    if (mail_.format() == MailFormat::Mail) maker_.prepare(pages::DocumentKind::Html);
    try {
      answer_ = mail_.ask(slot_, [this](FilterInfoContext& to) { siblings_.attachTo(to); });
    } catch (const Refusal&) {
      throwFailure();
      throw;
    }
    answer_.document.sibling = siblings_.lastSibling();
  }

  const MailFile& mail() const { return mail_; }
  const MessageAnswer& answer() const { return answer_; }

  void draw(int32_t page, int32_t dotsPerInch, const pages::ProgressCall& progress,
            HostBitmap& bitmap) {
    HostFileInfo model = {};
    model.size = sizeof model;
    model.xResolution = dotsPerInch;
    model.yResolution = dotsPerInch;
    const int32_t status = mail_.load(slot_, page, [&](FilterLoadContext& context) {
      siblings_.attachTo(context);
      context.bitmap = bitmap.get();
      context.info = &model;
      context.callback = reinterpret_cast<void*>(&ReportProgress);
      context.userValue = reinterpret_cast<uint64_t>(&progress);
    });
    if (status == StatusOk) return;
    throwFailure();
    throw Refusal(mail_.name(), status, StatusText(status));
  }

  std::string pdf(pages::PageRange range, const pages::PdfProperties& properties,
                  const pages::ProgressCall& progress) {
    try {
      return maker_.pdf(siblings_.last()->laidOut, range, properties, progress);
    } catch (const PageFailure& failure) {
      throw FailureOf(mail_.name(), failure);
    }
  }

 private:
  static int32_t ReportProgress(uint64_t userValue, int32_t percent) {
    const auto& progress = *std::bit_cast<const pages::ProgressCall*>(userValue);
    return progress(percent) ? StatusOk : StatusDone;
  }

  // The siblings' own failure, if that is what the call ended in.
  void throwFailure() const {
    if (siblings_.failure()) throw FailureOf(mail_.name(), *siblings_.failure());
  }

  HelperPages maker_;
  const MailFile& mail_;
  HostSiblings siblings_;
  FilterSlot slot_;
  MessageAnswer answer_;
};

// The pages of the document that are asked for.
pages::PageRange RangeIn(const PagedMail& mail, const PageChoice& choice) {
  const int32_t count = mail.answer().pageCount;
  if (choice.first > count) {
    throw Failure(ExitStatus::Usage, mail.mail().name(),
                  "has " + std::to_string(count) + (count == 1 ? " page" : " pages") +
                      "; there is no page " + std::to_string(choice.first));
  }
  return {choice.first, choice.last == 0 ? count : std::min(choice.last, count)};
}

std::string PdfOf(PagedMail& mail, const PagesOptions& options, ProgressBar& bar) {
  const pages::PageRange range = RangeIn(mail, options.pages);
  const pages::PdfProperties properties = PropertiesOfMail(
      mail.mail().path().c_str(), mail.mail().format(), options.message.messageNumber);
  return mail.pdf(range, properties, [&bar](int percent) {
    bar.set(percent);
    return true;
  });
}

void DrawInto(PageFolder& folder, PagedMail& mail, const PagesOptions& options, ProgressBar& bar) {
  const pages::PageRange range = RangeIn(mail, options.pages);
  const int64_t count = int64_t{range.last} - range.first + 1;
  for (int32_t page = range.first; page <= range.last; ++page) {
    const int64_t done = int64_t{page} - range.first;
    const auto report = [&](int percent) {
      bar.set(static_cast<int>((done * 100 + percent) / count));
      return true;
    };
    report(0);
    HostBitmap bitmap;
    mail.draw(page, options.dotsPerInch, report, bitmap);
    folder.write(page,
                 PngFile({bitmap.width(), bitmap.height(), bitmap.dotsPerInch(), bitmap.rows()}));
  }
}

// In a folder that is there: under the mail's name, and its number from the second message on.
std::string PlaceOfPdf(const PagesOptions& options) {
  namespace fs = std::filesystem;
  std::error_code ignored;
  const fs::path output = PathFromUtf8(options.output);
  if (options.output == kStandardStream || KindOfFile(output, ignored) != FileKind::Directory) {
    return options.output;
  }
  fs::path name = PathFromUtf8(options.message.file).filename();
  if (options.message.file == kStandardStream) name = "mail";
  const int32_t number = options.message.messageNumber;
  name.replace_extension();
  if (number > 1) name += "-" + std::to_string(number);
  return Utf8FromPath(output / (name += ".pdf"));
}

}  // namespace

Pages MakePages(const Workplace& at, const PagesOptions& options) {
  Pages made;
  ProgressBar bar;
  if (options.pdf) {
    made.place = PlaceOfPdf(options);
  } else {
    if (options.output == kStandardStream) {
      throw Failure(ExitStatus::Usage, "standard output takes a PDF alone (--pdf)");
    }
    made.folder = std::make_unique<PageFolder>(options.output, options.message.file);
  }
  const MailFile file(at.filter, options.message, at.folder);
  PagedMail mail(at, file, PaperOf(options.paper), options.sandbox);
  if (options.pdf) {
    made.pdf = PdfOf(mail, options, bar);
  } else {
    DrawInto(*made.folder, mail, options, bar);
  }
  return made;
}

MessageAnswer LaidOutAnswer(const Workplace& at, const MailFile& mail, const InfoOptions& options) {
  ProgressBar bar;
  return PagedMail(at, mail, PaperOf(options.paper), options.sandbox).answer();
}

}  // namespace tarn::host
