// AttachmentCalls.h - the part of AllCalls.h that lists and extracts attachments.
#ifndef TARN_TESTS_SUPPORT_ROAD_ATTACHMENTCALLS_H
#define TARN_TESTS_SUPPORT_ROAD_ATTACHMENTCALLS_H

#include "TarnPst.h"
#include "support/road/AllCalls.h"

namespace tarn::test {

class AttachmentCalls {
 public:
  AttachmentCalls(const std::filesystem::path& file, const AllCallsOptions& options,
                  const TakeAnswer& take);

  void run();

 private:
  uint64_t list();  // the number of attachments; 0 when the call fails
  void extract(int32_t number);
  void extractToFile(int32_t number);

  const AllCallsOptions& options_;
  const TakeAnswer& take_;
  const std::u16string path_;
  PatternedRecord<AttachmentOptions> attachmentOptions_;
  PatternedRecord<GetAttachmentInfoContext> listContext_;
  PatternedRecord<ExtractAttachmentContext> extractContext_;
};

}  // namespace tarn::test

#endif
