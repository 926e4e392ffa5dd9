// PropertyStreams.h - the names of the streams of an MSG file (MS-OXMSG) that are read.
//
// A property is a stream "__substg1.0_" + id + type, both four upper-case hexadecimal digits. Text
// properties are looked for without their type.
#ifndef TARN_MSG_PROPERTYSTREAMS_H
#define TARN_MSG_PROPERTYSTREAMS_H

#include <string_view>

namespace tarn::msg_stream {

// Of a message.
inline constexpr std::string_view kCompressedRtf = "__substg1.0_10090102";
inline constexpr std::string_view kHtml = "__substg1.0_1013";
inline constexpr std::string_view kText = "__substg1.0_1000";
inline constexpr std::string_view kSubject = "__substg1.0_0037";
inline constexpr std::string_view kSenderName = "__substg1.0_0C1A";
inline constexpr std::string_view kSenderSmtpAddress = "__substg1.0_5D01";
inline constexpr std::string_view kRepresentedAddress = "__substg1.0_0065";
inline constexpr std::string_view kOriginalAuthor = "__substg1.0_004D";
inline constexpr std::string_view kDisplayTo = "__substg1.0_0E04";
inline constexpr std::string_view kDisplayCc = "__substg1.0_0E03";
inline constexpr std::string_view kDisplayBcc = "__substg1.0_0E02";

// Of an attachment.
inline constexpr std::string_view kLongFileName = "__substg1.0_3707";
inline constexpr std::string_view kShortFileName = "__substg1.0_3704";
inline constexpr std::string_view kContentId = "__substg1.0_3712";
inline constexpr std::string_view kMimeTag = "__substg1.0_370E";
inline constexpr std::string_view kData = "__substg1.0_37010102";
inline constexpr std::string_view kEmbeddedMessage = "__substg1.0_3701000D";  // a storage

// Of both: all properties of a fixed size.
inline constexpr std::string_view kProperties = "__properties_version1.0";

}  // namespace tarn::msg_stream

#endif
