#include <gtest/gtest.h>

#include "TarnPst.h"

namespace tarn {
namespace {

TEST(Exports, LoadStubAnswersAsTheKernelDoes) { EXPECT_EQ(TARN_Load(7, 8, 9, 10), 1); }

TEST(Exports, RefuseNullContexts) {
  EXPECT_EQ(fltInfo(nullptr), StatusBadArgument);
  EXPECT_EQ(fltLoad(nullptr), StatusBadArgument);
  EXPECT_EQ(fltFreeData(nullptr, 0), StatusBadArgument);
  EXPECT_EQ(fltFreeData(nullptr, 1), StatusBadArgument);
  EXPECT_EQ(fltGetAttachmentInfo(nullptr), StatusNullArgument);
  EXPECT_EQ(fltExtractAttachment(nullptr), StatusNullArgument);
}

}  // namespace
}  // namespace tarn
