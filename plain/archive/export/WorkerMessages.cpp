#include "archive/export/WorkerMessages.h"

#include "archive/export/Packing.h"

namespace tarn::archive {
namespace {

void Put(Packer& packer, const std::optional<Span>& span) {
  packer.put(span.has_value()).put(span ? span->first : 0).put(span ? span->last : 0);
}

std::optional<Span> TakeSpan(Unpacker& fields) {
  const bool isThere = fields.flag();
  const auto first = static_cast<int64_t>(fields.number());
  const auto last = static_cast<int64_t>(fields.number());
  if (!isThere) return std::nullopt;
  return Span{first, last};
}

WorkerReply UnpackedReply(std::string_view packed) {
  Unpacker fields(packed);
  WorkerReply reply;
  reply.word = static_cast<WorkerWord>(fields.number());
  reply.text = fields.text();
  reply.entries = fields.number();
  reply.plan = fields.text();
  reply.reason = fields.text();
  reply.hasMissedFolder = fields.flag();
  reply.kind = static_cast<TroubleKind>(fields.number());
  reply.hasFolder = fields.flag();
  reply.bytes = fields.number();
  for (uint64_t& end : reply.ends.places) end = fields.number();
  return reply;
}

}  // namespace

const char* NameOf(WorkerPart part) {
  constexpr std::array<const char*, kWorkerParts> kNames = {"rows", "mails", "texts", "pages"};
  // cppcheck-suppress CastIntegerToAddressAtReturn ; a text, which it takes for a number
  return kNames[static_cast<size_t>(part)];
}

std::string Packed(const WorkerRequest& request) {
  Packer packer;
  packer.put(static_cast<uint64_t>(request.task)).put(request.name).put(request.path);
  packer.put(static_cast<uint64_t>(request.kind)).put(request.recover);
  packer.put(request.plan.path.string()).put(request.plan.bytes);
  const FilterOptions& filter = request.filter;
  packer.put(filter.folder).put(filter.from).put(filter.to).put(filter.subject);
  packer.put(filter.messageClass);
  Put(packer, filter.since);
  Put(packer, filter.until);
  packer.put(filter.hasAttachment);
  packer.put(request.limits.entries).put(request.limits.reasonAfter);
  packer.put(request.limits.passedOver.size());
  for (const auto& [entry, reason] : request.limits.passedOver) packer.put(entry).put(reason);
  packer.put(request.range);
  packer.put(request.choices.forms.size());
  for (const ExportForm form : request.choices.forms) packer.put(static_cast<uint64_t>(form));
  packer.put(request.textSeconds).put(request.choices.attachments);
  packer.put(request.choices.catalogue).put(request.choices.onePdf);
  const PageChoices& pages = request.choices.pages;
  packer.put(pages.helpers).put(static_cast<uint64_t>(pages.paper));
  packer.put(pages.sandbox).put(pages.seconds);
  packer.put(request.tree).put(request.folder);
  packer.put(request.offset).put(request.first).put(request.count);
  return std::move(packer.bytes());
}

WorkerRequest UnpackedRequest(std::string_view message) {
  Unpacker fields(message);
  WorkerRequest request;
  request.task = static_cast<WorkerTask>(fields.number());
  request.name = fields.text();
  request.path = fields.text();
  request.kind = static_cast<SourceKind>(fields.number());
  request.recover = fields.flag();
  request.plan.path = fields.text();
  request.plan.bytes = fields.text();
  FilterOptions& filter = request.filter;
  filter.folder = fields.optionalText();
  filter.from = fields.optionalText();
  filter.to = fields.optionalText();
  filter.subject = fields.optionalText();
  filter.messageClass = fields.optionalText();
  filter.since = TakeSpan(fields);
  filter.until = TakeSpan(fields);
  filter.hasAttachment = fields.flag();
  request.limits.entries = fields.number();
  request.limits.reasonAfter = fields.text();
  for (uint64_t passed = fields.number(); passed != 0; --passed) {
    const uint64_t entry = fields.number();
    request.limits.passedOver[entry] = fields.text();
  }
  request.range = fields.text();
  for (uint64_t forms = fields.number(); forms != 0; --forms) {
    request.choices.forms.insert(static_cast<ExportForm>(fields.number()));
  }
  request.textSeconds = fields.number();
  request.choices.attachments = fields.flag();
  request.choices.catalogue = fields.flag();
  request.choices.onePdf = fields.flag();
  PageChoices& pages = request.choices.pages;
  pages.helpers = fields.text();
  pages.paper = static_cast<pages::Paper>(fields.number());
  pages.sandbox = fields.flag();
  pages.seconds = fields.number();
  request.tree = fields.text();
  request.folder = fields.text();
  request.offset = fields.number();
  request.first = fields.number();
  request.count = fields.number();
  return request;
}

std::string Packed(const WorkerReply& reply) {
  Packer packer;
  packer.put(static_cast<uint64_t>(reply.word)).put(reply.text);
  packer.put(reply.entries)
      .put(reply.plan)
      .put(reply.reason)
      .put(reply.hasMissedFolder)
      .put(static_cast<uint64_t>(reply.kind));
  packer.put(reply.hasFolder).put(reply.bytes);
  for (const uint64_t end : reply.ends.places) packer.put(end);
  return std::move(Packer().put(packer.bytes()).bytes());
}

std::vector<WorkerReply> UnpackedReplies(std::string_view message) {
  std::vector<WorkerReply> replies;
  Unpacker all(message);
  while (!all.isAtEnd()) replies.push_back(UnpackedReply(all.text()));
  return replies;
}

}  // namespace tarn::archive
