#include "faults/FaultInputs.h"

#include "Tarnbase/PlainKernel.h"
#include "faults/FaultFiles.h"

namespace tarn::test {
namespace {

constexpr auto Eml = FaultFormat::Eml;
constexpr auto Msg = FaultFormat::Msg;
constexpr auto Pst = FaultFormat::Pst;
constexpr auto Info = FaultCall::Info;
constexpr auto InfoAgain = FaultCall::InfoAgain;
constexpr auto InfoThenLoad = FaultCall::InfoThenLoad;
constexpr auto Load = FaultCall::Load;
constexpr auto LoadAgain = FaultCall::LoadAgain;
constexpr auto Free = FaultCall::Free;
constexpr auto List = FaultCall::List;
constexpr auto ToMemory = FaultCall::ExtractToMemory;
constexpr auto ToFile = FaultCall::ExtractToFile;
constexpr auto InMemory = FaultRoute::InMemory;
constexpr auto ByFile = FaultRoute::ByFile;
constexpr auto None = FaultSlot::None;
constexpr auto Empty = FaultSlot::Empty;
constexpr auto OtherItem = FaultSlot::OtherItem;
constexpr auto SlotList = FaultSlot::List;
constexpr auto OtherList = FaultSlot::OtherList;

constexpr FaultInput With(FaultSlot slot, FaultInput row) {
  row.slot = slot;
  return row;
}

constexpr FaultInput Keeping(FaultSlot slot, FaultInput row) {
  row.slot = slot;
  row.keeps = true;
  return row;
}

// Large enough to be reported to the host, and too large for more than a few runs.
constexpr uint32_t kBudgetOnly = 1u << PlainKernelFaultBudget;

constexpr FaultInput kInputs[] = {
    {"EmlPlain", Eml, PlainMail, Info},
    With(None, {"EmlPlainLoad", Eml, PlainMail, Load, ByFile}),
    {"EmlHtml", Eml, HtmlMail, Info, ByFile},
    With(None, {"EmlHtmlLoad", Eml, HtmlMail, Load, InMemory}),
    With(None, {"EmlHtmlLoadByFile", Eml, HtmlMail, Load, ByFile}),
    Keeping(Empty, {"EmlKeptData", Eml, HtmlMail, InfoThenLoad}),
    {"EmlImages", Eml, ImageMail, Info, InMemory},
    {"EmlImagesByFile", Eml, ImageMail, Info, ByFile},
    With(None, {"EmlImagesLoad", Eml, ImageMail, Load, InMemory}),
    {"EmlCharset", Eml, CharsetMail, Info},
    {"EmlRawField", Eml, RawFieldMail, Info},
    {"EmlAlternative", Eml, AlternativeMail, Info},
    {"EmlNested", Eml, NestedMail, Info},
    {"EmlNestedByFile", Eml, NestedMail, Info, ByFile},
    With(None, {"EmlImagesLoadByFile", Eml, ImageMail, Load, ByFile}),
    {"EmlJapanese", Eml, JapaneseMail, Info},
    With(None, {"EmlFile", Eml, FileMail, Load}),
    With(None, {"EmlTextOfHtml", Eml, HtmlMail, Load, ByFile, 1, true}),
    {"EmlList", Eml, ImageMail, List},
    {"EmlListOfNames", Eml, NamedMail, List},
    {"EmlExtract", Eml, AttachmentMail, ToMemory},
    {"EmlExtractNamed", Eml, NamedMail, ToMemory},
    {"EmlExtractToFile", Eml, ImageMail, ToFile, InMemory, 1, false, 2},
    {"EmlExtractEmbedded", Eml, NestedMail, ToFile},
    {"EmlExtractBig", Eml, BigMail, ToMemory, InMemory, 1, false, 1, kBudgetOnly},
    {"EmlRich", Eml, RichMail, Info},
    {"EmlRepaired", Eml, RepairedMail, Info},
    {"EmlRichList", Eml, RichMail, List},
    {"EmlRepairedList", Eml, RepairedMail, List, ByFile},
    {"EmlRichExtract", Eml, RichMail, ToMemory, ByFile, 1, false, 2},
    {"EmlRichExtractToFile", Eml, RichMail, ToFile, ByFile},
    {"EmlTwoImages", Eml, TwoImagesMail, Info},
    {"EmlTwoImagesByFile", Eml, TwoImagesMail, Info, ByFile},
    With(None, {"EmlWithoutSlot", Eml, HtmlMail, Info, ByFile}),
    With(OtherItem, {"EmlRefused", Eml, HtmlMail, Info, ByFile}),
    Keeping(OtherItem, {"EmlRefusedKeeping", Eml, PlainMail, InfoThenLoad}),
    With(SlotList, {"EmlInList", Eml, HtmlMail, InfoThenLoad, ByFile}),
    Keeping(SlotList, {"EmlKeptInList", Eml, PlainMail, Info}),
    With(OtherList, {"EmlListRefuses", Eml, HtmlMail, Info, ByFile}),
    Keeping(Empty, {"EmlAgain", Eml, ImageMail, InfoAgain}),
    With(SlotList, {"EmlAgainByFile", Eml, ImageMail, InfoAgain, ByFile}),
    {"EmlLoadAgain", Eml, ImageMail, LoadAgain, ByFile},
    {"EmlFree", Eml, PlainMail, Free},
    Keeping(Empty, {"EmlFreeByFile", Eml, ImageMail, Free, ByFile}),
    With(SlotList, {"EmlFreeInList", Eml, ImageMail, Free}),
    {"MsgBigBody", Msg, BigMsgFile, Info, InMemory, 1, false, 1, kBudgetOnly},
    {"MsgPlain", Msg, PlainMsgFile, Info},
    With(None, {"MsgPlainLoad", Msg, PlainMsgFile, Load}),
    {"MsgHtml", Msg, HtmlMsgFile, Info},
    {"MsgHtmlByFile", Msg, HtmlMsgFile, Info, ByFile},
    {"MsgTextOfHtml", Msg, HtmlMsgFile, Info, InMemory, 1, true},
    {"MsgOld", Msg, OldMsgFile, Info},
    With(None, {"MsgOldLoad", Msg, OldMsgFile, Load, ByFile}),
    Keeping(Empty, {"MsgKeptData", Msg, HtmlMsgFile, InfoThenLoad}),
    {"MsgRtf", Msg, RtfMsgFile, Info},
    {"MsgWrapped", Msg, WrappedMsgFile, Info},
    {"MsgLarge", Msg, LargeMsgFile, Info},
    {"MsgImages", Msg, AttachedMsgFile, Info, InMemory},
    {"MsgImagesByFile", Msg, AttachedMsgFile, Info, ByFile},
    With(None, {"MsgImagesLoad", Msg, AttachedMsgFile, Load, InMemory}),
    With(None, {"MsgImagesLoadByFile", Msg, AttachedMsgFile, Load, ByFile}),
    {"MsgList", Msg, AttachedMsgFile, List},
    {"MsgExtract", Msg, AttachedMsgFile, ToMemory},
    {"MsgExtractLarge", Msg, LargeMsgFile, ToMemory},
    {"MsgExtractToFile", Msg, AttachedMsgFile, ToFile, InMemory, 1, false, 2},
    {"MsgExtractMessage", Msg, AttachedMsgFile, ToMemory, InMemory, 1, false, 3},
    {"MsgListOfNone", Msg, RtfMsgFile, List},
    {"MsgExtractMessageToFile", Msg, AttachedMsgFile, ToFile, InMemory, 1, false, 3},
    {"MsgExtractMessageByFile", Msg, AttachedMsgFile, ToMemory, ByFile, 1, false, 3},
    With(None, {"MsgRtfLoadByFile", Msg, RtfMsgFile, Load, ByFile}),
    With(None, {"MsgWrappedLoad", Msg, WrappedMsgFile, Load}),
    {"MsgWrappedByFile", Msg, WrappedMsgFile, Info, ByFile},
    {"MsgWrappedText", Msg, WrappedMsgFile, Info, InMemory, 1, true},
    {"MsgTwoImages", Msg, TwoImagesMsgFile, Info},
    {"MsgTwoImagesByFile", Msg, TwoImagesMsgFile, Info, ByFile},
    {"MsgListByFile", Msg, AttachedMsgFile, List, ByFile},
    {"MsgOldList", Msg, OldAttachmentMsgFile, List},
    With(OtherItem, {"MsgRefused", Msg, HtmlMsgFile, Info, ByFile}),
    Keeping(SlotList, {"MsgKeptInList", Msg, HtmlMsgFile, InfoThenLoad, ByFile}),
    With(OtherList, {"MsgListRefuses", Msg, RtfMsgFile, Info}),
    {"MsgAgainByFile", Msg, AttachedMsgFile, InfoAgain, ByFile},
    With(SlotList, {"MsgLoadAgain", Msg, AttachedMsgFile, LoadAgain}),
    {"MsgFreeByFile", Msg, AttachedMsgFile, Free, ByFile},
    Keeping(SlotList, {"MsgFreeInList", Msg, RtfMsgFile, Free}),
    {"PstImages", Pst, UnicodeStore, Info, InMemory, 2},
    {"PstImagesByFile", Pst, UnicodeStore, Info, ByFile, 2},
    With(None, {"PstAnsiImages", Pst, AnsiStore, Load, InMemory, 2}),
    With(None, {"PstImagesLoadByFile", Pst, AnsiStore, Load, ByFile, 2}),
    {"PstFirst", Pst, AnsiStore, Info},
    With(None, {"PstLast", Pst, UnicodeStore, Load, InMemory, 3}),
    With(None, {"PstRtf", Pst, RtfStore, Load, InMemory, 2}),
    {"PstAnsiRtf", Pst, AnsiRtfStore, Info, InMemory, 2},
    {"PstText", Pst, RtfStore, Info, InMemory, 2, true},
    With(None, {"PstTextLoad", Pst, AnsiStore, Load, InMemory, 2, true}),
    {"PstList", Pst, UnicodeStore, List, InMemory, 2},
    {"PstAnsiList", Pst, AnsiStore, List, InMemory, 2},
    {"PstExtract", Pst, UnicodeStore, ToMemory, InMemory, 2, false, 2},
    {"PstListOfNone", Pst, UnicodeStore, List, InMemory, 3},
    {"PstExtractFirst", Pst, AnsiStore, ToMemory, InMemory, 2, false, 1},
    {"PstExtractToFile", Pst, AnsiStore, ToFile, InMemory, 2, false, 1},
    {"PstExtractByFile", Pst, UnicodeStore, ToMemory, ByFile, 2, false, 1},
    {"PstExtractToFileByFile", Pst, UnicodeStore, ToFile, ByFile, 2, false, 1},
    {"PstListByFile", Pst, UnicodeStore, List, ByFile, 2},
    {"PstOpen", Pst, OpenStore, Info, InMemory, 2},
    {"PstAnsiOpen", Pst, AnsiOpenStore, Info, ByFile, 2},
    {"PstCyclic", Pst, CyclicStore, Info, ByFile, 2},
    {"PstAnsiCyclic", Pst, AnsiCyclicStore, Info, InMemory, 2},
    {"PstUsual", Pst, UsualStore, Info, ByFile},
    {"PstUsualList", Pst, UsualStore, List},
    {"PstWrapped", Pst, WrappedStore, Info, InMemory, 2},
    With(None, {"PstWrappedLoadByFile", Pst, WrappedStore, Load, ByFile, 2}),
    {"PstTwoImages", Pst, TwoImagesStore, Info},
    {"PstTwoImagesByFile", Pst, TwoImagesStore, Info, ByFile},
    {"PstLarge", Pst, LargeStore, Info, ByFile},
    With(None, {"PstLargeText", Pst, LargeStore, Load, InMemory, 1, true}),
    {"PstLargeList", Pst, LargeStore, List},
    {"PstExtractLarge", Pst, LargeStore, ToFile},
    {"PstEmbeddingList", Pst, EmbeddingStore, List},
    {"PstExtractEmbedded", Pst, EmbeddingStore, ToMemory, ByFile},
    With(OtherItem, {"PstRefused", Pst, AnsiStore, Info, ByFile}),
    Keeping(SlotList, {"PstKeptInList", Pst, UnicodeStore, InfoThenLoad, InMemory, 2}),
    Keeping(OtherList, {"PstListRefuses", Pst, AnsiStore, Info, InMemory, 2}),
    Keeping(Empty, {"PstAgainByFile", Pst, UnicodeStore, InfoAgain, ByFile, 2}),
    With(SlotList, {"PstLoadAgain", Pst, RtfStore, LoadAgain, InMemory, 2}),
    {"PstFreeByFile", Pst, UnicodeStore, Free, ByFile, 2},
    Keeping(SlotList, {"PstFreeInList", Pst, AnsiRtfStore, Free, InMemory, 2}),
};

}  // namespace

std::span<const FaultInput> FaultInputs() { return kInputs; }

void PrintTo(const FaultInput& input, std::ostream* stream) { *stream << input.name; }

}  // namespace tarn::test
