// MsgSamples.h - MSG files that the tests of their road share.
#ifndef TARN_TESTS_ROAD_MSGSAMPLES_H
#define TARN_TESTS_ROAD_MSGSAMPLES_H

#include <string>
#include <string_view>

#include "support/msg/MsgBuilder.h"

namespace tarn::test {

// "Sat Nov 21, 2026 10:00 AM" in UTC.
inline constexpr uint64_t kMsgSampleTime = 134397288000000000;

inline constexpr const char* kMsgHtml = "<html><head></head><body><p>Hi</p></body></html>";
inline constexpr const char* kMsgRtf = "{\\rtf1\\ansi{\\fonttbl{\\f0 Arial;}}\r\n\\pard Hi\\par}";

// Header fields and a plain body.
inline MsgBuilder PlainMsg() {
  MsgBuilder msg;
  msg.text(0x0037, u"Hello").text(0x0C1A, u"Ann").text(0x5D01, u"ann@example.com");
  msg.text(0x0E04, u"Bob").text(0x1000, u"Plain body");
  msg.submitTime(kMsgSampleTime).importance(2);
  msg.recipient(u"Bob", u"bob@example.com");
  return msg;
}

// An image of 60 bytes and what it is in base64.
inline const std::string kMsgImage(60, 'A');
inline std::string MsgImageBase64() {
  std::string text;
  for (int i = 0; i < 20; ++i) text += "QUFB";
  return text;
}

// An HTML message with an inline image, a document and a message of streams only.
inline MsgBuilder AttachedMsg() {
  MsgBuilder msg = PlainMsg();
  msg.binary(0x1013, "<html><body><img src=\"cid:one@x\"></body></html>");
  msg.attachment(u"a.png", kMsgImage)
      .contentId(u"one@x")
      .mimeType(u"image/png")
      .created(kMsgSampleTime)
      .modified(kMsgSampleTime + 600000000);
  msg.attachment(u"report.pdf", "%PDF-1.4 not much of one");
  MsgBuilder& inner = msg.attachment().text(0x3707, u"Inner message").embedded();
  inner.text(0x0037, u"Inner").text(0x0C1A, u"Eve").text(0x1000, u"Inner body");
  inner.submitTime(kMsgSampleTime);
  return msg;
}

}  // namespace tarn::test

#endif
