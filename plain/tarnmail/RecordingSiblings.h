// RecordingSiblings.h - siblings that lay nothing out: they keep what the filter hands to them.
//
// The filter calls a sibling without a value of the host's, so that one recorder at a time is the
// one that listens.
#ifndef TARN_TARNMAIL_RECORDINGSIBLINGS_H
#define TARN_TARNMAIL_RECORDINGSIBLINGS_H

#include <cstdint>
#include <string>
#include <utility>

#include "TarnPst.h"

namespace tarn::host {

// The document as a sibling got it. By name, `bytes` is what the file held.
struct RecordedDocument {
  int32_t sibling = 0;  // TarnSibling; 0 as long as no sibling was asked
  std::string bytes;
};

class RecordingSiblings {
 public:
  RecordingSiblings();
  RecordingSiblings(const RecordingSiblings&) = delete;
  RecordingSiblings& operator=(const RecordingSiblings&) = delete;
  ~RecordingSiblings();

  // Puts the sibling functions into the context. Their answer has 96 dots per inch and no page:
  // nothing was laid out.
  //   StatusOk             the document was recorded;
  //   StatusOutOfMemory    without memory;
  //   any other            its file could not be read, as ReadWholeFile tells.
  void attachTo(FilterInfoContext& context) const;

  // Hands over what was recorded; a document may be large.
  RecordedDocument takeDocument() { return std::move(document_); }

 private:
  static int32_t InfoByName(const char16_t* path, void* info, int32_t infoSize, int32_t mode,
                            void* options);
  static int32_t InfoFromMemory(const void* data, void* info, int32_t infoSize, uint64_t size,
                                int32_t mode, void* options);

  static RecordingSiblings* active_;
  RecordedDocument document_;
};

}  // namespace tarn::host

#endif
