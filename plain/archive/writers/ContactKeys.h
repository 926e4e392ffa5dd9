// ContactKeys.h - the properties of contacts (MS-OXOCNTC) that a vCard has a place for.
#ifndef TARN_ARCHIVE_CONTACTKEYS_H
#define TARN_ARCHIVE_CONTACTKEYS_H

#include <string_view>

#include "archive/writers/NamedValues.h"

namespace tarn::archive {

inline constexpr PropertyKey kDisplayName = {nullptr, 0x3001};
inline constexpr PropertyKey kGivenName = {nullptr, 0x3A06};
inline constexpr PropertyKey kSurname = {nullptr, 0x3A11};
inline constexpr PropertyKey kMiddleName = {nullptr, 0x3A44};
inline constexpr PropertyKey kNamePrefix = {nullptr, 0x3A45};
inline constexpr PropertyKey kGeneration = {nullptr, 0x3A05};
inline constexpr PropertyKey kNickname = {nullptr, 0x3A4F};
inline constexpr PropertyKey kCompany = {nullptr, 0x3A16};
inline constexpr PropertyKey kDepartment = {nullptr, 0x3A18};
inline constexpr PropertyKey kJobTitle = {nullptr, 0x3A17};
inline constexpr PropertyKey kProfession = {nullptr, 0x3A46};
inline constexpr PropertyKey kSpouse = {nullptr, 0x3A48};
inline constexpr PropertyKey kManager = {nullptr, 0x3A4E};
inline constexpr PropertyKey kAssistant = {nullptr, 0x3A30};
inline constexpr PropertyKey kBirthday = {nullptr, 0x3A42};
inline constexpr PropertyKey kAnniversary = {nullptr, 0x3A41};
inline constexpr PropertyKey kGender = {nullptr, 0x3A4D};
inline constexpr PropertyKey kFileUnder = {&kContactProperties, 0x8005};
inline constexpr PropertyKey kBirthdayLocal = {&kContactProperties, 0x80DE};
inline constexpr PropertyKey kAnniversaryLocal = {&kContactProperties, 0x80DF};
inline constexpr PropertyKey kInstantMessaging = {&kContactProperties, 0x8062};
inline constexpr PropertyKey kFreeBusyUrl = {&kContactProperties, 0x80D8};
inline constexpr PropertyKey kLastModified = {nullptr, 0x3008};
inline constexpr PropertyKey kSearchKey = {nullptr, 0x300B};

// A property of a vCard with its parameters, and where its value is.
struct ContactLine {
  std::string_view name;
  const char* label;  // for people
  PropertyKey key;
};

inline constexpr ContactLine kTelephones[] = {
    {"TEL;TYPE=work,voice", "Business phone", {nullptr, 0x3A08}},
    {"TEL;TYPE=work,voice", "Business phone 2", {nullptr, 0x3A1B}},
    {"TEL;TYPE=work,voice", "Company phone", {nullptr, 0x3A57}},
    {"TEL;TYPE=work,voice", "Assistant's phone", {nullptr, 0x3A2E}},
    {"TEL;TYPE=home,voice", "Home phone", {nullptr, 0x3A09}},
    {"TEL;TYPE=home,voice", "Home phone 2", {nullptr, 0x3A2F}},
    {"TEL;TYPE=cell", "Mobile phone", {nullptr, 0x3A1C}},
    {"TEL;TYPE=voice", "Primary phone", {nullptr, 0x3A1A}},
    {"TEL;TYPE=voice", "Other phone", {nullptr, 0x3A1F}},
    {"TEL;TYPE=voice", "Car phone", {nullptr, 0x3A1E}},
    {"TEL;TYPE=voice", "Radio phone", {nullptr, 0x3A1D}},
    {"TEL;TYPE=voice", "Callback phone", {nullptr, 0x3A02}},
    {"TEL;TYPE=voice", "ISDN", {nullptr, 0x3A2D}},
    {"TEL;TYPE=pager", "Pager", {nullptr, 0x3A21}},
    {"TEL;TYPE=textphone", "Text phone", {nullptr, 0x3A4B}},
    {"TEL;TYPE=work,fax", "Business fax", {nullptr, 0x3A24}},
    {"TEL;TYPE=home,fax", "Home fax", {nullptr, 0x3A25}},
    {"TEL;TYPE=fax", "Other fax", {nullptr, 0x3A23}}};

inline constexpr ContactLine kPages[] = {{"URL;TYPE=work", "Web page", {nullptr, 0x3A51}},
                                         {"URL;TYPE=home", "Private web page", {nullptr, 0x3A50}},
                                         {"URL", "Other web page", {&kContactProperties, 0x802B}}};

// An address for mail: where it is, and the text that shows it.
struct ContactEmail {
  PropertyKey address;
  PropertyKey type;
  PropertyKey original;  // that of internet mail, where the address is of another system
};

inline constexpr ContactEmail kEmails[] = {
    {{&kContactProperties, 0x8083}, {&kContactProperties, 0x8082}, {&kContactProperties, 0x8084}},
    {{&kContactProperties, 0x8093}, {&kContactProperties, 0x8092}, {&kContactProperties, 0x8094}},
    {{&kContactProperties, 0x80A3}, {&kContactProperties, 0x80A2}, {&kContactProperties, 0x80A4}}};

struct ContactAddress {
  std::string_view name;
  const char* label;
  PropertyKey whole;  // as one text
  PropertyKey box;
  PropertyKey street;
  PropertyKey city;
  PropertyKey state;
  PropertyKey postalCode;
  PropertyKey country;
};

inline constexpr ContactAddress kAddresses[] = {{"ADR;TYPE=work",
                                                 "Business address",
                                                 {&kContactProperties, 0x801B},
                                                 {&kContactProperties, 0x804A},
                                                 {&kContactProperties, 0x8045},
                                                 {&kContactProperties, 0x8046},
                                                 {&kContactProperties, 0x8047},
                                                 {&kContactProperties, 0x8048},
                                                 {&kContactProperties, 0x8049}},
                                                {"ADR;TYPE=home",
                                                 "Home address",
                                                 {&kContactProperties, 0x801A},
                                                 {nullptr, 0x3A5E},
                                                 {nullptr, 0x3A5D},
                                                 {nullptr, 0x3A59},
                                                 {nullptr, 0x3A5C},
                                                 {nullptr, 0x3A5B},
                                                 {nullptr, 0x3A5A}},
                                                {"ADR",
                                                 "Other address",
                                                 {&kContactProperties, 0x801C},
                                                 {nullptr, 0x3A64},
                                                 {nullptr, 0x3A63},
                                                 {nullptr, 0x3A5F},
                                                 {nullptr, 0x3A62},
                                                 {nullptr, 0x3A61},
                                                 {nullptr, 0x3A60}}};

}  // namespace tarn::archive

#endif
