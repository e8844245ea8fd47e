// CThumbNailer: the research vocabulary, the extension rules and the route each file takes.
#include "review/thumbnailer.h"

#include <cwctype>

#include "platform/paths.h"

namespace {

const wchar_t* const kResearchExtensions[] = {L".rf", L".bpr", L".b8", L".b32", L".mpr", L".m",  L".drf", L".pw",
                                              L".crf", L".col", L".cvv", L".ecg", L".el",  L".elo", L".epr"};

std::wstring Lower(std::wstring text) {
    for (wchar_t& c : text) c = static_cast<wchar_t>(std::towlower(c));
    return text;
}

// From the last '.' to the end, dot included; the whole path when there is no dot.
std::wstring FromLastDot(const std::wstring& path) {
    const std::size_t dot = path.rfind(L'.');
    return dot == std::wstring::npos ? path : path.substr(dot);
}

// After the last '.', dot excluded; the whole path when there is no dot.
std::wstring AfterLastDot(const std::wstring& path) {
    const std::size_t dot = path.rfind(L'.');
    return dot == std::wstring::npos ? path : path.substr(dot + 1);
}

}  // namespace

bool CThumbNailer::IsResearchFile(const std::wstring& path) {
    const std::wstring ext = Lower(FromLastDot(path));
    for (const wchar_t* research : kResearchExtensions)
        if (ext == research) return true;
    return false;
}

std::wstring CThumbNailer::GetResearchExtension(const std::wstring& path) {
    std::wstring ext = FromLastDot(path);
    if (!ext.empty() && ext[0] == L'.') ext.erase(0, 1);
    for (wchar_t& c : ext) c = static_cast<wchar_t>(std::towupper(c));
    return ext;
}

ThumbnailRoute CThumbNailer::Route(const std::wstring& path) {
    if (IsResearchFile(path)) return ThumbnailRoute::Placeholder;
    // Without a dot the rule yields the whole path, which is meant to match nothing (a file named "raw" too).
    if (path.find(L'.') == std::wstring::npos) return ThumbnailRoute::Direct;
    const std::wstring ext = Lower(AfterLastDot(path));
    return ext == L"vol" || ext == L"raw" ? ThumbnailRoute::RawCopy : ThumbnailRoute::Direct;
}

std::wstring CThumbNailer::RawCopyPath(const std::wstring& path) { return path + L".png"; }

std::wstring CThumbNailer::PlaceholderPath() { return utilsExam::GetImage(L"misc/matlab.png"); }
