#include "archive/sources/OpenSource.h"

#ifdef TARN_ARCHIVE_STORE
#include "archive/store/StoreReader.h"
#endif
#ifdef TARN_ARCHIVE_MSG
#include "archive/msg/MsgReader.h"
#endif
#ifdef TARN_ARCHIVE_TNEF
#include "archive/tnef/TnefReader.h"
#endif
#ifdef TARN_ARCHIVE_MAIL
#include "archive/mail/MailReaders.h"
#endif

namespace tarn::archive {

Outcome<std::unique_ptr<ItemReader>> OpenSource([[maybe_unused]] const std::filesystem::path& path,
                                                SourceKind kind,
                                                [[maybe_unused]] const ReaderOptions& options) {
  switch (kind) {
#ifdef TARN_ARCHIVE_STORE
    case SourceKind::Store:
      return OpenStore(path, options);
#endif
#ifdef TARN_ARCHIVE_MSG
    case SourceKind::Compound:
      return OpenMsg(path);
#endif
#ifdef TARN_ARCHIVE_TNEF
    case SourceKind::Tnef:
      return OpenTnef(path);
#endif
#ifdef TARN_ARCHIVE_MAIL
    case SourceKind::Mbox:
      return OpenMbox(path);
    case SourceKind::Mail:
      return OpenMail(path);
    case SourceKind::Maildir:
      return OpenMaildir(path);
#endif
    default:
      return Trouble{TroubleKind::Unsupported, "this kind of mail file is not read yet"};
  }
}

}  // namespace tarn::archive
