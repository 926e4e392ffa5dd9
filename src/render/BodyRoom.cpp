#include "render/BodyRoom.h"

#include <utility>

namespace tarn {

int32_t MakeRoomInBody(SizedBytes& body, uint64_t count, uint64_t step) {
  // A buffer that the budget refuses frees its block, so it is asked before there is one.
  TrackedBuffer<char> room(0, step);
  if (const Status granted = room.count(step + count); !granted.ok()) return granted;
  const uint64_t length = body.length();
  room.replaceBlock(body.take(), 0, 0);
  const bool grown = room.reserve(count) != nullptr;
  body.adopt(room.take(), length);
  if (!grown) return room.lastError();
  return StatusOk;
}

void TerminateBody(SizedBytes& body) {
  if (!body.view().ends_with('\0')) {
    body.data()[body.length()] = '\0';
    body.setLength(body.length() + 1);
  }
}

}  // namespace tarn
