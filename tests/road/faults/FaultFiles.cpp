#include "faults/FaultFiles.h"

#include "MsgSamples.h"
#include "PstSamples.h"
#include "support/EmlBuilder.h"
#include "support/MailOfAll.h"

namespace tarn::test {
namespace {

// RTF that wraps HTML, with a run of escapes long enough for memory of its own.
std::string WrappedRtf() {
  std::string text = "{\\rtf1\\ansi\\ansicpg1252\\fromhtml1 \\deff0{\\fonttbl{\\f0 Arial;}}";
  text += "{\\*\\htmltag64 <html><body>}{\\*\\htmltag84 <p>}Caf\\'e9 ";
  for (int i = 0; i < 80; ++i) text += "\\'e9";
  text += "{\\*\\htmltag92 </p>}{\\*\\htmltag27 </body></html>}}";
  return text;
}

// Three messages: the second, in the first folder, has HTML with an image and an attachment; the
// third is alone in its folder.
std::string SmallStore(const StoreOptions& options, const std::string& rtf = "") {
  StoreBuilder store(options);
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
  if (!rtf.empty()) message.rtf(PackRtf(rtf));
  store.folder("B").message().html("<p>other").body("other text");
  return store.bytes();
}

StoreOptions Smallest(PstLayout layout, PstEncoding encoding = PstEncoding::Permute) {
  return StoreOptions::Smallest(layout, encoding);
}

}  // namespace

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
  MsgBuilder msg = PlainMsg();
  msg.binary(0x1009, PackRtf(WrappedRtf()));
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

std::string RichMail() { return MailOfAll(kWords); }
std::string RepairedMail() { return MailOfAll("no words"); }

std::string TwoImagesMail() {
  return EmlBuilder::Usual()
      .body(EmlEntity::Multipart("related", "sep")
                .part(EmlEntity::Leaf("text/html",
                                      "<img src=\"cid:one@x\"> and <img src=\"cid:two@x\">"))
                .part(EmlEntity::Leaf("image/png; name=a.png", kImageBytes)
                          .contentId("one@x")
                          .encoded(EmlEncoding::Base64))
                .part(EmlEntity::Leaf("image/gif; name=b.gif", kImageBytes)
                          .contentId("two@x")
                          .encoded(EmlEncoding::Base64)))
      .build();
}

std::string TwoImagesMsgFile() {
  MsgBuilder msg = PlainMsg();
  msg.binary(0x1013, "<img src=\"cid:one@x\"> and <img src=\"cid:two@x\">");
  msg.attachment(u"a.png", kMsgImage).contentId(u"one@x");
  msg.attachment(u"b.png", kMsgImage).contentId(u"two@x");
  return msg.write();
}

// Texts of 8 bits in the list of attachments.
std::string OldAttachmentMsgFile() {
  MsgBuilder msg;
  msg.text8(0x0037, "Old").text8(0x1000, "Old text");
  msg.attachment().text8(0x3707, "old.txt").text8(0x370E, "text/plain").binary(0x3701, "old bytes");
  return msg.write();
}

std::string UnicodeStore() { return SmallStore(Smallest(PstLayout::Unicode)); }
std::string AnsiStore() { return SmallStore(Smallest(PstLayout::Ansi)); }
std::string RtfStore() { return SmallStore(Smallest(PstLayout::Unicode), kSampleRtf); }
std::string AnsiRtfStore() { return SmallStore(Smallest(PstLayout::Ansi), kSampleRtf); }

std::string OpenStore() { return SmallStore(Smallest(PstLayout::Unicode, PstEncoding::None)); }
std::string AnsiOpenStore() { return SmallStore(Smallest(PstLayout::Ansi, PstEncoding::None)); }
std::string CyclicStore() { return SmallStore(Smallest(PstLayout::Unicode, PstEncoding::Cyclic)); }
std::string AnsiCyclicStore() { return SmallStore(Smallest(PstLayout::Ansi, PstEncoding::Cyclic)); }

std::string UsualStore() { return SampleStore(PstLayout::Unicode); }

std::string WrappedStore() { return SmallStore(Smallest(PstLayout::Unicode), WrappedRtf()); }

std::string TwoImagesStore() {
  StoreBuilder store(Smallest(PstLayout::Unicode));
  MessageBuilder& message = store.folder("A").message();
  message.subject(u"Hi").html("<img src=\"cid:pic.png\"> and <img src=\"cid:two.png\">");
  message.attachment(u"pic.png", kImageBytes).attachment(u"two.png", kImageBytes);
  return store.bytes();
}

// Bodies and attachments of several blocks, and texts of 8 bits.
std::string LargeStore() {
  StoreBuilder store(Smallest(PstLayout::Ansi));
  MessageBuilder& message = store.folder("A").message();
  message.subject("Large").body(std::string(20000, 't')).html(std::string(20000, 'h'));
  message.attach().shortName("big.bin").data(std::string(20000, 'y'));
  return store.bytes();
}

// A message inside of a message.
std::string EmbeddingStore() {
  StoreBuilder store(Smallest(PstLayout::Unicode));
  MessageBuilder& message = store.folder("A").message();
  message.subject(u"Outer").html("<p>outer").body(u"outer");
  message.attach().longName(u"Inner message").embedded().subject(u"Inner").body(u"inner");
  message.attachment(u"b.pdf", "%PDF-1.4 not much of one");
  return store.bytes();
}

}  // namespace tarn::test
