// Greedy word wrapping to a pixel width.
#include "ui/text_wrap.h"

#include <vector>

namespace uc::ui {

namespace {

// Appends the lines of one paragraph (no line breaks inside) to `lines`.
void WrapParagraph(std::wstring_view paragraph, int width, const MeasureText& measure, std::vector<std::wstring>& lines) {
    std::wstring line;
    bool any = false;
    auto flush = [&] {
        lines.push_back(line);
        line.clear();
        any = true;
    };
    std::size_t pos = 0;
    while (pos < paragraph.size()) {
        if (paragraph[pos] == L' ') {
            ++pos;
            continue;
        }
        std::size_t end = paragraph.find(L' ', pos);
        if (end == std::wstring_view::npos) end = paragraph.size();
        std::wstring_view word = paragraph.substr(pos, end - pos);
        pos = end;

        if (!line.empty()) {
            std::wstring candidate = line + L' ';
            candidate.append(word);
            if (measure(candidate) <= width) {
                line = std::move(candidate);
                continue;
            }
            flush();
        }
        // The word starts a line; a word too wide for any line is cut where it stops fitting (a character at least).
        while (!word.empty() && measure(word) > width) {
            std::size_t fit = 1;
            while (fit < word.size() && measure(word.substr(0, fit + 1)) <= width) ++fit;
            line.assign(word.substr(0, fit));
            flush();
            word.remove_prefix(fit);
        }
        line.assign(word);
    }
    if (!line.empty() || !any) lines.push_back(line);
}

}  // namespace

int WrapText(std::wstring& text, int width, const MeasureText& measure) {
    std::vector<std::wstring> lines;
    std::wstring_view rest(text);
    while (true) {
        std::size_t nl = rest.find(L'\n');
        std::wstring_view paragraph = rest.substr(0, nl);
        if (!paragraph.empty() && paragraph.back() == L'\r') paragraph.remove_suffix(1);
        WrapParagraph(paragraph, width, measure, lines);
        if (nl == std::wstring_view::npos) break;
        rest.remove_prefix(nl + 1);
    }
    std::wstring out;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (i) out += L'\n';
        out += lines[i];
    }
    text = std::move(out);
    return static_cast<int>(lines.size());
}

}  // namespace uc::ui
