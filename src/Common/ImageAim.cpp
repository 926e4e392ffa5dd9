#include "Common/ImageAim.h"

#include <algorithm>

#include "Common/ApiUtils.h"
#include "Common/ByteSearch.h"
#include "Common/ImagePass.h"

namespace tarn {
namespace {

// In the text that the pass keeps, which it charges to its budget itself.
Status AimInPass(InlineImageContext& context, const char* needle, bool& found) {
  uint64_t place = kNoPlace;
  const Status status = context.pass->find(needle, place);
  found = place != kNoPlace;
  if (found) {
    context.needle = needle;
    context.searchOffset = place;
  }
  return status;
}

bool AimAtBody(InlineImageContext& context, SearchBudget& budget, const char* needle) {
  const std::string_view body = context.body->view();
  const uint64_t place = FindBytes(body, needle);
  budget.spend(std::min(place, body.size()));
  if (place == std::string_view::npos) return false;
  context.needle = needle;
  context.searchOffset = place;
  return true;
}

Status AimAt(InlineImageContext& context, SearchBudget& budget, const char* needle, bool& found) {
  if (context.pass != nullptr) return AimInPass(context, needle, found);
  found = AimAtBody(context, budget, needle);
  return StatusOk;
}

}  // namespace

Status AimAtReference(InlineImageContext& context, SearchBudget& budget, const char* contentId,
                      const char* name, bool& found) {
  context.cidText.clear();
  context.cidTextFlag = 1;
  found = false;
  if (contentId != nullptr) {
    if (AppendFormat(context.cidText, context.cidTextFlag, "cid:%s", contentId) == 0) {
      return StatusOutOfMemory;
    }
    const Status status = AimAt(context, budget, context.cidText.data(), found);
    if (!status.ok()) return status;
  }
  if (!found && name != nullptr) {
    const Status status = AimAt(context, budget, name, found);
    if (!status.ok()) return status;
  }
  return budget.isSpent() ? StatusOutOfMemory : StatusOk;
}

}  // namespace tarn
