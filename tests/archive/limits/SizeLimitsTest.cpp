// What is read up to a size, a number or a depth is told where it ends, and all else is there.
#include <gtest/gtest.h>

#include <fstream>

#include "archive/limits/LimitsFixture.h"
#include "support/EmlBuilder.h"
#include "support/hostile/HostileText.h"

namespace tarn::archive {
namespace {

using test::Times;

class SizeLimits : public LimitsTest {
 protected:
  void write(const std::string& name, std::string_view bytes) const {
    (void)directory_.write(name, bytes);
  }

  std::string mail(std::string_view fields, std::string_view body) const {
    return "From: Ann <ann@example.com>\nSubject: Mail\n" + std::string(fields) + "\n" +
           std::string(body);
  }

  void expectTrouble(const std::string& file, const std::string& reason) {
    const test::ProgramResult shown = run({"show", file});
    EXPECT_EQ(shown.exitStatus, 1);
    EXPECT_NE(shown.err.find(reason), std::string::npos) << shown.err;
    EXPECT_NE(shown.out.find("ann@example.com"), std::string::npos);
  }
};

TEST_F(SizeLimits, TextsOfMailsEndAt64Mebibytes) {
  write("a.eml", mail("", std::string((size_t{64} << 20) + 1, 'x')));
  expectTrouble("a.eml", "more than 67108864 bytes");
}

TEST_F(SizeLimits, HeadersOfMailsEndAt8Mebibytes) {
  write("a.eml", mail(Times(10000, "X: " + std::string(897, 'x') + "\n"), "Text\n"));
  expectTrouble("a.eml", "more than 8388608 bytes of headers");
}

TEST_F(SizeLimits, PartsOfMailsEndAt10000) {
  write("a.eml", mail("MIME-Version: 1.0\nContent-Type: multipart/mixed; boundary=b\n",
                      Times(10001, "--b\n\nText\n")));
  expectTrouble("a.eml", "more than 10000 parts");
}

TEST_F(SizeLimits, TnefFilesEndAtAGibibyte) {
  write("a.dat", std::string("\x78\x9f\x3e\x22\x01\x00", 6));
  std::filesystem::resize_file(directory_.path() / "a.dat", (uint64_t{1} << 30) + 1);
  const test::ProgramResult listed = run({"list", "a.dat"});
  EXPECT_EQ(listed.exitStatus, 2);  // there was nothing else to read
  EXPECT_NE(listed.err.find("larger than such files can be"), std::string::npos) << listed.err;
}

// The second mail is beyond what 32 bits count. All between is a hole of the file.
TEST_F(SizeLimits, MboxesGoBeyond4Gibibytes) {
  const std::string separator = "From a Wed May  1 00:00:00 2024\n";
  write("box", separator + mail("", "Text\n") + "\n" + separator + mail("", "\n"));
  const std::filesystem::path box = directory_.path() / "box";
  const uint64_t far = (uint64_t{1} << 32) + 4096;
  std::filesystem::resize_file(box, far);
  std::ofstream(box, std::ios::binary | std::ios::app) << "\n\n"
                                                       << separator << mail("", "The last\n");
  const test::ProgramResult listed = run({"list", "--json", "box"});
  EXPECT_EQ(listed.exitStatus, 0) << listed.err;
  EXPECT_EQ(std::count(listed.out.begin(), listed.out.end(), '\n'), 3);
  const std::string id = std::to_string(far + 2);
  EXPECT_NE(listed.out.find("\"id\":\"" + id + "\""), std::string::npos) << listed.out;
  EXPECT_NE(output({"show", "box", id}).find("The last"), std::string::npos);
}

}  // namespace
}  // namespace tarn::archive
