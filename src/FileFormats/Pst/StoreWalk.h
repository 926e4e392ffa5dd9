// StoreWalk.h - the messages of a store in their order, and the record of the wanted one.
//
// There is no index: message k is the k-th in walking order, folders by node id, messages by the
// rows of a folder's contents table. Counting believes what the folders say of their contents;
// walking takes what the tables hold. The two may differ: a folder called "Freebusy Data" is not
// counted but walked, and a message of the subject "LocalFreebusy" is counted but does not take a
// number. Hosts know messages by these numbers.
#ifndef TARN_FILEFORMATS_PST_STOREWALK_H
#define TARN_FILEFORMATS_PST_STOREWALK_H

#include <memory>

#include "Common/SearchBudget.h"
#include "FileFormats/Pst/StoreLimits.h"
#include "Internal/AttachmentRequest.h"
#include "Internal/MailMessage.h"
#include "Internal/PstFilterData.h"

namespace pststore {
class db_context;
}

namespace tarn {

using Store = std::shared_ptr<pststore::db_context>;

// Where the messages of a store go, and what reading them may still cost (StoreLimits.h). Messages
// that fail and those that are read in their place spend the same limits.
struct StoreReading {
  StoreReading(PstFilterData& data_, const AttachmentRequest* request_, uint64_t fileSize_)
      : data(data_),
        request(request_),
        fileSize(fileSize_),
        rowsLeft(RowLimit(fileSize_)),
        textLeft(TextLimit(fileSize_)),
        attachmentsLeft(AttachmentLimit(fileSize_)),
        imageBytesLeft(ImageLimit(fileSize_)),
        imageSearches(SearchBudget::ForImages(fileSize_)) {}

  PstFilterData& data;
  const AttachmentRequest* request;  // or null
  const uint64_t fileSize;
  uint64_t rowsLeft;
  uint64_t textLeft;         // bytes
  uint64_t attachmentsLeft;  // to look at for images
  uint64_t imageBytesLeft;
  SearchBudget imageSearches;
};

// A list of as many messages as the folders of the store claim. A folder without a name or without
// a count throws out of here.
//   StatusOk
//   StatusBadArgument  there are none
//   StatusOutOfMemory  also for names or a number of messages that no file of this size can hold;
//                      `list` is null
Status CountStoreMessages(MessageList*& list, const Store& store, uint64_t fileSize);

// Reads messages in order until the message `selected` (0-based) has filled the list's record;
// messages before it are read and not kept. `kind` becomes the document kind of the last
// message that had a body. A folder that cannot be read is passed over, as is the rest of a folder
// after a message that cannot be.
//   StatusOk            also when there are fewer messages: then the record is empty
//   StatusOutOfMemory   also for more rows, or more text, than the file can have
//   StatusNotSupported  compressed RTF that is damaged
//   others              of an inline image, or of the request's callback
// What the store throws does not leave this function.
Status WalkStoreMessages(MessageList& list, const Store& store, int32_t selected,
                         TarnDocumentKind& kind, StoreReading& reading);

// Frees the list with its record; null is nothing.
void ReleaseMessageList(MessageList* list);

}  // namespace tarn

#endif
