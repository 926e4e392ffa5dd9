// HeaderBlock.h - which rows the header block has, and in which order, for all kinds of documents.
#ifndef TARN_RENDER_HEADER_BLOCK_H
#define TARN_RENDER_HEADER_BLOCK_H

#include <array>

#include "Internal/EmlMessage.h"
#include "Internal/MailMessage.h"
#include "render/HeaderLabels.h"

namespace tarn {

template <typename Message>
struct HeaderField {
  HeaderRow row;
  SizedBytes Message::*text;
};

// From top to bottom of the document; a field without text has no row and no label. The two
// messages differ in the place of the Sent row.
inline constexpr std::array<HeaderField<MailMessage>, 7> kMailRows = {{
    {HeaderRowFrom, &MailMessage::from},
    {HeaderRowSent, &MailMessage::sent},
    {HeaderRowTo, &MailMessage::to},
    {HeaderRowCc, &MailMessage::cc},
    {HeaderRowBcc, &MailMessage::bcc},
    {HeaderRowSubject, &MailMessage::subject},
    {HeaderRowImportance, &MailMessage::importance},
}};

inline constexpr std::array<HeaderField<EmlMessage>, 7> kEmlRows = {{
    {HeaderRowFrom, &EmlMessage::from},
    {HeaderRowTo, &EmlMessage::to},
    {HeaderRowSent, &EmlMessage::date},
    {HeaderRowCc, &EmlMessage::cc},
    {HeaderRowBcc, &EmlMessage::bcc},
    {HeaderRowSubject, &EmlMessage::subject},
    {HeaderRowImportance, &EmlMessage::importance},
}};

}  // namespace tarn

#endif
