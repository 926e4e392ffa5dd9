#include <gtest/gtest.h>
#include <stdio.h>

#include <set>
#include <sstream>
#include <string>

namespace tarn {
namespace {

std::string Output(const std::string& command) {
  std::string text;
  FILE* const pipe = popen(command.c_str(), "r");
  char buffer[4096];
  while (fgets(buffer, sizeof buffer, pipe) != nullptr) text += buffer;
  EXPECT_EQ(pclose(pipe), 0) << command;
  return text;
}

TEST(Exports, AreTheSixNamesAndNothingElse) {
  std::istringstream lines(Output("nm -D --defined-only '" TARN_FILTER_PATH "'"));
  std::set<std::string> names;
  for (std::string address, type, name; lines >> address >> type >> name;) names.insert(name);
  EXPECT_EQ(names, (std::set<std::string>{"TARN_Load", "fltExtractAttachment", "fltFreeData",
                                          "fltGetAttachmentInfo", "fltInfo", "fltLoad"}));
}

TEST(Exports, FindTheKernelBesideThemselves) {
  const std::string text = Output("objdump -p '" TARN_FILTER_PATH "'");
  EXPECT_NE(text.find("NEEDED               libTarnbase.so"), std::string::npos);
  EXPECT_NE(text.find("$ORIGIN"), std::string::npos);
}

}  // namespace
}  // namespace tarn
