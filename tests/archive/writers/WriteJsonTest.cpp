#include <gtest/gtest.h>

#include "archive/mapi/FakeMessage.h"
#include "archive/writers/FakeItem.h"
#include "archive/writers/Writers.h"

namespace tarn::archive {
namespace {

std::string JsonOf(const FakeContent& content) {
  FakeItem item(content);
  TextSink sink;
  const Written written = WriteJson(item, sink);
  EXPECT_FALSE(written.full.has_value());
  return sink.text;
}

TEST(WriteJsonTest, WritesAllOfTheModel) {
  FakeContent item;
  ItemFields& fields = item.fields;
  fields.subject = "Hällo \"you\"";
  fields.from = {"Ann", "ann@example.com"};
  fields.sender = Address{"Bob", "bob@example.com"};
  fields.to = {{"Cid", "cid@example.com"}, {"", "dan@example.com"}};
  fields.cc = {{"Eve", ""}};
  fields.sent = Moment{1714559696, 120};
  fields.received = Moment{1714559700, std::nullopt};
  fields.messageId = "1@example.com";
  fields.size = 1234;
  item.headers = "Subject: x\r\n";
  item.bodies.text = "one\ntwo";
  item.bodies.html = HtmlBody{"<p>\xE4</p>", "iso-8859-1"};
  item.bodies.rtf = "{\\rtf1 x}";
  Attachment& picture = item.attach("a.png", "image/png", "12345");
  picture.contentId = "a@b";
  picture.isInline = true;
  Attachment& far = item.list.emplace_back();
  far.kind = AttachmentKind::Reference;
  far.name = "far";
  far.target = "\\\\far\\x";
  EXPECT_EQ(JsonOf(item),
            R"({"id":"2097188","folder":"Top/Inbox","folderNames":["Top","Inbox"],)"
            R"("class":"IPM.Note","subject":"Hällo \"you\"",)"
            R"("from":{"name":"Ann","address":"ann@example.com"},)"
            R"("sender":{"name":"Bob","address":"bob@example.com"},)"
            R"("to":[{"name":"Cid","address":"cid@example.com"},)"
            R"({"name":"","address":"dan@example.com"}],)"
            R"("cc":[{"name":"Eve","address":""}],"bcc":[],)"
            R"("sent":"2024-05-01T10:34:56Z","sentOffsetMinutes":120,)"
            R"("received":"2024-05-01T10:35:00Z","messageId":"1@example.com","size":1234,)"
            R"("headers":"Subject: x\r\n",)"
            R"("bodies":{"text":"one\ntwo","html":"<p>ä</p>","htmlCharset":"iso-8859-1",)"
            R"("rtf":"{\\rtf1 x}"},)"
            R"("attachments":[{"index":1,"kind":"data","name":"a.png","mediaType":"image/png",)"
            R"("contentId":"a@b","inline":true,"size":5},)"
            R"({"index":2,"kind":"reference","name":"far","mediaType":"","inline":false,)"
            R"("size":null,"target":"\\\\far\\x"}],"troubles":[]})"
            "\n");
}

TEST(WriteJsonTest, LeavesOutWhatIsNotThere) {
  FakeContent item;
  item.place.parent = "7";
  EXPECT_EQ(JsonOf(item),
            R"({"id":"2097188","parent":"7","folder":"Top/Inbox","folderNames":["Top","Inbox"],)"
            R"("class":"IPM.Note","subject":"","from":{"name":"","address":""},"to":[],"cc":[],)"
            R"("bcc":[],"sent":null,"received":null,"messageId":"","size":null,"bodies":{},)"
            R"("attachments":[],"troubles":[]})"
            "\n");
}

TEST(WriteJsonTest, TellsWhatIsLost) {
  FakeContent content;
  content.bodies.troubles = {{TroubleKind::Damaged, "the text cannot be read"}};
  content.headersTrouble = Trouble{TroubleKind::Damaged, "no headers"};
  content.troubles = {{TroubleKind::Missing, "no recipients"}};
  for (const AttachmentKind kind :
       {AttachmentKind::Item, AttachmentKind::Ole, AttachmentKind::Signature}) {
    content.list.emplace_back().kind = kind;
  }
  content.list[0].trouble = Trouble{TroubleKind::TooDeep, "too deep"};
  FakeItem item(content);
  TextSink sink;
  EXPECT_EQ(WriteJson(item, sink).lost.size(), 3u);
  EXPECT_TRUE(sink.text.ends_with(
      R"("attachments":[{"index":1,"kind":"item","name":"","mediaType":"","inline":false,)"
      R"("size":null,"trouble":"too deep"},)"
      R"({"index":2,"kind":"ole","name":"","mediaType":"","inline":false,"size":null},)"
      R"({"index":3,"kind":"signature","name":"","mediaType":"","inline":false,"size":null}],)"
      R"("troubles":["no headers","the text cannot be read","no recipients"]})"
      "\n"))
      << sink.text;
}

TEST(WriteJsonTest, EndsWhereTheSinkIsFull) {
  FakeContent content;
  content.bodies.text = std::string(200000, 'x');
  content.attach("a", "", "b");
  FakeItem item(content);
  SmallSink sink(1000);
  EXPECT_EQ(WriteJson(item, sink).full->reason, "the disk is full");
  EXPECT_EQ(sink.writesAfterFull, 0u);
}

// Values of every type, and what is told of them.
struct PropertyCase {
  uint16_t type;
  std::string bytes;
  std::string json;
};

TEST(WriteJsonTest, WritesPropertiesByTheirTypes) {
  using mapi::LittleEndian;
  const std::vector<PropertyCase> cases = {
      {mapi::kTypeInteger32, LittleEndian(0xFFFFFFFF, 4), R"("0x60000003","value":-1)"},
      {mapi::kTypeBoolean, LittleEndian(1, 1), R"("0x6001000B","value":true)"},
      {mapi::kTypeBinary, "\x01\x02\x03\x04", R"("0x60020102","value":"AQIDBA==")"},
      {mapi::kTypeBinary, std::string(40000, 'x'), R"("0x60030102","size":40000)"},
      {mapi::kTypeFloat64, LittleEndian(0x3FE0000000000000, 8), R"("0x60040005","value":0.5)"},
      {mapi::kTypeFloat64, LittleEndian(0x7FF0000000000000, 8), R"("0x60050005","value":null)"},
      {mapi::kTypeInteger16, LittleEndian(0xFFFE, 2), R"("0x60060002","value":-2)"},
      {mapi::kTypeInteger64, LittleEndian(5000000000, 8), R"("0x60070014","value":5000000000)"},
      {mapi::kTypeFloat32, LittleEndian(0x3FC00000, 4), R"("0x60080004","value":1.5)"},
      {mapi::kTypeError, LittleEndian(0x8004010F, 4), R"("0x6009000A","value":2147746063)"},
      {mapi::kTypeGuid, std::string("\x08\x20\x06\0\0\0\0\0\xC0\0\0\0\0\0\0\x46", 16),
       R"("0x600A0048","value":"{00062008-0000-0000-C000-000000000046}")"},
      {mapi::kTypeObject, "xyz", R"("0x600B000D","size":3)"},
      {mapi::kTypeInteger32, "x", R"("0x600C0003","value":null)"},
      {mapi::kTypeTime, LittleEndian(0, 8), R"("0x600D0040","value":null)"},
      {mapi::kTypeTime, LittleEndian(mapi::FileTimeOf(1714559696), 8),
       R"("0x600E0040","value":"2024-05-01T10:34:56Z")"},
      {mapi::kTypeString8, "S\xFC", R"("0x600F001E","value":"Sü")"},
  };
  mapi::FakeDescription description;
  std::string expected = R"("properties":[)";
  for (const PropertyCase& row : cases) {
    const auto id = static_cast<uint16_t>(0x6000 + (&row - cases.data()));
    description.properties.put(id, row.type, row.bytes);
    if (id != 0x6000) expected += ',';
    expected += "{\"tag\":" + row.json + "}";
  }
  mapi::FakeMessage message(description);
  FakeContent item;
  item.message = &message;
  const std::string json = JsonOf(item);
  EXPECT_TRUE(json.ends_with(expected + "],\"troubles\":[]}\n")) << json << "\n" << expected;
}

TEST(WriteJsonTest, NamesProperties) {
  mapi::FakeDescription description;
  description.properties.text(0x0037, u"S\u00FC")
      .text8(0x8001, "named")
      .text8(0x8002, "by name")
      .text8(0x8003, "x");
  description.names = {{{mapi::kAddressSet, 0x8005, u""}, 0x8001},
                       {{mapi::kAddressSet, 0, u"K\u00F6rds"}, 0x8002}};
  mapi::FakeMessage message(description);
  FakeContent item;
  item.message = &message;
  const std::string json = JsonOf(item);
  EXPECT_TRUE(json.ends_with(
      R"("properties":[{"tag":"0x0037001F","name":"PidTagSubject","value":"Sü"},)"
      R"({"tag":"0x8001001E","set":"{00062004-0000-0000-C000-000000000046}","number":32773,)"
      R"("value":"named"},)"
      R"({"tag":"0x8002001E","set":"{00062004-0000-0000-C000-000000000046}","name":"Körds",)"
      R"("value":"by name"},{"tag":"0x8003001E","value":"x"}],"troubles":[]})"
      "\n"))
      << json;
}

TEST(WriteJsonTest, TellsPropertiesThatCannotBeRead) {
  mapi::FakeDescription description;
  description.properties.damaged(0x0C1F, mapi::kTypeString)
      .put(0x6000, mapi::kTypeInteger32 | mapi::kMultipleValues, "");
  mapi::FakeMessage message(description);
  FakeContent item;
  item.message = &message;
  const std::string json = JsonOf(item);
  EXPECT_TRUE(json.ends_with(
      R"("properties":[{"tag":"0x0C1F001F","name":"PidTagSenderEmailAddress","value":null},)"
      R"({"tag":"0x60001003","value":null}],)"
      R"("troubles":["the property PidTagSenderEmailAddress (0x0C1F) cannot be read: a block is )"
      R"(missing","the property 0x6000 cannot be read: not there"]})"
      "\n"))
      << json;
}

}  // namespace
}  // namespace tarn::archive
