// In-house XML document and node classes: one interface, pugixml behind it natively and MSXML on Windows.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string>
#include <type_traits>

#include "platform/export.h"

namespace zel_xml {
struct DocumentImpl;  // back-end state, shared by a file and every node taken from it
}

// One attribute of an element while zelXMLNode::forEachAttribute visits it; valid during that call only.
class UC_API zelXMLAttribute {
public:
    // The attribute's name equals `name` (compared in place, without a copy; false for a null name).
    bool is(const wchar_t* name) const;
    // Position of the attribute's name among `names`, or -1: one call for a reader that dispatches on several.
    int oneOf(std::initializer_list<const wchar_t*> names) const;
    std::wstring name() const;
    std::wstring value() const;
    // The value read by the rules of getAttributeInt / getAttributeDouble; false, `value` unchanged, when the
    // text is not such a number.
    bool toInt(int& value) const;
    bool toDouble(double& value) const;

private:
    friend class zelXMLNode;
    zelXMLAttribute(const void* name, const void* value) : m_name(name), m_value(value) {}
    const void* m_name;   // back-end text: UTF-8 natively, a BSTR over MSXML
    const void* m_value;
};

// A reference to one element of a document. Copies refer to the same element; a node keeps its document alive.
// Every operation on an invalid node is harmless: getters return their defaults, setters do nothing.
class UC_API zelXMLNode {
public:
    zelXMLNode();
    zelXMLNode(const zelXMLNode& other);
    zelXMLNode& operator=(const zelXMLNode& other);
    zelXMLNode(zelXMLNode&& other) noexcept;
    zelXMLNode& operator=(zelXMLNode&& other) noexcept;
    ~zelXMLNode();

    bool isValid() const;
    std::wstring getName() const;
    // getName() == name (false on an invalid node or a null name); natively compared without copying the name.
    bool hasName(const wchar_t* name) const;
    // Position of the element's name among `names`, or -1 (also for an invalid node).
    int nameOneOf(std::initializer_list<const wchar_t*> names) const;

    // Child and sibling navigation visits elements only (text, comments and processing instructions are skipped).
    zelXMLNode getChildByName(const wchar_t* name) const;
    zelXMLNode getFirstChild() const;
    zelXMLNode getNextSibling() const;
    // Moves to the next sibling element; the node becomes invalid after the last one.
    zelXMLNode& operator++();
    // Appends a child element and returns it (invalid when this node is invalid or the name is not a valid XML name).
    zelXMLNode createElement(const wchar_t* name) const;

    bool hasAttribute(const wchar_t* name) const;
    std::wstring getAttribute(const wchar_t* name, const wchar_t* defaultValue = L"") const;
    // Whole decimal integers only; an absent attribute or one that is not such a number yields the default.
    int getAttributeInt(const wchar_t* name, const int& defaultValue) const;
    // In/out form: `value` is left unchanged when the attribute is absent or not a number.
    void getAttributeInt(const wchar_t* name, int& value) const;
    double getAttributeDouble(const wchar_t* name, double defaultValue) const;
    // Calls `visit(const zelXMLAttribute&)` once for each attribute, in document order: one pass over the
    // element's attributes for a reader that wants several of them, where each getter above searches them anew.
    // Nothing is visited on an invalid node.
    template <class Visit>
    void forEachAttribute(Visit&& visit) const {
        using V = std::remove_reference_t<Visit>;
        visitAttributes([](void* context, const zelXMLAttribute& a) { (*static_cast<V*>(context))(a); },
                        const_cast<void*>(static_cast<const void*>(&visit)));
    }

    void setAttribute(const wchar_t* name, const wchar_t* value) const;
    void setAttribute(const wchar_t* name, const std::wstring& value) const { setAttribute(name, value.c_str()); }
    void setAttributeInt(const wchar_t* name, int value) const;
    // Written in fixed-point notation with `decimals` digits after the point ("%.2f" for 2).
    void setAttributeDouble(const wchar_t* name, double value, int decimals) const;

    // Text content of the element.
    std::wstring getText() const;
    void setText(const wchar_t* text) const;
    // The element's text as a whole decimal integer, or `defaultValue`.
    int getInt(int defaultValue = 0) const;

private:
    friend class zelXMLFile;
    friend struct zel_xml::DocumentImpl;
    zelXMLNode(std::shared_ptr<zel_xml::DocumentImpl> doc, void* node);
    void visitAttributes(void (*visit)(void* context, const zelXMLAttribute& attribute), void* context) const;

    std::shared_ptr<zel_xml::DocumentImpl> m_doc;
    void* m_node = nullptr;  // back-end element handle (a pugixml node, or an AddRef'ed IXMLDOMElement*)
};

// One XML document: read from a file or a string, or created new; saved back to a file.
class UC_API zelXMLFile {
public:
    zelXMLFile();
    ~zelXMLFile();
    zelXMLFile(const zelXMLFile&) = delete;
    zelXMLFile& operator=(const zelXMLFile&) = delete;

    // Reads a file (UTF-8 or UTF-16 with byte-order mark, or the encoding its declaration names).
    // False, with getLastError set, on a missing, empty or malformed file; the previous document is dropped.
    // Both back-ends refuse every document that is not well-formed XML (two root elements, text after the root,
    // duplicate attributes, a bare '&', an undefined entity, ...), as MSXML does, and say where.
    bool open(const wchar_t* path, bool preserveWhitespace = false);
    bool open(const std::wstring& path, bool preserveWhitespace = false) { return open(path.c_str(), preserveWhitespace); }
    bool loadXML(const std::wstring& text);
    // Replaces the document by an empty one with the given root element (and an XML declaration when asked).
    bool newDocument(const wchar_t* rootName, bool withDeclaration = true);

    bool isOpen() const;
    zelXMLNode getRootElement() const;
    // First element in document order named `elementName` whose attribute `attributeName` equals `value`.
    zelXMLNode findElementByAttribute(const wchar_t* elementName, const wchar_t* attributeName,
                                      const wchar_t* value) const;

    // Calls `visit(const zelXMLNode& element, int depth)` for every element named `name`, in document order:
    // a search inside the back-end, much cheaper than stepping through the document node by node. Depth is 0 for
    // the root element, 1 for its children and 2 for anything deeper.
    template <class Visit>
    void forEachElementNamed(const wchar_t* name, Visit&& visit) const {
        using V = std::remove_reference_t<Visit>;
        visitElementsNamed(name, [](void* context, const zelXMLNode& e, int depth) { (*static_cast<V*>(context))(e, depth); },
                           const_cast<void*>(static_cast<const void*>(&visit)));
    }

    // Writes the document, indented, as UTF-8 with a declaration (UTF-16 when the document declares it).
    bool save(const wchar_t* path) const;
    bool save(const std::wstring& path) const { return save(path.c_str()); }
    std::wstring getXML() const;
    std::wstring getLastError() const;
    // Where the last failed read found its fault: line and column from 1, or 0 when it has no position.
    int getErrorLine() const { return m_errorLine; }
    int getErrorColumn() const { return m_errorColumn; }

private:
    void setError(std::wstring message, std::size_t line = 0, std::size_t column = 0);
    void visitElementsNamed(const wchar_t* name, void (*visit)(void* context, const zelXMLNode& element, int depth),
                            void* context) const;

    std::shared_ptr<zel_xml::DocumentImpl> m_doc;
    std::wstring m_error;
    int m_errorLine = 0;
    int m_errorColumn = 0;
};
