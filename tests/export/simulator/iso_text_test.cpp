// Names and settings of the simulated writer: UTF-8/UCS-2, Joliet's limits, ISO 9660 identifiers, configuration lines.
#include <gtest/gtest.h>

#include <set>

#include "export/simulator/disc_config.h"
#include "export/simulator/iso_format.h"
#include "export/simulator/iso_names.h"

namespace uc::disc {
namespace {

TEST(IsoNamesTest, Utf8RoundTripsAndTakesOtherBytesAsLatin1) {
    const std::string text = "B\xC3\xBCro \xE2\x82\xAC \xF0\x9F\x98\x80";  // "Büro € 😀"
    const std::u16string wide = Utf8ToUtf16(text);
    EXPECT_EQ(wide, u"B\u00FCro \u20AC \U0001F600");
    EXPECT_EQ(wide.size(), 9u);  // the emoji is a surrogate pair
    EXPECT_EQ(Utf16ToUtf8(wide), text);
    EXPECT_EQ(Utf8ToUtf16("caf\xE9"), u"caf\u00E9");            // an ANSI caller's Latin-1
    EXPECT_EQ(Utf8ToUtf16("\xC0\xAF"), u"\u00C0\u00AF");        // overlong form is not UTF-8
    EXPECT_EQ(Utf16ToUtf8(u"\xD800x"), "\xEF\xBF\xBDx");          // lone surrogate
}

TEST(IsoNamesTest, JolietLimits) {
    EXPECT_EQ(JolietNameProblem(std::u16string(64, u'a')), "");
    EXPECT_NE(JolietNameProblem(std::u16string(65, u'a')), "");
    std::u16string pairs;
    for (int i = 0; i < 32; ++i) pairs += u"\U0001F600";  // 64 units: fits; one more pair does not
    EXPECT_EQ(JolietNameProblem(pairs), "");
    EXPECT_NE(JolietNameProblem(pairs + u"\U0001F600"), "");
    for (const char16_t* bad : {u"", u".", u"..", u"a:b", u"a;1", u"a*", u"a?", u"a\\b", u"a/b", u"tab\t"})
        EXPECT_NE(JolietNameProblem(bad), "") << Utf16ToUtf8(bad);
    EXPECT_EQ(JolietNameProblem(u"Patient M\u00FCller (2).jpg"), "");
    EXPECT_TRUE(SameName(u"Study.XML", u"study.xml"));
    EXPECT_FALSE(SameName(u"\u00FC", u"\u00DC"));  // only ASCII folds
}

TEST(IsoNamesTest, IdentifiersAreDCharactersAndUniquePerFolder) {
    std::set<std::string> taken;
    EXPECT_EQ(IsoIdentifier(u"report final.pdf", false, false, taken), "REPORT_F.PDF");
    EXPECT_EQ(IsoIdentifier(u"report final.pdf", false, false, taken), "REPORT~1.PDF");
    EXPECT_EQ(IsoIdentifier(u"Report_Final.PDF", false, false, taken), "REPORT~2.PDF");
    EXPECT_EQ(IsoIdentifier(u".hidden", false, false, taken), "_HIDDEN");
    EXPECT_EQ(IsoIdentifier(u"a.b.tiff", false, false, taken), "A_B.TIF");
    std::set<std::string> level2;
    const std::string longName = IsoIdentifier(u"a very long folder name with many words", true, true, level2);
    EXPECT_EQ(longName.size(), 31u);
    const std::string longFile = IsoIdentifier(u"a very long file name with many words.jpeg", false, true, level2);
    EXPECT_LE(longFile.size(), 30u);
    EXPECT_EQ(longFile.substr(longFile.size() - 5), ".JPEG");
}

TEST(IsoFormatTest, DatesSurviveTheRecordFormat) {
    std::uint8_t record[7];
    const std::int64_t when = FromCivil(2024, 2, 29, 23, 59, 58);
    PutRecordDate(record, when);
    EXPECT_EQ(record[0], 124);
    EXPECT_EQ(GetRecordDate(record), when);
    record[6] = 4;  // one hour east of UTC
    EXPECT_EQ(GetRecordDate(record), when - 3600);
    PutRecordDate(record, -1);  // 1969: years count from 1900
    EXPECT_EQ(record[0], 69);
    PutRecordDate(record, FromCivil(1850, 6, 1, 0, 0, 0));  // before 1900 clamps
    EXPECT_EQ(record[0], 0);
    EXPECT_EQ(record[1], 1);
    record[1] = 13;
    EXPECT_EQ(GetRecordDate(record), 0);
}

TEST(DiscConfigTest, SettingsAndProblemsByLine) {
    DiscConfig c;
    std::vector<ConfigProblem> problems;
    ParseDiscConfig("image = /tmp/d.iso  # the disc\nmedium=cd-rw\n\nstate = closed; tao = no\n"
                    "fault.write-error = 40%\nfault.free-blocks=12\nbogus = 1\nmedium = floppy\nnonsense\ndevices = 9\n",
                    c, problems);
    EXPECT_EQ(c.image, "/tmp/d.iso");
    EXPECT_EQ(c.medium, Medium::CdRw);
    EXPECT_EQ(c.state, InitialState::Closed);
    EXPECT_FALSE(c.trackAtOnce);
    EXPECT_EQ(c.writeErrorPercent, 40);
    EXPECT_EQ(c.freeBlocks, 12);
    EXPECT_EQ(c.devices, 1);  // refused value not applied
    ASSERT_EQ(problems.size(), 4u);
    EXPECT_EQ(problems[0].line, 7);
    EXPECT_EQ(problems[1].line, 8);
    EXPECT_EQ(problems[2].line, 9);
    EXPECT_EQ(problems[3].line, 10);
    problems.clear();
    ParseDiscConfig("fault.write-error=101%;fault.not-ready=-1;capacity=0", c, problems);
    EXPECT_EQ(problems.size(), 3u);
    EXPECT_EQ(c.writeErrorPercent, 40);
}

}  // namespace
}  // namespace uc::disc
