// Fuzzes the XML back-end through the node interface: any bytes must load or fail cleanly, and walking works. The
// strict check and the parser agree: whatever the check accepts (as bytes and as wide text) loads, and a refused
// document's fault has a position and a reason.
#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/text.h"
#include "platform/xml.h"
#include "platform/xml_text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const std::wstring text = uc::FromUtf8(bytes);
    uc::xml::Fault fault;
    const bool wellFormed = uc::xml::CheckWellFormed(bytes, fault);
    if (!wellFormed && (fault.line == 0 || fault.column == 0 || fault.reason.empty())) __builtin_trap();
    uc::xml::Fault wideFault;
    if (wellFormed && !uc::xml::CheckWellFormed(text, wideFault)) __builtin_trap();
    zelXMLFile file;
    const bool loaded = file.loadXML(text);
    if (wellFormed && !loaded) __builtin_trap();
    if (!loaded) return 0;
    int budget = 10000;
    zelXMLNode stack[32];
    int depth = 0;
    stack[0] = file.getRootElement();
    while (depth >= 0 && budget-- > 0) {
        zelXMLNode& n = stack[depth];
        if (!n.isValid()) {
            --depth;
            if (depth >= 0) ++stack[depth];
            continue;
        }
        int v = 0;
        n.getAttributeInt(L"id", v);
        (void)n.getAttributeDouble(L"position", 0.0);
        (void)n.getName();
        if (depth + 1 < 32) {
            stack[depth + 1] = n.getFirstChild();
            ++depth;
        } else {
            ++n;
        }
    }
    (void)file.findElementByAttribute(L"style", L"name", L"a");
    (void)file.getXML();
    return 0;
}
