#include "archive/catalogue/WordText.h"

#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <iterator>
#include <new>

namespace tarn::archive {
namespace {

struct CharacterRange {
  UChar32 first;
  UChar32 last;
};

// Sorted.
constexpr CharacterRange kScriptsWithoutBlanks[] = {
    {0x0E00, 0x0EFF},    // Thai, Lao
    {0x1000, 0x109F},    // Burmese
    {0x1100, 0x11FF},    // letters of Korean
    {0x1780, 0x17FF},    // Khmer
    {0x3005, 0x3007},    // marks that repeat a character, and zero
    {0x3041, 0x30FF},    // Hiragana, Katakana
    {0x3105, 0x318F},    // Bopomofo, letters of Korean
    {0x31F0, 0x31FF},    // Katakana
    {0x3400, 0x4DBF},    // Han
    {0x4E00, 0xA4CF},    // Han, Yi
    {0xA960, 0xA97F},    // letters of Korean
    {0xAC00, 0xD7FF},    // Korean
    {0xF900, 0xFAFF},    // Han
    {0x1AFF0, 0x1B16F},  // Kana
    {0x20000, 0x3FFFD},  // Han
};

// Sorted.
constexpr CharacterRange kLeftOut[] = {
    {0x0591, 0x05BD}, {0x05BF, 0x05BF}, {0x05C1, 0x05C2}, {0x05C4, 0x05C5}, {0x05C7, 0x05C7},
    {0x0610, 0x061A}, {0x0640, 0x0640}, {0x064B, 0x065F}, {0x0670, 0x0670}, {0x06D6, 0x06DC},
    {0x06DF, 0x06E4}, {0x06E7, 0x06E8}, {0x06EA, 0x06ED},
};

template <size_t Count>
bool IsWithin(const CharacterRange (&ranges)[Count], UChar32 character) {
  const CharacterRange* const range = std::lower_bound(
      std::begin(ranges), std::end(ranges), character,
      [](const CharacterRange& each, UChar32 wanted) { return each.last < wanted; });
  return range != std::end(ranges) && range->first <= character;
}

bool IsOfWords(UChar32 character) {
  return (U_GET_GC_MASK(character) & (U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK | U_GC_CO_MASK)) != 0;
}

bool IsPaired(UChar32 character) {
  return character >= kScriptsWithoutBlanks[0].first &&
         IsWithin(kScriptsWithoutBlanks, character) && IsOfWords(character);
}

constexpr size_t kLongestCharacter = 4;

// Takes folded characters and puts them down as words.
class WordSink {
 public:
  explicit WordSink(Origins origins) : keepsOrigins_(origins == Origins::Keep) {}

  void reserve(size_t bytes) { words_.text.reserve(bytes); }

  void take(UChar32 character, size_t origin) {
    if (IsWithin(kLeftOut, character)) return;
    if (IsPaired(character)) {
      takePaired(character, origin);
      return;
    }
    if (IsOfWords(character)) endRun();
    put(character, origin);
  }

  // An ASCII text.
  void takeAscii(std::string_view text, size_t origin) {
    for (const char letter : text) {
      const bool isCapital = letter >= 'A' && letter <= 'Z';
      const bool isOfWords =
          isCapital || (letter >= 'a' && letter <= 'z') || (letter >= '0' && letter <= '9');
      if (isOfWords) endRun();
      putByte(isCapital ? static_cast<char>(letter - 'A' + 'a') : letter, origin++);
    }
  }

  // The last of a run is put down when something follows that is of words, or the text ends.
  void endRun() {
    if (run_ == 0) return;
    put(last_, lastOrigin_);
    putByte(' ', lastOrigin_);
    run_ = 0;
  }

  // The number of characters of the run that the text ends in.
  size_t openRun() const { return run_; }

  WordText finish(size_t end) {
    if (keepsOrigins_) words_.origins.push_back(static_cast<uint32_t>(end));
    return std::move(words_);
  }

 private:
  void takePaired(UChar32 character, size_t origin) {
    if (isRunBroken_) endRun();
    if (run_ == 0) {
      putByte(' ', origin);
    } else {
      put(last_, lastOrigin_);
      put(character, origin);
      putByte(' ', origin);
    }
    ++run_;
    last_ = character;
    lastOrigin_ = origin;
    isRunBroken_ = false;
  }

  void put(UChar32 character, size_t origin) {
    uint8_t bytes[kLongestCharacter];
    int32_t length = 0;
    U8_APPEND_UNSAFE(bytes, length, character);
    for (int32_t at = 0; at < length; ++at) putByte(static_cast<char>(bytes[at]), origin);
  }

  void putByte(char byte, size_t origin) {
    isRunBroken_ = true;
    words_.text += byte;
    if (keepsOrigins_) words_.origins.push_back(static_cast<uint32_t>(origin));
  }

  const bool keepsOrigins_;
  WordText words_;
  size_t run_ = 0;  // characters of paired scripts one after the other
  UChar32 last_ = 0;
  size_t lastOrigin_ = 0;
  bool isRunBroken_ = false;  // something came after the last of them
};

void Check(UErrorCode error) {
  // Out of memory is all that these calls can fail by.
  if (U_FAILURE(error) != 0) throw std::bad_alloc();
}

bool IsAscii(std::string_view text) {
  unsigned char bits = 0;
  for (const char letter : text) bits |= static_cast<unsigned char>(letter);
  return bits < 0x80;
}

std::string LowerCase(std::string_view ascii) {
  std::string text(ascii);
  for (char& letter : text) {
    const bool isCapital = letter >= 'A' && letter <= 'Z';
    letter = static_cast<char>(letter + (isCapital ? 'a' - 'A' : 0));
  }
  return text;
}

// Goes through a text from one place at which folding may begin to the next.
class Folder {
 public:
  Folder(std::string_view text, WordSink& sink) : text_(text), sink_(sink) {
    UErrorCode error = U_ZERO_ERROR;
    fold_ = unorm2_getNFKCCasefoldInstance(&error);
    Check(error);
  }

  void run() {
    size_t at = 0;
    while (at < text_.size()) {
      size_t end = at;
      while (end < text_.size() && U8_IS_SINGLE(byteAt(end))) ++end;
      // What follows may be a mark of the last one.
      if (end < text_.size() && end > at) --end;
      sink_.takeAscii(text_.substr(at, end - at), at);
      at = end;
      if (at < text_.size()) at = takeSegment(at);
    }
  }

 private:
  // More marks than that on one character are no writing.
  static constexpr size_t kLongestSegment = 32;

  uint8_t byteAt(size_t at) const { return static_cast<uint8_t>(text_[at]); }

  UChar32 next(size_t& at) const {
    UChar32 character = 0;
    U8_NEXT_OR_FFFD(reinterpret_cast<const uint8_t*>(text_.data()), at, text_.size(), character);
    return character;
  }

  // From a character to the next one that nothing before it changes; the place after them.
  size_t takeSegment(size_t start) {
    char16_t units[2 * kLongestSegment];
    size_t length = 0;
    size_t count = 0;
    size_t at = start;
    UChar32 character = next(at);
    for (;;) {
      U16_APPEND_UNSAFE(units, length, character);
      ++count;
      if (at >= text_.size() || count == kLongestSegment) break;
      size_t after = at;
      character = next(after);
      if (unorm2_hasBoundaryBefore(fold_, character) != 0) break;
      at = after;
    }
    if (count == 1) character = firstOf(units, length);
    if (count == 1 && unorm2_isInert(fold_, character) != 0) {
      sink_.take(character, start);
    } else {
      takeFolded(units, length, start);
    }
    return at;
  }

  static UChar32 firstOf(const char16_t* units, size_t length) {
    UChar32 character = 0;
    size_t at = 0;
    U16_NEXT(units, at, length, character);
    return character;
  }

  void takeFolded(const char16_t* units, size_t length, size_t origin) {
    // The longest folding of one character has 18.
    constexpr size_t kMostUnits = 2 * kLongestSegment * 18;
    char16_t folded[kMostUnits];
    UErrorCode error = U_ZERO_ERROR;
    const int32_t count = unorm2_normalize(fold_, units, static_cast<int32_t>(length), folded,
                                           static_cast<int32_t>(kMostUnits), &error);
    Check(error);
    for (int32_t at = 0; at < count;) {
      UChar32 character = 0;
      U16_NEXT(folded, at, count, character);
      sink_.take(character, origin);
    }
  }

  std::string_view text_;
  WordSink& sink_;
  const UNormalizer2* fold_ = nullptr;
};

}  // namespace

WordText WordsOf(std::string_view text, Origins origins) {
  if (origins == Origins::Leave && IsAscii(text)) return {LowerCase(text), {}};
  WordSink sink(origins);
  sink.reserve(text.size() + text.size() / 8);
  Folder(text, sink).run();
  sink.endRun();
  return sink.finish(text.size());
}

size_t EndOfCharacter(std::string_view text, size_t at) {
  size_t end = at;
  UChar32 character = 0;
  U8_NEXT_OR_FFFD(reinterpret_cast<const uint8_t*>(text.data()), end, text.size(), character);
  for (size_t next = end; next < text.size(); end = next) {
    U8_NEXT_OR_FFFD(reinterpret_cast<const uint8_t*>(text.data()), next, text.size(), character);
    if ((U_GET_GC_MASK(character) & U_GC_M_MASK) == 0) break;
  }
  return end;
}

WantedWords WordsToFind(std::string_view text) {
  WordSink sink(Origins::Leave);
  Folder(text, sink).run();
  const bool endsInPart = sink.openRun() == 1;
  if (endsInPart) sink.endRun();
  return {sink.finish(text.size()).text, endsInPart};
}

}  // namespace tarn::archive
