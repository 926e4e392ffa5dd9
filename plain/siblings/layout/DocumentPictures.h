// DocumentPictures.h - the images that a document refers to: its `data:` URLs, and files of its own
// folder by plain name. Nothing else is looked for anywhere.
#ifndef TARN_SIBLINGS_LAYOUT_DOCUMENTPICTURES_H
#define TARN_SIBLINGS_LAYOUT_DOCUMENTPICTURES_H

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "siblings/layout/Engine.h"
#include "siblings/layout/images/Picture.h"

namespace tarn::pages {

// More pixels in all images of a document are left out.
inline constexpr int64_t kMostDocumentPixels = 100'000'000;

class DocumentPictures {
 public:
  DocumentPictures(std::vector<std::string> dataUrls, DocumentFolder& folder)
      : dataUrls_(std::move(dataUrls)), folder_(folder) {}

  // Null when there is none, or none that can be shown. Each is read and decoded once.
  const Picture* find(std::string_view source);

 private:
  std::optional<std::string> bytesOf(std::string_view source);
  std::optional<std::string> fileNamed(std::string_view source);

  std::vector<std::string> dataUrls_;
  DocumentFolder& folder_;  // used until the document is laid out
  std::map<std::string, std::optional<Picture>, std::less<>> known_;
  int64_t pixels_ = 0;
};

// The bytes of a `data:` URL; nothing when it is none. Blanks within base64 are passed over.
std::optional<std::string> DecodeDataUrl(std::string_view url);

// Each "%" and two digits replaced by their byte.
std::string DecodePercents(std::string_view text);

}  // namespace tarn::pages

#endif
