#include "archive/store/StoredProperties.h"

#include <algorithm>
#include <cstring>
#include <span>

#include "archive/mapi/Hexadecimal.h"
#include "archive/mapi/Tags.h"
#include "archive/store/StoreTrouble.h"
#include "pststore/Disk.h"
#include "pststore/Errors.h"
#include "pststore/HnidStream.h"

namespace tarn::archive::store {
namespace {

using pststore::hnid_stream_device;

std::string Named(uint16_t id) { return "property 0x" + mapi::Hexadecimal(id, 4); }

// What is wrong with a property, for when something is.
auto NameOf(uint16_t id) {
  return [id] { return Named(id); };
}
auto Unreadable(uint16_t id) {
  return [id] { return Named(id) + " cannot be read"; };
}

std::span<unsigned char> AsUnsigned(std::span<char> bytes) {
  return {reinterpret_cast<unsigned char*>(bytes.data()), bytes.size()};
}

uint32_t LoadNumber(std::string_view bytes, size_t at) {
  const auto* const begin = reinterpret_cast<const unsigned char*>(bytes.data());
  return pststore::disk::load<uint32_t>({begin, bytes.size()}, at);
}

class HnidSource final : public ByteSource {
 public:
  HnidSource(hnid_stream_device device, std::string what)
      : device_(std::move(device)), what_(std::move(what)) {}

  Outcome<size_t> read(std::span<char> buffer) override {
    return Guarded(what_, [&] { return device_.pass(AsUnsigned(buffer)); });
  }

 private:
  hnid_stream_device device_;
  std::string what_;
};

hnid_stream_device OpenValue(const pststore::heap_ptr& heap, const StoredValue& value) {
  if (value.type == mapi::kTypeObject) return hnid_stream_device(NodeOfObject(*heap, value));
  return pststore::open_hnid(*heap, value.hnid);
}

bool IsVariable(uint16_t type) {
  return type == mapi::kTypeString8 || type == mapi::kTypeString || type == mapi::kTypeBinary;
}

// Texts have no terminator; some writers add one.
void DropTerminator(uint16_t type, std::string& bytes) {
  if (type == mapi::kTypeString8 && bytes.ends_with('\0')) bytes.pop_back();
  if (type == mapi::kTypeString && bytes.size() >= 2 && bytes.size() % 2 == 0 &&
      bytes.ends_with(std::string_view("\0\0", 2))) {
    bytes.resize(bytes.size() - 2);
  }
}

// Count, offsets, and from each offset to the next a value (MS-PST 2.3.3.4.2).
std::vector<std::string> SplitVariable(uint16_t type, std::string_view bytes) {
  std::vector<std::string> values;
  if (bytes.empty()) return values;
  const size_t count = LoadNumber(bytes, 0);
  if (count > (bytes.size() - 4) / 4) throw pststore::database_corrupt("more values than bytes");
  values.reserve(count);
  size_t last = 4 + 4 * count;
  for (size_t i = 0; i < count; ++i) {
    const size_t begin = LoadNumber(bytes, 4 + 4 * i);
    const size_t end = i + 1 < count ? LoadNumber(bytes, 8 + 4 * i) : bytes.size();
    // Values that overlap would take more memory than the property.
    if (begin < last || end < begin || end > bytes.size()) {
      throw pststore::database_corrupt("values out of order");
    }
    values.emplace_back(bytes.substr(begin, end - begin));
    DropTerminator(type, values.back());
    last = end;
  }
  return values;
}

std::vector<std::string> SplitFixed(size_t width, std::string_view bytes) {
  std::vector<std::string> values;
  for (size_t at = 0; at + width <= bytes.size(); at += width) {
    values.emplace_back(bytes.substr(at, width));
  }
  return values;
}

}  // namespace

StoredValue MakeStoredValue(uint16_t type, std::string_view bytes, size_t inlineWidth) {
  StoredValue value;
  value.type = type;
  value.fixedSize = static_cast<uint8_t>(std::min(inlineWidth, bytes.size()));
  std::memcpy(value.fixed.data(), bytes.data(), value.fixedSize);
  if (value.fixedSize == 0) value.hnid = LoadNumber(bytes, 0);
  return value;
}

// The object's allocation: the subnode's id, and the size that it is said to have.
uint64_t SizeOfValue(const pststore::heap_impl& heap, const StoredValue& value) {
  if (value.fixedSize != 0) return value.fixedSize;
  if (value.type == mapi::kTypeObject && pststore::is_heap_id(value.hnid)) {
    const pststore::byte_vector object = heap.read(value.hnid);
    return pststore::disk::load<uint32_t>(object, 4);
  }
  return pststore::hnid_size(heap, value.hnid);
}

Outcome<std::string> BytesOfValue(const pststore::heap_impl& heap, const StoredValue& value,
                                  size_t limit) {
  if (value.fixedSize != 0) return std::string(value.fixedBytes());
  if (value.hnid == 0) return std::string();
  const auto tooLarge = [limit] {
    return Trouble{TroubleKind::TooLarge,
                   "a value of more than " + std::to_string(limit) + " bytes"};
  };
  std::string bytes;
  if (value.type != mapi::kTypeObject && pststore::is_heap_id(value.hnid)) {
    const size_t size = heap.size(value.hnid);
    if (size > limit) return tooLarge();
    bytes.resize(size);
    heap.read(AsUnsigned(bytes), value.hnid, 0);
  } else {
    const pststore::node data = value.type == mapi::kTypeObject
                                    ? NodeOfObject(heap, value)
                                    : heap.get_node().lookup(value.hnid);
    const uint64_t size = data.size();
    if (size > limit) return tooLarge();
    // A node may be shorter than it says.
    constexpr size_t kStep = 65536;
    while (bytes.size() < size) {
      const size_t done = bytes.size();
      bytes.resize(std::min<uint64_t>(done + kStep, size));
      data.pass(AsUnsigned(bytes).subspan(done), done);
    }
  }
  DropTerminator(value.type, bytes);
  return bytes;
}

pststore::node NodeOfObject(const pststore::heap_impl& heap, const StoredValue& value) {
  if (!pststore::is_heap_id(value.hnid)) return heap.get_node().lookup(value.hnid);
  const pststore::byte_vector object = heap.read(value.hnid);
  return heap.get_node().lookup(pststore::disk::load<uint32_t>(object, 0));
}

std::unique_ptr<ByteSource> SourceOfNode(const pststore::node& data, std::string what) {
  return std::make_unique<HnidSource>(hnid_stream_device(data), std::move(what));
}

Trouble StoredProperties::absence(uint16_t id) const {
  if (isWhole()) return {TroubleKind::Missing, Named(id) + " is not there"};
  return {TroubleKind::Damaged, Named(id) + " may be in the part that cannot be read"};
}

std::optional<uint16_t> StoredProperties::typeOf(uint16_t id) {
  const auto found = Guarded(NameOf(id), [&] { return find(id); });
  if (!found || !*found) return std::nullopt;
  return (*found)->type;
}

std::optional<uint64_t> StoredProperties::sizeOf(uint16_t id) {
  const auto size = Guarded(NameOf(id), [&]() -> std::optional<uint64_t> {
    const std::optional<StoredValue> found = find(id);
    if (!found) return std::nullopt;
    return SizeOfValue(*heap_, *found);
  });
  return size ? *size : std::nullopt;
}

Outcome<std::string> StoredProperties::bytes(uint16_t id, size_t limit) {
  auto read = Guarded(Unreadable(id), [&]() -> Outcome<std::string> {
    const std::optional<StoredValue> found = find(id);
    if (!found) return absence(id);
    return BytesOfValue(*heap_, *found, limit);
  });
  if (!read) return Trouble{TroubleKind::Damaged, read.trouble().reason};
  return std::move(*read);
}

Outcome<std::unique_ptr<ByteSource>> StoredProperties::stream(uint16_t id) {
  using Source = std::unique_ptr<ByteSource>;
  auto opened = Guarded(Unreadable(id), [&]() -> Outcome<Source> {
    const std::optional<StoredValue> found = find(id);
    if (!found) return absence(id);
    if (found->fixedSize != 0) return BytesOf(std::string(found->fixedBytes()));
    if (found->hnid == 0) return BytesOf(std::string());
    return Source(std::make_unique<HnidSource>(OpenValue(heap_, *found), Unreadable(id)()));
  });
  if (!opened) return Trouble{TroubleKind::Damaged, opened.trouble().reason};
  return std::move(*opened);
}

Outcome<std::vector<std::string>> StoredProperties::values(uint16_t id, size_t limit) {
  Outcome<std::string> whole = bytes(id, limit);
  if (!whole) return whole.trouble();
  const uint16_t type = *typeOf(id);
  const auto single = static_cast<uint16_t>(type & ~mapi::kMultipleValues);
  if ((type & mapi::kMultipleValues) == 0) return std::vector<std::string>{std::move(*whole)};
  return Guarded(Unreadable(id), [&] {
    if (IsVariable(single)) return SplitVariable(single, *whole);
    const size_t width = mapi::WidthOfValue(single);
    if (width == 0) throw pststore::database_corrupt("values of unknown width");
    return SplitFixed(width, *whole);
  });
}

std::vector<Trouble> StoredProperties::troubles() {
  if (isWhole()) return {};
  return {{TroubleKind::Damaged, "a part of the properties cannot be read"}};
}

}  // namespace tarn::archive::store
