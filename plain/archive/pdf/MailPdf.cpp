#include "archive/pdf/MailPdf.h"

#include <qpdf/Buffer.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFEFStreamObjectHelper.hh>
#include <qpdf/QPDFEmbeddedFileDocumentHelper.hh>
#include <qpdf/QPDFFileSpecObjectHelper.hh>
#include <qpdf/QPDFWriter.hh>

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <memory>
#include <string_view>
#include <utility>

namespace tarn::archive {
namespace {

// RFC 2045: two tokens and a slash between them.
bool IsMediaType(std::string_view text) {
  constexpr std::string_view kInTokens =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789!$&-^_.+";
  const size_t slash = text.find('/');
  if (slash == std::string_view::npos) return false;
  const auto isToken = [kInTokens](std::string_view part) {
    return !part.empty() && part.find_first_not_of(kInTokens) == std::string_view::npos;
  };
  return isToken(text.substr(0, slash)) && isToken(text.substr(slash + 1));
}

// The keys of the files, in their order, which is the order that readers list them in.
std::string FileKey(size_t place) {
  std::array<char, 32> key;
  std::snprintf(key.data(), key.size(), "%08zu", place);
  return key.data();
}

QPDFObjectHandle AddFile(QPDF& document, const FileInside& file, size_t place) {
  QPDFEFStreamObjectHelper stream = QPDFEFStreamObjectHelper::createEFStream(document, file.bytes);
  stream.setSubtype(IsMediaType(file.mediaType) ? file.mediaType : "application/octet-stream");
  QPDFFileSpecObjectHelper specification =
      QPDFFileSpecObjectHelper::createFileSpec(document, file.name, stream);
  const bool isMail = file.relation == FileRelation::Mail;
  specification.setDescription(isMail ? "The mail itself" : "Attachment of the mail");
  QPDFObjectHandle object = specification.getObjectHandle();
  object.replaceKey("/AFRelationship",
                    QPDFObjectHandle::newName(isMail ? "/Source" : "/Supplement"));
  QPDFEmbeddedFileDocumentHelper(document).replaceEmbeddedFile(FileKey(place), specification);
  return object;
}

void AddFiles(QPDF& document, const std::vector<FileInside>& files) {
  if (files.empty()) return;
  QPDFObjectHandle associated = QPDFObjectHandle::newArray();
  for (size_t i = 0; i < files.size(); ++i) {
    associated.appendItem(AddFile(document, files[i], i + 1));
  }
  document.getRoot().replaceKey("/AF", associated);
  const bool hasAttachments = std::any_of(files.begin(), files.end(), [](const FileInside& file) {
    return file.relation == FileRelation::Attachment;
  });
  // A reader opens its list of files only where there is more than the mail.
  if (hasAttachments) {
    document.getRoot().replaceKey("/PageMode", QPDFObjectHandle::newName("/UseAttachments"));
  }
}

void AddMetadata(QPDF& document, const MailFacts& facts) {
  QPDFObjectHandle stream = QPDFObjectHandle::newStream(&document, MailMetadata(facts));
  stream.getDict().replaceKey("/Type", QPDFObjectHandle::newName("/Metadata"));
  stream.getDict().replaceKey("/Subtype", QPDFObjectHandle::newName("/XML"));
  document.getRoot().replaceKey("/Metadata", document.makeIndirectObject(stream));
}

}  // namespace

Outcome<MadePdf> MailPdf(const std::string& pages, const MailFacts& facts,
                         std::vector<FileInside> files) try {
  QPDF document;
  document.setSuppressWarnings(true);
  document.processMemoryFile("pages", pages.data(), pages.size());
  AddFiles(document, files);
  files.clear();
  AddMetadata(document, facts);
  QPDFWriter writer(document);
  writer.setOutputMemory();
  writer.setMinimumPDFVersion("1.7");
  writer.setDeterministicID(true);
  writer.setObjectStreamMode(qpdf_o_generate);
  writer.write();
  const std::shared_ptr<Buffer> buffer = writer.getBufferSharedPointer();
  return MadePdf{std::string(reinterpret_cast<const char*>(buffer->getBuffer()), buffer->getSize()),
                 document.getAllPages().size()};
} catch (const std::bad_alloc&) {
  throw;
} catch (const std::exception& failure) {
  return Trouble{TroubleKind::Damaged,
                 std::string("the PDF cannot be finished: ") + failure.what()};
}

}  // namespace tarn::archive
