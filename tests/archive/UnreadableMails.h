// UnreadableMails.h - files among mails that cannot be read. Whether they are told depends on their
// names.
#ifndef TARN_TESTS_ARCHIVE_UNREADABLEMAILS_H
#define TARN_TESTS_ARCHIVE_UNREADABLEMAILS_H

#include <string>

#include "support/compound/CompoundBuilder.h"
#include "support/pst/StoreBuilder.h"

namespace tarn::archive {

// A store by its first bytes, with an encryption that needs a key (MS-PST 2.2.2.6, bCryptMethod).
inline std::string EncryptedStore() {
  test::StoreBuilder store(test::PstLayout::Unicode);
  std::string bytes = store.bytes();
  bytes[513] = 0x10;
  return bytes;
}

// A compound file of another program.
inline std::string LetterOfOtherProgram() {
  return test::CompoundBuilder().stream("WordDocument", "text").write();
}

}  // namespace tarn::archive

#endif
