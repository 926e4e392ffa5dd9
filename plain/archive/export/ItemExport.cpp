#include "archive/export/ItemExport.h"

#include <utility>
#include <vector>

#include "archive/catalogue/CatalogueItem.h"
#include "archive/catalogue/ItemTexts.h"
#include "archive/common/SafeName.h"
#include "archive/export/Fingerprint.h"
#include "archive/export/ItemFiles.h"
#include "archive/export/ItemNames.h"
#include "archive/export/KeptBodies.h"
#include "archive/export/ManifestRows.h"
#include "archive/pdf/WritePdf.h"
#include "archive/writers/ItemText.h"
#include "archive/writers/Writers.h"

namespace tarn::archive {
namespace {

// What an attachment has become.
struct Attached {
  std::string path;         // relative to the item's folder; empty without a file
  std::string fingerprint;  // of its bytes, or of the item that it is
};

// "2024-05-01 12:34 Plans"; of what has no date the subject alone.
std::string Bookmark(const ItemFields& fields) {
  const std::optional<Moment>& moment = fields.sent ? fields.sent : fields.received;
  const std::string subject = OneLine(fields.subject);
  const std::string shown = subject.empty() ? "(no subject)" : subject;
  return moment ? ShortDate(*moment) + " " + shown : shown;
}

class ItemExporter {
 public:
  ItemExporter(const ExportChoices& choices, const ItemTarget& target, std::string outermostId)
      : choices_(choices),
        target_(target),
        textTime_(target.textTime),
        outermostId_(std::move(outermostId)),
        files_(target.folder, target.tree) {}

  ItemResult run(Item& item) {
    ItemResult result;
    (void)exportOne(item, "", 0);
    result.fingerprint = rows_.front().fingerprint;
    for (ItemRow& row : rows_) {
      if (row.item.status != ExportStatus::Failed && !row.reasons.empty()) {
        row.item.status = ExportStatus::Partial;
      }
      finishRow(row);
      result.rows += JournalLine(row);
    }
    result.hasFolder = files_.hasFolder();
    result.bytes = files_.bytes() + mailBytes_ + pagesBytes_;
    return result;
  }

 private:
  // `below` is the folder of an embedded item within that of the outermost, with a slash at its
  // end.
  std::string exportOne(Item& source, const std::string& below, int depth) {
    // Forms, fingerprint and catalogue all want them.
    KeptBodies item(source);
    const size_t row = rows_.size();
    rows_.emplace_back();
    describe(item, rows_[row].item);
    // Walking on may change the item's own list.
    const std::vector<Attachment> attachments = item.attachments();
    std::vector<Attached> attached(attachments.size());
    UniqueNames names;
    for (size_t index = 0; index < attachments.size(); ++index) {
      if (++attachments_ > kMostAttachmentFiles) {
        lose(row, "more than " + std::to_string(kMostAttachmentFiles) +
                      " attachments; the others are left out");
        break;
      }
      attached[index] = attach(item, attachments[index], index, {row, below, depth}, names);
    }
    AttachmentPaths paths;
    if (choices_.attachments) {
      for (const Attached& one : attached) paths.push_back(one.path);
    }
    writeForms(item, paths, {row, below, depth});
    loseAll(row, item.troubles());
    tellCatalogue(item, row);
    std::vector<std::string> prints;
    prints.reserve(attached.size());
    for (const Attached& one : attached) prints.push_back(one.fingerprint);
    const Fingerprint fingerprint = FingerprintOf(item, prints);
    // Copies are named among outermost items alone. One of which something is missing is neither a
    // copy nor an original: its files are not those of a whole one.
    const bool isWhole = std::all_of(rows_.begin(), rows_.end(),
                                     [](const ItemRow& told) { return told.reasons.empty(); });
    if (depth == 0 && fingerprint.isTelling && isWhole) rows_[row].fingerprint = fingerprint.sum;
    return fingerprint.sum;
  }

  struct Where {
    size_t row;
    const std::string& below;
    int depth;
  };

  Attached attach(Item& item, const Attachment& attachment, size_t index, const Where& where,
                  UniqueNames& names) {
    Attached attached;
    if (attachment.trouble) {
      lose(where.row, nameOf(index) + ": " + attachment.trouble->reason);
      return attached;
    }
    if (attachment.kind == AttachmentKind::Reference) {
      attached.fingerprint = attachment.target;
      return attached;
    }
    const bool isItem = attachment.kind == AttachmentKind::Item;
    Outcome<std::unique_ptr<ByteSource>> bytes = item.open(index);
    if (bytes && *bytes) {
      attached = save(**bytes, attachment, index, where, names);
    } else if (!isItem) {
      lose(where.row, nameOf(index) + ": " + (bytes ? "it has no bytes" : bytes.trouble().reason));
    }
    if (isItem) embed(item, index, where, attached);
    return attached;
  }

  Attached save(ByteSource& bytes, const Attachment& attachment, size_t index, const Where& where,
                UniqueNames& names) {
    Attached attached;
    Copied copied;
    if (choices_.attachments) {
      const std::string otherwise =
          attachment.kind == AttachmentKind::Item ? nameOf(index) + ".eml" : nameOf(index);
      attached.path = "attachments/" + names.make(SafeName(attachment.name, otherwise));
      const std::unique_ptr<HashedFile> file = files_.create(where.below + attached.path);
      copied = CopyAll(bytes, *file);
      if (copied.writing) throw Full{*copied.writing};
      ExportedFile told = files_.finish(*file, where.below + attached.path, "attachment");
      told.name = attachment.name;
      told.index = index + 1;
      attached.fingerprint = told.sha256;
      rows_[where.row].item.files.push_back(std::move(told));
    } else {
      SummingSink sum;
      copied = CopyAll(bytes, sum);
      attached.fingerprint = sum.digest();
    }
    if (copied.reading) lose(where.row, nameOf(index) + ": " + copied.reading->reason);
    return attached;
  }

  void embed(Item& item, size_t index, const Where& where, Attached& attached) {
    const auto lost = [&](const std::string& reason) { loseEmbedded(item, index, reason); };
    if (where.depth >= kDeepestItem) return lost("is too deep within other items to be read");
    const Outcome<std::unique_ptr<Item>> embedded = item.embedded(index);
    if (!embedded) return lost(embedded.trouble().reason);
    Item& inner = **embedded;
    const std::string name =
        "embedded/" + EmbeddedName(inner.place().id, outermostId_, inner.fields(Detail::Headline));
    const std::string fingerprint = exportOne(inner, name + "/", where.depth + 1);
    if (!attached.path.empty()) return;
    attached.fingerprint = fingerprint;
    // All embedded items are side by side in the folder of the outermost.
    const bool hasPage = choices_.forms.contains(ExportForm::Html);
    const std::string up = where.below.empty() ? "" : "../../";
    if (hasPage) attached.path = up + name + "/message.html";
  }

  void loseEmbedded(const Item& parent, size_t index, const std::string& reason) {
    ItemRow row;
    row.item.source = target_.source;
    row.item.id = parent.place().id + "/" + std::to_string(index + 1);
    row.item.parent = parent.place().id;
    row.item.folder = *parent.place().folder;
    row.item.status = ExportStatus::Failed;
    row.reasons.push_back(reason);
    rows_.push_back(std::move(row));
  }

  void writeForms(Item& item, const AttachmentPaths& paths, const Where& where) {
    const size_t row = where.row;
    const std::string& below = where.below;
    bool hasFiles = false;
    for (const FormFile& form : FormFiles()) {
      if (!choices_.forms.contains(form.form)) continue;
      if (form.form == ExportForm::Mbox) {
        if (below.empty()) writeMail(item, form.write, row);
      } else if (form.form == ExportForm::Pdf && choices_.onePdf) {
        writePages(item, where);
      } else if (form.form == ExportForm::Pdf) {
        writePdf(item, row, below + form.file);
        hasFiles = true;
      } else {
        writeFile(item, paths, row, {below + form.file, form.role, form.write});
        hasFiles = true;
      }
    }
    if (!hasFiles) return;
    const std::string messageClass = rows_[row].item.fields.messageClass;
    if (IsContact(messageClass)) {
      writeFile(item, paths, row, {below + "contact.vcf", "vcard", WithoutPaths(WriteVcard)});
    }
    if (IsCalendar(rows_[row].item.fields.messageClass)) {
      writeFile(item, paths, row, {below + "event.ics", "icalendar", WithoutPaths(WriteIcalendar)});
    }
  }

  struct FileToWrite {
    std::string path;
    const char* role;
    FormWriter write;
  };

  void writeFile(Item& item, const AttachmentPaths& paths, size_t row, const FileToWrite& what) {
    const std::unique_ptr<HashedFile> file = files_.create(what.path);
    const Written written = what.write(item, paths, *file);
    if (written.full) throw Full{*written.full};
    loseAll(row, written.lost);
    rows_[row].item.files.push_back(files_.finish(*file, what.path, what.role));
  }

  void writePdf(Item& item, size_t row, const std::string& path) {
    LateFile file([this, &path] { return files_.create(path); });
    const WrittenPdf written = WritePdf(item, *target_.layout, file);
    if (written.full) throw Full{*written.full};
    loseAll(row, written.lost);
    if (written.noPages) {
      lose(row, "it has no PDF: " + written.noPages->reason);
    } else {
      rows_[row].item.files.push_back(
          files_.finish(*file.file(), path, NameOf(ExportForm::Pdf).data()));
    }
  }

  // What files of the item go by in a file that has those of many: "2024-05-01 Plans", and of an
  // embedded one "2024-05-01 Plans - 2 Re".
  std::string insideName(const std::string& below) const {
    if (below.empty()) return target_.name;
    const size_t begin = below.find('/') + 1;
    return target_.name + " - " + below.substr(begin, below.size() - begin - 1);
  }

  // After those of the items that are embedded in it.
  void writePages(Item& item, const Where& where) {
    const size_t row = where.row;
    ItemPages pages;
    pages.path = target_.onePdf;
    pages.bookmark = Bookmark(rows_[row].item.fields);
    pages.offset = pagesBytes_;
    pages.depth = static_cast<size_t>(where.depth);
    CountingSink sink(target_.pages);
    const WrittenPdf written = WritePdf(item, *target_.layout, sink, {}, insideName(where.below));
    if (written.full) throw Full{*written.full};
    loseAll(row, written.lost);
    if (written.noPages) lose(row, "it has no PDF: " + written.noPages->reason);
    pages.bytes = sink.count();
    pages.pages = written.pages;
    pagesBytes_ += sink.count();
    rows_[row].pages = std::move(pages);
  }

  void writeMail(Item& item, const FormWriter& write, size_t row) {
    CountingSink mails(target_.mails);
    const Written written = write(item, {}, mails);
    if (written.full) throw Full{*written.full};
    loseAll(row, written.lost);
    rows_[row].mbox = target_.mbox;
    rows_[row].mboxBytes = mails.count();
    mailBytes_ += mails.count();
  }

  void describe(Item& item, CatalogueItem& record) const {
    record.source = target_.source;
    record.id = item.place().id;
    record.parent = item.place().parent;
    record.folder = *item.place().folder;
    record.fields = item.fields(Detail::Envelope);
  }

  void tellCatalogue(Item& item, size_t row) {
    if (choices_.catalogue) TakeTexts(item, rows_[row].item, textTime_);
  }

  void finishRow(ItemRow& row) {
    row.item.reason = JoinedReasons(row.reasons);
    if (!choices_.catalogue) return;
    const std::string packed = PackedItem(row.item);
    if (const std::optional<Trouble> full = target_.texts.write(packed)) throw Full{*full};
    row.catalogueBytes = packed.size();
    row.item.body = {};
    row.item.attachments = {};
  }

  void lose(size_t row, std::string reason) { rows_[row].reasons.push_back(std::move(reason)); }
  void loseAll(size_t row, const std::vector<Trouble>& troubles) {
    for (const Trouble& trouble : troubles) lose(row, trouble.reason);
  }

  static std::string nameOf(size_t index) { return "attachment-" + std::to_string(index + 1); }

  const ExportChoices& choices_;
  const ItemTarget& target_;
  TextTime textTime_;
  const std::string outermostId_;
  std::vector<ItemRow> rows_;
  ItemFiles files_;
  size_t attachments_ = 0;
  uint64_t mailBytes_ = 0;
  uint64_t pagesBytes_ = 0;
};

}  // namespace

Outcome<ItemResult> ExportItem(Item& item, const ExportChoices& choices, const ItemTarget& target) {
  try {
    return ItemExporter(choices, target, item.place().id).run(item);
  } catch (const Full& full) {
    return full.trouble;
  }
}

}  // namespace tarn::archive
