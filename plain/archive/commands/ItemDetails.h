// ItemDetails.h - what contacts, appointments, tasks and journal entries have beside a text.
#ifndef TARN_ARCHIVE_ITEMDETAILS_H
#define TARN_ARCHIVE_ITEMDETAILS_H

#include <string>
#include <utility>
#include <vector>

#include "archive/model/Item.h"

namespace tarn::archive {

// Labels with their values, those that are there, in the order in which a person reads them; none
// for mails and for items without properties.
std::vector<std::pair<std::string, std::string>> DetailsOf(Item& item);

}  // namespace tarn::archive

#endif
