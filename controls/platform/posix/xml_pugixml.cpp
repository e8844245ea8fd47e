// XML back-end of the non-Windows builds, over pugixml.
#include <pugixml.hpp>

#include <charconv>
#include <cstring>
#include <fstream>
#include <sstream>

#include "platform/text.h"
#include "platform/xml.h"

namespace zel_xml {
struct DocumentImpl {
    pugi::xml_document doc;
    bool utf16 = false;  // written back as UTF-16 when the document declared it
};
}  // namespace zel_xml

namespace {
using uc::FromUtf8;
using uc::ToUtf8;

pugi::xml_node Node(void* p) { return pugi::xml_node(static_cast<pugi::xml_node_struct*>(p)); }

pugi::xml_node NextElement(pugi::xml_node n) {
    while (n && n.type() != pugi::node_element) n = n.next_sibling();
    return n;
}

bool IsXmlName(const std::wstring& name) {
    if (name.empty()) return false;
    auto start = [](wchar_t c) { return c == L'_' || c == L':' || (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z') || c > 0x7F; };
    if (!start(name[0])) return false;
    for (wchar_t c : name)
        if (!(start(c) || c == L'-' || c == L'.' || (c >= L'0' && c <= L'9'))) return false;
    return true;
}

// A name as UTF-8, without a heap copy when it is short ASCII (every name the library uses).
class Utf8Key {
public:
    explicit Utf8Key(const wchar_t* name) {
        std::size_t n = 0;
        for (; name[n] && n < sizeof m_buffer - 1; ++n) {
            if (name[n] > 0x7F) break;
            m_buffer[n] = static_cast<char>(name[n]);
        }
        if (name[n] == 0) {
            m_buffer[n] = '\0';
        } else {
            m_long = ToUtf8(name);
        }
    }
    const char* c_str() const { return m_long.empty() ? m_buffer : m_long.c_str(); }

private:
    char m_buffer[64];
    std::string m_long;
};

pugi::xml_attribute Attribute(pugi::xml_node node, const wchar_t* name) {
    Utf8Key key(name);
    return node.attribute(key.c_str());
}

// UTF-8 to wide, straight through for ASCII text.
std::wstring Widen(const char* text) {
    std::size_t n = 0;
    while (text[n] && static_cast<unsigned char>(text[n]) < 0x80) ++n;
    if (text[n] != 0) return FromUtf8(text);
    return std::wstring(text, text + n);
}

// The rules of uc::ParseInt / uc::ParseDouble applied to the UTF-8 value in place: surrounding blanks allowed,
// ASCII only, one optional '+' that is not followed by '-', the whole text a number.
template <class T>
bool ParseNumber(const char* text, T& value) {
    const char* b = text;
    const char* e = text + std::strlen(text);
    auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    while (b < e && blank(*b)) ++b;
    while (e > b && blank(e[-1])) --e;
    if (b == e) return false;
    for (const char* p = b; p < e; ++p)
        if (static_cast<unsigned char>(*p) > 0x7F) return false;
    if (*b == '+' && e - b > 1 && b[1] != '-') ++b;
    T v{};
    auto [ptr, ec] = std::from_chars(b, e, v);
    if (ec != std::errc() || ptr != e) return false;
    value = v;
    return true;
}

bool DeclaresUtf16(const pugi::xml_document& doc) {
    for (pugi::xml_node n = doc.first_child(); n; n = n.next_sibling()) {
        if (n.type() == pugi::node_declaration) {
            std::string enc = n.attribute("encoding").value();
            for (char& c : enc) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
            return enc.rfind("utf-16", 0) == 0;
        }
    }
    return false;
}
}  // namespace

zelXMLNode::zelXMLNode() = default;
zelXMLNode::zelXMLNode(std::shared_ptr<zel_xml::DocumentImpl> doc, void* node) : m_doc(std::move(doc)), m_node(node) {
    if (!m_node) m_doc.reset();
}
zelXMLNode::zelXMLNode(const zelXMLNode& other) = default;
zelXMLNode& zelXMLNode::operator=(const zelXMLNode& other) = default;
zelXMLNode::zelXMLNode(zelXMLNode&& other) noexcept : m_doc(std::move(other.m_doc)), m_node(other.m_node) {
    other.m_node = nullptr;
}
zelXMLNode& zelXMLNode::operator=(zelXMLNode&& other) noexcept {
    m_doc = std::move(other.m_doc);
    m_node = other.m_node;
    other.m_node = nullptr;
    return *this;
}
zelXMLNode::~zelXMLNode() = default;

bool zelXMLNode::isValid() const { return m_node != nullptr; }

std::wstring zelXMLNode::getName() const { return m_node ? Widen(Node(m_node).name()) : std::wstring(); }

bool zelXMLNode::hasName(const wchar_t* name) const {
    if (!m_node || !name) return false;
    const char* own = Node(m_node).name();
    std::size_t i = 0;
    for (; own[i] && name[i]; ++i) {
        const auto c = static_cast<unsigned char>(own[i]);
        if (c > 0x7F || name[i] > 0x7F) return Widen(own) == name;  // non-ASCII: compare decoded text
        if (static_cast<wchar_t>(c) != name[i]) return false;
    }
    return own[i] == 0 && name[i] == 0;
}

zelXMLNode zelXMLNode::getChildByName(const wchar_t* name) const {
    if (!m_node || !name) return {};
    Utf8Key key(name);
    return zelXMLNode(m_doc, Node(m_node).child(key.c_str()).internal_object());
}

zelXMLNode zelXMLNode::getFirstChild() const {
    if (!m_node) return {};
    return zelXMLNode(m_doc, NextElement(Node(m_node).first_child()).internal_object());
}

zelXMLNode zelXMLNode::getNextSibling() const {
    if (!m_node) return {};
    return zelXMLNode(m_doc, NextElement(Node(m_node).next_sibling()).internal_object());
}

zelXMLNode& zelXMLNode::operator++() {
    if (m_node) m_node = NextElement(Node(m_node).next_sibling()).internal_object();
    if (!m_node) m_doc.reset();
    return *this;
}

zelXMLNode zelXMLNode::createElement(const wchar_t* name) const {
    if (!m_node || !name || !IsXmlName(name)) return {};
    return zelXMLNode(m_doc, Node(m_node).append_child(ToUtf8(name).c_str()).internal_object());
}

bool zelXMLNode::hasAttribute(const wchar_t* name) const {
    return m_node && name && Attribute(Node(m_node), name);
}

std::wstring zelXMLNode::getAttribute(const wchar_t* name, const wchar_t* defaultValue) const {
    if (m_node && name) {
        pugi::xml_attribute a = Attribute(Node(m_node), name);
        if (a) return Widen(a.value());
    }
    return defaultValue ? defaultValue : L"";
}

int zelXMLNode::getAttributeInt(const wchar_t* name, const int& defaultValue) const {
    int v = defaultValue;
    getAttributeInt(name, v);
    return v;
}

void zelXMLNode::getAttributeInt(const wchar_t* name, int& value) const {
    if (!m_node || !name) return;
    const pugi::xml_attribute a = Attribute(Node(m_node), name);
    int v = 0;
    if (a && ParseNumber(a.value(), v)) value = v;
}

double zelXMLNode::getAttributeDouble(const wchar_t* name, double defaultValue) const {
    if (!m_node || !name) return defaultValue;
    const pugi::xml_attribute a = Attribute(Node(m_node), name);
    double v = defaultValue;
    if (a && ParseNumber(a.value(), v)) return v;
    return defaultValue;
}

void zelXMLNode::setAttribute(const wchar_t* name, const wchar_t* value) const {
    if (!m_node || !name || !IsXmlName(name)) return;
    pugi::xml_node n = Node(m_node);
    const std::string key = ToUtf8(name);
    pugi::xml_attribute a = n.attribute(key.c_str());
    if (!a) a = n.append_attribute(key.c_str());
    a.set_value(ToUtf8(value ? value : L"").c_str());
}

void zelXMLNode::setAttributeInt(const wchar_t* name, int value) const {
    setAttribute(name, std::to_wstring(value).c_str());
}

void zelXMLNode::setAttributeDouble(const wchar_t* name, double value, int decimals) const {
    setAttribute(name, uc::FormatFixed(value, decimals).c_str());
}

std::wstring zelXMLNode::getText() const { return m_node ? FromUtf8(Node(m_node).text().get()) : std::wstring(); }

void zelXMLNode::setText(const wchar_t* text) const {
    if (m_node) Node(m_node).text().set(ToUtf8(text ? text : L"").c_str());
}

int zelXMLNode::getInt(int defaultValue) const {
    int v = defaultValue;
    if (m_node && uc::ParseInt(getText(), v)) return v;
    return defaultValue;
}

zelXMLFile::zelXMLFile() = default;
zelXMLFile::~zelXMLFile() = default;

namespace {
bool Finish(std::shared_ptr<zel_xml::DocumentImpl>& out, std::shared_ptr<zel_xml::DocumentImpl> doc,
            const pugi::xml_parse_result& r, std::wstring& error) {
    if (!r) {
        error = L"XML error at offset " + std::to_wstring(r.offset) + L": " + FromUtf8(r.description());
        return false;
    }
    if (!doc->doc.document_element()) {
        error = L"XML document has no root element";
        return false;
    }
    doc->utf16 = DeclaresUtf16(doc->doc);
    out = std::move(doc);
    error.clear();
    return true;
}
}  // namespace

bool zelXMLFile::open(const wchar_t* path, bool preserveWhitespace) {
    m_doc.reset();
    if (!path) {
        m_error = L"no path";
        return false;
    }
    std::ifstream in(uc::ToFsPath(path), std::ios::binary);
    if (!in) {
        m_error = std::wstring(L"cannot open ") + path;
        return false;
    }
    std::ostringstream buf;
    buf << in.rdbuf();
    const std::string bytes = buf.str();
    auto doc = std::make_shared<zel_xml::DocumentImpl>();
    unsigned options = pugi::parse_default | pugi::parse_declaration;
    if (preserveWhitespace) options |= pugi::parse_ws_pcdata;
    pugi::xml_parse_result r = doc->doc.load_buffer(bytes.data(), bytes.size(), options, pugi::encoding_auto);
    return Finish(m_doc, std::move(doc), r, m_error);
}

bool zelXMLFile::loadXML(const std::wstring& text) {
    m_doc.reset();
    auto doc = std::make_shared<zel_xml::DocumentImpl>();
    const std::string utf8 = ToUtf8(text);
    pugi::xml_parse_result r =
        doc->doc.load_buffer(utf8.data(), utf8.size(), pugi::parse_default | pugi::parse_declaration, pugi::encoding_utf8);
    return Finish(m_doc, std::move(doc), r, m_error);
}

bool zelXMLFile::newDocument(const wchar_t* rootName, bool withDeclaration) {
    m_doc.reset();
    if (!rootName || !IsXmlName(rootName)) {
        m_error = L"invalid root element name";
        return false;
    }
    auto doc = std::make_shared<zel_xml::DocumentImpl>();
    if (withDeclaration) {
        pugi::xml_node decl = doc->doc.append_child(pugi::node_declaration);
        decl.append_attribute("version") = "1.0";
        decl.append_attribute("encoding") = "UTF-8";
    }
    doc->doc.append_child(ToUtf8(rootName).c_str());
    m_doc = std::move(doc);
    m_error.clear();
    return true;
}

bool zelXMLFile::isOpen() const { return m_doc != nullptr; }

zelXMLNode zelXMLFile::getRootElement() const {
    if (!m_doc) return {};
    return zelXMLNode(m_doc, m_doc->doc.document_element().internal_object());
}

zelXMLNode zelXMLFile::findElementByAttribute(const wchar_t* elementName, const wchar_t* attributeName,
                                              const wchar_t* value) const {
    if (!m_doc || !elementName || !attributeName || !value) return {};
    const std::string el = ToUtf8(elementName), at = ToUtf8(attributeName), val = ToUtf8(value);
    pugi::xml_node found = m_doc->doc.find_node([&](pugi::xml_node n) {
        if (n.type() != pugi::node_element || el != n.name()) return false;
        pugi::xml_attribute a = n.attribute(at.c_str());
        return a && val == a.value();
    });
    return zelXMLNode(m_doc, found.internal_object());
}

bool zelXMLFile::save(const wchar_t* path) const {
    if (!m_doc || !path) return false;
    std::ofstream out(uc::ToFsPath(path), std::ios::binary | std::ios::trunc);
    if (!out) return false;
    m_doc->doc.save(out, "  ", m_doc->utf16 ? pugi::format_default | pugi::format_write_bom : pugi::format_default,
                   m_doc->utf16 ? pugi::encoding_utf16_le : pugi::encoding_utf8);
    out.flush();
    return static_cast<bool>(out);
}

std::wstring zelXMLFile::getXML() const {
    if (!m_doc) return {};
    std::ostringstream out;
    m_doc->doc.save(out, "  ", pugi::format_default, pugi::encoding_utf8);
    return FromUtf8(out.str());
}

std::wstring zelXMLFile::getLastError() const { return m_error; }
