#include "StoreBreaker.h"

#include <stdexcept>

#include "pststore/Blocks.h"
#include "pststore/DbContext.h"
#include "support/pst/PstBytes.h"

namespace tarn::test {

StoreBreaker::StoreBreaker(StoreBuilder& store)
    : wide_(store.layout() == PstLayout::Unicode ? 8 : 4),
      damage_((store.finish(), store.file())),
      path_(folder_.write("whole.pst", damage_.image())) {}

StoreBreaker::Place StoreBreaker::find(const NodePath& path) const {
  const auto context = pststore::open_database(path_.u16string().c_str());
  const pststore::node_info info = context->lookup_node_info(path.at(0));
  Place place{info.data_bid, info.subnode_bid, std::make_shared<pststore::node>(context, info)};
  for (size_t i = 1; i < path.size(); ++i) {
    const pststore::subnode_info below = place.node->get_subnode_block()->lookup(path[i]);
    place = {below.data_bid, below.subnode_bid,
             std::make_shared<pststore::node>(place.node->lookup(path[i]))};
  }
  return place;
}

uint32_t StoreBreaker::lastSubnode(const NodePath& path) const {
  const auto subnodes = find(path).node->get_subnode_block();
  return subnodes->get_key(subnodes->num_values() - 1);
}

// All of the trailer but the type of a page.
void StoreBreaker::breakExtent(const PstExtent& extent) {
  const size_t start = damage_.trailer(extent);
  for (size_t at = start + 2; at < start + 12; ++at) {
    damage_.image()[at] = static_cast<char>(damage_.image()[at] ^ 0x55);
  }
}

StoreBreaker& StoreBreaker::data(const NodePath& path) {
  breakExtent(damage_.block(find(path).data));
  return *this;
}

StoreBreaker& StoreBreaker::dataBlock(const NodePath& path, size_t index) {
  const Place place = find(path);
  const auto& above = dynamic_cast<pststore::extended_block&>(*place.node->get_data_block());
  breakExtent(damage_.block(above.get_child_ids().at(index)));
  return *this;
}

StoreBreaker& StoreBreaker::subnodes(const NodePath& path) {
  breakExtent(damage_.block(find(path).subnodes));
  return *this;
}

StoreBreaker& StoreBreaker::subnodesBlock(const NodePath& path, size_t index) {
  const PstExtent& above = damage_.block(find(path).subnodes);
  // An SIBLOCK: the head, and entries of a node id and a block id.
  const size_t head = wide_ == 8 ? 8 : 4;
  const std::string data = damage_.data(above);
  breakExtent(damage_.block(GetLe(data, head + (2 * index + 1) * wide_, wide_)));
  return *this;
}

void StoreBreaker::breakLeaf(PstExtentKind kind, uint64_t key, size_t width) {
  for (const PstExtent& extent : damage_.extents()) {
    if (extent.kind != kind) continue;
    const std::string page = damage_.image().substr(static_cast<size_t>(extent.offset), 512);
    const size_t counters = wide_ == 8 ? 488 : 496;
    if (GetLe(page, counters + 3, 1) != 0) continue;
    for (size_t i = 0; i < GetLe(page, counters, 1); ++i) {
      if (GetLe(page, i * GetLe(page, counters + 2, 1), width) != key) continue;
      breakExtent(extent);
      return;
    }
  }
  throw std::out_of_range("no leaf has this");
}

StoreBreaker& StoreBreaker::nodePage(uint32_t nid) {
  breakLeaf(PstExtentKind::NbtPage, nid, 4);
  return *this;
}

StoreBreaker& StoreBreaker::blockPage(uint32_t nid) {
  breakLeaf(PstExtentKind::BbtPage, find({nid}).data, wide_);
  return *this;
}

}  // namespace tarn::test
