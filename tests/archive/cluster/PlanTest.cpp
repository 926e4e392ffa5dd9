// What a plan tells, and that it tells the same each time.

#include <fstream>
#include <set>

#include "ClusterFixture.h"
#include "console/Json.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using host::ExitStatus;
using nlohmann::json;

class PlanTest : public ClusterTest {
 protected:
  std::vector<json> lines() const {
    std::vector<json> rows;
    std::ifstream file(at("plan"));
    for (std::string line; std::getline(file, line);) rows.push_back(host::ParsedJson<json>(line));
    return rows;
  }
};

TEST_F(PlanTest, TellsOptionsInputsAndTasks) {
  (void)directory_.write(
      "box", "From ann@example.com Wed May  1 10:34:56 2024\n" + MailText(1, "One") +
                 "\nFrom ann@example.com Wed May  1 10:34:56 2024\n" + MailText(8, "Two"));
  addPath("box");
  addMails("mails", 1);
  exporting_.dedupe = true;
  exporting_.filter.from = "ann";
  const PlanFile planned = plan(3);
  const std::vector<json> rows = lines();
  ASSERT_EQ(rows.size(), 7u);
  EXPECT_EQ(host::JsonLine(rows[0]),
            json({{"type", "plan"}, {"version", 1}, {"plan", planned.id()}, {"tasks", 3}}).dump());
  EXPECT_EQ(rows[1]["options"]["to"], json({"text"}));
  EXPECT_EQ(rows[1]["options"]["dedupe"], true);
  EXPECT_EQ(rows[1]["options"]["filter"], json({{"from", "ann"}}));
  EXPECT_EQ(rows[1]["inputs"], 2);
  EXPECT_EQ(rows[1]["entries"], 3);
  EXPECT_EQ(rows[1]["messageCost"], 10000);
  EXPECT_EQ(rows[2]["source"], text("box"));
  EXPECT_EQ(rows[2]["kind"], "mbox");
  EXPECT_EQ(rows[2]["tree"], "box");
  EXPECT_EQ(rows[2]["entries"], 2);
  EXPECT_EQ(rows[3]["source"], text("mails/100.eml"));
  EXPECT_EQ(rows[3]["sha256"], SumOfFile(at("mails/100.eml"))->sha256);
  EXPECT_FALSE(rows[3].contains("fingerprint"));
  // Both mails of the mbox have the same name, and the file is a task by itself.
  std::set<std::string> items;
  for (size_t task = 0; task < 3; ++task) {
    EXPECT_EQ(rows[4 + task]["task"], task);
    items.insert(host::JsonLine(rows[4 + task]["items"]));
  }
  const std::string run = R"([{"entries":1,"first":%,"input":0,"runs":[{"at":[0,#],"folder":[],)"
                          R"("path":"","rows":1}],"shared":"0"}])";
  const auto withPlace = [&run](const std::string& first, const std::string& place) {
    std::string text = run;
    text.replace(text.find('#'), 1, place);
    return text.replace(text.find('%'), 1, first);
  };
  EXPECT_EQ(items, (std::set<std::string>{withPlace("0", "0"), withPlace("1", "184"),
                                          R"([{"entries":1,"input":1}])"}));
}

TEST_F(PlanTest, IsNamedByTheSumOfTheRest) {
  addMails("mails", 2);
  const PlanFile planned = plan(2);
  const std::string bytes = test::ReadWholeFile(at("plan"));
  Sha256 sum;
  sum.add(std::string_view(bytes).substr(bytes.find('\n') + 1));
  EXPECT_EQ(sum.digest(), planned.id());
}

TEST_F(PlanTest, IsTheSameForTheSameInputs) {
  addAll();
  exporting_.recover = true;
  (void)plan(9);
  const std::string first = test::ReadWholeFile(at("plan"));
  exporting_.workers = 3;
  (void)plan(9);
  EXPECT_EQ(test::ReadWholeFile(at("plan")), first);
}

TEST_F(PlanTest, IsAnotherForOtherOptions) {
  addMails("mails", 2);
  const std::string first = plan(2).id();
  exporting_.dedupe = true;
  EXPECT_NE(plan(2).id(), first);
}

TEST_F(PlanTest, BringsBackWhatItTells) {
  addStore("store.pst", 20);
  exporting_.filter.subject = "j\xC3\xA9 \xFF";
  exporting_.filter.since = Span{-5, 7};
  exporting_.choices.forms = {ExportForm::Html, ExportForm::Mbox};
  exporting_.choices.catalogue = false;
  exporting_.seconds = 7;
  const PlanFile planned = plan(4);
  const ExportOptions& options = planned.facts().options;
  EXPECT_EQ(options.filter.subject, exporting_.filter.subject);
  EXPECT_EQ(options.filter.since->first, -5);
  EXPECT_EQ(options.filter.since->last, 7);
  EXPECT_EQ(options.choices.forms, exporting_.choices.forms);
  EXPECT_FALSE(options.choices.catalogue);
  EXPECT_TRUE(options.choices.attachments);
  EXPECT_EQ(options.seconds, 7u);
}

TEST_F(PlanTest, HasStampsOfLargeInputsBesideItsId) {
  std::string box = "From a Wed May  1 10:34:56 2024\nSubject: Large\nFrom: a@b\n\n";
  while (box.size() < (size_t{17} << 20)) box += std::string(70, 'x') + "\n";
  (void)directory_.write("box", box);
  addPath("box");
  (void)plan(1);
  const auto facts = lines();
  ASSERT_EQ(facts[0]["stamps"].size(), 1u);
  EXPECT_EQ(facts[0]["stamps"][0][0], 0);
  // With another time it is the same plan.
  const std::string id = facts[0]["plan"];
  fs::last_write_time(at("box"), fs::last_write_time(at("box")) + std::chrono::hours(1));
  EXPECT_EQ(plan(1).id(), id);
  EXPECT_NE(lines()[0]["stamps"], facts[0]["stamps"]);
  EXPECT_EQ(PlanFile(text("plan")).inputs()[0].stamp, lines()[0]["stamps"][0][1]);
}

TEST_F(PlanTest, RefusesWhatIsNotThereAndStreams) {
  addPath("none");
  PlanOptions options;
  options.exporting = exporting_;
  options.output = text("plan");
  EXPECT_NE(failureOf([&] { (void)Plan(options); }), "");
  EXPECT_FALSE(fs::exists(at("plan")));
}

TEST_F(PlanTest, RefusesAPlanThatWasChanged) {
  addMails("mails", 3);
  (void)plan(3);
  std::string bytes = test::ReadWholeFile(at("plan"));
  const std::string changed = "has changed since it was made";
  const auto refusal = [&](const std::string& text) {
    std::ofstream(at("plan"), std::ios::binary) << text;
    return failureOf([&] { PlanFile file(at("plan").string()); });
  };
  EXPECT_EQ(refusal(bytes.substr(0, bytes.rfind("{"))), text("plan") + ": " + changed);
  std::string other = bytes;
  other[other.size() - 5] = '7';
  EXPECT_NE(refusal(other), "");
  EXPECT_EQ(refusal("nonsense\n"), text("plan") + ": is no plan of this version");
  EXPECT_EQ(refusal(""), text("plan") + ": is no plan of this version");
  EXPECT_EQ(refusal(bytes), "");
}

// Plans that somebody has made by hand, and given their sum.
class CraftedPlanTest : public PlanTest {
 protected:
  CraftedPlanTest() {
    addMails("mails", 2);
    addMbox("m\xFFox", 4);
    whole_ = (void(plan(2)), test::ReadWholeFile(at("plan")));
  }

  // The plan with another text in place of one that it has; what is said of it, or of its tasks.
  std::string refusal(const std::string& text, const std::string& other) {
    std::string bytes = whole_;
    const size_t place = bytes.find(text);
    EXPECT_NE(place, std::string::npos) << text << " in " << bytes;
    if (place == std::string::npos) return {};
    bytes.replace(place, text.size(), other);
    const size_t rest = bytes.find('\n') + 1;
    Sha256 sum;
    sum.add(std::string_view(bytes).substr(rest));
    const std::string key = R"("plan":")";
    bytes.replace(bytes.find(key, 10) + key.size(), 64, sum.digest());
    std::ofstream(at("plan"), std::ios::binary) << bytes;
    return failureOf([&] {
      const PlanFile crafted(at("plan").string());
      crafted.forEachTask([](uint64_t, const PlannedTask&) {});
    });
  }

  std::string whole_;
};

TEST_F(CraftedPlanTest, HasOnlyInputsAndRangesThatAreThere) {
  EXPECT_EQ(refusal(R"("task":1)", R"("task":1)"), "");
  EXPECT_EQ(refusal(R"({"input":0,"entries":1})", R"({"input":7,"entries":1})"),
            text("plan") + ": has no input 7");
  EXPECT_EQ(refusal(R"({"input":0,"entries":1})", R"({"input":0,"entries":2})"),
            text("plan") + ": has a range that input 0 does not have");
  EXPECT_NE(refusal(R"({"input":0,"entries":1})", R"({"input":-1,"entries":1})"), "");
  EXPECT_NE(refusal(R"("items":[{)", R"("items":{"a":{)"), "");
  EXPECT_NE(refusal(R"("task":1)", R"("task":0)"), "");
}

TEST_F(CraftedPlanTest, NamesNoPlaceOutside) {
  const std::string none = text("plan") + ": is no plan of this version";
  for (const char* const path : {"", "..", ".", "/x", "a/../x", "a//b", "a/", "a\\u0000b"}) {
    EXPECT_EQ(refusal(R"("tree":"100.eml")", R"("tree":")" + std::string(path) + '"'), none)
        << path;
  }
  EXPECT_EQ(refusal(R"("tree":"100.eml")", R"("tree":"101.eml")"), none);
  EXPECT_EQ(refusal(R"("tree":"100.eml")", R"("tree":"other")"), "");
}

TEST_F(CraftedPlanTest, HasTextsThatAreTexts) {
  const std::string none = text("plan") + ": is no plan of this version";
  const std::string hex = R"({"hex":")";
  EXPECT_EQ(refusal(hex, hex + "zz"), none);
  EXPECT_EQ(refusal(hex, hex + "0"), none);
  EXPECT_EQ(refusal(hex, hex + "2f"), "");
  EXPECT_EQ(refusal(hex, R"({"hax":")"), none);
  EXPECT_EQ(refusal(R"("to":["text"])", R"("to":["tune"])"), none);
  EXPECT_EQ(refusal(R"("kind":"mbox")", R"("kind":"box")"), none);
}

}  // namespace
}  // namespace tarn::archive
