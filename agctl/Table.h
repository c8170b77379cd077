#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

#include "agctl/Screen.h"

namespace agctl {

/// Rows under headers, aligned by what the texts take on a terminal.
class Table {
 public:
  enum class Kind : std::uint8_t {
    kText,
    kNumber,  ///< aligned to the right
    kLong     ///< gives way first when a terminal is too narrow
  };
  struct Column {
    std::string header;
    Kind kind = Kind::kText;
  };
  struct Cell {
    Cell(std::string written, Tone meaning = Tone::kPlain)  // NOLINT: a text is a cell
        : text(std::move(written)), tone(meaning) {}
    Cell(const char* written) : text(written), tone(Tone::kPlain) {}  // NOLINT: so is a literal
    std::string text;  ///< anybody's: made printable on the way out; nothing shows as "-"
    Tone tone;
  };

  explicit Table(std::vector<Column> columns) : columns_(std::move(columns)) {}

  /// As many cells as there are columns.
  void add(std::vector<Cell> row) { rows_.push_back(std::move(row)); }
  bool empty() const { return rows_.empty(); }

  /// No line is wider than the screen.
  void print(std::ostream& out, const Screen& screen) const;

 private:
  std::vector<Column> columns_;
  std::vector<std::vector<Cell>> rows_;
};

}  // namespace agctl
