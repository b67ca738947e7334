// One use of a prepared statement of the registry's database.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <string_view>

#include "platform/base/bytes.h"
#include "platform/base/outcome.h"

namespace ts5 {

// What a result code of SQLite is for us.
[[nodiscard]] Outcome SqlOutcome(int code);

// The statement is free for the next use afterwards.
class RegistryQuery {
 public:
  explicit RegistryQuery(sqlite3_stmt* statement) : statement_(statement) {}
  RegistryQuery(const RegistryQuery&) = delete;
  RegistryQuery& operator=(const RegistryQuery&) = delete;
  ~RegistryQuery() {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
  }

  RegistryQuery& Text(int place, std::string_view text) {
    // A null pointer would bind NULL.
    const char* const data = text.empty() ? "" : text.data();
    sqlite3_bind_text64(statement_, place, data, text.size(), SQLITE_STATIC, SQLITE_UTF8);
    return *this;
  }
  RegistryQuery& Integer(int place, std::int64_t value) {
    sqlite3_bind_int64(statement_, place, value);
    return *this;
  }
  RegistryQuery& Blob(int place, ByteView bytes) {
    static constexpr std::uint8_t kNothing = 0;  // a null pointer would bind NULL
    const void* const data = bytes.empty() ? &kNothing : bytes.data();
    sqlite3_bind_blob64(statement_, place, data, bytes.size(), SQLITE_STATIC);
    return *this;
  }

  // True while there is a row; then Status() is the result.
  bool Step() {
    status_ = sqlite3_step(statement_);
    return status_ == SQLITE_ROW;
  }
  Outcome Run() {
    while (Step()) {
    }
    return SqlOutcome(status_);
  }
  [[nodiscard]] Outcome Status() const { return SqlOutcome(status_); }

  [[nodiscard]] std::int64_t IntegerAt(int column) const { return sqlite3_column_int64(statement_, column); }
  // The bytes of a column, valid until the next step.
  [[nodiscard]] ByteView BytesAt(int column) const {
    const auto* const data = static_cast<const std::uint8_t*>(sqlite3_column_blob(statement_, column));
    const int size = sqlite3_column_bytes(statement_, column);
    return data == nullptr ? ByteView{} : ByteView{data, static_cast<std::size_t>(size)};
  }
  [[nodiscard]] std::string_view TextAt(int column) const { return AsText(BytesAt(column)); }

 private:
  sqlite3_stmt* statement_;
  int status_ = SQLITE_OK;
};

}  // namespace ts5
