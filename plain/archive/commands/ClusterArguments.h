// ClusterArguments.h - the commands of an export by many machines.
#ifndef TARN_ARCHIVE_COMMANDS_CLUSTERARGUMENTS_H
#define TARN_ARCHIVE_COMMANDS_CLUSTERARGUMENTS_H

#include <CLI/CLI.hpp>
#include <functional>

#include "archive/cluster/Cluster.h"

namespace tarn::archive {

struct ClusterCommands {
  PlanOptions planning;
  RunTaskOptions task;
  MissingOptions missing;
  MergeOptions merge;
};

// `chosen` becomes what the command line asks for; the options must outlive it.
void AddCluster(CLI::App& app, ClusterCommands& commands,
                std::function<host::ExitStatus()>& chosen);

}  // namespace tarn::archive

#endif
