// WrittenStore.h - a store that a builder wrote, opened; and heaps written byte by byte.
#ifndef TARN_TESTS_PSTSTORE_WRITTENSTORE_H
#define TARN_TESTS_PSTSTORE_WRITTENSTORE_H

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

#include "Tarnbase/PlainKernel.h"
#include "pststore/DbContext.h"
#include "pststore/Errors.h"
#include "support/FaultSweep.h"
#include "support/TempDirectory.h"
#include "support/pst/PstBytes.h"
#include "support/pst/PstFileBuilder.h"

namespace tarn::test {

// An opened file of these bytes.
class WrittenStore {
 public:
  explicit WrittenStore(const std::string& image) {
    const std::u16string path = directory_.write("store.pst", image).u16string();
    context_ = pststore::open_database(path.c_str());
  }

  const std::shared_ptr<pststore::db_context>& context() const { return context_; }
  // Lets go of the store, so that only what was made from it keeps it open.
  void release() { context_.reset(); }

 private:
  TempDirectory directory_;
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

inline constexpr uint8_t kPropertyHeap = 0xBC;
inline constexpr uint8_t kTableHeap = 0x7C;

// The map behind `page`, with the allocations one behind the other from `start` on.
inline std::string WithPageMap(std::string page, const std::vector<std::string>& allocations) {
  std::string map = LeBytes(allocations.size(), 2) + LeBytes(0, 2) + LeBytes(page.size(), 2);
  for (const std::string& bytes : allocations) {
    page += bytes;
    AppendLe(map, page.size(), 2);
  }
  PutLe(page, 0, page.size(), 2);
  return page + map;
}

// The first page of a heap; its allocations have the heap ids 0x20, 0x40, 0x60, ...
inline std::string HeapPage(uint8_t clientSignature, uint32_t root,
                            const std::vector<std::string>& allocations) {
  return WithPageMap("??\xEC" + LeBytes(clientSignature, 1) + LeBytes(root, 4) + LeBytes(0, 4),
                     allocations);
}

// A further page; the heap ids of page 1 are 0x10020, 0x10040, ...
inline std::string NextHeapPage(const std::vector<std::string>& allocations) {
  return WithPageMap("??", allocations);
}

// The header of a BTH.
inline std::string BthHeader(uint8_t keySize, uint8_t entrySize, uint8_t levels, uint32_t root) {
  return "\xB5" + LeBytes(keySize, 1) + LeBytes(entrySize, 1) + LeBytes(levels, 1) +
         LeBytes(root, 4);
}

// Two numbers of 4 bytes: a BTH record of a 4-byte key.
inline std::string Record4(uint32_t key, uint32_t value) {
  return LeBytes(key, 4) + LeBytes(value, 4);
}

// A BTH record of a property: key, type, value.
inline std::string Record2(uint16_t key, uint16_t type, uint32_t value) {
  return LeBytes(key, 2) + LeBytes(type, 2) + LeBytes(value, 4);
}

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
    return caught.key;
  } catch (const std::exception& caught) {
    ADD_FAILURE() << "another exception: " << typeid(caught).name() << " " << caught.what();
    return K{};
  }
  ADD_FAILURE() << "no exception";
  return K{};
}

// Runs the action with the first, second, ... allocation failing, until it comes through. Every
// failure has to be std::bad_alloc. What the store remembers then stays in it.
inline void FailEachAllocation(const std::function<void()>& action) {
  const uint64_t calls = FailInTurn(PlainKernelFaultMemory, [&](FaultedWork& faulted) {
    bool failed = false;
    try {
      faulted(action);
    } catch (const std::bad_alloc&) {
      failed = true;
    }
    EXPECT_EQ(failed, faulted.isReached());
  });
  EXPECT_GT(calls, 0U) << "nothing was allocated";
}

inline std::string Text(const pststore::byte_vector& bytes) {
  return std::string(bytes.begin(), bytes.end());
}

}  // namespace tarn::test

#endif
