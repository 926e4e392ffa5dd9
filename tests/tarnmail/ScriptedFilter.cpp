// A filter whose answers are told by the file: its text is one of the words below. After "!BDN " a
// word means the same, in a file that begins like a store.
//
//   throw TEXT     a damaged store: a std::runtime_error
//   throw-memory   std::bad_alloc
//   throw-number   something that is no std::exception
//   status N       that result
//   lost-file      the sibling is sent to a document file that does not exist
//   store          a store of 12 messages with an RTF document; hostile attachments
//   list           as store, with the record in a list
//   leak           as store, with a block left behind
#include <charconv>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>

#include "TarnPst.h"
#include "Tarnbase/Kernel.h"

namespace {

constexpr const char16_t* kHere = u"ScriptedFilter.cpp";
using namespace std::literals;

constexpr auto kDocument = "{\\rtf1 twelve\0\\par}"sv;

std::string ReadScript(uint64_t handle) {
  char text[256];
  KernelFileSeek(handle, 0, KERNEL_SEEK_START);
  const std::string script(text, KernelFileRead(handle, text, sizeof text));
  return script.substr(0, 5) == "!BDN " ? script.substr(5) : script;
}

std::string ReadScript(const char16_t* path) {
  const uint64_t handle = KernelFileOpen(path, KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
  std::string script = ReadScript(handle);
  KernelFileClose(handle);
  return script;
}

bool Begins(std::string_view script, std::string_view word) {
  return script.substr(0, word.size()) == word;
}

// The part of every call that the script may end: throws, or returns a result other than 1.
int32_t Obey(const std::string& script) {
  if (script == "throw-memory") throw std::bad_alloc();
  if (script == "throw-number") throw 7;
  if (Begins(script, "throw ")) throw std::runtime_error(script.substr(6));
  int32_t status = StatusOk;
  if (Begins(script, "status ")) {
    std::from_chars(script.data() + 7, script.data() + script.size(), status);
  }
  return status;
}

void* NewBlock(uint64_t bytes) { return KernelAllocZero(bytes, 1, __LINE__, kHere); }

char16_t* NewText(std::u16string_view text) {
  auto* const block = static_cast<char16_t*>(NewBlock((text.size() + 1) * sizeof(char16_t)));
  text.copy(block, text.size());
  return block;
}

void StoreRecord(FilterDataSlot& slot, bool inList) {
  void* const record = NewBlock(64);
  if (!inList) {
    slot.data = record;
    slot.dataFormat = slot.defaultFormat;
    return;
  }
  auto* const list = static_cast<FilterDataList*>(NewBlock(sizeof(FilterDataList)));
  list->signature = FILTER_DATA_LIST_SIGNATURE;
  list->count = 1;
  list->size = sizeof(FilterDataList);
  list->entries[0].data = record;
  slot.data = list;
  slot.dataFormat = FILTER_DATA_LIST_FORMAT;
}

void SetProperty(AttachmentProperty& property, std::u16string_view name,
                 std::u16string_view value) {
  name.copy(property.name, 128);
  value.copy(property.value, 128);
}

// An item that would move the cursor, turn the direction of writing and break the line, and one of
// which nothing is known.
AttachmentInfoItem* HostileItems() {
  auto* const items =
      static_cast<AttachmentInfoItem*>(NewBlock(2 * uint64_t{sizeof(AttachmentInfoItem)}));
  items[0].number = 1;
  items[0].name = NewText(u"\x1b[2Jevil\u202Egnp.\r\nexe\x7f\u0085\xD83D");
  items[0].description = NewText(u"two\nlines");
  items[0].creationTime = INT64_MIN;
  items[0].modificationTime = 1779204705;
  items[0].propertyCount = 5;
  items[0].properties =
      static_cast<AttachmentProperty*>(NewBlock(5 * uint64_t{sizeof(AttachmentProperty)}));
  SetProperty(items[0].properties[0], u"MimeType", u"text/\u001B[31mred");
  // Both arrays are full: no NUL ends them.
  SetProperty(items[0].properties[1], std::u16string(128, u'n'), std::u16string(128, u'v'));
  SetProperty(items[0].properties[2], u"Content-ID", u"<\u0007>");
  SetProperty(items[0].properties[3], u"Content-ID", u"a second\none");
  SetProperty(items[0].properties[4], u"\x1b[2J", u"");
  items[1].number = 2;
  return items;
}

}  // namespace

int32_t fltInfo(FilterInfoContext* context) {
  const std::string script = ReadScript(context->handle);
  const int32_t status = Obey(script);
  if (status != StatusOk) return status;

  HostFileInfo asked = {};
  HostLoadOptions options = *context->options;
  asked.format = SiblingRtf;
  const bool lost = script == "lost-file";
  context->siblingResult =
      lost ? context->infoByName(u"there-is-no-such-file.html", &asked, sizeof asked, 3, &options)
           : context->infoFromMemory(kDocument.data(), &asked, sizeof asked, kDocument.size(), 3,
                                     &options);
  if (context->siblingResult != StatusOk) return StatusSiblingRefused;
  if (asked.xResolution == 0 || asked.yResolution == 0) return StatusFailed;

  if (script == "leak") NewBlock(100);
  StoreRecord(*context->slot, script == "list");
  context->info->format = FormatPst;
  context->info->messageCount = 12;
  context->info->pageCount = asked.pageCount;
  context->info->attachmentCount = 2;
  context->messageNumber = (context->messageNumber > 12 ? 12 : context->messageNumber) - 1;
  return StatusOk;
}

int32_t fltLoad(FilterLoadContext*) { return StatusFailed; }

int32_t fltFreeData(void* data, int32_t) {
  KernelFree(data, __LINE__, kHere);
  return StatusOk;
}

int32_t fltGetAttachmentInfo(GetAttachmentInfoContext* context) {
  const int32_t status = Obey(ReadScript(context->path));
  if (status != StatusOk) return status;
  context->block = static_cast<AttachmentInfoBlock*>(NewBlock(sizeof(AttachmentInfoBlock)));
  context->block->format = FormatPst;
  context->block->itemSize = sizeof(AttachmentInfoItem);
  context->block->itemCount = 2;
  context->block->items = HostileItems();
  return StatusOk;
}

// Attachment 1 has the message number as its only byte, attachment 2 nothing at all and no block.
int32_t fltExtractAttachment(ExtractAttachmentContext* context) {
  const int32_t status = Obey(ReadScript(context->path));
  if (status != StatusOk) return status;
  if (context->attachmentNumber == 1) {
    context->data = NewBlock(1);
    const char byte = static_cast<char>(context->options->messageNumber);
    std::memcpy(context->data, &byte, 1);
    context->size = 1;
  } else if (context->attachmentNumber == 2) {
    context->data = nullptr;
    context->size = 0;
  }
  return StatusOk;
}

int64_t TARN_Load(uint64_t, uint64_t, uint64_t, uint64_t) { return 0; }
