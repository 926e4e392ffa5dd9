#include "archive/sources/SourceSearch.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <future>

#include "support/TempDirectory.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;

constexpr const char* kMail = "From: a@b\n\ntext\n";

class Search : public ::testing::Test {
 protected:
  // The paths below the test's folder, one a line; troubles with their reasons, files of folders
  // that are no mail as a number at the end.
  std::string found(const std::vector<std::string>& names) {
    std::vector<std::string> paths;
    for (const std::string& name : names) paths.push_back((directory_.path() / name).string());
    host::PrivateFolder temporary(temporary_.path().string());
    SourceSearch search(paths, temporary);
    std::string lines;
    while (const std::optional<SourceStep> step = search.next()) {
      if (const auto* const trouble = std::get_if<SourceTrouble>(&*step)) {
        lines += shortened(trouble->name) + ": " + trouble->trouble.reason + "\n";
        continue;
      }
      const auto& source = std::get<FoundSource>(*step);
      lines += shortened(source.name) + (source.isNamed ? " named" : "") +
               (source.kind == SourceKind::Maildir ? " Maildir" : "") + "\n";
      mayFindSeveral_ = search.mayFindSeveral();
    }
    if (search.otherFiles() != 0) lines += std::to_string(search.otherFiles()) + " others\n";
    return lines;
  }

  std::string shortened(const std::string& path) const {
    const std::string root = directory_.path().string() + "/";
    return path.starts_with(root) ? path.substr(root.size()) : path;
  }

  void folder(const std::string& name) { fs::create_directories(directory_.path() / name); }
  void mail(const std::string& name) { directory_.write(name, kMail); }
  void link(const std::string& target, const std::string& name) {
    fs::create_symlink(target, directory_.path() / name);
  }

  test::TempDirectory directory_;
  test::TempDirectory temporary_;
  bool mayFindSeveral_ = false;
};

TEST_F(Search, GivesNamedFilesInTheirOrder) {
  mail("b");
  mail("a");
  EXPECT_EQ(found({"b", "a", "b"}), "b named\na named\nb named\n");
  EXPECT_TRUE(mayFindSeveral_);
  EXPECT_EQ(found({"b"}), "b named\n");
  EXPECT_FALSE(mayFindSeveral_);
}

TEST_F(Search, TellsNamedFilesThatAreNone) {
  directory_.write("text", "Hello");
  directory_.write("empty", "");
  EXPECT_EQ(found({"none", "text", "empty"}),
            "none: no such file\n"
            "text: not a mail file: neither a store, an MSG file, a winmail.dat, a mail nor an "
            "mbox\n"
            "empty: not a mail file: neither a store, an MSG file, a winmail.dat, a mail nor an "
            "mbox\n");
}

// Or a store whose first bytes are lost would be left out without a word.
TEST_F(Search, TellsFilesOfFoldersThatAreNoMailsThoughCalledSo) {
  folder("in");
  for (const char* name : {"in/Old.PST", "in/notes.txt", "in/._Old.pst", "in/pst"}) {
    directory_.write(name, "Hello");
  }
  directory_.write("in/a.eml", "");
  directory_.write("in/empty.mbox", "");
  const std::string reason =
      ": not a mail file, though it is called one: neither a store, an MSG file, a winmail.dat, a "
      "mail nor an mbox\n";
  EXPECT_EQ(found({"in"}), "in/Old.PST" + reason + "in/a.eml" + reason + "4 others\n");
}

TEST_F(Search, TellsFilesOfOtherProgramsFromMails) {
  const Trouble unsupported{TroubleKind::Unsupported, "no message"};
  const auto isOther = [](const char* path, SourceKind kind, const Trouble& trouble,
                          bool isNamed = false) {
    // Its bytes may lie elsewhere, or be those of another machine.
    return IsOtherFile({path, "", kind, isNamed}, trouble);
  };
  EXPECT_TRUE(isOther("in/text.doc", SourceKind::Compound, unsupported));
  EXPECT_FALSE(isOther("in/text.doc", SourceKind::Compound, unsupported, true));
  EXPECT_FALSE(isOther("in/text.msg", SourceKind::Compound, unsupported));
  EXPECT_FALSE(isOther("in/text.doc", SourceKind::Store, unsupported));
  EXPECT_FALSE(isOther("in/text.doc", SourceKind::Compound, {TroubleKind::Damaged, "cut off"}));
}

TEST_F(Search, GoesThroughFoldersByPathInByteOrder) {
  folder("in/a/deep");
  folder("in/Z");
  for (const char* name :
       {"in/a/x", "in/a-b", "in/a.eml", "in/Z/y", "in/a/deep/z", "in/\xC3\xA9", "in/.hidden"}) {
    mail(name);
  }
  directory_.write("in/notes.txt", "Hello");
  directory_.write("in/a/empty", "");
  EXPECT_EQ(found({"in"}),
            "in/.hidden\nin/Z/y\nin/a-b\nin/a.eml\nin/a/deep/z\nin/a/x\nin/\xC3\xA9\n2 others\n");
  EXPECT_TRUE(mayFindSeveral_);
}

TEST_F(Search, FollowsLinksOnceAndInNoCircle) {
  folder("in/a");
  folder("out");
  mail("in/a/1");
  mail("out/2");
  link("..", "in/a/up");
  link(".", "in/self");
  link("../out", "in/out");
  link("a/1", "in/again");
  link("loop", "in/loop");
  link("nowhere", "in/z-broken");
  EXPECT_EQ(found({"in"}),
            "in/a/1\nin/loop: Too many levels of symbolic links\nin/out/2\n"
            "in/z-broken: the link leads nowhere\n");
}

TEST_F(Search, GivesAFileThatALinkNamedBeforeNoSecondTime) {
  folder("in");
  mail("in/b");
  link("b", "in/a");
  EXPECT_EQ(found({"in"}), "in/a\n");
}

// Two names without a link are two files to the user.
TEST_F(Search, GivesHardLinksEach) {
  folder("in");
  mail("in/a");
  fs::create_hard_link(directory_.path() / "in/a", directory_.path() / "in/b");
  EXPECT_EQ(found({"in"}), "in/a\nin/b\n");
}

TEST_F(Search, GoesThroughAFolderOnce) {
  folder("in/a");
  mail("in/a/1");
  EXPECT_EQ(found({"in", "in/a", "in/a/1"}), "in/a/1\nin/a/1 named\n");
}

TEST_F(Search, TakesAMaildirAsOneSource) {
  for (const char* name : {"box/cur", "box/new", "box/tmp", "box/.Sent/cur", "box/.Sent/new",
                           "box/.notes", "box/other"}) {
    folder(name);
  }
  for (const char* name : {"box/cur/1:2,S", "box/new/2", "box/tmp/3", "box/.Sent/cur/4",
                           "box/.notes/5", "box/other/6", "box/plain"}) {
    mail(name);
  }
  EXPECT_EQ(found({"box"}), "box named Maildir\nbox/.notes/5\nbox/other/6\nbox/plain\n");
}

// Its reader takes the mails of its own folders, and nothing else that is in these.
TEST_F(Search, FindsWhatElseIsInAMaildirsFolders) {
  for (const char* name :
       {"box/cur", "box/new", "box/.Sent/cur", "box/.Sent/new", "box/.Sent/old",
        "box/.Sent/.Deep/cur", "box/.Sent/.Deep/new", "box/.Drafts/cur", "box/.Drafts/new"}) {
    folder(name);
  }
  for (const char* name : {"box/cur/1:2,S", "box/.Sent/cur/2", "box/.Sent/old/3", "box/.Sent/loose",
                           "box/.Sent/.Deep/cur/4", "box/.Drafts/cur/5"}) {
    mail(name);
  }
  directory_.write("box/.Drafts/maildirfolder", "");
  EXPECT_EQ(found({"box"}),
            "box named Maildir\nbox/.Sent/.Deep Maildir\nbox/.Sent/loose\nbox/.Sent/old/3\n");
  EXPECT_TRUE(mayFindSeveral_);
  EXPECT_EQ(found({"box/.Sent"}), "box/.Sent named Maildir\nbox/.Sent/loose\nbox/.Sent/old/3\n");
}

TEST_F(Search, KnowsAMaildirWithNothingElseAsOneSource) {
  folder("in/box/cur");
  folder("in/box/new");
  EXPECT_EQ(found({"in/box"}), "in/box named Maildir\n");
  EXPECT_FALSE(mayFindSeveral_);
  EXPECT_EQ(found({"in"}), "in/box Maildir\n");
  EXPECT_TRUE(mayFindSeveral_);
}

TEST_F(Search, DoesNotWaitForPipesAndSocketsOfFolders) {
  folder("in");
  ASSERT_EQ(mkfifo((directory_.path() / "in/pipe").c_str(), 0600), 0);
  mail("in/z");
  EXPECT_EQ(found({"in"}), "in/z\n1 others\n");
}

TEST_F(Search, CopiesAPipeThatIsNamed) {
  const std::string pipe = (directory_.path() / "pipe").string();
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const std::future<void> writer =
      std::async(std::launch::async, [&] { std::ofstream(pipe) << kMail; });
  {
    host::PrivateFolder temporary(temporary_.path().string());
    SourceSearch search({pipe}, temporary);
    const std::optional<SourceStep> step = search.next();
    ASSERT_TRUE(step && std::holds_alternative<FoundSource>(*step));
    const auto& source = std::get<FoundSource>(*step);
    EXPECT_EQ(source.name, pipe);
    EXPECT_EQ(source.kind, SourceKind::Mail);
    EXPECT_EQ(test::ReadWholeFile(source.path), kMail);
    EXPECT_FALSE(search.next());
  }
  EXPECT_EQ(temporary_.listing(), "");
}

TEST_F(Search, TellsADeviceThatIsNamed) {
  host::PrivateFolder temporary(temporary_.path().string());
  SourceSearch search({"/dev/null"}, temporary);
  const std::optional<SourceStep> step = search.next();
  ASSERT_TRUE(step && std::holds_alternative<SourceTrouble>(*step));
  EXPECT_EQ(std::get<SourceTrouble>(*step).trouble.reason,
            "is neither a file, a folder nor a pipe");
}

}  // namespace
}  // namespace tarn::archive
