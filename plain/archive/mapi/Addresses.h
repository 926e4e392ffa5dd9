// Addresses.h - the people of a message: names with addresses out of properties.
#ifndef TARN_ARCHIVE_ADDRESSES_H
#define TARN_ARCHIVE_ADDRESSES_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "archive/mapi/PropertyValues.h"
#include "archive/model/Item.h"

namespace tarn::archive::mapi {

// The properties that tell one person.
struct AddressTags {
  uint16_t name;
  uint16_t type;
  uint16_t address;
  uint16_t smtp;
  uint16_t entryId;
};

// The address is one of internet mail wherever a property tells such a one: the SMTP address, the
// address of a person of type SMTP, the one in a one-off entry id (MS-OXCDATA 2.2.5.1). Else it is
// what the message has, of whatever system; without any, a name that is an address is it.
Address ReadAddress(PropertyValues& values, const AddressTags& tags);

// The address that a name is; empty for names that are none. Many programs know no more of a person
// than the address, and put it, perhaps quoted, where the name is.
std::string AddressInName(std::string_view name);

bool IsInternetAddress(std::string_view address);

// Whether both are the same person, as far as can be told: by the addresses where both have one,
// else by the names.
bool IsSamePerson(const Address& left, const Address& right);

}  // namespace tarn::archive::mapi

#endif
