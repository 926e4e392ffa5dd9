// Every allocation, read, seek and write that fails in turn.

#include <gtest/gtest.h>

#include <new>
#include <optional>

#include "CompoundFiles.h"
#include "support/FaultSweep.h"
#include "support/compound/CompoundBuilder.h"

namespace tarn::test {
namespace {

std::string Image() {
  CompoundBuilder builder;
  builder.stream("big", Pattern(4700)).stream("small", Pattern(200));
  builder.storage("folder").stream("a name that is longer than 15", "inner");
  return builder.write();
}

std::string ReadingOf(uint64_t handle, uint64_t* failedSeeks = nullptr) {
  CompoundFile file = CompoundFile::open(handle);
  std::string text = std::to_string(file.result()) + (file.isOpened() ? "+" : "-");
  if (failedSeeks != nullptr) *failedSeeks = file.failedSeeks();
  if (!file.isOpened()) return text;
  for (const char* path : {"/", "folder"}) {
    for (const KernelString& name : file.list(path)) text += std::string(name) + ";";
  }
  for (const char* path : {"big", "small", "folder/a name that is longer than 15", "none"}) {
    std::optional<CompoundStream> stream = file.open(path);
    if (!stream) continue;
    std::string bytes(stream->size(), '?');
    const uint64_t read = StreamRead(*stream, 0, Room(bytes));
    text += std::to_string(read) + ":" + bytes.substr(0, read);
  }
  if (failedSeeks != nullptr) *failedSeeks = file.failedSeeks();
  return text;
}

const std::string kWhole =
    "0+big;small;folder;a name that is longer than 15;4700:" + Pattern(4700) +
    "200:" + Pattern(200) + "5:inner";

TEST(Faults, MemoryOfReading) {
  const MemoryMail mail(Image());
  const auto round = [&](FaultedWork& faulted) {
    bool failed = false;
    try {
      EXPECT_EQ(faulted([&] { return ReadingOf(mail.handle()); }), kWhole);
    } catch (const std::bad_alloc&) {
      failed = true;
    }
    EXPECT_EQ(failed, faulted.isReached());
  };
  const uint64_t calls = SweepFaults(PlainKernelFaultMemory, round, FaultKinds::OneAndFrom);
  EXPECT_GT(calls, 10u);
  EXPECT_LT(calls, 1000u);
}

TEST(Faults, ReadsThatFallShort) {
  const MemoryMail mail(Image());
  uint64_t seen = 0;
  const uint64_t calls = SweepFaults(PlainKernelFaultRead, [&](FaultedWork& faulted) {
    const std::string reading = faulted([&] { return ReadingOf(mail.handle()); });
    EXPECT_EQ(reading.substr(0, 2), "0+");  // the count is not looked at
    EXPECT_EQ(reading.size(), kWhole.size());
    if (!faulted.isReached()) {
      EXPECT_EQ(reading, kWhole);
    }
    if (reading != kWhole) ++seen;
  });
  // Header, table, small table, directory, the container, and the whole blocks and the rest of the
  // big stream.
  EXPECT_EQ(calls, 7u);
  EXPECT_EQ(ReadingOf(mail.handle()), kWhole);
  EXPECT_EQ(seen, 2u);  // the last bytes of a stream's reads are zeros then
}

TEST(Faults, WhatAShortReadOfAStreamLeavesIsZero) {
  const MemoryMail mail(Image());
  CompoundFile file = CompoundFile::open(mail.handle());
  std::optional<CompoundStream> stream = file.open("big");
  std::string bytes(4700, '?');
  PlainKernelFailAt(PlainKernelFaultRead, 1);
  EXPECT_EQ(StreamRead(*stream, 0, Room(bytes)), 4700u);
  std::string expected = Pattern(4700);
  expected[4607] = '\0';  // the end of the nine whole blocks
  EXPECT_EQ(bytes, expected);

  std::string block(512, '?');
  PlainKernelFailAt(PlainKernelFaultRead, 1);
  EXPECT_EQ(LoadBigBlock(file, stream->blocks[0], Room(block)), 512u);
  EXPECT_EQ(block, Pattern(4700).substr(0, 511) + "?");  // here it stays as it was
}

TEST(Faults, SeeksThatFail) {
  const MemoryMail mail(Image());
  const uint64_t calls = SweepFaults(PlainKernelFaultSeek, [&](FaultedWork& faulted) {
    KernelFileSeek(mail.handle(), 0, KERNEL_SEEK_START);
    uint64_t failedSeeks = 0;
    const std::string reading = faulted([&] { return ReadingOf(mail.handle(), &failedSeeks); });
    EXPECT_EQ(failedSeeks, faulted.isReached() ? 1u : 0u);
    // A file that does not load has no content; a stream that is not reached gives fewer bytes.
    constexpr uint64_t kSeeksOfLoading = 5;
    if (!faulted.isReached()) {
      EXPECT_EQ(reading, kWhole);
    } else if (faulted.ordinal() <= kSeeksOfLoading) {
      EXPECT_EQ(reading, "1-");
    } else {
      EXPECT_TRUE(reading.starts_with("0+") && reading.size() < kWhole.size());
    }
  });
  EXPECT_EQ(calls, 8u);  // to the end and back, and before each read after the header's
  EXPECT_EQ(ReadingOf(mail.handle()), kWhole);
}

void WriteAll(NewFile& made) {
  made.append("small", Pattern(200));
  made.append("folder/big", Pattern(70000));
  made.append("grows", Pattern(30));
  made.append("grows", Pattern(5000));
  for (const char* name : {"a", "b", "c", "d", "e"}) made.append(name, "text");
  made.flush();
}

TEST(Faults, MemoryOfWriting) {
  std::string whole;
  {
    NewFile made;
    WriteAll(made);
    whole = made.end();
  }
  const auto round = [&](FaultedWork& faulted) {
    bool failed = false;
    // The memory file's own growth is the kernel's, too: what it cannot take is not written.
    std::optional<NewFile> made;
    try {
      faulted([&] {
        made.emplace();
        WriteAll(*made);
      });
      failed = made->end() != whole;
    } catch (const std::bad_alloc&) {
      failed = true;
    }
    EXPECT_EQ(failed, faulted.isReached());
  };
  const uint64_t calls = SweepFaults(PlainKernelFaultMemory, round, FaultKinds::OneAndFrom);
  EXPECT_GT(calls, 20u);
  EXPECT_LT(calls, 2000u);
}

TEST(Faults, WritesThatFallShortAreNotNoticed) {
  std::string whole;
  {
    NewFile made;
    WriteAll(made);
    whole = made.end();
  }
  uint64_t differing = 0;
  SweepFaults(PlainKernelFaultWrite, [&](FaultedWork& faulted) {
    NewFile made;
    faulted([&] {
      EXPECT_EQ(made.append("small", Pattern(200)), 200u);
      EXPECT_EQ(made.append("folder/big", Pattern(70000)), 70000u);
      EXPECT_EQ(made.append("grows", Pattern(30)), 30u);
      EXPECT_EQ(made.append("grows", Pattern(5000)), 5000u);
      for (const char* name : {"a", "b", "c", "d", "e"}) EXPECT_EQ(made.append(name, "text"), 4u);
      made.flush();
    });
    const std::string bytes = made.end();
    EXPECT_LE(bytes.size(), whole.size());
    EXPECT_TRUE(faulted.isReached() || bytes == whole);
    if (bytes != whole) ++differing;
  });
  EXPECT_GT(differing, 100u);
}

TEST(Faults, SeeksThatFailWhileWriting) {
  const uint64_t calls = SweepFaults(PlainKernelFaultSeek, [](FaultedWork& faulted) {
    NewFile made;
    faulted([&] { WriteAll(made); });
    LoadedFile file(made.end());
    EXPECT_LE(file.file().result(), faulted.isReached() ? CompoundDamaged : CompoundOk);
  });
  EXPECT_GT(calls, 100u);
}

}  // namespace
}  // namespace tarn::test
