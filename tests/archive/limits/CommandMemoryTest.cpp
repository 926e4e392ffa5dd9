// The memory of every command: of those of the archive for some mails and for ten times as many,
// which are read one after the other, of those of the filter for a mail and for one three times as
// large.
#include <gtest/gtest.h>

#include <fstream>

#include "archive/limits/LimitsFixture.h"

namespace tarn::archive {
namespace {

constexpr int kFew = 150;
constexpr int kMany = 1500;
constexpr size_t kBody = 20000;
constexpr long kByChance = 2048;           // KB that a process may have more or less
constexpr long kOfCatalogue = 16L * 1024;  // KB of words and pages that a catalogue gathers

struct Peak {
  const char* command;
  long kilobytes;
  long buffers = 0;  // KB that may be full of many mails and not of few
};

class CommandMemory : public LimitsTest {
 protected:
  void writeBox(const std::string& name, int mails) const {
    std::ofstream box(directory_.path() / name, std::ios::binary);
    for (int i = 0; i < mails; ++i) {
      const std::string number = std::to_string(i);
      box << "From a Wed May  1 00:00:00 2024\n"
          << "From: Ann <ann" << number << "@example.com>\nTo: Bob <bob@example.com>\nSubject: "
          << "Mail " << number << "\nDate: Wed, 1 May 2024 12:34:56 +0200\nMessage-ID: <" << number
          << "@example.com>\n\nText w" << number << "\n";
      for (size_t line = 0; line < kBody / 50; ++line) box << std::string(49, 'x') << "\n";
      box << "\n";
    }
  }

  // The commands on a box of so many mails, from its list to the sum of its tasks.
  std::vector<Peak> peaks(const std::string& name, int mails) {
    writeBox(name, mails);
    const std::string out = name + "-out";
    const std::string plan = name + ".plan";
    const std::string merged = name + "-merged";
    std::vector<Peak> all;
    const auto note = [&](const char* command, std::vector<std::string> arguments,
                          long buffers = 0) {
      arguments.insert(arguments.begin(), command);
      const Run run = runOf(arguments);
      EXPECT_EQ(run.status, 0) << command;
      all.push_back({command, run.peak, buffers});
    };
    note("list", {"--json", name});
    note("show", {name, "0"});
    note("export", {name, "-o", out + "-plain", "-j", "1", "--to", "text,mbox", "--no-catalogue"});
    note("export", {name, "-o", out, "-j", "1", "--to", "text,eml,mbox"}, kOfCatalogue);
    note("verify", {out});
    note("search", {out, "Mail", "--json"});
    note("plan", {name, "-o", plan, "--to", "text"});
    note("run-task", {plan, "--task", "0", "-o", merged});
    note("merge", {plan, merged}, kOfCatalogue);
    return all;
  }
};

// Without what the mails hold, 27 MB.
TEST_F(CommandMemory, IsTwoKilobytesForEachMailAtMost) {
  const std::vector<Peak> few = peaks("few", kFew);
  const std::vector<Peak> many = peaks("many", kMany);
  ASSERT_EQ(few.size(), many.size());
  for (size_t i = 0; i < few.size(); ++i) {
    EXPECT_LE(many[i].kilobytes, few[i].kilobytes + 2 * (kMany - kFew) + few[i].buffers + kByChance)
        << few[i].command;
    EXPECT_GT(few[i].kilobytes, 1000) << few[i].command;
  }
}

class FilterCommandMemory : public LimitsTest {
 protected:
  // Half of it text, half of it an attachment. The size of the file in kilobytes.
  long writeMail(const std::string& name, size_t lines) const {
    std::ofstream mail(directory_.path() / name, std::ios::binary);
    mail << "From: a@example.com\nTo: b@example.com\nSubject: Large\n"
         << "Date: Wed, 1 May 2024 12:34:56 +0200\nMIME-Version: 1.0\n"
         << "Content-Type: multipart/mixed; boundary=x\n\n--x\nContent-Type: text/plain\n\n";
    for (size_t line = 0; line < lines; ++line) mail << std::string(76, 't') << "\n";
    mail << "--x\nContent-Type: application/octet-stream\nContent-Transfer-Encoding: base64\n"
         << "Content-Disposition: attachment; filename=a.bin\n\n";
    for (size_t line = 0; line < lines; ++line) mail << std::string(76, 'A') << "\n";
    mail << "--x--\n";
    return static_cast<long>(mail.tellp() / 1024);
  }
};

// Of what a larger mail has more, the mail itself, and what is made of it.
TEST_F(FilterCommandMemory, IsTheMailAndWhatIsMadeOfIt) {
  const long more = -writeMail("few.eml", 30'000) + writeMail("many.eml", 90'000);
  ASSERT_GT(more, 8000);
  const std::vector<std::vector<std::string>> commands = {
      {"info"}, {"attachments"}, {"document", "-o", "document"}, {"extract", "1", "-o", "content"}};
  for (std::vector<std::string> words : commands) {
    const std::string command = words.front();
    words.insert(words.begin() + 1, "few.eml");
    const Run few = runOf(words);
    words[1] = "many.eml";
    const Run many = runOf(words);
    EXPECT_EQ(few.status + many.status, 0) << command;
    EXPECT_GT(few.peak, 1000) << command;
    EXPECT_LE(many.peak - few.peak, 2 * more + kByChance) << command;
  }
}

}  // namespace
}  // namespace tarn::archive
