// CatalogueTables.h - the tables of a catalogue, as who writes and who searches it has them
// (docs/archive.md tells them to others).
#ifndef TARN_ARCHIVE_CATALOGUETABLES_H
#define TARN_ARCHIVE_CATALOGUETABLES_H

namespace tarn::archive {

// The number that tells which tables a file has: PRAGMA user_version.
inline constexpr int kCatalogueVersion = 1;

// The whole file is one change, so that nothing needs a journal and the disk is waited for once.
inline constexpr const char* kCatalogueSettings =
    "PRAGMA page_size=8192;"
    "PRAGMA journal_mode=OFF;"
    "PRAGMA synchronous=FULL;"
    "PRAGMA cache_size=-16384;"
    "PRAGMA temp_store=MEMORY;"
    "PRAGMA user_version=1;"
    "PRAGMA application_id=0x7461726e;";

inline constexpr const char* kCatalogueTables =
    "BEGIN;"
    "CREATE TABLE items("
    " item INTEGER PRIMARY KEY,"  // in the order of the manifest, from 1
    " source TEXT NOT NULL,"
    " id TEXT NOT NULL,"
    " parent TEXT,"           // the id of the item that this one is embedded in
    " folder TEXT NOT NULL,"  // names joined by /
    " class TEXT NOT NULL,"
    " subject TEXT NOT NULL,"
    " from_name TEXT NOT NULL,"
    " from_address TEXT NOT NULL,"
    " message_id TEXT NOT NULL,"
    " sent TEXT,"  // 2024-05-01T10:34:56Z
    " received TEXT,"
    " size INTEGER,"
    " attachments INTEGER NOT NULL,"
    " status TEXT NOT NULL,"
    " reason TEXT);"
    "CREATE TABLE recipients("
    " item INTEGER NOT NULL,"
    " place INTEGER NOT NULL,"
    " kind TEXT NOT NULL,"  // to, cc, bcc; sender, where it is not the one that the mail is from
    " name TEXT NOT NULL,"
    " address TEXT NOT NULL,"
    " PRIMARY KEY(item, place)) WITHOUT ROWID;"
    "CREATE TABLE files("
    " item INTEGER NOT NULL,"
    " place INTEGER NOT NULL,"
    " path TEXT NOT NULL,"  // below the export's folder
    " role TEXT NOT NULL,"
    " bytes INTEGER NOT NULL,"
    " sha256 TEXT NOT NULL,"
    " name TEXT,"           // of an attachment: its own
    " attachment INTEGER,"  // of an attachment: its place, from 1
    " PRIMARY KEY(item, place)) WITHOUT ROWID;"
    "CREATE TABLE texts("
    " item INTEGER NOT NULL,"
    " attachment INTEGER NOT NULL,"  // its place, from 1; 0 for the item's own text
    " name TEXT,"
    " text TEXT NOT NULL);"
    // Words as WordsOf() prepares them, put in by WordIndex; the rowid is the item's number.
    "CREATE VIRTUAL TABLE words USING fts5("
    " subject, sender, recipients, body, attachments,"
    " content='', tokenize=\"unicode61 remove_diacritics 2 categories 'L* N* Co M*'\");";

inline constexpr const char* kCatalogueIndexes =
    "CREATE INDEX items_by_id ON items(source, id);"
    "CREATE INDEX texts_by_item ON texts(item, attachment);"
    "COMMIT;";

}  // namespace tarn::archive

#endif
