// tarnmail on MSG files: documents, attachments, messages in messages, and damaged files.

#include "TarnmailFixture.h"
#include "console/Json.h"
#include "support/HeaderRows.h"

namespace tarn::test {
namespace {

using MsgCommands = TarnmailTest;
using nlohmann::json;

std::string OrdersDocument(const std::string& image) {
  return "<html>\r\n"
         "<head><meta http-equiv=Content-Type content=\"text/html; charset=utf-8\">"
         "<title>Orders</title></head>\r\n"
         "<body>" +
         HtmlBlock(MailHtmlRow("From:      ", "Clara Weber &lt;clara.weber@example.com&gt;") +
                   MailHtmlRow("Sent:      ", "Sat Nov 21, 2026 10:00 AM") +
                   MailHtmlRow("To:        ", "Daniel Okafor") +
                   MailHtmlRow("Cc:        ", "Sales Team") +
                   MailHtmlRow("Subject:   ", "Orders in the first quarter")) +
         "<p>The chart shows the orders.</p>\r\n<p><img src=\"" + image +
         "\" alt=\"Orders\"></p></body>\r\n</html>\r\n";
}

// The last two bytes of a text fall outside of its document.
const std::string kOrdersText =
    "\xEF\xBB\xBF"
    "From:      \tClara Weber <clara.weber@example.com>\r\n"
    "Sent:      \tSat Nov 21, 2026 10:00 AM\r\n"
    "To:        \tDaniel Okafor\r\n"
    "Cc:        \tSales Team\r\n"
    "Subject:   \tOrders in the first quarter\r\n"
    "\r\n"
    "The chart shows the orders.";

TEST_F(MsgCommands, ShowWhatTheFileIs) {
  EXPECT_EQ(output({"info", Example("msg/rtf.msg")}),
            "Format:      MSG\n"
            "Messages:    1\n"
            "Document:    RTF\n"
            "Pages:       unknown\n"
            "Attachments: 1\n");
}

TEST_F(MsgCommands, WriteTheDocumentOfEachKind) {
  const std::string orders = Example("msg/html-image.msg");
  EXPECT_EQ(output({"document", "--temp-files", orders}),
            OrdersDocument("chart.q1@example.com_chart.png"));
  const std::string inMemory = output({"document", orders});
  const size_t url = inMemory.find("data:image;base64,iVBORw0KGgo");
  ASSERT_NE(url, std::string::npos);
  const std::string image = inMemory.substr(url, inMemory.find('"', url) - url);
  EXPECT_EQ(image.size(), 18u + 148u);  // 111 bytes
  EXPECT_EQ(inMemory, OrdersDocument(image) + '\0');
  EXPECT_EQ(output({"document", "--text", orders}), kOrdersText);
  EXPECT_EQ(output({"document", "--text", "--temp-files", orders}), kOrdersText);
  const std::string rtf = output({"document", Example("msg/rtf.msg")});
  EXPECT_TRUE(rtf.starts_with("{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl"));
  EXPECT_TRUE(
      rtf.ends_with("\\pard\\f0\\fs20 The minutes of 19 May are attached.\\par\r\n"
                    "\\pard Clara\\par\r\n}"));
}

TEST_F(MsgCommands, LabelInTheLanguageAskedFor) {
  EXPECT_EQ(output({"document", "--language", "0x0407", Example("msg/text.msg")}),
            "\xEF\xBB\xBF"
            "Von:       \tClara Weber <clara.weber@example.com>\r\n"
            "Gesendet:  \tSat Nov 21, 2026 10:00 AM\r\n"
            "An:        \tDaniel Okafor\r\n"
            "Cc:        \tSales Team\r\n"
            "Betreff:   \tZimmer 12 \u2013 Heizung\r\n"
            "Priorit\u00e4t: \tH\u00f6"
            "ch\r\n"
            "\r\n"
            "Hello Daniel,\r\n"
            "\r\n"
            "the heating in room 12 works again.\r\n"
            "\r\n"
            "Clara");
}

TEST_F(MsgCommands, ListAttachments) {
  EXPECT_EQ(output({"attachments", Example("msg/html-image.msg")}),
            "No.  Name        Type       Content ID            Created              Modified\n"
            "  1  chart.png   image/png  chart.q1@example.com  2026-11-21T10:00:00  "
            "2026-11-21T10:01:00\n"
            "  2  orders.csv  text/csv   -                     -                    -\n");
  EXPECT_EQ(output({"attachments", Example("msg/text.msg")}), "No attachments\n");
  const json list = host::ParsedJson<json>(
      output({"attachments", "--json", Example("msg/embedded.msg")}))["attachments"];
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0]["name"], "Heating.msg");
  EXPECT_EQ(list[1]["name"], "With recipients.msg");
  EXPECT_EQ(list[1]["properties"], json::array());
}

TEST_F(MsgCommands, ExtractAttachments) {
  const std::string file = Example("msg/html-image.msg");
  EXPECT_EQ(output({"extract", file, "2"}), "month,orders\r\n1,11020\r\n2,11960\r\n3,12480\r\n");
  const std::string png = output({"extract", "--in-memory", file, "1"});
  ASSERT_EQ(png.size(), 111u);
  EXPECT_EQ(png.substr(0, 16), std::string("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16));
  EXPECT_EQ(failure(1, {"extract", file, "3", "-o", "out"}), file + ": has no attachment 3");
}

TEST_F(MsgCommands, OpenAnExtractedMessageAgain) {
  EXPECT_EQ(output({"extract", Example("msg/embedded.msg"), "1", "-o", "inner.msg"}), "");
  EXPECT_EQ(output({"document", "inner.msg"}),
            "\xEF\xBB\xBF"
            "From:      \tErik Lund <erik.lund@example.org>\r\n"
            "Sent:      \tSat Nov 21, 2026 09:00 AM\r\n"
            "Subject:   \tHeating\r\n"
            "\r\n"
            "The heating works again.");
  EXPECT_EQ(output({"attachments", "inner.msg"}), "No attachments\n");
  EXPECT_EQ(output({"info", "inner.msg"}),
            "Format:      MSG\n"
            "Messages:    1\n"
            "Document:    text\n"
            "Pages:       unknown\n"
            "Attachments: 0\n");
}

// Relied upon: with recipients or attachments of its own a message comes out without a header.
TEST_F(MsgCommands, ExtractAMessageWithRecipientsAsItsStreamsAlone) {
  EXPECT_EQ(output({"extract", Example("msg/embedded.msg"), "2", "-o", "inner.msg"}), "");
  const std::string bytes = ReadWholeFile(directory_.path() / "inner.msg");
  EXPECT_EQ(bytes.substr(0, 2048), std::string(2048, '\0'));
  EXPECT_EQ(failure(1, {"document", "inner.msg"}),
            "inner.msg: not a mail file: no From, Date, To, Cc or Bcc line in its header (-9)");
}

TEST_F(MsgCommands, RefuseWhatIsNoCompoundFile) {
  const std::string file = mail("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1 and nothing else", "mail.msg");
  const std::string line =
      "mail.msg: begins like an MSG file, but its compound file is damaged (-9)";
  EXPECT_EQ(failure(1, {"info", file}), line);
  EXPECT_EQ(failure(1, {"document", file}), line);
  EXPECT_EQ(failure(1, {"document", "--text", "--in-memory", file, "-o", "out"}), line);
  EXPECT_EQ(output({"attachments", file}), "No attachments\n");
  EXPECT_EQ(failure(1, {"extract", file, "1", "-o", "out"}), "mail.msg: has no attachment 1");
  EXPECT_EQ(directory_.listing(), "mail.msg");
}

// Wherever a file ends, each command says what it can in one line or in full.
TEST_F(MsgCommands, TakeTruncatedFiles) {
  const std::string whole = ReadWholeFile(Example("msg/html-image.msg"));
  for (size_t size = 12; size < whole.size(); size += 509) {
    const std::string file = mail(whole.substr(0, size), "mail.msg");
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"document", file},
                                                      {"attachments", file},
                                                      {"extract", file, "2"}}) {
      const ProgramResult result = run(arguments);
      EXPECT_TRUE(result.exitStatus == 0 || result.exitStatus == 1)
          << arguments[0] << " " << size << " " << result.err;
    }
  }
}

}  // namespace
}  // namespace tarn::test
