#include "MailFile.h"

#include <filesystem>
#include <memory>
#include <system_error>

#include "Failure.h"
#include "Paths.h"
#include "StatusText.h"
#include "SystemErrors.h"
#include "SystemFiles.h"
#include "Text.h"

namespace tarn::host {
namespace {

// The path for the filter, once it is known that a regular file of that name can be opened: the
// kernel's own open says no more than that it failed.
std::u16string CheckedPath(const std::string& file) {
  const auto unusable = [&file](const std::string& why) {
    return Failure(ExitStatus::Usage, file, why);
  };
  if (file.empty()) throw Failure(ExitStatus::Usage, "empty file name");
  const std::optional<std::u16string> wide = WideFromUtf8(file);
  if (!wide) throw unusable("the name is not UTF-8");

  const std::filesystem::path path = PathFromUtf8(file);
  std::error_code error;
  const FileKind kind = KindOfFile(path, error);
  if (kind == FileKind::Missing) throw unusable("no such file");
  if (kind == FileKind::Unknown) throw unusable(ErrorText(error));
  if (kind == FileKind::Directory) throw unusable("is a directory");
  if (kind != FileKind::Regular) throw unusable("is not a regular file");
  error = CheckReadable(path);
  if (error) throw unusable(ErrorText(error));
  return *wide;
}

}  // namespace

MailFile::MailFile(const FilterLibrary& filter, const MessageChoice& choice)
    : filter_(filter), choice_(choice), path_(CheckedPath(choice.file)), file_(path_.c_str()) {
  if (!file_.isOpen()) throw Failure(ExitStatus::Usage, choice_.file, "cannot be opened");
}

MailFile::~MailFile() {
  if (slot_.data == nullptr) return;
  if (slot_.dataFormat != FILTER_DATA_LIST_FORMAT) {
    filter_.freeData(slot_.data);
    return;
  }
  auto* const list = static_cast<FilterDataList*>(slot_.data);
  if (list->entries[0].data != nullptr) filter_.freeData(list->entries[0].data);
  ReleaseBlock(list);
}

MessageAnswer MailFile::read() {
  const RecordingSiblings siblings;
  HostFileInfo info = {};
  HostLoadOptions options = {};
  options.size = sizeof options;
  options.pageNumber = 1;
  FilterInfoContext context = {};
  context.path = path_.c_str();
  context.handle = file_.handle();
  context.info = &info;
  context.slot = &slot_;
  context.options = &options;
  context.messageNumber = choice_.messageNumber;
  context.textOnly = choice_.textOnly ? 1 : 0;
  siblings.attachTo(context);

  const int32_t status = filter_.info(choice_.file, context);
  if (status == StatusSiblingRefused) refuse(SiblingRefusalText(context.siblingResult));
  if (status != StatusOk) refuse(StatusText(status));

  MessageAnswer answer;
  answer.format = info.format;
  if (info.format == FormatPst) {
    answer.messageCount = info.messageCount;
    answer.messageNumber = context.messageNumber + 1;
  }
  answer.pageCount = info.pageCount;
  answer.attachmentCount = info.attachmentCount;
  answer.document = siblings.document();
  return answer;
}

std::vector<Attachment> MailFile::attachments() const {
  const AttachmentOptions options = attachmentOptions();
  GetAttachmentInfoContext context = {};
  context.path = path_.c_str();
  context.options = &options;
  const int32_t status = filter_.attachmentInfo(choice_.file, context);
  if (status != StatusOk) refuse(StatusText(status));
  const std::unique_ptr<AttachmentInfoBlock, void (*)(AttachmentInfoBlock*)> block(
      context.block, ReleaseAttachments);
  return CopyAttachments(*block);
}

std::optional<KernelBytes> MailFile::extract(int32_t attachmentNumber) const {
  constexpr uint64_t kUntouched = UINT64_MAX;
  const AttachmentOptions options = attachmentOptions();
  ExtractAttachmentContext context = {};
  context.path = path_.c_str();
  context.attachmentNumber = attachmentNumber;
  context.size = kUntouched;
  context.options = &options;
  const int32_t status = filter_.extractAttachment(choice_.file, context);
  if (status != StatusOk) refuse(StatusText(status));
  if (context.size == kUntouched) return std::nullopt;
  return KernelBytes(context.data, context.size);
}

AttachmentOptions MailFile::attachmentOptions() const {
  AttachmentOptions options = {};
  options.messageNumber = choice_.messageNumber;
  return options;
}

void MailFile::refuse(const std::string& why) const {
  throw Failure(ExitStatus::Failed, choice_.file, why);
}

}  // namespace tarn::host
