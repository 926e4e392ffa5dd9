#include "render/BodyRoom.h"

#include <utility>

namespace tarn {

int32_t MakeRoomInBody(SizedBytes& body, uint64_t count, uint64_t step) {
  TrackedBuffer<char> room(0, step);
  // A buffer that the budget refuses frees its block, so it is asked before there is one.
  const int32_t granted = room.meter.set(step + count);
  if (granted != StatusOk) return granted;
  room.data = body.data;
  const bool grown = room.reserve(count) != nullptr;
  body.data = std::exchange(room.data, nullptr);
  return grown ? int32_t{StatusOk} : room.lastError;
}

void TerminateBody(SizedBytes& body) {
  if (!body.bytes().ends_with('\0')) body.data[body.length++] = '\0';
}

}  // namespace tarn
