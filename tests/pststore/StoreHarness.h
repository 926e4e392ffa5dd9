// StoreHarness.h - what the tests of the store share: stores that are opened, and exceptions.
#ifndef TARN_TESTS_PSTSTORE_STOREHARNESS_H
#define TARN_TESTS_PSTSTORE_STOREHARNESS_H

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <typeinfo>

#include "Tarnbase/PlainKernel.h"
#include "pststore/DbContext.h"
#include "pststore/Errors.h"
#include "pststore/RawImage.h"
#include "support/FaultSweep.h"
#include "support/TempDirectory.h"
#include "support/pst/PstFileBuilder.h"

namespace tarn::test {

// The system has names like these, too.
using pststore::ulong;
using pststore::ulonglong;
using pststore::ushort;

inline std::string Text(pststore::bytes_view bytes) {
  return std::string(bytes.begin(), bytes.end());
}

// What a block gives of so many bytes.
inline std::string ReadRaw(pststore::data_block& block, size_t count, ulonglong offset) {
  std::string bytes(count, '?');
  bytes.resize(block.read_raw(RoomOf(bytes), offset));
  return bytes;
}

// A file, and the store in it.
class OpenedImage {
 public:
  explicit OpenedImage(const RawImage& image) : OpenedImage(image.bytes()) {}
  explicit OpenedImage(const std::string& bytes) : path_(directory_.write("a.pst", bytes)) {}

  std::shared_ptr<pststore::db_context> open() const {
    return pststore::open_database(path_.u16string().c_str());
  }

 private:
  TempDirectory directory_;
  std::filesystem::path path_;
};

// An opened file of these bytes.
class WrittenStore {
 public:
  explicit WrittenStore(const std::string& bytes) : file_(bytes), context_(file_.open()) {}

  const std::shared_ptr<pststore::db_context>& context() const { return context_; }
  // Lets go of the store, so that only what was made from it keeps it open.
  void release() { context_.reset(); }

 private:
  OpenedImage file_;
  std::shared_ptr<pststore::db_context> context_;
};

// A store of one node.
class NodeStore {
 public:
  static constexpr uint32_t kNid = 0x8004;

  explicit NodeStore(const PstNodeParts& parts, PstLayout layout = PstLayout::Unicode,
                     uint32_t nid = kNid)
      : nid_(nid), store_(Image(parts, layout, nid)) {}
  // Of these pages.
  explicit NodeStore(std::initializer_list<std::string> pages)
      : NodeStore(PstNodeParts::OfPages(pages)) {}

  pststore::node node() const { return store_.context()->lookup_node(nid_); }
  WrittenStore& store() { return store_; }

 private:
  static std::string Image(const PstNodeParts& parts, PstLayout layout, uint32_t nid) {
    PstFileBuilder file({.layout = layout});
    file.node(nid, parts);
    return file.bytes();
  }

  uint32_t nid_;
  WrittenStore store_;
};

// The text of the exception that the action throws, which has to be of exactly this class.
template <typename Exception, typename Action>
std::string Thrown(Action&& action) {
  try {
    action();
  } catch (const Exception& caught) {
    EXPECT_EQ(typeid(caught), typeid(Exception)) << typeid(caught).name();
    return caught.what();
  } catch (const std::exception& caught) {
    return std::string("another exception: ") + typeid(caught).name() + " " + caught.what();
  }
  return "no exception";
}

// The key that the action does not find.
template <typename K, typename Action>
K MissingKey(Action&& action) {
  try {
    action();
  } catch (const pststore::key_not_found<K>& caught) {
    EXPECT_STREQ(caught.what(), "key not found");
    return caught.key;
  } catch (const std::exception& caught) {
    ADD_FAILURE() << "another exception: " << typeid(caught).name() << " " << caught.what();
    return K{};
  }
  ADD_FAILURE() << "no exception";
  return K{};
}

// How many calls of a fault group the action makes: it throws an exception of this class when any
// of them fails. What the store remembers stays in it.
template <typename Exception = std::exception, typename Action>
uint64_t CallsOf(int32_t group, const Action& action) {
  return FailInTurn(group, [&](FaultedWork& faulted) {
    bool failed = false;
    try {
      faulted(action);
    } catch (const Exception&) {
      failed = true;
    }
    EXPECT_EQ(failed, faulted.isReached());
  });
}

// The same for an action on a store that was just opened; opening does not count.
template <typename Action>
uint64_t CallsOf(int32_t group, const OpenedImage& file, const Action& action) {
  return SweepFaults(group, [&](FaultedWork& faulted) {
    const auto context = file.open();
    bool failed = false;
    try {
      faulted([&] { action(context); });
    } catch (const std::exception&) {
      failed = true;
    }
    EXPECT_EQ(failed, faulted.isReached());
  });
}

// Every allocation of the action fails once.
inline void FailEachAllocation(const std::function<void()>& action) {
  EXPECT_GT(CallsOf<std::bad_alloc>(PlainKernelFaultMemory, action), 0U);
}

// The tests of both layouts.
class BothLayouts : public ::testing::TestWithParam<bool> {
 protected:
  bool unicode() const { return GetParam(); }
  PstLayout layout() const { return unicode() ? PstLayout::Unicode : PstLayout::Ansi; }
  uint64_t maxData() const { return unicode() ? 8176 : 8180; }
  uint64_t maxChildren() const { return unicode() ? 1021 : 1019; }
};

inline std::string LayoutName(const ::testing::TestParamInfo<bool>& info) {
  return info.param ? "Unicode" : "Ansi";
}

}  // namespace tarn::test

#endif
