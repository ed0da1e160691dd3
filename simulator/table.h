// Text tables for people: columns as wide as their widest cell, two blanks between them.
#pragma once

#include <string>
#include <vector>

namespace bmcsim {

using Row = std::vector<std::string>;
using Lines = std::vector<std::string>;

// The heading row first, then the rows, each indented by two blanks. Nothing when there is no row.
Lines tableLines(const Row& heading, const std::vector<Row>& rows);

} // namespace bmcsim
