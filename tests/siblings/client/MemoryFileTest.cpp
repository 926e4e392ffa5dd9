// Memory files: copies that nobody changes, and the room of answers.

#include "siblings/client/MemoryFile.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <string>

namespace tarn::pages {
namespace {

std::string TextOf(int file, size_t size) {
  std::string text(size, '\0');
  EXPECT_TRUE(ReadAll(file, {reinterpret_cast<uint8_t*>(text.data()), text.size()}));
  return text;
}

TEST(MemoryFileTest, ReadsFromTheStartWhateverHasBeenRead) {
  const Descriptor file = SealedCopy("a document");
  EXPECT_EQ(TextOf(file.get(), 10), "a document");
  EXPECT_EQ(TextOf(file.get(), 1), "a");
  EXPECT_EQ(SizeOf(file.get()), 10u);
}

TEST(MemoryFileTest, ReadsNoMoreThanThereIs) {
  const Descriptor file = SealedCopy("short");
  std::array<uint8_t, 6> room;
  EXPECT_FALSE(ReadAll(file.get(), room));
  EXPECT_FALSE(ReadAll(-1, room));
}

TEST(MemoryFileTest, SealsItsCopies) {
  const Descriptor file = SealedCopy("sealed");
  EXPECT_FALSE(WriteAll(file.get(), "x"));
  EXPECT_NE(ftruncate(file.get(), 0), 0);
  EXPECT_NE(ftruncate(file.get(), 100), 0);
  EXPECT_EQ(mmap(nullptr, 6, PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0), MAP_FAILED);
  EXPECT_EQ(TextOf(file.get(), 6), "sealed");
}

TEST(MemoryFileTest, CopiesUpToALimit) {
  const Descriptor file = SealedCopy("0123456789");
  lseek(file.get(), 4, SEEK_SET);
  const auto rest = SealedCopyOf(file.get(), 6);
  ASSERT_TRUE(rest);
  EXPECT_EQ(rest->size, 6u);
  EXPECT_EQ(TextOf(rest->file.get(), 6), "456789");
  lseek(file.get(), 3, SEEK_SET);
  EXPECT_FALSE(SealedCopyOf(file.get(), 6));
}

TEST(AnswerRoomTest, TakesOneAnswerAfterTheOther) {
  AnswerRoom room;
  std::array<uint8_t, 3> answer;
  for (const char* const text : {"one", "two"}) {
    EXPECT_TRUE(WriteAll(room.ready(), text));
    EXPECT_TRUE(room.take(answer));
    EXPECT_EQ(std::string(answer.begin(), answer.end()), text);
  }
  EXPECT_EQ(room.size(), 3u);
  EXPECT_TRUE(WriteAll(room.ready(), "3"));
  std::array<uint8_t, 4> more;
  EXPECT_FALSE(room.take(more));
}

TEST(AnswerRoomTest, GivesBackWhatALargeAnswerTook) {
  AnswerRoom room;
  std::string large(17'000'000, 'x');
  EXPECT_TRUE(WriteAll(room.ready(), large));
  EXPECT_TRUE(room.take({reinterpret_cast<uint8_t*>(large.data()), large.size()}));
  EXPECT_EQ(room.size(), 0u);
  // What was put there and not taken goes before the next answer.
  EXPECT_TRUE(WriteAll(room.ready(), large));
  room.ready();
  EXPECT_EQ(room.size(), 0u);
}

}  // namespace
}  // namespace tarn::pages
