// What helpers cannot do, behind each wall; and that they could do it without.

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "ScriptedHelperFixture.h"
#include "ThisMachine.h"
#include "siblings/client/Descriptor.h"
#include "siblings/client/HelperCall.h"
#include "siblings/client/PageHelper.h"
#include "support/TempDirectory.h"

namespace tarn::pages {
namespace {

enum class Behind { Namespaces, SystemCalls, NoWall };

struct Case {
  Behind wall;
  DocumentKind kind;
};

class IsolationTest : public test::ScriptedHelperTest, public ::testing::WithParamInterface<Case> {
 protected:
  IsolationTest() { home_.write("private", "private"); }

  static HelperOptions behind(Behind wall) {
    HelperOptions options = IsolationTest::options();
    options.sandbox = wall != Behind::NoWall;
    options.walls = {wall == Behind::Namespaces ? Wall::Namespaces : Wall::SystemCalls};
    return options;
  }

  // What the attempt comes to.
  std::string attempt(const std::string& what) {
    DocumentOnPaper document;
    document.kind = GetParam().kind;
    const std::string script = "layOut " + what;
    document.bytes = script;
    const std::string log = logOf(helper_, document);
    EXPECT_EQ(log.substr(0, log.rfind(": ")), what);
    return log.substr(log.rfind(": ") + 2);
  }

  // "refused" behind a wall.
  static std::string apart() { return GetParam().wall == Behind::NoWall ? "done\n" : "refused\n"; }

  // In the helper's own folder.
  std::string ownFile() {
    const std::string folder = attempt("variable HOME");
    return folder.substr(0, folder.size() - 1) + "/own";
  }

  const test::TempDirectory home_;
  PageHelper helper_{behind(GetParam().wall)};
};

std::string NameOf(const ::testing::TestParamInfo<Case>& info) {
  constexpr std::array kWalls = {"Namespaces", "SystemCalls", "NoWall"};
  return std::string(kWalls[static_cast<size_t>(info.param.wall)]) +
         (info.param.kind == DocumentKind::Rtf ? "Writing" : "Reading");
}

// The walls of this machine; OtherMachinesTest has what is said where it has none.
std::vector<Case> Cases() {
  const test::Machine& machine = test::ThisMachine();
  std::vector<Case> cases = {{Behind::NoWall, DocumentKind::Html}};
  if (!machine.hasSeccomp) return cases;
  for (const DocumentKind kind : {DocumentKind::Html, DocumentKind::Rtf}) {
    if (machine.hasNamespaces) cases.push_back({Behind::Namespaces, kind});
    if (machine.hasLandlock || kind == DocumentKind::Html) {
      cases.push_back({Behind::SystemCalls, kind});
    }
  }
  return cases;
}

INSTANTIATE_TEST_SUITE_P(Walls, IsolationTest, ::testing::ValuesIn(Cases()), NameOf);

TEST_P(IsolationTest, FilesOfOthersAreNotRead) {
  const bool hidesFiles = GetParam().wall == Behind::Namespaces || test::ThisMachine().hasLandlock;
  const std::string apart = hidesFiles ? IsolationTest::apart() : "done\n";
  EXPECT_EQ(attempt("open " + (home_.path() / "private").string()), apart);
  EXPECT_EQ(attempt("open /etc/passwd"), apart);
  EXPECT_EQ(attempt("open /proc/" + std::to_string(getpid()) + "/environ"), apart);
  EXPECT_EQ(attempt("open " + home_.path().string()), apart);
}

TEST_P(IsolationTest, LibrariesAreRead) {
  EXPECT_EQ(attempt("open /usr/share"), "done\n");
  EXPECT_EQ(attempt("open /lib"), "done\n");
  EXPECT_EQ(attempt("open /etc/fonts"), "done\n");
  EXPECT_EQ(attempt("open /proc/self/maps"), "done\n");
}

TEST_P(IsolationTest, NothingIsWritten) {
  EXPECT_EQ(attempt("write " + (home_.path() / "new").string()), apart());
  EXPECT_EQ(attempt("write " + (home_.path() / "private").string()), apart());
  for (const std::string change : {"truncate ", "cut ", "chmod "}) {
    EXPECT_EQ(attempt(change + (home_.path() / "private").string()), apart()) << change;
  }
  EXPECT_EQ(attempt("remove " + (home_.path() / "private").string()), apart());
  if (GetParam().wall == Behind::NoWall) return;
  EXPECT_EQ(attempt("write /usr/tarnmail-test"), "refused\n");
  EXPECT_EQ(home_.listing(), "private");
}

TEST_P(IsolationTest, ItsOwnFolderIsWrittenByThoseWhoHaveTo) {
  const bool mayWrite = GetParam().kind == DocumentKind::Rtf || GetParam().wall == Behind::NoWall;
  EXPECT_EQ(attempt("write " + ownFile()), mayWrite ? "done\n" : "refused\n");
}

TEST_P(IsolationTest, FilesAreNoLargerThanItsMemory) {
  EXPECT_EQ(attempt("grow " + ownFile()), "refused\n");
}

TEST_P(IsolationTest, NobodyIsReached) {
  const Descriptor listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* const any = reinterpret_cast<sockaddr*>(&address);
  ASSERT_EQ(bind(listener.get(), any, size), 0);
  ASSERT_EQ(listen(listener.get(), 1), 0);
  ASSERT_EQ(getsockname(listener.get(), any, &size), 0);
  EXPECT_EQ(attempt("connect " + std::to_string(ntohs(address.sin_port))), apart());
  EXPECT_EQ(attempt("socket"), apart());
  EXPECT_EQ(attempt("early"), apart());
}

TEST_P(IsolationTest, OtherProcessesAreLeftAlone) {
  EXPECT_EQ(attempt("signal " + std::to_string(getpid())), apart());
  EXPECT_EQ(attempt("parent"), apart());
  EXPECT_EQ(attempt("exec /bin/true"), apart());
  EXPECT_EQ(attempt("fork"), apart());
  EXPECT_EQ(attempt("thread"), "done\n");
  // Without a wall it could stop this process.
  if (GetParam().wall == Behind::NoWall) return;
  EXPECT_EQ(attempt("trace " + std::to_string(getpid())), "refused\n");
}

TEST_P(IsolationTest, MemoryOfOthersIsNotRead) {
  static const char kSecret = 's';
  const std::string self = std::to_string(getpid());
  const std::string address = std::to_string(reinterpret_cast<uintptr_t>(&kSecret));
  const std::string read = attempt("peek " + self + "," + address);
  if (GetParam().wall == Behind::NoWall) {
    // Some systems let nobody look into the process that started it.
    if (geteuid() == 0) {
      EXPECT_EQ(read, "done\n");
    }
    return;
  }
  EXPECT_EQ(read, "refused\n");
  const bool hidesFiles = GetParam().wall == Behind::Namespaces || test::ThisMachine().hasLandlock;
  if (!hidesFiles) return;
  for (const char* const file : {"mem", "environ", "maps"}) {
    EXPECT_EQ(attempt("open /proc/" + self + "/" + file), "refused\n") << file;
  }
}

TEST_P(IsolationTest, EnvironmentStaysBehind) {
  setenv("TARN_TEST_SECRET", "secret", 1);
  EXPECT_EQ(attempt("variable TARN_TEST_SECRET"), "none\n");
  EXPECT_EQ(attempt("variable PATH"), "/usr/bin:/bin\n");
  unsetenv("TARN_TEST_SECRET");
}

TEST_P(IsolationTest, OpenFilesStayBehind) {
  // One that any program started by this one would inherit, but for the helper.
  const Descriptor open(dup(STDIN_FILENO));
  // Standard streams and the socket, whatever this process has open.
  EXPECT_EQ(attempt("files"), "4\n");
}

class NoWallTest : public test::ScriptedHelperTest {};

TEST_F(NoWallTest, IsRefused) {
  HelperOptions without = options();
  without.sandbox = true;
  without.walls = {};
  PageHelper helper(without);
  EXPECT_EQ(failureOf([&] { helper.layOut(document("")); }),
            "NoSandbox: tarnmail-pages cannot be kept apart on this machine; "
            "--no-sandbox does without");
  EXPECT_TRUE(test::DescendantsOf(getpid()).empty());
}

TEST_F(NoWallTest, IsWhatWasAskedFor) {
  HelperOptions without = options();
  without.walls = {};
  without.sandbox = false;
  PageHelper helper(without);
  expectWell(helper);
}

}  // namespace
}  // namespace tarn::pages
