#include "Common/ImageAim.h"

#include "Common/ApiUtils.h"
#include "Common/ByteSearch.h"

namespace tarn {
namespace {

bool AimAt(InlineImageContext& context, SearchBudget& budget, const char* needle) {
  const char* const start = context.body->data;
  const char* const end = start + context.body->length;
  const char* const found = FindBytes(start, end, needle);
  budget.spend(static_cast<uint64_t>((found != nullptr ? found : end) - start));
  if (found == nullptr) return false;
  context.needle = needle;
  context.searchOffset = static_cast<uint64_t>(found - start);
  return true;
}

}  // namespace

int32_t AimAtReference(InlineImageContext& context, SearchBudget& budget, const char* contentId,
                       const char* name, bool& found) {
  context.cidText.length = 0;
  context.cidTextFlag = 1;
  found = false;
  if (contentId != nullptr) {
    if (AppendFormat(context.cidText, context.cidTextFlag, "cid:%s", contentId) == 0) {
      return StatusOutOfMemory;
    }
    found = AimAt(context, budget, context.cidText.data);
  }
  if (!found && name != nullptr) found = AimAt(context, budget, name);
  return budget.isSpent() ? int32_t{StatusOutOfMemory} : int32_t{StatusOk};
}

}  // namespace tarn
