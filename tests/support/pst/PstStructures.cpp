#include "support/pst/PstStructures.h"

#include <stdexcept>

#include "support/pst/PstBytes.h"
#include "support/pst/PstCodec.h"

namespace tarn::test {
namespace {

void AppendPadded(std::string& bytes, uint64_t value, size_t width, size_t paddedWidth) {
  AppendLe(bytes, value, width);
  AppendLe(bytes, 0, paddedWidth - width);
}

}  // namespace

std::string EntryBytes(PstLayout layout, const PstNodeEntry& entry) {
  const size_t width = OffsetsOf(layout).idWidth;
  std::string bytes;
  AppendPadded(bytes, entry.nid, 4, width);
  AppendLe(bytes, entry.dataBid, width);
  AppendLe(bytes, entry.subnodeBid, width);
  AppendPadded(bytes, entry.parent, 4, width);
  return bytes;
}

std::string EntryBytes(PstLayout layout, const PstBlockEntry& entry) {
  const PstOffsets& at = OffsetsOf(layout);
  std::string bytes = InnerEntryBytes(layout, entry.bid, entry.ib);
  AppendLe(bytes, entry.cb, 2);
  AppendLe(bytes, entry.cRef, 2);
  bytes.resize(at.bbtLeafEntry);
  return bytes;
}

std::string EntryBytes(PstLayout layout, const SubnodeEntry& entry) {
  return InnerEntryBytes(layout, entry.nid, PstPageRef{entry.dataBid, entry.subnodeBid});
}

std::string InnerEntryBytes(PstLayout layout, uint64_t key, const PstPageRef& page) {
  return InnerEntryBytes(layout, key, page.bid) + LeBytes(page.ib, OffsetsOf(layout).idWidth);
}

std::string InnerEntryBytes(PstLayout layout, uint64_t key, uint64_t bid) {
  const size_t width = OffsetsOf(layout).idWidth;
  return LeBytes(key, width) + LeBytes(bid, width);
}

std::string TreePageBody(PstLayout layout, size_t entrySize, uint8_t level, size_t count,
                         std::string_view entries) {
  const PstOffsets& at = OffsetsOf(layout);
  std::string body(entries);
  body.resize(at.pageTrailer);
  PutLe(body, at.pageCounters, count, 1);
  PutLe(body, at.pageCounters + 1, at.pageCounters / entrySize, 1);
  PutLe(body, at.pageCounters + 2, entrySize, 1);
  PutLe(body, at.pageCounters + 3, level, 1);
  return body;
}

std::string PageBytes(PstLayout layout, uint8_t type, const PstPageRef& page,
                      std::string_view body) {
  const PstOffsets& at = OffsetsOf(layout);
  if (body.size() > at.pageTrailer) throw std::length_error("page body");
  std::string bytes(body);
  bytes.resize(kPstPageSize);
  PutLe(bytes, at.pageTrailer, type, 1);
  PutLe(bytes, at.pageTrailer + 1, type, 1);
  // The id of a map is its offset, so that its signature is 0, as it has to be.
  PutLe(bytes, at.pageSignature, PstSignature(page.bid, page.ib), 2);
  PutLe(bytes, at.pageBid, page.bid, at.idWidth);
  PutLe(bytes, at.pageCrc, PstCrc(std::string_view(bytes).substr(0, at.pageTrailer)), 4);
  return bytes;
}

std::string ExtendedBlockData(PstLayout layout, uint8_t level, std::span<const uint64_t> ids,
                              uint32_t totalSize) {
  std::string data = LeBytes(1, 1) + LeBytes(level, 1) + LeBytes(ids.size(), 2);
  AppendLe(data, totalSize, 4);
  for (const uint64_t id : ids) AppendLe(data, id, OffsetsOf(layout).idWidth);
  return data;
}

std::string SubnodeBlockData(PstLayout layout, uint8_t level, size_t count,
                             std::string_view entries) {
  std::string data = LeBytes(2, 1) + LeBytes(level, 1) + LeBytes(count, 2);
  data.resize(OffsetsOf(layout).subnodeEntries);
  return data += entries;
}

std::string BlockBytes(PstLayout layout, const PstPageRef& block, std::string_view data,
                       char padding) {
  const PstOffsets& at = OffsetsOf(layout);
  std::string bytes(data);
  bytes.resize(BlockExtent(layout, data.size()), padding);
  const size_t trailer = bytes.size() - at.blockTrailer;
  PutLe(bytes, trailer, data.size(), 2);
  PutLe(bytes, trailer + 2, PstSignature(block.bid, block.ib), 2);
  PutLe(bytes, trailer + at.blockBid, block.bid, at.idWidth);
  PutLe(bytes, trailer + at.blockCrc, PstCrc(data), 4);
  return bytes;
}

}  // namespace tarn::test
