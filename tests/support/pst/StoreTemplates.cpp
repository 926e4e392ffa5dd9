#include "support/pst/StoreTemplates.h"

#include <initializer_list>
#include <map>
#include <utility>

#include "support/pst/PstBytes.h"

namespace tarn::test {
namespace {

using Columns = std::initializer_list<std::pair<uint16_t, uint16_t>>;

void AddColumns(TableContextBuilder& table, const Columns& columns) {
  for (const auto& [id, type] : columns) table.column(id, type);
}

// 16 bytes, as a GUID has.
constexpr std::string_view kStoreUid = "TarnTestStoreUid";

std::string EntryId(uint32_t nid) {
  return LeBytes(0, 4) + std::string(kStoreUid) + LeBytes(nid, 4);
}

PstNodeParts StoreBag(PstLayout layout, const BthShape& shape) {
  PropertyContextBuilder bag(layout, shape);
  constexpr uint32_t kSubtreeWastebasketFinder = 0x89;
  bag.binary(kPropRecordKey, kStoreUid);
  bag.text(kPropDisplayName, u"Personal Folders");
  bag.number(kPropValidFolderMask, kTypeInt32, kSubtreeWastebasketFinder);
  bag.binary(kPropIpmSubtreeEntryId, EntryId(kSubtreeNid));
  bag.binary(kPropIpmWastebasketEntryId, EntryId(kWastebasketNid));
  bag.binary(kPropFinderEntryId, EntryId(kFinderNid));
  bag.number(kPropPstPassword, kTypeInt32, 0);
  return bag.build();
}

PstNodeParts EmptyNameMap(PstLayout layout, const BthShape& shape) {
  constexpr uint32_t kBuckets = 251;
  PropertyContextBuilder bag(layout, shape);
  bag.number(0x0001, kTypeInt32, kBuckets);
  for (uint16_t stream = 0x0002; stream <= 0x0004; ++stream) bag.binary(stream, "");
  return bag.build();
}

PstNodeParts Template(PstLayout layout, void (*addColumns)(TableContextBuilder&)) {
  TableContextBuilder table(layout);
  addColumns(table);
  return table.build();
}

}  // namespace

void AddHierarchyColumns(TableContextBuilder& table) {
  AddColumns(table, {{0x0E30, kTypeInt32},
                     {0x0E33, kTypeInt64},
                     {0x0E34, kTypeBinary},
                     {0x0E38, kTypeInt32},
                     {kPropDisplayName, kTypeString},
                     {kPropContentCount, kTypeInt32},
                     {kPropContentUnreadCount, kTypeInt32},
                     {kPropSubfolders, kTypeBoolean},
                     {kPropContainerClass, kTypeString},
                     {0x6635, kTypeInt32},
                     {0x6636, kTypeInt32}});
}

void AddContentsColumns(TableContextBuilder& table) {
  AddColumns(table, {{kPropImportance, kTypeInt32},
                     {kPropMessageClass, kTypeString},
                     {0x0036, kTypeInt32},
                     {kPropSubject, kTypeString},
                     {kPropClientSubmitTime, kTypeTime},
                     {0x0042, kTypeString},
                     {0x0057, kTypeBoolean},
                     {0x0058, kTypeBoolean},
                     {0x0070, kTypeString},
                     {0x0071, kTypeBinary},
                     {kPropDisplayCc, kTypeString},
                     {kPropDisplayTo, kTypeString},
                     {0x0E06, kTypeTime},
                     {kPropMessageFlags, kTypeInt32},
                     {kPropMessageSize, kTypeInt32},
                     {kPropMessageStatus, kTypeInt32},
                     {0x0E30, kTypeInt32},
                     {0x0E33, kTypeInt64},
                     {0x0E34, kTypeBinary},
                     {0x0E38, kTypeInt32},
                     {0x0E3C, kTypeBinary},
                     {0x0E3D, kTypeBinary},
                     {0x1097, kTypeInt32},
                     {kPropLastModificationTime, kTypeTime},
                     {0x65C6, kTypeInt32}});
}

void AddAssociatedColumns(TableContextBuilder& table) {
  AddColumns(table, {{kPropMessageClass, kTypeString},
                     {kPropMessageFlags, kTypeInt32},
                     {kPropMessageStatus, kTypeInt32},
                     {kPropDisplayName, kTypeString}});
}

void AddAttachmentColumns(TableContextBuilder& table) {
  AddColumns(table, {{kPropAttachSize, kTypeInt32},
                     {kPropAttachFilename, kTypeString},
                     {kPropAttachMethod, kTypeInt32},
                     {kPropRenderingPosition, kTypeInt32}});
}

void AddRecipientColumns(TableContextBuilder& table,
                         const std::deque<PropertyContextBuilder>& recipients) {
  std::map<uint16_t, uint16_t> columns = {
      {0x0C15, kTypeInt32},  {0x0E0F, kTypeBoolean}, {0x0FF9, kTypeBinary},
      {0x0FFE, kTypeInt32},  {0x0FFF, kTypeBinary},  {kPropDisplayName, kTypeString},
      {0x3002, kTypeString}, {0x3003, kTypeString},  {0x300B, kTypeBinary},
      {0x3900, kTypeInt32},  {0x39FF, kTypeString},  {0x3A40, kTypeBoolean}};
  for (const PropertyContextBuilder& recipient : recipients) {
    for (const auto& [id, type] : recipient.types()) columns[id] = type;
  }
  for (const auto& [id, type] : columns) table.column(id, type);
}

void CopyToRow(const PropertyContextBuilder& bag, TableContextBuilder& table,
               TableContextBuilder::Row& row) {
  for (const TableColumn& column : table.columns()) {
    const auto* found = bag.find(column.id);
    if (found != nullptr && found->first == column.type) row.cell(column.id, found->second);
  }
}

void WriteStoreNodes(PstFileBuilder& file, const BthShape& shape, const StoreNodes& nodes) {
  const PstLayout layout = file.options().layout;
  file.node(kMessageStoreNid, nodes.messageStore ? *nodes.messageStore : StoreBag(layout, shape));
  file.node(kNameMapNid, nodes.nameMap ? *nodes.nameMap : EmptyNameMap(layout, shape));
  // The queue and the list of searches have no data while there is nothing to search.
  file.node(0x1E1, 0, 0);
  file.node(0x201, 0, 0);
  file.node(0x60D, Template(layout, AddHierarchyColumns));
  file.node(0x60E, Template(layout, AddContentsColumns));
  file.node(0x60F, Template(layout, AddAssociatedColumns));
  file.node(0x610, Template(layout, AddContentsColumns));
  file.node(kAttachmentTableNid, Template(layout, AddAttachmentColumns));
  file.node(kRecipientTableNid,
            Template(layout, [](TableContextBuilder& table) { AddRecipientColumns(table); }));
}

}  // namespace tarn::test
