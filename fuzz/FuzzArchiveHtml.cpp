// A mail, read by the archive and written as HTML. Besides what the sanitizers see, a run aborts
// when the page is not what HarmlessPage.h expects.
#include <string_view>

#include "HarmlessPage.h"
#include "WrittenMail.h"
#include "archive/writers/Writers.h"
#include "mutators/CallScript.h"
#include "mutators/LibFuzzer.h"
#include "mutators/MailMutator.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace tarn;
  const auto item = fuzz::ItemOfMail({reinterpret_cast<const char*>(data), size});
  if (item == nullptr) return 0;
  fuzz::TextSink page;
  archive::WriteHtml(*item, {"files/a b.pdf", "files/c"}, page);
  fuzz::ExpectHarmlessPage(page.text);
  return 0;
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned seed) {
  return tarn::fuzz::MutateInput(data, size, most, seed, tarn::fuzz::MutateMail,
                                 tarn::fuzz::MutateAsLibFuzzer);
}
