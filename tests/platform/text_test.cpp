// Wide printf formatting with Windows meanings, UTF conversions and strict number parsing.
#include <gtest/gtest.h>

#include <climits>

#include "platform/text.h"

namespace {

TEST(Format, WindowsWideMeaningsOfStringConversions) {
    EXPECT_EQ(uc::Format(L"%s|%S|%ls|%hs", L"wide", "narrow", L"l", "h"), L"wide|narrow|l|h");
    EXPECT_EQ(uc::Format(L"[%5s][%-5s][%.2s]", L"ab", L"ab", L"abcd"), L"[   ab][ab   ][ab]");
    EXPECT_EQ(uc::Format(L"%s", static_cast<const wchar_t*>(nullptr)), L"(null)");
    EXPECT_EQ(uc::Format(L"%c%C", L'x', 'y'), L"xy");
}

TEST(Format, NumbersFlagsLengthsAndOddities) {
    EXPECT_EQ(uc::Format(L"%d %i %u %x %X %o", -5, 7, 4000000000u, 255, 255, 8), L"-5 7 4000000000 ff FF 10");
    EXPECT_EQ(uc::Format(L"%05d|%-4d|%+d|%*d|%.*f", 42, 3, 9, 4, 7, 1, 2.25), L"00042|3   |+9|   7|2.2");
    EXPECT_EQ(uc::Format(L"%I64d %lld %ld %zu", LLONG_MIN, 1LL << 40, -2L, static_cast<std::size_t>(17)),
              L"-9223372036854775808 1099511627776 -2 17");
    EXPECT_EQ(uc::Format(L"%hd %hu", 70000, 70000), L"4464 4464");
    EXPECT_EQ(uc::Format(L"%.2f %e %g", 3.14159, 1500.0, 0.5), L"3.14 1.500000e+03 0.5");
    EXPECT_EQ(uc::Format(L"100%% done"), L"100% done");
    // An unknown conversion is copied, a dangling '%' at the end is kept, and no argument is consumed by either.
    EXPECT_EQ(uc::Format(L"%q %d %", 12), L"%q 12 %");
}

TEST(Utf, RoundTripsAndReplacesInvalidSequences) {
    const std::string s = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
    EXPECT_EQ(uc::ToUtf8(uc::FromUtf8(s)), s);
    EXPECT_EQ(uc::FromUtf16(uc::ToUtf16(uc::FromUtf8(s))), uc::FromUtf8(s));
    EXPECT_EQ(uc::ToUtf16(uc::FromUtf8(s)).size(), 5u) << "the emoji takes a surrogate pair";
    // Truncated, overlong, stray continuation and encoded surrogates all become U+FFFD, one per bad byte.
    EXPECT_EQ(uc::FromUtf8("\xE2\x82"), L"\xFFFD\xFFFD");
    EXPECT_EQ(uc::FromUtf8("\xC0\xAF"), L"\xFFFD\xFFFD");
    EXPECT_EQ(uc::FromUtf8("\x80x"), L"\xFFFDx");
    EXPECT_EQ(uc::FromUtf8("\xED\xA0\x80"), L"\xFFFD\xFFFD\xFFFD");
    // A lone high surrogate in UTF-16 input is replaced, not passed through.
    EXPECT_EQ(uc::ToUtf8(uc::FromUtf16(std::u16string(1, u'\xD800') + u"z")), "\xEF\xBF\xBDz");
}

TEST(Parse, WholeNumbersOnlyWithinRange) {
    int v = 99;
    EXPECT_TRUE(uc::ParseInt(L" -12 ", v));
    EXPECT_EQ(v, -12);
    EXPECT_TRUE(uc::ParseInt(L"+7", v));
    EXPECT_EQ(v, 7);
    EXPECT_TRUE(uc::ParseInt(L"2147483647", v));
    EXPECT_EQ(v, INT_MAX);
    v = 99;
    for (const wchar_t* bad : {L"", L"  ", L"12abc", L"1 2", L"0x10", L"2147483648", L"-", L"+-1", L"\x0661"}) {
        EXPECT_FALSE(uc::ParseInt(bad, v)) << uc::ToUtf8(bad);
        EXPECT_EQ(v, 99);
    }
    double d = 0;
    EXPECT_TRUE(uc::ParseDouble(L"0.5", d));
    EXPECT_DOUBLE_EQ(d, 0.5);
    EXPECT_TRUE(uc::ParseDouble(L"-1e3", d));
    EXPECT_DOUBLE_EQ(d, -1000);
    EXPECT_FALSE(uc::ParseDouble(L"0,5", d));
    EXPECT_EQ(uc::FormatFixed(0.1 + 0.2, 2), L"0.30");
    EXPECT_EQ(uc::FormatFixed(-0.004, 2), L"-0.00");
    EXPECT_EQ(uc::FormatFixed(1e20, 0), L"100000000000000000000");
}

}  // namespace

#include "platform/numeric.h"

namespace {
TEST(Numeric, RoundHalvesAwayFromZeroAndSaturates) {
    EXPECT_EQ(vex_utils::round(2.5), 3);
    EXPECT_EQ(vex_utils::round(-2.5), -3);
    EXPECT_EQ(vex_utils::round(2.4999), 2);
    EXPECT_EQ(vex_utils::round(1e300), INT_MAX);
    EXPECT_EQ(vex_utils::round(-1e300), INT_MIN);
    EXPECT_EQ(vex_utils::round(std::nan("")), 0);
}
}  // namespace
