// XML text services shared by both XML back-ends: encoding detection and decoding, the XML declaration, and the
// strict well-formedness check that makes both refuse the same documents.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace uc::xml {

enum class Encoding { Utf8, Utf16Le, Utf16Be, Utf32Le, Utf32Be, Latin1 };

// The encoding of a document's bytes: byte-order marks, BOM-less UTF-16/32 from the leading '<', ISO-8859-1 when
// the declaration names it, UTF-8 otherwise.
Encoding DetectEncoding(std::string_view bytes);
// The bytes as text (a byte-order mark dropped); invalid sequences become U+FFFD.
std::wstring DecodeText(std::string_view bytes, Encoding encoding);

using Pairs = std::vector<std::pair<std::wstring, std::wstring>>;
// Pseudo-attributes of a leading "<?xml ...?>"; false when the text does not start with one.
bool ParseDeclaration(const std::wstring& text, Pairs& out);
// True when the declaration's encoding names UTF-16.
bool DeclaresUtf16(const Pairs& declaration);

// Where and why a document is not well-formed. Lines and columns count from 1; a column counts characters.
struct Fault {
    std::size_t line = 0;
    std::size_t column = 0;
    std::wstring reason;
};

// True when `text` is one well-formed XML 1.0 document as this library reads it: one root element, nothing but
// comments, processing instructions and white space around it, unique attribute names, only the five predefined
// entities and valid character references, no '<' in attribute values, valid characters and names, bound
// namespace prefixes. A DOCTYPE may name an external DTD and declare elements and notations; entity and
// attribute-list declarations are refused, since the native back-end could not apply them. A leading byte-order
// mark is skipped. The UTF-8 form also refuses invalid byte sequences. Linear in the length of the text.
bool CheckWellFormed(std::string_view utf8, Fault& fault);
bool CheckWellFormed(std::wstring_view text, Fault& fault);
// Line and column of byte `offset` of UTF-8 text, for faults reported by a parser as offsets.
Fault FaultAt(std::string_view utf8, std::size_t offset, std::wstring reason);

}  // namespace uc::xml
