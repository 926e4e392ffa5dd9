#include "FileFormats/Pst/PstAttachments.h"

#include <exception>

#include "Common/AttachmentProperties.h"
#include "Common/LittleEndian.h"
#include "FileFormats/Pst/PstStreams.h"
#include "pststore/StoreObjects.h"

namespace tarn {
namespace {

enum AttachmentPropertyId : pststore::ushort {
  PR_CREATION_TIME = 0x3007,
  PR_LAST_MODIFICATION_TIME = 0x3008,
  PR_ATTACH_DATA = 0x3701,
  PR_ATTACH_METHOD = 0x3705,
  PR_ATTACH_LONG_FILENAME = 0x3707,
  PR_ATTACH_MIME_TAG = 0x370E,
};

constexpr pststore::ulong kEmbeddedMessage = 5;  // PR_ATTACH_METHOD

// The embedded message has to be there and to be a message, although only its raw property goes
// out.
void OpenEmbeddedMessage(const pststore::property_bag& properties) {
  const pststore::byte_vector object = properties.get_value_variable(PR_ATTACH_DATA);
  if (object.size() < 4) throw pststore::database_corrupt("embedded message without a node");
  const auto id = LoadLittleEndian<pststore::ulong>(object.data());
  const pststore::property_bag message(properties.get_node().lookup(id));
}

Status ReadData(const pststore::property_bag& properties, TrackedBuffer<char>& data) {
  if (properties.get_value_4(PR_ATTACH_METHOD) == kEmbeddedMessage) OpenEmbeddedMessage(properties);
  pststore::prop_stream stream(OpenOnce(properties, PR_ATTACH_DATA));
  const uint64_t size = SizeByEnd(stream);
  if (data.reserve(size) == nullptr) return data.lastError();
  ReadFromStart(stream, data.data(), size);
  data.setLength(size);
  return StatusOk;
}

// A property of another size than a time's adds nothing.
Status AddTime(PropertyList& list, std::string_view name, const pststore::property_bag& properties,
               AttachmentPropertyId id) {
  if (!properties.prop_exists(id) || properties.size(id) != 8) return StatusOk;
  return AddTimeAttachmentProperty(list, name, properties.get_value_8(id));
}

// A text that the whole store cannot have room for is damage like any other.
void TakeText(uint64_t& textLeft, const pststore::wstring& text) {
  if (!TakeFrom(textLeft, sizeof(char16_t) * text.size())) {
    throw pststore::database_corrupt("texts of attachments larger than the store");
  }
}

Status AddProperties(PropertyList& list, const pststore::attachment& source, uint64_t& textLeft) {
  // The long file name serves as content id: bodies of stores refer to attachments by it.
  Status status =
      AddAttachmentPropertyFromBag(list, "Content-ID:", source, PR_ATTACH_LONG_FILENAME, textLeft);
  if (!status.ok()) return status;
  status = AddAttachmentPropertyFromBag(list, "MimeType", source, PR_ATTACH_MIME_TAG, textLeft);
  if (!status.ok()) return status;
  const pststore::property_bag& properties = source.get_property_bag();
  status = AddTime(list, "MsgCreationTime", properties, PR_CREATION_TIME);
  if (status.failed()) return status;
  status = AddTime(list, "MsgModificationTime", properties, PR_LAST_MODIFICATION_TIME);
  return status.failed() ? status : StatusOk;
}

Status Deliver(const pststore::attachment& source, const AttachmentRequest& request,
               uint64_t& textLeft) {
  TrackedBuffer<char> data;
  if (!request.infoOnly) {
    const Status read = ReadData(source.get_property_bag(), data);
    if (!read.ok()) return read;
  }
  PropertyList properties;
  const Status added = AddProperties(properties, source, textLeft);
  if (!added.ok()) return added;
  const pststore::wstring name = pststore::get_filename(source);
  TakeText(textLeft, name);
  return request.callback(request.user, &data, name.c_str(), &properties);
}

}  // namespace

Status AddAttachmentPropertyFromBag(PropertyList& list, std::string_view name,
                                    const pststore::attachment& source, uint16_t property,
                                    uint64_t& textLeft) {
  const pststore::property_bag& properties = source.get_property_bag();
  pststore::wstring value;
  if (properties.prop_exists(property)) value = properties.read_prop<pststore::wstring>(property);
  const bool isEmpty = value.empty() || (value.size() == 1 && value.front() == u'\0');
  if (isEmpty) return StatusOk;
  TakeText(textLeft, value);
  return AddWideAttachmentProperty(list, name, value);
}

Status EnumeratePstAttachments(const pststore::message& source, const AttachmentRequest& request,
                               uint64_t fileSize) {
  if (request.callback == nullptr) return StatusOk;
  const uint32_t count = pststore::get_attachment_count(source);
  if (count == 0) return StatusOk;

  uint64_t attachmentsLeft = AttachmentLimit(fileSize);
  uint64_t textLeft = AttachmentTextLimit(fileSize);
  const pststore::attachment_iterator end = pststore::attachment_end(source);
  auto at = pststore::attachment_begin(source);
  try {
    for (uint32_t number = 1; at != end && number <= count; ++number, ++at) {
      const bool one = request.index != kAllAttachments;
      if (one && request.index != number) continue;
      if (!TakeFrom(attachmentsLeft, 1)) return StatusOk;
      const Status status = Deliver(pststore::make_attachment(at), request, textLeft);
      if (status == StatusDone) return StatusOk;
      if (!status.ok()) return status;
      if (one) return StatusOk;
    }
  } catch (const std::exception&) {
    // The attachments after a broken one are not seen.
  }
  return StatusOk;
}

}  // namespace tarn
