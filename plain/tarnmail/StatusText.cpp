#include "StatusText.h"

#include "TarnPst.h"

namespace tarn::host {
namespace {

struct Meaning {
  int32_t status;
  const char* text;
};

constexpr Meaning kMeanings[] = {
    {StatusDone, "the message ended early"},
    {StatusFailed,
     "an attachment's name or property is not valid UTF-8, or an inline image is too small for a "
     "data: URL"},
    {StatusOutOfMemory, "out of memory, or the document could not be put together"},
    {StatusSeekFailed, "the file could not be measured"},
    {StatusWriteFailed, "a temporary file could not be written"},
    {StatusReadFailed, "shorter than 12 bytes, or a read came short"},
    {StatusNotSupported, "not a mail file the filter takes, or one without a body it can show"},
    {StatusOpenFailed, "the file could not be opened"},
    {StatusBadArgument, "an attachment number below 1, or a store without messages"},
    {StatusMsgOpenFailed, "the compound file could not be opened"},
    {StatusTimeFailed, "a time could not be formatted"},
    {StatusPathOverflow, "the path of an inline image is too long"},
    {StatusNullArgument, "a part of the message is missing"},
    {StatusPathFromUtf8Failed, "the path of an inline image is not UTF-8"},
    {StatusCreateFailed, "a temporary file or directory could not be made"},
    {StatusPathTooLong, "the path of the temporary directory is too long"},
    {StatusPathToUtf8Failed, "text could not be turned into UTF-8"},
    {StatusListIndex, "the list of kept data has no such entry"},
    {StatusSiblingRefused, "the document could not be taken over"},
    {StatusSlotConflict, "the list of kept data holds something else"},
};

const char* MeaningOf(int32_t status) {
  for (const Meaning& meaning : kMeanings) {
    if (meaning.status == status) return meaning.text;
  }
  return "failed with a code that means nothing here";
}

}  // namespace

std::string StatusText(int32_t status) {
  return std::string(MeaningOf(status)) + " (" + std::to_string(status) + ")";
}

std::string SiblingRefusalText(int32_t siblingResult) {
  return std::string(MeaningOf(StatusSiblingRefused)) + ": " + MeaningOf(siblingResult) + " (" +
         std::to_string(StatusSiblingRefused) + ", " + std::to_string(siblingResult) + ")";
}

}  // namespace tarn::host
