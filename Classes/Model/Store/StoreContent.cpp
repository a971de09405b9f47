#include <HabitraModel/Store/StoreContent.h>

#include <fmt/format.h>
#include <sqlite3.h>

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <memory>

namespace habitra {

namespace {

class ContentHash {
 public:
  ContentHash() : state_(XXH3_createState()) { XXH3_128bits_reset(state_.get()); }

  void add(sqlite3_stmt* row) {
    for (int column = 0; column < sqlite3_column_count(row); ++column) addValue(row, column);
  }
  [[nodiscard]] std::array<std::uint64_t, 2> value() const {
    const XXH128_hash_t hash = XXH3_128bits_digest(state_.get());
    return {hash.low64, hash.high64};
  }

 private:
  struct Free {
    void operator()(XXH3_state_t* state) const { XXH3_freeState(state); }
  };

  void addValue(sqlite3_stmt* row, int column) {
    const int type = sqlite3_column_type(row, column);
    addBytes(&type, sizeof type);
    if (type == SQLITE_INTEGER) {
      const std::int64_t number = sqlite3_column_int64(row, column);
      addBytes(&number, sizeof number);
    } else if (type == SQLITE_FLOAT) {
      const double number = sqlite3_column_double(row, column);
      addBytes(&number, sizeof number);
    } else if (type != SQLITE_NULL) {
      const void* content = sqlite3_column_blob(row, column);  // of a text its bytes
      const int size = sqlite3_column_bytes(row, column);
      addBytes(&size, sizeof size);
      addBytes(content, static_cast<std::size_t>(size));
    }
  }
  void addBytes(const void* bytes, std::size_t count) {
    if (count > 0) XXH3_128bits_update(state_.get(), bytes, count);
  }

  std::unique_ptr<XXH3_state_t, Free> state_;
};

TableContent contentOf(Connection& connection, std::string name, const std::string& query) {
  Statement rows(connection, query);
  ContentHash hash;
  std::int64_t count = 0;
  for (; rows.step(); ++count) hash.add(rows.handle());
  return {std::move(name), count, hash.value()};
}

std::string quoted(const std::string& name) {
  std::string text = "\"";
  for (const char c : name) text += c == '"' ? "\"\"" : std::string(1, c);
  return text + "\"";
}

}  // namespace

std::vector<TableContent> storeContent(Connection& connection) {
  std::vector<TableContent> content;
  content.push_back(contentOf(connection, "sqlite_schema",
                              "SELECT type, name, tbl_name, sql FROM sqlite_schema ORDER BY type, name"));
  std::vector<std::string> names;
  Statement tables(connection, "SELECT name FROM sqlite_schema WHERE type='table' ORDER BY name");
  while (tables.step()) names.emplace_back(tables.text(0));
  for (const std::string& name : names) {
    // A scan of the table itself comes in order of its key.
    content.push_back(contentOf(connection, name, fmt::format("SELECT * FROM {} NOT INDEXED", quoted(name))));
  }
  return content;
}

}  // namespace habitra
