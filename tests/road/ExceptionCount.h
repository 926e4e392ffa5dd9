// ExceptionCount.h - how a thread counts the exceptions that come from the filter.
#ifndef TARN_TESTS_ROAD_EXCEPTIONCOUNT_H
#define TARN_TESTS_ROAD_EXCEPTIONCOUNT_H

#include <gtest/gtest.h>

#include <exception>
#include <thread>

#include "BadStores.h"
#include "support/FakeHost.h"

namespace tarn::test {

// std::uncaught_exceptions() of a thread that has caught so many exceptions of the filter.
inline int UncaughtAfter(int times) {
  FakeHost host(BadStores()[0].bytes);
  int count = 0;
  std::thread([&] {
    for (int i = 0; i < times; ++i) {
      try {
        host.attachmentInfo();
      } catch (const std::exception&) {
      }
    }
    count = std::uncaught_exceptions();
  }).join();
  return count;
}

}  // namespace tarn::test

#endif
