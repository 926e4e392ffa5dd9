// Pipes that have names.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <thread>

#include "support/SampleMails.h"
#include "tarnmail/TarnmailFixture.h"

namespace tarn::test {
namespace {

using Pipes = TarnmailTest;
namespace fs = std::filesystem;

TEST_F(Pipes, WithNamesAreRead) {
  const fs::path pipe = directory_.path() / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  std::thread writer([&] {
    const int end = open(pipe.c_str(), O_WRONLY | O_CLOEXEC);
    EXPECT_EQ(write(end, kPlainMail.data(), kPlainMail.size()),
              static_cast<ssize_t>(kPlainMail.size()));
    close(end);
  });
  EXPECT_EQ(output({"document", "pipe"}), kPlainMailDocument + '\0');
  writer.join();
}

TEST_F(Pipes, WithNamesAreWrittenTo) {
  const fs::path pipe = directory_.path() / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  std::string read;
  std::thread reader([&] { read = ReadWholeFile(pipe); });
  EXPECT_EQ(output({"document", mail(kPlainMail), "-o", "pipe"}), "");
  reader.join();
  EXPECT_EQ(read, kPlainMailDocument + '\0');
  EXPECT_TRUE(fs::is_fifo(pipe));
}

TEST_F(Pipes, OfTheProcessHaveNamesToo) {
  standardInput_ = kPlainMail;
  EXPECT_EQ(output({"document", "/dev/stdin"}), kPlainMailDocument + '\0');
}

}  // namespace
}  // namespace tarn::test
