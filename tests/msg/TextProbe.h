// TextProbe.h - a kernel whose conversion to wide text tells success and no number of units.
//
// MsgTests links a double of KernelUtf8ToWide before the kernel's; without a probe it hands
// every call on.
#ifndef TARN_TESTS_MSG_TEXTPROBE_H
#define TARN_TESTS_MSG_TEXTPROBE_H

#include <cstdint>

namespace tarn::test {

// While it lives, conversions that succeed answer with this number and write no terminator. One at
// a time.
class TextProbe {
 public:
  explicit TextProbe(int64_t answer);
  TextProbe(const TextProbe&) = delete;
  TextProbe& operator=(const TextProbe&) = delete;
  ~TextProbe();
};

}  // namespace tarn::test

#endif
