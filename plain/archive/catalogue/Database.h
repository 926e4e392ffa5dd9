// Database.h - SQLite, with values that free themselves. Its errors are exceptions, which the room
// turns into Troubles at its edge.
#ifndef TARN_ARCHIVE_DATABASE_H
#define TARN_ARCHIVE_DATABASE_H

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace tarn::archive {

class DatabaseError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

enum class DatabaseUse : uint8_t { Make, Read };

class Database {
 public:
  // Throws DatabaseError, as everything here does; std::bad_alloc without memory.
  Database(const std::filesystem::path& path, DatabaseUse use);

  // Statements without results, separated by semicolons.
  void run(const char* statements);

  sqlite3* handle() const { return database_.get(); }

 private:
  struct Close {
    void operator()(sqlite3* database) const;
  };
  std::unique_ptr<sqlite3, Close> database_;
};

// A prepared statement. Places of parameters are counted from 1, columns from 0.
class Statement {
 public:
  Statement(const Database& database, std::string_view text);

  void bind(int place, std::string_view text);
  void bind(int place, int64_t number);
  void bindBytes(int place, std::string_view bytes);
  void bindNull(int place);
  template <typename T>
  void bind(int place, const std::optional<T>& value) {
    if (value) {
      bind(place, *value);
    } else {
      bindNull(place);
    }
  }
  // An address of this process, for functions that know it by its name.
  void bindPointer(int place, void* address, const char* name);

  // The next row; false at the end. Texts that are bound must live until then.
  bool step();
  // Ready for other parameters; the old ones are forgotten.
  void reset();
  // For a statement without rows: steps and resets.
  void execute();

  // Of the present row.
  bool isNull(int column) const;
  int64_t number(int column) const;
  double real(int column) const;
  std::string text(int column) const;
  // Until the next step.
  std::string_view bytes(int column) const;

 private:
  struct Finish {
    void operator()(sqlite3_stmt* statement) const;
  };
  std::unique_ptr<sqlite3_stmt, Finish> statement_;
};

}  // namespace tarn::archive

#endif
