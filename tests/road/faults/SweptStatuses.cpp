#include "faults/SweptStatuses.h"

#include <set>
#include <utility>

#include "TarnPst.h"
#include "Tarnbase/PlainKernel.h"
#include "faults/FaultOutcome.h"

namespace tarn::test {
namespace {

constexpr auto Ok = StatusOk;
constexpr auto Memory = PlainKernelFaultMemory;
constexpr auto Open = PlainKernelFaultOpen;
constexpr auto Read = PlainKernelFaultRead;
constexpr auto Write = PlainKernelFaultWrite;
constexpr auto Seek = PlainKernelFaultSeek;
constexpr auto Text = PlainKernelFaultText;
constexpr auto Budget = PlainKernelFaultBudget;

}  // namespace

std::span<const SweptStatuses> AllSweptStatuses() {
  static const std::vector<SweptStatuses> kRows = {
      // A message of a store that breaks leaves its record empty, which is refused.
      {"PstImagesByFile", Memory, {Ok, StatusOutOfMemory, StatusNotSupported, kThrown}},
      {"PstImagesByFile", Open, {Ok, StatusCreateFailed, kThrown}},
      {"PstImagesByFile", Read, {Ok, StatusReadFailed, StatusNotSupported, kThrown}},
      {"PstImagesByFile",
       Seek,
       {Ok, StatusReadFailed, StatusSeekFailed, StatusNotSupported, kThrown}},
      {"PstImagesByFile", Write, {Ok, StatusWriteFailed}},
      {"PstImagesByFile", Budget, {Ok}},
      // A path that does not convert fails the image; a header text is left out.
      {"PstImagesByFile", Text, {Ok, StatusPathToUtf8Failed, StatusPathFromUtf8Failed}},

      {"PstImages", Memory, {Ok, StatusOutOfMemory, StatusNotSupported, kThrown}},
      {"PstImages", Open, {Ok, kThrown}},
      {"PstImages", Read, {Ok, StatusReadFailed, StatusNotSupported, kThrown}},
      {"PstImages", Seek, {Ok, StatusReadFailed, StatusSeekFailed, StatusNotSupported, kThrown}},
      {"PstImages", Write, {Ok}},
      {"PstImages", Budget, {Ok}},
      {"PstImages", Text, {Ok}},

      {"PstRtf", Memory, {Ok, StatusOutOfMemory, StatusNotSupported, kThrown}},
      {"PstRtf", Open, {Ok, StatusOpenFailed, kThrown}},
      {"PstRtf", Read, {Ok, StatusReadFailed, StatusNotSupported, kThrown}},
      {"PstRtf", Seek, {Ok, StatusReadFailed, StatusSeekFailed, StatusNotSupported, kThrown}},
      {"PstRtf", Write, {Ok}},
      {"PstRtf", Budget, {Ok}},

      {"PstText", Memory, {Ok, StatusOutOfMemory, StatusNotSupported, kThrown}},
      {"PstText", Open, {Ok, kThrown}},
      {"PstText", Read, {Ok, StatusReadFailed, StatusNotSupported, kThrown}},
      {"PstText", Seek, {Ok, StatusReadFailed, StatusSeekFailed, StatusNotSupported, kThrown}},
      {"PstText", Write, {Ok}},
      {"PstText", Budget, {Ok}},

      {"PstListByFile", Memory, {Ok, StatusOutOfMemory, kThrown}},
      {"PstListByFile", Open, {Ok, StatusOpenFailed, kThrown}},
      {"PstListByFile", Read, {Ok, StatusReadFailed, kThrown}},
      {"PstListByFile", Seek, {Ok, StatusReadFailed, StatusSeekFailed, kThrown}},
      {"PstListByFile", Text, {Ok, StatusFailed}},
      {"PstUsualList", Memory, {Ok, StatusOutOfMemory, kThrown}, 11},

      {"PstExtractByFile", Memory, {Ok, StatusOutOfMemory, kThrown}},
      {"PstExtractByFile", Open, {Ok, StatusOpenFailed, kThrown}},
      {"PstExtractByFile", Read, {Ok, StatusReadFailed, kThrown}},
      {"PstExtractByFile", Seek, {Ok, StatusReadFailed, StatusSeekFailed, kThrown}},
      {"PstExtractByFile", Write, {Ok}},
      {"PstExtractByFile", Text, {Ok, StatusFailed}},

      {"PstExtractToFileByFile", Memory, {Ok, StatusOutOfMemory, kThrown}},
      {"PstExtractToFileByFile", Open, {Ok, StatusOpenFailed, StatusCreateFailed, kThrown}},
      {"PstExtractToFileByFile", Read, {Ok, StatusReadFailed, kThrown}},
      {"PstExtractToFileByFile", Seek, {Ok, StatusReadFailed, StatusSeekFailed, kThrown}},
      {"PstExtractToFileByFile", Write, {Ok, StatusWriteFailed}},
      {"PstExtractToFileByFile", Text, {Ok, StatusFailed}},

      {"EmlRichList", Memory, {Ok, StatusOutOfMemory}},
      {"EmlRichList", Read, {Ok, StatusReadFailed}},
      {"EmlRichList", Seek, {Ok, StatusReadFailed, StatusSeekFailed}},
      // A file name or a looked-up property fails without a code, and a part's text with one; words
      // and properties of the list fail without a trace.
      {"EmlRichList", Text, {Ok, StatusFailed, StatusPathToUtf8Failed}},
      {"EmlRepairedList", Memory, {Ok, StatusOutOfMemory}},
      {"EmlRepairedList", Text, {Ok, StatusFailed, StatusPathToUtf8Failed}},
      {"EmlRichExtract", Memory, {Ok, StatusOutOfMemory}},
      {"EmlRichExtract", Text, {Ok, StatusFailed, StatusPathToUtf8Failed}},
  };
  return kRows;
}

bool IsDocumented(FaultFormat format, int32_t group, int32_t status) {
  using Statuses = std::set<int32_t>;
  static const std::map<int32_t, Statuses> kAnyFormat = {
      {Memory, {StatusOutOfMemory}},
      {Open, {StatusOpenFailed, StatusCreateFailed}},
      {Read, {StatusReadFailed}},
      {Write, {StatusWriteFailed}},
      {Seek, {StatusReadFailed, StatusSeekFailed}},
      // A renderer that fails on a store or an MSG file is StatusOutOfMemory, whatever failed in
      // it.
      {Text, {StatusFailed, StatusOutOfMemory, StatusPathToUtf8Failed, StatusPathFromUtf8Failed}},
      {Budget, {StatusOutOfMemory}}};
  static const std::map<std::pair<FaultFormat, int32_t>, Statuses> kMore = {
      {{FaultFormat::Msg, Open}, {StatusMsgOpenFailed}},
      {{FaultFormat::Msg, Read}, {StatusNotSupported}},
      {{FaultFormat::Pst, Memory}, {StatusNotSupported, kThrown}},
      {{FaultFormat::Pst, Open}, {kThrown}},
      {{FaultFormat::Pst, Read}, {StatusNotSupported, kThrown}},
      {{FaultFormat::Pst, Seek}, {StatusNotSupported, kThrown}}};
  const auto more = kMore.find({format, group});
  return kAnyFormat.at(group).contains(status) ||
         (more != kMore.end() && more->second.contains(status));
}

}  // namespace tarn::test
