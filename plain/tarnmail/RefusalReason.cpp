#include "RefusalReason.h"

#include <exception>

#include "EmlReason.h"
#include "KernelFile.h"
#include "MailFormat.h"
#include "MsgReason.h"
#include "StoreReason.h"
#include "TarnPst.h"

namespace tarn::host {
namespace {

std::string ShortFile(size_t size) {
  return size == 0 ? "is empty"
                   : "is too short: no mail file has fewer than " + std::to_string(kBytesOfFormat) +
                         " bytes";
}

// A document that comes with the other text flag.
std::string OtherText(const RefusedCall& call, const std::string& message) {
  return call.textOnly ? message + " has no plain body; without --text its other body is shown"
                       : message + " has nothing but a plain body, which --text shows";
}

std::optional<std::string> StoreRefusal(const RefusedCall& call) {
  if (call.status == StatusBadArgument) return "the store has no messages";
  if (call.status != StatusNotSupported || !call.showsOtherText) return std::nullopt;
  if (call.showsOtherText()) {
    return OtherText(call, "message " + std::to_string(call.messageNumber));
  }
  return StoreReason(call.path.c_str(), call.messageNumber);
}

std::optional<std::string> MsgRefusal(const RefusedCall& call) {
  if (call.status != StatusNotSupported || !call.showsOtherText) return std::nullopt;
  if (call.showsOtherText()) return OtherText(call, "the message");
  return MsgReason(call.path.c_str());
}

std::optional<std::string> EmlRefusal(const RefusedCall& call) {
  std::string mail;
  if (ReadWholeFile(call.path.c_str(), mail) != StatusOk) return std::nullopt;
  return EmlReason(mail, call.status);
}

std::optional<std::string> Reason(const RefusedCall& call) {
  if (call.status == StatusFailed && call.showsByTempFiles && call.showsByTempFiles()) {
    return "an image is too small for a data: URL; --temp-files makes the document without them";
  }
  const std::string front = ReadFront(call.path.c_str(), kBytesOfFormat);
  switch (FormatOf(front)) {
    case MailFormat::Store:
      return StoreRefusal(call);
    case MailFormat::Msg:
      return MsgRefusal(call);
    case MailFormat::Mail:
      return EmlRefusal(call);
    default:
      if (call.status != StatusReadFailed) return std::nullopt;
      return ShortFile(front.size());
  }
}

}  // namespace

std::optional<std::string> RefusalReason(const RefusedCall& call) noexcept {
  try {
    return Reason(call);
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

}  // namespace tarn::host
