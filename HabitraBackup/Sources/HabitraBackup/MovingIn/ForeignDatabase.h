#pragma once

#include <HabitraBackup/Exchange/ExchangeProgress.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace habitra {

/// A SQLite database that others have written, opened to be read and trusted in nothing: read-only and immutable, so
/// that no file is written or made beside it; no views, triggers, extensions or functions of its schema are run.
class ForeignDatabase {
 public:
  /// A row that is being read, valid during the call.
  class Row {
   public:
    /// The value in the column of that place; none for NULL. Throws qz::Error that names table, row and column for a
    /// value of another kind.
    [[nodiscard]] std::optional<std::int64_t> integer(int column) const;
    [[nodiscard]] std::optional<double> number(int column) const;
    [[nodiscard]] std::optional<std::string> text(int column) const;
    /// The same where NULL will not do.
    [[nodiscard]] std::int64_t wantedInteger(int column) const;

    [[noreturn]] void refuse(int column, std::string_view wanted) const;

   private:
    friend class ForeignDatabase;
    Row(const ForeignDatabase& database, std::string_view table, sqlite3_stmt* statement)
        : database_(database), table_(table), statement_(statement) {}

    const ForeignDatabase& database_;
    std::string_view table_;
    sqlite3_stmt* statement_;
  };

  /// Throws qz::Error when it cannot be opened, is damaged, or has changes that were not written back yet.
  explicit ForeignDatabase(const std::filesystem::path& file);
  ~ForeignDatabase();
  ForeignDatabase(const ForeignDatabase&) = delete;
  ForeignDatabase& operator=(const ForeignDatabase&) = delete;

  [[nodiscard]] const std::string& name() const { return name_; }
  /// The number of its layout.
  [[nodiscard]] std::int64_t version() const;
  /// Throws qz::Error when it is not in the range, both ends included.
  void wantVersion(std::int64_t oldest, std::int64_t newest) const;

  [[nodiscard]] bool hasTable(std::string_view table) const;
  [[nodiscard]] bool hasColumn(std::string_view table, std::string_view column) const;
  /// Hands on these columns of every row, in ascending order of the table's key; a column that the table lacks is NULL.
  /// `progress`, where there is one, is told how many of the rows have been handed on.
  void forEachRow(std::string_view table, std::initializer_list<std::string_view> columns,
                  const std::function<void(const Row&)>& onRow, const ExchangeProgress& progress = {}) const;

  [[noreturn]] void fail(std::string_view problem) const;

 private:
  void harden() const;
  void check() const;
  [[nodiscard]] std::int64_t numRows(std::string_view table) const;
  void run(const std::string& query, std::string_view table, const std::function<void(const Row&)>& onRow) const;
  [[nodiscard]] bool holds(const std::string& query, std::string_view first, std::string_view second) const;

  std::string name_;
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> connection_;
};

}  // namespace habitra
