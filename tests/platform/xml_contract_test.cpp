// Behaviour every XML back-end must share: navigation, attributes, failures, encodings and save round trips.
#include <gtest/gtest.h>

#include "platform/text.h"
#include "platform/xml.h"
#include "support/temp_dir.h"

namespace {

const char* kSample =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<Styles>\n"
    "  <!-- comment between elements -->\n"
    "  <style id=\"1\" name=\"first\" w=\"12\" d=\"0.25\" bad=\"12abc\" big=\"99999999999\"/>\n"
    "  text that is not an element\n"
    "  <style id=\"2\" name=\"second\"><inner name=\"first\"/></style>\n"
    "  <style id=\"3\" name=\"first\"/>\n"
    "</Styles>\n";

TEST(XmlContract, NavigatesElementsOnlyAndEndsInvalid) {
    zelXMLFile file;
    ASSERT_TRUE(file.loadXML(L"<r><a/>t<!--c--><?pi x?><b/><c/></r>")) << file.getLastError();
    zelXMLNode n = file.getRootElement().getFirstChild();
    std::wstring names;
    for (; n.isValid(); ++n) names += n.getName();
    EXPECT_EQ(names, L"abc");
    // Every operation on the invalid node past the end is harmless.
    EXPECT_FALSE(n.getFirstChild().isValid());
    EXPECT_EQ(n.getAttribute(L"x", L"def"), L"def");
    EXPECT_EQ(n.getAttributeInt(L"x", 7), 7);
    EXPECT_FALSE(n.createElement(L"y").isValid());
    n.setAttribute(L"x", L"1");
    EXPECT_FALSE(file.getRootElement().getChildByName(L"missing").isValid());
    EXPECT_EQ(file.getRootElement().getChildByName(L"b").getName(), L"b");
}

TEST(XmlContract, HasNameComparesWholeNames) {
    zelXMLFile file;
    ASSERT_TRUE(file.loadXML(L"<style><styles/><sty/><Style/><gr\u00F6\u00DFe/></style>")) << file.getLastError();
    const zelXMLNode root = file.getRootElement();
    EXPECT_TRUE(root.hasName(L"style"));
    EXPECT_FALSE(root.hasName(L"styl"));
    EXPECT_FALSE(root.hasName(L"styles"));
    EXPECT_FALSE(root.hasName(L""));
    EXPECT_FALSE(root.hasName(nullptr));
    zelXMLNode n = root.getFirstChild();
    EXPECT_TRUE(n.hasName(L"styles"));
    EXPECT_FALSE(n.hasName(L"style"));  // a prefix of the element's name is not its name
    EXPECT_TRUE((++n).hasName(L"sty"));
    EXPECT_FALSE((++n).hasName(L"style"));  // names are case-sensitive
    EXPECT_TRUE((++n).hasName(L"gr\u00F6\u00DFe"));
    EXPECT_FALSE(n.hasName(L"gr\u00F6\u00DFf"));
    EXPECT_FALSE((++n).hasName(L"style"));  // past the end
}

TEST(XmlContract, AttributesWithDefaultsAndStrictNumbers) {
    zelXMLFile file;
    ASSERT_TRUE(file.loadXML(std::wstring(kSample, kSample + std::char_traits<char>::length(kSample))));
    zelXMLNode s = file.getRootElement().getFirstChild();
    EXPECT_EQ(s.getAttribute(L"name"), L"first");
    EXPECT_EQ(s.getAttribute(L"none", L"dflt"), L"dflt");
    EXPECT_EQ(s.getAttributeInt(L"w", 0), 12);
    EXPECT_EQ(s.getAttributeInt(L"bad", -5), -5) << "trailing garbage is not a number";
    EXPECT_EQ(s.getAttributeInt(L"big", -5), -5) << "out of the 32-bit range";
    EXPECT_DOUBLE_EQ(s.getAttributeDouble(L"d", 1.0), 0.25);
    EXPECT_DOUBLE_EQ(s.getAttributeDouble(L"name", 1.5), 1.5);

    int inout = 42;
    s.getAttributeInt(L"absent", inout);
    EXPECT_EQ(inout, 42);
    s.getAttributeInt(L"bad", inout);
    EXPECT_EQ(inout, 42);
    s.getAttributeInt(L"w", inout);
    EXPECT_EQ(inout, 12);

    // One pass over the attributes, in document order, reads what the getters read.
    std::wstring names;
    int w = 0, bad = -5, big = -5;
    double d = 0;
    s.forEachAttribute([&](const zelXMLAttribute& a) {
        names += a.name() + L",";
        switch (a.oneOf({L"w", L"bad", L"big", L"d", L"name"})) {
        case 0: EXPECT_TRUE(a.toInt(w)); break;
        case 1: EXPECT_FALSE(a.toInt(bad)); break;
        case 2: EXPECT_FALSE(a.toInt(big)); break;
        case 3: EXPECT_TRUE(a.toDouble(d)); break;
        case 4: EXPECT_EQ(a.value(), L"first"); break;
        }
        EXPECT_FALSE(a.is(L"") || a.is(L"nam") || a.is(nullptr));
    });
    EXPECT_EQ(names, L"id,name,w,d,bad,big,");
    EXPECT_EQ(w, 12);
    EXPECT_EQ(bad, -5);
    EXPECT_EQ(big, -5);
    EXPECT_DOUBLE_EQ(d, 0.25);
    int visits = 0;
    zelXMLNode().forEachAttribute([&](const zelXMLAttribute&) { ++visits; });
    EXPECT_EQ(visits, 0);
}

TEST(XmlContract, FindElementByAttributeIsFirstInDocumentOrder) {
    zelXMLFile file;
    ASSERT_TRUE(file.loadXML(std::wstring(kSample, kSample + std::char_traits<char>::length(kSample))));
    zelXMLNode first = file.findElementByAttribute(L"style", L"name", L"first");
    EXPECT_EQ(first.getAttributeInt(L"id", 0), 1);
    // Another element name with the same attribute value is not a match.
    EXPECT_EQ(file.findElementByAttribute(L"inner", L"name", L"first").getName(), L"inner");
    EXPECT_EQ(file.findElementByAttribute(L"style", L"name", L"second").getAttributeInt(L"id", 0), 2);
    EXPECT_FALSE(file.findElementByAttribute(L"style", L"name", L"nobody").isValid());
}

TEST(XmlContract, BadFilesFailClearly) {
    uc::test::TempDir dir;
    zelXMLFile file;
    EXPECT_FALSE(file.open(dir.file(L"missing.xml")));
    EXPECT_FALSE(file.getLastError().empty());
    EXPECT_FALSE(file.open(dir.write(L"empty.xml", "")));
    EXPECT_FALSE(file.open(dir.write(L"trunc.xml", "<Styles><style id=\"1\">")));
    EXPECT_FALSE(file.open(dir.write(L"text.xml", "this is not xml at all")));
    EXPECT_FALSE(file.open(dir.write(L"binary.xml", std::string("\x00\x01\x02<a/>", 7))));
    EXPECT_FALSE(file.isOpen());
    EXPECT_FALSE(file.getRootElement().isValid());
    EXPECT_FALSE(file.findElementByAttribute(L"a", L"b", L"c").isValid());
    EXPECT_FALSE(file.save(dir.file(L"out.xml")));
    // A failed open drops the previous document rather than leaving stale nodes behind.
    ASSERT_TRUE(file.loadXML(L"<ok/>"));
    EXPECT_FALSE(file.open(dir.file(L"missing.xml")));
    EXPECT_FALSE(file.getRootElement().isValid());
}

// Documents MSXML refuses are refused by every back-end, with the same line and column.
struct Malformed {
    const char* xml;
    int line, column;
    const wchar_t* reason;  // a fragment of the error text
};

const Malformed kMalformed[] = {
    {"<Styles><style id=\"1\"/></Styles>\n<Styles><style id=\"2\"/></Styles>", 2, 1, L"second root"},
    {"<Styles/>\ntrailing words", 2, 1, L"text after the root"},
    {"words <Styles/>", 1, 1, L"text before the root"},
    {"<r>\n  <s id=\"1\" name=\"a\" id=\"2\"/>\n</r>", 2, 22, L"duplicate attribute 'id'"},
    {"<r>fish & chips</r>", 1, 9, L"bare '&'"},
    {"<r a=\"x & y\"/>", 1, 9, L"bare '&'"},
    {"<r>&nbsp;</r>", 1, 4, L"undefined entity '&nbsp;'"},
    {"<r a=\"1 < 2\"/>", 1, 9, L"'<'"},
    {"<r a=\"1\"b=\"2\"/>", 1, 9, L"white space"},
    {"<r><!-- a -- b --></r>", 1, 11, L"'--'"},
    {"<r>]]></r>", 1, 4, L"']]>'"},
    {"<r>\x01</r>", 1, 4, L"U+0001"},
    {"<r>&#0;</r>", 1, 4, L"&#0;"},
    {"<r>\n<a>\n</b></r>", 3, 1, L"</b> does not match start tag <a> of line 2"},
    {"<r><a></r>", 1, 7, L"</r> does not match"},
    {"<r>", 1, 1, L"<r> is not closed"},
    {" <?xml version=\"1.0\"?><r/>", 1, 2, L"XML declaration"},
    {"<p:r/>", 1, 2, L"undeclared namespace prefix 'p'"},
    {"<!DOCTYPE r [<!ENTITY e \"x\">]><r>&e;</r>", 1, 14, L"entity declarations"},
    {"<r a=1/>", 1, 6, L"quoted"},
    {"", 1, 1, L"no root element"},
    {"<!-- only a comment -->", 1, 24, L"no root element"},
};

TEST(XmlContract, RefusesWhatIsNotWellFormedWithLineAndColumn) {
    uc::test::TempDir dir;
    for (const Malformed& m : kMalformed) {
        SCOPED_TRACE(m.xml);
        const std::string bytes = m.xml;
        zelXMLFile file;
        EXPECT_FALSE(file.loadXML(uc::FromUtf8(bytes)));
        EXPECT_FALSE(file.isOpen());
        EXPECT_NE(file.getLastError().find(m.reason), std::wstring::npos) << file.getLastError();
        EXPECT_EQ(file.getErrorLine(), m.line);
        EXPECT_EQ(file.getErrorColumn(), m.column);
        // The same from a file, where the bytes are read as they are.
        EXPECT_FALSE(file.open(dir.write(L"bad.xml", bytes)));
        EXPECT_EQ(file.getErrorLine(), m.line) << file.getLastError();
        EXPECT_EQ(file.getErrorColumn(), m.column);
    }
}

TEST(XmlContract, AcceptsWellFormedCornerCases) {
    const char* const good[] = {
        "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n<r/>\n<!-- after -->\n<?pi data?>\n",
        "<!DOCTYPE r SYSTEM \"styles.dtd\"><r/>",
        "<!DOCTYPE r [<!ELEMENT r ANY><!-- c -->]><r/>",
        "<r a='&lt;&gt;&amp;&apos;&quot;&#65;&#x42;' b=\"'\"><![CDATA[& < ]]]]><![CDATA[>]]>&#x10000;</r>",
        "<r xmlns:p=\"urn:x\" xml:lang=\"de\"><p:a p:b=\"1\"/></r>",
        "\xEF\xBB\xBF<r>\xC3\xA9</r>",
    };
    for (const char* xml : good) {
        zelXMLFile file;
        EXPECT_TRUE(file.loadXML(uc::FromUtf8(xml))) << xml << ": " << file.getLastError();
        EXPECT_EQ(file.getErrorLine(), 0);
    }
}

TEST(XmlContract, InvalidUtf8InAFileIsRefusedWhereItStands) {
    uc::test::TempDir dir;
    zelXMLFile file;
    EXPECT_FALSE(file.open(dir.write(L"latin.xml", "<r>\n  caf\xE9</r>")));
    EXPECT_EQ(file.getErrorLine(), 2);
    EXPECT_EQ(file.getErrorColumn(), 6);
}

TEST(XmlContract, ReadsUtf8AndUtf16Files) {
    uc::test::TempDir dir;
    // "Größe" with a character outside the BMP in an attribute.
    const std::string utf8 = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><r t=\"Gr\xC3\xB6\xC3\x9F" "e \xF0\x9F\x98\x80\"/>";
    zelXMLFile a;
    ASSERT_TRUE(a.open(dir.write(L"u8.xml", utf8))) << a.getLastError();
    const std::wstring expected = std::wstring(L"Gr\u00F6\u00DFe ") + (sizeof(wchar_t) == 2 ? std::wstring(L"\xD83D\xDE00") : std::wstring(1, static_cast<wchar_t>(0x1F600)));
    EXPECT_EQ(a.getRootElement().getAttribute(L"t"), expected);

    std::string utf16 = "\xFF\xFE";
    const std::u16string body = u"<?xml version=\"1.0\" encoding=\"UTF-16\"?><r t=\"\u00E9t\u00E9\"><c/></r>";
    for (char16_t c : body) {
        utf16 += static_cast<char>(c & 0xFF);
        utf16 += static_cast<char>(c >> 8);
    }
    zelXMLFile b;
    ASSERT_TRUE(b.open(dir.write(L"u16.xml", utf16))) << b.getLastError();
    EXPECT_EQ(b.getRootElement().getAttribute(L"t"), L"\u00E9t\u00E9");
    // Saved back and re-read, the text survives whatever encoding the back-end writes.
    ASSERT_TRUE(b.save(dir.file(L"u16-out.xml")));
    zelXMLFile c;
    ASSERT_TRUE(c.open(dir.file(L"u16-out.xml"))) << c.getLastError();
    EXPECT_EQ(c.getRootElement().getAttribute(L"t"), L"\u00E9t\u00E9");
    EXPECT_TRUE(c.getRootElement().getChildByName(L"c").isValid());
}

TEST(XmlContract, NewDocumentBuildsAndSavesRoundTrip) {
    uc::test::TempDir dir;
    zelXMLFile file;
    EXPECT_FALSE(file.newDocument(L"bad name"));
    ASSERT_TRUE(file.newDocument(L"Styles"));
    zelXMLNode root = file.getRootElement();
    EXPECT_EQ(root.getName(), L"Styles");
    zelXMLNode s = root.createElement(L"style");
    EXPECT_FALSE(root.createElement(L"1bad").isValid());
    s.setAttributeInt(L"id", -3);
    s.setAttribute(L"name", L"a <b> & \"c\"");
    s.setAttributeDouble(L"pos", 0.125, 2);
    s.setAttributeDouble(L"neg", -1.005, 1);
    s.setAttribute(L"name2", std::wstring(L"x"));
    s.setAttributeInt(L"id", 4);  // overwrite, not duplicate
    zelXMLNode t = s.createElement(L"text");
    t.setText(L"  57 ");
    ASSERT_TRUE(file.save(dir.file(L"out.xml")));

    zelXMLFile back;
    ASSERT_TRUE(back.open(dir.file(L"out.xml"))) << back.getLastError();
    zelXMLNode b = back.getRootElement().getFirstChild();
    EXPECT_EQ(b.getAttributeInt(L"id", 0), 4);
    EXPECT_EQ(b.getAttribute(L"name"), L"a <b> & \"c\"");
    EXPECT_EQ(b.getAttribute(L"pos"), L"0.12");  // round half to even on the binary value 0.125
    EXPECT_EQ(b.getAttribute(L"neg"), L"-1.0");
    EXPECT_EQ(b.getChildByName(L"text").getInt(-1), 57);
    EXPECT_EQ(b.getInt(-1), -1);
    const std::wstring xml = back.getXML();
    EXPECT_NE(xml.find(L"<style"), std::wstring::npos);
    EXPECT_EQ(xml.find(L"id=\"4\"", xml.find(L"id=\"4\"") + 1), std::wstring::npos) << "attribute written twice";
}

TEST(XmlContract, NodesKeepTheirDocumentAlive) {
    zelXMLNode n;
    {
        zelXMLFile file;
        ASSERT_TRUE(file.loadXML(L"<r><a v=\"1\"/></r>"));
        n = file.getRootElement().getFirstChild();
    }
    EXPECT_TRUE(n.isValid());
    EXPECT_EQ(n.getAttributeInt(L"v", 0), 1);
    zelXMLNode copy = n;
    ++n;
    EXPECT_FALSE(n.isValid());
    EXPECT_TRUE(copy.isValid()) << "advancing one node must not move its copies";
}

}  // namespace
