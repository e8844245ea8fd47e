// CThumbNailer's research vocabulary, extension rules and routes (portable).
#include <gtest/gtest.h>

#include "review/thumbnailer.h"

namespace {

struct Case {
    const wchar_t* path;
    const wchar_t* researchExtension;
    ThumbnailRoute route;  // Placeholder exactly for research files
};

const Case kCases[] = {
    {L"C:\\data\\scan.B32", L"B32", ThumbnailRoute::Placeholder},
    {L"notes.m", L"M", ThumbnailRoute::Placeholder},
    {L"image.mpeg", L"MPEG", ThumbnailRoute::Direct},  // ".m" must match the whole extension
    {L"x.rf ", L"RF ", ThumbnailRoute::Direct},
    {L"trace.ECG", L"ECG", ThumbnailRoute::Placeholder},
    {L"a.b.elo", L"ELO", ThumbnailRoute::Placeholder},
    {L"a.elo.jpg", L"JPG", ThumbnailRoute::Direct},  // only the last dot counts
    {L"volume.VOL", L"VOL", ThumbnailRoute::RawCopy},
    {L"d:/exam/a.b.raw", L"RAW", ThumbnailRoute::RawCopy},
    {L"frame.raw.png", L"PNG", ThumbnailRoute::Direct},
    {L"raw", L"RAW", ThumbnailRoute::Direct},  // no dot: the whole path, which matches nothing
    {L"C:\\dir.vol\\picture", L"VOL\\PICTURE", ThumbnailRoute::Direct},
    {L"", L"", ThumbnailRoute::Direct},
};

TEST(ThumbNailer, ResearchFilesExtensionsAndRoutes) {
    for (const Case& c : kCases) {
        EXPECT_EQ(CThumbNailer::IsResearchFile(c.path), c.route == ThumbnailRoute::Placeholder) << c.path;
        EXPECT_EQ(CThumbNailer::GetResearchExtension(c.path), c.researchExtension) << c.path;
        EXPECT_EQ(CThumbNailer::Route(c.path), c.route) << c.path;
    }
    for (const wchar_t* ext : {L"RF", L"bpr", L"B8", L"b32", L"Mpr", L"m", L"DRF", L"pw", L"crf", L"COL", L"cvv", L"ecg",
                               L"el", L"Elo", L"epr"})
        EXPECT_TRUE(CThumbNailer::IsResearchFile(std::wstring(L"d.") + ext)) << ext;
}

}  // namespace
