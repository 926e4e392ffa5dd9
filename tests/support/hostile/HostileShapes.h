// HostileShapes.h - mail files that hold thousands of one thing: parts, headers, attachments, rows,
// levels. Each shape can be made of any size, so that one table serves tests of depth, tests of
// memory, and measurements of growth.
#ifndef TARN_TESTS_SUPPORT_HOSTILE_HOSTILESHAPES_H
#define TARN_TESTS_SUPPORT_HOSTILE_HOSTILESHAPES_H

#include <cstddef>
#include <ostream>
#include <span>
#include <string>

namespace tarn::test {

enum class HostileFormat { Mail, Msg, Store, Tnef, Mbox };

struct HostileShape {
  const char* name;  // letters and digits: what there are many of
  HostileFormat format;
  std::string (*file)(size_t count);
  size_t count;  // what measurements of growth begin with: a file of about a megabyte
};

std::span<const HostileShape> HostileMails();
// Bodies of mails: HTML and text.
std::span<const HostileShape> HostileBodies();
std::span<const HostileShape> HostileMsgFiles();
// Bodies of MSG files: compressed RTF.
std::span<const HostileShape> HostileRichTexts();
std::span<const HostileShape> HostileStores();
// TNEF and mboxes.
std::span<const HostileShape> HostileContainers();

// "eml", "msg", "pst", "dat", "mbox".
const char* ExtensionOf(HostileFormat format);

inline void PrintTo(const HostileShape& shape, std::ostream* out) { *out << shape.name; }

}  // namespace tarn::test

#endif
