#include "support/road/AllCalls.h"

#include "support/road/AttachmentCalls.h"
#include "support/road/DocumentCalls.h"

namespace tarn::test {
namespace {

// Hands on the answer of one call.
template <typename Call>
void Note(const TakeAnswer& take, const char* name, Call call) {
  Answer answer;
  answer.call = name;
  answer.outcome = std::to_string(call());
  take(answer);
}

}  // namespace

void MakeAllCalls(const std::filesystem::path& file, const AllCallsOptions& options,
                  const TakeAnswer& take) {
  DocumentCalls(file, options, take).run();
  if (options.asksForAttachments) AttachmentCalls(file, options, take).run();
}

void MakeCallsWithoutFile(const TakeAnswer& take) {
  Note(take, "info of null", [] { return fltInfo(nullptr); });
  Note(take, "load of null", [] { return fltLoad(nullptr); });
  Note(take, "free null", [] { return fltFreeData(nullptr, 0); });
  Note(take, "list of null", [] { return fltGetAttachmentInfo(nullptr); });
  Note(take, "extract of null", [] { return fltExtractAttachment(nullptr); });
  Note(take, "TARN_Load", [] { return TARN_Load(1, 2, 3, 4); });
}

int32_t CountMessages(const std::filesystem::path& file, int32_t most) {
  const TakeAnswer ignore = [](const Answer&) {};
  for (int32_t message = 1; message <= most; ++message) {
    for (const bool textOnly : {true, false}) {
      AllCallsOptions options;
      options.message = message;
      options.textOnly = textOnly;
      const std::optional<int32_t> count = DocumentCalls(file, options, ignore).messageCount();
      if (count) return *count;
    }
  }
  return 0;
}

}  // namespace tarn::test
