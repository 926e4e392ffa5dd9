#include "faults/FaultInputs.h"

#include "MsgSamples.h"
#include "PstSamples.h"
#include "Tarnbase/PlainKernel.h"
#include "support/EmlBuilder.h"

namespace tarn::test {
namespace {

std::string PlainMail() { return kPlainMail; }
std::string HtmlMail() { return kHtmlMail; }
std::string ImageMail() { return kImageMail; }
std::string AttachmentMail() { return kAttachmentMail; }

// Header fields and a body that both need another charset.
std::string CharsetMail() {
  return EmlBuilder::Usual()
      .field("Subject", "=?iso-8859-1?Q?Gr=FC=DFe?= and =?utf-8?B?w6TDtsO8?=")
      .body(EmlEntity::Leaf("text/html; charset=iso-8859-1",
                            "<html><head></head><body>Gr\xFC\xDF"
                            "e</body></html>"))
      .build();
}

std::string AlternativeMail() {
  return EmlBuilder::Usual()
      .field("Subject", "Two forms")
      .body(EmlEntity::Multipart("alternative", "alt")
                .part(EmlEntity::Leaf("text/plain", "Plain").encoded(EmlEncoding::QuotedPrintable))
                .part(EmlEntity::Leaf("text/html", "<html><body>Rich</body></html>")
                          .encoded(EmlEncoding::Base64)))
      .build();
}

// A field in bytes of its own, which the charset of the first text part tells.
std::string RawFieldMail() {
  return EmlBuilder::Usual()
      .field("Subject",
             "Gr\xFC\xDF"
             "e")
      .body(EmlEntity::Leaf("text/plain; charset=iso-8859-1",
                            "Gr\xFC\xDF"
                            "e"))
      .build();
}

std::string NestedMail() {
  return EmlBuilder::Usual()
      .body(
          EmlEntity::Multipart("mixed", "out")
              .part(EmlEntity::Multipart("related", "in")
                        .part(EmlEntity::Leaf("text/html; charset=iso-2022-jp",
                                              "<html>\x1B$B$\"\x1B(B <img src=\"cid:a@b\"></html>"))
                        .part(EmlEntity::Leaf("image/png; name=\"a.png\"", kImageBytes)
                                  .contentId("a@b")
                                  .encoded(EmlEncoding::Base64)))
              .part(EmlEntity::Leaf("message/rfc822", "From: x\r\n\r\nInner")
                        .disposition("attachment; filename=inner.eml")))
      .build();
}

// Names and properties in encoded words.
std::string NamedMail() {
  const std::string word = "=?iso-8859-1?Q?Gr=FC=DFe?=";
  return EmlBuilder::Usual()
      .body(EmlEntity::Multipart("mixed", "sep")
                .part(EmlEntity::Leaf("text/plain", "Hi"))
                .part(EmlEntity::Leaf("application/pdf", "%PDF-1.4 not much of one")
                          .header("Content-Description", word)
                          .contentId("one@x")
                          .disposition("attachment; filename=\"" + word +
                                       "\"; creation-date=\"Sat, 21 Nov 2026 10:00:00 GMT\"")
                          .encoded(EmlEncoding::Base64)))
      .build();
}

// A text in ISO-2022-JP, with line ends of one byte and a field that goes on in a second line.
std::string JapaneseMail() {
  return EmlBuilder::Usual()
      .lineEnd(kLf)
      .field("Cc", "Carl <carl@example.com>,\n  Dora <dora@example.com>")
      .field("Importance", "high")
      .body(
          EmlEntity::Leaf("text/plain; charset=iso-2022-jp", "\x1B$B$\"$$\x1B(B and \x1B(J~\x1B(B"))
      .build();
}

// No text part: the attached file is the body.
std::string FileMail() {
  return EmlBuilder::Usual()
      .body(EmlEntity::Multipart("mixed", "sep")
                .part(EmlEntity::Leaf("application/octet-stream", "bytes of a file")
                          .disposition("attachment; filename=file.bin")
                          .encoded(EmlEncoding::Base64)))
      .build();
}

std::string BigMail() {
  return EmlBuilder::Usual()
      .body(EmlEntity::Multipart("mixed", "sep")
                .part(EmlEntity::Leaf("text/plain", "Hi"))
                .part(EmlEntity::Leaf("application/pdf", std::string(8100000, 'x'))
                          .disposition("attachment; filename=big")))
      .build();
}

std::string PlainMsgFile() { return PlainMsg().write(); }
std::string AttachedMsgFile() { return AttachedMsg().write(); }

std::string HtmlMsgFile() {
  MsgBuilder msg = PlainMsg();
  msg.binary(0x1013, kMsgHtml).text(0x004D, u"Zo\u00EB").text8(0x0065, "zoe@example.com");
  return msg.write();
}

// RTF, with a header row that needs fonts for several code pages and for none.
std::string RtfMsgFile() {
  MsgBuilder msg = PlainMsg();
  msg.binary(0x1009, PackRtf(kMsgRtf));
  msg.text(0x0E03, u"\u00E9 and \u0151 in one code page, more than sixteen units");
  msg.text(0x0037, u"Gr\u00FC\u00DFe \u65E5\u672C \u0E01 \u1681 and more than sixteen units");
  return msg.write();
}

std::string WrappedMsgFile() {
  std::string text = "{\\rtf1\\ansi\\ansicpg1252\\fromhtml1 \\deff0{\\fonttbl{\\f0 Arial;}}";
  text += "{\\*\\htmltag64 <html><body>}{\\*\\htmltag84 <p>}Caf\\'e9 ";
  for (int i = 0; i < 80; ++i) text += "\\'e9";
  text += "{\\*\\htmltag92 </p>}{\\*\\htmltag27 </body></html>}}";
  MsgBuilder msg = PlainMsg();
  msg.binary(0x1009, PackRtf(text));
  return msg.write();
}

// 8-bit texts, stored RTF, and an address that is none of internet mail.
std::string OldMsgFile() {
  MsgBuilder msg;
  msg.text8(0x0037, "Caf\xE9").text8(0x0C1A, "Ann").text8(0x5D01, "/o=example/cn=ann");
  msg.text8(0x0E04, "Bob").text8(0x0E02, "Carl").text8(0x1000, "Old text");
  msg.binary(0x1009, StoreRtf(kMsgRtf)).importance(0);
  return msg.write();
}

std::string BigMsgFile() {
  MsgBuilder msg = PlainMsg();
  msg.binary(0x1013, "<html><body>" + std::string(8100000, 'x') + "</body></html>");
  return msg.write();
}

// A body and attachments large enough for blocks of their own, and for a read beyond the first.
std::string LargeMsgFile() {
  MsgBuilder msg = PlainMsg();
  msg.binary(0x1013, "<html><body>" + std::string(9000, 'x') + "</body></html>");
  msg.attachment(u"big.bin", std::string(9000, 'y'));
  return msg.write();
}

std::string SmallStore(PstLayout layout, bool hasRtf) {
  StoreBuilder store(StoreOptions::Smallest(layout, PstEncoding::Permute));
  FolderBuilder& folder = store.folder("A");
  folder.message().html("<p>first").body(u"first");
  MessageBuilder& message = folder.message();
  message.subject(u"Hi").from(u"Ann").to(u"Bob").importance(2).submitTime(kSampleFileTime);
  message.html("<img src=\"cid:pic.png\">").body(u"text");
  message.attach()
      .longName(u"pic.png")
      .data(kImageBytes)
      .mimeTag(u"image/png")
      .created(kSampleFileTime)
      .modified(kSampleFileTime);
  message.attach().longName(u"b.pdf").data("%PDF-1.4 not much of one");
  if (hasRtf) message.rtf(PackRtf(kSampleRtf));
  store.folder("B").message().html("<p>other").body("other text");
  return store.bytes();
}

std::string UnicodeStore() { return SmallStore(PstLayout::Unicode, false); }
std::string AnsiStore() { return SmallStore(PstLayout::Ansi, false); }
std::string RtfStore() { return SmallStore(PstLayout::Unicode, true); }
std::string AnsiRtfStore() { return SmallStore(PstLayout::Ansi, true); }

constexpr auto Eml = FaultFormat::Eml;
constexpr auto Msg = FaultFormat::Msg;
constexpr auto Pst = FaultFormat::Pst;
constexpr auto Info = FaultCall::Info;
constexpr auto Load = FaultCall::Load;
constexpr auto InfoThenLoad = FaultCall::InfoThenLoad;
constexpr auto List = FaultCall::List;
constexpr auto ToMemory = FaultCall::ExtractToMemory;
constexpr auto ToFile = FaultCall::ExtractToFile;
constexpr auto InMemory = FaultRoute::InMemory;
constexpr auto ByFile = FaultRoute::ByFile;

// Large enough to be reported to the host, and too large for more than a few runs.
constexpr uint32_t kBudgetOnly = 1u << PlainKernelFaultBudget;
// fltLoad leaves record and file with the process when the HTML file cannot be made or written.
constexpr uint32_t kButTheHtmlFile = ~(1u << PlainKernelFaultOpen) & ~(1u << PlainKernelFaultWrite);

constexpr FaultInput kInputs[] = {
    {"EmlPlain", Eml, PlainMail, Info},
    {"EmlPlainLoad", Eml, PlainMail, Load, ByFile},
    {"EmlHtml", Eml, HtmlMail, Info, ByFile},
    {"EmlHtmlLoad", Eml, HtmlMail, Load, InMemory},
    {"EmlHtmlLoadByFile", Eml, HtmlMail, Load, ByFile, 1, false, 1, kButTheHtmlFile},
    {"EmlKeptData", Eml, HtmlMail, InfoThenLoad},
    {"EmlImages", Eml, ImageMail, Info, InMemory},
    {"EmlImagesByFile", Eml, ImageMail, Info, ByFile},
    {"EmlImagesLoad", Eml, ImageMail, Load, InMemory},
    {"EmlCharset", Eml, CharsetMail, Info},
    {"EmlRawField", Eml, RawFieldMail, Info},
    {"EmlAlternative", Eml, AlternativeMail, Info},
    {"EmlNested", Eml, NestedMail, Info},
    {"EmlNestedByFile", Eml, NestedMail, Info, ByFile},
    {"EmlImagesLoadByFile", Eml, ImageMail, Load, ByFile, 1, false, 1, kButTheHtmlFile},
    {"EmlJapanese", Eml, JapaneseMail, Info},
    {"EmlFile", Eml, FileMail, Load},
    {"EmlTextOfHtml", Eml, HtmlMail, Load, ByFile, 1, true},
    {"EmlList", Eml, ImageMail, List},
    {"EmlListOfNames", Eml, NamedMail, List},
    {"EmlExtract", Eml, AttachmentMail, ToMemory},
    {"EmlExtractNamed", Eml, NamedMail, ToMemory},
    {"EmlExtractToFile", Eml, ImageMail, ToFile, InMemory, 1, false, 2},
    {"EmlExtractEmbedded", Eml, NestedMail, ToFile},
    {"EmlExtractBig", Eml, BigMail, ToMemory, InMemory, 1, false, 1, kBudgetOnly},
    {"MsgBigBody", Msg, BigMsgFile, Info, InMemory, 1, false, 1, kBudgetOnly},
    {"MsgPlain", Msg, PlainMsgFile, Info},
    {"MsgPlainLoad", Msg, PlainMsgFile, Load},
    {"MsgHtml", Msg, HtmlMsgFile, Info},
    {"MsgHtmlByFile", Msg, HtmlMsgFile, Info, ByFile},
    {"MsgTextOfHtml", Msg, HtmlMsgFile, Info, InMemory, 1, true},
    {"MsgOld", Msg, OldMsgFile, Info},
    {"MsgOldLoad", Msg, OldMsgFile, Load, ByFile},
    {"MsgKeptData", Msg, HtmlMsgFile, InfoThenLoad},
    {"MsgRtf", Msg, RtfMsgFile, Info},
    {"MsgWrapped", Msg, WrappedMsgFile, Info},
    {"MsgLarge", Msg, LargeMsgFile, Info},
    {"MsgImages", Msg, AttachedMsgFile, Info, InMemory},
    {"MsgImagesByFile", Msg, AttachedMsgFile, Info, ByFile},
    {"MsgImagesLoad", Msg, AttachedMsgFile, Load, InMemory},
    {"MsgImagesLoadByFile", Msg, AttachedMsgFile, Load, ByFile, 1, false, 1, kButTheHtmlFile},
    {"MsgList", Msg, AttachedMsgFile, List},
    {"MsgExtract", Msg, AttachedMsgFile, ToMemory},
    {"MsgExtractLarge", Msg, LargeMsgFile, ToMemory},
    {"MsgExtractToFile", Msg, AttachedMsgFile, ToFile, InMemory, 1, false, 2},
    {"MsgExtractMessage", Msg, AttachedMsgFile, ToMemory, InMemory, 1, false, 3},
    {"MsgListOfNone", Msg, RtfMsgFile, List},
    {"MsgExtractMessageToFile", Msg, AttachedMsgFile, ToFile, InMemory, 1, false, 3},
    {"PstImages", Pst, UnicodeStore, Info, InMemory, 2},
    {"PstImagesByFile", Pst, UnicodeStore, Info, ByFile, 2},
    {"PstAnsiImages", Pst, AnsiStore, Load, InMemory, 2},
    {"PstImagesLoadByFile", Pst, AnsiStore, Load, ByFile, 2, false, 1, kButTheHtmlFile},
    {"PstFirst", Pst, AnsiStore, Info},
    {"PstLast", Pst, UnicodeStore, Load, InMemory, 3},
    {"PstRtf", Pst, RtfStore, Load, InMemory, 2},
    {"PstAnsiRtf", Pst, AnsiRtfStore, Info, InMemory, 2},
    {"PstText", Pst, RtfStore, Info, InMemory, 2, true},
    {"PstTextLoad", Pst, AnsiStore, Load, InMemory, 2, true},
    {"PstList", Pst, UnicodeStore, List, InMemory, 2},
    {"PstAnsiList", Pst, AnsiStore, List, InMemory, 2},
    {"PstExtract", Pst, UnicodeStore, ToMemory, InMemory, 2, false, 2},
    {"PstListOfNone", Pst, UnicodeStore, List, InMemory, 3},
    {"PstExtractFirst", Pst, AnsiStore, ToMemory, InMemory, 2, false, 1},
    {"PstExtractToFile", Pst, AnsiStore, ToFile, InMemory, 2, false, 1},
};

}  // namespace

std::span<const FaultInput> FaultInputs() { return kInputs; }

void PrintTo(const FaultInput& input, std::ostream* stream) { *stream << input.name; }

}  // namespace tarn::test
