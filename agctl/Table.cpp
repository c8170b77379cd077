#include "agctl/Table.h"

#include <algorithm>
#include <numeric>
#include <ostream>

namespace agctl {
namespace {

constexpr std::size_t kGap = 2;
constexpr std::size_t kLeastLong = 8;

using Widths = std::vector<std::size_t>;
using Row = std::vector<Table::Cell>;

std::size_t widthOf(const Widths& widths) {
  return std::accumulate(widths.begin(), widths.end(), (widths.size() - 1) * kGap);
}

void shrink(Widths& widths, std::size_t column, std::size_t least, std::size_t room) {
  const std::size_t width = widthOf(widths);
  if (width > room && widths[column] > least) {
    widths[column] -= std::min(width - room, widths[column] - least);
  }
}

/// The last columns give way first: what identifies a row stands at its beginning. Texts get
/// shorter as long as they say something; then whole columns are left out.
void fit(Widths& widths, const std::vector<Table::Column>& columns, std::size_t room) {
  for (const Table::Kind kind : {Table::Kind::kLong, Table::Kind::kText}) {
    for (std::size_t i = columns.size(); i-- > 0;) {
      if (columns[i].kind == kind) {
        shrink(widths, i, std::max(kLeastLong, displayWidth(columns[i].header)), room);
      }
    }
  }
  while (widths.size() > 1 && widthOf(widths) > room) {
    widths.pop_back();
  }
  shrink(widths, 0, 1, room);
}

class Printer {
 public:
  Printer(std::ostream& out, const Screen& screen, const std::vector<Table::Column>& columns,
          Widths widths)
      : out_(out), screen_(screen), columns_(columns), widths_(std::move(widths)) {}

  void print(const Row& row) {
    std::string line;
    for (std::size_t i = 0; i < widths_.size(); ++i) {
      line += std::string(i == 0 ? 0 : kGap, ' ') + padded(row[i], i, i + 1 == widths_.size());
    }
    out_ << line << '\n';
  }

 private:
  std::string padded(const Table::Cell& cell, std::size_t column, bool isLast) const {
    const std::string text = cut(cell.text, widths_[column], screen_.charset);
    const std::string fill(widths_[column] - displayWidth(text), ' ');
    const std::string shown = screen_.coloured(text, cell.tone);
    if (columns_[column].kind == Table::Kind::kNumber) {
      return fill + shown;
    }
    return isLast ? shown : shown + fill;
  }

  std::ostream& out_;
  const Screen& screen_;
  const std::vector<Table::Column>& columns_;
  const Widths widths_;
};

}  // namespace

void Table::print(std::ostream& out, const Screen& screen) const {
  std::vector<Row> rows(1);
  for (const Column& column : columns_) {
    rows.front().emplace_back(column.header, Tone::kHeader);
  }
  rows.insert(rows.end(), rows_.begin(), rows_.end());
  Widths widths(columns_.size(), 1);
  for (Row& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      row[i].text = row[i].text.empty() ? "-" : printable(row[i].text, screen.charset);
      widths[i] = std::max(widths[i], displayWidth(row[i].text));
    }
  }
  fit(widths, columns_, screen.columns);
  Printer printer(out, screen, columns_, widths);
  for (const Row& row : rows) {
    printer.print(row);
  }
}

}  // namespace agctl
