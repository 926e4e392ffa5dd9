// HostileInput.h - the hostile shapes that the filter reads, as parameters of tests.
#ifndef TARN_TESTS_ROAD_LIMITS_HOSTILEINPUT_H
#define TARN_TESTS_ROAD_LIMITS_HOSTILEINPUT_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tarnbase/PlainKernel.h"
#include "support/TempDirectory.h"
#include "support/hostile/HostileShapes.h"
#include "support/road/AllCalls.h"

namespace tarn::test {

struct HostileInput {
  std::string name;  // letters and digits: of the group and of the shape
  const HostileShape* shape;
};

inline void PrintTo(const HostileInput& input, std::ostream* out) { *out << input.name; }

inline std::vector<HostileInput> HostileInputs() {
  std::vector<HostileInput> inputs;
  const auto add = [&inputs](const char* group, std::span<const HostileShape> shapes) {
    for (const HostileShape& shape : shapes)
      inputs.push_back({group + std::string(shape.name), &shape});
  };
  add("Mail", HostileMails());
  add("Body", HostileBodies());
  add("Msg", HostileMsgFiles());
  add("Rtf", HostileRichTexts());
  add("Store", HostileStores());
  return inputs;
}

// Calls that a host makes on a file, its first three attachments among them.
class HostileCalls : public ::testing::TestWithParam<HostileInput> {
 protected:
  HostileCalls() {
    options_.tempFolder = temporary_.path();
    options_.outFolder = out_.path();
    options_.mostAttachments = 3;
    PlainKernelSetTempDirectory(temporary_.wide().c_str());
    // Labels in Japanese ask for fonts and code pages.
    PlainKernelSetLanguage(0x0411);
  }
  ~HostileCalls() override { PlainKernelSetTempDirectory(nullptr); }

  // A file of the shape, of so many things.
  std::filesystem::path write(size_t count) const {
    return files_.write("file", GetParam().shape->file(count));
  }

  void makeCalls(const std::filesystem::path& file) {
    for (const bool textOnly : {false, true}) {
      options_.textOnly = textOnly;
      options_.asksForAttachments = !textOnly;
      MakeAllCalls(file, options_, [this](const Answer&) { ++answers_; });
    }
  }

  TempDirectory files_;
  TempDirectory temporary_;
  TempDirectory out_;
  AllCallsOptions options_;
  int answers_ = 0;
};

inline std::string NameOfInput(const ::testing::TestParamInfo<HostileInput>& info) {
  return info.param.name;
}

}  // namespace tarn::test

#endif
