// A mail, read by the archive and written anew as if it were none: its text and attachments as a
// mail of its own, alone and in an mbox. Besides what the sanitizers see, a run aborts when the
// mail that is written is read with other attachments, when its headers end where they should not,
// or when the mbox has more mails than one.
#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "WrittenMail.h"
#include "archive/writers/Writers.h"
#include "host/Expect.h"
#include "mutators/CallScript.h"
#include "mutators/LibFuzzer.h"
#include "mutators/MailMutator.h"

using namespace tarn;
using namespace tarn::archive;
using fuzz::Expect;

namespace {

// The item without its bytes, so that a mail has to be made of it.
class WithoutOriginal final : public Item {
 public:
  explicit WithoutOriginal(Item& item) : item_(item) {}
  const ItemPlace& place() const override { return item_.place(); }
  const ItemFields& fields(Detail detail) override { return item_.fields(detail); }
  Bodies bodies() override { return item_.bodies(); }
  Outcome<std::string> originalHeaders() override { return item_.originalHeaders(); }
  const std::vector<Attachment>& attachments() override { return item_.attachments(); }
  Outcome<std::unique_ptr<ByteSource>> open(size_t index) override { return item_.open(index); }
  Outcome<std::unique_ptr<Item>> embedded(size_t index) override { return item_.embedded(index); }
  Outcome<std::unique_ptr<ByteSource>> original() override { return std::unique_ptr<ByteSource>(); }
  const std::vector<Trouble>& troubles() const override { return item_.troubles(); }

 private:
  Item& item_;
};

// Of the attachments that are data, sorted.
std::vector<std::string> DataOf(Item& item) {
  constexpr size_t kLargest = size_t{1} << 24;
  std::vector<std::string> all;
  for (size_t index = 0; index < item.attachments().size(); ++index) {
    const Attachment& attachment = item.attachments()[index];
    if (attachment.kind != AttachmentKind::Data || attachment.trouble) continue;
    const auto source = item.open(index);
    if (!source) continue;
    auto bytes = ReadAll(**source, kLargest);
    if (bytes) all.push_back(std::move(*bytes));
  }
  std::sort(all.begin(), all.end());
  return all;
}

void ExpectOneMail(std::string_view mbox) {
  Expect(mbox.starts_with("From ") && mbox.ends_with("\n\n"), "no mail of an mbox");
  Expect(mbox.find("\nFrom ") == mbox.npos, "a line that begins a mail");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const auto item = fuzz::ItemOfMail({reinterpret_cast<const char*>(data), size});
  if (item == nullptr) return 0;
  WithoutOriginal bare(*item);
  fuzz::TextSink written;
  const Written result = WriteEml(bare, written);
  const auto again = fuzz::ItemOfMail(written.text);
  Expect(again != nullptr, "what is written is no mail");
  if (result.lost.empty() && again->troubles().empty()) {
    const std::vector<std::string> before = DataOf(*item);
    const std::vector<std::string> after = DataOf(*again);
    Expect(std::includes(after.begin(), after.end(), before.begin(), before.end()),
           "an attachment is not there again");
  }
  fuzz::TextSink box;
  WriteMbox(bare, box);
  ExpectOneMail(box.text);
  fuzz::TextSink original;
  WriteMbox(*item, original);
  ExpectOneMail(original.text);
  return 0;
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned seed) {
  return fuzz::MutateInput(data, size, most, seed, fuzz::MutateMail, fuzz::MutateAsLibFuzzer);
}
