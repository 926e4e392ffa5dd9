#include <gtest/gtest.h>

#include "archive/commands/ArchiveFixture.h"
#include "tarnmail/posix/RunningProgram.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;

class Show : public ArchiveCommand {
 protected:
  // Both streams on a terminal.
  std::string shown(const std::vector<std::string>& arguments, int exitStatus = 0) {
    test::TwoEnds terminal;
    test::OpenTerminal(terminal);
    test::RunningProgram program(callOf(arguments), {-1, terminal.program, terminal.program});
    terminal.closeProgramsEnd();
    std::string text = test::ReadAll(terminal.test);
    EXPECT_EQ(program.wait(), exitStatus << 8);
    std::erase(text, '\r');
    return text;
  }

  // Saves all attachments of a mail with those names, and lists the folder.
  std::string saved(const std::vector<std::string>& names) {
    directory_.write("mail.eml", MailWith(names));
    const std::string told = output({"show", "mail.eml", "--all-attachments", "out"});
    std::string all;
    for (const auto& entry : fs::directory_iterator(directory_.path() / "out")) {
      all += entry.path().filename().string() + "\n";
    }
    EXPECT_EQ(all.size(), told.size());
    EXPECT_EQ(directory_.listing().find("mail.eml out"), 0U);
    return told;
  }
};

TEST_F(Show, TellsHeaderTextAndAttachments) {
  example("nested-attachments.eml");
  const std::string mail =
      "From:     Nora Lindqvist <nora@example.org>\n"
      "To:       Paul Meyer <paul@example.com>, Ines Costa <ines@example.com>\n"
      "Date:     Tue, 19 May 2026 16:40:12 +0200\n"
      "Subject:  Minutes, and the rooms for June\n\n"
      "Hello Paul, hello Ines,\n\n"
      "the minutes of today's meeting and the plan of the rooms are attached, and\n"
      "so is the mail of the caretaker.\n\nNora\n\n"
      "Attachments:\n"
      "  1  minutes.txt    text/plain      74 bytes\n"
      "  2  rooms.csv      text/csv        95 bytes\n"
      "  3  caretaker.eml  message/rfc822  282 bytes  message: tarnmail show "
      "nested-attachments.eml 1/3\n";
  EXPECT_EQ(output({"show", "nested-attachments.eml"}), mail);
  EXPECT_EQ(output({"show", "nested-attachments.eml", "1"}), mail);
  EXPECT_EQ(output({"show", "nested-attachments.eml", "1/3"})
                .find("From:     Caretaker <caretaker@example.org>\n"),
            0U);
}

TEST_F(Show, ReadsHtmlAsText) {
  directory_.write("html.eml",
                   "From: a@example.com\nContent-Type: text/html; charset=utf-8\n\n"
                   "<html><head><style>p{}</style></head><body><p>Hello&nbsp;you</p><ul><li>one"
                   "<li>two</ul><a href='https://example.com/x'>here</a><script>bad()</script>");
  const std::string text = output({"show", "html.eml"});
  EXPECT_EQ(text.find("bad()"), std::string::npos);
  for (const char* part : {"one", "two", "here <https://example.com/x>"}) {
    EXPECT_NE(text.find(part), std::string::npos) << text;
  }
}

TEST_F(Show, LeavesBlankLinesAroundTheTextOut) {
  directory_.write("blank.eml", "From: a@example.com\n\n\n \n\n  indented\n\nend\n\n\n");
  EXPECT_EQ(output({"show", "blank.eml"}), "From:  a@example.com\n\n  indented\n\nend\n");
  directory_.write("bare.eml", "Content-Type: text/plain\n\ntext\n");
  EXPECT_EQ(output({"show", "bare.eml"}), "text\n");
}

TEST_F(Show, NeedsAnIdWhereThereAreSeveral) {
  example("mailbox.pst");
  EXPECT_EQ(failure(2, {"show", "mailbox.pst"}),
            "tarnmail: mailbox.pst: holds 3 messages: name one by its id, which tarnmail list "
            "tells\n");
  EXPECT_EQ(output({"show", "mailbox.pst", "200064"}).find("From:     Carol Jones\n"), 0U);
  for (const char* id : {"999", "200064/1", "", "../x"}) {
    EXPECT_EQ(failure(2, {"show", "mailbox.pst", id}),
              std::string("tarnmail: mailbox.pst: item ") + id +
                  ": is not there; tarnmail list tells which are\n");
  }
}

TEST_F(Show, TellsWhatOfTheSourceCannotBeReadBesideTheOnlyMessage) {
  for (const char* folder : {"dir/cur", "dir/new", "dir/tmp"}) {
    fs::create_directories(directory_.path() / folder);
  }
  directory_.write("dir/cur/1", kPlainMail);
  const fs::path closed = directory_.write("dir/cur/2", kPlainMail);
  fs::permissions(closed, fs::perms::none);
  const test::ProgramResult one = run({"show", "dir"});
  EXPECT_EQ(one.exitStatus, 1);
  EXPECT_NE(one.out.find("First line"), std::string::npos);
  EXPECT_EQ(one.err, complaint(1, {"list", "dir"}));
  fs::remove(directory_.path() / "dir/cur/1");
  EXPECT_EQ(failure(1, {"show", "dir"}),
            one.err + "tarnmail: dir: holds no message that can be read\n");
  fs::remove(closed);
  EXPECT_EQ(failure(1, {"show", "dir"}), "tarnmail: dir: holds no message\n");
}

TEST_F(Show, NeedsOneFile) {
  EXPECT_EQ(failure(2, {"show", "none"}), "tarnmail: none: no such file\n");
  fs::create_directory(directory_.path() / "folder");
  EXPECT_EQ(failure(2, {"show", "folder"}), "tarnmail: folder: is a folder without a mail file\n");
  directory_.write("folder/a", kPlainMail);
  EXPECT_NE(output({"show", "folder"}).find("First line\nSecond line\n"), std::string::npos);
  directory_.write("folder/b", kPlainMail);
  EXPECT_EQ(failure(2, {"show", "folder"}),
            "tarnmail: folder: is a folder with several mail files: name one; tarnmail list shows "
            "them\n");
}

TEST_F(Show, GivesATerminalNothingButText) {
  directory_.write("hostile.eml",
                   "From: =?utf-8?Q?A=1B]0;x=07nn?= <a@example.com>\nSubject: "
                   "=?utf-8?Q?a=0Ab=E2=80=AEc?=\nContent-Type: text/plain; charset=utf-8\n"
                   "Content-Transfer-Encoding: quoted-printable\n\n"
                   "red=1B[31m=C2=9B2J=08\nnext=E2=80=AEline\n");
  const std::string text = shown({"show", "hostile.eml"});
  for (const char* bad : {"\x1B", "\x07", "\x08", "\u009B", "\u202E"}) {
    EXPECT_EQ(text.find(bad), std::string::npos);
  }
  EXPECT_NE(text.find("nextline\n"), std::string::npos) << text;
  EXPECT_NE(text.find("Subject:  abc\n"), std::string::npos) << text;
}

TEST_F(Show, UsesThePagerForLongTextsOnATerminal) {
  std::string mail = kPlainMail;
  for (int i = 0; i < 100; ++i) mail += "line\n";
  directory_.write("long.eml", mail);
  directory_.write("short.eml", kPlainMail);
  environment_.back() = {"PAGER", "head -n 2 | tr a-z A-Z; echo paged"};
  EXPECT_NE(shown({"show", "long.eml"}).find("FROM:"), std::string::npos);
  EXPECT_NE(shown({"show", "long.eml"}).find("paged\n"), std::string::npos);
  EXPECT_EQ(shown({"show", "short.eml"}).find("paged"), std::string::npos);
  EXPECT_EQ(output({"show", "long.eml"}).find("paged"), std::string::npos);
  environment_.back() = {"PAGER", "no-such-pager-anywhere 2>/dev/null"};
  EXPECT_NE(shown({"show", "long.eml"}).find("Second line\n"), std::string::npos);
}

TEST_F(Show, GivesTheOriginalHeaders) {
  directory_.write("mail.eml", kPlainMail);
  EXPECT_NE(output({"show", "--headers", "mail.eml"}).find("Message-ID: <1@example.com>\n"),
            std::string::npos);
  example("mailbox.pst");
  EXPECT_EQ(failure(1, {"show", "--headers", "mailbox.pst", "200024"}),
            "tarnmail: mailbox.pst: item 200024: has no original headers\n");
}

TEST_F(Show, SavesOneAttachment) {
  directory_.write("mail.eml", MailWith({"a.txt", "b.txt"}));
  EXPECT_EQ(output({"show", "mail.eml", "--attachment", "2"}), "content 2");
  EXPECT_EQ(output({"show", "mail.eml", "1", "--attachment", "1", "-o", "-"}), "content 1");
  EXPECT_EQ(output({"show", "mail.eml", "--attachment", "2", "-o", "out"}), "");
  EXPECT_EQ(test::ReadWholeFile(directory_.path() / "out"), "content 2");
  EXPECT_EQ(directory_.listing(), "mail.eml out");
  EXPECT_EQ(failure(2, {"show", "mail.eml", "--attachment", "3"}),
            "tarnmail: mail.eml: item 1: attachment 3: is not there: the message has 2\n");
  EXPECT_NE(failure(2, {"show", "mail.eml", "--attachment", "0"}).find("is no number from 1"),
            std::string::npos);
}

TEST_F(Show, NeverWritesOverTheMail) {
  const std::string mail = MailWith({"a.txt"});
  directory_.write("mail.eml", mail);
  fs::create_hard_link(directory_.path() / "mail.eml", directory_.path() / "same");
  for (const char* place : {"mail.eml", "same", "./mail.eml"}) {
    EXPECT_NE(failure(2, {"show", "mail.eml", "--attachment", "1", "-o", place}), "");
    EXPECT_EQ(test::ReadWholeFile(directory_.path() / "mail.eml"), mail);
  }
}

TEST_F(Show, GivesATerminalTextOfAttachmentsOnly) {
  example("html-inline-image.eml");
  EXPECT_EQ(shown({"show", "html-inline-image.eml", "--attachment", "1"}, 2),
            "tarnmail: html-inline-image.eml: item 1: attachment 1: is no text for a terminal; -o "
            "FILE writes it to a file, and -o - here\n");
  directory_.write("mail.eml", MailWith({"a.txt"}));
  EXPECT_EQ(shown({"show", "mail.eml", "--attachment", "1"}), "content 1");
}

TEST_F(Show, SavesAllAttachmentsBySafeNames) {
  EXPECT_EQ(saved({"../../x", "CON", std::string(300, 'n') + ".pdf", "-rf", "A.txt", "a.TXT", ""}),
            "_.._x\n_CON\n" + std::string(116, 'n') + ".pdf\nrf\nA.txt\na (2).TXT\nattachment-7\n");
  EXPECT_EQ(test::ReadWholeFile(directory_.path() / "out/_.._x"), "content 1");
  EXPECT_EQ(test::ReadWholeFile(directory_.path() / "out/a (2).TXT"), "content 6");
}

TEST_F(Show, SavesNamesOfManyScripts) {
  EXPECT_EQ(saved({"=?utf-8?B?8J+YgA==?=.png", "=?utf-8?Q?invoice=E2=80=AEfdp.exe?="}),
            "😀.png\ninvoicefdp.exe\n");
}

TEST_F(Show, ReplacesNothingInTheFolder) {
  directory_.write("mail.eml", MailWith({"a.txt", "link"}));
  fs::create_directory(directory_.path() / "out");
  directory_.write("out/a.txt", "mine");
  fs::create_symlink("../target", directory_.path() / "out/link");
  EXPECT_EQ(output({"show", "mail.eml", "--all-attachments", "out"}), "a (2).txt\nlink (2)\n");
  EXPECT_EQ(test::ReadWholeFile(directory_.path() / "out/a.txt"), "mine");
  EXPECT_FALSE(fs::exists(directory_.path() / "target"));
}

TEST_F(Show, TellsOptionsThatExcludeEachOther) {
  directory_.write("mail.eml", MailWith({"a"}));
  EXPECT_NE(failure(2, {"show", "mail.eml", "--headers", "--attachment", "1"}).find("exclude"),
            std::string::npos);
  EXPECT_NE(failure(2, {"show", "mail.eml", "-o", "x"}).find("-o is for"), std::string::npos);
  EXPECT_EQ(failure(2, {"show", "mail.eml", "--all-attachments", "mail.eml"}),
            "tarnmail: mail.eml: Not a directory\n");
}

TEST_F(Show, ReadsStandardInput) {
  standardInput_ = kPlainMail;
  EXPECT_NE(output({"show", "-"}).find("Second line\n"), std::string::npos);
}

}  // namespace
}  // namespace tarn::archive
