// AddressList.h - the addresses of headers as "To" (RFC 5322 3.4), and of what is written instead.
#ifndef TARN_ARCHIVE_ADDRESSLIST_H
#define TARN_ARCHIVE_ADDRESSLIST_H

#include <gmime/gmime.h>

#include <vector>

#include "archive/model/Item.h"

namespace tarn::archive::mail {

// The addresses of all headers of a name, members of groups among them. A group without members is
// a name without address, as "undisclosed-recipients"; so is what has no address in it, unless a
// name with an address comes after it: then both are the name, as in "Miller, Ann <ann@a.example>".
// Addresses that are none by the rules are given as they are ("Ann <ann..miller@a.example>"), and
// lists with semicolons are lists.
std::vector<Address> AddressesOf(GMimeObject* object, const char* name);

}  // namespace tarn::archive::mail

#endif
