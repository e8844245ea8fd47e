// Two-column sample tables: splitting lines and fields, locale-independent numbers, errors by line.
#include "sample_table.h"

#include <charconv>
#include <cmath>

#include "platform/text.h"

namespace uctool {
namespace {

bool IsSeparator(char c) { return c == ' ' || c == '\t' || c == ',' || c == ';' || c == '\r'; }

std::vector<std::string_view> Fields(std::string_view line) {
    std::vector<std::string_view> fields;
    std::size_t i = 0;
    while (i < line.size()) {
        while (i < line.size() && IsSeparator(line[i])) ++i;
        const std::size_t start = i;
        while (i < line.size() && !IsSeparator(line[i])) ++i;
        if (i > start) fields.push_back(line.substr(start, i - start));
    }
    return fields;
}

// A whole field as a number ("+" allowed in front); NaN and infinity parse but are reported as not finite.
bool ParseNumber(std::string_view field, double& value) {
    if (field.size() > 1 && field[0] == '+' && field[1] != '-') field.remove_prefix(1);
    const auto [ptr, ec] = std::from_chars(field.data(), field.data() + field.size(), value);
    return ec == std::errc() && ptr == field.data() + field.size();
}

}  // namespace

SampleTable ParseSampleTable(std::string_view text, bool yFirst) {
    SampleTable table;
    int lineNumber = 0;
    std::size_t pos = 0;
    while (pos <= text.size()) {
        std::size_t end = text.find('\n', pos);
        if (end == std::string_view::npos) end = text.size();
        const std::string_view line = text.substr(pos, end - pos);
        pos = end + 1;
        ++lineNumber;

        const std::vector<std::string_view> fields = Fields(line);
        if (fields.empty() || fields[0][0] == '#') continue;
        double first = 0.0;
        if (!ParseNumber(fields[0], first)) {
            ++table.textLines;
            continue;
        }
        double second = 0.0;
        std::wstring problem;
        if (fields.size() != 2)
            problem = uc::Format(L"expected two numbers, found %d fields", static_cast<int>(fields.size()));
        else if (!ParseNumber(fields[1], second))
            problem = L"\"" + uc::FromUtf8(std::string(fields[1])) + L"\" is not a number";
        else if (!std::isfinite(first) || !std::isfinite(second))
            problem = L"not a finite number";
        if (!problem.empty()) {
            table.errorLine = lineNumber;
            table.error = uc::Format(L"line %d: %s", lineNumber, problem.c_str());
            return table;
        }
        table.samples.emplace_back(yFirst ? second : first, yFirst ? first : second);
    }
    return table;
}

}  // namespace uctool
