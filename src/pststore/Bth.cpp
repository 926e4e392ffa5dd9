#include "pststore/Bth.h"

#include <algorithm>
#include <array>
#include <span>

#include "Common/LittleEndian.h"
#include "pststore/Disk.h"
#include "pststore/Errors.h"

namespace pststore {

using tarn::LoadLittleEndian;

namespace {

constexpr unsigned char bth_signature = 0xB5;
constexpr size_t record_size = 8;

// Where the fields are in the header, and in a record after its key.
constexpr size_t header_signature = 0;
constexpr size_t header_key_size = 1;
constexpr size_t header_entry_size = 2;
constexpr size_t header_levels = 3;
constexpr size_t header_root = 4;
constexpr size_t header_size = 8;

constexpr size_t record_wPropType = 2;
constexpr size_t record_value = 4;

using record_bytes = std::span<const unsigned char, record_size>;

template <typename V>
struct bth_value;

template <>
struct bth_value<disk::prop_entry> {
  static constexpr unsigned char width = 6;
  static disk::prop_entry load(record_bytes record) {
    return {LoadLittleEndian<ushort>(&record[record_wPropType]),
            LoadLittleEndian<ulong>(&record[record_value])};
  }
};

template <>
struct bth_value<ulong> {
  static constexpr unsigned char width = 4;
  static ulong load(record_bytes record) { return LoadLittleEndian<ulong>(&record[record_value]); }
};

template <>
struct bth_value<ushort> {
  static constexpr unsigned char width = 2;
  static ushort load(record_bytes record) {
    return LoadLittleEndian<ushort>(&record[record_value]);
  }
};

template <typename K, typename V>
vector<std::pair<K, V>> load_records(const byte_vector& bytes) {
  vector<std::pair<K, V>> records;
  records.reserve(bytes.size() / record_size);
  for (size_t at = 0; at + record_size <= bytes.size(); at += record_size) {
    const record_bytes record(&bytes[at], record_size);
    records.emplace_back(LoadLittleEndian<K>(record.data()), bth_value<V>::load(record));
  }
  return records;
}

template <typename K, typename V>
std::shared_ptr<bth_node<K, V>> open_bth_leaf(const heap_ptr& heap, ulong hid, bth_budget& budget) {
  const size_t count = heap->size(hid) / record_size;
  budget.check(count);
  auto opened =
      make_kernel_shared<bth_leaf_node<K, V>>(heap, hid, load_records<K, V>(heap->read(hid)));
  budget.spend(count);
  return opened;
}

template <typename K, typename V>
std::shared_ptr<bth_node<K, V>> open_bth_node(const heap_ptr& heap, ulong hid, ushort level,
                                              const std::shared_ptr<bth_budget>& budget) {
  if (level == 0) return open_bth_leaf<K, V>(heap, hid, *budget);
  const size_t count = heap->size(hid) / record_size;
  budget->check(count);
  auto opened = make_kernel_shared<bth_nonleaf_node<K, V>>(
      heap, hid, level, load_records<K, ulong>(heap->read(hid)), budget);
  budget->spend(count);
  return opened;
}

// A tree has a record for every key, and above the leaves at most as many again. No record is in
// two places.
template <typename K>
ulonglong most_records(const heap_ptr& heap) {
  constexpr ulonglong keys = ulonglong{std::numeric_limits<K>::max()} + 1;
  return std::min(2 * keys, heap->get_node().size() / record_size);
}

}  // namespace

void bth_budget::check(ulonglong records) const {
  if (records > left_) throw database_corrupt("BTH of more records than its heap holds");
}

template <typename K, typename V>
void bth_leaf_node<K, V>::append_keys(vector<K>& keys) const {
  for (ulong pos = 0; pos < records_.size(); ++pos) keys.push_back(records_.get_key(pos));
}

template <typename K, typename V>
bth_nonleaf_node<K, V>::bth_nonleaf_node(heap_ptr heap, ulong id, ushort level, records&& children,
                                         std::shared_ptr<bth_budget> budget)
    : bth_node<K, V>(std::move(heap), id, level),
      records_(std::move(children)),
      children_(records_.size()),
      budget_(std::move(budget)) {}

template <typename K, typename V>
void bth_nonleaf_node<K, V>::append_keys(vector<K>& keys) const {
  for (ulong pos = 0; pos < records_.size(); ++pos) load_child(pos).append_keys(keys);
}

template <typename K, typename V>
bth_node<K, V>& bth_nonleaf_node<K, V>::load_child(ulong pos) const {
  if (pos >= records_.size()) throw database_corrupt("BTH node without children");
  if (children_[pos] == nullptr) {
    ushort level = this->get_level();
    --level;
    children_[pos] = open_bth_node<K, V>(this->get_heap(), records_.get_value(pos), level, budget_);
  }
  return *children_[pos];
}

template <typename K, typename V>
std::shared_ptr<bth_node<K, V>> open_bth(const heap_ptr& heap, ulong hid) {
  std::array<unsigned char, header_size> header = {};
  heap->read(header, hid, 0);
  const unsigned char found = header[header_signature];
  if (found != bth_signature) {
    throw sig_mismatch("bth_signature expected", 0, hid, found, bth_signature);
  }
  if (header[header_key_size] != sizeof(K)) throw std::logic_error("invalid key size");
  if (header[header_entry_size] != bth_value<V>::width) {
    throw std::logic_error("invalid entry size");
  }

  // One level is a lone leaf, as none is.
  ushort level = header[header_levels];
  if (level != 0) --level;
  const auto root = disk::load<ulong>(header, header_root);
  bth_budget budget(most_records<K>(heap));
  if (level == 0) return open_bth_leaf<K, V>(heap, root, budget);
  return open_bth_node<K, V>(heap, root, level, make_kernel_shared<bth_budget>(budget));
}

template class bth_leaf_node<ushort, disk::prop_entry>;
template class bth_nonleaf_node<ushort, disk::prop_entry>;
template class bth_leaf_node<ulong, ulong>;
template class bth_nonleaf_node<ulong, ulong>;
template class bth_leaf_node<ulong, ushort>;
template class bth_nonleaf_node<ulong, ushort>;

template std::shared_ptr<prop_tree> open_bth(const heap_ptr&, ulong);
template std::shared_ptr<bth_node<ulong, ulong>> open_bth(const heap_ptr&, ulong);
template std::shared_ptr<bth_node<ulong, ushort>> open_bth(const heap_ptr&, ulong);

}  // namespace pststore
