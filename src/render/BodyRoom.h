// BodyRoom.h - a body that becomes longer in its own block, so that a long one is not there twice.
#ifndef TARN_RENDER_BODY_ROOM_H
#define TARN_RENDER_BODY_ROOM_H

#include <cstdint>
#include <string_view>

#include "Internal/Tarnclasses_.h"

namespace tarn {

// The length of the text with a NUL at its end. There is room for one that is added.
inline uint64_t Terminate(char* text, uint64_t length) {
  if (std::string_view(text, length).ends_with('\0')) return length;
  text[length] = '\0';
  return length + 1;
}

// Gives the body's block room for `count` bytes, no less than its length, and `step` to spare, has
// `write(char* block)` put the new text there and say its length, and ends it with a NUL that the
// length counts. The host's budget is asked as for a TrackedBuffer of that many bytes, and has them
// back on return: the block then is the message's.
//   StatusOk
//   StatusOutOfMemory  the body is as it was
//   others             the host's refusal; likewise
template <typename Write>
Status RewriteBody(SizedBytes& body, uint64_t count, uint64_t step, Write write) {
  // A buffer that the budget refuses frees its block, so it is asked before there is one.
  TrackedBuffer<char> room(0, step);
  if (const Status granted = room.count(step + count); !granted.ok()) return granted;
  const uint64_t length = body.length();
  room.replaceBlock(body.take(), 0, 0);
  char* const block = room.reserve(count);
  const uint64_t newLength = block != nullptr ? Terminate(block, write(block)) : length;
  body.adopt(room.take(), newLength);
  return block != nullptr ? Status(StatusOk) : room.lastError();
}

}  // namespace tarn

#endif
