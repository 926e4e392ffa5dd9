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
  CompoundParts& parts() { return made_.parts(); }
  DirtyMarks& marks() { return made_.marks(); }
  const DirectoryTree::Entries& entries() { return parts().directory.entries(); }

  // As after a flush.
  void clear() {
    marks().header = false;
    marks().bigTable.clear();
    marks().smallTable.clear();
    marks().directory.clear();
    marks().meta = false;
  }
  CompoundStream stream(std::string_view path) { return *made_.file().openOrMake(path); }
  // Entries without content, so that later ones are in later blocks of the directory.
  void addEntries(int count) {
    for (int i = 0; i < count; ++i) stream("e" + std::to_string(100 + i));
  }

 private:
  NewFile made_;
};

TEST(Marks, DirectoryBlock0WhenTheContainerGrows) {
  MarkedFile marked;
  marked.addEntries(9);
  CompoundStream stream = marked.stream("late");  // entry 10, in block 2
  StreamWrite(stream, 0, Bytes(Pattern(512)));
  marked.clear();
  StreamWrite(stream, 510, Bytes("0123456789"));
  EXPECT_EQ(marked.parts().small.container().size(), 2u);
  EXPECT_TRUE(marked.marks().directory.contains(0));
  EXPECT_TRUE(marked.marks().directory.contains(2));  // its size
}

TEST(Marks, TheHeaderWhenTheSmallTableGrows) {
  MarkedFile marked;
  CompoundStream stream = marked.stream("a");
  for (int i = 0; i < 2; ++i) {
    CompoundStream part = marked.stream("s" + std::to_string(i));
    StreamWrite(part, 0, Bytes(Pattern(4032)));  // 63 small blocks
  }
  StreamWrite(stream, 0, Bytes(Pattern(128)));
  marked.clear();
  EXPECT_EQ(marked.parts().header.smallTableBlockCount, 1u);
  StreamWrite(stream, 128, Bytes("x"));
  EXPECT_EQ(marked.parts().header.smallTableBlockCount, 2u);
  EXPECT_TRUE(marked.marks().header);
  EXPECT_EQ(Marks(marked.marks().smallTable), (Numbers{0, 1}));
}

TEST(Marks, TheEntryWhenItsStartChanges) {
  MarkedFile marked;
  marked.addEntries(9);
  CompoundStream stream = marked.stream("late");
  StreamSetSize(stream, 10);
  marked.clear();
  StreamWrite(stream, 0, Bytes("0123456789"));
  EXPECT_EQ(stream.entry()->start, 0u);
  EXPECT_EQ(Marks(marked.marks().directory), (Numbers{2}));
  marked.clear();
  StreamWrite(stream, 0, Bytes("9876543210"));
  EXPECT_TRUE(marked.marks().directory.empty());
}

TEST(Marks, TheEntryInTheMoveBetweenKinds) {
  MarkedFile marked;
  marked.addEntries(9);
  CompoundStream stream = marked.stream("late");
  marked.clear();
  StreamSetSize(stream, 5000);  // nothing to write again
  EXPECT_EQ(stream.entry()->start, kFree);
  EXPECT_EQ(Marks(marked.marks().directory), (Numbers{2}));
  marked.clear();
  StreamSetSize(stream, 7);
  EXPECT_EQ(Marks(marked.marks().directory), (Numbers{2}));
}

TEST(Marks, TheEntryAboveANewOne) {
  MarkedFile marked;
  marked.addEntries(10);  // e100 is entry 1, e109 entry 10
  marked.clear();
  marked.stream("e1000");  // entry 11, below e109
  EXPECT_EQ(marked.entries()[10].next, 11u);
  EXPECT_EQ(Marks(marked.marks().directory), (Numbers{2}));
  marked.clear();
  marked.stream("e");  // entry 12, before e100
  EXPECT_EQ(marked.entries()[1].prev, 12u);
  EXPECT_EQ(Marks(marked.marks().directory), (Numbers{0, 3}));
}

TEST(Marks, TheParentOfAFirstChild) {
  MarkedFile marked;
  marked.addEntries(3);
  marked.stream("folder/a");  // entries 4 and 5
  marked.addEntries(9);       // up to entry 11
  DirectoryTree::Entries entries = marked.entries();
  entries[4].child = kFree;
  marked.parts().directory = DirectoryTree(entries);
  marked.clear();
  marked.stream("folder/b");  // entry 12
  EXPECT_EQ(marked.entries()[4].child, 12u);
  EXPECT_EQ(Marks(marked.marks().directory), (Numbers{1, 3}));
}

TEST(Marks, SmallBlocksGivenBackByTheirPlaceInTheList) {
  MarkedFile marked;
  for (int i = 0; i < 3; ++i) {
    CompoundStream filler = marked.stream("s" + std::to_string(i));
    StreamWrite(filler, 0, Bytes(Pattern(4032)));
  }
  CompoundStream stream = marked.stream("late");
  StreamWrite(stream, 0, Bytes(Pattern(200)));
  EXPECT_EQ(List(stream.blocks), (Numbers{189, 190, 191, 192}));
  marked.clear();
  StreamSetSize(stream, 4096);
  for (uint64_t block = 189; block < 193; ++block) {
    EXPECT_EQ(marked.parts().smallTable.entries[block], kFree);
  }
  EXPECT_EQ(Marks(marked.marks().smallTable), (Numbers{0}));
}

TEST(Marks, NoneForATableBlockThatIsAdded) {
  MarkedFile marked;
  BlockList chain;
  while (marked.parts().bigTable.entries[126] == kFree) ExtendChain(marked.file(), chain);
  marked.parts().header.tableBlockCount = 1;
  for (uint64_t i = 0; i < 128; ++i) SetBlockEntry(marked.parts().bigTable, i, kEnd);
  marked.clear();
  AddBigTableBlock(marked.file());  // block 128, whose entry is in the second table block
  EXPECT_EQ(marked.parts().header.tableBlocks[1], 128u);
  EXPECT_TRUE(marked.marks().bigTable.empty());
  EXPECT_TRUE(marked.marks().header);
}

TEST(Flush, WritesTheHeaderOnlyWhenItIsMarked) {
  MarkedFile marked;
  marked.made().flush();
  EXPECT_FALSE(marked.marks().header);
  KernelFileSeek(marked.made().handle(), 0, KERNEL_SEEK_START);
  KernelFileWrite(marked.made().handle(), "other", 5);
  marked.made().flush();
  marked.marks().header = true;
  std::string bytes(512, '\0');
  KernelFileSeek(marked.made().handle(), 0, KERNEL_SEEK_START);
  KernelFileRead(marked.made().handle(), bytes.data(), 5);
  EXPECT_EQ(bytes.substr(0, 5), "other");
  marked.made().flush();
  EXPECT_EQ(marked.made().end().substr(0, 5), "\xD0\xCF\x11\xE0\xA1");
}

TEST(Flush, OfTheHeaderIsSeenByReadsOfTheContainer) {
  // Blocks of 128 bytes: block 0, the container here, begins inside of the header.
  MarkedFile marked;
  CompoundFile& file = marked.file();
  marked.parts().bigTable.blockSize = 128;
  SaveBigBlock(file, 2, 0, Bytes(std::string(128, '\0')));
  marked.parts().small.setContainer(Blocks({0}));
  unsigned char byte = 7;
  ASSERT_EQ(LoadSmallBlock(file, 1, {&byte, 1}), 1u);
  EXPECT_EQ(byte, 0);
  marked.clear();
  marked.marks().header = true;
  FlushCompoundFile(file);
  ASSERT_EQ(LoadSmallBlock(file, 1, {&byte, 1}), 1u);
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
    GrowingFile memory;
    KernelFileWriteLarge(memory.handle(), sound.data(), length);
    {
      CompoundFile file(memory.handle());
      OpenCompoundFile(file, true, false);
      EXPECT_EQ(file.isOpened(), length != 3);
      if (file.isOpened()) {
        CompoundStream stream = *file.open("s");
        StreamSetSize(stream, 9);
        file.openOrMake("other/one");
      }
      EXPECT_TRUE(OpenCompoundFile(file, true, true)) << length;
      EXPECT_FALSE(file.isOpened());
      EXPECT_EQ(file.size(), 0u);
      EXPECT_EQ(PartsOf(file).directory.entries().size(), 1u);
      EXPECT_EQ(PartsOf(file).big.bytesLeft(), UINT64_MAX);
      CompoundStream stream = *file.openOrMake("s");
      StreamWrite(stream, 0, Bytes("0123456789"));
      FlushCompoundFile(file);
    }
    EXPECT_EQ(memory.end() == sound, true) << length;
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
  EXPECT_EQ(List(made.parts().bigTable.entries), List(other.parts().bigTable.entries));
  EXPECT_EQ(List(made.parts().smallTable.entries), List(other.parts().smallTable.entries));
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
  ASSERT_TRUE(file.isOpened());
  KernelFileSeek(made.handle(), 0, KERNEL_SEEK_START);
  KernelFileWrite(made.handle(), "no", 2);
  EXPECT_FALSE(OpenCompoundFile(file, false, false));
  EXPECT_EQ(file.result(), CompoundNotCompound);
  EXPECT_FALSE(file.isOpened());
}

TEST(Open, LetsReadsAndSearchesCostAnew) {
  NewFile made;
  made.append("s", "text");
  made.flush();
  CompoundFile& file = made.file();
  file.spend(UINT64_MAX);
  PartsOf(file).directory = DirectoryTree({}, 0);
  ASSERT_TRUE(OpenCompoundFile(file, false, false));
  EXPECT_NE(PartsOf(file).big.bytesLeft(), 0u);
  EXPECT_NE(PartsOf(file).directory.stepsLeft(), 0u);
  PartsOf(file).directory = DirectoryTree({}, 0);
  LoadDirectory(PartsOf(file).directory, {});
  EXPECT_NE(PartsOf(file).directory.stepsLeft(), 0u);
}

}  // namespace
}  // namespace tarn::test
