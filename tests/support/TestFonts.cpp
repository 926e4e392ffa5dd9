#include "support/TestFonts.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tarn::test {
namespace {

// In ASCII, whatever the system makes of other characters.
std::string FileName(std::u16string_view family, std::u16string_view style) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string name;
  for (const char16_t unit : std::u16string(family) + u"-" + std::u16string(style)) {
    if (unit == u' ') continue;
    if (unit < 0x80) {
      name += static_cast<char>(unit);
    } else {
      for (int shift = 12; shift >= 0; shift -= 4) name += kDigits[unit >> shift & 15];
    }
  }
  return name + ".ttf";
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
    directory_.write("fonts/" + FileName(font.family, font.style), MakeTestFont(font));
  }
  installation_ = std::make_unique<FontInstallation>(folder);
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
