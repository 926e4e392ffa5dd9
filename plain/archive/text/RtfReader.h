// RtfReader.h - the text of RTF, for three purposes.
//
// All three follow groups, destinations, fonts with their code pages, and Unicode with its
// replacements (RTF 1.9.1). What differs is which text counts, and how it is written:
//
//              Html (MS-OXRTFEX)            Text (MS-OXRTFEX)      Reading
//   text       outside of \htmlrtf, and     outside of \htmlrtf    what a reader of RTF sees
//              in {\*\htmltag ...}
//   line ends  CRLF                         CRLF                   LF
//   \emdash    &mdash;, and so on           the character          the character
//   \cell      nothing                      nothing                a tab
//   a list's   nothing, as all of \pntext   nothing                as it is
//   mark
//   a field    what it shows                what it shows          that, and the address of a link
//   a drawing  its \shprslt                 its \shprslt           its text, else its \shprslt
//   \upr       the first of the two         the first              the one in Unicode
//
// Nothing is too damaged. There is no recursion: open groups are entries of a stack that counts
// groups of the same state in one entry.
#ifndef TARN_ARCHIVE_RTFREADER_H
#define TARN_ARCHIVE_RTFREADER_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "archive/text/Charsets.h"
#include "archive/text/RtfTokens.h"
#include "archive/text/RtfWords.h"

namespace tarn::archive {

enum class RtfPurpose : uint8_t { Html, Text, Reading };

class RtfReader {
 public:
  RtfReader(std::string_view rtf, RtfPurpose purpose);

  std::string read();

  // For tests: what the open groups took at most.
  size_t mostStackEntries() const { return mostStackEntries_; }

 private:
  enum class Destination : uint8_t { Body, HtmlTag, FontTable, Instruction, Shape, Skipped };

  struct State {
    uint32_t codePage = 0;  // of bytes
    int32_t skipAfterUnicode = 1;
    Destination destination = Destination::Body;
    bool isForRtf = false;  // after \htmlrtf
    bool isHidden = false;
    bool isFieldResult = false;
    bool isShapeText = false;
    size_t pairAt = std::string::npos;  // in a \upr: where its text begins

    friend bool operator==(const State&, const State&) = default;
  };
  struct StackEntry {
    State state;
    size_t groups = 0;
  };

  void take(const RtfToken& token);
  void takeWord(const RtfToken& token);
  void takeDestination(const RtfWord& word);
  void takeShapeWord(const RtfWord& word);
  void dropPair();
  void takeFontWord(const RtfWord& word, int32_t number);
  void takeStateWord(const RtfWord& word, const std::optional<int32_t>& number);
  void takeTextWord(const RtfWord& word);
  void takeSymbol(char symbol);
  void takeUnicode(int32_t number);
  void startGroup();
  void endGroup();

  bool isShown() const;
  bool skipsReplacement();
  void putBytes(std::string_view bytes);
  void putCodePoint(char32_t codePoint);
  void putUtf8(std::string_view text);
  void putLineEnd();
  void flushBytes();
  void flushSurrogate();
  void decode(std::string_view bytes, uint32_t codePage);
  void endInstruction();
  void endFieldResult();
  void startLine();
  std::string& target();
  uint32_t codePageOfFont(int32_t font) const;

  RtfTokens tokens_;
  const RtfPurpose purpose_;
  std::string text_;
  std::string instruction_;  // of the field that is open
  std::string linkAddress_;
  size_t fieldResultAt_ = 0;
  size_t shapeTextAt_ = 0;
  bool hasShapeText_ = false;  // of the drawing that is open

  State state_;
  std::vector<StackEntry> stack_;
  size_t depth_ = 0;
  size_t mostStackEntries_ = 0;
  bool isGroupStart_ = false;  // nothing but "\*" has come since the group's brace
  bool isIgnorable_ = false;   // the word to come is a destination that may be unknown

  std::string bytes_;  // of the state's code page, not converted yet
  char16_t highSurrogate_ = 0;
  int32_t skip_ = 0;  // characters to come that replace one of Unicode

  uint32_t documentCodePage_ = 1252;
  int32_t defaultFont_ = 0;
  int32_t fontInTable_ = 0;
  std::map<int32_t, uint32_t> fontCodePages_;
  std::map<uint32_t, std::optional<CharsetDecoder>> decoders_;
};

}  // namespace tarn::archive

#endif
