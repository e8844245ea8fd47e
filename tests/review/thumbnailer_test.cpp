// CThumbNailer's research vocabulary, extension rules and routes (portable).
#include <gtest/gtest.h>

#include "platform/paths.h"
#include "review/thumbnailer.h"

namespace {

struct Case {
    const wchar_t* path;
    bool research;
    const wchar_t* researchExtension;
    ThumbnailRoute route;
};

const Case kCases[] = {
    {L"C:\\data\\scan.B32", true, L"B32", ThumbnailRoute::Placeholder},
    {L"notes.m", true, L"M", ThumbnailRoute::Placeholder},
    {L"image.mpeg", false, L"MPEG", ThumbnailRoute::Direct},  // ".m" must match the whole extension
    {L"x.rf", true, L"RF", ThumbnailRoute::Placeholder},
    {L"x.rfx", false, L"RFX", ThumbnailRoute::Direct},
    {L"trace.ECG", true, L"ECG", ThumbnailRoute::Placeholder},
    {L"a.b.elo", true, L"ELO", ThumbnailRoute::Placeholder},
    {L"a.elo.jpg", false, L"JPG", ThumbnailRoute::Direct},  // only the last dot counts
    {L"volume.VOL", false, L"VOL", ThumbnailRoute::RawCopy},
    {L"d:/exam/frame.raw", false, L"RAW", ThumbnailRoute::RawCopy},
    {L"frame.raw.png", false, L"PNG", ThumbnailRoute::Direct},
    {L"raw", false, L"RAW", ThumbnailRoute::Direct},  // no dot: the whole path, which matches nothing
    {L"C:\\vol\\m", false, L"C:\\VOL\\M", ThumbnailRoute::Direct},
    {L"C:\\dir.vol\\picture", false, L"VOL\\PICTURE", ThumbnailRoute::Direct},
    {L"", false, L"", ThumbnailRoute::Direct},
    {L".", false, L"", ThumbnailRoute::Direct},
};

TEST(ThumbNailer, ResearchFilesExtensionsAndRoutes) {
    for (const Case& c : kCases) {
        EXPECT_EQ(CThumbNailer::IsResearchFile(c.path), c.research) << c.path;
        EXPECT_EQ(CThumbNailer::GetResearchExtension(c.path), c.researchExtension) << c.path;
        EXPECT_EQ(CThumbNailer::Route(c.path), c.route) << c.path;
    }
}

TEST(ThumbNailer, EveryResearchExtensionInAnyCase) {
    for (const wchar_t* ext : {L".rf", L".bpr", L".b8", L".b32", L".mpr", L".m", L".drf", L".pw", L".crf", L".col",
                               L".cvv", L".ecg", L".el", L".elo", L".epr"}) {
        std::wstring upper = ext;
        for (wchar_t& ch : upper) ch = static_cast<wchar_t>(towupper(ch));
        EXPECT_TRUE(CThumbNailer::IsResearchFile(std::wstring(L"f") + ext)) << ext;
        EXPECT_TRUE(CThumbNailer::IsResearchFile(L"f" + upper)) << upper;
    }
    for (const wchar_t* almost : {L"f.b", L"f.b16", L"f.e", L"f.ecgx", L"f.rf ", L"f.col.bak"})
        EXPECT_FALSE(CThumbNailer::IsResearchFile(almost)) << almost;
}

TEST(ThumbNailer, CopiesAndPlaceholderAreNamedAsTheConsoleExpects) {
    EXPECT_EQ(CThumbNailer::RawCopyPath(L"C:\\exam\\volume.VOL"), L"C:\\exam\\volume.VOL.png");
    zelPath::setPath(zelPath::Images, L"/skin/images");
    EXPECT_EQ(CThumbNailer::PlaceholderPath(), uc::JoinPath(L"/skin/images", L"misc/matlab.png"));
    zelPath::reset();
}

}  // namespace
