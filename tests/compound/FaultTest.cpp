// Every allocation, read, seek and write that fails in turn.

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <optional>

#include "CompoundFiles.h"
#include "Tarnbase/PlainKernel.h"
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
  CompoundStorage storage;
  CompoundFile file(storage, handle);
  LoadCompoundFile(file);
  std::string text = std::to_string(file.result) + (file.opened ? "+" : "-");
  if (failedSeeks != nullptr) *failedSeeks = file.failedSeeks;
  if (!file.opened) return text;
  for (const char* path : {"/", "folder"}) {
    for (const KernelString& name : ListEntryNames(storage, path)) text += std::string(name) + ";";
  }
  for (const char* path : {"big", "small", "folder/a name that is longer than 15", "none"}) {
    std::optional<CompoundStream> stream = OpenStream(storage, path);
    if (!stream) continue;
    std::string bytes(stream->size(), '?');
    const uint64_t read =
        StreamRead(*stream, 0, reinterpret_cast<unsigned char*>(bytes.data()), bytes.size());
    text += std::to_string(read) + ":" + bytes.substr(0, read);
  }
  if (failedSeeks != nullptr) *failedSeeks = file.failedSeeks;
  return text;
}

const std::string kWhole =
    "0+big;small;folder;a name that is longer than 15;4700:" + Pattern(4700) +
    "200:" + Pattern(200) + "5:inner";

TEST(Faults, MemoryOfReading) {
  const MemoryMail mail(Image());
  uint64_t failures = 0;
  for (uint64_t n = 1;; ++n) {
    PlainKernelFailAt(PlainKernelFaultMemory, n);
    try {
      EXPECT_EQ(ReadingOf(mail.handle()), kWhole);
      break;
    } catch (const std::bad_alloc&) {
      ++failures;
    }
    ASSERT_LT(n, 1000u);
  }
  PlainKernelFailAt(PlainKernelFaultMemory, 0);
  EXPECT_GT(failures, 10u);
}

// How many calls of a group work makes: the fault is set far off, and what is left of the way to it
// is counted.
uint64_t CallsOf(int32_t group, uint64_t handle, const std::function<void()>& work) {
  constexpr uint64_t kFar = 100000;
  PlainKernelFailAt(group, kFar);
  work();
  uint64_t left = 1;
  unsigned char byte = 0;
  if (group == PlainKernelFaultSeek) {
    while (KernelFileSeek(handle, 0, KERNEL_SEEK_START) != KERNEL_BAD_HANDLE) ++left;
  } else {
    KernelFileSeek(handle, 0, KERNEL_SEEK_START);
    while (KernelFileRead(handle, &byte, 1) == 1) {
      KernelFileSeek(handle, 0, KERNEL_SEEK_START);
      ++left;
    }
  }
  PlainKernelFailAt(group, 0);
  return kFar - left;
}

TEST(Faults, ReadsThatFallShort) {
  const MemoryMail mail(Image());
  const uint64_t calls =
      CallsOf(PlainKernelFaultRead, mail.handle(), [&] { ReadingOf(mail.handle()); });
  // Header, table, small table, directory, the container, and the whole blocks and the rest of the
  // big stream.
  EXPECT_EQ(calls, 7u);
  uint64_t seen = 0;
  for (uint64_t n = 1; n <= calls; ++n) {
    PlainKernelFailAt(PlainKernelFaultRead, n);
    const std::string reading = ReadingOf(mail.handle());
    EXPECT_EQ(reading.substr(0, 2), "0+") << n;  // the count is not looked at
    EXPECT_EQ(reading.size(), kWhole.size()) << n;
    if (reading != kWhole) ++seen;
  }
  EXPECT_EQ(ReadingOf(mail.handle()), kWhole);
  EXPECT_EQ(seen, 2u);  // the last bytes of a stream's reads are zeros then
}

TEST(Faults, WhatAShortReadOfAStreamLeavesIsZero) {
  const MemoryMail mail(Image());
  CompoundStorage storage;
  CompoundFile file(storage, mail.handle());
  LoadCompoundFile(file);
  std::optional<CompoundStream> stream = OpenStream(storage, "big");
  std::string bytes(4700, '?');
  PlainKernelFailAt(PlainKernelFaultRead, 1);
  EXPECT_EQ(StreamRead(*stream, 0, reinterpret_cast<unsigned char*>(bytes.data()), 4700), 4700u);
  std::string expected = Pattern(4700);
  expected[4607] = '\0';  // the end of the nine whole blocks
  EXPECT_EQ(bytes, expected);

  std::string block(512, '?');
  PlainKernelFailAt(PlainKernelFaultRead, 1);
  EXPECT_EQ(
      LoadBigBlock(file, stream->blocks[0], reinterpret_cast<unsigned char*>(block.data()), 512),
      512u);
  EXPECT_EQ(block, Pattern(4700).substr(0, 511) + "?");  // here it stays as it was
}

TEST(Faults, SeeksThatFail) {
  const MemoryMail mail(Image());
  const uint64_t calls =
      CallsOf(PlainKernelFaultSeek, mail.handle(), [&] { ReadingOf(mail.handle()); });
  EXPECT_EQ(calls, 8u);  // to the end and back, and in front of each read behind the header's
  for (uint64_t n = 1; n <= calls; ++n) {
    KernelFileSeek(mail.handle(), 0, KERNEL_SEEK_START);
    PlainKernelFailAt(PlainKernelFaultSeek, n);
    uint64_t failedSeeks = 0;
    const std::string reading = ReadingOf(mail.handle(), &failedSeeks);
    EXPECT_EQ(failedSeeks, 1u) << n;
    // A file that does not load has no content; a stream that is not reached gives fewer bytes.
    constexpr uint64_t kSeeksOfLoading = 5;
    if (n <= kSeeksOfLoading) {
      EXPECT_EQ(reading, "1-") << n;
    } else {
      EXPECT_TRUE(reading.starts_with("0+") && reading.size() < kWhole.size()) << n;
    }
  }
  PlainKernelFailAt(PlainKernelFaultSeek, 0);
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
  uint64_t failures = 0;
  for (uint64_t n = 1;; ++n) {
    ASSERT_LT(n, 2000u);
    bool failed = false;
    {
      // The memory file's own growth is the kernel's, too: what it cannot take is not written.
      std::optional<NewFile> made;
      try {
        PlainKernelFailAt(PlainKernelFaultMemory, n);
        made.emplace();
        WriteAll(*made);
        PlainKernelFailAt(PlainKernelFaultMemory, 0);
        failed = made->end() != whole;
      } catch (const std::bad_alloc&) {
        failed = true;
      }
      PlainKernelFailAt(PlainKernelFaultMemory, 0);
    }
    if (!failed) break;
    ++failures;
  }
  EXPECT_GT(failures, 20u);
}

TEST(Faults, WritesThatFallShortAreNotNoticed) {
  std::string whole;
  {
    NewFile made;
    WriteAll(made);
    whole = made.end();
  }
  uint64_t differing = 0;
  for (uint64_t n = 1; n < 200; ++n) {
    NewFile made;
    PlainKernelFailAt(PlainKernelFaultWrite, n);
    EXPECT_EQ(made.append("small", Pattern(200)), 200u) << n;
    EXPECT_EQ(made.append("folder/big", Pattern(70000)), 70000u) << n;
    EXPECT_EQ(made.append("grows", Pattern(30)), 30u) << n;
    EXPECT_EQ(made.append("grows", Pattern(5000)), 5000u) << n;
    for (const char* name : {"a", "b", "c", "d", "e"}) EXPECT_EQ(made.append(name, "text"), 4u);
    made.flush();
    const std::string bytes = made.end();
    EXPECT_LE(bytes.size(), whole.size());
    if (bytes != whole) ++differing;
  }
  PlainKernelFailAt(PlainKernelFaultWrite, 0);
  EXPECT_GT(differing, 100u);
}

TEST(Faults, SeeksThatFailWhileWriting) {
  for (uint64_t n = 1; n < 200; ++n) {
    NewFile made;
    PlainKernelFailAt(PlainKernelFaultSeek, n);
    WriteAll(made);
    PlainKernelFailAt(PlainKernelFaultSeek, 0);
    LoadedFile file(made.end());
    EXPECT_LE(file.file().result, 3u);
  }
}

}  // namespace
}  // namespace tarn::test
