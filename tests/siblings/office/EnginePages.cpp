#include "EnginePages.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

#include "siblings/office/OfficeEngine.h"
#include "support/TempDirectory.h"

namespace tarn::test {

namespace {

// The program ends without its destructors once the office library is there.
class Folder : public ::testing::Environment {
 public:
  const TempDirectory& directory() {
    if (!directory_) directory_ = std::make_unique<TempDirectory>();
    return *directory_;
  }
  void TearDown() override { directory_.reset(); }

 private:
  std::unique_ptr<TempDirectory> directory_;
};

auto* const g_folder = static_cast<Folder*>(::testing::AddGlobalTestEnvironment(new Folder));

class NoFolder : public pages::DocumentFolder {
 public:
  std::optional<std::string> read(std::string_view name) override {
    ADD_FAILURE() << "asks for " << name;
    return std::nullopt;
  }
};

class Onwards : public pages::Progress {
 public:
  bool at(int /*percent*/) override { return true; }
};

// Runs a program of the poppler tools on a PDF and gives what it writes.
std::string Poppler(const std::string& command, const std::string& pdf) {
  const std::string input = g_folder->directory().write("read.pdf", pdf).string();
  const std::string output = (g_folder->directory().path() / "read.out").string();
  const int status = std::system((command + " '" + input + "' > '" + output + "'").c_str());
  EXPECT_EQ(status, 0) << command;
  return ReadWholeFile(output);
}

}  // namespace

std::filesystem::path EngineFolder() { return g_folder->directory().path(); }

pages::Engine& TheEngine() {
  static const auto engine = pages::MakeOfficeEngine(EngineFolder());
  return *engine;
}

std::unique_ptr<pages::Layout> LayOut(std::string_view rtf, pages::Paper paper) {
  NoFolder folder;
  return TheEngine().layOut(pages::DocumentKind::Rtf, std::string(rtf), paper, folder);
}

std::optional<pages::Trouble> TroubleWith(std::string_view rtf) {
  try {
    LayOut(rtf);
    return std::nullopt;
  } catch (const pages::PageFailure& failure) {
    return failure.trouble();
  }
}

std::string Rtf(std::string_view body) {
  return R"({\rtf1\ansi\deff0{\fonttbl{\f0\fswiss Arial;}}\f0\fs20 )" + std::string(body) + '}';
}

pages::Bitmap Draw(pages::Layout& layout, int32_t page, int32_t dotsPerInch) {
  Onwards progress;
  return layout.draw(page, dotsPerInch, progress);
}

std::string Pdf(pages::Layout& layout, pages::PageRange range,
                const pages::PdfProperties& properties) {
  Onwards progress;
  return layout.pdf(range, properties, progress);
}

std::string TextOf(const std::string& pdf) {
  std::istringstream words(Poppler(R"(f() { pdftotext -enc UTF-8 -layout "$1" -; }; f)", pdf));
  std::string text;
  for (std::string word; words >> word;) text += (text.empty() ? "" : " ") + word;
  return text;
}

pages::Bitmap Rendered(const std::string& pdf, int32_t dotsPerInch) {
  std::istringstream image(Poppler("pdftoppm -singlefile -r " + std::to_string(dotsPerInch), pdf));
  std::string magic;
  int most = 0;
  pages::Bitmap bitmap;
  image >> magic >> bitmap.width >> bitmap.height >> most;
  EXPECT_EQ(magic, "P6");
  image.get();
  const auto pixels = static_cast<size_t>(bitmap.width) * static_cast<size_t>(bitmap.height);
  bitmap.pixels.assign(pixels * 4, 0xFF);
  for (size_t i = 0; i < pixels; ++i) {
    for (const size_t channel : {size_t{2}, size_t{1}, size_t{0}}) {
      bitmap.pixels[i * 4 + channel] = static_cast<uint8_t>(image.get());
    }
  }
  return bitmap;
}

int64_t Count(const pages::Bitmap& bitmap, uint32_t colour) {
  int64_t count = 0;
  for (size_t i = 0; i + 3 < bitmap.pixels.size(); i += 4) {
    const uint32_t pixel = static_cast<uint32_t>(bitmap.pixels[i + 2]) << 16 |
                           static_cast<uint32_t>(bitmap.pixels[i + 1]) << 8 | bitmap.pixels[i];
    count += pixel == colour ? 1 : 0;
  }
  return count;
}

}  // namespace tarn::test
