// MailImages.h - the pictures that a mail brings along for its HTML.
#ifndef TARN_ARCHIVE_MAILIMAGES_H
#define TARN_ARCHIVE_MAILIMAGES_H

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "archive/model/Item.h"
#include "archive/writers/SinkBuffer.h"

namespace tarn::archive {

// The media type that bytes tell, of pictures that browsers show: "image/png"; empty for others.
std::string_view ImageTypeOf(std::string_view bytes);

struct MailImage {
  std::string_view type;
  std::string bytes;
};

void PutDataUrl(const MailImage& image, SinkBuffer& out);

class MailImages {
 public:
  // What pictures may come to in one file, each counted as often as it is shown. Larger ones, and
  // what comes after so many, are not shown.
  static constexpr size_t kLargestImage = size_t{16} << 20;
  static constexpr size_t kAllImages = size_t{64} << 20;

  // The item outlives this.
  MailImages(Item& item, std::vector<Trouble>& lost);

  // The attachment that an address means ("cid:...", its content location, or its name); none for
  // any other. A store may have lost the content id of "image001.png@01D0.12": then the name
  // counts.
  std::optional<size_t> find(std::string_view address) const;

  // The picture that an attachment is; none where it is no picture, cannot be read, or is too much.
  std::optional<MailImage> load(size_t index);

 private:
  Item& item_;
  std::vector<Trouble>& lost_;
  std::map<std::string, size_t, std::less<>> ids_;        // in lower case
  std::map<std::string, size_t, std::less<>> idsByName_;  // the same, of those without a content id
  std::map<std::string, size_t, std::less<>> places_;
  size_t room_ = kAllImages;
  std::set<size_t> failed_;  // not to be read again
};

}  // namespace tarn::archive

#endif
