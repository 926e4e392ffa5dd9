// One engine for very many documents. Under AddressSanitizer, which keeps what is freed, memory
// says nothing.
#include <gtest/gtest.h>

#include <fstream>

#include "EnginePages.h"
#include "Pictures.h"

namespace tarn::test {
namespace {

// Resident memory of this process in kilobytes.
int64_t ResidentMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmRSS:", 0) == 0) return std::stoll(line.substr(6));
  }
  ADD_FAILURE() << "no VmRSS";
  return 0;
}

void LayOutSome(int count) {
  for (int i = 0; i < count; ++i) {
    const auto layout = LayOut(Rtf("Document " + std::to_string(i) + R"(\par{\pict\pngblip )" +
                                   std::string(kPinkPng) + "}"));
    Draw(*layout);
    EXPECT_FALSE(Pdf(*layout).empty());
  }
}

TEST(VeryManyDocuments, DoNotGrowTheProcess) {
  LayOutSome(30);
  const int64_t before = ResidentMemory();
  LayOutSome(200);
  // A document that is not given back takes 500 kB; the library's own caches grow by some 10 MB.
  EXPECT_LT(ResidentMemory() - before, 40'000);
}

}  // namespace
}  // namespace tarn::test
