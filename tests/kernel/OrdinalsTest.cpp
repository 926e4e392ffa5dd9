// The file that numbers the kernel's operations, against the numbers once given and against the
// headers. A text like any other: the same on every system.
#include "Ordinals.h"

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include "support/TempDirectory.h"

namespace tarn::test {
namespace {

std::string TextOf(const std::string& name) {
  std::string text = ReadWholeFile(std::string(TARN_SOURCE_FOLDER "/") + name);
  std::erase(text, '\r');
  return text;
}

// The statements of the file: without comments and empty lines.
std::vector<std::string> Statements() {
  std::istringstream lines(TextOf("plain/kernel/Tarnbase.def"));
  std::vector<std::string> statements;
  for (std::string line; std::getline(lines, line);) {
    line = line.substr(0, line.find(';'));
    if (line.find_first_not_of(' ') != std::string::npos) statements.push_back(line);
  }
  return statements;
}

TEST(Ordinals, AreTheNumbersOnceGiven) {
  const std::regex row(" *(\\w+) +@([0-9]+) NONAME *");
  std::map<std::string, uint32_t> found;
  const std::vector<std::string> statements = Statements();
  ASSERT_GE(statements.size(), 2U);
  EXPECT_EQ(statements[0], "LIBRARY Tarnbase.dll");
  EXPECT_EQ(statements[1], "EXPORTS");
  for (size_t i = 2; i < statements.size(); ++i) {
    std::smatch parts;
    ASSERT_TRUE(std::regex_match(statements[i], parts, row)) << statements[i];
    const auto number = static_cast<uint32_t>(std::stoul(parts[2]));
    EXPECT_TRUE(found.emplace(parts[1], number).second) << parts[1] << " is there twice";
  }
  std::map<std::string, uint32_t> expected;
  for (const Ordinal& row_ : Ordinals()) expected.emplace(row_.name, row_.number);
  EXPECT_EQ(found, expected);
}

TEST(Ordinals, AreDifferent) {
  std::set<uint32_t> numbers;
  for (const Ordinal& row : Ordinals()) EXPECT_TRUE(numbers.insert(row.number).second) << row.name;
}

TEST(Ordinals, NumberEveryOperationOfTheHeaders) {
  std::set<std::string> declared;
  const std::regex declaration("\\b(\\w+)\\(");
  for (const char* const header : {"Kernel.h", "PlainKernel.h"}) {
    const std::string text = TextOf(std::string("Include/Tarnbase/") + header);
    for (size_t at = text.find("\nTARNBASE_API "); at != std::string::npos;
         at = text.find("\nTARNBASE_API ", at + 1)) {
      const std::string statement = text.substr(at, text.find(';', at) - at);
      std::smatch name;
      ASSERT_TRUE(std::regex_search(statement, name, declaration)) << statement;
      EXPECT_TRUE(declared.insert(name[1]).second) << name[1];
    }
  }
  std::set<std::string> numbered;
  for (const Ordinal& row : Ordinals()) numbered.emplace(row.name);
  EXPECT_EQ(declared, numbered);
}

}  // namespace
}  // namespace tarn::test
