// FaultFixture.h - exports as processes in which calls of the system fail (FaultyCalls.cpp).
#ifndef TARN_TESTS_ARCHIVE_FAULTS_FAULTFIXTURE_H
#define TARN_TESTS_ARCHIVE_FAULTS_FAULTFIXTURE_H

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "console/Json.h"
#include "support/TempDirectory.h"
#include "tarnmail/RunProgram.h"

namespace tarn::archive {

struct Fault {
  std::string kind = "count";
  uint64_t at = 0;
  std::string folder = "out";  // whose calls are counted
};

inline std::string MailText(int number, const std::string& body) {
  return "From: Ann <ann@example.com>\nTo: bob@example.com\nSubject: Subject " +
         std::to_string(number % 5) + "\nDate: Wed, 1 May 2024 10:34:56 +0000\nMessage-ID: <" +
         std::to_string(number) + "@example.com>\n" + body;
}

// Text, a file, and a mail with a file of its own.
inline std::string MailWithParts(int number) {
  return MailText(number,
                  "MIME-Version: 1.0\nContent-Type: multipart/mixed; boundary=x\n\n"
                  "--x\nContent-Type: text/html\n\n<p>See " +
                      std::to_string(number) +
                      "</p>\n--x\nContent-Type: text/plain\n"
                      "Content-Disposition: attachment; filename=\"notes.txt\"\n\nNotes\n"
                      "--x\nContent-Type: message/rfc822\n\n" +
                      MailText(number + 1000,
                               "Content-Type: application/octet-stream\n"
                               "Content-Disposition: attachment; filename=a.bin\n"
                               "Content-Transfer-Encoding: base64\n\nYWJj\n") +
                      "\n--x--\n");
}

class FaultyExport : public ::testing::Test {
 protected:
  using Tree = std::map<std::string, std::string>;

  FaultyExport() {
    std::filesystem::create_directory(path("in"));
    std::filesystem::create_directory(path("tmp"));
  }

  std::filesystem::path path(const std::string& name) const { return directory_.path() / name; }

  void write(const std::string& name, const std::string& bytes) const {
    std::ofstream(path(name), std::ios::binary) << bytes;
  }

  // A box of so many mails with copies among them, a mail, a store.
  void makeSources(int mails) const {
    std::string box;
    for (int number = 0; number < mails; ++number) {
      const std::string mail =
          number % 4 == 0 ? MailWithParts(number / 8) : MailText(number, "\nBody\n");
      box += "From ann@example.com Wed May  1 10:34:56 2024\n" + mail + "\n";
    }
    write("in/box", box);
    write("in/other.eml", MailWithParts(3));
    std::filesystem::copy_file(std::string(EXAMPLES_PATH) + "/mailbox.pst", path("in/mailbox.pst"));
  }

  static std::string programOf(const std::vector<std::string>& arguments) {
    return arguments.front() == "search" ? TARNMAIL_SEARCH_PATH : TARNMAIL_ARCHIVE_PATH;
  }

  test::ProgramResult run(const std::vector<std::string>& arguments, const Fault& fault = {}) {
    write("counter", std::string(sizeof(uint64_t), '\0'));
    test::ProgramCall call;
    call.program = programOf(arguments);
    call.arguments = arguments;
    call.workingDirectory = directory_.path();
    call.environment = {{"LD_PRELOAD", FAULTY_CALLS},
                        {"TARN_FAULT_KIND", fault.kind},
                        {"TARN_FAULT_AT", std::to_string(fault.at)},
                        {"TARN_FAULT_FOLDER", path(fault.folder)},
                        {"TARN_FAULT_COUNTER", path("counter")},
                        {"TMPDIR", path("tmp")},
                        {"LC_ALL", "C.UTF-8"},
                        // One that is killed would leave a part of a profile.
                        {"LLVM_PROFILE_FILE", "/dev/null"}};
    test::ProgramResult result = test::RunProgram(call);
    const std::string bytes = test::ReadWholeFile(path("counter"));
    std::memcpy(&calls_, bytes.data(), sizeof calls_);
    return result;
  }

  // Into the folder "out" of the test's own, by its whole path, which is what faults look at.
  test::ProgramResult exportInto(const std::string& folder, const std::vector<std::string>& options,
                                 const Fault& fault = {}) {
    std::vector<std::string> arguments = {"export", path("in"), "-o", path(folder)};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return run(arguments, fault);
  }

  // Every file below a folder with its bytes, and every folder.
  Tree tree(const std::string& folder) const {
    Tree files;
    const std::filesystem::path root = path(folder);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
      const std::string name = entry.path().lexically_relative(root);
      if (entry.is_directory()) {
        files[name + "/"] = "";
      } else {
        files[name] = test::ReadWholeFile(entry.path());
      }
    }
    return files;
  }

  // What is in one and not in the other, or differs; empty where they are the same.
  static std::string difference(const Tree& left, const Tree& right) {
    std::string text;
    for (const auto& [name, bytes] : left) {
      const auto other = right.find(name);
      if (other == right.end()) text += "- " + name + "\n";
      if (other != right.end() && other->second != bytes) text += "! " + name + "\n";
    }
    for (const auto& [name, bytes] : right) {
      if (!left.contains(name)) text += "+ " + name + "\n";
    }
    return text;
  }

  // What is in the places of items so far is whole.
  void expectNothingHalf(const std::string& folder, const Tree& whole) const {
    if (!std::filesystem::exists(path(folder))) return;
    for (const auto& [name, bytes] : tree(folder)) {
      const bool isOfTheWholeExport = name.starts_with(".tarn-staging") ||
                                      name.starts_with("catalogue.sqlite") ||
                                      name.starts_with("index");
      if (isOfTheWholeExport) continue;
      const auto other = whole.find(name);
      EXPECT_TRUE(other != whole.end() && other->second == bytes) << name;
    }
  }

  // A line that says that the disk is full, and no other complaint.
  static void expectFullDisk(const std::string& err) {
    // SQLite has words of its own, and does not keep why a file cannot be made.
    bool isTold = false;
    for (const char* const words :
         {"No space left on device", "database or disk is full", "unable to open database file"}) {
      isTold = isTold || err.find(words) != std::string::npos;
    }
    EXPECT_TRUE(isTold) << err;
    EXPECT_EQ(err.find("internal error"), std::string::npos) << err;
  }

  static void expectClearLine(const test::ProgramResult& result) {
    EXPECT_TRUE(result.exitStatus == 1 || result.exitStatus == 2) << result.exitStatus;
    expectFullDisk(result.err);
  }

  std::vector<nlohmann::json> manifest(const std::string& folder) const {
    std::vector<nlohmann::json> rows;
    std::ifstream lines(path(folder) / "manifest.jsonl");
    for (std::string line; std::getline(lines, line);) {
      rows.push_back(host::ParsedJson<nlohmann::json>(line));
    }
    return rows;
  }

  test::TempDirectory directory_;
  uint64_t calls_ = 0;  // that the last run made, of those that are counted
};

}  // namespace tarn::archive

#endif
