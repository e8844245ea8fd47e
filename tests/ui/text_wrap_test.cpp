// Word wrapping to a pixel width with a fixed-width measure (10 pixels a character).
#include <gtest/gtest.h>

#include "ui/text_wrap.h"

using uc::ui::WrapText;

namespace {
int Fixed(std::wstring_view s) { return static_cast<int>(s.size()) * 10; }

struct Wrapped {
    std::wstring text;
    int lines;
};
Wrapped Wrap(std::wstring text, int width) {
    const int n = WrapText(text, width, Fixed);
    return {text, n};
}
}  // namespace

TEST(TextWrap, BreaksAtSpacesWithinTheWidth) {
    struct Case {
        const wchar_t* in;
        int width;
        const wchar_t* out;
        int lines;
    } cases[] = {
        {L"hello world", 110, L"hello world", 1},       // exactly fits
        {L"hello world", 109, L"hello\nworld", 2},      // one pixel short
        {L"a b c d", 30, L"a b\nc d", 2},
        {L"copying   files now", 120, L"copying\nfiles now", 2},  // spaces at the break are dropped
        {L"", 100, L"", 1},
        {L"   ", 100, L"", 1},
        {L"one\r\ntwo", 1000, L"one\ntwo", 2},          // existing breaks are kept
        {L"one\n\ntwo", 1000, L"one\n\ntwo", 3},        // including empty lines
        {L"end\n", 1000, L"end\n", 2},
        {L"abcdefghij", 40, L"abcd\nefgh\nij", 3},      // a word wider than a line is cut
        {L"ab abcdefghij cd", 50, L"ab\nabcde\nfghij\ncd", 4},
        {L"abc", 5, L"a\nb\nc", 3},                     // narrower than one character: one a line, never stuck
    };
    for (const Case& c : cases) {
        const Wrapped w = Wrap(c.in, c.width);
        EXPECT_EQ(w.text, c.out) << c.in;
        EXPECT_EQ(w.lines, c.lines) << c.in;
    }
}

TEST(TextWrap, NoLineIsWiderThanTheWidth) {
    std::wstring text =
        L"Please wait while the selected studies are copied to the removable drive; this may take several minutes";
    const int lines = WrapText(text, 150, Fixed);
    int count = 1;
    std::size_t start = 0;
    while (true) {
        const std::size_t nl = text.find(L'\n', start);
        EXPECT_LE(Fixed(std::wstring_view(text).substr(start, nl - start)), 150);
        if (nl == std::wstring::npos) break;
        start = nl + 1;
        ++count;
    }
    EXPECT_EQ(lines, count);
    EXPECT_GT(lines, 5);
}
