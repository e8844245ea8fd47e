// XML back-end of the Windows builds, over MSXML (6.0, or 3.0 where 6.0 is not registered).
//
// MSXML parses and holds the tree. Decoding of file bytes, the XML declaration and the written form are
// handled here so that files read, navigate and save the same way as in the pugixml back-end: only
// elements, text and CDATA take part (comments and processing instructions are not kept), and output is
// indented by two spaces with empty elements written as "<name />".
#include <windows.h>
#include <ole2.h>
#include <msxml2.h>

#include <cstdint>
#include <cstring>
#include <cwchar>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "platform/text.h"
#include "platform/win/handles.h"
#include "platform/xml.h"
#include "platform/xml_text.h"

namespace {
// IXMLDOMDocument2 (setProperty) is declared by MinGW's msxml2.h but its id is not in libuuid.
const IID kIID_IXMLDOMDocument2 = {0x2933bf95, 0x7b36, 0x11d2, {0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60}};

using uc::ComPtr;

class Bstr {
public:
    Bstr() = default;
    explicit Bstr(const std::wstring& s) : m_b(::SysAllocStringLen(s.data(), static_cast<UINT>(s.size()))) {}
    explicit Bstr(const wchar_t* s) : m_b(::SysAllocString(s)) {}
    Bstr(const Bstr&) = delete;
    Bstr& operator=(const Bstr&) = delete;
    ~Bstr() { ::SysFreeString(m_b); }
    BSTR get() const { return m_b; }
    BSTR* put() {
        ::SysFreeString(m_b);
        m_b = nullptr;
        return &m_b;
    }
    std::wstring str() const { return m_b ? std::wstring(m_b, ::SysStringLen(m_b)) : std::wstring(); }

private:
    BSTR m_b = nullptr;
};

struct Variant {
    VARIANT v;
    Variant() { ::VariantInit(&v); }
    explicit Variant(const std::wstring& s) {
        ::VariantInit(&v);
        v.vt = VT_BSTR;
        v.bstrVal = ::SysAllocStringLen(s.data(), static_cast<UINT>(s.size()));
    }
    explicit Variant(bool b) {
        ::VariantInit(&v);
        v.vt = VT_BOOL;
        v.boolVal = b ? VARIANT_TRUE : VARIANT_FALSE;
    }
    explicit Variant(int i) {
        ::VariantInit(&v);
        v.vt = VT_I4;
        v.lVal = i;
    }
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;
    ~Variant() { ::VariantClear(&v); }
    std::wstring str() const { return v.vt == VT_BSTR && v.bstrVal ? std::wstring(v.bstrVal, ::SysStringLen(v.bstrVal)) : std::wstring(); }
};

DOMNodeType TypeOf(IXMLDOMNode* n) {
    DOMNodeType t = NODE_INVALID;
    n->get_nodeType(&t);
    return t;
}

std::wstring NameOf(IXMLDOMNode* n) {
    Bstr b;
    n->get_nodeName(b.put());
    return b.str();
}

std::wstring ValueOf(IXMLDOMNode* n) {
    Variant v;
    n->get_nodeValue(&v.v);
    return v.str();
}

ComPtr<IXMLDOMNode> FirstChild(IXMLDOMNode* n) {
    ComPtr<IXMLDOMNode> c;
    if (n->get_firstChild(c.put()) != S_OK) c.reset();
    return c;
}

ComPtr<IXMLDOMNode> NextSibling(IXMLDOMNode* n) {
    ComPtr<IXMLDOMNode> c;
    if (n->get_nextSibling(c.put()) != S_OK) c.reset();
    return c;
}

ComPtr<IXMLDOMNode> NextElement(ComPtr<IXMLDOMNode> n) {
    while (n && TypeOf(n.get()) != NODE_ELEMENT) n = NextSibling(n.get());
    return n;
}

bool IsText(IXMLDOMNode* n) {
    const DOMNodeType t = TypeOf(n);
    return t == NODE_TEXT || t == NODE_CDATA_SECTION;
}

bool IsXmlName(const std::wstring& name) {
    if (name.empty()) return false;
    auto start = [](wchar_t c) { return c == L'_' || c == L':' || (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z') || c > 0x7F; };
    if (!start(name[0])) return false;
    for (wchar_t c : name)
        if (!(start(c) || c == L'-' || c == L'.' || (c >= L'0' && c <= L'9'))) return false;
    return true;
}

bool IsBlank(wchar_t c) { return c == L' ' || c == L'\t' || c == L'\r' || c == L'\n'; }

using uc::xml::Pairs;

// Writes the document in the indented form of the pugixml back-end.
class Writer {
public:
    std::wstring out;

    void Document(const Pairs* decl, IXMLDOMElement* root) {
        out += L"<?xml";
        if (decl) {
            for (const auto& [name, value] : *decl) Attribute(name, value);
        } else {
            out += L" version=\"1.0\"";
        }
        out += L"?>\n";
        unsigned flags = 0;
        Node(root, 0, flags);
        out += L'\n';
    }

private:
    enum : unsigned { kNewline = 1, kIndent = 2 };

    // Children that are written (and that make an element non-empty): elements, text and CDATA.
    static ComPtr<IXMLDOMNode> Kept(ComPtr<IXMLDOMNode> n) {
        while (n && !(TypeOf(n.get()) == NODE_ELEMENT || IsText(n.get()))) n = NextSibling(n.get());
        return n;
    }

    void Node(IXMLDOMNode* n, unsigned depth, unsigned& flags) {
        const DOMNodeType t = TypeOf(n);
        if (t == NODE_TEXT) {
            Escaped(ValueOf(n), false);
            flags = 0;
            return;
        }
        if (t == NODE_CDATA_SECTION) {
            Cdata(ValueOf(n));
            flags = 0;
            return;
        }
        Break(depth, flags);
        flags = kNewline | kIndent;
        const std::wstring name = NameOf(n);
        out += L'<';
        out += name;
        ComPtr<IXMLDOMNamedNodeMap> attrs;
        if (n->get_attributes(attrs.put()) == S_OK && attrs) {
            long count = 0;
            attrs->get_length(&count);
            for (long i = 0; i < count; ++i) {
                ComPtr<IXMLDOMNode> a;
                if (attrs->get_item(i, a.put()) != S_OK || !a) continue;
                const std::wstring attrName = NameOf(a.get());
                const std::wstring value = ValueOf(a.get());
                // An empty prefixed namespace declaration is not valid XML 1.0; it can only be one the
                // DOM made up for an element created with a prefix, which the file never had.
                if (value.empty() && attrName.rfind(L"xmlns:", 0) == 0) continue;
                Attribute(attrName, value);
            }
        }
        ComPtr<IXMLDOMNode> child = Kept(FirstChild(n));
        if (!child) {
            out += L" />";
            return;
        }
        out += L'>';
        for (; child; child = Kept(NextSibling(child.get()))) Node(child.get(), depth + 1, flags);
        Break(depth, flags);
        out += L"</";
        out += name;
        out += L'>';
        flags = kNewline | kIndent;
    }

    void Break(unsigned depth, unsigned flags) {
        if (flags & kNewline) out += L'\n';
        if (flags & kIndent) out.append(2 * depth, L' ');
    }

    void Attribute(const std::wstring& name, const std::wstring& value) {
        out += L' ';
        out += name;
        out += L"=\"";
        Escaped(value, true);
        out += L'"';
    }

    // Markup characters as entities; control characters as two-digit character references.
    void Escaped(const std::wstring& s, bool attribute) {
        for (wchar_t c : s) {
            switch (c) {
            case L'&': out += L"&amp;"; break;
            case L'<': out += L"&lt;"; break;
            case L'>':
                if (attribute) out += c;
                else out += L"&gt;";
                break;
            case L'"':
                if (attribute) out += L"&quot;";
                else out += c;
                break;
            default:
                if (c < 32 && (attribute || (c != L'\t' && c != L'\n' && c != L'\r'))) {
                    out += L"&#";
                    out += static_cast<wchar_t>(L'0' + c / 10);
                    out += static_cast<wchar_t>(L'0' + c % 10);
                    out += L';';
                } else {
                    out += c;
                }
            }
        }
    }

    // "]]>" cannot appear inside a section: it is split across two.
    void Cdata(const std::wstring& s) {
        std::size_t pos = 0;
        do {
            out += L"<![CDATA[";
            std::size_t end = s.find(L"]]>", pos);
            end = end == std::wstring::npos ? s.size() : end + 2;
            out.append(s, pos, end - pos);
            out += L"]]>";
            pos = end;
        } while (pos < s.size());
    }
};
}  // namespace

namespace zel_xml {
struct DocumentImpl {
    uc::ScopedCoInitialize com;  // declared first: COM stays initialised until the document is released
    ComPtr<IXMLDOMDocument> doc;
    Pairs declaration;           // pseudo-attributes of the document's XML declaration
    bool hasDeclaration = false;
    bool utf16 = false;          // written back as UTF-16 when the declaration says so

    // Creates the MSXML document; false (with `error`) when COM or MSXML is unavailable.
    bool create(bool preserveWhitespace, std::wstring& error) {
        if (!com.ok()) {
            error = L"COM could not be initialised";
            return false;
        }
        for (const wchar_t* progId : {L"Msxml2.DOMDocument.6.0", L"Msxml2.DOMDocument.3.0"}) {
            CLSID clsid;
            if (FAILED(::CLSIDFromProgID(progId, &clsid))) continue;
            if (SUCCEEDED(::CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IXMLDOMDocument, doc.putVoid())) && doc)
                break;
        }
        if (!doc) {
            error = L"MSXML is not available";
            return false;
        }
        doc->put_async(VARIANT_FALSE);
        doc->put_validateOnParse(VARIANT_FALSE);
        doc->put_resolveExternals(VARIANT_FALSE);
        doc->put_preserveWhiteSpace(preserveWhitespace ? VARIANT_TRUE : VARIANT_FALSE);
        // MSXML 6.0 refuses DOCTYPEs and nests at most 256 deep by default; accept what pugixml accepts.
        if (auto doc2 = doc.query<IXMLDOMDocument2>(kIID_IXMLDOMDocument2)) {
            doc2->setProperty(Bstr(L"ProhibitDTD").get(), Variant(false).v);
            doc2->setProperty(Bstr(L"MaxElementDepth").get(), Variant(0).v);
        }
        return true;
    }

    ComPtr<IXMLDOMElement> root() const {
        ComPtr<IXMLDOMElement> r;
        if (doc && doc->get_documentElement(r.put()) != S_OK) r.reset();
        return r;
    }

    // Wraps a DOM node as a zelXMLNode of this document; non-elements give an invalid node.
    static zelXMLNode wrap(const std::shared_ptr<DocumentImpl>& self, const ComPtr<IXMLDOMNode>& node) {
        ComPtr<IXMLDOMElement> el = node.query<IXMLDOMElement>(IID_IXMLDOMElement);
        if (!el) return {};
        return zelXMLNode(self, el.detach());
    }
};
}  // namespace zel_xml

namespace {
using zel_xml::DocumentImpl;

IXMLDOMElement* El(void* p) { return static_cast<IXMLDOMElement*>(p); }

void Adopt(DocumentImpl& d, const std::wstring& text) {
    d.declaration.clear();
    d.hasDeclaration = uc::xml::ParseDeclaration(text, d.declaration);
    d.utf16 = d.hasDeclaration && uc::xml::DeclaresUtf16(d.declaration);
}

// Parses `text` into a fresh document; on failure `fault` says where and why. The text goes through the same
// well-formedness check as natively first (unless the caller has checked it), so both back-ends refuse the same
// documents and place the fault the same way, where MSXML (Wine's) may give no position.
std::shared_ptr<DocumentImpl> Parse(const std::wstring& text, bool preserveWhitespace, bool checked,
                                    uc::xml::Fault& fault) {
    if (!checked && !uc::xml::CheckWellFormed(text, fault)) return nullptr;
    fault = uc::xml::Fault();
    auto d = std::make_shared<DocumentImpl>();
    if (!d->create(preserveWhitespace, fault.reason)) return nullptr;
    VARIANT_BOOL ok = VARIANT_FALSE;
    const HRESULT hr = d->doc->loadXML(Bstr(text).get(), &ok);
    if (FAILED(hr) || ok != VARIANT_TRUE) {
        ComPtr<IXMLDOMParseError> pe;
        long line = 0, column = 0, code = 0;
        Bstr reason;
        if (d->doc->get_parseError(pe.put()) == S_OK && pe) {
            pe->get_errorCode(&code);
            pe->get_line(&line);
            pe->get_linepos(&column);
            pe->get_reason(reason.put());
        }
        std::wstring why = reason.str();
        while (!why.empty() && IsBlank(why.back())) why.pop_back();
        if (why.empty()) why = L"malformed document";
        // Some MSXML implementations (Wine's) report no position; the error code still tells the cause.
        if (line > 0) {
            fault.line = static_cast<std::size_t>(line);
            fault.column = static_cast<std::size_t>(column);
            fault.reason = why;
        } else {
            fault.reason = uc::Format(L"XML error 0x%08lX: %s", static_cast<unsigned long>(code), why.c_str());
        }
        return nullptr;
    }
    if (!d->root()) {
        fault.reason = L"XML document has no root element";
        return nullptr;
    }
    Adopt(*d, text);
    return d;
}
}  // namespace

zelXMLNode::zelXMLNode() = default;

// Takes over the reference `node` carries (an AddRef'ed IXMLDOMElement*).
zelXMLNode::zelXMLNode(std::shared_ptr<zel_xml::DocumentImpl> doc, void* node) : m_doc(std::move(doc)), m_node(node) {
    if (!m_node) m_doc.reset();
}

zelXMLNode::zelXMLNode(const zelXMLNode& other) : m_doc(other.m_doc), m_node(other.m_node) {
    if (m_node) El(m_node)->AddRef();
}

zelXMLNode& zelXMLNode::operator=(const zelXMLNode& other) {
    if (this == &other) return *this;
    if (other.m_node) El(other.m_node)->AddRef();
    std::shared_ptr<zel_xml::DocumentImpl> doc = other.m_doc;
    // The old element is released before its document can go.
    if (m_node) El(m_node)->Release();
    m_node = other.m_node;
    m_doc = std::move(doc);
    return *this;
}

zelXMLNode::zelXMLNode(zelXMLNode&& other) noexcept : m_doc(std::move(other.m_doc)), m_node(other.m_node) {
    other.m_node = nullptr;
}

zelXMLNode& zelXMLNode::operator=(zelXMLNode&& other) noexcept {
    if (this == &other) return *this;
    if (m_node) El(m_node)->Release();
    m_node = std::exchange(other.m_node, nullptr);
    m_doc = std::move(other.m_doc);
    return *this;
}

zelXMLNode::~zelXMLNode() {
    if (m_node) El(m_node)->Release();
}

bool zelXMLNode::isValid() const { return m_node != nullptr; }

std::wstring zelXMLNode::getName() const { return m_node ? NameOf(El(m_node)) : std::wstring(); }

bool zelXMLNode::hasName(const wchar_t* name) const {
    if (!m_node || !name) return false;
    Bstr own;
    if (El(m_node)->get_nodeName(own.put()) != S_OK || !own.get()) return false;
    return std::wcscmp(own.get(), name) == 0;
}

int zelXMLNode::nameOneOf(std::initializer_list<const wchar_t*> names) const {
    if (!m_node) return -1;
    Bstr own;
    if (El(m_node)->get_nodeName(own.put()) != S_OK || !own.get()) return -1;
    int i = 0;
    for (const wchar_t* name : names) {
        if (name && std::wcscmp(own.get(), name) == 0) return i;
        ++i;
    }
    return -1;
}

zelXMLNode zelXMLNode::getChildByName(const wchar_t* name) const {
    if (!m_node || !name) return {};
    for (ComPtr<IXMLDOMNode> c = NextElement(FirstChild(El(m_node))); c; c = NextElement(NextSibling(c.get())))
        if (NameOf(c.get()) == name) return zel_xml::DocumentImpl::wrap(m_doc, c);
    return {};
}

zelXMLNode zelXMLNode::getFirstChild() const {
    if (!m_node) return {};
    return zel_xml::DocumentImpl::wrap(m_doc, NextElement(FirstChild(El(m_node))));
}

zelXMLNode zelXMLNode::getNextSibling() const {
    if (!m_node) return {};
    return zel_xml::DocumentImpl::wrap(m_doc, NextElement(NextSibling(El(m_node))));
}

zelXMLNode& zelXMLNode::operator++() {
    *this = getNextSibling();
    return *this;
}

zelXMLNode zelXMLNode::createElement(const wchar_t* name) const {
    if (!m_node || !name || !IsXmlName(name)) return {};
    ComPtr<IXMLDOMElement> el;
    if (FAILED(m_doc->doc->createElement(Bstr(name).get(), el.put())) || !el) return {};
    ComPtr<IXMLDOMNode> added;
    if (FAILED(El(m_node)->appendChild(el.get(), added.put())) || !added) return {};
    return zel_xml::DocumentImpl::wrap(m_doc, added);
}

bool zelXMLNode::hasAttribute(const wchar_t* name) const {
    if (!m_node || !name) return false;
    ComPtr<IXMLDOMAttribute> a;
    return El(m_node)->getAttributeNode(Bstr(name).get(), a.put()) == S_OK && a;
}

std::wstring zelXMLNode::getAttribute(const wchar_t* name, const wchar_t* defaultValue) const {
    if (m_node && name) {
        Variant v;
        if (El(m_node)->getAttribute(Bstr(name).get(), &v.v) == S_OK && v.v.vt == VT_BSTR) return v.str();
    }
    return defaultValue ? defaultValue : L"";
}

int zelXMLNode::getAttributeInt(const wchar_t* name, const int& defaultValue) const {
    int v = defaultValue;
    getAttributeInt(name, v);
    return v;
}

void zelXMLNode::getAttributeInt(const wchar_t* name, int& value) const {
    if (!hasAttribute(name)) return;
    int v = 0;
    if (uc::ParseInt(getAttribute(name), v)) value = v;
}

double zelXMLNode::getAttributeDouble(const wchar_t* name, double defaultValue) const {
    double v = defaultValue;
    if (hasAttribute(name) && uc::ParseDouble(getAttribute(name), v)) return v;
    return defaultValue;
}

void zelXMLNode::visitAttributes(void (*visit)(void*, const zelXMLAttribute&), void* context) const {
    if (!m_node) return;
    ComPtr<IXMLDOMNamedNodeMap> attrs;
    if (El(m_node)->get_attributes(attrs.put()) != S_OK || !attrs) return;
    long count = 0;
    attrs->get_length(&count);
    for (long i = 0; i < count; ++i) {
        ComPtr<IXMLDOMNode> a;
        if (attrs->get_item(i, a.put()) != S_OK || !a) continue;
        Bstr name;
        Variant value;
        if (a->get_nodeName(name.put()) != S_OK || a->get_nodeValue(&value.v) != S_OK || value.v.vt != VT_BSTR) continue;
        visit(context, zelXMLAttribute(name.get(), value.v.bstrVal));
    }
}

namespace {
std::wstring FromBstr(const void* b) {
    const BSTR s = static_cast<BSTR>(const_cast<void*>(b));
    return s ? std::wstring(s, ::SysStringLen(s)) : std::wstring();
}
}  // namespace

bool zelXMLAttribute::is(const wchar_t* name) const {
    return name && m_name && std::wcscmp(static_cast<const wchar_t*>(m_name), name) == 0;
}
int zelXMLAttribute::oneOf(std::initializer_list<const wchar_t*> names) const {
    int i = 0;
    for (const wchar_t* name : names) {
        if (is(name)) return i;
        ++i;
    }
    return -1;
}
std::wstring zelXMLAttribute::name() const { return FromBstr(m_name); }
std::wstring zelXMLAttribute::value() const { return FromBstr(m_value); }
bool zelXMLAttribute::toInt(int& value) const {
    int v = 0;
    if (!uc::ParseInt(FromBstr(m_value), v)) return false;
    value = v;
    return true;
}
bool zelXMLAttribute::toDouble(double& value) const {
    double v = 0;
    if (!uc::ParseDouble(FromBstr(m_value), v)) return false;
    value = v;
    return true;
}

void zelXMLNode::setAttribute(const wchar_t* name, const wchar_t* value) const {
    if (!m_node || !name || !IsXmlName(name)) return;
    El(m_node)->setAttribute(Bstr(name).get(), Variant(std::wstring(value ? value : L"")).v);
}

void zelXMLNode::setAttributeInt(const wchar_t* name, int value) const {
    setAttribute(name, std::to_wstring(value).c_str());
}

void zelXMLNode::setAttributeDouble(const wchar_t* name, double value, int decimals) const {
    setAttribute(name, uc::FormatFixed(value, decimals).c_str());
}

// The element's first text or CDATA child, as in the pugixml back-end (not MSXML's descendant text).
std::wstring zelXMLNode::getText() const {
    if (!m_node) return {};
    for (ComPtr<IXMLDOMNode> c = FirstChild(El(m_node)); c; c = NextSibling(c.get()))
        if (IsText(c.get())) return ValueOf(c.get());
    return {};
}

void zelXMLNode::setText(const wchar_t* text) const {
    if (!m_node) return;
    const std::wstring value = text ? text : L"";
    for (ComPtr<IXMLDOMNode> c = FirstChild(El(m_node)); c; c = NextSibling(c.get())) {
        if (IsText(c.get())) {
            c->put_nodeValue(Variant(value).v);
            return;
        }
    }
    ComPtr<IXMLDOMText> t;
    if (FAILED(m_doc->doc->createTextNode(Bstr(value).get(), t.put())) || !t) return;
    ComPtr<IXMLDOMNode> added;
    El(m_node)->appendChild(t.get(), added.put());
}

int zelXMLNode::getInt(int defaultValue) const {
    int v = defaultValue;
    if (m_node && uc::ParseInt(getText(), v)) return v;
    return defaultValue;
}

zelXMLFile::zelXMLFile() = default;
zelXMLFile::~zelXMLFile() = default;

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
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const uc::xml::Encoding encoding = uc::xml::DetectEncoding(bytes);
    uc::xml::Fault fault;
    // UTF-8 is checked as bytes, so that a malformed sequence is refused rather than read as U+FFFD.
    const bool utf8 = encoding == uc::xml::Encoding::Utf8;
    if (utf8 && !uc::xml::CheckWellFormed(bytes, fault)) {
        setError(fault.reason, fault.line, fault.column);
        return false;
    }
    m_doc = Parse(uc::xml::DecodeText(bytes, encoding), preserveWhitespace, utf8, fault);
    if (!m_doc) {
        setError(fault.reason, fault.line, fault.column);
        return false;
    }
    setError(L"");
    return true;
}

bool zelXMLFile::loadXML(const std::wstring& text) {
    m_doc.reset();
    std::wstring t = text;
    if (!t.empty() && t[0] == 0xFEFF) t.erase(0, 1);
    uc::xml::Fault fault;
    m_doc = Parse(t, false, false, fault);
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
    auto d = std::make_shared<DocumentImpl>();
    std::wstring error;
    if (!d->create(false, error)) {
        setError(error);
        return false;
    }
    ComPtr<IXMLDOMElement> root;
    ComPtr<IXMLDOMNode> added;
    if (FAILED(d->doc->createElement(Bstr(rootName).get(), root.put())) || !root ||
        FAILED(d->doc->appendChild(root.get(), added.put()))) {
        setError(L"cannot create the root element");
        return false;
    }
    if (withDeclaration) {
        d->hasDeclaration = true;
        d->declaration = {{L"version", L"1.0"}, {L"encoding", L"UTF-8"}};
    }
    m_doc = std::move(d);
    setError(L"");
    return true;
}

bool zelXMLFile::isOpen() const { return m_doc != nullptr; }

zelXMLNode zelXMLFile::getRootElement() const {
    if (!m_doc) return {};
    ComPtr<IXMLDOMElement> r = m_doc->root();
    return r ? zelXMLNode(m_doc, r.detach()) : zelXMLNode();
}

zelXMLNode zelXMLFile::findElementByAttribute(const wchar_t* elementName, const wchar_t* attributeName,
                                              const wchar_t* value) const {
    if (!m_doc || !elementName || !attributeName || !value) return {};
    ComPtr<IXMLDOMElement> root = m_doc->root();
    if (!root) return {};
    const Bstr attr(attributeName);
    // Depth-first, parents before children: the first match in document order.
    std::vector<ComPtr<IXMLDOMNode>> stack{root.query<IXMLDOMNode>(IID_IXMLDOMNode)};
    while (!stack.empty()) {
        ComPtr<IXMLDOMNode> n = std::move(stack.back());
        stack.pop_back();
        if (!n) continue;
        if (NameOf(n.get()) == elementName) {
            ComPtr<IXMLDOMElement> el = n.query<IXMLDOMElement>(IID_IXMLDOMElement);
            Variant v;
            if (el && el->getAttribute(attr.get(), &v.v) == S_OK && v.v.vt == VT_BSTR && v.str() == value)
                return zelXMLNode(m_doc, el.detach());
        }
        std::vector<ComPtr<IXMLDOMNode>> children;
        for (ComPtr<IXMLDOMNode> c = NextElement(FirstChild(n.get())); c; c = NextElement(NextSibling(c.get())))
            children.push_back(c);
        stack.insert(stack.end(), std::make_move_iterator(children.rbegin()), std::make_move_iterator(children.rend()));
    }
    return {};
}

void zelXMLFile::visitElementsNamed(const wchar_t* name, void (*visit)(void*, const zelXMLNode&, int),
                                    void* context) const {
    if (!m_doc || !name) return;
    ComPtr<IXMLDOMNodeList> list;
    if (FAILED(m_doc->doc->getElementsByTagName(Bstr(name).get(), list.put())) || !list) return;
    // Document order; the depth needs only the node's parent and grandparent (no walk to the top).
    for (ComPtr<IXMLDOMNode> n; list->nextNode(n.put()) == S_OK && n;) {
        int depth = 2;
        ComPtr<IXMLDOMNode> parent, grandparent;
        if (n->get_parentNode(parent.put()) == S_OK && parent) {
            if (TypeOf(parent.get()) == NODE_DOCUMENT)
                depth = 0;
            else if (parent->get_parentNode(grandparent.put()) == S_OK && grandparent && TypeOf(grandparent.get()) == NODE_DOCUMENT)
                depth = 1;
        }
        const zelXMLNode element = zel_xml::DocumentImpl::wrap(m_doc, n);
        if (element.isValid()) visit(context, element, depth);
    }
}

bool zelXMLFile::save(const wchar_t* path) const {
    if (!m_doc || !path) return false;
    const std::wstring text = getXML();
    std::string bytes;
    if (m_doc->utf16) {
        const std::u16string u = uc::ToUtf16(text);
        bytes.reserve(2 + 2 * u.size());
        bytes += "\xFF\xFE";
        for (char16_t c : u) {
            bytes += static_cast<char>(c & 0xFF);
            bytes += static_cast<char>(c >> 8);
        }
    } else {
        bytes = uc::ToUtf8(text);
    }
    std::ofstream out(uc::ToFsPath(path), std::ios::binary | std::ios::trunc);
    if (!out) return false;
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.flush();
    return static_cast<bool>(out);
}

std::wstring zelXMLFile::getXML() const {
    if (!m_doc) return {};
    ComPtr<IXMLDOMElement> root = m_doc->root();
    if (!root) return {};
    Writer w;
    w.Document(m_doc->hasDeclaration ? &m_doc->declaration : nullptr, root.get());
    return w.out;
}

std::wstring zelXMLFile::getLastError() const { return m_error; }
