// BadStores.h - damaged stores, each with what the exports throw for it.
#ifndef TARN_TESTS_ROAD_BADSTORES_H
#define TARN_TESTS_ROAD_BADSTORES_H

#include <string>
#include <vector>

#include "PstSamples.h"

namespace tarn::test {

struct BadStore {
  std::string bytes;
  std::string what;
  bool isLogicError;  // std::logic_error, else std::runtime_error
};

inline std::vector<BadStore> BadStores() {
  const std::string good = SampleStore(PstLayout::Unicode);
  std::string badHeader = good;
  badHeader[100] ^= 1;
  return {{badHeader, "header dwCRCPartial failure", false},
          {good.substr(0, 600), "fread failed", true},
          {good.substr(0, 100), "fread failed", true}};
}

}  // namespace tarn::test

#endif
