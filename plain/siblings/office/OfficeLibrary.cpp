#include "siblings/office/OfficeLibrary.h"

#include <array>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string_view>
#include <utility>

#include "siblings/office/OfficeProfile.h"

namespace tarn::pages {

namespace {

constexpr const char* kInstallation = "/usr/lib/libreoffice/program";

// A text that the library has made and the caller frees.
using OfficeText = std::unique_ptr<char, decltype(&std::free)>;

std::string FileUrl(const std::filesystem::path& path) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  constexpr std::string_view kPlain =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789/-._~";
  std::string url = "file://";
  for (const char c : path.native()) {
    if (kPlain.find(c) != std::string_view::npos) {
      url += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      url.append(1, '%').append(1, kDigits[byte >> 4]).append(1, kDigits[byte & 15]);
    }
  }
  return url;
}

// A file while the object lives.
class ShortLivedFile {
 public:
  explicit ShortLivedFile(std::filesystem::path path) : path_(std::move(path)) {}
  ShortLivedFile(const ShortLivedFile&) = delete;
  ShortLivedFile& operator=(const ShortLivedFile&) = delete;
  ~ShortLivedFile() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }

  std::string url() const { return FileUrl(path_); }

  void write(const std::string& bytes) const {
    std::ofstream file(path_, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) throw PageFailure(Trouble::TooLarge, "there is no room for the document");
  }

  std::string read() const {
    std::ifstream file(path_, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  std::filesystem::path path_;
};

std::string ExportOptions(int32_t first, int32_t last) {
  return R"({"PageRange":{"type":"string","value":")" + std::to_string(first) + '-' +
         std::to_string(last) +
         R"("},"IsSkipEmptyPages":{"type":"boolean","value":"true"},)"
         R"("ExportBookmarks":{"type":"boolean","value":"false"},)"
         R"("ExportFormFields":{"type":"boolean","value":"false"},)"
         R"("UseTaggedPDF":{"type":"boolean","value":"false"}})";
}

}  // namespace

OfficeDocument::OfficeDocument(std::unique_ptr<lok::Document> document,
                               std::filesystem::path folder)
    : document_(std::move(document)), folder_(std::move(folder)) {
  const OfficeText rectangles(document_->getPartPageRectangles(), &std::free);
  if (rectangles) pages_ = ParsePageRectangles(rectangles.get());
  if (pages_.empty()) throw PageFailure(Trouble::BadDocument, "the RTF has no pages");
}

void OfficeDocument::paint(uint8_t* pixels, int32_t width, int32_t rows,
                           const PageRectangle& part) {
  document_->paintTile(pixels, width, rows, part.x, part.y, part.width, part.height);
}

std::string OfficeDocument::pdf(int32_t first, int32_t last) {
  const ShortLivedFile file(folder_ / "pages.pdf");
  if (!document_->saveAs(file.url().c_str(), "pdf", ExportOptions(first, last).c_str())) {
    throw PageFailure(Trouble::BadDocument, "the pages of the RTF cannot be written as PDF");
  }
  return file.read();
}

OfficeLibrary& OfficeLibrary::start(const std::filesystem::path& folder) {
  static OfficeLibrary library(folder);
  return library;
}

OfficeLibrary::OfficeLibrary(const std::filesystem::path& folder) : folder_(folder) {
  const std::filesystem::path profile = folder_ / "profile";
  WriteOfficeProfile(profile, kInstallation);
  SetOfficeEnvironment(folder_);
  if (std::filesystem::exists(kInstallation)) {
    office_ = lok::lok_cpp_init(kInstallation, FileUrl(profile).c_str());
  }
  if (office_ == nullptr) {
    throw PageFailure(Trouble::NotInstalled,
                      "pages of RTF need the package libreoffice-writer-nogui");
  }
  EndWithoutOffice();
}

std::unique_ptr<OfficeDocument> OfficeLibrary::load(const std::string& rtf) {
  const ShortLivedFile file(folder_ / "document.rtf");
  file.write(rtf);
  std::unique_ptr<lok::Document> document(
      office_->documentLoad(file.url().c_str(), "MacroSecurityLevel=3"));
  if (!document) throw PageFailure(Trouble::BadDocument, "the RTF cannot be read");
  if (document->getDocumentType() != LOK_DOCTYPE_TEXT) {
    throw PageFailure(Trouble::BadDocument, "the document is not RTF");
  }
  return std::make_unique<OfficeDocument>(std::move(document), folder_);
}

}  // namespace tarn::pages
