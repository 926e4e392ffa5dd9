#include "support/StoreReading.h"

#include <array>
#include <ios>
#include <optional>
#include <typeinfo>

#include "pststore/StoreObjects.h"

namespace tarn::test {

using pststore::attachment;
using pststore::const_property_object;
using pststore::folder;
using pststore::message;
using pststore::table;

namespace {

constexpr uint16_t kUtf16Text = 0x1F;
constexpr uint32_t kRecipientTable = 0x692;

// Thrown when a limit is reached; no std::exception.
struct Enough {};

// Whether values of the type are in the entry or cell itself.
bool IsImmediate(uint16_t type) {
  return (type >= 0x02 && type <= 0x04) || type == 0x0A || type == 0x0B;
}

bool IsEightBytes(uint16_t type) {
  return (type >= 0x05 && type <= 0x07) || type == 0x14 || type == 0x40;
}

class Reading {
 public:
  Reading(const std::shared_ptr<pststore::db_context>& store, const StoreReadOptions& options)
      : store_(store), options_(options) {}

  StoreTotals run() {
    try {
      attempt([&] { readFolders(); });
    } catch (const Enough&) {
    }
    return totals_;
  }

 private:
  template <typename Action>
  void attempt(Action&& action) {
    try {
      action();
    } catch (const std::exception& caught) {
      if (!IsStoreException(caught)) throw;
      if (++totals_.failures >= options_.maxFailures) throw Enough();
    }
  }

  void countBytes(uint64_t bytes) {
    totals_.bytes += bytes;
    if (totals_.bytes >= options_.maxBytes) throw Enough();
  }
  void countRow() {
    if (++totals_.rows >= options_.maxRows) throw Enough();
  }

  void readFolders() {
    const auto end = pststore::folder_end(store_);
    for (auto at = pststore::folder_begin(store_); at != end; ++at) {
      attempt([&] { readFolder(pststore::make_folder(at)); });
    }
  }

  void readFolder(const folder& read) {
    ++totals_.folders;
    readProperties(read.get_property_bag());
    for (const uint32_t type : {0x0DU, 0x0FU}) {
      const uint32_t nid = (read.get_id() & ~uint32_t{0x1F}) | type;
      attempt([&] { readTableIfAny([&] { return store_->lookup_node(nid); }); });
    }
    const auto& contents = pststore::get_contents_table(read);
    readTable(*contents);
    const pststore::message_iterator end(contents->end(), store_);
    for (pststore::message_iterator at(contents->begin(), store_); at != end; ++at) {
      attempt([&] { readMessage(pststore::make_message(at)); });
    }
  }

  void readMessage(const message& read) {
    ++totals_.messages;
    countRow();
    readProperties(read.get_property_bag());
    const pststore::node& own = read.get_property_bag().get_node();
    attempt([&] { readTableIfAny([&] { return own.lookup(kRecipientTable); }); });
    if (pststore::get_attachment_count(read) == 0) return;
    readTable(*pststore::get_attachment_table(read));
    const auto end = pststore::attachment_end(read);
    for (auto at = pststore::attachment_begin(read); at != end; ++at) {
      attempt([&] { readAttachment(pststore::make_attachment(at)); });
    }
  }

  void readAttachment(const attachment& read) {
    ++totals_.attachments;
    countRow();
    readProperties(read.get_property_bag());
    attempt([&] { pststore::get_filename(read); });
  }

  // A table that the store can do without.
  template <typename Lookup>
  void readTableIfAny(Lookup&& lookup) {
    std::optional<pststore::node> found;
    try {
      found.emplace(lookup());
    } catch (const pststore::key_not_found<uint32_t>&) {
      return;
    }
    readTable(table(*found));
  }

  void readTable(const table& read) {
    for (auto at = read.begin(); at != read.end(); ++at) {
      countRow();
      attempt([&] {
        const uint32_t id = read.get_impl().get_row_id(at.row);
        if (options_.inEveryWay) attempt([&] { read.get_impl().lookup_row(id); });
      });
      attempt([&] { totals_.cells += readValues(*at); });
    }
  }

  void readProperties(const const_property_object& object) {
    attempt([&] { totals_.properties += readValues(object); });
  }

  uint64_t readValues(const const_property_object& object) {
    const pststore::vector<uint16_t> ids = object.get_prop_list();
    for (const uint16_t id : ids) {
      if (options_.inEveryWay) {
        readInEveryWay(object, id);
      } else {
        attempt([&] { readAsTyped(object, id); });
      }
    }
    return ids.size();
  }

  void readAsTyped(const const_property_object& object, uint16_t id) {
    const uint16_t type = object.get_prop_type(id);
    if (IsImmediate(type)) {
      object.get_value_4(id);
      countBytes(4);
    } else if (IsEightBytes(type)) {
      object.get_value_8(id);
      countBytes(8);
    } else if (type == pststore::prop_type_string || type == kUtf16Text) {
      countBytes(object.read_prop<pststore::wstring>(id).size() * 2);
    } else {
      countBytes(object.get_value_variable(id).size());
    }
  }

  void readInEveryWay(const const_property_object& object, uint16_t id) {
    attempt([&] { object.get_prop_type(id); });
    attempt([&] { object.prop_exists(id); });
    attempt([&] { object.get_value_1(id); });
    attempt([&] { object.get_value_2(id); });
    attempt([&] { object.get_value_4(id); });
    attempt([&] { object.get_value_8(id); });
    attempt([&] { object.size(id); });
    attempt([&] { countBytes(object.get_value_variable(id).size()); });
    attempt([&] { countBytes(object.read_prop<pststore::wstring>(id).size()); });
    attempt([&] { readStream(object.open_prop_stream(id)); });
  }

  void readStream(const pststore::hnid_stream_device& device) {
    pststore::prop_stream stream(device);
    stream.seekg(0, std::ios_base::end);
    stream.seekg(0, std::ios_base::beg);
    std::array<char, 4000> bytes;
    while (stream.read(bytes.data(), bytes.size()) || stream.gcount() != 0) {
      countBytes(static_cast<uint64_t>(stream.gcount()));
    }
  }

  std::shared_ptr<pststore::db_context> store_;
  StoreReadOptions options_;
  StoreTotals totals_;
};

template <typename... Exceptions>
bool IsOneOf(const std::exception& caught) {
  return ((dynamic_cast<const Exceptions*>(&caught) != nullptr) || ...);
}

}  // namespace

bool IsStoreException(const std::exception& caught) {
  return IsOneOf<pststore::database_corrupt, pststore::key_not_found<uint16_t>,
                 pststore::key_not_found<uint32_t>, pststore::key_not_found<uint64_t>,
                 pststore::not_implemented, std::bad_weak_ptr>(caught) ||
         typeid(caught) == typeid(std::out_of_range) ||
         typeid(caught) == typeid(std::length_error) ||
         typeid(caught) == typeid(std::logic_error) || typeid(caught) == typeid(std::runtime_error);
}

StoreTotals ReadStore(const std::shared_ptr<pststore::db_context>& store,
                      const StoreReadOptions& options) {
  return Reading(store, options).run();
}

}  // namespace tarn::test
