#include "archive/common/JsonWriter.h"

#include <gtest/gtest.h>

namespace tarn::archive {
namespace {

std::string Quoted(std::string_view text) {
  JsonWriter json;
  json.text(text);
  return std::string(json.line());
}

TEST(JsonWriter, PutsCommasBetweenWhatItIsTold) {
  JsonWriter json;
  json.openObject();
  json.name("a");
  json.number(1);
  json.name("b");
  json.openArray();
  json.text("x");
  json.null();
  json.openObject();
  json.closeObject();
  json.openArray();
  json.closeArray();
  json.closeArray();
  json.name("c");
  json.number(18446744073709551615U);
  json.name("d");
  json.boolean(true);
  json.name("e");
  json.boolean(false);
  json.closeObject();
  EXPECT_EQ(json.line(),
            R"({"a":1,"b":["x",null,{},[]],"c":18446744073709551615,"d":true,"e":false})");
  json.clear();
  EXPECT_EQ(json.line(), "");
  json.openArray();
  json.closeArray();
  EXPECT_EQ(json.line(), "[]");
}

TEST(JsonWriter, EscapesWhatJsonAndTerminalsMustNotGet) {
  EXPECT_EQ(Quoted("\"\\/"), R"("\"\\/")");
  EXPECT_EQ(Quoted("a\nb\rc\td"), R"("a\nb\rc\td")");
  EXPECT_EQ(Quoted(std::string_view("\0\x1B\x1F\x7F", 4)), R"("\u0000\u001b\u001f\u007f")");
}

TEST(JsonWriter, EscapesWhatTurnsOrBreaksLines) {
  EXPECT_EQ(Quoted("a\u0080b\u009B\u009Fc"), R"("a\u0080b\u009b\u009fc")");
  EXPECT_EQ(Quoted("\u2028\u2029"), R"("\u2028\u2029")");
  EXPECT_EQ(Quoted("\u061C\u200E\u200F"), R"("\u061c\u200e\u200f")");
  EXPECT_EQ(Quoted("\uFEFFa"), R"("\ufeffa")");
  EXPECT_EQ(Quoted("x\u202A\u202Ey\u2066\u2069"), R"("x\u202a\u202ey\u2066\u2069")");
  EXPECT_EQ(Quoted("\u00A0\u061B\u200D\u2010\u2027\u202F"),
            "\"\u00A0\u061B\u200D\u2010\u2027\u202F\"");
}

TEST(JsonWriter, IsAlwaysUtf8) {
  EXPECT_EQ(Quoted("é日😀"), "\"é日😀\"");
  EXPECT_EQ(Quoted("\x80"), "\"\uFFFD\"");
  EXPECT_EQ(Quoted("a\xE2\x82z"), "\"a\uFFFDz\"");
  EXPECT_EQ(Quoted("\xED\xA0\x80").find("\xED"), std::string::npos);
  EXPECT_EQ(Quoted("\xF5"), "\"\uFFFD\"");
}

TEST(JsonWriter, EscapesNamesToo) {
  JsonWriter json;
  json.openObject();
  json.name("a\"b");
  json.null();
  json.closeObject();
  EXPECT_EQ(json.line(), R"({"a\"b":null})");
}

}  // namespace
}  // namespace tarn::archive
