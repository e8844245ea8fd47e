// Fuzzes the XML back-end through the node interface: any bytes must load or fail cleanly, and walking works.
#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/text.h"
#include "platform/xml.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    zelXMLFile file;
    if (!file.loadXML(uc::FromUtf8(std::string(reinterpret_cast<const char*>(data), size)))) return 0;
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
