// StoreTemplates.h - the columns of the usual tables and the nodes that every store has as
// published (MS-PST 2.4.1 to 2.4.6, 2.7).
#ifndef TARN_TESTS_SUPPORT_PST_STORETEMPLATES_H
#define TARN_TESTS_SUPPORT_PST_STORETEMPLATES_H

#include <cstdint>
#include <deque>
#include <optional>

#include "support/pst/PropertyContextBuilder.h"
#include "support/pst/PstFileBuilder.h"
#include "support/pst/TableContextBuilder.h"

namespace tarn::test {

inline constexpr uint32_t kMessageStoreNid = 0x21;
inline constexpr uint32_t kNameMapNid = 0x61;
inline constexpr uint32_t kRootFolderNid = 0x122;
inline constexpr uint32_t kSubtreeNid = 0x8022;      // top of the personal folders
inline constexpr uint32_t kWastebasketNid = 0x8042;  // deleted items
inline constexpr uint32_t kFinderNid = 0x2223;       // root of the searches

// Of the tables below a message, and of their templates.
inline constexpr uint32_t kAttachmentTableNid = 0x671;
inline constexpr uint32_t kRecipientTableNid = 0x692;

// Node ids of a folder's tables.
inline constexpr uint32_t HierarchyTableOf(uint32_t folder) { return (folder & ~0x1FU) | 0x0D; }
inline constexpr uint32_t ContentsTableOf(uint32_t folder) { return (folder & ~0x1FU) | 0x0E; }
inline constexpr uint32_t AssociatedTableOf(uint32_t folder) { return (folder & ~0x1FU) | 0x0F; }

void AddHierarchyColumns(TableContextBuilder& table);
void AddContentsColumns(TableContextBuilder& table);
void AddAssociatedColumns(TableContextBuilder& table);
void AddAttachmentColumns(TableContextBuilder& table);
// Besides the usual columns those that the recipients' values need: of 8-bit text in place of the
// usual one.
void AddRecipientColumns(TableContextBuilder& table,
                         const std::deque<PropertyContextBuilder>& recipients = {});

// Fills the cells of a row with those properties of a bag that are columns and fit one.
void CopyToRow(const PropertyContextBuilder& bag, TableContextBuilder& table,
               TableContextBuilder::Row& row);

// In place of the usual ones.
struct StoreNodes {
  std::optional<PstNodeParts> messageStore;
  std::optional<PstNodeParts> nameMap;
};

// Message store, name map, search nodes and table templates; not the folders.
void WriteStoreNodes(PstFileBuilder& file, const BthShape& shape, const StoreNodes& nodes = {});

}  // namespace tarn::test

#endif
