#include "archive/catalogue/PdfText.h"

#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <utility>
#include <vector>

namespace tarn::archive {
namespace {

// A PDF of one page that shows the text, with the places of its objects where readers look for
// them.
std::string PdfOf(const std::string& text) {
  const std::string page = "BT /F 12 Tf 20 100 Td (" + text + ") Tj ET";
  const std::vector<std::string> objects = {
      "<</Type/Catalog/Pages 2 0 R>>",
      "<</Type/Pages/Kids[3 0 R]/Count 1>>",
      "<</Type/Page/Parent 2 0 R/MediaBox[0 0 600 200]/Contents 4 0 R"
      "/Resources<</Font<</F 5 0 R>>>>>>",
      "<</Length " + std::to_string(page.size()) + ">>stream\n" + page + "\nendstream",
      "<</Type/Font/Subtype/Type1/BaseFont/Helvetica>>",
  };
  std::string pdf = "%PDF-1.4\n";
  std::string table = "xref\n0 6\n0000000000 65535 f \n";
  for (size_t each = 0; each < objects.size(); ++each) {
    const std::string place = std::to_string(pdf.size());
    table += std::string(10 - place.size(), '0') + place + " 00000 n \n";
    pdf += std::to_string(each + 1) + " 0 obj\n" + objects[each] + "\nendobj\n";
  }
  const std::string start = std::to_string(pdf.size());
  return pdf + table + "trailer<</Size 6/Root 1 0 R>>\nstartxref\n" + start + "\n%%EOF\n";
}

// Breaks off after some bytes.
class TornSource final : public ByteSource {
 public:
  Outcome<size_t> read(std::span<char> buffer) override {
    if (std::exchange(given_, true)) return Trouble{TroubleKind::Damaged, "torn"};
    return std::string_view("%PDF-1.4").copy(buffer.data(), buffer.size());
  }

 private:
  bool given_ = false;
};

// More than is read of one file.
class EndlessSource final : public ByteSource {
 public:
  Outcome<size_t> read(std::span<char> buffer) override {
    asked += buffer.size();
    return buffer.size();
  }

  size_t asked = 0;
};

TEST(PdfTextTest, IsWhatThePagesShow) {
  ASSERT_TRUE(CanReadPdf());
  EXPECT_EQ(TextOfPdf(*BytesOf(PdfOf("Quarterly figures"))), "Quarterly figures\n\n");
}

// A process that may have less than the program is given by itself, and may not raise it.
TEST(PdfTextTest, IsReadWithinWhatTheProcessMayHave) {
  const pid_t child = fork();
  if (child == 0) {
    setenv("LLVM_PROFILE_FILE", "/dev/null", 1);
    // Whoever has this right may raise what was forbidden once.
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    const __user_cap_data_struct none[2] = {};
    if (syscall(SYS_capset, &header, none) != 0) _exit(3);
    // Less time than the program is given otherwise. The limit on memory is kept in the same way,
    // but sanitizers take no such limit.
    const rlimit limit = {10, 10};
    if (setrlimit(RLIMIT_CPU, &limit) != 0) _exit(5);
    _exit(TextOfPdf(*BytesOf(PdfOf("Quarterly figures"))) == "Quarterly figures\n\n" ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST(PdfTextTest, IsEmptyForWhatIsNoPdf) {
  EXPECT_EQ(TextOfPdf(*BytesOf("no PDF at all")), "");
  EXPECT_EQ(TextOfPdf(*BytesOf("")), "");
  TornSource torn;
  EXPECT_EQ(TextOfPdf(torn), "");
}

TEST(PdfTextTest, DoesNotReadAnEndlessFile) {
  EndlessSource endless;
  EXPECT_EQ(TextOfPdf(endless), "");
  EXPECT_LT(endless.asked, kMostPdf + 1000000);
}

}  // namespace
}  // namespace tarn::archive
