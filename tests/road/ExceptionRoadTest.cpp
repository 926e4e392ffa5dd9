// Exceptions of the filter in another module: type, text and memory come through, from every export
// that reads a store, as often as one likes and on several threads.

#include <gtest/gtest.h>

#include <exception>
#include <functional>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "BadStores.h"
#include "support/FakeHost.h"

namespace tarn::test {
namespace {

const std::vector<std::function<int32_t(FakeHost&)>> kCalls = {
    [](FakeHost& host) { return host.info(); }, [](FakeHost& host) { return host.load(); },
    [](FakeHost& host) { return host.attachmentInfo(); },
    [](FakeHost& host) { return host.extract(1); }};

// What `call` throws as T; "none" when it throws nothing, "other" for another type.
template <typename T>
std::string WhatOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const T& error) {
    return error.what();
  } catch (...) {
    return "other";
  }
  return "none";
}

TEST(ExceptionRoad, IsCaughtByItsTypesAndKeepsItsText) {
  for (const BadStore& bad : BadStores()) {
    for (const auto& road : kCalls) {
      FakeHost host(bad.bytes);
      const auto call = [&] { road(host); };
      EXPECT_EQ(WhatOf<std::exception>(call), bad.what);
      EXPECT_EQ(WhatOf<std::runtime_error>(call), bad.isLogicError ? "other" : bad.what);
      EXPECT_EQ(WhatOf<std::logic_error>(call), bad.isLogicError ? bad.what : "other");
      EXPECT_EQ(WhatOf<std::bad_alloc>(call), "other");
    }
  }
}

TEST(ExceptionRoad, PassesThroughCodeOfTheHost) {
  struct Noticed {
    ~Noticed() { *place = true; }
    bool* place;
  };
  const BadStore bad = BadStores()[0];
  FakeHost host(bad.bytes);
  bool cleanedUp = false;
  const std::string what = WhatOf<std::exception>([&] {
    const Noticed noticed = {&cleanedUp};
    try {
      host.info();
    } catch (const std::exception&) {
      throw;
    }
  });
  EXPECT_EQ(what, bad.what);
  EXPECT_TRUE(cleanedUp);
}

// One call of the list export, which takes no sibling and so may run beside others.
std::string WhatOfList(const char16_t* path) {
  return WhatOf<std::exception>([path] {
    AttachmentOptions options = {};
    options.messageNumber = 1;
    GetAttachmentInfoContext context = {};
    context.path = path;
    context.options = &options;
    fltGetAttachmentInfo(&context);
  });
}

TEST(ExceptionRoad, CanBeThrownManyTimesOnTwoThreads) {
  const BadStore bad = BadStores()[0];
  FakeHost host(bad.bytes);
  constexpr int kTimes = 2000;
  int good[2] = {};
  const auto repeat = [&](int& count) {
    for (int i = 0; i < kTimes; ++i) count += WhatOfList(host.path().c_str()) == bad.what ? 1 : 0;
  };
  std::thread first(repeat, std::ref(good[0]));
  std::thread second(repeat, std::ref(good[1]));
  first.join();
  second.join();
  EXPECT_EQ(good[0], kTimes);
  EXPECT_EQ(good[1], kTimes);
}

}  // namespace
}  // namespace tarn::test
