// Damages small stores byte by byte and reads all that is left: every read has to end in a value or
// in an exception of the store, within bounds, and leave nothing in the kernel.
//
// Bytes of pages and blocks are damaged where the tests of ids and signatures do not see it: what
// guards an extent is made to fit again. The guards themselves, and the header, are damaged as they
// are.

#include <gtest/gtest.h>

#include <fstream>

#include "support/StoreReading.h"
#include "support/TempDirectory.h"
#include "support/pst/PstDamage.h"
#include "support/pst/StoreBuilder.h"

namespace tarn::test {
namespace {

struct Kind {
  PstLayout layout;
  PstEncoding encoding;
};

constexpr std::array<Kind, 6> kKinds = {{{PstLayout::Ansi, PstEncoding::None},
                                         {PstLayout::Ansi, PstEncoding::Permute},
                                         {PstLayout::Ansi, PstEncoding::Cyclic},
                                         {PstLayout::Unicode, PstEncoding::None},
                                         {PstLayout::Unicode, PstEncoding::Permute},
                                         {PstLayout::Unicode, PstEncoding::Cyclic}}};

// A store with every structure that there is: trees of several pages, properties and rows in
// allocations and in subnodes, values in a tree of blocks, attachments.
class SmallStore {
 public:
  explicit SmallStore(const Kind& kind) : builder_(Options(kind)) {
    FolderBuilder& inbox = builder_.folder(u"Inbox");
    inbox.contentsTable({.rows = TableShape::Rows::Subnode});
    inbox.message().subject(u"first").html(std::string(9000, 'h')).attachment(u"a.txt", "text");
    inbox.message()
        .subject("second")
        .attachmentTable({.rows = TableShape::Rows::Subnode, .rowIndexWidth = 2})
        .attachment(u"b.bin", std::string(4000, 'b'));
    builder_.folder(u"Sent").message().subject(u"third").importance(2).submitTime(1);
  }

  PstFileBuilder& file() {
    builder_.finish();
    return builder_.file();
  }

 private:
  static StoreOptions Options(const Kind& kind) {
    StoreOptions options = StoreOptions::Smallest(kind.layout, kind.encoding);
    options.file.nbt = {.leafFanOut = 3, .innerFanOut = 2};
    options.file.bbt = {.leafFanOut = 4, .innerFanOut = 3};
    return options;
  }

  StoreBuilder builder_;
};

class Damager {
 public:
  explicit Damager(const Kind& kind)
      : kind_(kind), store_(kind), damage_(store_.file()), sound_(damage_.image()) {
    path_ = directory_.write("store.pst", sound_);
    const StoreTotals totals = read(false);
    EXPECT_EQ(totals.messages, 3U);
    EXPECT_EQ(totals.attachments, 2U);
    EXPECT_EQ(totals.failures, 0U);
  }

  // Every step-th byte of the header.
  void header(size_t step) {
    const PstOffsets& at = OffsetsOf(kind_.layout);
    for (size_t i = 0; i < at.headerSize; i += step) {
      for (const uint8_t value : kValues) {
        damage_.image()[i] = static_cast<char>(damage_.image()[i] ^ value);
        tryImage();
        damage_.header(i, static_cast<uint8_t>(sound_[i]) ^ value, 1);
        tryImage();
      }
    }
  }

  // Every step-th byte of what an extent holds, with guards that fit.
  void contents(size_t step) {
    size_t skipped = 0;
    for (const PstExtent& extent : damage_.extents()) {
      if (!IsBlock(extent.kind) && extent.kind != PstExtentKind::NbtPage &&
          extent.kind != PstExtentKind::BbtPage) {
        continue;
      }
      const std::string data = damage_.data(extent);
      const size_t size =
          IsBlock(extent.kind) ? data.size() : damage_.trailer(extent) - extent.offset;
      for (size_t i = 0; i < size; ++i) {
        // Of long runs of one byte, the beginning has it all.
        if (i > 64 && data.compare(i - 64, 64, data, i - 63, 64) == 0) continue;
        if (skipped++ % step != 0) continue;
        for (const uint8_t value : kValues) {
          damage_.put(extent, i, static_cast<uint8_t>(data[i]) ^ value, 1);
          tryImage();
        }
      }
    }
  }

  // Every byte of the trailers.
  void trailers(size_t step) {
    for (const PstExtent& extent : damage_.extents()) {
      const size_t size = OffsetsOf(kind_.layout).blockTrailer;
      for (size_t i = 0; i < size; i += step) {
        const size_t at = damage_.trailer(extent) + i;
        damage_.image().at(at) = static_cast<char>(~damage_.image().at(at));
        tryImage();
      }
    }
  }

  // Of the images, those that failed to give something up.
  uint64_t failures() const { return failures_; }

 private:
  static constexpr std::array<uint8_t, 2> kValues = {0xFF, 0x01};

  StoreTotals read(bool inEveryWay) {
    try {
      return ReadStore(
          pststore::open_database(path_.u16string().c_str()),
          {.inEveryWay = inEveryWay, .maxBytes = 1 << 20, .maxRows = 1000, .maxFailures = 1000});
    } catch (const std::exception& caught) {
      EXPECT_TRUE(IsStoreException(caught)) << caught.what();
      return {.failures = 1};
    }
  }

  // Reads the damaged image, every fourth in every way, and repairs the damage.
  void tryImage() {
    write(damage_.image());
    const bool inEveryWay = ++images_ % 4 == 0;
    const StoreTotals totals = read(inEveryWay);
    if (!inEveryWay && totals.failures != 0) ++failures_;
    damage_.image() = sound_;
  }

  void write(const std::string& image) {
    std::ofstream file(path_, std::ios::binary | std::ios::in | std::ios::out);
    file.write(image.data(), static_cast<std::streamsize>(image.size()));
    ASSERT_TRUE(file.good());
  }

  Kind kind_;
  SmallStore store_;
  PstDamage damage_;
  const std::string sound_;
  TempDirectory directory_;
  std::filesystem::path path_;
  uint64_t images_ = 0;
  uint64_t failures_ = 0;
};

TEST(StoreDamage, Headers) {
  for (const Kind& kind : kKinds) {
    Damager damager(kind);
    damager.header(kind.encoding == PstEncoding::None ? 2 : 13);
    EXPECT_GT(damager.failures(), 50U);
  }
}

TEST(StoreDamage, PagesAndBlocks) {
  for (const Kind& kind : kKinds) {
    Damager damager(kind);
    damager.contents(kind.encoding == PstEncoding::None ? 4 : 23);
    EXPECT_GT(damager.failures(), 50U);
  }
}

TEST(StoreDamage, Trailers) {
  for (const Kind& kind : kKinds) {
    Damager damager(kind);
    damager.trailers(kind.encoding == PstEncoding::None ? 1 : 5);
    EXPECT_GT(damager.failures(), 50U);
  }
}

}  // namespace
}  // namespace tarn::test
