// Normal importance has no row, in no kind of document.

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <optional>

#include "MsgSamples.h"
#include "PstSamples.h"
#include "support/FakeHost.h"

namespace tarn::test {
namespace {

constexpr const char* kPage = "<html><body>Hi</body></html>";

// A store or an MSG file whose message has this importance, and HTML or RTF besides a plain body.
using MakeFile = std::function<std::string(std::optional<uint32_t> importance, bool isRtf)>;

std::string StoreOf(std::optional<uint32_t> importance, bool isRtf) {
  StoreBuilder store(PstLayout::Unicode);
  MessageBuilder& message = store.folder("Inbox").message();
  message.subject(u"Hello").body(u"Hi").html(kPage);
  if (isRtf) message.rtf(PackRtf(kMsgRtf));
  if (importance) message.importance(*importance);
  return store.bytes();
}

std::string MsgOf(std::optional<uint32_t> importance, bool isRtf) {
  MsgBuilder msg;
  msg.text(0x0037, u"Hello").text(0x1000, u"Hi").binary(0x1013, kPage);
  if (isRtf) msg.binary(0x1009, PackRtf(kMsgRtf));
  if (importance) msg.importance(*importance);
  return msg.write();
}

std::string DocumentOf(const std::string& file, int32_t sibling) {
  FakeHost host(file);
  host.moreInfoOut.push_back({offsetof(HostFileInfo, messageCount), 4});
  host.infoContext->textOnly = sibling == SiblingText ? 1 : 0;
  EXPECT_EQ(host.info(), StatusOk);
  if (host.calls.empty()) return "no document";
  EXPECT_EQ(host.calls[0].info.format, sibling);
  return host.calls[0].document;
}

void ExpectNoRowForNormalImportance(const MakeFile& make) {
  for (const int32_t sibling : {SiblingHtml, SiblingRtf, SiblingText}) {
    const auto document = [&](std::optional<uint32_t> importance) {
      return DocumentOf(make(importance, sibling == SiblingRtf), sibling);
    };
    const std::string without = document(std::nullopt);
    EXPECT_NE(without.find("Subject:   "), std::string::npos) << sibling;
    EXPECT_EQ(without.find("Importance:"), std::string::npos) << sibling;
    EXPECT_EQ(document(1), without) << sibling;
    EXPECT_EQ(document(3), without) << sibling;
    const std::string high = document(2);
    EXPECT_NE(high.find("Importance:"), std::string::npos) << sibling;
    EXPECT_NE(high.find("High"), std::string::npos) << sibling;
    EXPECT_NE(document(0).find("Low"), std::string::npos) << sibling;
  }
}

TEST(ImportanceRoad, NormalHasNoRowInMessagesOfAStore) { ExpectNoRowForNormalImportance(StoreOf); }

TEST(ImportanceRoad, NormalHasNoRowInMsgFiles) { ExpectNoRowForNormalImportance(MsgOf); }

}  // namespace
}  // namespace tarn::test
