#include "FileFormats/Pst/DetectFormat.h"

#include <gtest/gtest.h>

#include <string>

#include "Tarnbase/PlainKernel.h"
#include "support/TempDirectory.h"

namespace tarn {
namespace {

using test::TempDirectory;

struct Sniffed {
  Status status;
  TarnFormat format = FormatNone;
};

Sniffed Sniff(const std::string& bytes) {
  const TempDirectory directory;
  const std::u16string path = directory.write("file", bytes).u16string();
  const uint64_t handle = KernelFileOpen(path.c_str(), KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
  KernelFileSeek(handle, 3, KERNEL_SEEK_START);  // wherever the host left it
  Sniffed sniffed;
  sniffed.status = DetectFormat(handle, sniffed.format);
  KernelFileClose(handle);
  return sniffed;
}

TEST(DetectFormat, KnowsTheThreeFormats) {
  EXPECT_EQ(Sniff("!BDN12345678").format, FormatPst);
  EXPECT_EQ(Sniff("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"
                  "1234")
                .format,
            FormatMsg);
  EXPECT_EQ(Sniff("From: a@b.c\n").format, FormatEml);
}

TEST(DetectFormat, TakesEverythingElseForMail) {
  EXPECT_EQ(Sniff("!BDM12345678").format, FormatEml);
  EXPECT_EQ(Sniff("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE0"
                  "1234")
                .format,
            FormatEml);
  EXPECT_EQ(Sniff(std::string(12, '\0')).format, FormatEml);
}

TEST(DetectFormat, NeedsTwelveBytesOfWhateverContent) {
  EXPECT_EQ(Sniff("").status, StatusReadFailed);
  EXPECT_EQ(Sniff("!BDN1234567").status, StatusReadFailed);
  EXPECT_EQ(Sniff("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"
                  "123")
                .status,
            StatusReadFailed);
  EXPECT_EQ(Sniff("!BDN12345678").status, StatusOk);
}

TEST(DetectFormat, ReportsAReadOrSeekThatFails) {
  PlainKernelFailAt(PlainKernelFaultRead, 1);
  EXPECT_EQ(Sniff("!BDN12345678").status, StatusReadFailed);
  PlainKernelFailAt(PlainKernelFaultSeek, 2);  // the first is the test's own
  EXPECT_EQ(Sniff("!BDN12345678").status, StatusReadFailed);
}

}  // namespace
}  // namespace tarn
