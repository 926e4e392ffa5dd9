// Files that are opened and created, their names and streams.

#include <gtest/gtest.h>

#include <new>

#include "CompoundFiles.h"
#include "Tarnbase/PlainKernel.h"
#include "support/FaultSweep.h"
#include "support/compound/CompoundBuilder.h"

namespace tarn::test {
namespace {

uint64_t TrackedObjects() {
  PlainKernelUsageRecord usage = {};
  PlainKernelUsage(&usage);
  return usage.liveTrackedObjects;
}

std::string Sample() {
  CompoundBuilder builder;
  builder.stream("a", "text").storage("folder").stream("inner", "more");
  return builder.write();
}

TEST(OpenFile, TellsWhetherItIsOne) {
  const MemoryMail sound(Sample());
  const CompoundFile file = CompoundFile::open(sound.handle());
  EXPECT_EQ(file.result(), CompoundOk);
  EXPECT_TRUE(file.isOpened());
  EXPECT_FALSE(file.isWritable());
  EXPECT_EQ(file.size(), Sample().size());
  EXPECT_EQ(file.entryCount(), 4u);

  const MemoryMail other("no compound file");
  EXPECT_EQ(CompoundFile::open(other.handle()).result(), CompoundNotCompound);
  std::string damaged = Sample();
  damaged[56] = 1;
  const MemoryMail bad(damaged);
  EXPECT_EQ(CompoundFile::open(bad.handle()).result(), CompoundDamaged);
  const CompoundFile none = CompoundFile::open(KERNEL_BAD_HANDLE);
  EXPECT_EQ(none.result(), CompoundOpenFailed);
  EXPECT_EQ(none.failedSeeks(), 1u);
}

TEST(OpenFile, NamesAndKinds) {
  LoadedFile loaded(Sample());
  CompoundFile& file = loaded.file();
  EXPECT_EQ(file.list("/").size(), 2u);
  EXPECT_EQ(std::string_view(file.list("folder").at(0)), "inner");
  EXPECT_TRUE(file.isStorage("/"));
  EXPECT_TRUE(file.isStorage("folder/"));
  EXPECT_FALSE(file.isStorage("a"));
  EXPECT_FALSE(file.isStorage("none"));
  EXPECT_FALSE(file.isStorage(""));
}

TEST(OpenFile, MakesNoStreams) {
  LoadedFile loaded(Sample());
  EXPECT_FALSE(loaded.file().openOrMake("new").has_value());
  EXPECT_TRUE(loaded.file().openOrMake("folder/inner").has_value());
  EXPECT_EQ(loaded.file().entryCount(), 4u);
}

TEST(OpenFile, HasNothingMarkedButTheRootsBlock) {
  LoadedFile loaded(Sample());
  const DirtyMarks& marks = WriterOf(loaded.file()).marks();
  EXPECT_FALSE(marks.header);
  EXPECT_FALSE(marks.meta);
  EXPECT_TRUE(marks.bigTable.empty());
  EXPECT_TRUE(marks.smallTable.empty());
  EXPECT_EQ(List(marks.directory.numbers()), (std::vector<uint64_t>{0}));
}

TEST(CreateFile, StreamsAreMadeAndFound) {
  NewFile made;
  CompoundFile& file = made.file();
  EXPECT_EQ(file.result(), CompoundOk);
  EXPECT_FALSE(file.open("s/t").has_value());
  std::optional<CompoundStream> stream = file.openOrMake("s/t");
  ASSERT_TRUE(stream.has_value());
  EXPECT_EQ(std::string_view(stream->fullName), "s/t");
  EXPECT_EQ(stream->entryIndex, 2u);
  EXPECT_TRUE(file.open("s/t").has_value());
  EXPECT_TRUE(file.isStorage("s"));
  EXPECT_FALSE(file.openOrMake("s").has_value());
  EXPECT_FALSE(file.openOrMake("").has_value());
  EXPECT_FALSE(file.openOrMake("/").has_value());
  EXPECT_EQ(file.entryCount(), 3u);
}

TEST(CreateFile, AFlushLeavesNothingMarked) {
  NewFile made;
  made.append("s", Pattern(5000));
  made.append("t", "text");
  EXPECT_TRUE(made.marks().header);
  EXPECT_FALSE(made.marks().bigTable.empty());
  EXPECT_FALSE(made.marks().smallTable.empty());
  EXPECT_FALSE(made.marks().directory.empty());
  made.flush();
  EXPECT_FALSE(made.marks().header);
  EXPECT_TRUE(made.marks().bigTable.empty());
  EXPECT_TRUE(made.marks().smallTable.empty());
  EXPECT_TRUE(made.marks().directory.empty());
}

TEST(CreateFile, KeepsTheKindOfTheRoot) {
  GrowingFile memory;
  CompoundFile file(memory.handle());
  DirectoryTree& tree = PartsOf(file).directory;
  tree.rootKind = 2;
  ASSERT_TRUE(OpenCompoundFile(file, true, true));
  EXPECT_EQ(tree.rootKind, 2u);
  FlushCompoundFile(file);
  ASSERT_TRUE(OpenCompoundFile(file, true, false));
  EXPECT_EQ(tree.rootKind, 2u);
}

TEST(Added, TellsTheEntriesAndThoseAboveThem) {
  DirectoryTree tree;
  KernelVector<DirectoryTree::Added> added;
  EXPECT_EQ(tree.findOrAdd("s/t", added), 2u);
  ASSERT_EQ(added.size(), 2u);
  EXPECT_EQ(added[0].entry, 1u);
  EXPECT_EQ(added[0].above, 0u);
  EXPECT_EQ(added[1].entry, 2u);
  EXPECT_EQ(added[1].above, 1u);
  EXPECT_EQ(tree.findOrAdd("s/u", added), 3u);
  ASSERT_EQ(added.size(), 3u);
  EXPECT_EQ(added[2].above, 2u);
  EXPECT_EQ(tree.findOrAdd("/s/t/", added), 2u);
  EXPECT_EQ(tree.findOrAdd("/", added), 0u);
  EXPECT_EQ(tree.findOrAdd("", added), kNoEntry);
  EXPECT_EQ(added.size(), 3u);
  DirectoryTree empty((DirectoryTree::Entries()));
  EXPECT_EQ(empty.findOrAdd("a", added), kNoEntry);
  EXPECT_EQ(empty.findOrAdd("/", added), kNoEntry);
}

TEST(Announced, WhileItLives) {
  const uint64_t before = TrackedObjects();
  const MemoryMail mail(Sample());
  {
    const CompoundFile file = CompoundFile::open(mail.handle());
    EXPECT_EQ(TrackedObjects(), before + 1);
  }
  EXPECT_EQ(TrackedObjects(), before);
}

TEST(Announced, NoLongerWhenOpeningThrows) {
  const uint64_t before = TrackedObjects();
  const MemoryMail mail(Sample());
  SweepFaults(PlainKernelFaultMemory, [&](FaultedWork& faulted) {
    bool failed = false;
    try {
      faulted([&] { CompoundFile::open(mail.handle()); });
    } catch (const std::bad_alloc&) {
      failed = true;
    }
    EXPECT_EQ(failed, faulted.isReached());
    EXPECT_EQ(TrackedObjects(), before);
  });
}

}  // namespace
}  // namespace tarn::test
