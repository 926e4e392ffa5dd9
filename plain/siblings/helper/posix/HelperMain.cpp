#include "siblings/helper/HelperMain.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "siblings/client/HelperCall.h"
#include "siblings/client/Protocol.h"

namespace tarn::pages {
namespace {

// False when the parent has gone already.
bool EndWithParent(ProcessId parent) {
  if (parent == 0) return true;
  return prctl(PR_SET_PDEATHSIG, SIGKILL, 0, 0, 0) == 0 && getppid() == parent;
}

void BuildWallsBeforeEngines(const HelperCall& call, Files files) {
  if (call.wall != HelperWall::SystemCalls || WallOffFiles(call.folder)) return;
  if (files == Files::WrittenToo) {
    throw PageFailure(Trouble::NoSandbox, "no Landlock, and it writes files");
  }
}

void BuildWallsAfterEngines(const HelperCall& call, Files files) {
  LimitMemory(call.memory);
  if (call.wall == HelperWall::None || WallOffSystemCalls(files)) return;
  // Within namespaces it is the second wall.
  if (call.wall == HelperWall::SystemCalls) {
    throw PageFailure(Trouble::NoSandbox, "no seccomp");
  }
}

int ServeBehindWalls(const HelperCall& call, const HelperTrade& trade) {
  Channel channel{Descriptor(kHelperSocket)};
  EngineFor engineFor;
  try {
    BuildWallsBeforeEngines(call, trade.files);
    engineFor = trade.begin(call.folder);
    BuildWallsAfterEngines(call, trade.files);
  } catch (const PageFailure& failure) {
    (void)channel.send(Encode(Failed{failure.trouble(), failure.what()}));
    return kHelperDone;
  } catch (const std::exception& error) {
    (void)channel.send(Encode(Failed{Trouble::NotInstalled, error.what()}));
    return kHelperDone;
  }
  if (!channel.send(Encode(Ready{}))) return kHelperDone;
  return Serve(channel, engineFor) == Served::ToTheEnd ? kHelperDone : kHelperMisused;
}

}  // namespace

int RunHelper(int argc, char** argv, const HelperTrade& trade) {
  const auto call =
      ParseHelperArguments(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc));
  if (!call) {
    (void)std::fputs("tarnmail starts this program where it needs pages.\n", stderr);
    return kHelperMisused;
  }
  if (!EndWithParent(call->parent)) return kHelperDone;
  return ServeBehindWalls(*call, trade);
}

}  // namespace tarn::pages
