// Stores as the archive reads them, to the end: all fields, bodies, attachments, properties and
// embedded items, with what no table names. The checksums of the input are made to fit first.
// Besides what the sanitizers see, a run aborts on any exception and when a read leaves anything
// behind in the kernel.

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "InputFile.h"
#include "Tarnbase/PlainKernel.h"
#include "archive/mapi/MapiMessage.h"
#include "archive/store/StoreReader.h"
#include "mutators/CallScript.h"
#include "mutators/LibFuzzer.h"
#include "mutators/PstMutator.h"
#include "support/pst/PstDamage.h"

namespace {

using namespace tarn::archive;

// A small file can describe many items, and large ones again and again.
constexpr int kMostItems = 300;
constexpr int kMostAttachments = 20;
constexpr size_t kMostBytes = 1 << 20;

void Check(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "%s\n", what);
  std::abort();
}

void CheckTroubles(const std::vector<Trouble>& troubles) {
  for (const Trouble& trouble : troubles) Check(!trouble.reason.empty(), "a trouble has no reason");
}

void ReadSource(ByteSource& source) {
  std::array<char, 4096> buffer;
  for (size_t all = 0; all < kMostBytes;) {
    const Outcome<size_t> count = source.read(buffer);
    if (!count || *count == 0) return;
    Check(*count <= buffer.size(), "more was read than there is room for");
    all += *count;
  }
}

void ReadProperties(mapi::MapiMessage& message) {
  mapi::PropertySet& set = message.properties();
  for (const mapi::PropertyTag& tag : set.tags()) {
    Check(set.typeOf(tag.id) == tag.type, "a property has two types");
    const auto bytes = set.bytes(tag.id, kMostBytes);
    Check(!bytes || bytes->size() <= kMostBytes, "a value is larger than its limit");
    set.values(tag.id, kMostBytes);
    const auto name = message.nameOf(tag.id);
    if (name) message.idOf(*name);
  }
}

class Reading {
 public:
  void read(Item& item, int depth) {
    Check(depth <= kDeepestItem, "an item is too deep");
    if (++items_ > kMostItems) return;
    Check(item.place().folder != nullptr, "an item has no folder");
    item.fields(Detail::Headline);
    item.fields(Detail::Envelope);
    CheckTroubles(item.bodies().troubles);
    item.originalHeaders();
    if (item.properties() != nullptr) ReadProperties(*item.properties());
    const size_t count = item.attachments().size();
    for (size_t i = 0; i < count && i < kMostAttachments; ++i) {
      const auto source = item.open(i);
      if (source) ReadSource(**source);
      if (item.attachments()[i].kind != AttachmentKind::Item) continue;
      const auto embedded = item.embedded(i);
      if (embedded) read(**embedded, depth + 1);
    }
    CheckTroubles(item.troubles());
  }

  bool isEnough() const { return items_ > kMostItems; }

 private:
  int items_ = 0;
};

void ReadStore(const std::string& path, bool recover) {
  const auto reader = OpenStore(path, {.recover = recover});
  if (!reader) {
    CheckTroubles({reader.trouble()});
    return;
  }
  Reading reading;
  std::string last;
  while (auto entry = (*reader)->next()) {
    if (auto* const item = std::get_if<std::unique_ptr<Item>>(&*entry)) {
      last = (*item)->place().id;
      reading.read(**item, 0);
    } else if (const auto* const trouble = std::get_if<PlaceTrouble>(&*entry)) {
      CheckTroubles({trouble->trouble});
    }
    if (reading.isEnough()) break;
  }
  if (!last.empty()) (*reader)->find(last);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const tarn::fuzz::InputFile file;
  std::string image(reinterpret_cast<const char*>(data), size);
  tarn::test::RepairPstImage(image);
  const std::string& path = file.write(image);

  PlainKernelUsageRecord before = {};
  PlainKernelUsage(&before);
  ReadStore(path, size % 2 != 0);
  PlainKernelUsageRecord after = {};
  PlainKernelUsage(&after);
  Check(after.liveBlocks == before.liveBlocks && after.openHandles == before.openHandles,
        "a read left something behind");
  return 0;
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned seed) {
  return tarn::fuzz::MutateInput(data, size, most, seed, tarn::fuzz::MutatePstImage,
                                 tarn::fuzz::MutateAsLibFuzzer);
}
