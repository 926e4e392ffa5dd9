// ArchiveStore FILE [headline | envelope | all]: reads a store as the archive commands do, to its
// end, for archive-store.sh. Prints what it met and the kernel's peak of memory.

#include <array>
#include <cstring>
#include <iostream>
#include <string>

#include "Tarnbase/PlainKernel.h"
#include "archive/store/StoreReader.h"

namespace {

using namespace tarn::archive;

struct Totals {
  uint64_t folders = 0;
  uint64_t items = 0;
  uint64_t troubles = 0;
  uint64_t bytes = 0;
};

void ReadToEnd(ByteSource& source, Totals& totals) {
  static std::array<char, 65536> buffer;
  for (;;) {
    const Outcome<size_t> count = source.read(buffer);
    if (!count || *count == 0) return;
    totals.bytes += *count;
  }
}

void ReadItem(Item& item, const std::string& how, Totals& totals) {
  const ItemFields& fields = item.fields(how == "headline" ? Detail::Headline : Detail::Envelope);
  totals.bytes += fields.subject.size() + fields.from.name.size();
  if (how != "all") return;
  const Bodies bodies = item.bodies();
  totals.bytes += bodies.html ? bodies.html->bytes.size() : 0;
  totals.bytes += bodies.text ? bodies.text->size() : 0;
  for (size_t i = 0; i < item.attachments().size(); ++i) {
    auto source = item.open(i);
    if (source) ReadToEnd(**source, totals);
  }
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 2) {
    std::cerr << "usage: ArchiveStore FILE [headline | envelope | all]\n";
    return 2;
  }
  const std::string how = count > 2 ? arguments[2] : "headline";
  auto reader = OpenStore(arguments[1], {});
  if (!reader) {
    std::cerr << reader.trouble().reason << "\n";
    return 1;
  }
  Totals totals;
  while (auto entry = (*reader)->next()) {
    totals.folders += std::holds_alternative<FolderStart>(*entry) ? 1 : 0;
    totals.troubles += std::holds_alternative<PlaceTrouble>(*entry) ? 1 : 0;
    if (auto* const item = std::get_if<std::unique_ptr<Item>>(&*entry)) {
      ++totals.items;
      ReadItem(**item, how, totals);
    }
  }
  PlainKernelUsageRecord usage = {};
  PlainKernelUsage(&usage);
  std::cout << totals.folders << " folders, " << totals.items << " items, " << totals.troubles
            << " troubles, " << totals.bytes << " bytes; peak of the kernel " << usage.peakBytes
            << " bytes\n";
}
