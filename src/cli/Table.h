// Lays texts out in aligned columns.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/Output.h"

namespace thermika::cli {

struct Cell {
    std::string text;  ///< outside bytes are escaped already
    Style style = Style::kPlain;
};

class Table {
public:
    /// One word a column. A column of numbers stands right in its width.
    struct Column {
        std::string heading;
        bool isNumber = false;
    };

    explicit Table(std::vector<Column> columns);

    /// As many cells as there are columns. The end of a very long text is left out.
    void add(std::vector<Cell> row);

    /// Heading and rows. Where `width` columns (0: any number) do not hold a row, its widest cells
    /// go on below themselves.
    std::string text(const Output& output, std::size_t width) const;

private:
    std::vector<Column> m_columns;
    std::vector<std::vector<Cell>> m_rows;
};

}  // namespace thermika::cli
