#pragma once

#include <HabitraModel/Store/StoredValues.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;
struct sqlite3_value;

namespace habitra {

class Connection;

/// One column of the row that a statement stands on, found once for several questions. Good until the next step.
class Column {
 public:
  explicit Column(sqlite3_value* value);

  [[nodiscard]] bool isNull() const;
  [[nodiscard]] bool isInteger() const;
  [[nodiscard]] bool isReal() const;
  [[nodiscard]] bool isText() const;
  [[nodiscard]] bool isBytes() const;
  [[nodiscard]] std::int64_t integer() const;
  [[nodiscard]] double real() const;
  [[nodiscard]] std::string_view text() const;
  [[nodiscard]] Bytes bytes() const;

 private:
  sqlite3_value* value_;
  int type_;  // one of the engine's
};

/// A prepared statement. Every failure is a StoreError that names the store.
class Statement {
 public:
  Statement(Connection& connection, std::string_view sql);
  ~Statement();
  Statement(Statement&& other) noexcept;
  Statement& operator=(Statement&& other) = delete;

  // Parameters are numbered from 1. Texts and bytes are borrowed until reset().
  void bind(int parameter, std::int64_t value);
  void bind(int parameter, double value);
  void bind(int parameter, std::string_view text);
  void bind(int parameter, std::span<const std::uint8_t> bytes);
  void bindNull(int parameter);

  /// Gives true when there is a row.
  bool step();
  void reset() noexcept;

  // Columns are numbered from 0.
  [[nodiscard]] Column column(int column) const;
  [[nodiscard]] bool isNull(int column) const { return this->column(column).isNull(); }
  [[nodiscard]] std::int64_t integer(int column) const { return this->column(column).integer(); }
  [[nodiscard]] std::string_view text(int column) const { return this->column(column).text(); }
  [[nodiscard]] Bytes bytes(int column) const { return this->column(column).bytes(); }

  [[nodiscard]] sqlite3_stmt* handle() const { return handle_; }

 private:
  Connection* connection_;
  sqlite3_stmt* handle_ = nullptr;
};

/// One SQL text of a connection, prepared at its first use and kept. Uses may be nested: each has a statement of its
/// own.
class Query {
 public:
  Query(Connection& connection, std::string sql) : connection_(connection), sql_(std::move(sql)) {}

  /// A statement for the length of one use; resets it and gives it back.
  class Use {
   public:
    explicit Use(Query& query);
    ~Use();
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
    Statement* operator->() { return statement_.get(); }
    Statement& operator*() { return *statement_; }

   private:
    Query& query_;
    std::unique_ptr<Statement> statement_;
  };

  [[nodiscard]] Use use() { return Use(*this); }

 private:
  Connection& connection_;
  std::string sql_;
  std::vector<std::unique_ptr<Statement>> idle_;
};

/// A connection to the engine, set up as every connection to a store must be: no checkpoint but by checkpoint(), every
/// commit durable, foreign keys on, nothing trusted that the file says.
///
/// Belongs to one queue.
class Connection {
 public:
  enum class Access { readWrite, readOnly, memory };

  /// Opens `address`: a path, a "file:" address for `memory`, or one of StoreFile's. `file` is for messages.
  Connection(const std::string& address, std::filesystem::path file, Access access);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  void execute(const char* sql);
  [[nodiscard]] std::int64_t integer(const char* sql);

  [[nodiscard]] bool isInTransaction() const;
  /// Ends the open transaction, if there is one, without a word on failure.
  void rollback() noexcept;

  /// Runs several statements in a transaction of their own.
  void executeAtomically(const std::string& sql);

  /// How many rows the last statement that writes has inserted, changed or removed.
  [[nodiscard]] int changes() const;

  /// Checkpoints when the write-ahead log has become long; that it could not is logged. REQUIRES: the writers' turn.
  void shortenLog() noexcept;
  /// Moves what no reader needs of the write-ahead log into the file. REQUIRES: the writers' turn. Gives false on
  /// failure.
  bool checkpoint() noexcept;

  /// Throws the StoreError for a result code.
  [[noreturn]] void fail(int code) const;

  [[nodiscard]] sqlite3* handle() const { return handle_; }
  [[nodiscard]] const std::filesystem::path& file() const { return file_; }

 private:
  void configure(Access access);

  std::filesystem::path file_;
  sqlite3* handle_ = nullptr;
  int pagesInLog_ = 0;
};

}  // namespace habitra
