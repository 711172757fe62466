// Two passes: the widths, then the lines.
#include "cli/Table.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "cli/Escape.h"

namespace thermika::cli {

namespace {

constexpr std::size_t kGap = 2;        // columns between two cells
constexpr std::size_t kNarrowest = 8;  // cells are not broken into narrower pieces

// Longer than any path that can be shown. Every row is as wide as the widest cell, so that the
// texts of a description could take its size times its size.
constexpr std::size_t kMostBytes = 600;

/// How many bytes of `text` go into `width` columns, which any character does; up to the last blank
/// there.
std::size_t breakAt(std::string_view text, std::size_t width) {
    const std::size_t end = bytesWithin(text, width);
    if (end == text.size()) return end;
    const std::size_t blank = text.rfind(' ', end);
    return blank == std::string_view::npos || blank == 0 ? end : blank;
}

std::vector<std::string_view> pieces(std::string_view text, std::size_t width) {
    std::vector<std::string_view> all;
    do {
        const std::size_t end = breakAt(text, width);
        all.push_back(text.substr(0, end));
        text.remove_prefix(end);
        text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    } while (!text.empty());
    return all;
}

/// Takes from the widest column until all go into `room`, or until none is wide.
void narrow(std::vector<std::size_t>& widths, std::size_t room) {
    std::size_t taken = kGap * (widths.size() - 1);
    for (const std::size_t each : widths) taken += each;
    for (; taken > room; --taken) {
        std::size_t& widest = *std::max_element(widths.begin(), widths.end());
        if (widest <= kNarrowest) return;
        --widest;
    }
}

}  // namespace

Table::Table(std::vector<Column> columns) : m_columns(std::move(columns)) {}

void Table::add(std::vector<Cell> row) {
    for (Cell& cell : row) cell.text = shortened(cell.text, kMostBytes);
    m_rows.push_back(std::move(row));
}

std::string Table::text(const Output& output, std::size_t width) const {
    std::vector<std::vector<Cell>> rows(1);
    for (const Column& column : m_columns) rows[0].push_back({column.heading, Style::kHeading});
    rows.insert(rows.end(), m_rows.begin(), m_rows.end());

    std::vector<std::size_t> widths(m_columns.size(), 0);
    for (const auto& row : rows)
        for (std::size_t i = 0; i < widths.size(); ++i)
            widths[i] = std::max(widths[i], columnsOf(row[i].text));
    if (width != 0) narrow(widths, width);

    std::string out;
    for (const auto& row : rows) {
        std::vector<std::vector<std::string_view>> cells;
        std::size_t height = 0;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            cells.push_back(pieces(row[i].text, widths[i]));
            height = std::max(height, cells[i].size());
        }
        for (std::size_t line = 0; line < height; ++line) {
            for (std::size_t i = 0; i < widths.size(); ++i) {
                const std::string_view text = line < cells[i].size() ? cells[i][line] : "";
                const std::string room(widths[i] - columnsOf(text), ' ');
                const std::string cell = output.styled(row[i].style, text);
                if (i != 0) out.append(kGap, ' ');
                out += m_columns[i].isNumber ? room + cell : cell + room;
            }
            while (out.back() == ' ') out.pop_back();
            out += '\n';
        }
    }
    return out;
}

}  // namespace thermika::cli
