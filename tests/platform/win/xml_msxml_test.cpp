// MSXML back-end: the exact written form, encodings of saved files, whitespace handling, and COM per thread.
#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "platform/text.h"
#include "platform/xml.h"
#include "support/temp_dir.h"

namespace {

std::string Utf16Le(const std::u16string& s) {
    std::string out = "\xFF\xFE";
    for (char16_t c : s) {
        out += static_cast<char>(c & 0xFF);
        out += static_cast<char>(c >> 8);
    }
    return out;
}

TEST(MsxmlWriter, IndentsTwoSpacesAndDropsCommentsAndInstructions) {
    zelXMLFile file;
    ASSERT_TRUE(file.loadXML(L"<r a='1'><!--c--><b>t</b><?pi x?><c/><d>x<e/>y</d></r>")) << file.getLastError();
    EXPECT_EQ(file.getXML(),
              L"<?xml version=\"1.0\"?>\n"
              L"<r a=\"1\">\n"
              L"  <b>t</b>\n"
              L"  <c />\n"
              L"  <d>x<e />y</d>\n"
              L"</r>\n");
}

TEST(MsxmlWriter, KeepsTheDocumentsDeclarationAndEscapesMarkup) {
    zelXMLFile file;
    ASSERT_TRUE(file.loadXML(L"<?xml version='1.0' standalone='yes'?><r/>"));
    zelXMLNode r = file.getRootElement();
    r.setAttribute(L"q", L"<a & \"b\" 'c' >");
    r.setText(L"<&>\"");
    r.createElement(L"cd");
    EXPECT_EQ(file.getXML(),
              L"<?xml version=\"1.0\" standalone=\"yes\"?>\n"
              L"<r q=\"&lt;a &amp; &quot;b&quot; 'c' >\">&lt;&amp;&gt;\"<cd />\n"
              L"</r>\n");
}

TEST(MsxmlWriter, NewDocumentSavesAsUtf8WithDeclaration) {
    uc::test::TempDir dir;
    zelXMLFile file;
    ASSERT_TRUE(file.newDocument(L"Styles"));
    file.getRootElement().createElement(L"s").setAttribute(L"n", L"\u00E9");
    ASSERT_TRUE(file.save(dir.file(L"new.xml")));
    EXPECT_EQ(dir.read(L"new.xml"), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Styles>\n  <s n=\"\xC3\xA9\" />\n</Styles>\n");

    ASSERT_TRUE(file.newDocument(L"Bare", false));
    ASSERT_TRUE(file.save(dir.file(L"bare.xml")));
    EXPECT_EQ(dir.read(L"bare.xml"), "<?xml version=\"1.0\"?>\n<Bare />\n");
}

TEST(MsxmlWriter, DocumentDeclaringUtf16IsSavedAsUtf16) {
    uc::test::TempDir dir;
    const std::u16string body = u"<?xml version=\"1.0\" encoding=\"UTF-16\"?><r t=\"\u00E9\"/>";
    zelXMLFile file;
    ASSERT_TRUE(file.open(dir.write(L"in.xml", Utf16Le(body)))) << file.getLastError();
    ASSERT_TRUE(file.save(dir.file(L"out.xml")));
    EXPECT_EQ(dir.read(L"out.xml"), Utf16Le(u"<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n<r t=\"\u00E9\" />\n"));
}

TEST(MsxmlReader, DetectsBigEndianAndBomlessUtf16) {
    uc::test::TempDir dir;
    std::string be = "\xFE\xFF";
    std::string bomless;
    for (char16_t c : std::u16string(u"<r t=\"\u00E9\"/>")) {
        be += static_cast<char>(c >> 8);
        be += static_cast<char>(c & 0xFF);
        bomless += static_cast<char>(c & 0xFF);
        bomless += static_cast<char>(c >> 8);
    }
    zelXMLFile a, b;
    ASSERT_TRUE(a.open(dir.write(L"be.xml", be))) << a.getLastError();
    EXPECT_EQ(a.getRootElement().getAttribute(L"t"), L"\u00E9");
    ASSERT_TRUE(b.open(dir.write(L"le.xml", bomless))) << b.getLastError();
    EXPECT_EQ(b.getRootElement().getAttribute(L"t"), L"\u00E9");
}

TEST(MsxmlReader, Latin1DeclarationIsHonoured) {
    uc::test::TempDir dir;
    zelXMLFile file;
    ASSERT_TRUE(file.open(dir.write(L"l1.xml", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><r t=\"\xE9\"/>")));
    EXPECT_EQ(file.getRootElement().getAttribute(L"t"), L"\u00E9");
}

TEST(MsxmlReader, WhitespaceOnlyTextIsKeptOnlyWhenAsked) {
    uc::test::TempDir dir;
    const std::wstring path = dir.write(L"ws.xml", "<r>\n  <a>  </a>\n  <b> x </b>\n</r>");
    zelXMLFile file;
    ASSERT_TRUE(file.open(path));
    EXPECT_EQ(file.getRootElement().getChildByName(L"a").getText(), L"");
    EXPECT_EQ(file.getRootElement().getChildByName(L"b").getText(), L" x ") << "text with content is not trimmed";
    ASSERT_TRUE(file.open(path, true));
    EXPECT_EQ(file.getRootElement().getChildByName(L"a").getText(), L"  ");
}

TEST(MsxmlReader, TextIsTheFirstTextChildOnly) {
    zelXMLFile file;
    ASSERT_TRUE(file.loadXML(L"<r>12<x>34</x>56</r>"));
    EXPECT_EQ(file.getRootElement().getText(), L"12") << "not MSXML's concatenated descendant text";
    EXPECT_EQ(file.getRootElement().getInt(0), 12);
    file.getRootElement().setText(L"7");
    EXPECT_EQ(file.getXML(), L"<?xml version=\"1.0\"?>\n<r>7<x>34</x>56</r>\n");
}

TEST(MsxmlReader, ErrorsNameTheProblem) {
    zelXMLFile file;
    EXPECT_FALSE(file.loadXML(L"<r><unclosed></r>"));
    EXPECT_NE(file.getLastError().find(L"XML error"), std::wstring::npos) << file.getLastError();
    EXPECT_TRUE(file.loadXML(L"<ok/>"));
    EXPECT_TRUE(file.getLastError().empty());
}

TEST(MsxmlThreads, DocumentsWorkOnThreadsWithoutCom) {
    // Worker threads have not initialised COM; each document does so for its own lifetime.
    std::wstring seen[2];
    std::thread workers[2];
    for (int i = 0; i < 2; ++i) {
        workers[i] = std::thread([i, &seen] {
            zelXMLFile file;
            if (file.loadXML(L"<r v=\"" + std::to_wstring(i) + L"\"/>")) seen[i] = file.getRootElement().getAttribute(L"v");
            else seen[i] = file.getLastError();
        });
    }
    for (auto& w : workers) w.join();
    EXPECT_EQ(seen[0], L"0");
    EXPECT_EQ(seen[1], L"1");
}

TEST(MsxmlThreads, NodesOutliveTheThreadThatLoadedThem) {
    zelXMLNode node;
    std::thread([&node] {
        zelXMLFile file;
        if (file.loadXML(L"<r><a v=\"5\"/></r>")) node = file.getRootElement().getFirstChild();
    }).join();
    ASSERT_TRUE(node.isValid());
    EXPECT_EQ(node.getAttributeInt(L"v", 0), 5);
    node = zelXMLNode();  // releases the element and the document here, on another thread
    EXPECT_FALSE(node.isValid());
}

}  // namespace
