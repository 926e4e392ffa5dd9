// The header block in RTF, for any document and any value.
//
// The last byte of the input chooses the language of the labels and the kind of message. The
// document reaches to the last "}", and what follows it is the value of the rows; or else, by
// another bit, the whole input is the document.
//
// Besides what the sanitizers see, a run aborts when a render leaves anything behind in the kernel,
// changes a document that it refuses, or loses what comes after the first "\pard".

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "KernelText.h"
#include "Tarnbase/PlainKernel.h"
#include "render/Renderer.h"

namespace {

constexpr uint32_t kLanguages[] = {0x0409, 0x0411, 0x0804, 0x0418};

PlainKernelUsageRecord Usage() {
  PlainKernelUsageRecord usage = {};
  PlainKernelUsage(&usage);
  return usage;
}

void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "%s\n", what);
  std::abort();
}

void Check(tarn::Status status, std::string_view before, const tarn::SizedBytes& body) {
  const std::string_view after = body.view();
  if (status != StatusOk) {
    Require(after == before, "a refused document has changed");
    return;
  }
  const size_t paragraph = before.find("\\pard");
  if (paragraph == std::string_view::npos) {
    Require(after == before, "a document without a paragraph has changed");
    return;
  }
  const std::string_view tail = before.substr(paragraph);
  std::string_view text = after;
  Require(text.ends_with('\0'), "a document without a terminator");
  if (!tail.ends_with('\0')) text.remove_suffix(1);
  Require(text.ends_with(tail), "the text has gone");
}

void RenderMail(std::string_view value, std::string_view document) {
  tarn::MailMessage message;
  message.from = tarn::fuzz::KernelText(value);
  message.fromAddress = tarn::fuzz::KernelText(value);
  message.subject = tarn::fuzz::KernelText(value);
  message.to = tarn::fuzz::KernelText("Bob");
  message.body = tarn::fuzz::KernelText(document);
  Check(tarn::RenderMailMessage(&message, DocumentRtf), document, message.body);
}

void RenderMailFile(std::string_view value, std::string_view document) {
  tarn::EmlMessage message;
  message.documentKind = DocumentRtf;
  message.from = tarn::fuzz::KernelText(value);
  message.to = tarn::fuzz::KernelText("Bob");
  message.body = tarn::fuzz::KernelText(document);
  Check(tarn::RenderEmlMessage(message), document, message.body);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const uint8_t variant = data[size - 1];
  std::string_view document(reinterpret_cast<const char*>(data), size - 1);
  std::string_view value = document;
  if ((variant & 8) == 0) {
    const size_t length = document.rfind('}') + 1;  // 0 without a brace
    value = document.substr(length);
    document = document.substr(0, length);
  }
  PlainKernelSetLanguage(kLanguages[variant & 3]);

  const PlainKernelUsageRecord before = Usage();
  if ((variant & 4) != 0) {
    RenderMailFile(value, document);
  } else {
    RenderMail(value, document);
  }
  const PlainKernelUsageRecord after = Usage();
  Require(after.liveBlocks == before.liveBlocks && after.reportedBytes == before.reportedBytes &&
              after.liveTrackedObjects == before.liveTrackedObjects,
          "a render left something behind");
  return 0;
}
