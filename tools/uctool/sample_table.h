// Two-column sample tables for "uctool fit": text lines of x and y, with header and comment lines set apart.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace uctool {

struct SampleTable {
    std::vector<std::pair<double, double>> samples;  // (x, y) in file order
    int textLines = 0;  // lines that were skipped because they do not start with a number (headers, notes)
    int errorLine = 0;  // 1-based line of the first malformed data line; 0 when the table is whole
    std::wstring error;
};

// Lines hold two numbers separated by blanks, tabs, ',' or ';' (a ',' is never a decimal comma). Blank lines
// and lines starting with '#' are ignored; a line whose first field is not a number is counted as text and
// skipped. A line starting with a number must hold exactly two finite numbers, or the table stops there
// with `errorLine` and `error` set: no data line is ever dropped silently. `yFirst` reads "y x" columns.
SampleTable ParseSampleTable(std::string_view text, bool yFirst);

}  // namespace uctool
