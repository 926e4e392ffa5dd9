#include "HelperCall.h"

#include <charconv>
#include <string_view>
#include <system_error>

namespace tarn::pages {
namespace {

namespace fs = std::filesystem;

constexpr std::array kWallNames = {"namespaces", "system-calls", "none"};

template <class Number>
bool ParseNumber(std::string_view text, Number& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

bool ParseWall(std::string_view text, HelperWall& wall) {
  for (size_t i = 0; i < kWallNames.size(); ++i) {
    if (text != kWallNames[i]) continue;
    wall = static_cast<HelperWall>(i);
    return true;
  }
  return false;
}

bool IsBelow(const fs::path& path, const fs::path& folder) {
  const fs::path relative = path.lexically_relative(folder);
  return !relative.empty() && *relative.begin() != "..";
}

}  // namespace

std::vector<std::string> HelperArguments(const HelperCall& call) {
  return {"--socket", std::to_string(kHelperSocket),
          "--parent", std::to_string(call.parent),
          "--memory", std::to_string(call.memory),
          "--wall",   kWallNames[static_cast<size_t>(call.wall)],
          "--folder", call.folder.string()};
}

std::optional<HelperCall> ParseHelperArguments(const std::vector<std::string>& arguments) {
  HelperCall call;
  constexpr size_t kCount = 10;
  int socket = 0;
  if (arguments.size() != kCount || arguments[0] != "--socket" || arguments[2] != "--parent" ||
      arguments[4] != "--memory" || arguments[6] != "--wall" || arguments[8] != "--folder" ||
      !ParseNumber(arguments[1], socket) || socket != kHelperSocket ||
      !ParseNumber(arguments[3], call.parent) || !ParseNumber(arguments[5], call.memory) ||
      !ParseWall(arguments[7], call.wall)) {
    return std::nullopt;
  }
  call.folder = arguments[9];
  return call;
}

bool IsProgram(const fs::path& path) {
  constexpr fs::perms kMayRun =
      fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec;
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  return fs::is_regular_file(status) && (status.permissions() & kMayRun) != fs::perms::none;
}

std::optional<fs::path> FindBubblewrap() {
  for (const char* const path : {"/usr/bin/bwrap", "/usr/local/bin/bwrap", "/bin/bwrap"}) {
    if (IsProgram(path)) return path;
  }
  return std::nullopt;
}

std::vector<std::string> BubblewrapCommand(const fs::path& bubblewrap, const fs::path& program,
                                           uint64_t folderSize) {
  std::vector<std::string> words = {bubblewrap.string(),
                                    "--unshare-all",
                                    "--die-with-parent",
                                    "--cap-drop",
                                    "ALL",
                                    "--proc",
                                    "/proc",
                                    "--dev",
                                    "/dev",
                                    "--perms",
                                    "0700",
                                    "--size",
                                    std::to_string(folderSize),
                                    "--tmpfs",
                                    kFolderInNamespaces};
  for (const char* const place : kReadablePlaces) {
    std::error_code error;
    if (fs::is_symlink(place, error)) {
      words.insert(words.end(), {"--symlink", fs::read_symlink(place, error).string(), place});
    } else if (fs::exists(place, error)) {
      words.insert(words.end(), {"--ro-bind", place, place});
    }
  }
  if (!IsBelow(program, "/usr")) {
    words.insert(words.end(), {"--ro-bind", program.string(), program.string()});
  }
  words.insert(words.end(), {"--chdir", kFolderInNamespaces, "--", program.string()});
  return words;
}

}  // namespace tarn::pages
