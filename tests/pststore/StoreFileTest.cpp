// What the file of a store gives, and how much of it.
#include "pststore/StoreFile.h"

#include <gtest/gtest.h>

#include <span>
#include <stdexcept>

#include "Tarnbase/PlainKernel.h"
#include "pststore/Errors.h"
#include "support/TempDirectory.h"
#include "support/pst/PstBytes.h"

namespace tarn::test {
namespace {

using pststore::store_file;

constexpr size_t kSize = 65536;

class StoreFile : public testing::Test {
 protected:
  TempDirectory directory;
  std::u16string path = directory.write("store", std::string(kSize, 's')).u16string();
  std::string buffer = std::string(kSize, '?');
  std::span<unsigned char> room = RoomOf(buffer);
};

TEST_F(StoreFile, ReadsAllBytesOrThrows) {
  store_file file(path.c_str());
  file.read(room.first(3), kSize - 3);
  EXPECT_EQ(buffer.substr(0, 4), "sss?");
  EXPECT_THROW(file.read(room.first(3), kSize - 2), std::out_of_range);
  EXPECT_THROW(file.read(room.first(1), UINT64_MAX), std::out_of_range);
  EXPECT_EQ(file.get_size(), kSize);
}

TEST_F(StoreFile, GivesAGibibyteAndItsOwnSizeSixtyFourTimes) {
  store_file file(path.c_str());
  const uint64_t reads = (uint64_t{1} << 30) / kSize + 64;
  for (uint64_t i = 0; i < reads; ++i) file.read(room, 0);
  EXPECT_EQ(buffer, std::string(kSize, 's'));
  EXPECT_THROW(file.read(room.first(64), 0), pststore::database_corrupt);
  EXPECT_THROW(file.read(room, 0), pststore::database_corrupt);
}

TEST_F(StoreFile, OnlyBytesThatWereReadCount) {
  store_file file(path.c_str());
  const uint64_t reads = (uint64_t{1} << 30) / kSize + 64;
  for (uint64_t i = 0; i < reads; ++i) {
    EXPECT_THROW(file.read(room, kSize), std::out_of_range);
    EXPECT_THROW(file.read(room, UINT64_MAX), std::out_of_range);
  }
  // The half that a read past the end brought counts.
  EXPECT_THROW(file.read(room, kSize / 2), std::out_of_range);
  for (uint64_t i = 1; i < reads; ++i) file.read(room, 0);
  file.read(room.first(kSize / 2), 0);
  EXPECT_THROW(file.read(room.first(64), 0), pststore::database_corrupt);
}

TEST_F(StoreFile, AFileThatCannotBeMeasuredIsNotReadForEver) {
  store_file file(path.c_str());
  for (uint64_t i = 0; i < (uint64_t{1} << 30) / kSize; ++i) file.read(room, 0);
  PlainKernelFailAt(PlainKernelFaultSeek, 1);
  EXPECT_THROW(file.read(room, 0), std::out_of_range);
  PlainKernelFailAt(PlainKernelFaultSeek, 0);
}

TEST_F(StoreFile, SmallReadsCountTwoKibibytes) {
  store_file file(path.c_str());
  const uint64_t reads = ((uint64_t{1} << 30) + 64 * kSize) / 2048;
  for (uint64_t i = 0; i < reads; ++i) file.read(room.first(64), 0);
  EXPECT_THROW(file.read(room.first(64), 0), pststore::database_corrupt);
}

}  // namespace
}  // namespace tarn::test
