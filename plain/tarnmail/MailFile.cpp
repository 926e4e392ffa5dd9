#include "MailFile.h"

#include <memory>

#include "RecordingSiblings.h"
#include "RefusalReason.h"
#include "Settings.h"
#include "StatusText.h"
#include "StoreReason.h"
#include "console/Failure.h"

namespace tarn::host {

MailFile::MailFile(const FilterLibrary& filter, const MessageChoice& choice, PrivateFolder& folder)
    : filter_(filter),
      choice_(choice),
      folder_(folder),
      input_(choice.file, folder),
      file_(input_.path().c_str()),
      format_(FormatOf(ReadFront(input_.path().c_str(), kBytesOfFormat))) {
  if (!file_.isOpen()) throw Failure(ExitStatus::Usage, name(), "cannot be opened");
  if (choice_.messageNumber == 1 || format_ == MailFormat::TooShort) return;
  const std::optional<int32_t> count = countMessages();
  // A store without messages is for the filter to refuse.
  if (count && *count > 0 && choice_.messageNumber > *count) missMessage(*count);
}

std::optional<int32_t> MailFile::countMessages() const {
  if (format_ != MailFormat::Store) return 1;
  return CountMessages(input_.path().c_str());
}

// The result of fltInfo; for a sibling's refusal it throws.
int32_t MailFile::callInfo(bool textOnly, FilterSlot& slot,
                           const std::function<void(FilterInfoContext&)>& attach,
                           MessageAnswer& answer) const {
  HostFileInfo info = {};
  HostLoadOptions options = {};
  options.size = sizeof options;
  options.pageNumber = 1;
  FilterInfoContext context = {};
  context.path = input_.path().c_str();
  context.handle = file_.handle();
  context.info = &info;
  context.slot = slot.get();
  context.options = &options;
  context.messageNumber = choice_.messageNumber;
  context.textOnly = textOnly ? 1 : 0;
  attach(context);

  const int32_t status = filter_.info(name(), context);
  if (status == StatusSiblingRefused) {
    throw Refusal(name(), status, SiblingRefusalText(context.siblingResult));
  }
  if (status != StatusOk) return status;
  answer.format = info.format;
  if (info.format == FormatPst) {
    answer.messageCount = info.messageCount;
    answer.messageNumber = context.messageNumber + 1;
  }
  answer.pageCount = info.pageCount;
  answer.attachmentCount = info.attachmentCount;
  return StatusOk;
}

int32_t MailFile::askForDocument(bool textOnly, MessageAnswer& answer) const {
  RecordingSiblings siblings;
  FilterSlot slot(filter_);
  const auto attach = [&siblings](FilterInfoContext& context) { siblings.attachTo(context); };
  const int32_t status = callInfo(textOnly, slot, attach, answer);
  if (status == StatusOk) answer.document = siblings.takeDocument();
  return status;
}

void MailFile::check(int32_t status, const MessageAnswer& answer) const {
  if (status != StatusOk) refuse(status, true);
  if (answer.format == FormatPst && answer.messageNumber != choice_.messageNumber) {
    missMessage(answer.messageCount);
  }
}

MessageAnswer MailFile::read() const {
  MessageAnswer answer;
  check(askForDocument(choice_.textOnly, answer), answer);
  return answer;
}

MessageAnswer MailFile::ask(FilterSlot& slot,
                            const std::function<void(FilterInfoContext&)>& attach) const {
  MessageAnswer answer;
  check(callInfo(choice_.textOnly, slot, attach, answer), answer);
  return answer;
}

int32_t MailFile::load(FilterSlot& slot, int32_t pageNumber,
                       const std::function<void(FilterLoadContext&)>& prepare) const {
  HostLoadOptions options = {};
  options.size = sizeof options;
  options.pageNumber = pageNumber;
  FilterLoadContext context = {};
  context.path = input_.path().c_str();
  context.slot = slot.get();
  context.options = &options;
  context.status = StatusOk;
  context.messageNumber = choice_.messageNumber;
  context.textOnly = choice_.textOnly ? 1 : 0;
  prepare(context);
  return filter_.load(name(), context);
}

bool MailFile::showsOtherText() const {
  MessageAnswer ignored;
  return askForDocument(!choice_.textOnly, ignored) == StatusOk;
}

// On this route from now on.
bool MailFile::showsByTempFiles() const {
  UseTempFiles(folder_);
  MessageAnswer ignored;
  return askForDocument(choice_.textOnly, ignored) == StatusOk;
}

std::vector<Attachment> MailFile::attachments() const {
  const AttachmentOptions options = attachmentOptions();
  GetAttachmentInfoContext context = {};
  context.path = input_.path().c_str();
  context.options = &options;
  const int32_t status = filter_.attachmentInfo(name(), context);
  if (status != StatusOk) refuse(status, false);
  const std::unique_ptr<AttachmentInfoBlock, void (*)(AttachmentInfoBlock*)> block(
      context.block, ReleaseAttachments);
  return CopyAttachments(*block);
}

std::optional<KernelBytes> MailFile::extract(int32_t attachmentNumber) const {
  constexpr uint64_t kUntouched = UINT64_MAX;
  const AttachmentOptions options = attachmentOptions();
  ExtractAttachmentContext context = {};
  context.path = input_.path().c_str();
  context.attachmentNumber = attachmentNumber;
  context.size = kUntouched;
  context.options = &options;
  const int32_t status = filter_.extractAttachment(name(), context);
  if (status == StatusBadArgument && attachmentNumber < 1) {
    throw Refusal(name(), status,
                  "attachments are numbered from 1 (" + std::to_string(status) + ")");
  }
  if (status != StatusOk) refuse(status, false);
  if (context.size == kUntouched) return std::nullopt;
  return KernelBytes(context.data, context.size);
}

AttachmentOptions MailFile::attachmentOptions() const {
  AttachmentOptions options = {};
  options.messageNumber = choice_.messageNumber;
  return options;
}

void MailFile::refuse(int32_t status, bool isDocument) const {
  RefusedCall call;
  call.status = status;
  call.path = input_.path();
  call.messageNumber = choice_.messageNumber;
  call.textOnly = choice_.textOnly;
  if (isDocument) {
    call.showsOtherText = [this] { return showsOtherText(); };
    call.showsByTempFiles = [this] { return showsByTempFiles(); };
  }
  const std::optional<std::string> reason = RefusalReason(call);
  throw Refusal(name(), status,
                reason ? *reason + " (" + std::to_string(status) + ")" : StatusText(status));
}

void MailFile::missMessage(int32_t count) const {
  throw Failure(ExitStatus::Usage, name(),
                "has " + std::to_string(count) + (count == 1 ? " message" : " messages") +
                    "; there is no message " + std::to_string(choice_.messageNumber));
}

}  // namespace tarn::host
