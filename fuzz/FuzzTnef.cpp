// winmail.dat as items: everything in it is read, embedded messages too. Besides what the
// sanitizers see, a run aborts when what is told beforehand is not what is read.
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ArchiveItem.h"
#include "archive/mapi/MapiItem.h"
#include "archive/tnef/TnefReader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace tarn;
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  const auto item = archive::mapi::MakeMapiItem(
      {"1", std::nullopt, std::make_shared<const std::vector<std::string>>()},
      [&bytes] { return archive::ReadTnef(bytes); });
  fuzz::ItemWalk(100).read(*item);
  return 0;
}
