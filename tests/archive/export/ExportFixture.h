// ExportFixture.h - exports into a directory of a test's own, and what they have left.
#ifndef TARN_TESTS_ARCHIVE_EXPORT_EXPORTFIXTURE_H
#define TARN_TESTS_ARCHIVE_EXPORT_EXPORTFIXTURE_H

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "archive/export/Export.h"
#include "console/Json.h"
#include "support/TempDirectory.h"

namespace tarn::archive {

inline std::string Mail(const std::string& subject, int number, const std::string& body) {
  return "From ann@example.com Wed May  1 10:34:56 2024\nFrom: ann@example.com\nSubject: " +
         subject + "\nDate: Wed, 1 May 2024 10:34:56 +0000\nMessage-ID: <" +
         std::to_string(number) + "@example.com>\n\n" + body + "\n\n";
}

inline std::string MailWithFile(const std::string& subject, const std::string& name) {
  return "From ann@example.com Wed May  1 10:34:56 2024\nFrom: ann@example.com\nSubject: " +
         subject +
         "\nDate: Wed, 1 May 2024 10:34:56 +0000\nMIME-Version: 1.0\n"
         "Content-Type: multipart/mixed; boundary=x\n\n--x\nContent-Type: text/plain\n\nSee.\n"
         "--x\nContent-Type: application/octet-stream\nContent-Disposition: attachment; "
         "filename=\"" +
         name + "\"\nContent-Transfer-Encoding: base64\n\nYWJj\n--x--\n\n";
}

class ExportFixture : public ::testing::Test {
 protected:
  ExportFixture() {
    options_.program = TARNMAIL_ARCHIVE;
    options_.choices.forms = {ExportForm::Text, ExportForm::Mbox};
    options_.choices.catalogue = false;
    options_.batchItems = 16;
  }

  // A box of so many mails and one with a file, and a mail of its own.
  void makeSources(int mails) {
    std::string box;
    for (int number = 0; number < mails; ++number) {
      box += Mail("Subject " + std::to_string(number % 7), number, "Body");
    }
    (void)directory_.write("box", box + MailWithFile("File", "../../x"));
    (void)directory_.write("other.eml", MailWithFile("Other", "CON").substr(46));
    options_.paths = {(directory_.path() / "box").string(),
                      (directory_.path() / "other.eml").string()};
  }

  host::ExitStatus exportTo(const std::string& name) {
    options_.folder = (directory_.path() / name).string();
    return Export(options_);
  }

  // Every file below a folder with its bytes.
  std::map<std::string, std::string> tree(const std::string& name) const {
    std::map<std::string, std::string> files;
    const std::filesystem::path root = directory_.path() / name;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
      if (entry.is_regular_file()) {
        files[entry.path().lexically_relative(root).string()] = test::ReadWholeFile(entry.path());
      }
    }
    return files;
  }

  std::vector<nlohmann::json> manifest(const std::string& name) const {
    std::vector<nlohmann::json> rows;
    std::ifstream lines(directory_.path() / name / "manifest.jsonl");
    for (std::string line; std::getline(lines, line);) {
      rows.push_back(host::ParsedJson<nlohmann::json>(line));
    }
    return rows;
  }

  // Workers that are killed, or whose files may not grow, would leave a part of a profile, and
  // every later process that adds to it complains (scripts/coverage.sh).
  static void leaveNoProfiles() { setenv("LLVM_PROFILE_FILE", "/dev/null", 1); }

  // Exports in a process that is killed before its n-th change; whether it was.
  bool isKilledAt(const std::string& name, int change) {
    const pid_t child = fork();
    if (child == 0) {
      leaveNoProfiles();
      int changes = 0;
      options_.step = [&] {
        if (++changes == change) std::raise(SIGKILL);
      };
      _exit(static_cast<int>(exportTo(name)));
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status);
  }

  std::string failureOf(const std::string& name) {
    try {
      (void)exportTo(name);
    } catch (const host::Failure& failure) {
      return failure.what();
    }
    return {};
  }

  test::TempDirectory directory_;
  ExportOptions options_;
};

}  // namespace tarn::archive

#endif
