// The kernel's budget refuses a large buffer on its way to the host.

#include <gtest/gtest.h>

#include "Internal/Tarnclasses_.h"
#include "support/FakeHost.h"
#include "support/SampleMails.h"

namespace tarn::test {
namespace {

TEST(BudgetRoad, RefusesALargeAttachment) {
  PlainKernelSetIoMode(3);
  PlainKernelSetMemoryBudget(4000000);
  // An attachment above the threshold of the meter is put into a tracked buffer.
  std::string mail = kSampleFields +
                     "Content-Type: multipart/mixed; boundary=b\r\n\r\n"
                     "--b\r\nContent-Type: text/plain\r\n\r\nHi\r\n"
                     "--b\r\nContent-Disposition: attachment; filename=big\r\n\r\n";
  mail.append(9000000, 'x');
  mail += "\r\n--b--\r\n";
  FakeHost host(mail);
  EXPECT_EQ(host.extract(1), StatusOutOfMemory);
  EXPECT_EQ(Copy(host.extractContext->data), nullptr);
  PlainKernelSetMemoryBudget(UINT64_MAX);
  EXPECT_EQ(host.extract(1), StatusOk);
  EXPECT_EQ(Copy(host.extractContext->size), 9000000u);
  KernelFree(host.extractContext->data, TARN_HERE);
}

}  // namespace
}  // namespace tarn::test
