// Siblings.h - the siblings of a host that notes everything: what each is given goes into the
// Answer in hand. Siblings get no value of the host's, so a Siblings object serves the thread that
// it was made on, one at a time.
#ifndef TARN_TESTS_SUPPORT_ROAD_SIBLINGS_H
#define TARN_TESTS_SUPPORT_ROAD_SIBLINGS_H

#include <filesystem>
#include <functional>

#include "TarnPst.h"
#include "support/road/Answer.h"

namespace tarn::test {

class Siblings {
 public:
  // `tempFolder` is where the kernel puts temporary files; what lies in it beside a document has
  // nothing to do with the document. Empty: files beside documents are not looked at.
  explicit Siblings(std::filesystem::path tempFolder);
  Siblings(const Siblings&) = delete;
  Siblings& operator=(const Siblings&) = delete;
  ~Siblings();

  static void set(FilterInfoContext& context);
  static void set(FilterLoadContext& context);
  // A target object of kind 10.
  static void* directTarget();

  Answer* answer = nullptr;      // takes the notes; null for none
  int32_t result = StatusOk;     // of the siblings
  bool keepsData = false;        // an info sibling leaves data for later calls
  bool marksItsText = false;     // texts begin with a mark that their size does not count
  std::function<void()> inside;  // runs in each sibling, before it answers

  // The rest is the siblings'.
  void take(const char* route, const std::string& details, HostFileInfo* info,
            const HostLoadOptions* options);
  void takeFile(const char16_t* path);
  void takeMemory(const void* data, uint64_t size, const HostFileInfo* info);

 private:
  void takeNeighbours(const std::filesystem::path& document);

  std::filesystem::path tempFolder_;
  Siblings* before_;
};

}  // namespace tarn::test

#endif
