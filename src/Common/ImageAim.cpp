#include "Common/ImageAim.h"

#include "Common/ApiUtils.h"
#include "Common/ByteSearch.h"
#include "Common/ImagePass.h"

namespace tarn {
namespace {

// In the text that the pass keeps, which it charges to its budget itself.
int32_t AimInPass(InlineImageContext& context, const char* needle, bool& found) {
  uint64_t place = kNoPlace;
  const int32_t status = context.pass->find(needle, place);
  found = place != kNoPlace;
  if (found) {
    context.needle = needle;
    context.searchOffset = place;
  }
  return status;
}

bool AimAtBody(InlineImageContext& context, SearchBudget& budget, const char* needle) {
  const char* const start = context.body->data();
  const char* const end = start + context.body->length();
  const char* const found = FindBytes(start, end, needle);
  budget.spend(static_cast<uint64_t>((found != nullptr ? found : end) - start));
  if (found == nullptr) return false;
  context.needle = needle;
  context.searchOffset = static_cast<uint64_t>(found - start);
  return true;
}

int32_t AimAt(InlineImageContext& context, SearchBudget& budget, const char* needle, bool& found) {
  if (context.pass != nullptr) return AimInPass(context, needle, found);
  found = AimAtBody(context, budget, needle);
  return StatusOk;
}

}  // namespace

int32_t AimAtReference(InlineImageContext& context, SearchBudget& budget, const char* contentId,
                       const char* name, bool& found) {
  context.cidText.setLength(0);
  context.cidTextFlag = 1;
  found = false;
  if (contentId != nullptr) {
    if (AppendFormat(context.cidText, context.cidTextFlag, "cid:%s", contentId) == 0) {
      return StatusOutOfMemory;
    }
    const int32_t status = AimAt(context, budget, context.cidText.data(), found);
    if (status != StatusOk) return status;
  }
  if (!found && name != nullptr) {
    const int32_t status = AimAt(context, budget, name, found);
    if (status != StatusOk) return status;
  }
  return budget.isSpent() ? int32_t{StatusOutOfMemory} : int32_t{StatusOk};
}

}  // namespace tarn
