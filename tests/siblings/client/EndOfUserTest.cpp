// A program that wants pages is killed, and its helper in the middle of a page ends with it.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include "ScriptedHelperFixture.h"
#include "ThisMachine.h"
#include "siblings/client/ProcessHandle.h"

namespace tarn::pages {
namespace {

class EndOfUserTest : public test::ScriptedHelperTest,
                      public ::testing::WithParamInterface<const char*> {
 protected:
  // Returns when the program says that its helper is busy.
  static pid_t startUser() {
    int ends[2];
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
    const Descriptor reading(ends[0]);
    Descriptor writing(ends[1]);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, writing.get(), STDOUT_FILENO);
    std::vector<std::string> words = {PAGES_USER_PATH, SCRIPTED_PROGRAMS, GetParam()};
    std::vector<char*> pointers = {words[0].data(), words[1].data(), words[2].data(), nullptr};
    pid_t user = 0;
    EXPECT_EQ(posix_spawn(&user, PAGES_USER_PATH, &actions, nullptr, pointers.data(), environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    writing.close();
    char line[5];
    EXPECT_EQ(read(reading.get(), line, sizeof line), 5);
    return user;
  }
};

std::vector<const char*> WallsOfThisMachine() {
  std::vector<const char*> walls = {"none"};
  if (test::ThisMachine().hasNamespaces) walls.push_back("namespaces");
  if (test::ThisMachine().hasSeccomp) walls.push_back("system-calls");
  return walls;
}

INSTANTIATE_TEST_SUITE_P(Walls, EndOfUserTest, ::testing::ValuesIn(WallsOfThisMachine()),
                         [](const ::testing::TestParamInfo<const char*>& wall) {
                           std::string name = wall.param;
                           std::erase(name, '-');
                           return name;
                         });

TEST_P(EndOfUserTest, IsTheEndOfItsHelper) {
  const pid_t user = startUser();
  std::vector<Descriptor> started;
  for (const pid_t process : test::DescendantsOf(user)) {
    started.push_back(OpenProcess(process));
    EXPECT_TRUE(started.back());
  }
  // bubblewrap is two processes around the helper.
  EXPECT_EQ(started.size(), std::string(GetParam()) == "namespaces" ? 3u : 1u);
  EXPECT_EQ(test::HelpersOf(user).size(), 1u);
  ASSERT_EQ(kill(user, SIGKILL), 0);
  ASSERT_EQ(waitpid(user, nullptr, 0), user);
  for (const Descriptor& process : started) {
    EXPECT_TRUE(WaitForProcess(process, std::chrono::seconds(30)));
    KillProcess(process);
  }
  // What a killed program leaves is its helper's empty folder, which only it would have removed.
  for (const auto& entry : std::filesystem::directory_iterator(temporary_.path())) {
    EXPECT_TRUE(std::filesystem::remove(entry.path()));
  }
}

}  // namespace
}  // namespace tarn::pages
