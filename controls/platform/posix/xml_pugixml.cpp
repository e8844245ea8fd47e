// XML back-end of the non-Windows builds, over pugixml.
#include <pugixml.hpp>

#include <charconv>
#include <cstring>
#include <algorithm>
#include <fstream>
#include <sstream>
#include <string_view>

#include "platform/text.h"
#include "platform/xml.h"
#include "platform/xml_text.h"

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

// A UTF-8 name equals a wide one; compared in place while both are ASCII.
bool SameName(const char* own, const wchar_t* name) {
    if (!name) return false;
    std::size_t i = 0;
    for (; own[i] && name[i]; ++i) {
        const auto c = static_cast<unsigned char>(own[i]);
        if (c > 0x7F || name[i] > 0x7F) return Widen(own) == name;  // non-ASCII: compare decoded text
        if (static_cast<wchar_t>(c) != name[i]) return false;
    }
    return own[i] == 0 && name[i] == 0;
}

// Position of a UTF-8 name among wide ones, or -1.
int NameOneOf(const char* own, std::initializer_list<const wchar_t*> names) {
    const auto first = static_cast<unsigned char>(own[0]);
    int i = 0;
    for (const wchar_t* name : names) {
        // Most candidates differ in their first character: no call for those.
        if (name && (first > 0x7F || static_cast<wchar_t>(first) == name[0]) && SameName(own, name)) return i;
        ++i;
    }
    return -1;
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

bool zelXMLNode::hasName(const wchar_t* name) const { return m_node && SameName(Node(m_node).name(), name); }

int zelXMLNode::nameOneOf(std::initializer_list<const wchar_t*> names) const {
    return m_node ? NameOneOf(Node(m_node).name(), names) : -1;
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

void zelXMLNode::visitAttributes(void (*visit)(void*, const zelXMLAttribute&), void* context) const {
    if (!m_node) return;
    for (pugi::xml_attribute a = Node(m_node).first_attribute(); a; a = a.next_attribute())
        visit(context, zelXMLAttribute(a.name(), a.value()));
}

bool zelXMLAttribute::is(const wchar_t* name) const { return SameName(static_cast<const char*>(m_name), name); }
int zelXMLAttribute::oneOf(std::initializer_list<const wchar_t*> names) const {
    return NameOneOf(static_cast<const char*>(m_name), names);
}
std::wstring zelXMLAttribute::name() const { return Widen(static_cast<const char*>(m_name)); }
std::wstring zelXMLAttribute::value() const { return Widen(static_cast<const char*>(m_value)); }
bool zelXMLAttribute::toInt(int& value) const { return ParseNumber(static_cast<const char*>(m_value), value); }
bool zelXMLAttribute::toDouble(double& value) const { return ParseNumber(static_cast<const char*>(m_value), value); }

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
// Checks UTF-8 text and parses it into a fresh document; null, with `fault` set, when it is not well-formed.
std::shared_ptr<zel_xml::DocumentImpl> Parse(std::string_view utf8, bool preserveWhitespace, uc::xml::Fault& fault) {
    if (!uc::xml::CheckWellFormed(utf8, fault)) return nullptr;
    auto doc = std::make_shared<zel_xml::DocumentImpl>();
    unsigned options = pugi::parse_default | pugi::parse_declaration;
    if (preserveWhitespace) options |= pugi::parse_ws_pcdata;
    const pugi::xml_parse_result r = doc->doc.load_buffer(utf8.data(), utf8.size(), options, pugi::encoding_utf8);
    if (!r || !doc->doc.document_element()) {
        fault = uc::xml::FaultAt(utf8, r ? 0 : static_cast<std::size_t>(r.offset),
                                 r ? L"no root element" : FromUtf8(r.description()));
        return nullptr;
    }
    doc->utf16 = DeclaresUtf16(doc->doc);
    return doc;
}
}  // namespace

bool zelXMLFile::open(const wchar_t* path, bool preserveWhitespace) {
    m_doc.reset();
    if (!path) {
        setError(L"no path");
        return false;
    }
    std::ifstream in(uc::ToFsPath(path), std::ios::binary);
    if (!in) {
        setError(std::wstring(L"cannot open ") + path);
        return false;
    }
    std::string bytes;
    in.seekg(0, std::ios::end);
    bytes.resize(static_cast<std::size_t>(std::max<std::streamoff>(0, in.tellg())));
    in.seekg(0, std::ios::beg);
    in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(in.gcount()));
    const uc::xml::Encoding encoding = uc::xml::DetectEncoding(bytes);
    // Other encodings are read as UTF-8 text: lines and columns count characters either way.
    const std::string converted = encoding == uc::xml::Encoding::Utf8 ? std::string() : ToUtf8(uc::xml::DecodeText(bytes, encoding));
    uc::xml::Fault fault;
    m_doc = Parse(encoding == uc::xml::Encoding::Utf8 ? std::string_view(bytes) : std::string_view(converted),
                  preserveWhitespace, fault);
    if (!m_doc) {
        setError(fault.reason, fault.line, fault.column);
        return false;
    }
    setError(L"");
    return true;
}

bool zelXMLFile::loadXML(const std::wstring& text) {
    m_doc.reset();
    uc::xml::Fault fault;
    m_doc = Parse(ToUtf8(text), false, fault);
    if (!m_doc) {
        setError(fault.reason, fault.line, fault.column);
        return false;
    }
    setError(L"");
    return true;
}

bool zelXMLFile::newDocument(const wchar_t* rootName, bool withDeclaration) {
    m_doc.reset();
    if (!rootName || !IsXmlName(rootName)) {
        setError(L"invalid root element name");
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
    setError(L"");
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

void zelXMLFile::visitElementsNamed(const wchar_t* name, void (*visit)(void*, const zelXMLNode&, int),
                                    void* context) const {
    if (!m_doc || !name) return;
    const pugi::xml_node root = m_doc->doc.document_element();
    int depth = 0;
    // Depth-first in document order without recursion: down to the first child, else to the next sibling, else
    // up until a parent has one.
    for (pugi::xml_node n = root; n;) {
        if (n.type() == pugi::node_element && SameName(n.name(), name)) visit(context, zelXMLNode(m_doc, n.internal_object()), depth > 2 ? 2 : depth);
        if (pugi::xml_node child = n.first_child()) {
            n = child;
            ++depth;
            continue;
        }
        while (n && n != root && !n.next_sibling()) {
            n = n.parent();
            --depth;
        }
        n = n && n != root ? n.next_sibling() : pugi::xml_node();
    }
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
