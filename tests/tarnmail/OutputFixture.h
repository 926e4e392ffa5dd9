// OutputFixture.h - places that the bytes of a command go to.
#ifndef TARN_TESTS_TARNMAIL_OUTPUTFIXTURE_H
#define TARN_TESTS_TARNMAIL_OUTPUTFIXTURE_H

#include "TarnmailFixture.h"

namespace tarn::test {

class Output : public TarnmailTest {
 protected:
  const std::string file_ = Example("nested-attachments.eml");

  // Each command in a form that writes to standard output.
  std::vector<std::vector<std::string>> allCommands() const {
    return {{"info", file_},         {"document", file_}, {"attachments", file_},
            {"extract", file_, "1"}, {"--help"},          {"--version"}};
  }

  // The line of an extraction to that place, which must fail.
  std::string extractTo(int exitStatus, const std::string& place) {
    return failure(exitStatus, {"extract", file_, "2", "-o", place});
  }
};

}  // namespace tarn::test

#endif
