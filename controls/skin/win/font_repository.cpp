// FontRepository and the CFont it hands out.
#include "skin/win/font_repository.h"

#include <cwchar>
#include <map>
#include <memory>

BOOL CFont::CreateFontIndirect(const LOGFONTW* logFont) {
    if (!logFont) return FALSE;
    return Attach(::CreateFontIndirectW(logFont));
}

BOOL CFont::Attach(HFONT font) {
    m_font.reset(font);
    return font != nullptr;
}

BOOL CFont::DeleteObject() {
    const bool had = m_font.valid();
    m_font.reset();
    return had;
}

int CFont::GetLogFont(LOGFONTW* logFont) const {
    if (!m_font || !logFont) return 0;
    return ::GetObjectW(m_font.get(), sizeof(LOGFONTW), logFont);
}

namespace {
// Ordered by FontDescriptor::operator<: size first, then the face name, case-sensitive.
std::map<FontDescriptor, std::unique_ptr<CFont>>& Fonts() {
    static std::map<FontDescriptor, std::unique_ptr<CFont>> fonts;
    return fonts;
}
}  // namespace

LOGFONTW FontRepository::MakeLogFont(const FontDescriptor& font) {
    LOGFONTW lf{};
    lf.lfHeight = font.size;  // negative: character height rather than cell height
    lf.lfWidth = 0;
    lf.lfEscapement = 0;
    lf.lfOrientation = 0;
    lf.lfWeight = FW_BOLD;
    lf.lfItalic = 0;
    lf.lfUnderline = 0;
    lf.lfStrikeOut = 0;
    lf.lfCharSet = DEFAULT_CHARSET;
    lf.lfOutPrecision = OUT_DEFAULT_PRECIS;
    lf.lfClipPrecision = CLIP_DEFAULT_PRECIS;
    lf.lfQuality = ANTIALIASED_QUALITY;
    lf.lfPitchAndFamily = 0;
    const std::size_t room = LF_FACESIZE - 1;  // 31 characters and the terminator
    const std::size_t n = font.name.size() < room ? font.name.size() : room;
    std::wmemcpy(lf.lfFaceName, font.name.data(), n);
    lf.lfFaceName[n] = L'\0';
    return lf;
}

CFont* FontRepository::GetFont(const FontDescriptor& font) {
    auto& fonts = Fonts();
    if (auto it = fonts.find(font); it != fonts.end()) return it->second.get();
    auto created = std::make_unique<CFont>();
    const LOGFONTW lf = MakeLogFont(font);
    created->CreateFontIndirect(&lf);  // a failure is cached too
    CFont* result = created.get();
    fonts.emplace(font, std::move(created));
    return result;
}

void FontRepository::Destroy() { Fonts().clear(); }

std::size_t FontRepository::CachedCount() { return Fonts().size(); }
