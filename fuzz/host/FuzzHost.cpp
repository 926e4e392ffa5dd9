#include "host/FuzzHost.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <exception>
#include <optional>

#include "host/AttachmentCalls.h"
#include "host/BlockLedger.h"
#include "host/DocumentMemory.h"
#include "host/Expect.h"
#include "host/HostSlot.h"
#include "host/KernelState.h"
#include "host/Siblings.h"
#include "host/Workplace.h"

namespace tarn::fuzz {
namespace {

constexpr std::array kStatuses = {
    StatusOk,           StatusDone,           StatusFailed,
    StatusOutOfMemory,  StatusSeekFailed,     StatusWriteFailed,
    StatusReadFailed,   StatusNotSupported,   StatusOpenFailed,
    StatusBadArgument,  StatusMsgOpenFailed,  StatusTimeFailed,
    StatusPathOverflow, StatusNullArgument,   StatusPathFromUtf8Failed,
    StatusCreateFailed, StatusPathTooLong,    StatusPathToUtf8Failed,
    StatusListIndex,    StatusSiblingRefused, StatusSlotConflict};

void ExpectCode(int32_t status) {
  Expect(std::find(kStatuses.begin(), kStatuses.end(), status) != kStatuses.end(),
         "a call answered with what is no code");
}

int32_t FormatOf(std::string_view file) {
  if (file.substr(0, 4) == "!BDN") return FormatPst;
  return file.substr(0, 8) == "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1" ? FormatMsg : FormatEml;
}

// Calls that read a file of this size: enough for every kind, and a bounded time for large ones.
size_t MostCalls(size_t fileSize) {
  constexpr size_t kBytes = size_t{1} << 21;
  return std::clamp<size_t>(kBytes / (fileSize + 1), 4, 14);
}

int32_t DirectKind(void*) { return TARGET_KIND_DIRECT; }
int32_t OtherKind(void*) { return 3; }

class Host {
 public:
  Host(const Workplace& place, std::string_view file) : place_(place), original_(file) {
    TheSiblings() = Siblings();
    PlainKernelSetLanguage(0x0409);
    PlainKernelSetIoMode(0);
    changeFile(0);
    callsLeft_ = MostCalls(file.size());
  }

  void perform(const CallStep& step);

 private:
  using SlotBytes = std::array<char, sizeof(FilterDataSlot)>;

  void info(uint8_t argument);
  void load(uint8_t argument);
  void list();
  void extract(uint8_t argument, bool toFile);
  void endRecord(uint8_t argument);
  void setRaster(uint8_t argument);
  void setSiblingKeeps(uint8_t argument);
  void setSlotContent(uint8_t argument);
  void changeFile(uint8_t argument);

  // The status, or nothing when an exception left the call that may.
  template <typename Call>
  std::optional<int32_t> run(Call call) const;
  SlotBytes slotBytes() const;
  void expectBounded(uint64_t peak) const;
  void expectAnswer(const HostFileInfo& answer, int32_t index, bool isNew) const;
  void compareDocument(const void* recordBefore, bool isCached);

  const Workplace& place_;
  std::string_view original_;
  std::string file_;
  int32_t format_ = FormatNone;
  HostSlot slot_;
  size_t callsLeft_;
  int32_t page_ = 1;
  HostRasterOptions raster_ = {};
  HostFileInfo answer_ = {};  // of the last fltInfo
  Circumstances now_;
  DocumentMemory documents_;
};

void Host::perform(const CallStep& step) {
  static constexpr int32_t kMessages[] = {1, 2, 3, 4, 0, -1, INT_MIN, INT_MAX, 5, 17, 100, 5000};
  static constexpr int32_t kPages[] = {1, 2, 3, 0, -5, 1000000};
  static constexpr uint32_t kLanguages[] = {0x0409, 0x0411, 0x0407, 0x2C01, 0x040D,
                                            0x0804, 0x0404, 0x0412, 0x0419, 0xFFFF};
  static constexpr int32_t kIoModes[] = {0, 3, 1};
  const uint8_t argument = step.argument;
  // The first five read the file.
  if (step.operation <= CallOperation::ExtractToFile && callsLeft_-- == 0) {
    callsLeft_ = 0;
    return;
  }
  switch (step.operation) {
    case CallOperation::Info:
      return info(argument);
    case CallOperation::Load:
      return load(argument);
    case CallOperation::List:
      return list();
    case CallOperation::Extract:
      return extract(argument, false);
    case CallOperation::ExtractToFile:
      return extract(argument, true);
    case CallOperation::EndRecord:
      return endRecord(argument);
    case CallOperation::Message:
      now_.message = kMessages[argument % std::size(kMessages)];
      break;
    case CallOperation::Text:
      now_.textOnly = argument % 3;
      break;
    case CallOperation::Page:
      page_ = kPages[argument % std::size(kPages)];
      break;
    case CallOperation::Raster:
      return setRaster(argument);
    case CallOperation::Language:
      now_.language = kLanguages[argument % std::size(kLanguages)];
      PlainKernelSetLanguage(now_.language);
      break;
    case CallOperation::IoMode:
      now_.ioMode = kIoModes[argument % std::size(kIoModes)];
      PlainKernelSetIoMode(now_.ioMode);
      break;
    case CallOperation::Sibling:
      TheSiblings().manner = argument;
      break;
    case CallOperation::SiblingKeeps:
      return setSiblingKeeps(argument);
    case CallOperation::SlotContent:
      return setSlotContent(argument);
    case CallOperation::ChangeFile:
      return changeFile(argument);
    case CallOperation::Count:
      break;
  }
}

template <typename Call>
std::optional<int32_t> Host::run(Call call) const {
  try {
    return call();
  } catch (const SiblingThrow&) {
    return std::nullopt;
  } catch (const std::exception& error) {
    Expect(format_ == FormatPst, error.what());
    return std::nullopt;
  }
}

Host::SlotBytes Host::slotBytes() const {
  const FilterDataSlot slot = slot_.copy();
  SlotBytes bytes;
  std::memcpy(bytes.data(), &slot, sizeof slot);
  return bytes;
}

void Host::expectBounded(uint64_t peak) const {
  constexpr uint64_t kBase = uint64_t{192} << 20;
  constexpr uint64_t kFactor = 32;
  Expect(peak <= kBase + kFactor * file_.size(), "a call took more memory than its file allows");
}

void Host::expectAnswer(const HostFileInfo& answer, int32_t index, bool isNew) const {
  Expect(answer.format >= FormatPst && answer.format <= FormatEml, "no format was answered");
  Expect(answer.depth == 24 && answer.answered1104 == 1 && answer.answered2188 == 1 &&
             answer.answered2208 == 1,
         "an answer is not as the header says");
  Expect(answer.pageNumber >= 0 && answer.pageNumber <= answer.pageCount, "no such page");
  if (!isNew) return;
  Expect(answer.format == format_ && answer.pageCount == TheSiblings().pageCount(),
         "the answer is of another file");
  if (format_ == FormatPst) Expect(index >= 0, "no such message");
}

// After a call that went well as far as a sibling: in the slot is what it left there.
void Host::compareDocument(const void* recordBefore, bool isCached) {
  const void* const record = slot_.record();
  if (record != recordBefore) documents_.forgetRecord();
  if (!TheSiblings().sawDocument()) return;
  const uint64_t document = TheSiblings().document();
  if (isCached || (record != nullptr && record != recordBefore)) {
    documents_.compareRecord(record, document);
  }
  if (!isCached) documents_.compareReading(now_, document);
}

// Bits of the argument: 0, with the slot; 1, without options; 2, without siblings.
void Host::info(uint8_t argument) {
  HostSlot* const slot = (argument & 1) != 0 ? &slot_ : nullptr;
  const void* const recordBefore = slot_.record();
  const bool isCached = slot != nullptr && recordBefore != nullptr;
  HostLoadOptions options = {};
  options.pageNumber = page_;
  FilterInfoContext context = {};
  context.path = place_.file();
  context.info = &answer_;
  context.slot = slot != nullptr ? slot->get() : nullptr;
  if ((argument & 2) == 0) context.options = &options;
  if ((argument & 4) == 0) TheSiblings().offer(context);
  context.raster = raster_;
  context.messageNumber = now_.message;
  context.textOnly = now_.textOnly;
  TheSiblings().start(!isCached && format_ != FormatEml);

  const KernelState before;
  const SlotBytes slotBefore = slotBytes();
  const BlockWatch watch;
  context.handle = KernelFileOpen(place_.file(), KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
  const std::optional<int32_t> status = run([&] { return fltInfo(&context); });
  KernelFileClose(context.handle);
  expectBounded(watch.peakBytes());
  if (status) ExpectCode(*status);
  if (status != StatusOk) {
    Expect(slotBefore == slotBytes(), "a failure changed the slot");
  }
  if (status != StatusOk || slot == nullptr) before.expectSame("fltInfo left something behind");
  before.expectSameHandles("fltInfo left a file open");
  if (status == StatusSiblingRefused) {
    Expect(context.siblingResult == (TheSiblings().wasCalled() ? TheSiblings().result() : 0),
           "another refusal than the sibling's");
  }
  if (status == StatusOk) expectAnswer(answer_, context.messageNumber, !isCached);
  compareDocument(recordBefore, isCached);
}

// Bits of the argument: 0, with the slot; 1, a target of the kind that draws; 2, one of another
// kind; 3, without a model; 4, without options; 5, with a failure in the status; 6, without
// siblings.
void Host::load(uint8_t argument) {
  static TargetKindFunction kDirect[] = {nullptr, nullptr, nullptr, DirectKind};
  static TargetKindFunction kOther[] = {nullptr, nullptr, nullptr, OtherKind};
  TargetKindFunction* target = (argument & 2) != 0 ? kDirect : kOther;
  const void* const record = slot_.record();
  const bool isCached = (argument & 1) != 0 && record != nullptr;
  HostLoadOptions options = {};
  options.pageNumber = page_;
  FilterLoadContext context = {};
  context.path = place_.file();
  if ((argument & 8) == 0) context.info = &answer_;
  if ((argument & 1) != 0) context.slot = slot_.get();
  if ((argument & 16) == 0) context.options = &options;
  context.status = (argument & 32) != 0 ? StatusFailed : StatusOk;
  context.messageNumber = now_.message;
  context.textOnly = now_.textOnly;
  if ((argument & 6) != 0) context.target = &target;
  if ((argument & 64) == 0) TheSiblings().offer(context);
  TheSiblings().start(!isCached && format_ != FormatEml);

  const KernelState before;
  const SlotBytes slotBefore = slotBytes();
  const BlockWatch watch;
  const std::optional<int32_t> status = run([&] { return fltLoad(&context); });
  expectBounded(watch.peakBytes());
  before.expectSame("fltLoad left something behind");
  Expect(slotBefore == slotBytes(), "fltLoad changed the slot");
  if (status && TheSiblings().wasCalled()) {
    Expect(*status == TheSiblings().result(), "another result than the sibling's");
  } else if (status) {
    ExpectCode(*status);
  }
  ExpectCode(context.status);
  compareDocument(record, isCached);
}

void Host::list() {
  const KernelState before;
  const FailingListCheck check;
  const std::optional<int32_t> status =
      run([&] { return ListAttachments(place_.file(), now_.message); });
  expectBounded(check.peakBytes());
  if (status) ExpectCode(*status);
  if (status != StatusOk) check.freeWhatItemsOwn();
  before.expectSame("a list left something behind");
}

// Bits 0 to 3 of the argument are the number, 13 to 15 those that no message has; bit 7 makes a
// file impossible.
void Host::extract(uint8_t argument, bool toFile) {
  const int choice = argument & 15;
  const int32_t number = choice == 15   ? -1
                         : choice == 14 ? INT_MAX
                         : choice == 13 ? INT_MIN
                                        : choice;
  const KernelState before;
  const BlockWatch watch;
  Extracted memory;
  const std::optional<int32_t> status = run([&] {
    memory = ExtractToMemory(place_.file(), now_.message, number);
    return memory.status;
  });
  expectBounded(watch.peakBytes());
  if (status) ExpectCode(*status);
  before.expectSame("an extraction left something behind");
  if (!toFile) return;

  const char16_t* const output = (argument & 128) != 0 ? place_.nowhere() : place_.output();
  Extracted file;
  const std::optional<int32_t> fileStatus = run([&] {
    file = ExtractToFile(place_, output, now_.message, number);
    return file.status;
  });
  if (fileStatus) ExpectCode(*fileStatus);
  before.expectSame("an extraction to a file left something behind");
  if (fileStatus == StatusOk && status == StatusOk && output == place_.output()) {
    Expect(file.bytes == memory.bytes, "an attachment has other bytes in a file");
  }
  place_.takeOutput();
}

// The argument: 0, ends the record; 1, asks with a value that keeps it; 2, without a record; else
// ends it, and asks again without one.
void Host::endRecord(uint8_t argument) {
  const KernelState before;
  const int choice = argument % 4;
  if (choice == 1 && slot_.record() != nullptr) {
    Expect(fltFreeData(slot_.record(), 1 + argument) == StatusOk, "fltFreeData refused a value");
    before.expectSame("fltFreeData freed a record that was to stay");
  }
  if (choice == 0 || choice == 3) slot_.endRecord();
  if (choice >= 2) Expect(fltFreeData(nullptr, 0) == StatusBadArgument, "no record was freed");
}

// Bits 0 to 3 of the argument choose the wanted resolution across, bits 4 to 7 that down.
void Host::setRaster(uint8_t argument) {
  static constexpr uint32_t kResolutions[] = {0, 100, 96, 300, 1, 110, 0xFFFFFFFF, 0x80000000};
  raster_.xResolution = kResolutions[(argument & 15) % std::size(kResolutions)];
  raster_.yResolution = kResolutions[(argument >> 4) % std::size(kResolutions)];
}

// Bit 0 of the argument, whether it keeps anything; 1 and 2, with which format.
void Host::setSiblingKeeps(uint8_t argument) {
  static constexpr int32_t kFormats[] = {7, -1, -2, FormatPst};
  TheSiblings().keeps = (argument & 1) != 0;
  TheSiblings().keptFormat = kFormats[argument >> 1 & 3];
}

// The argument's remainder by 5: 0, empties the slot; 1, ends the record and keeps a list; 2 to 4,
// puts an item, a list, a bad list.
void Host::setSlotContent(uint8_t argument) {
  const auto rest = static_cast<uint8_t>(argument / 5);
  switch (argument % 5) {
    case 0:
      return slot_.clear();
    case 1:
      return slot_.endRecord();
    case 2:
      return slot_.putItem(rest);
    case 3:
      return slot_.putList(rest);
    default:
      return slot_.putBadList(rest);
  }
}

// The argument's remainder by 4: 0, the file as it was; 1, its first half; 2, with the first bytes
// of another format; 3, too short for any.
void Host::changeFile(uint8_t argument) {
  static constexpr std::string_view kBeginnings[] = {"!BDN", "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1",
                                                     "From: a@b.c\r\n"};
  file_ = original_;
  now_.fileChange = argument;
  if (argument % 4 == 1) file_.resize(file_.size() / 2);
  if (argument % 4 == 2) {
    const std::string_view beginning = kBeginnings[argument / 4 % 3];
    file_.replace(0, beginning.size(), beginning);
  }
  if (argument % 4 == 3) file_.resize(std::min<size_t>(file_.size(), 11));
  format_ = FormatOf(file_);
  place_.write(file_);
}

}  // namespace

void RunCalls(std::string_view file, const std::vector<CallStep>& steps) {
  static const Workplace place;
  const KernelState before;
  {
    Host host(place, file);
    for (const CallStep& step : steps) host.perform(step);
  }
  before.expectSame("an empty slot left something behind");
  Expect(place.hasOnlyTheFile(), "a file was left behind");
}

}  // namespace tarn::fuzz
