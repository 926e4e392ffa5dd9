// MSG files of many attachments, recipients, properties and levels, and compressed RTF.
#include "support/RtfCompressor.h"
#include "support/hostile/HostileShapes.h"
#include "support/hostile/HostileText.h"
#include "support/msg/MsgBuilder.h"

namespace tarn::test {
namespace {

const std::string kImage = "\x89PNG" + Times(100, "x");

MsgBuilder Message() {
  MsgBuilder msg;
  msg.text(0x001A, u"IPM.Note").text(0x0037, u"Shape").text(0x0C1A, u"Ann").text(0x0E04, u"Bob");
  return msg;
}

std::string Attached(size_t count, SiblingShape shape) {
  MsgBuilder msg = Message();
  msg.text(0x1000, u"Text");
  for (size_t i = 0; i < count; ++i) msg.attachment(Wide(i) + u".txt", "content");
  CompoundOptions options;
  options.shape = shape;
  return msg.write(options);
}

std::string Attachments(size_t count) { return Attached(count, SiblingShape::Balanced); }

std::string AttachmentsAsList(size_t count) { return Attached(count, SiblingShape::RightList); }

std::string AttachmentsAsLeftList(size_t count) { return Attached(count, SiblingShape::LeftList); }

std::string SameNames(size_t count) {
  MsgBuilder msg = Message();
  for (size_t i = 0; i < count; ++i) msg.attachment(u"a.txt", "content");
  return msg.write();
}

std::string EmptyAttachments(size_t count) {
  MsgBuilder msg = Message();
  for (size_t i = 0; i < count; ++i) msg.attachment();
  return msg.write();
}

std::string Recipients(size_t count) {
  MsgBuilder msg = Message();
  for (size_t i = 0; i < count; ++i) msg.recipient(u"Bob " + Wide(i), u"bob@example.com");
  return msg.write();
}

std::string NamedProperties(size_t count) {
  MsgBuilder msg = Message();
  for (size_t i = 0; i < count; ++i) msg.text(msg.named(u"Name " + Wide(i)), u"value");
  return msg.write();
}

// All names have the same sum, so that they fall into one stream of the names.
std::string SameNamedProperties(size_t count) {
  MsgBuilder msg = Message();
  for (size_t i = 0; i < count; ++i) msg.named(u"Name");
  return msg.write();
}

std::string Records(size_t count) {
  MsgBuilder msg = Message();
  for (size_t i = 0; i < count; ++i) msg.integer(static_cast<uint16_t>(i % 0x7000), 1);
  return msg.write();
}

std::string Streams(size_t count) {
  MsgBuilder msg = Message();
  for (size_t i = 0; i < count; ++i) msg.stream("stream " + std::to_string(i), "content");
  return msg.write();
}

std::string NestedMessages(size_t count) {
  MsgBuilder msg = Message();
  MsgBuilder* inner = &msg;
  for (size_t i = 0; i < count; ++i) {
    inner = &inner->attachment().text(0x3707, u"a.msg").integer(0x3705, 5).embedded();
    inner->text(0x0037, u"Inner");
  }
  return msg.write();
}

std::string EmbeddedMessages(size_t count) {
  MsgBuilder msg = Message();
  for (size_t i = 0; i < count; ++i) {
    msg.attachment()
        .text(0x3707, u"a.msg")
        .integer(0x3705, 5)
        .embedded()
        .text(0x001A, u"IPM.Note")
        .text(0x0037, u"Inner");
  }
  return msg.write();
}

// One embedded message, which is copied when it is extracted.
std::string EmbeddedAttachments(size_t count) {
  MsgBuilder msg = Message();
  MsgBuilder& inner = msg.attachment().text(0x3707, u"a.msg").integer(0x3705, 5).embedded();
  inner.text(0x0037, u"Inner");
  for (size_t i = 0; i < count; ++i) inner.attachment(Wide(i), "content");
  return msg.write();
}

std::string Images(size_t count) {
  MsgBuilder msg = Message();
  std::string html = "<html><body>";
  for (size_t i = 0; i < count; ++i) {
    html += "<img src=\"cid:id" + std::to_string(i) + "@x\">";
    msg.attachment(u"a" + Wide(i) + u".png", kImage)
        .contentId(u"id" + Wide(i) + u"@x")
        .mimeType(u"image/png");
  }
  return msg.binary(0x1013, html + "</body></html>").write();
}

std::string ImagesWithoutReferences(size_t count) {
  MsgBuilder msg = Message();
  for (size_t i = 0; i < count; ++i) {
    msg.attachment(u"a" + Wide(i) + u".png", kImage).contentId(u"id" + Wide(i) + u"@x");
  }
  return msg.binary(0x1013, Times(count, "<img src=\"cid:ie\">")).write();
}

std::string TransportHeaders(size_t count) {
  MsgBuilder msg = Message();
  return msg.text(0x007D, Utf16Text(Times(count, "Received: from a by b\r\n"))).write();
}

constexpr HostileShape kShapes[] = {
    {"Attachments", HostileFormat::Msg, Attachments, 1000},
    {"AttachmentsAsList", HostileFormat::Msg, AttachmentsAsList, 1000},
    {"AttachmentsAsLeftList", HostileFormat::Msg, AttachmentsAsLeftList, 1000},
    {"SameNames", HostileFormat::Msg, SameNames, 1000},
    {"EmptyAttachments", HostileFormat::Msg, EmptyAttachments, 4000},
    {"Recipients", HostileFormat::Msg, Recipients, 2000},
    {"NamedProperties", HostileFormat::Msg, NamedProperties, 4000},
    {"SameNamedProperties", HostileFormat::Msg, SameNamedProperties, 8000},
    {"Records", HostileFormat::Msg, Records, 60000},
    {"Streams", HostileFormat::Msg, Streams, 5000},
    {"NestedMessages", HostileFormat::Msg, NestedMessages, 200},
    {"EmbeddedMessages", HostileFormat::Msg, EmbeddedMessages, 500},
    {"EmbeddedAttachments", HostileFormat::Msg, EmbeddedAttachments, 1000},
    {"Images", HostileFormat::Msg, Images, 1000},
    {"ImagesWithoutReferences", HostileFormat::Msg, ImagesWithoutReferences, 1000},
    {"TransportHeaders", HostileFormat::Msg, TransportHeaders, 40000},
};

std::string Rtf(std::string_view text) {
  MsgBuilder msg = Message();
  return msg.binary(0x1009, PackRtf("{\\rtf1\\ansi " + std::string(text) + "}")).write();
}

constexpr std::string_view kFonts = "{\\fonttbl{\\f0 Arial;}}";
constexpr std::string_view kWrapsHtml = "\\fromhtml1 {\\fonttbl{\\f0 Arial;}}\\pard ";

std::string Fonts(size_t count) {
  return Rtf(
      "{\\fonttbl" +
      Each(count,
           [](const std::string& n) { return "{\\f" + n + "\\fcharset128 Font " + n + ";}"; }) +
      "}\\pard Text");
}

std::string SameFonts(size_t count) {
  return Rtf("{\\fonttbl" + Times(count, "{\\f1\\fcharset128 Arial;}") + "}\\pard Text");
}

std::string FontChanges(size_t count) {
  return Rtf(std::string(kFonts) + "\\pard " + Times(count, "\\f0 a\\f1 b"));
}

std::string NestedGroups(size_t count) {
  return Rtf(std::string(kFonts) + "\\pard " + Times(count, "{\\b a"));
}

std::string NestedFontTables(size_t count) { return Rtf(Times(count, "{\\fonttbl")); }

std::string ClosedGroups(size_t count) {
  return Rtf(std::string(kFonts) + "\\pard " + Times(count, "{a}"));
}

std::string EndsOfGroups(size_t count) {
  return Rtf(std::string(kFonts) + "\\pard " + Times(count, "}"));
}

std::string Colours(size_t count) {
  return Rtf("{\\colortbl" + Times(count, "\\red1\\green2\\blue3;") + "}\\pard Text");
}

std::string HtmlTags(size_t count) {
  return Rtf(std::string(kWrapsHtml) + Times(count, "{\\*\\htmltag64 <p>}a"));
}

std::string NestedHtmlTags(size_t count) {
  return Rtf(std::string(kWrapsHtml) + Times(count, "{\\*\\htmltag64 <p>"));
}

std::string HiddenHtml(size_t count) {
  return Rtf(std::string(kWrapsHtml) + Times(count, "\\htmlrtf a\\htmlrtf0 b"));
}

std::string Escapes(size_t count) {
  return Rtf(std::string(kWrapsHtml) + Times(count, "\\'e4\\u228 ?"));
}

std::string Pictures(size_t count) {
  return Rtf(std::string(kFonts) + "\\pard " + Times(count, "{\\pict\\pngblip 89504e47}"));
}

std::string Tables(size_t count) {
  return Rtf(std::string(kFonts) + Times(count, "\\trowd\\cellx500\\pard\\intbl a\\cell\\row "));
}

std::string NestedTables(size_t count) {
  return Rtf(std::string(kFonts) + Each(count, [](const std::string& n) {
               return "\\itap" + n + "\\pard\\intbl a\\nestcell ";
             }));
}

std::string Fields(size_t count) {
  return Rtf(std::string(kFonts) +
             Times(count, "{\\field{\\*\\fldinst HYPERLINK \"http://a.b\"}{\\fldrslt c}}"));
}

std::string NestedFields(size_t count) {
  return Rtf(std::string(kFonts) + Times(count, "{\\field{\\fldrslt a"));
}

std::string Parameters(size_t count) { return Rtf("\\pard " + Times(count, "\\bin9 a")); }

constexpr HostileShape kRichShapes[] = {
    {"Fonts", HostileFormat::Msg, Fonts, 8000},
    {"SameFonts", HostileFormat::Msg, SameFonts, 20000},
    {"FontChanges", HostileFormat::Msg, FontChanges, 60000},
    {"NestedGroups", HostileFormat::Msg, NestedGroups, 100000},
    {"NestedFontTables", HostileFormat::Msg, NestedFontTables, 60000},
    {"ClosedGroups", HostileFormat::Msg, ClosedGroups, 200000},
    {"EndsOfGroups", HostileFormat::Msg, EndsOfGroups, 400000},
    {"Colours", HostileFormat::Msg, Colours, 40000},
    {"HtmlTags", HostileFormat::Msg, HtmlTags, 40000},
    {"NestedHtmlTags", HostileFormat::Msg, NestedHtmlTags, 40000},
    {"HiddenHtml", HostileFormat::Msg, HiddenHtml, 40000},
    {"Escapes", HostileFormat::Msg, Escapes, 60000},
    {"Pictures", HostileFormat::Msg, Pictures, 30000},
    {"Tables", HostileFormat::Msg, Tables, 20000},
    {"NestedTables", HostileFormat::Msg, NestedTables, 20000},
    {"Fields", HostileFormat::Msg, Fields, 15000},
    {"NestedFields", HostileFormat::Msg, NestedFields, 40000},
    {"Parameters", HostileFormat::Msg, Parameters, 60000},
};

}  // namespace

std::span<const HostileShape> HostileMsgFiles() { return kShapes; }

std::span<const HostileShape> HostileRichTexts() { return kRichShapes; }

}  // namespace tarn::test
