#include "archive/sources/OpenSource.h"

#include "archive/mail/MailReaders.h"
#include "archive/msg/MsgReader.h"
#include "archive/store/StoreReader.h"
#include "archive/tnef/TnefReader.h"

namespace tarn::archive {

Outcome<std::unique_ptr<ItemReader>> OpenSource(const std::filesystem::path& path, SourceKind kind,
                                                const ReaderOptions& options) {
  switch (kind) {
    case SourceKind::Store:
      return OpenStore(path, options);
    case SourceKind::Compound:
      return OpenMsg(path);
    case SourceKind::Tnef:
      return OpenTnef(path);
    case SourceKind::Mbox:
      return OpenMbox(path);
    case SourceKind::Mail:
      return OpenMail(path);
    case SourceKind::Maildir:
      return OpenMaildir(path);
  }
  return Trouble{TroubleKind::Unsupported, "this kind of mail file is not read"};
}

}  // namespace tarn::archive
