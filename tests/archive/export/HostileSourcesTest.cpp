// Exports of stores and MSG files that want more than anybody has, and of sources that change.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>

#include "archive/export/Export.h"
#include "console/Json.h"
#include "support/RtfCompressor.h"
#include "support/TempDirectory.h"
#include "support/msg/MsgBuilder.h"
#include "support/pst/StoreBuilder.h"

namespace tarn::archive {
namespace {

using host::ExitStatus;
using nlohmann::json;
using test::PstLayout;

class HostileSources : public ::testing::Test {
 protected:
  HostileSources() {
    options_.program = TARNMAIL_ARCHIVE;
    options_.choices.forms = {ExportForm::Html, ExportForm::Text, ExportForm::Json};
    options_.memory = uint64_t{256} << 20;
    options_.folder = (directory_.path() / "out").string();
  }

  // A mail beside what is hostile costs nothing.
  void addBeside() {
    options_.paths.push_back(
        directory_.write("z.eml", "From: ann@example.com\nSubject: Beside\n\nText\n").string());
  }

  std::vector<json> rows() const {
    std::vector<json> rows;
    std::ifstream lines(directory_.path() / "out" / "manifest.jsonl");
    for (std::string line; std::getline(lines, line);) rows.push_back(host::ParsedJson<json>(line));
    return rows;
  }

  // The row of the hostile item; the mail beside it is whole.
  json exportedRow(ExitStatus status) {
    addBeside();
    EXPECT_EQ(Export(options_), status);
    const std::vector<json> all = rows();
    EXPECT_EQ(all.size(), 4u);
    if (all.size() != 4) return {};
    EXPECT_EQ(all[2]["status"], "exported");
    EXPECT_EQ(all[2]["subject"], "Beside");
    EXPECT_EQ(Verify({options_.folder}), ExitStatus::Done);
    return all[0];
  }

  test::TempDirectory directory_;
  ExportOptions options_;
};

TEST_F(HostileSources, ManyAttachmentsOfAStore) {
  constexpr int kMany = 20'000;
  test::StoreBuilder store(PstLayout::Unicode);
  test::MessageBuilder& message = store.folder("Inbox").message().subject(u"Many").from(u"Ann");
  for (int i = 0; i < kMany; ++i) message.attach().longName(u"a").withoutNode();
  store.write(directory_.path() / "a.pst");
  options_.paths = {(directory_.path() / "a.pst").string()};
  const json row = exportedRow(ExitStatus::Done);
  EXPECT_EQ(row["status"], "partial");
  EXPECT_LT(row["reason"].get<std::string>().size(), 2000u);
  EXPECT_EQ(row["files"].size(), 3u);
}

TEST_F(HostileSources, ManyAttachmentsOfAnMsgFile) {
  constexpr int kMany = 12'000;
  test::MsgBuilder msg;
  msg.text(0x001A, u"IPM.Note").text(0x0037, u"Many");
  for (int i = 0; i < kMany; ++i) msg.attachment(u"a", "x");
  options_.paths = {directory_.write("a.msg", msg.write()).string()};
  options_.choices.forms = {ExportForm::Text};
  const json row = exportedRow(ExitStatus::Done);
  EXPECT_EQ(row["status"], "partial");
  EXPECT_NE(row["reason"].get<std::string>().find("more than 10000"), std::string::npos)
      << row["reason"];
  EXPECT_EQ(row["files"].size(), 10'001u);
}

TEST_F(HostileSources, RichTextWithoutEnd) {
  std::string groups = "{\\rtf1 ";
  for (int i = 0; i < 400'000; ++i) groups += "{\\b x";
  test::MsgBuilder msg;
  msg.text(0x001A, u"IPM.Note").text(0x0037, u"Rich").binary(0x1009, test::PackRtf(groups));
  options_.paths = {directory_.write("a.msg", msg.write()).string()};
  const json row = exportedRow(ExitStatus::Done);
  EXPECT_EQ(row["subject"], "Rich");
}

TEST_F(HostileSources, RichTextThatClaimsToBeEndless) {
  test::MsgBuilder msg;
  // A reference of 17 bytes to what is before it takes two bytes; there is no end marker.
  std::string contents = std::string("\0{\\rtf1 a", 9);
  for (int i = 0; i < 300'000; ++i) contents += std::string("\xFF", 1) + std::string(16, '\x0F');
  msg.text(0x001A, u"IPM.Note").text(0x0037, u"Endless");
  msg.binary(0x1009,
             test::WriteCompressedRtf({.compressedSize = {}, .rawSize = 0x7FFFFFFF}, contents));
  options_.paths = {directory_.write("a.msg", msg.write()).string()};
  const json row = exportedRow(ExitStatus::Done);
  EXPECT_EQ(row["status"], "partial");
  EXPECT_NE(row["reason"].get<std::string>().find("RTF"), std::string::npos) << row["reason"];
}

TEST_F(HostileSources, OneThatChangesWhileItIsExported) {
  const auto path = directory_.write("a.eml", "From: ann@example.com\nSubject: Mail\n\nText\n");
  options_.paths = {path.string()};
  int changes = 0;
  // Its items are read, and nothing of them is in its place.
  options_.step = [&] {
    if (++changes == 1) std::ofstream(path, std::ios::app) << "More\n";
  };
  EXPECT_EQ(Export(options_), ExitStatus::Failed);
  const std::vector<json> all = rows();
  ASSERT_EQ(all.size(), 2u);
  EXPECT_EQ(all[0]["status"], "exported");
  EXPECT_EQ(all[1]["reason"], "has changed while it was exported");
  EXPECT_EQ(Verify({options_.folder}), ExitStatus::Done);
}

}  // namespace
}  // namespace tarn::archive
