// RTF made harmless. Besides what the sanitizers see, a run aborts when the result does not end
// where its first group ends, has a group that must not be followed, or a field whose instruction
// is more than a page number or a link into the net; and when it cannot be made harmless again.
#include <array>
#include <string>

#include "host/Expect.h"
#include "siblings/office/FieldInstruction.h"
#include "siblings/office/HarmlessRtf.h"
#include "siblings/office/RtfScanner.h"
#include "siblings/office/RtfText.h"

namespace {

using namespace tarn::pages;
using tarn::fuzz::Expect;

constexpr std::array<std::string_view, 8> kForbidden = {
    "objdata", "filetbl", "template", "fontfile", "nextfile", "mailmerge", "subdocument", "info"};

void CheckInstruction(const std::string& text) {
  if (text.empty()) return;
  const bool isKnown = text == "PAGE" || text == "NUMPAGES" || text.starts_with("HYPERLINK \"") ||
                       text.starts_with("HYPERLINK \\l \"");
  Expect(isKnown && !HarmlessInstruction(text).empty(), "an instruction that is not harmless");
}

void Check(const std::string& rtf) {
  Expect(rtf.starts_with("{\\rtf1"), "another beginning");
  RtfScanner scanner(rtf);
  int64_t depth = 0;
  size_t read = 0;
  while (const auto token = scanner.next()) {
    Expect(read == 0 || depth > 0, "something after the end");
    read += token->bytes.size();
    Expect(token->whole, "a token without its end");
    if (token->kind == RtfTokenKind::GroupStart) ++depth;
    if (token->kind == RtfTokenKind::GroupEnd) --depth;
    Expect(depth <= kDeepestGroup, "groups that nest too deep");
    if (token->kind != RtfTokenKind::Word) continue;
    for (const std::string_view name : kForbidden) {
      Expect(token->name != name, "a group that must not be followed");
    }
    if (token->name == "fldinst") {
      CheckInstruction(RestOfGroup(scanner));
      --depth;
    }
  }
  Expect(depth == 0, "a group without its end");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view document(reinterpret_cast<const char*>(data), size);
  std::string harmless;
  try {
    harmless = HarmlessRtf(document, Paper::A4);
  } catch (const PageFailure& failure) {
    Expect(failure.trouble() == Trouble::BadDocument, "another trouble");
    return 0;
  }
  Check(harmless);
  Check(HarmlessRtf(harmless, Paper::Letter));
  return 0;
}
