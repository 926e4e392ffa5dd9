// BodyRoom.h - a body that becomes longer in its own block, so that a long one is not there twice.
#ifndef TARN_RENDER_BODY_ROOM_H
#define TARN_RENDER_BODY_ROOM_H

#include <cstdint>

#include "Internal/Tarnclasses_.h"

namespace tarn {

// Sees that the body's block has room for `count` bytes and `step` to spare; `count` is no less
// than its length, which stays. The host's budget is asked as for a TrackedBuffer of that many
// bytes, and has them back on return: the block then is the message's. 1; -1 without memory, or the
// host's refusal, and then the body is as it was.
int32_t MakeRoomInBody(SizedBytes& body, uint64_t count, uint64_t step);

// A NUL that the length counts, unless the body ends with one already. There is room for it.
void TerminateBody(SizedBytes& body);

}  // namespace tarn

#endif
