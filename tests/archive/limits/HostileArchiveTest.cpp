// Every hostile shape through the archive commands: each ends by itself, and no process takes more
// memory than a fixed part and a part in proportion to the file.
#include <gtest/gtest.h>

#include "archive/limits/LimitsFixture.h"
#include "support/hostile/HostileShapes.h"

namespace tarn::archive {
namespace {

using test::HostileShape;

struct Input {
  std::string name;
  const HostileShape* shape;
};

void PrintTo(const Input& input, std::ostream* out) { *out << input.name; }

std::vector<Input> Inputs() {
  std::vector<Input> inputs;
  const auto add = [&inputs](const char* group, std::span<const HostileShape> shapes) {
    for (const HostileShape& shape : shapes) {
      inputs.push_back({group + std::string(shape.name), &shape});
    }
  };
  add("Mail", test::HostileMails());
  add("Body", test::HostileBodies());
  add("Msg", test::HostileMsgFiles());
  add("Rtf", test::HostileRichTexts());
  add("Store", test::HostileStores());
  add("Container", test::HostileContainers());
  return inputs;
}

class HostileArchive : public LimitsTest, public ::testing::WithParamInterface<Input> {
 protected:
  void expectBounded(const std::vector<std::string>& arguments) {
    const Run run = runOf(arguments);
    EXPECT_TRUE(run.status == 0 || run.status == 1) << arguments[0] << ": " << run.status;
    // A mail within a mail, and so on, is parsed once more for each of 32 levels.
    const uint64_t allowed = (uint64_t{192} << 20) + 32 * size_;
    EXPECT_LE(static_cast<uint64_t>(run.peak) << 10, allowed) << arguments[0];
  }

  uint64_t size_ = 0;
};

TEST_P(HostileArchive, TakesMemoryInProportion) {
  const HostileShape& shape = *GetParam().shape;
  const std::string file = std::string("file.") + test::ExtensionOf(shape.format);
  size_ = std::filesystem::file_size(directory_.write(file, shape.file(shape.count / 8)));
  expectBounded({"list", "--json", file});
  expectBounded({"export", file, "-o", "out", "-j", "1", "--to", "html,text,eml,mbox,json"});
  EXPECT_TRUE(std::filesystem::exists(path("out/manifest.jsonl")));
}

INSTANTIATE_TEST_SUITE_P(Shapes, HostileArchive, ::testing::ValuesIn(Inputs()),
                         [](const auto& input) { return input.param.name; });

}  // namespace
}  // namespace tarn::archive
