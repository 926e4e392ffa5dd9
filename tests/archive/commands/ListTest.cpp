#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <set>
#include <sstream>

#include "archive/UnreadableMails.h"
#include "archive/commands/ArchiveFixture.h"
#include "console/Json.h"
#include "tarnmail/posix/RunningProgram.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;

class List : public ArchiveCommand {
 protected:
  // What a terminal of 80 columns shows.
  std::string shown(const std::vector<std::string>& arguments) {
    test::TwoEnds terminal;
    test::OpenTerminal(terminal);
    environment_.push_back({"COLUMNS", "80"});
    test::RunningProgram program(callOf(arguments), {-1, terminal.program, terminal.program});
    terminal.closeProgramsEnd();
    std::string text = test::ReadAll(terminal.test);
    EXPECT_EQ(program.wait(), 0);
    std::erase(text, '\r');
    return text;
  }

  std::vector<nlohmann::json> json(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"list", "--json"});
    std::istringstream lines(output(arguments));
    std::vector<nlohmann::json> objects;
    for (std::string line; std::getline(lines, line);) {
      objects.push_back(host::ParsedJson<nlohmann::json>(line));
    }
    return objects;
  }

  // The ids of the lines that have the options.
  std::string ids(std::vector<std::string> options) {
    options.insert(options.begin(), "list");
    std::istringstream lines(output(options));
    std::string all;
    for (std::string line; std::getline(lines, line);) {
      all += (all.empty() ? "" : " ") + line.substr(0, line.find('\t'));
    }
    return all;
  }
};

TEST_F(List, IsTabbedInAPipe) {
  example("mailbox.pst");
  EXPECT_EQ(output({"list", "mailbox.pst"}),
            "200024\tInbox\t2026-04-08 02:00\tAnn Lee\tFigures of the quarter\t2\n"
            "200044\tInbox\t2026-04-09 02:00\tДарья\tПриглашение\t0\n"
            "200064\tInbox\t2026-04-10 02:00\tCarol Jones\tA note\t0\n");
}

TEST_F(List, TellsTheSourceOfSeveral) {
  example("mailbox.pst");
  example("plain-7bit.eml");
  example("msg/text.msg");
  directory_.write("notes.txt", "Hello");
  const test::ProgramResult result = run({"list", "."});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(result.out,
            "200024\tInbox\t2026-04-08 02:00\tAnn Lee\tFigures of the quarter\t2\t./mailbox.pst\n"
            "200044\tInbox\t2026-04-09 02:00\tДарья\tПриглашение\t0\t./mailbox.pst\n"
            "200064\tInbox\t2026-04-10 02:00\tCarol Jones\tA note\t0\t./mailbox.pst\n"
            "1\t\t2026-01-09 07:58\tAda Brown\tLunch on Friday?\t0\t./plain-7bit.eml\n"
            "1\t\t2026-11-21 10:00\tClara Weber\tZimmer 12 – Heizung\t0\t./text.msg\n");
  EXPECT_EQ(result.err, "tarnmail: 1 file is no mail file\n");
}

TEST_F(List, NamesWhatIsCalledAMailAndIsNone) {
  example("plain-7bit.eml");
  directory_.write("lost.pst", "no store any more");
  directory_.write("letter.doc", LetterOfOtherProgram());
  directory_.write("letter.msg", LetterOfOtherProgram());
  const test::ProgramResult result = run({"list", "."});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.out,
            "1\t\t2026-01-09 07:58\tAda Brown\tLunch on Friday?\t0\t./plain-7bit.eml\n");
  EXPECT_EQ(result.err,
            "tarnmail: ./letter.msg: the file is a compound file and no message\n"
            "tarnmail: ./lost.pst: not a mail file, though it is called one: neither a store, an "
            "MSG file, a winmail.dat, a mail nor an mbox\n"
            "tarnmail: 1 file is no mail file\n"
            "tarnmail: 2 things could not be read; all else is listed\n");
}

TEST_F(List, IsJsonForMachines) {
  example("nested-attachments.eml");
  const std::vector<nlohmann::json> items = json({"nested-attachments.eml"});
  ASSERT_EQ(items.size(), 2U);
  EXPECT_EQ(items[0],
            host::ParsedJson<nlohmann::json>(R"({"source":"nested-attachments.eml","id":"1",
    "folder":"","class":"IPM.Note","subject":"Minutes, and the rooms for June",
    "from":{"name":"Nora Lindqvist","address":"nora@example.org"},
    "to":[{"name":"Paul Meyer","address":"paul@example.com"},
          {"name":"Ines Costa","address":"ines@example.com"}],
    "cc":[],"bcc":[],"sent":"2026-05-19T14:40:12Z","received":null,"attachments":3,
    "size":2343})"));
  EXPECT_EQ(items[1]["id"], "1/3");
  EXPECT_EQ(items[1]["parent"], "1");
  EXPECT_EQ(items[1]["subject"], "Keys for the blue room");
}

TEST_F(List, KeepsLinesWholeWhateverMailsSay) {
  directory_.write("hostile.eml",
                   "From: =?utf-8?Q?A=1B]0;x=07nn=E2=80=AE?= <a@example.com>\n"
                   "Subject: =?utf-8?Q?a=09b=0Ac=1B[31m=C2=9Bd?=\n\nx\n");
  const std::string line = output({"list", "hostile.eml"});
  EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1);
  EXPECT_EQ(std::count(line.begin(), line.end(), '\t'), 5);
  EXPECT_EQ(line.find('\x1B'), std::string::npos);
  EXPECT_EQ(line.find("\u202E"), std::string::npos);
  EXPECT_EQ(line.find("\u009B"), std::string::npos);
  EXPECT_EQ(json({"hostile.eml"}).size(), 1U);
}

TEST_F(List, IsAlignedOnATerminal) {
  example("japanese-iso2022jp.eml");
  directory_.write("long.eml", "From: " + std::string(60, 'f') +
                                   " <a@b>\nSubject: " + std::string(100, 's') + "\n\nx\n");
  const std::string text = shown({"list", "japanese-iso2022jp.eml", "long.eml"});
  EXPECT_EQ(text,
            "ID        Folder      Date              From          Subject               Att.\n"
            "1         …022jp.eml  2026-04-06 09:05  山田太郎      会議の資料について\n"
            "1         long.eml                      fffffffffff…  sssssssssssssssssss…\n");
}

TEST_F(List, CountsWhatIsInFolders) {
  example("mailbox.pst");
  example("plain-7bit.eml");
  EXPECT_EQ(output({"list", "--folders", "mailbox.pst"}), "Deleted Items\t0\nInbox\t3\n");
  EXPECT_EQ(output({"list", "--folders", "mailbox.pst", "plain-7bit.eml"}),
            "Deleted Items\t0\tmailbox.pst\nInbox\t3\tmailbox.pst\n\t1\tplain-7bit.eml\n");
  EXPECT_EQ(shown({"list", "--folders", "mailbox.pst", "plain-7bit.eml"}),
            "mailbox.pst:\n       0  Deleted Items\n       3  Inbox\n       1  plain-7bit.eml\n");
  EXPECT_EQ(output({"list", "--folders", "--json", "--folder", "INBOX", "mailbox.pst"}),
            "{\"source\":\"mailbox.pst\",\"folder\":\"Inbox\",\"items\":3}\n");
}

TEST_F(List, TakesWhatTheFiltersTake) {
  example("mailbox.pst");
  const std::string box = "mailbox.pst";
  EXPECT_EQ(ids({box, "--subject", "ПРИГЛ"}), "200044");
  EXPECT_EQ(ids({box, "--from", "ann"}), "200024");
  EXPECT_EQ(ids({box, "--to", "bob ray"}), "200024 200044");
  EXPECT_EQ(ids({box, "--since", "2026-04-09"}), "200044 200064");
  EXPECT_EQ(ids({box, "--until", "2026-04-09"}), "200024 200044");
  EXPECT_EQ(ids({box, "--since", "2026-04-09T02:00Z", "--until", "2026-04-10T03:00+02:00"}),
            "200044");
  EXPECT_EQ(ids({box, "--has-attachment"}), "200024");
  EXPECT_EQ(ids({box, "--class", "ipm.note"}), "200024 200044 200064");
  EXPECT_EQ(ids({box, "--class", "IPM.Contact"}), "");
  EXPECT_EQ(ids({box, "--folder", "in*"}), "200024 200044 200064");
  EXPECT_EQ(complaint(0, {"list", box, "--folder", "Outbox"}),
            "tarnmail: no folder matches Outbox; list --folders shows which there are\n");
}

TEST_F(List, ReadsStandardInput) {
  standardInput_ = kPlainMail;
  EXPECT_EQ(output({"list", "-"}), "1\t\t2024-05-01 10:34\tAnn Ö\tHello\t0\n");
  EXPECT_EQ(output({"list", "--temp", ".", "-"}), "1\t\t2024-05-01 10:34\tAnn Ö\tHello\t0\n");
  EXPECT_EQ(directory_.listing(), "");
  standardInput_ = "nothing";
  EXPECT_EQ(failure(2, {"list", "-"}),
            "tarnmail: standard input: not a mail file: neither a store, an MSG file, a "
            "winmail.dat, a mail nor an mbox\n");
}

TEST_F(List, ReadsMboxesAndMaildirs) {
  const std::string mail = kPlainMail;
  directory_.write("box", "From a Wed May  1 00:00:00 2024\n" + mail +
                              "\nFrom b Wed May  1 00:00:00 2024\n" + mail);
  EXPECT_EQ(ids({"box"}), "0 " + std::to_string(34 + mail.size() - 1));
  for (const char* folder : {"dir/cur", "dir/new", "dir/tmp"}) {
    fs::create_directories(directory_.path() / folder);
  }
  directory_.write("dir/cur/1:2,S", mail);
  EXPECT_EQ(
      output({"list", "dir"}).find("2024-05-01 10:34\tAnn Ö\tHello\t0\n") == std::string::npos,
      false);
}

TEST_F(List, TellsWhatCannotBeRead) {
  directory_.write("a.eml", kPlainMail);
  directory_.write("damaged.pst", "!BDN and no more");
  const test::ProgramResult folder = run({"list", "."});
  EXPECT_EQ(folder.exitStatus, 1);
  EXPECT_NE(folder.out.find("Hello"), std::string::npos);
  EXPECT_EQ(folder.err.find("tarnmail: ./damaged.pst: "), 0U) << folder.err;
  EXPECT_EQ(complaint(2, {"list", "none.pst", "a.eml"}), "tarnmail: none.pst: no such file\n");
  EXPECT_EQ(complaint(2, {"list", "none", "damaged.pst"}).find("2 things could not be read") ==
                std::string::npos,
            false);
}

TEST_F(List, KnowsItsCommandLine) {
  EXPECT_NE(failure(2, {"list"}).find("PATH is required"), std::string::npos);
  EXPECT_NE(failure(2, {"list", "x", "--since", "yesterday"}).find("is no date such as"),
            std::string::npos);
  EXPECT_NE(failure(2, {"list", "x", "--nothing"}).find("--nothing"), std::string::npos);
  const std::string help = output({"help", "list"});
  EXPECT_EQ(help, output({"list", "--help"}));
  EXPECT_NE(help.find("--has-attachment"), std::string::npos);
  const std::string all = output({"--help"});
  EXPECT_NE(all.find("Archive commands:"), std::string::npos);
}

TEST_F(List, EndsQuietlyWhereNobodyReads) {
  example("mailbox.pst");
  const test::ProgramResult result = run({"list", "mailbox.pst"}, test::StandardOutput::BrokenPipe);
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(run({"list", "mailbox.pst"}, test::StandardOutput::TakesNothing).err,
            "tarnmail: standard output: No space left on device\n");
}

TEST_F(List, IsNotThereWithoutItsProgram) {
  fs::copy_file(TARNMAIL_PATH, directory_.path() / "tarnmail");
  test::ProgramCall call = callOf({"list", "x"});
  call.program = directory_.path() / "tarnmail";
  call.environment.push_back({"LD_LIBRARY_PATH", fs::path(TARNMAIL_PATH).parent_path().string()});
  const test::ProgramResult result = test::RunProgram(call);
  EXPECT_EQ(result.exitStatus, 3);
  EXPECT_EQ(result.err,
            "tarnmail: list: the archive commands are not installed: the package tarnpst-archive "
            "has them\n");
}

// A signal while standard input is copied.
TEST_F(List, LeavesNothingAfterASignal) {
  test::TwoEnds input;
  test::OpenPipe(input);
  test::RunningProgram program(callOf({"list", "-"}), {input.program, -1, -1});
  const std::string begin = "From: a@b\n";
  ASSERT_EQ(write(input.test, begin.data(), begin.size()), static_cast<ssize_t>(begin.size()));
  while (temporary_.listing().find("mail1") == std::string::npos && !program.hasEnded()) {
    usleep(1000);
  }
  program.send(SIGTERM);
  const int status = program.wait();
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM) << status;
  EXPECT_EQ(temporary_.listing(), "");
}

// With MAIL_CORPUS, every file of it: each item has a line, and whatever it says keeps to its line.
TEST_F(List, GivesEveryItemOfTheCorpusAnId) {
  const std::optional<std::string> corpus = test::GetVariable("MAIL_CORPUS");
  example("mailbox.pst");
  const test::ProgramResult result =
      run({"list", "--json", corpus ? *corpus : directory_.path().string()});
  EXPECT_LE(result.exitStatus, 1);
  std::istringstream lines(result.out);
  std::set<std::pair<std::string, std::string>> ids;
  size_t count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    const nlohmann::json item = host::ParsedJson<nlohmann::json>(line);
    ids.emplace(item["source"], item["id"]);
  }
  EXPECT_GE(count, 3U);
  EXPECT_EQ(ids.size(), count);
}

// GLib's allocator ends the program by a signal where there is no memory.
TEST_F(List, IsStartedWithoutGlibsAllocator) {
  test::TwoEnds input;
  test::OpenPipe(input);
  test::RunningProgram program(callOf({"list", "-"}), {input.program, -1, -1});
  const std::string environment = "/proc/" + std::to_string(program.process()) + "/environ";
  const std::string wanted("G_SLICE=always-malloc\0", 22);
  bool isSet = false;
  // It waits for its input, for far longer than until it is there.
  for (int look = 0; look < 20'000 && !isSet && !program.hasEnded(); ++look) {
    isSet = test::ReadWholeFile(environment).find(wanted) != std::string::npos;
    usleep(1000);
  }
  EXPECT_TRUE(isSet);
}

}  // namespace
}  // namespace tarn::archive
