// Usage: ArchiveDump KIND PATH
// Prints everything that a reader of the archive gives of a path, as JSON Lines. KIND says which
// reader: mail, mbox, maildir.
#include <cstdio>
#include <string_view>

#include "DumpItems.h"
#include "archive/mail/MailReaders.h"

namespace {

using tarn::archive::ItemReader;
using tarn::archive::Outcome;

struct Kind {
  std::string_view name;
  Outcome<std::unique_ptr<ItemReader>> (*open)(const std::filesystem::path&);
};

// A room adds its line here, and its library to the program.
constexpr Kind kKinds[] = {
    {"mail", tarn::archive::OpenMail},
    {"mbox", tarn::archive::OpenMbox},
    {"maildir", tarn::archive::OpenMaildir},
};

}  // namespace

int main(int count, char** arguments) {
  if (count == 3) {
    for (const Kind& kind : kKinds) {
      if (kind.name != arguments[1]) continue;
      const auto reader = kind.open(arguments[2]);
      if (!reader) {
        std::fprintf(stderr, "%s: %s\n", arguments[2], reader.trouble().reason.c_str());
        return 1;
      }
      tarn::test::DumpItems(**reader, stdout);
      return 0;
    }
  }
  std::fprintf(stderr, "usage: ArchiveDump KIND PATH\n");
  return 2;
}
