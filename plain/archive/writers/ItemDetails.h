// ItemDetails.h - what contacts, appointments, tasks and journal entries have beside a text, as
// people read it.
#ifndef TARN_ARCHIVE_ITEMDETAILS_H
#define TARN_ARCHIVE_ITEMDETAILS_H

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "archive/model/Item.h"

namespace tarn::archive {

using TextOfTime = std::string (*)(const Moment&);

// Labels with their values, those that are there, in the order in which a person reads them; values
// may have many lines. None for mails and for items without properties. Where the zone of an
// appointment is known, its times have its offset.
std::vector<std::pair<std::string, std::string>> DetailsOf(Item& item, TextOfTime textOfTime);

// The same for files: times without an offset are in UTC.
std::vector<std::pair<std::string, std::string>> DetailsOf(Item& item);

// A rule of RFC 5545 3.3.10 in words: "every 2 weeks on Monday and Friday". Only such rules as
// ReadRecurrence gives.
std::string RuleInWords(std::string_view rule);

}  // namespace tarn::archive

#endif
