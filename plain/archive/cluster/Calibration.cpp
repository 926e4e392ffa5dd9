#include "archive/cluster/Calibration.h"

#include <algorithm>

#include "archive/cluster/AttemptLog.h"
#include "archive/export/Journal.h"
#include "archive/export/Staging.h"
#include "console/Failure.h"
#include "console/Json.h"
#include "console/Paths.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;

constexpr uint64_t kLargestCost = uint64_t{16} << 20;

// None for a line that is no attempt's.
std::optional<TimedTask> TimedTaskIn(std::string_view text) {
  const auto line = host::JsonOrDiscarded<nlohmann::json>(text);
  if (!line.is_object()) return std::nullopt;
  try {
    if (line.at("type") != "attempt") return std::nullopt;
    return TimedTask{line.at("inputBytes"), line.at("messages"), line.at("seconds")};
  } catch (const nlohmann::json::exception&) {
    return std::nullopt;
  }
}

}  // namespace

std::optional<uint64_t> MessageCostOf(const std::vector<TimedTask>& tasks) {
  // Least squares of seconds = a * bytes + b * messages; the cost is b / a.
  double bb = 0;
  double bm = 0;
  double mm = 0;
  double sb = 0;
  double sm = 0;
  for (const TimedTask& task : tasks) {
    bb += task.bytes * task.bytes;
    bm += task.bytes * task.messages;
    mm += task.messages * task.messages;
    sb += task.seconds * task.bytes;
    sm += task.seconds * task.messages;
  }
  const double determinant = bb * mm - bm * bm;
  constexpr double kLeast = 1e-4;
  if (tasks.size() < 2 || determinant <= kLeast * bb * mm) return std::nullopt;
  const double ofByte = (sb * mm - sm * bm) / determinant;
  const double ofMessage = (sm * bb - sb * bm) / determinant;
  if (ofMessage <= 0) return 1;
  if (ofByte <= 0) return kLargestCost;
  return static_cast<uint64_t>(
      std::clamp(ofMessage / ofByte, 1.0, static_cast<double>(kLargestCost)));
}

uint64_t CalibratedCost(const std::string& path) {
  fs::path file = host::PathFromUtf8(path);
  if (file.filename() == kManifestName) file = LogOfExport(fs::absolute(file).parent_path());
  std::vector<TimedTask> tasks;
  const Outcome<uint64_t> read = ForEachLine(file, [&](std::string_view text) {
    const std::optional<TimedTask> task = TimedTaskIn(text);
    if (task) tasks.push_back(*task);
    return true;
  });
  if (!read) throw host::Failure(host::ExitStatus::Usage, read.trouble().reason);
  const std::optional<uint64_t> cost = MessageCostOf(tasks);
  if (cost) return *cost;
  throw host::Failure(host::ExitStatus::Usage, path,
                      "does not tell what a message costs: it takes the times of tasks with "
                      "different shares of messages and bytes");
}

}  // namespace tarn::archive
