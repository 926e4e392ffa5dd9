// Files that were flushed, changed and flushed again: only what is marked is written the second
// time, so each mark that is missing shows.

#include <gtest/gtest.h>

#include "CompoundFiles.h"
#include "NaiveCompound.h"
#include "Tarnbase/PlainKernel.h"

namespace tarn::test {
namespace {

constexpr uint64_t kEnd = 0xFFFFFFFE;
constexpr uint64_t kFree = 0xFFFFFFFF;

std::vector<uint64_t> Marks(const BlockMarks& marks) { return List(marks.numbers()); }

using Numbers = std::vector<uint64_t>;

// A new file whose marks can be taken away.
class MarkedFile {
 public:
  CompoundFile& file() { return made_.file(); }
  NewFile& made() { return made_; }
  DirectoryTree& tree() { return file().directory; }

  // As after a flush.
  void clear() {
    file().header.dirty = false;
    file().bigTable.dirtyBlocks.clear();
    file().smallTable.dirtyBlocks.clear();
    tree().dirtyBlocks.clear();
    file().metaDirty = false;
  }
  CompoundStream stream(std::string_view path) { return *OpenStream(made_.storage(), path, true); }
  // Entries without content, so that later ones stand in later blocks of the directory.
  void entries(int count) {
    for (int i = 0; i < count; ++i) stream("e" + std::to_string(100 + i));
  }

 private:
  NewFile made_;
};

TEST(Marks, DirectoryBlock0WhenTheContainerGrows) {
  MarkedFile marked;
  marked.entries(9);
  CompoundStream stream = marked.stream("late");  // entry 10, in block 2
  StreamWrite(stream, 0, Bytes(Pattern(512)), 512);
  marked.clear();
  StreamWrite(stream, 510, Bytes("0123456789"), 10);
  EXPECT_EQ(marked.file().containerBlocks.size(), 2u);
  EXPECT_TRUE(marked.tree().dirtyBlocks.contains(0));
  EXPECT_TRUE(marked.tree().dirtyBlocks.contains(2));  // its size
}

TEST(Marks, TheHeaderWhenTheSmallTableGrows) {
  MarkedFile marked;
  CompoundStream stream = marked.stream("a");
  for (int i = 0; i < 2; ++i) {
    CompoundStream part = marked.stream("s" + std::to_string(i));
    StreamWrite(part, 0, Bytes(Pattern(4032)), 4032);  // 63 small blocks
  }
  StreamWrite(stream, 0, Bytes(Pattern(128)), 128);
  marked.clear();
  EXPECT_EQ(marked.file().header.smallTableBlockCount, 1u);
  StreamWrite(stream, 128, Bytes("x"), 1);
  EXPECT_EQ(marked.file().header.smallTableBlockCount, 2u);
  EXPECT_TRUE(marked.file().header.dirty);
  EXPECT_EQ(Marks(marked.file().smallTable.dirtyBlocks), (Numbers{0, 1}));
}

TEST(Marks, TheEntryWhenItsStartChanges) {
  MarkedFile marked;
  marked.entries(9);
  CompoundStream stream = marked.stream("late");
  StreamSetSize(stream, 10);
  marked.clear();
  StreamWrite(stream, 0, Bytes("0123456789"), 10);
  EXPECT_EQ(stream.entry()->start, 0u);
  EXPECT_EQ(Marks(marked.tree().dirtyBlocks), (Numbers{2}));
  marked.clear();
  StreamWrite(stream, 0, Bytes("9876543210"), 10);
  EXPECT_TRUE(marked.tree().dirtyBlocks.empty());
}

TEST(Marks, TheEntryInTheMoveBetweenKinds) {
  MarkedFile marked;
  marked.entries(9);
  CompoundStream stream = marked.stream("late");
  marked.clear();
  StreamSetSize(stream, 5000);  // nothing to write again
  EXPECT_EQ(stream.entry()->start, kFree);
  EXPECT_EQ(Marks(marked.tree().dirtyBlocks), (Numbers{2}));
  marked.clear();
  StreamSetSize(stream, 7);
  EXPECT_EQ(Marks(marked.tree().dirtyBlocks), (Numbers{2}));
}

TEST(Marks, TheEntryAboveANewOne) {
  MarkedFile marked;
  marked.entries(10);  // e100 is entry 1, e109 entry 10
  marked.clear();
  marked.stream("e1000");  // entry 11, below e109
  EXPECT_EQ(marked.tree().entries[10].next, 11u);
  EXPECT_EQ(Marks(marked.tree().dirtyBlocks), (Numbers{2}));
  marked.clear();
  marked.stream("e");  // entry 12, in front of e100
  EXPECT_EQ(marked.tree().entries[1].prev, 12u);
  EXPECT_EQ(Marks(marked.tree().dirtyBlocks), (Numbers{0, 3}));
}

TEST(Marks, TheParentOfAFirstChild) {
  MarkedFile marked;
  marked.entries(3);
  marked.stream("folder/a");  // entries 4 and 5
  marked.entries(9);          // up to entry 11
  marked.tree().entries[4].child = kFree;
  marked.tree().isIndexed = false;
  marked.clear();
  marked.stream("folder/b");  // entry 12
  EXPECT_EQ(marked.tree().entries[4].child, 12u);
  EXPECT_EQ(Marks(marked.tree().dirtyBlocks), (Numbers{1, 3}));
}

TEST(Marks, SmallBlocksGivenBackByTheirPlaceInTheList) {
  MarkedFile marked;
  for (int i = 0; i < 3; ++i) {
    CompoundStream filler = marked.stream("s" + std::to_string(i));
    StreamWrite(filler, 0, Bytes(Pattern(4032)), 4032);
  }
  CompoundStream stream = marked.stream("late");
  StreamWrite(stream, 0, Bytes(Pattern(200)), 200);
  EXPECT_EQ(List(stream.blocks), (Numbers{189, 190, 191, 192}));
  marked.clear();
  StreamSetSize(stream, 4096);
  for (uint64_t block = 189; block < 193; ++block) {
    EXPECT_EQ(marked.file().smallTable.entries[block], kFree);
  }
  EXPECT_EQ(Marks(marked.file().smallTable.dirtyBlocks), (Numbers{0}));
}

TEST(Marks, NoneForATableBlockThatIsAdded) {
  MarkedFile marked;
  BlockList chain;
  while (marked.file().bigTable.entries[126] == kFree) ExtendChain(marked.file(), chain);
  marked.file().header.tableBlockCount = 1;
  for (uint64_t i = 0; i < 128; ++i) SetBlockEntry(marked.file().bigTable, i, kEnd);
  marked.clear();
  AddBigTableBlock(marked.file());  // block 128, whose entry stands in the second table block
  EXPECT_EQ(marked.file().header.tableBlocks[1], 128u);
  EXPECT_TRUE(marked.file().bigTable.dirtyBlocks.empty());
  EXPECT_TRUE(marked.file().header.dirty);
}

TEST(Flush, WritesTheHeaderOnlyWhenItIsMarked) {
  MarkedFile marked;
  marked.made().flush();
  EXPECT_FALSE(marked.file().header.dirty);
  KernelFileSeek(marked.file().handle, 0, KERNEL_SEEK_START);
  KernelFileWrite(marked.file().handle, "other", 5);
  marked.made().flush();
  marked.file().header.dirty = true;
  std::string bytes(512, '\0');
  KernelFileSeek(marked.file().handle, 0, KERNEL_SEEK_START);
  KernelFileRead(marked.file().handle, bytes.data(), 5);
  EXPECT_EQ(bytes.substr(0, 5), "other");
  marked.made().flush();
  EXPECT_EQ(marked.made().end().substr(0, 5), "\xD0\xCF\x11\xE0\xA1");
}

TEST(Flush, OfTheHeaderIsSeenByReadsOfTheContainer) {
  // Blocks of 128 bytes: block 0, the container here, begins inside of the header.
  MarkedFile marked;
  CompoundFile& file = marked.file();
  file.bigTable.blockSize = 128;
  file.fileSize = 512;
  file.containerBlocks = Blocks({0});
  unsigned char byte = 7;
  ASSERT_EQ(LoadSmallBlock(file, 1, &byte, 1), 1u);
  EXPECT_EQ(byte, 0);
  marked.clear();
  file.header.dirty = true;
  FlushCompoundFile(file);
  ASSERT_EQ(LoadSmallBlock(file, 1, &byte, 1), 1u);
  EXPECT_EQ(byte, 0xFF);  // byte 192: an unused table block
}

// The marks of a second flush, against a writer that does the same the long way.
TEST(Flush, ASecondTimeWritesWhatChanged) {
  for (unsigned seed = 0; seed < 30; ++seed) {
    NewFile made;
    NaiveCompound naive;
    for (unsigned step = 0; step < 40; ++step) {
      const unsigned number = seed * 7 + step * 13;
      const std::string path = (number % 3 == 0 ? "f/s" : "s") + std::to_string(number % 17);
      const std::string bytes =
          Pattern(number % 5 == 0 ? number * 31 % 9000 + 1 : number % 700 + 1);
      made.append(path, bytes);
      naive.append(path, bytes);
      if (step % 9 != 8) continue;
      made.flush();
      naive.flush();
      naive.clearMarks();
    }
    made.flush();
    const std::string expected = naive.flush();
    ASSERT_EQ(made.end() == expected, true) << seed;
  }
}

TEST(Open, CreatesAfterALoad) {
  std::string sound;
  {
    NewFile made;
    made.append("s", "0123456789");
    made.flush();
    sound = made.end();
  }
  for (const size_t length : {sound.size(), size_t{600}, size_t{3}}) {
    MemoryMail mail(std::string(sound.substr(0, length)));
    uint64_t handle = 0;
    void* state = nullptr;
    ASSERT_EQ(KernelMemFileOpen(&handle, &state, KERNEL_MEMFILE_EMPTY, nullptr, 0, 0), StatusOk);
    {
      CompoundStorage storage;
      CompoundFile file(storage, mail.handle());
      OpenCompoundFile(file, true, false);
      if (file.opened) {
        CompoundStream stream = *OpenStream(storage, "s", true);
        StreamSetSize(stream, 9);
        OpenStream(storage, "other/one", true);
      }
      file.handle = handle;
      EXPECT_TRUE(OpenCompoundFile(file, true, true)) << length;
      EXPECT_FALSE(file.opened);
      EXPECT_EQ(file.fileSize, 0u);
      EXPECT_EQ(file.directory.entries.size(), 1u);
      EXPECT_EQ(file.bytesLeft, UINT64_MAX);
      CompoundStream stream = *OpenStream(storage, "s", true);
      StreamWrite(stream, 0, Bytes("0123456789"), 10);
      FlushCompoundFile(file);
    }
    KernelFileClose(handle);
    void* block = nullptr;
    uint64_t size = 0;
    uint64_t capacity = 0;
    KernelMemFileClose(state, &block, &size, &capacity);
    EXPECT_EQ(std::string(static_cast<char*>(block), size) == sound, true) << length;
    KernelFree(block, TARN_HERE);
  }
}

TEST(Open, BeginsAnewEachTime) {
  // Chains of a first layout are not those of a second.
  NewFile made;
  for (int round = 0; round < 2; ++round) {
    ASSERT_TRUE(OpenCompoundFile(made.file(), true, true));
    // The chains of directory and small table grow beyond their first blocks.
    for (int i = 0; i < 12; ++i)
      made.append("s" + std::to_string(i), Pattern(round == 0 ? 3000 : 3400));
    if (round == 0) made.append("only here", Pattern(70000));
  }
  made.flush();
  NewFile other;
  for (int i = 0; i < 12; ++i) other.append("s" + std::to_string(i), Pattern(3400));
  EXPECT_EQ(List(made.file().bigTable.entries), List(other.file().bigTable.entries));
  EXPECT_EQ(List(made.file().smallTable.entries), List(other.file().smallTable.entries));
  LoadedFile loaded(made.end());
  EXPECT_EQ(loaded.names("/"), "s0 s1 s2 s3 s4 s5 s6 s7 s8 s9 s10 s11");
  for (int i = 0; i < 12; ++i) EXPECT_EQ(loaded.stream("s" + std::to_string(i)), Pattern(3400));
}

TEST(Open, AFailedLoadLeavesAnOpenedFileClosed) {
  NewFile made;
  made.append("s", "text");
  made.flush();
  CompoundFile& file = made.file();
  ASSERT_TRUE(OpenCompoundFile(file, false, false));
  ASSERT_TRUE(file.opened);
  KernelFileSeek(file.handle, 0, KERNEL_SEEK_START);
  KernelFileWrite(file.handle, "no", 2);
  EXPECT_FALSE(OpenCompoundFile(file, false, false));
  EXPECT_EQ(file.result, CompoundNotCompound);
  EXPECT_FALSE(file.opened);
}

TEST(Open, LetsReadsAndSearchesCostAnew) {
  NewFile made;
  made.append("s", "text");
  made.flush();
  CompoundFile& file = made.file();
  file.bytesLeft = 0;
  file.directory.stepsLeft = 0;
  ASSERT_TRUE(OpenCompoundFile(file, false, false));
  EXPECT_NE(file.bytesLeft, 0u);
  EXPECT_NE(file.directory.stepsLeft, 0u);
  file.directory.stepsLeft = 0;
  LoadDirectory(file.directory, nullptr, 0);
  EXPECT_NE(file.directory.stepsLeft, 0u);
}

}  // namespace
}  // namespace tarn::test
