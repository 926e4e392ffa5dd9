// CatchingCall.h - runs one export for an Answer. Only readers of stores throw, but whatever comes
// is an answer.
#ifndef TARN_TESTS_SUPPORT_ROAD_CATCHINGCALL_H
#define TARN_TESTS_SUPPORT_ROAD_CATCHINGCALL_H

#include <exception>
#include <optional>
#include <string>

#include "support/road/Answer.h"

namespace tarn::test {

// Sets the answer's outcome; the call's result, or none when it threw.
template <typename Call>
std::optional<int32_t> Perform(Answer& answer, Call call) {
  try {
    const int32_t status = call();
    answer.outcome = std::to_string(status);
    return status;
  } catch (const std::exception& error) {
    answer.outcome = std::string("throws ") + error.what();
  } catch (...) {
    answer.outcome = "throws something unknown";
  }
  return std::nullopt;
}

}  // namespace tarn::test

#endif
