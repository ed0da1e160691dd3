#include "table.h"

#include <algorithm>

namespace bmcsim {

static void appendRow(Lines& lines, const Row& row, const std::vector<size_t>& widths) {
    std::string line;
    for (size_t i = 0; i < row.size(); i++) {
        line += "  " + row[i];
        if (i + 1 < row.size())
            line.append(widths[i] - row[i].size(), ' ');
    }
    lines.push_back(line);
}

Lines tableLines(const Row& heading, const std::vector<Row>& rows) {
    Lines lines;
    if (rows.empty())
        return lines;
    std::vector<size_t> widths(heading.size(), 0);
    for (size_t i = 0; i < heading.size(); i++)
        widths[i] = heading[i].size();
    for (const Row& row : rows) {
        widths.resize(std::max(widths.size(), row.size()), 0);
        for (size_t i = 0; i < row.size(); i++)
            widths[i] = std::max(widths[i], row[i].size());
    }
    appendRow(lines, heading, widths);
    for (const Row& row : rows)
        appendRow(lines, row, widths);
    return lines;
}

} // namespace bmcsim
