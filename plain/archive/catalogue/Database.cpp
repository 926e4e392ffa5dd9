#include "archive/catalogue/Database.h"

#include <sqlite3.h>

#include <new>
#include <system_error>

#include "console/SystemErrors.h"

namespace tarn::archive {
namespace {

[[noreturn]] void Fail(sqlite3* database, int status) {
  if (status == SQLITE_NOMEM) throw std::bad_alloc();
  std::string what = database != nullptr ? sqlite3_errmsg(database) : sqlite3_errstr(status);
  // SQLite names the call that failed; the system says why. Of a file that cannot be opened it
  // keeps the error of a second attempt.
  const bool isOfSystem = (status & 0xFF) == SQLITE_IOERR;
  const int error = database != nullptr && isOfSystem ? sqlite3_system_errno(database) : 0;
  if (error != 0) what += ": " + host::ErrorText({error, std::generic_category()});
  throw DatabaseError(what);
}

void Check(sqlite3* database, int status) {
  if (status != SQLITE_OK) Fail(database, status);
}

void Check(sqlite3_stmt* statement, int status) { Check(sqlite3_db_handle(statement), status); }

}  // namespace

void Database::Close::operator()(sqlite3* database) const { sqlite3_close_v2(database); }

Database::Database(const std::filesystem::path& path, DatabaseUse use) {
  const int flags =
      use == DatabaseUse::Make ? SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE : SQLITE_OPEN_READONLY;
  sqlite3* opened = nullptr;
  // A path is bytes here, and never read as an address.
  const int status = sqlite3_open_v2(path.c_str(), &opened, flags | SQLITE_OPEN_NOMUTEX, nullptr);
  database_.reset(opened);
  Check(opened, status);
  sqlite3_extended_result_codes(opened, 1);
}

void Database::run(const char* statements) {
  Check(handle(), sqlite3_exec(handle(), statements, nullptr, nullptr, nullptr));
}

void Statement::Finish::operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }

Statement::Statement(const Database& database, std::string_view text) {
  sqlite3_stmt* prepared = nullptr;
  Check(database.handle(), sqlite3_prepare_v2(database.handle(), text.data(),
                                              static_cast<int>(text.size()), &prepared, nullptr));
  statement_.reset(prepared);
}

void Statement::bind(int place, std::string_view text) {
  Check(statement_.get(),
        sqlite3_bind_text64(statement_.get(), place, text.data() == nullptr ? "" : text.data(),
                            text.size(), SQLITE_STATIC, SQLITE_UTF8));
}

void Statement::bindBytes(int place, std::string_view bytes) {
  Check(statement_.get(),
        sqlite3_bind_blob64(statement_.get(), place, bytes.data() == nullptr ? "" : bytes.data(),
                            bytes.size(), SQLITE_STATIC));
}

void Statement::bind(int place, int64_t number) {
  Check(statement_.get(), sqlite3_bind_int64(statement_.get(), place, number));
}

void Statement::bindNull(int place) {
  Check(statement_.get(), sqlite3_bind_null(statement_.get(), place));
}

void Statement::bindPointer(int place, void* address, const char* name) {
  Check(statement_.get(), sqlite3_bind_pointer(statement_.get(), place, address, name, nullptr));
}

bool Statement::step() {
  const int status = sqlite3_step(statement_.get());
  if (status == SQLITE_ROW) return true;
  if (status != SQLITE_DONE) Fail(sqlite3_db_handle(statement_.get()), status);
  return false;
}

void Statement::reset() {
  // An error of the last step was told then.
  sqlite3_reset(statement_.get());
  sqlite3_clear_bindings(statement_.get());
}

void Statement::execute() {
  step();
  reset();
}

bool Statement::isNull(int column) const {
  return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}

int64_t Statement::number(int column) const {
  return sqlite3_column_int64(statement_.get(), column);
}

double Statement::real(int column) const { return sqlite3_column_double(statement_.get(), column); }

std::string Statement::text(int column) const {
  const unsigned char* const text = sqlite3_column_text(statement_.get(), column);
  if (text == nullptr) return {};
  const int bytes = sqlite3_column_bytes(statement_.get(), column);
  return std::string(reinterpret_cast<const char*>(text), static_cast<size_t>(bytes));
}

std::string_view Statement::bytes(int column) const {
  const void* const bytes = sqlite3_column_blob(statement_.get(), column);
  if (bytes == nullptr) return {};
  const int count = sqlite3_column_bytes(statement_.get(), column);
  return {static_cast<const char*>(bytes), static_cast<size_t>(count)};
}

}  // namespace tarn::archive
