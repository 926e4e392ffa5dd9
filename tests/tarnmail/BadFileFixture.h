// BadFileFixture.h - files that no command can use.
#ifndef TARN_TESTS_TARNMAIL_BADFILEFIXTURE_H
#define TARN_TESTS_TARNMAIL_BADFILEFIXTURE_H

#include "TarnmailFixture.h"

namespace tarn::test {

class BadFile : public TarnmailTest {
 protected:
  // The line that all four commands give for the file.
  std::string failureOfAll(int exitStatus, const std::string& file) {
    const std::string line = failure(exitStatus, {"info", file});
    EXPECT_EQ(failure(exitStatus, {"info", "--json", file}), line);
    EXPECT_EQ(failure(exitStatus, {"document", file}), line);
    EXPECT_EQ(failure(exitStatus, {"document", "--text", "--in-memory", file, "-o", "out"}), line);
    EXPECT_EQ(failure(exitStatus, {"attachments", file}), line);
    EXPECT_EQ(failure(exitStatus, {"extract", file, "1", "-o", "out"}), line);
    EXPECT_FALSE(std::filesystem::exists(directory_.path() / "out"));
    return line;
  }
};

}  // namespace tarn::test

#endif
