// HelperCall.h - how a helper's program is called, and what it may see of the machine's files.
//
//   tarnmail-pages --socket 3 --parent PID --memory BYTES --wall WALL --folder FOLDER
//
// Only PageHelper starts it so.
#ifndef TARN_SIBLINGS_CLIENT_HELPERCALL_H
#define TARN_SIBLINGS_CLIENT_HELPERCALL_H

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "ProcessHandle.h"

namespace tarn::pages {

inline constexpr int kHelperSocket = 3;

enum class HelperWall : uint8_t { Namespaces, SystemCalls, None };

struct HelperCall {
  ProcessId parent = 0;  // 0: something else sees to it that the helper ends with its parent
  uint64_t memory = 0;
  HelperWall wall = HelperWall::None;
  std::filesystem::path folder;  // its own, to write to
};

std::vector<std::string> HelperArguments(const HelperCall& call);

// None when these are not the arguments of a helper (without the program's name).
std::optional<HelperCall> ParseHelperArguments(const std::vector<std::string>& arguments);

// What a helper may read: programs and libraries, where to find them, and fonts. Links lead to
// others of these. What a machine does not have is left out.
inline constexpr std::array kReadablePlaces = {
    "/usr",
    "/bin",
    "/lib",
    "/lib32",
    "/lib64",
    "/etc/alternatives",
    "/etc/fonts",
    "/etc/ld.so.cache",
    "/etc/ld.so.conf",
    "/etc/ld.so.conf.d",
    "/etc/libreoffice",
    "/var/cache/fontconfig",
};

// Exit status of bubblewrap when it could not build its walls. No helper ends with it.
inline constexpr int kNoNamespacesStatus = 1;
// A helper's exit statuses.
inline constexpr int kHelperDone = 0;
inline constexpr int kHelperMisused = 2;

// Is there a program of that name, which somebody may start?
bool IsProgram(const std::filesystem::path& path);

// The program that builds namespaces, if this machine has it.
std::optional<std::filesystem::path> FindBubblewrap();

// Its whole command line, up to the helper's own arguments. Its own folder in there is
// kFolderInNamespaces, which is in memory.
std::vector<std::string> BubblewrapCommand(const std::filesystem::path& bubblewrap,
                                           const std::filesystem::path& program,
                                           uint64_t folderSize);
inline constexpr const char* kFolderInNamespaces = "/tmp";

}  // namespace tarn::pages

#endif
