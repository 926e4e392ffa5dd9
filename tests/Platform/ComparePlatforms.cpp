// ComparePlatforms POSIX WINDOWS TABLE: compares two files of PlatformDump and says in which
// answers they differ, but for the differences that the table accepts. 0 when they differ as it
// says.
//
// A difference is a line: the kind of section, the codes, what each side answers for every one of
// them, and the pages or faces where it does. Answers are in hexadecimal; "!" follows where a
// default was used, and "-" is a failure.
//
//   units 0100 0102-0103 posix 3F! windows 41 in 1250 1252
//
// The table holds these lines in any order; "#" begins a comment. Without a table all
// differences are written to standard output.
#include <algorithm>
#include <compare>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace {

constexpr size_t kAnswerBytes = 8;

struct Section {
  std::string kind;
  std::string name;
  std::vector<std::string> answers;
};

std::string Hex(uint32_t value, int digits) {
  std::string text;
  for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) {
    text += "0123456789ABCDEF"[value >> shift & 15];
  }
  return text;
}

std::string Show(const std::string& answer) {
  const auto size = static_cast<uint8_t>(answer[0]);
  if (size == 0) return "-";
  std::string text;
  for (size_t at = 0; at < size && at < kAnswerBytes - 2; ++at) {
    text += Hex(static_cast<uint8_t>(answer[2 + at]), 2);
  }
  return text + (answer[1] != 0 ? "!" : "");
}

bool Read(const char* file, std::vector<Section>& sections) {
  std::ifstream stream(file, std::ios::binary);
  std::string kind;
  std::string name;
  size_t count = 0;
  while (stream >> kind >> name >> count) {
    stream.get();
    Section section{kind, name, {}};
    for (size_t at = 0; at < count; ++at) {
      std::string answer(kAnswerBytes, '\0');
      if (!stream.read(answer.data(), kAnswerBytes)) break;
      section.answers.push_back(answer);
    }
    if (section.answers.size() != count) break;
    sections.push_back(std::move(section));
  }
  if (stream.eof() && !sections.empty() && count == sections.back().answers.size()) return true;
  std::cerr << file << ": no dump, or cut off\n";
  return false;
}

// What differs alike, and the codes that do.
struct Difference {
  std::string kind;
  std::string names;
  std::string answers;

  auto operator<=>(const Difference&) const = default;
};
using Differences = std::map<Difference, std::vector<uint32_t>>;

// Codes that differ alike in the same pages come together, whatever order the dumps have.
Differences FindDifferences(const std::vector<Section>& posix,
                            const std::vector<Section>& windows) {
  std::map<std::tuple<std::string, std::string, uint32_t>, std::string> namesOf;
  for (size_t at = 0; at < posix.size(); ++at) {
    for (uint32_t code = 0; code < posix[at].answers.size(); ++code) {
      const std::string& here = posix[at].answers[code];
      const std::string& there = windows[at].answers[code];
      if (here == there) continue;
      const std::string answers = "posix " + Show(here) + " windows " + Show(there);
      namesOf[{posix[at].kind, answers, code}] += " " + posix[at].name;
    }
  }
  Differences differences;
  for (const auto& [where, names] : namesOf) {
    const auto& [kind, answers, code] = where;
    differences[{kind, names, answers}].push_back(code);
  }
  return differences;
}

// "0041 0043-0045"
std::string Runs(const std::vector<uint32_t>& codes) {
  std::string text;
  for (size_t first = 0; first < codes.size(); ++first) {
    size_t last = first;
    while (last + 1 < codes.size() && codes[last + 1] == codes[last] + 1) ++last;
    if (!text.empty()) text += ' ';
    text += Hex(codes[first], 4);
    if (last != first) text += "-" + Hex(codes[last], 4);
    first = last;
  }
  return text;
}

std::vector<std::string> Lines(const Differences& differences) {
  std::vector<std::string> lines;
  for (const auto& [difference, codes] : differences) {
    lines.push_back(difference.kind + " " + Runs(codes) + " " + difference.answers + " in" +
                    difference.names);
  }
  return lines;
}

std::vector<std::string> ReadTable(const char* file) {
  std::vector<std::string> lines;
  std::ifstream stream(file);
  if (!stream) std::cerr << file << ": cannot be read\n";
  for (std::string line; std::getline(stream, line);) {
    if (!line.empty() && line[0] != '#') lines.push_back(line);
  }
  return lines;
}

// Tells what only `lines` has. Returns how many.
size_t Report(const char* what, const std::vector<std::string>& lines,
              const std::vector<std::string>& others) {
  const std::set<std::string> known(others.begin(), others.end());
  size_t count = 0;
  for (const std::string& line : lines) {
    if (known.count(line) != 0) continue;
    std::cout << what << line << '\n';
    ++count;
  }
  return count;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3 && argc != 4) {
    std::cerr << "usage: ComparePlatforms POSIX WINDOWS [TABLE]\n";
    return 2;
  }
  std::vector<Section> posix;
  std::vector<Section> windows;
  if (!Read(argv[1], posix) || !Read(argv[2], windows)) return 1;
  const auto matches = [](const Section& a, const Section& b) {
    return a.kind == b.kind && a.name == b.name && a.answers.size() == b.answers.size();
  };
  if (!std::equal(posix.begin(), posix.end(), windows.begin(), windows.end(), matches)) {
    std::cout << "the dumps are not of the same pages and faces\n";
    return 1;
  }
  size_t answers = 0;
  for (const Section& section : posix) answers += section.answers.size();
  const Differences differences = FindDifferences(posix, windows);
  size_t codes = 0;
  for (const auto& [difference, where] : differences) {
    codes += where.size() *
             static_cast<size_t>(std::count(difference.names.begin(), difference.names.end(), ' '));
  }
  const std::vector<std::string> found = Lines(differences);
  if (argc == 3) {
    for (const std::string& line : found) std::cout << line << '\n';
    return 0;
  }
  const std::vector<std::string> accepted = ReadTable(argv[3]);
  const size_t wrong =
      Report("not accepted: ", found, accepted) + Report("accepted, but not so: ", accepted, found);
  std::cout << (wrong == 0 ? "platforms agree: " : "platforms do not agree: ") << codes << " of "
            << answers << " answers differ, in " << found.size() << " lines; " << accepted.size()
            << " are accepted\n";
  return wrong == 0 ? 0 : 1;
}
