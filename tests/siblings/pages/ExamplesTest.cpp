// Every sample of examples/, in every kind of document that it has: pages are made of all of them,
// and all of their text is there.

#include <algorithm>
#include <map>
#include <sstream>

#include "DocumentWords.h"
#include "console/Json.h"
#include "tarnmail/TarnmailFixture.h"
#include "tarnmail/pages/PngReading.h"

namespace tarn::test {
namespace {

namespace fs = std::filesystem;
using WordList = std::vector<std::string>;

struct Sample {
  WordList words;        // the file, the message, the kind
  std::string document;  // "HTML", "RTF" or "text"; empty: there is none
};

class Examples : public TarnmailTest {
 protected:
  static WordList Files() {
    WordList files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(EXAMPLES_PATH)) {
      const std::string ending = Utf8(entry.path().extension());
      if (ending == ".eml" || ending == ".msg" || ending == ".pst") {
        files.push_back(Example(Utf8(entry.path().lexically_relative(EXAMPLES_PATH))));
      }
    }
    std::sort(files.begin(), files.end());
    return files;
  }

  // Each message of each file, with --text and without.
  std::vector<Sample> samples() {
    std::vector<Sample> all;
    for (const std::string& file : Files()) {
      const int messages =
          host::ParsedJson<nlohmann::json>(output({"info", "--json", file}))["messages"];
      for (int message = 1; message <= messages; ++message) {
        for (const bool text : {false, true}) {
          WordList words = {file, "-m", std::to_string(message)};
          if (text) words.emplace_back("--text");
          const auto answer = host::ParsedJson<nlohmann::json>(outputOf("info --json", words));
          const bool has = answer["document"].is_string();
          all.push_back({words, has ? answer["document"].get<std::string>() : ""});
        }
      }
    }
    return all;
  }

  // Of a command in one or more words.
  static WordList Command(const std::string& command, const WordList& words) {
    std::istringstream stream(command);
    WordList all;
    for (std::string word; stream >> word;) all.push_back(word);
    all.insert(all.end(), words.begin(), words.end());
    return all;
  }

  std::string outputOf(const std::string& command, const WordList& words) {
    return output(Command(command, words));
  }

  std::string textOf(const std::string& pdf) {
    directory_.write("asked.pdf", pdf);
    ProgramCall call;
    call.program = "/usr/bin/pdftotext";
    // In the order in which it was drawn.
    call.arguments = {"-raw", "-enc", "UTF-8", "asked.pdf", "-"};
    call.workingDirectory = directory_.path();
    const ProgramResult result = RunProgram(call);
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    return result.out;
  }
};

bool IsDark(int red, int green, int blue) { return red + green + blue < 3 * 128; }

std::string WordsOf(const std::string& kind, const std::string& document) {
  // A mail without plain text is HTML for --text as well.
  if (kind == "HTML" || document.starts_with("<html")) return WordsOfHtml(document);
  return kind == "RTF" ? WordsOfRtf(document) : WordsOfText(document);
}

// Where a line of Japanese is broken, there is no blank in its text.
std::string WithoutBlanks(std::string text) {
  std::erase(text, ' ');
  return text;
}

TEST_F(Examples, AreOfAllKinds) {
  std::map<std::string, int> kinds;
  for (const Sample& sample : samples()) ++kinds[sample.document];
  EXPECT_GE(kinds["HTML"], 5);
  EXPECT_GE(kinds["RTF"], 2);
  EXPECT_GE(kinds["text"], 8);
}

TEST_F(Examples, HavePages) {
  for (const Sample& sample : samples()) {
    SCOPED_TRACE(testing::PrintToString(sample.words));
    for (const char* route : {"--temp-files", "--in-memory"}) {
      const WordList command = Command(std::string("pages -o out ") + route, sample.words);
      if (sample.document.empty()) {
        EXPECT_EQ(failure(1, command), failure(1, Command("document", sample.words)));
        continue;
      }
      EXPECT_EQ(output(command), "");
      const PagePixels first = ReadPage(ReadWholeFile(directory_.path() / "out/page-0001.png"));
      EXPECT_NEAR(static_cast<double>(first.width), 794, 1);
      EXPECT_NEAR(static_cast<double>(first.height), 1123, 1);
      const size_t dark = CountPixels(first, IsDark);
      EXPECT_GE(dark, 500u) << route;
      EXPECT_LE(dark, first.width * first.height * 3 / 10) << route;
    }
  }
}

TEST_F(Examples, HaveAllTheirTextInPdf) {
  for (const Sample& sample : samples()) {
    if (sample.document.empty()) continue;
    SCOPED_TRACE(testing::PrintToString(sample.words));
    const std::string words =
        WordsOf(sample.document, outputOf("document --in-memory -o -", sample.words));
    const std::string shown = Words(textOf(outputOf("pages --in-memory --pdf -o -", sample.words)));
    EXPECT_GT(words.size(), 50u);
    if (sample.words[0].find("japanese") != std::string::npos) {
      EXPECT_EQ(WithoutBlanks(shown), WithoutBlanks(words));
    } else {
      EXPECT_EQ(shown, words);
    }
  }
}

}  // namespace
}  // namespace tarn::test
