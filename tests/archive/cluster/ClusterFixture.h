// ClusterFixture.h - inputs of every kind, exported by one machine and by tasks.
#ifndef TARN_TESTS_ARCHIVE_CLUSTER_CLUSTERFIXTURE_H
#define TARN_TESTS_ARCHIVE_CLUSTER_CLUSTERFIXTURE_H

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "archive/cluster/Cluster.h"
#include "archive/cluster/PlanFile.h"
#include "support/TempDirectory.h"
#include "support/pst/StoreBuilder.h"

namespace tarn::archive {

inline std::string MailText(int number, const std::string& body) {
  return "From: Ann <ann@example.com>\nTo: bob@example.com\nSubject: Subject " +
         std::to_string(number % 7) + "\nDate: Wed, 1 May 2024 10:34:56 +0000\nMessage-ID: <" +
         std::to_string(number) + "@example.com>\n\n" + body + "\n";
}

class ClusterTest : public ::testing::Test {
 protected:
  using Tree = std::map<std::string, std::string>;

  ClusterTest() {
    exporting_.program = TARNMAIL_ARCHIVE;
    exporting_.choices.forms = {ExportForm::Text};
#ifdef HELPERS_PATH
    exporting_.choices.pages.helpers = HELPERS_PATH;
#endif
  }

  std::filesystem::path at(const std::string& name) const { return directory_.path() / name; }
  std::string text(const std::string& name) const { return at(name).string(); }

  void addPath(const std::string& name) { exporting_.paths.push_back(text(name)); }

  void addMbox(const std::string& name, int mails) {
    std::string box;
    for (int number = 0; number < mails; ++number) {
      box += "From ann@example.com Wed May  1 10:34:56 2024\n" +
             MailText(number, "Body " + std::string(static_cast<size_t>(number), 'x')) + "\n";
    }
    (void)directory_.write(name, box);
    addPath(name);
  }

  void addMails(const std::string& name, int mails) {
    std::filesystem::create_directories(at(name));
    for (int number = 0; number < mails; ++number) {
      (void)directory_.write(name + "/" + std::to_string(100 + number) + ".eml",
                             MailText(number, "File " + std::to_string(number)));
    }
    addPath(name);
  }

  void addMaildir(const std::string& name, int mails) {
    for (const char* const folder : {"cur", "new", ".Sent/cur", ".Sent/new"}) {
      std::filesystem::create_directories(at(name) / folder);
    }
    for (int number = 0; number < mails; ++number) {
      const char* const folder = number % 3 == 0 ? "/.Sent/cur/" : "/cur/";
      (void)directory_.write(name + folder + std::to_string(1700000000 + number) + ".M1.host",
                             MailText(number, "Maildir " + std::to_string(number)));
    }
    addPath(name);
  }

  // Folders, one in the other, with messages of the same names, and a row that names no message.
  void addStore(const std::string& name, int messages) {
    test::StoreBuilder store(test::PstLayout::Unicode);
    auto& inbox = store.folder("Inbox");
    auto& below = inbox.folder(u"Plans");
    auto& sent = store.folder("Sent");
    for (int number = 0; number < messages; ++number) {
      auto& folder = number % 4 == 0 ? below : number % 4 == 1 ? sent : inbox;
      auto& message = folder.message();
      message.subject("Subject " + std::to_string(number % 5)).from(u"Ann");
      message.body("Text " + std::to_string(number));
      if (number % 6 == 0) message.attachment(u"a.bin", std::string(500, 'a'));
      if (number == messages / 2) inbox.row(0x7FF004);
    }
    store.write(at(name));
    addPath(name);
  }

  // All kinds.
  void addAll() {
    addMails("mails", 6);
    addMbox("box", 40);
    addMaildir("maildir", 12);
    addStore("store.pst", 50);
  }

  PlanFile plan(uint64_t maxTasks, uint64_t targetCost = 1) {
    PlanOptions options;
    options.exporting = exporting_;
    options.maxTasks = maxTasks;
    options.targetCost = targetCost;
    options.output = text("plan");
    EXPECT_EQ(Plan(options), host::ExitStatus::Done);
    return PlanFile(options.output);
  }

  RunTaskOptions taskOptions(uint64_t task) {
    RunTaskOptions options;
    options.plan = text("plan");
    options.folder = text("out");
    options.task = task;
    options.program = TARNMAIL_ARCHIVE;
    options.helpers = exporting_.choices.pages.helpers;
    return options;
  }
  host::ExitStatus run(uint64_t task) { return RunTask(taskOptions(task)); }
  void runAll(const PlanFile& plan, size_t workers = 1) {
    for (uint64_t task = 0; task < plan.tasks(); ++task) {
      RunTaskOptions options = taskOptions(task);
      options.workers = workers;
      EXPECT_EQ(RunTask(options), host::ExitStatus::Done);
    }
  }

  MergeOptions mergeOptions() {
    MergeOptions options;
    options.plan = text("plan");
    options.folder = text("out");
    return options;
  }
  host::ExitStatus merge() { return Merge(mergeOptions()); }

  host::ExitStatus exportAlone(const std::string& name = "single") {
    ExportOptions options = exporting_;
    options.folder = text(name);
    return Export(options);
  }

  // Every file below a folder with its bytes.
  Tree tree(const std::string& name) const {
    Tree files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(at(name))) {
      const std::string path = entry.path().lexically_relative(at(name)).string();
      if (entry.is_regular_file()) files[path] = test::ReadWholeFile(entry.path());
      if (entry.is_directory() && std::filesystem::is_empty(entry.path())) files[path + "/"] = "";
    }
    return files;
  }

  // The files that are not the same in both; "" where all are.
  static std::string differences(const Tree& one, const Tree& other) {
    std::string names;
    for (const auto& [name, bytes] : one) {
      const auto found = other.find(name);
      if (found == other.end()) names += "only the first has " + name + "\n";
      if (found != other.end() && found->second != bytes) names += name + " differs\n";
    }
    for (const auto& [name, bytes] : other) {
      if (!one.contains(name)) names += "only the second has " + name + "\n";
    }
    return names;
  }

  std::string missing() {
    MissingOptions options;
    options.plan = text("plan");
    options.folder = text("out");
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(Missing(options), host::ExitStatus::Done);
    return ::testing::internal::GetCapturedStdout();
  }

  // What a command says that fails.
  static std::string failureOf(const std::function<void()>& command) {
    try {
      command();
    } catch (const host::Failure& failure) {
      return failure.what();
    }
    return {};
  }

  // In a process of its own, whose status as waitpid() gives it.
  static int inProcess(const std::function<int()>& command) {
    const pid_t child = fork();
    if (child == 0) {
      // A part of a profile would be in the way of others (scripts/coverage.sh).
      setenv("LLVM_PROFILE_FILE", "/dev/null", 1);
      try {
        _exit(command());
      } catch (const host::Failure& failure) {
        // As the program does.
        std::fprintf(stderr, "%s\n", failure.what());
        _exit(static_cast<int>(failure.status()));
      }
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status;
  }

  test::TempDirectory directory_;
  ExportOptions exporting_;
};

}  // namespace tarn::archive

#endif
