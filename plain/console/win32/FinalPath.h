// FinalPath.h - the name of a file once all links are followed.
#ifndef TARN_CONSOLE_WIN32_FINALPATH_H
#define TARN_CONSOLE_WIN32_FINALPATH_H

#include <filesystem>
#include <system_error>

namespace tarn::host {

// Full, with the prefix "\\?\", and as the directories write it. Empty, with an error, for a file
// that does not exist or on a volume that tells no names.
std::filesystem::path FinalPath(const std::filesystem::path& path, std::error_code& error);

}  // namespace tarn::host

#endif
