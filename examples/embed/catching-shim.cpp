// catching-shim.cpp - calls the filter and catches what it throws. To be built by the compiler that
// built TarnPst; the host that loads it may come from any other.
#include "catching-shim.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <new>

namespace {

thread_local char lastText[256];

void Keep(const char* text) {
  const size_t length = std::min(std::strlen(text), sizeof lastText - 1);
  std::memcpy(lastText, text, length);
  lastText[length] = '\0';
}

template <typename Function, typename... Arguments>
auto Catch(Function function, Arguments... arguments) noexcept -> decltype(function(arguments...)) {
  try {
    return function(arguments...);
  } catch (const std::bad_alloc& error) {
    Keep(error.what());
    return StatusOutOfMemory;
  } catch (const std::exception& error) {
    Keep(error.what());
    return StatusFailed;
  } catch (...) {
    Keep("unknown exception");
    return StatusFailed;
  }
}

}  // namespace

int32_t ShimInfo(FilterInfoContext* context) { return Catch(fltInfo, context); }

int32_t ShimLoad(FilterLoadContext* context) { return Catch(fltLoad, context); }

int32_t ShimFreeData(void* data, int32_t value) { return Catch(fltFreeData, data, value); }

int32_t ShimGetAttachmentInfo(GetAttachmentInfoContext* context) {
  return Catch(fltGetAttachmentInfo, context);
}

int32_t ShimExtractAttachment(ExtractAttachmentContext* context) {
  return Catch(fltExtractAttachment, context);
}

int64_t ShimTarnLoad(uint64_t a, uint64_t b, uint64_t c, uint64_t d) {
  return Catch(TARN_Load, a, b, c, d);
}

uint64_t ShimWhat(char* text, uint64_t room) {
  const size_t length = std::strlen(lastText);
  if (room == 0) return length;
  const size_t copied = std::min<size_t>(length, room - 1);
  std::memcpy(text, lastText, copied);
  text[copied] = '\0';
  return length;
}
