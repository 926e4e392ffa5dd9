#include "support/TestFonts.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <memory>

namespace tarn::test {
namespace {

std::filesystem::path FileName(std::u16string_view family, std::u16string_view style) {
  std::u16string name = std::u16string(family) + u"-" + std::u16string(style) + u".ttf";
  std::erase(name, u' ');
  return name;
}

std::string Configuration(const std::filesystem::path& folder) {
  return "<?xml version=\"1.0\"?>\n"
         "<!DOCTYPE fontconfig SYSTEM \"urn:fontconfig:fonts.dtd\">\n"
         "<fontconfig>\n"
         "<dir>" +
         (folder / "fonts").string() + "</dir>\n<cachedir>" + (folder / "cache").string() +
         "</cachedir>\n"
         "<alias binding=\"same\"><family>Helvetica</family>"
         "<prefer><family>Arial</family></prefer></alias>\n"
         "</fontconfig>\n";
}

// What UseTestFonts collects, and the folder while tests run.
class TestFontEnvironment : public ::testing::Environment {
 public:
  void Add(const TestFont& font) {
    const bool known = std::any_of(fonts_.begin(), fonts_.end(), [&](const TestFont& other) {
      return other.family == font.family && other.style == font.style;
    });
    if (!known) fonts_.push_back(font);
  }
  void SetUp() override { installed_ = std::make_unique<TestFonts>(fonts_); }
  void TearDown() override { installed_.reset(); }
  const TestFonts& installed() const { return *installed_; }

 private:
  std::vector<TestFont> fonts_;
  std::unique_ptr<TestFonts> installed_;
};

// GoogleTest owns it.
TestFontEnvironment& Environment() {
  static TestFontEnvironment& environment = *new TestFontEnvironment;
  [[maybe_unused]] static const auto* const registered =
      ::testing::AddGlobalTestEnvironment(&environment);
  return environment;
}

}  // namespace

TestFonts::TestFonts(const std::vector<TestFont>& fonts) {
  const std::filesystem::path& folder = directory_.path();
  std::filesystem::create_directory(folder / "fonts");
  for (const TestFont& font : fonts) {
    const std::filesystem::path name =
        std::filesystem::path("fonts") / FileName(font.family, font.style);
    directory_.write(name.string(), MakeTestFont(font));
  }
  const std::string configuration = directory_.write("fonts.conf", Configuration(folder)).string();
  unsetenv("FONTCONFIG_PATH");
  unsetenv("FONTCONFIG_SYSROOT");
  setenv("FONTCONFIG_FILE", configuration.c_str(), 1);
}

std::filesystem::path TestFonts::file(std::u16string_view family, std::u16string_view style) const {
  return directory_.path() / "fonts" / FileName(family, style);
}

bool UseTestFonts(const std::vector<TestFont>& fonts) {
  for (const TestFont& font : fonts) Environment().Add(font);
  return true;
}

const TestFonts& InstalledTestFonts() { return Environment().installed(); }

std::vector<TestFont> StandardTestFonts() {
  const std::u16string ascii = UnitRange(0x20, 0x7E);
  const std::u16string armenian = UnitRange(0x531, 0x556) + UnitRange(0x561, 0x587) + u"\u058A";
  const std::u16string kana = UnitRange(0x3041, 0x30FE);
  const std::u16string syllables = UnitRange(0xAC00, 0xAC10);
  return {
      {.family = u"Arial",
       .characters = UnitRange(0x20, 0x17F) + UnitRange(0x391, 0x3CE) + UnitRange(0x410, 0x44F) +
                     armenian + u"\uFB13"},
      {.family = u"Symbol", .characters = UnitRange(0xF020, 0xF0FF), .symbol = true},
      {.family = u"MS Gothic", .characters = ascii + kana + u"\uF0B7" + UnitRange(0x3400, 0x34FF)},
      {.family = u"Batang", .characters = ascii + kana + syllables + UnitRange(0xA960, 0xA97C)},
      {.family = u"Gulim", .characters = ascii + kana + syllables + UnitRange(0x1681, 0x169A)},
      {.family = u"Sylfaen", .characters = ascii + armenian + UnitRange(0x10D0, 0x10FA)},
  };
}

}  // namespace tarn::test
