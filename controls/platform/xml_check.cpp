// Strict XML well-formedness check over UTF-8 or wide text: one linear pass; a fault is placed by line and column.
#include "platform/xml_text.h"

#include <algorithm>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "platform/text.h"

namespace uc::xml {
namespace {

constexpr char32_t kBadSequence = 0xFFFFFFFFu;

bool IsChar(char32_t c) {
    return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) || (c >= 0xE000 && c <= 0xFFFD) ||
           (c >= 0x10000 && c <= 0x10FFFF);
}

bool IsSpace(char32_t c) { return c == 0x20 || c == 0x9 || c == 0xD || c == 0xA; }

bool IsNameStart(char32_t c) {
    if (c < 0x80) return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':';
    return (c >= 0xC0 && c <= 0xD6) || (c >= 0xD8 && c <= 0xF6) || (c >= 0xF8 && c <= 0x2FF) ||
           (c >= 0x370 && c <= 0x37D) || (c >= 0x37F && c <= 0x1FFF) || (c >= 0x200C && c <= 0x200D) ||
           (c >= 0x2070 && c <= 0x218F) || (c >= 0x2C00 && c <= 0x2FEF) || (c >= 0x3001 && c <= 0xD7FF) ||
           (c >= 0xF900 && c <= 0xFDCF) || (c >= 0xFDF0 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0xEFFFF);
}

bool IsNameChar(char32_t c) {
    if (c < 0x80) return IsNameStart(c) || c == '-' || c == '.' || (c >= '0' && c <= '9');
    return IsNameStart(c) || c == 0xB7 || (c >= 0x300 && c <= 0x36F) || (c >= 0x203F && c <= 0x2040);
}

// Classes of ASCII units for the fast paths: plain text (no markup meaning), plain attribute text, name start,
// name character.
enum : unsigned char { kPlainText = 1, kPlainValue = 2, kNameStartAscii = 4, kNameAscii = 8 };

struct AsciiClasses {
    unsigned char of[128] = {};
    constexpr AsciiClasses() {
        for (int c = 0; c < 128; ++c) {
            const bool control = c < 0x20 && c != 0x9 && c != 0xA && c != 0xD;
            if (!control && c != '<' && c != '&' && c != ']') of[c] |= kPlainText;
            if (!control && c != '<' && c != '&' && c != '"' && c != '\'') of[c] |= kPlainValue;
            const bool start = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':';
            if (start) of[c] |= kNameStartAscii;
            if (start || c == '-' || c == '.' || (c >= '0' && c <= '9')) of[c] |= kNameAscii;
        }
    }
};
constexpr AsciiClasses kAscii;

// One character from `p` (before `end`), advancing `p`; kBadSequence for an invalid encoding (one unit skipped).
char32_t Next(const char*& p, const char* end) {
    const auto b = static_cast<unsigned char>(*p++);
    if (b < 0x80) return b;
    int n = 0;
    char32_t c = 0, least = 0;
    if ((b & 0xE0) == 0xC0) n = 1, c = b & 0x1F, least = 0x80;
    else if ((b & 0xF0) == 0xE0) n = 2, c = b & 0x0F, least = 0x800;
    else if ((b & 0xF8) == 0xF0) n = 3, c = b & 0x07, least = 0x10000;
    else return kBadSequence;
    if (end - p < n) return kBadSequence;
    for (int i = 0; i < n; ++i) {
        const auto t = static_cast<unsigned char>(p[i]);
        if ((t & 0xC0) != 0x80) return kBadSequence;
        c = (c << 6) | (t & 0x3F);
    }
    p += n;
    if (c < least || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) return kBadSequence;
    return c;
}

char32_t Next(const wchar_t*& p, const wchar_t* end) {
    const auto u = static_cast<char32_t>(static_cast<std::make_unsigned_t<wchar_t>>(*p++));
    if (sizeof(wchar_t) > 2 || u < 0xD800 || u > 0xDFFF) return u;
    if (u > 0xDBFF || p == end) return kBadSequence;
    const auto low = static_cast<char32_t>(static_cast<std::make_unsigned_t<wchar_t>>(*p));
    if (low < 0xDC00 || low > 0xDFFF) return kBadSequence;
    ++p;
    return 0x10000 + ((u - 0xD800) << 10) + (low - 0xDC00);
}

std::wstring Widen(std::string_view s) { return FromUtf8(std::string(s)); }

// Line and column of `at` in text starting at `text`; CR LF, CR and LF each end a line.
template <class Ch>
void Locate(const Ch* text, const Ch* at, Fault& fault) {
    std::size_t line = 1, column = 1;
    for (const Ch* p = text; p < at;) {
        if (*p == '\n' || *p == '\r') {
            if (*p == '\r' && p + 1 < at && p[1] == '\n') ++p;
            ++p;
            ++line;
            column = 1;
        } else {
            Next(p, at);
            ++column;
        }
    }
    fault.line = line;
    fault.column = column;
}
std::wstring Widen(std::wstring_view s) { return std::wstring(s); }

template <class Ch>
class Checker {
public:
    Checker(const Ch* begin, const Ch* end) : m_p(begin), m_end(end) {}

    bool Run(Fault& fault) {
        if (!Document()) {
            Locate(m_text, m_faultAt, fault);
            fault.reason = m_reason;
            return false;
        }
        return true;
    }

private:
    using View = std::basic_string_view<Ch>;
    using Unit = std::make_unsigned_t<Ch>;

    struct Open {
        View name;
        const Ch* at;
        std::size_t bindings;  // namespace bindings in force before this element
    };

    // ---- positions and faults ----

    bool Fail(const Ch* at, std::wstring reason) {
        m_faultAt = at;
        m_reason = std::move(reason);
        return false;
    }

    std::size_t LineOf(const Ch* at) const {
        std::size_t line = 1;
        for (const Ch* p = m_text; p < at; ++p)
            if (*p == '\n' || (*p == '\r' && !(p + 1 < at && p[1] == '\n'))) ++line;
        return line;
    }

    static std::wstring Shown(View name) {
        std::wstring w = Widen(name);
        if (w.size() > 40) w = w.substr(0, 40) + L"...";
        return w;
    }

    std::wstring BadCharacter(const Ch* at) const {
        const Ch* p = at;
        const char32_t c = Next(p, m_end);
        if (c == kBadSequence) return sizeof(Ch) == 1 ? L"invalid UTF-8 byte sequence" : L"invalid UTF-16 sequence";
        return uc::Format(L"character U+%04X is not allowed in XML", static_cast<unsigned>(c));
    }

    // ---- small readers ----

    static bool Ascii(Ch u) { return static_cast<Unit>(u) < 0x80; }

    bool AtEnd() const { return m_p >= m_end; }
    bool Is(char c) const { return m_p < m_end && *m_p == static_cast<Ch>(c); }
    bool Starts(const char* literal) const {
        const Ch* p = m_p;
        for (; *literal; ++literal, ++p)
            if (p >= m_end || *p != static_cast<Ch>(*literal)) return false;
        return true;
    }
    static bool Equals(View v, const char* literal) {
        std::size_t i = 0;
        for (; literal[i]; ++i)
            if (i >= v.size() || v[i] != static_cast<Ch>(literal[i])) return false;
        return i == v.size();
    }

    bool SkipSpace() {
        const Ch* start = m_p;
        while (m_p < m_end && (*m_p == ' ' || *m_p == '\t' || *m_p == '\n' || *m_p == '\r')) ++m_p;
        return m_p != start;
    }

    // Advances over one valid character; false (a fault) for an invalid one.
    bool Character() {
        const Ch* at = m_p;
        if (static_cast<Unit>(*m_p) < 0x80) {
            const auto u = static_cast<Unit>(*m_p);
            if (u < 0x20 && u != 0x9 && u != 0xA && u != 0xD) return Fail(at, BadCharacter(at));
            ++m_p;
            return true;
        }
        if (!IsChar(Next(m_p, m_end))) return Fail(at, BadCharacter(at));
        return true;
    }

    // Advances over a Name; false (nothing consumed) when none starts here.
    bool Name() {
        if (AtEnd()) return false;
        if (Ascii(*m_p) && (kAscii.of[static_cast<Unit>(*m_p)] & kNameStartAscii)) {
            const Ch* p = m_p + 1;
            while (p < m_end && Ascii(*p) && (kAscii.of[static_cast<Unit>(*p)] & kNameAscii)) ++p;
            if (p == m_end || Ascii(*p)) {
                m_p = p;
                return true;
            }
        }
        const Ch* q = m_p;
        if (!IsNameStart(Next(q, m_end))) return false;
        const Ch* p = q;
        while (p < m_end) {
            q = p;
            if (!IsNameChar(Next(q, m_end))) break;
            p = q;
        }
        m_p = p;
        return true;
    }

    bool Quoted(const char* what, View& value) {
        if (!Is('"') && !Is('\'')) return Fail(m_p, uc::Format(L"%S must be quoted", what));
        const Ch quote = *m_p++;
        const Ch* start = m_p;
        while (m_p < m_end && *m_p != quote)
            if (!Character()) return false;
        if (AtEnd()) return Fail(start - 1, uc::Format(L"%S is not closed", what));
        value = View(start, static_cast<std::size_t>(m_p - start));
        ++m_p;
        return true;
    }

    // ---- references ----

    bool Reference() {
        const Ch* at = m_p++;
        if (Is('#')) {
            ++m_p;
            const bool hex = Is('x');
            if (hex) ++m_p;
            char32_t value = 0;
            int digits = 0;
            for (; m_p < m_end; ++m_p, ++digits) {
                const Ch u = *m_p;
                int d = -1;
                if (u >= '0' && u <= '9') d = u - '0';
                else if (hex && u >= 'a' && u <= 'f') d = u - 'a' + 10;
                else if (hex && u >= 'A' && u <= 'F') d = u - 'A' + 10;
                if (d < 0) break;
                value = value > 0x10FFFF ? value : value * (hex ? 16 : 10) + static_cast<char32_t>(d);
            }
            if (digits == 0 || !Is(';')) return Fail(at, L"malformed character reference (write &amp; for an ampersand)");
            ++m_p;
            if (!IsChar(value))
                return Fail(at, L"character reference " + Widen(View(at, static_cast<std::size_t>(m_p - at))) +
                                    L" names a character XML does not allow");
            return true;
        }
        const Ch* name = m_p;
        if (!Name() || !Is(';')) return Fail(at, L"a bare '&' (write &amp; for an ampersand)");
        const View entity(name, static_cast<std::size_t>(m_p - name));
        ++m_p;
        if (Equals(entity, "lt") || Equals(entity, "gt") || Equals(entity, "amp") || Equals(entity, "apos") ||
            Equals(entity, "quot"))
            return true;
        return Fail(at, L"undefined entity '&" + Shown(entity) + L";'");
    }

    // ---- markup ----

    bool Comment() {
        const Ch* at = m_p;
        m_p += 4;  // "<!--"
        for (;;) {
            if (m_end - m_p < 3) return Fail(at, L"comment is not closed");
            if (*m_p == '-' && m_p[1] == '-') {
                if (m_p[2] == '>') {
                    m_p += 3;
                    return true;
                }
                return Fail(m_p, L"'--' is not allowed inside a comment");
            }
            if (!Character()) return false;
        }
    }

    bool CData() {
        const Ch* at = m_p;
        m_p += 9;  // "<![CDATA["
        for (;;) {
            if (m_end - m_p < 3) return Fail(at, L"CDATA section is not closed");
            if (*m_p == ']' && m_p[1] == ']' && m_p[2] == '>') {
                m_p += 3;
                return true;
            }
            if (!Character()) return false;
        }
    }

    bool ProcessingInstruction() {
        const Ch* at = m_p;
        m_p += 2;  // "<?"
        const Ch* target = m_p;
        if (!Name()) return Fail(m_p, L"a processing instruction needs a target name");
        const View name(target, static_cast<std::size_t>(m_p - target));
        if (name.size() == 3 && (name[0] == 'x' || name[0] == 'X') && (name[1] == 'm' || name[1] == 'M') &&
            (name[2] == 'l' || name[2] == 'L'))
            return Fail(at, Equals(name, "xml") ? L"the XML declaration is allowed only at the very start of the document"
                                                : L"processing instruction target '" + Shown(name) + L"' is reserved");
        if (Starts("?>")) {
            m_p += 2;
            return true;
        }
        if (!SkipSpace()) return Fail(m_p, L"white space is needed after the processing instruction's target");
        for (;;) {
            if (m_end - m_p < 2) return Fail(at, L"processing instruction is not closed");
            if (Starts("?>")) {
                m_p += 2;
                return true;
            }
            if (!Character()) return false;
        }
    }

    bool Declaration() {
        m_p += 5;  // "<?xml"
        struct Pseudo {
            const char* name;
            bool required;
        };
        static const Pseudo order[] = {{"version", true}, {"encoding", false}, {"standalone", false}};
        for (const Pseudo& p : order) {
            const Ch* before = m_p;
            const bool space = SkipSpace();
            if (!space || !Starts(p.name)) {
                if (p.required) return Fail(m_p, L"the XML declaration must begin with version=\"1.0\"");
                m_p = before;
                continue;
            }
            m_p += std::char_traits<char>::length(p.name);
            SkipSpace();
            if (!Is('=')) return Fail(m_p, uc::Format(L"'=' expected after '%S' in the XML declaration", p.name));
            ++m_p;
            SkipSpace();
            const Ch* valueAt = m_p + 1;
            View value;
            if (!Quoted("a value in the XML declaration", value)) return false;
            bool ok = true;
            if (p.name[0] == 'v') {
                ok = value.size() >= 3 && value[0] == '1' && value[1] == '.';
                for (std::size_t i = 2; ok && i < value.size(); ++i) ok = value[i] >= '0' && value[i] <= '9';
            } else if (p.name[0] == 'e') {
                ok = !value.empty() && ((value[0] >= 'a' && value[0] <= 'z') || (value[0] >= 'A' && value[0] <= 'Z'));
                for (Ch c : value)
                    ok = ok && ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                                c == '.' || c == '_' || c == '-');
            } else {
                ok = Equals(value, "yes") || Equals(value, "no");
            }
            if (!ok) return Fail(valueAt, uc::Format(L"invalid %S in the XML declaration", p.name));
        }
        SkipSpace();
        if (!Starts("?>")) return Fail(m_p, AtEnd() ? L"the XML declaration is not closed" : L"unexpected text in the XML declaration");
        m_p += 2;
        return true;
    }

    // Skips one declaration of the internal subset up to its '>', stepping over quoted text.
    bool SkipMarkupDeclaration() {
        const Ch* at = m_p;
        m_p += 2;
        while (m_p < m_end && *m_p != '>') {
            if (*m_p == '"' || *m_p == '\'') {
                View ignored;
                if (!Quoted("a literal", ignored)) return false;
            } else if (!Character()) {
                return false;
            }
        }
        if (AtEnd()) return Fail(at, L"declaration in the DOCTYPE is not closed");
        ++m_p;
        return true;
    }

    bool Doctype() {
        const Ch* at = m_p;
        m_p += 9;  // "<!DOCTYPE"
        if (!SkipSpace() || !Name()) return Fail(m_p, L"the DOCTYPE needs the root element's name");
        const bool space = SkipSpace();
        if (space && (Starts("SYSTEM") || Starts("PUBLIC"))) {
            const bool pub = Starts("PUBLIC");
            m_p += 6;
            View literal;
            if (!SkipSpace()) return Fail(m_p, L"white space is needed after SYSTEM or PUBLIC");
            if (pub) {
                if (!Quoted("the public identifier", literal)) return false;
                if (!SkipSpace()) return Fail(m_p, L"white space is needed after the public identifier");
            }
            if (!Quoted("the system identifier", literal)) return false;
            SkipSpace();
        }
        if (Is('[')) {
            ++m_p;
            for (;;) {
                SkipSpace();
                if (AtEnd()) return Fail(at, L"the DOCTYPE's internal subset is not closed");
                if (Is(']')) {
                    ++m_p;
                    break;
                }
                if (Starts("<!--")) {
                    if (!Comment()) return false;
                } else if (Starts("<?")) {
                    if (!ProcessingInstruction()) return false;
                } else if (Starts("<!ENTITY")) {
                    return Fail(m_p, L"entity declarations are not supported");
                } else if (Starts("<!ATTLIST")) {
                    return Fail(m_p, L"attribute-list declarations are not supported");
                } else if (Starts("<!ELEMENT") || Starts("<!NOTATION")) {
                    if (!SkipMarkupDeclaration()) return false;
                } else if (Is('%')) {
                    ++m_p;
                    if (!Name() || !Is(';')) return Fail(m_p, L"malformed parameter-entity reference");
                    ++m_p;
                } else {
                    return Fail(m_p, L"unexpected text in the DOCTYPE's internal subset");
                }
            }
            SkipSpace();
        }
        if (!Is('>')) return Fail(m_p, L"'>' expected to end the DOCTYPE");
        ++m_p;
        return true;
    }

    // ---- elements ----

    bool AttributeValue(const Ch* attribute) {
        const Ch quote = *m_p++;
        while (m_p < m_end) {
            const Ch u = *m_p;
            if (Ascii(u) && (kAscii.of[static_cast<Unit>(u)] & kPlainValue)) {
                ++m_p;
                continue;
            }
            if (u == quote) {
                ++m_p;
                return true;
            }
            if (u == '<') return Fail(m_p, L"'<' is not allowed in an attribute value (write &lt;)");
            if (u == '&') {
                if (!Reference()) return false;
            } else if (!Character()) {
                return false;
            }
        }
        return Fail(attribute, L"attribute value is not closed");
    }

    bool Duplicate(View name) {
        if (m_attributes.size() < 16) {
            for (const auto& a : m_attributes)
                if (a.first == name) return true;
            return false;
        }
        if (m_attributeSet.empty())
            for (const auto& a : m_attributes) m_attributeSet.insert(a.first);
        return !m_attributeSet.insert(name).second;
    }

    // Prefix of a qualified name (empty for none); false when the name is not a valid qualified name.
    static bool Prefix(View name, View& prefix) {
        const std::size_t colon = name.find(static_cast<Ch>(':'));
        prefix = View();
        if (colon == View::npos) return true;
        if (colon == 0 || colon + 1 == name.size() || name.find(static_cast<Ch>(':'), colon + 1) != View::npos) return false;
        prefix = name.substr(0, colon);
        return true;
    }

    bool Bound(View prefix) const {
        if (prefix.empty() || Equals(prefix, "xml")) return true;
        auto it = m_bound.find(prefix);
        return it != m_bound.end() && it->second > 0;
    }

    void Unbind(std::size_t mark) {
        while (m_bindings.size() > mark) {
            --m_bound[m_bindings.back()];
            m_bindings.pop_back();
        }
    }

    bool CheckName(View name, const Ch* at, bool element) {
        View prefix;
        if (!Prefix(name, prefix)) return Fail(at, L"'" + Shown(name) + L"' is not a valid qualified name");
        if (element && Equals(prefix, "xmlns")) return Fail(at, L"the prefix 'xmlns' cannot name an element");
        if (!Equals(prefix, "xmlns") && !Bound(prefix))
            return Fail(at, L"undeclared namespace prefix '" + Shown(prefix) + L"'");
        return true;
    }

    // At '<' of a start tag; `empty` tells whether it closed itself.
    bool StartTag(bool& empty) {
        const Ch* at = m_p++;
        const Ch* nameAt = m_p;
        if (!Name()) return Fail(m_p, L"'<' must start a tag (write &lt; for a less-than sign)");
        const View name(nameAt, static_cast<std::size_t>(m_p - nameAt));
        const std::size_t mark = m_bindings.size();
        m_attributes.clear();
        if (!m_attributeSet.empty()) m_attributeSet = {};  // drops the buckets too: clearing costs their number
        for (;;) {
            const bool space = SkipSpace();
            if (AtEnd()) return Fail(at, L"start tag <" + Shown(name) + L"> is not closed");
            if (Is('>') || Starts("/>")) {
                empty = Is('/');
                m_p += empty ? 2 : 1;
                break;
            }
            if (!space) return Fail(m_p, L"white space is needed before an attribute");
            const Ch* attributeAt = m_p;
            if (!Name()) return Fail(m_p, L"an attribute name or the end of the tag is expected");
            const View attribute(attributeAt, static_cast<std::size_t>(m_p - attributeAt));
            SkipSpace();
            if (!Is('=')) return Fail(m_p, L"'=' expected after attribute '" + Shown(attribute) + L"'");
            ++m_p;
            SkipSpace();
            if (!Is('"') && !Is('\'')) return Fail(m_p, L"the value of attribute '" + Shown(attribute) + L"' must be quoted");
            const Ch* valueAt = m_p + 1;
            if (!AttributeValue(attributeAt)) return false;
            if (Duplicate(attribute)) return Fail(attributeAt, L"duplicate attribute '" + Shown(attribute) + L"'");
            m_attributes.emplace_back(attribute, attributeAt);
            if (attribute.size() > 6 && Equals(attribute.substr(0, 6), "xmlns:")) {
                const View prefix = attribute.substr(6);
                if (m_p - 1 == valueAt) return Fail(attributeAt, L"namespace prefix '" + Shown(prefix) + L"' is bound to nothing");
                m_bindings.push_back(prefix);
                ++m_bound[prefix];
            }
        }
        if (!CheckName(name, nameAt, true)) return false;
        for (const auto& a : m_attributes)
            if (!CheckName(a.first, a.second, false)) return false;
        if (empty)
            Unbind(mark);
        else
            m_open.push_back({name, at, mark});
        return true;
    }

    bool EndTag() {
        const Ch* at = m_p;
        m_p += 2;
        const Ch* nameAt = m_p;
        if (!Name()) return Fail(m_p, L"an element name is expected after '</'");
        const View name(nameAt, static_cast<std::size_t>(m_p - nameAt));
        SkipSpace();
        if (!Is('>')) return Fail(m_p, L"'>' expected to end </" + Shown(name) + L">");
        ++m_p;
        const Open& open = m_open.back();
        if (name != open.name)
            return Fail(at, L"end tag </" + Shown(name) + L"> does not match start tag <" + Shown(open.name) +
                                L"> of line " + std::to_wstring(LineOf(open.at)));
        Unbind(open.bindings);
        m_open.pop_back();
        return true;
    }

    bool Content() {
        while (!m_open.empty()) {
            while (m_p < m_end && *m_p != '<') {
                if (Ascii(*m_p) && (kAscii.of[static_cast<Unit>(*m_p)] & kPlainText)) {
                    ++m_p;
                } else if (*m_p == '&') {
                    if (!Reference()) return false;
                } else if (*m_p == ']' && m_end - m_p >= 3 && m_p[1] == ']' && m_p[2] == '>') {
                    return Fail(m_p, L"']]>' is not allowed in text");
                } else if (!Character()) {
                    return false;
                }
            }
            if (AtEnd()) return Fail(m_open.back().at, L"element <" + Shown(m_open.back().name) + L"> is not closed");
            bool empty = false;
            if (Starts("</")) {
                if (!EndTag()) return false;
            } else if (Starts("<!--")) {
                if (!Comment()) return false;
            } else if (Starts("<![CDATA[")) {
                if (!CData()) return false;
            } else if (Starts("<?")) {
                if (!ProcessingInstruction()) return false;
            } else if (Starts("<!")) {
                return Fail(m_p, L"unexpected markup in element content");
            } else if (!StartTag(empty)) {
                return false;
            }
        }
        return true;
    }

    // Comments, processing instructions and white space around the root element.
    enum class Misc { Done, Element, Fault };
    Misc Around(bool beforeRoot) {
        for (;;) {
            SkipSpace();
            if (AtEnd()) return Misc::Done;
            if (Starts("<!--")) {
                if (!Comment()) return Misc::Fault;
            } else if (Starts("<?")) {
                if (!ProcessingInstruction()) return Misc::Fault;
            } else if (beforeRoot && Starts("<!DOCTYPE")) {
                if (m_doctypeSeen) {
                    Fail(m_p, L"a document has only one DOCTYPE");
                    return Misc::Fault;
                }
                m_doctypeSeen = true;
                if (!Doctype()) return Misc::Fault;
            } else if (Is('<') && m_p + 1 < m_end && m_p[1] != '!' && m_p[1] != '/') {
                return Misc::Element;
            } else {
                Fail(m_p, beforeRoot ? (Is('<') ? L"unexpected markup before the root element" : L"text before the root element")
                                     : (Is('<') ? L"unexpected markup after the root element" : L"text after the root element"));
                return Misc::Fault;
            }
        }
    }

    bool Document() {
        if (sizeof(Ch) == 1 && m_end - m_p >= 3 && static_cast<Unit>(m_p[0]) == 0xEF && static_cast<Unit>(m_p[1]) == 0xBB &&
            static_cast<Unit>(m_p[2]) == 0xBF)
            m_p += 3;
        else if (sizeof(Ch) > 1 && m_p < m_end && static_cast<Unit>(*m_p) == 0xFEFF)
            ++m_p;
        m_text = m_p;
        if (Starts("<?xml") && m_p + 5 < m_end && IsSpace(static_cast<Unit>(m_p[5])) && !Declaration()) return false;
        switch (Around(true)) {
        case Misc::Fault: return false;
        case Misc::Done: return Fail(m_p, L"the document has no root element");
        case Misc::Element: break;
        }
        bool empty = false;
        if (!StartTag(empty) || !Content()) return false;
        switch (Around(false)) {
        case Misc::Fault: return false;
        case Misc::Done: return true;
        case Misc::Element: return Fail(m_p, L"a second root element: a document has exactly one root element");
        }
        return true;
    }

    const Ch* m_text = nullptr;  // after a byte-order mark: where lines and columns count from
    const Ch* m_p;
    const Ch* m_end;
    const Ch* m_faultAt = nullptr;
    std::wstring m_reason;
    bool m_doctypeSeen = false;
    std::vector<Open> m_open;
    std::vector<std::pair<View, const Ch*>> m_attributes;  // of the current start tag, with their positions
    std::unordered_set<View> m_attributeSet;                // the same, once there are many
    std::vector<View> m_bindings;                           // namespace prefixes declared, innermost last
    std::unordered_map<View, int> m_bound;                  // how many declarations of each prefix are in force
};

}  // namespace

bool CheckWellFormed(std::string_view utf8, Fault& fault) {
    return Checker<char>(utf8.data(), utf8.data() + utf8.size()).Run(fault);
}

bool CheckWellFormed(std::wstring_view text, Fault& fault) {
    return Checker<wchar_t>(text.data(), text.data() + text.size()).Run(fault);
}

Fault FaultAt(std::string_view utf8, std::size_t offset, std::wstring reason) {
    Fault fault;
    const char* text = utf8.data();
    if (utf8.size() >= 3 && utf8.compare(0, 3, "\xEF\xBB\xBF") == 0) text += 3;
    const char* at = utf8.data() + std::min(offset, utf8.size());
    Locate(text, at < text ? text : at, fault);
    fault.reason = std::move(reason);
    return fault;
}

}  // namespace uc::xml
