// PstDamage.h - changes a written PST image and makes its checksums fit again, so that a reader's
// tests of ids, signatures and checksums pass and the code after them is reached.
#ifndef TARN_TESTS_SUPPORT_PST_PSTDAMAGE_H
#define TARN_TESTS_SUPPORT_PST_PSTDAMAGE_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "support/pst/PstExtent.h"
#include "support/pst/PstFileBuilder.h"
#include "support/pst/PstLayout.h"

namespace tarn::test {

// An image with the writer's record of what is where.
class PstDamage {
 public:
  // Finishes the file.
  explicit PstDamage(PstFileBuilder& file);

  std::string& image() { return image_; }
  const std::vector<PstExtent>& extents() const { return extents_; }
  // The n-th extent of a kind in the order of the offsets, and the one of a block or page id;
  // without one, std::out_of_range.
  const PstExtent& at(PstExtentKind kind, size_t n = 0) const;
  const PstExtent& block(uint64_t bid) const;
  // Where an extent's trailer starts in the image.
  size_t trailer(const PstExtent& extent) const;

  // A number of the header, at an offset of PstOffsets; its checksums fit afterwards.
  PstDamage& header(size_t offset, uint64_t value, size_t width);
  // A number of a page or block, counted from its start; its checksum and trailer fit afterwards.
  // The bytes of an external block are taken as they are before the encoding.
  PstDamage& put(const PstExtent& extent, size_t offset, uint64_t value, size_t width);
  // A block's data before the encoding.
  std::string data(const PstExtent& extent) const;
  // Id, size, signature and checksum of an extent as they are recorded.
  void repair(const PstExtent& extent);
  void repairAll();

 private:
  PstLayout layout_;
  PstEncoding encoding_;
  std::string image_;
  std::vector<PstExtent> extents_;
};

// Makes the checksums of the header and the trailers of all pages and blocks that an image's
// B-trees reach fit what refers to them. Takes any bytes; references out of the image or to a page
// met before are passed over, so that the work is bounded by the size of the image.
void RepairPstImage(std::string& image);

}  // namespace tarn::test

#endif
