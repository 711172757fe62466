// Two passes: the widths, then the lines.
#include "cli/Table.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "cli/Escape.h"

namespace thermika::cli {

namespace {

constexpr std::size_t kGap = 2;            // columns between two cells
constexpr std::size_t kNarrowestLast = 8;  // a last cell is not broken into narrower pieces

/// How many bytes of `text`, at least one, go into `width` columns; up to the last blank there.
std::size_t breakAt(std::string_view text, std::size_t width) {
    if (columnsOf(text) <= width) return text.size();
    std::size_t end = 0;
    std::size_t blank = 0;
    for (std::size_t at = 1; at <= text.size(); ++at) {
        const bool isInside =
            at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U;
        if (isInside) continue;
        if (end != 0 && columnsOf(text.substr(0, at)) > width) break;
        end = at;
        if (at < text.size() && text[at] == ' ') blank = at;
    }
    return blank != 0 ? blank : end;
}

std::vector<std::string_view> pieces(std::string_view text, std::size_t width) {
    std::vector<std::string_view> all;
    do {
        const std::size_t end = width == 0 ? text.size() : breakAt(text, width);
        all.push_back(text.substr(0, end));
        text.remove_prefix(end);
        text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    } while (!text.empty());
    return all;
}

}  // namespace

Table::Table(std::vector<Column> columns) : m_columns(std::move(columns)) {}

void Table::add(std::vector<Cell> row) { m_rows.push_back(std::move(row)); }

std::string Table::text(const Output& output, std::size_t width) const {
    std::vector<std::vector<Cell>> rows(1);
    for (const Column& column : m_columns) rows[0].push_back({column.heading, Style::kHeading});
    rows.insert(rows.end(), m_rows.begin(), m_rows.end());

    const std::size_t last = m_columns.size() - 1;
    std::vector<std::size_t> widths(last, 0);
    for (const auto& row : rows)
        for (std::size_t i = 0; i < last; ++i)
            widths[i] = std::max(widths[i], columnsOf(row[i].text));
    std::size_t before = 0;
    for (const std::size_t each : widths) before += each + kGap;
    const std::size_t lastWidth =
        width == 0 ? 0 : std::max(width > before ? width - before : 0, kNarrowestLast);

    std::string out;
    for (const auto& row : rows) {
        for (std::size_t i = 0; i < last; ++i) {
            const std::string room(widths[i] - columnsOf(row[i].text), ' ');
            const std::string cell = output.styled(row[i].style, row[i].text);
            out += m_columns[i].isNumber ? room + cell : cell + room;
            out.append(kGap, ' ');
        }
        const auto lines = pieces(row[last].text, lastWidth);
        for (std::size_t i = 0; i < lines.size(); ++i) {
            if (i != 0) out.append(before, ' ');
            out += output.styled(row[last].style, lines[i]);
            while (!out.empty() && out.back() == ' ') out.pop_back();
            out += '\n';
        }
    }
    return out;
}

}  // namespace thermika::cli
