#include "pages/HelperPages.h"

#include <filesystem>
#include <system_error>

#include "console/Failure.h"
#include "console/posix/ProgramDirectory.h"

namespace tarn::host {
namespace {

namespace fs = std::filesystem;

// Beside the program, as built; or where an installation has them.
fs::path FolderOfHelpers() {
  constexpr const char* kHelper = "tarnmail-pages";  // the other one is beside it
  for (const char* folder : {".", TARN_HELPERS_FROM_PROGRAM}) {
    fs::path place = (ProgramDirectory() / folder).lexically_normal();
    std::error_code ignored;
    if (fs::exists(place / kHelper, ignored)) return place;
  }
  throw Failure(
      ExitStatus::Broken,
      std::string("the programs that make pages are not installed: ") + kHowToInstallHelpers);
}

}  // namespace

pages::HelperOptions InstalledHelpers(PrivateFolder& folder, bool sandbox) {
  pages::HelperOptions options;
  options.programs = FolderOfHelpers();
  std::error_code unmade;
  options.temporary = folder.path(unmade);
  options.sandbox = sandbox;
  return options;
}

pages::LaidOut HelperPages::layOut(const pages::DocumentOnPaper& document) {
  return helper_.layOut(document);
}

bool HelperPages::holds(const pages::LaidOut& laidOut) const { return helper_.holds(laidOut); }

pages::PageSize HelperPages::pageSize(const pages::LaidOut& laidOut, int32_t page) {
  return helper_.pageSize(laidOut, page);
}

pages::Bitmap HelperPages::draw(const pages::LaidOut& laidOut, int32_t page, int32_t dotsPerInch,
                                const pages::ProgressCall& progress) {
  return helper_.draw(laidOut, page, dotsPerInch, progress);
}

std::string HelperPages::pdf(const pages::LaidOut& laidOut, pages::PageRange range,
                             const pages::PdfProperties& properties,
                             const pages::ProgressCall& progress) {
  return helper_.pdf(laidOut, range, properties, progress);
}

}  // namespace tarn::host
