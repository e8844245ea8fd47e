// uctool "style": check a style file, render a gallery of its faces to PNG (Windows), normalise it in place.
#include <algorithm>
#include <map>
#include <memory>
#include <ostream>
#include <sstream>

#include "command.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "skin/style_repository.h"
#include "skin/shape_figure.h"
#include "style_tool.h"

#ifdef _WIN32
#include "platform/win/gdiplus_encoders.h"
#include "skin/win/gdiplus.h"
#endif

namespace uctool::style {

std::wstring HexColour(std::uint32_t argb) { return uc::Format(L"#%08X", argb); }

std::wstring ShapeName(int shape) {
    switch (shape) {
    case 1: return L"triangle left";
    case 2: return L"triangle right";
    case 3: return L"triangle up";
    case 4: return L"triangle down";
    case 5: return L"hexagon";
    case 6: return L"circle";
    case 7: return L"arrow tab";
    default: return L"rounded rectangle";
    }
}

std::wstring BrushSummary(const tButtonStyle& s) {
    switch (s.brushType) {
    case tButtonStyle::BrushSolid: return s.solidBrush.fill ? L"solid" : L"solid (no fill)";
    case tButtonStyle::BrushLinear: {
        const tLinearBrush& b = s.linearBrush;
        return uc::Format(L"linear rotate %d focus %s scale %s%s%s%s", uc::skin::TruncateToInt(b.rotate),
                          uc::FormatFixed(b.focus, 2).c_str(), uc::FormatFixed(b.scale, 2).c_str(),
                          b.shapeBell ? L" bell" : L"", b.shapeTriangle ? L" triangle" : L"", b.gamma ? L" gamma" : L"");
    }
    case tButtonStyle::BrushMultiStop: {
        const tMultiStopBrush& b = s.multiStopBrush;
        if (b.stops.empty())
            return uc::Format(L"multi-stop rotate %d, default ramp", uc::skin::TruncateToInt(b.rotate));
        std::wstring positions;
        for (const RibbonItem& r : b.stops) positions += (positions.empty() ? L"" : L",") + uc::FormatFixed(r.position, 2);
        return uc::Format(L"multi-stop rotate %d, %d stops at %s", uc::skin::TruncateToInt(b.rotate),
                          static_cast<int>(b.stops.size()), positions.c_str());
    }
    case tButtonStyle::BrushPath: {
        const tPathBrush& b = s.pathBrush;
        return uc::Format(L"path focus %s scale %s centre %s,%s%s%s", uc::FormatFixed(b.focus, 2).c_str(),
                          uc::FormatFixed(b.scale, 2).c_str(), uc::FormatFixed(b.focusx, 2).c_str(),
                          uc::FormatFixed(b.focusy, 2).c_str(), b.shapeBell ? L" bell" : L"",
                          b.shapeTriangle ? L" triangle" : L"");
    }
    default: return uc::Format(L"unknown brush %d (no face fill)", s.brushType);
    }
}

std::wstring DescribeStyle(const tButtonStyle& s, const std::vector<std::wstring>& chain, std::size_t more) {
    std::wostringstream o;
    o << L"style " << s.id << L" \"" << s.name << L"\"";
    if (!chain.empty()) {
        o << L"  derives from";
        for (const std::wstring& b : chain) o << L" <- \"" << b << L"\"";
        if (more) o << L" <- ... (" << more << L" more)";
    }
    o << L"\n  shape " << s.shape << L" (" << ShapeName(s.shape) << L")  radius " << uc::FormatFixed(s.radius, 2)
      << L"  border ratio " << uc::FormatFixed(s.borderRatio, 2) << L"\n";
    o << L"  font \"" << s.font.name << L"\" " << s.font.size << L"  shadowText " << s.shadowText << L"  scaleText "
      << s.scaleText << L"  icon location " << s.iconLocation << L"\n";
    o << L"  brush " << s.brushType << L": " << BrushSummary(s) << L"\n";
    o << L"  background " << HexColour(s.background) << L"\n";
    for (int i = 0; i < tButtonStyle::kNamedStates; ++i) {
        const ColorState& c = s.colours[i];
        o << L"  " << tButtonStyle::StateName(i) << L": face " << HexColour(c.facePrimary) << L" / "
          << HexColour(c.faceSecondary) << L"  border " << HexColour(c.border) << L"\n";
    }
    return o.str();
}

std::wstring DescribeProblem(const StyleLoadEntry& e) {
    const std::wstring who = uc::Format(L"element %d <%s> \"%s\" (id %d)", e.element, e.tag.c_str(), e.name.c_str(), e.id);
    switch (e.outcome) {
    case StyleLoadEntry::DuplicateId:
        return L"dropped " + who + uc::Format(L": id %d is already taken by an earlier element", e.id);
    case StyleLoadEntry::UnresolvedBase:
        return L"dropped " + who + L": base \"" + e.detail + L"\" names no <style> element";
    case StyleLoadEntry::BaseLoop:
        return L"dropped " + who + L": its base chain loops at \"" + e.detail + L"\"";
    case StyleLoadEntry::InvalidElement: return L"dropped " + who + L": not a readable element";
    case StyleLoadEntry::Loaded:
        if (e.tag != L"style") return L"note: " + who + L" is not a <style> element: loaded, but no style can derive from it";
        return L"";
    }
    return L"";
}

int DroppedCount(const StyleLoadReport& report) {
    return static_cast<int>(std::count_if(report.entries.begin(), report.entries.end(),
                                          [](const StyleLoadEntry& e) { return e.outcome != StyleLoadEntry::Loaded; }));
}

GalleryLayout::GalleryLayout(int styles, int faceWidth, int faceHeight)
    : faceWidth(std::max(8, faceWidth)), faceHeight(std::max(8, faceHeight)), rows(std::max(0, styles)) {
    cellWidth = this->faceWidth + 2 * kGap;
    cellHeight = std::max(this->faceHeight, 4 * kLineHeight + 4) + 2 * kGap;  // four label lines
    width = kLabelWidth + kStates * cellWidth + kGap;
    height = kHeaderHeight + rows * cellHeight + kGap;
}

int GalleryLayout::FaceX(int state) const { return kLabelWidth + state * cellWidth + kGap; }
int GalleryLayout::FaceY(int row) const { return kHeaderHeight + row * cellHeight + kGap; }

namespace {

constexpr std::size_t kShownBases = 8;

constexpr const wchar_t* kUsage =
    L"usage: uctool style check FILE [--strict]\n"
    L"       uctool style gallery FILE --out PNG [--size WxH] [--console-type N] [--left]\n"
    L"       uctool style normalise FILE [--out FILE]\n"
    L"\n"
    L"check      lists every style with its resolved values and base chain, and every element that was\n"
    L"           dropped and why; exit 1 when the file cannot be read or is not well-formed XML (its\n"
    L"           FILE:LINE:COLUMN is given), with --strict also when anything was dropped\n"
    L"gallery    draws every style in all five colour slots (enabled, disabled, clicked, pressed, slot 4)\n"
    L"           with the painting the buttons use, into one labelled PNG (Windows build)\n"
    L"normalise  reads the file and writes it back as the repository saves it (derived styles as\n"
    L"           differences from their base); dropped elements are lost and listed";

StyleRepository* LoadOrReport(const std::wstring& file, std::wostream& err) {
    StyleRepository* repo = StyleRepository::GetInstance();
    if (!repo->LoadFile(file)) {
        const StyleLoadReport& report = repo->GetLoadReport();
        // The place first, as compilers give it, so that editors can jump to it.
        if (report.errorLine > 0) err << file << L":" << report.errorLine << L":" << report.errorColumn << L": ";
        err << L"uctool style: cannot read \"" << file << L"\"" << (report.error.empty() ? L"" : L": " + report.error) << L"\n";
        return nullptr;
    }
    return repo;
}

void ListProblems(const StyleLoadReport& report, std::wostream& out) {
    for (const StyleLoadEntry& e : report.entries) {
        const std::wstring line = DescribeProblem(e);
        if (!line.empty()) out << line << L"\n";
    }
}

int Check(Args args, std::wostream& out, std::wostream& err) {
    const bool strict = TakeFlag(args, L"--strict");
    if (args.size() != 1) {
        err << kUsage << L"\n";
        return 2;
    }
    StyleRepository* repo = LoadOrReport(args[0], err);
    if (!repo) return 1;
    const StyleLoadReport& report = repo->GetLoadReport();
    std::map<int, const StyleLoadEntry*> byId;
    for (const StyleLoadEntry& e : report.entries)
        if (e.outcome == StyleLoadEntry::Loaded) byId.emplace(e.id, &e);
    for (const tButtonStyle* s : repo->GetAllStyles()) {
        auto it = byId.find(s->id);
        if (it == byId.end()) {
            out << DescribeStyle(*s, {});
            continue;
        }
        // However deep the chain, one line names its first few bases.
        const std::vector<std::wstring> chain = report.Chain(*it->second, kShownBases);
        out << DescribeStyle(*s, chain, it->second->depth - chain.size());
    }
    ListProblems(report, out);
    const int dropped = DroppedCount(report);
    out << uc::Format(L"%d elements, %d styles loaded, %d dropped\n", static_cast<int>(report.entries.size()),
                      static_cast<int>(repo->GetAllStyles().size()), dropped);
    return strict && dropped > 0 ? 1 : 0;
}

int Normalise(Args args, std::wostream& out, std::wostream& err) {
    std::wstring target;
    TakeOption(args, L"--out", target);
    if (args.size() != 1) {
        err << kUsage << L"\n";
        return 2;
    }
    StyleRepository* repo = LoadOrReport(args[0], err);
    if (!repo) return 1;
    if (target.empty()) target = args[0];
    ListProblems(repo->GetLoadReport(), out);
    if (!repo->SaveFile(target)) {
        err << L"uctool style: cannot write \"" << target << L"\"\n";
        return 1;
    }
    out << uc::Format(L"wrote %d styles to %s\n", static_cast<int>(repo->GetAllStyles().size()), target.c_str());
    return 0;
}

#ifdef _WIN32
using namespace Gdiplus;

bool SavePng(Bitmap& bitmap, const std::wstring& path) { return uc::SaveImage(bitmap, path, L"image/png"); }

// A GDI+ font of the face name, else of the first installed stand-in (a Wine prefix may have no Tahoma).
std::unique_ptr<Font> MakeFont(const std::wstring& face, REAL pixels, INT style) {
    for (const wchar_t* name : {face.c_str(), L"Tahoma", L"Liberation Sans", L"DejaVu Sans", L"Arial"}) {
        auto font = std::make_unique<Font>(name, pixels, style, UnitPixel);
        if (font->GetLastStatus() == Ok) return font;
    }
    return std::make_unique<Font>(FontFamily::GenericSansSerif(), pixels, style, UnitPixel);
}

int RenderGallery(StyleRepository& repo, const std::wstring& target, int fw, int fh, std::wostream& out,
                  std::wostream& err) {
    ULONG_PTR token = 0;
    GdiplusStartupInput input;
    if (GdiplusStartup(&token, &input, nullptr) != Ok) {
        err << L"uctool style: GDI+ did not start\n";
        return 1;
    }
    int rc = 0;
    {
        const std::vector<const tButtonStyle*> styles = repo.GetAllStyles();
        const GalleryLayout layout(static_cast<int>(styles.size()), fw, fh);
        Bitmap canvas(layout.width, layout.height, PixelFormat32bppARGB);
        Graphics g(&canvas);
        g.SetSmoothingMode(SmoothingModeAntiAlias);
        g.SetTextRenderingHint(TextRenderingHintAntiAliasGridFit);
        g.Clear(Color(255, 236, 238, 242));
        SolidBrush ink(Color(255, 30, 30, 30));
        SolidBrush faint(Color(255, 90, 90, 100));
        const auto labelFont = MakeFont(L"Tahoma", 12, FontStyleRegular);
        const auto boldFont = MakeFont(L"Tahoma", 13, FontStyleBold);

        static const wchar_t* const headers[GalleryLayout::kStates] = {L"enabled", L"disabled", L"clicked", L"pressed",
                                                                       L"slot 4"};
        for (int s = 0; s < GalleryLayout::kStates; ++s)
            g.DrawString(headers[s], -1, boldFont.get(),
                         PointF(static_cast<REAL>(layout.FaceX(s)), static_cast<REAL>(GalleryLayout::kGap)), &ink);
        g.DrawString(L"style", -1, boldFont.get(), PointF(GalleryLayout::kGap, GalleryLayout::kGap), &ink);

        for (int row = 0; row < layout.rows; ++row) {
            const tButtonStyle& st = *styles[row];
            const int y = layout.FaceY(row);
            const std::wstring title = uc::Format(L"%d  %s", st.id, st.name.c_str());
            const std::wstring detail = ShapeName(st.shape) + L", " + BrushSummary(st);
            const std::wstring base = st.basename.empty() ? L"" : L"from \"" + st.basename + L"\"";
            RectF box(GalleryLayout::kGap, static_cast<REAL>(y), GalleryLayout::kLabelWidth - 2 * GalleryLayout::kGap,
                      static_cast<REAL>(layout.cellHeight - GalleryLayout::kGap));
            g.DrawString(title.c_str(), -1, boldFont.get(), box, nullptr, &ink);
            box.Y += GalleryLayout::kLineHeight + 2;
            box.Height -= GalleryLayout::kLineHeight + 2;
            g.DrawString((detail + (base.empty() ? L"" : L"\n" + base)).c_str(), -1, labelFont.get(), box, nullptr, &faint);

            const auto caption = MakeFont(st.font.name, static_cast<REAL>(std::clamp(std::abs(st.font.size), 6, 60)),
                                          FontStyleBold);
            StringFormat centred;
            centred.SetAlignment(StringAlignmentCenter);
            centred.SetLineAlignment(StringAlignmentCenter);
            for (int state = 0; state < GalleryLayout::kStates; ++state) {
                // A mid-grey backdrop so that light and dark captions and translucent faces all show.
                SolidBrush backdrop(Color(255, 172, 178, 188));
                g.FillRectangle(&backdrop, layout.FaceX(state) - 4, y - 4, layout.faceWidth + 8, layout.faceHeight + 8);
                g.TranslateTransform(static_cast<REAL>(layout.FaceX(state)), static_cast<REAL>(y));
                st.DrawFace(g, Rect(0, 0, layout.faceWidth, layout.faceHeight), state);
                SolidBrush text(Color(st.colours[state].textColour));
                g.DrawString(st.name.c_str(), -1, caption.get(),
                             RectF(0, 0, static_cast<REAL>(layout.faceWidth), static_cast<REAL>(layout.faceHeight)),
                             &centred, &text);
                g.ResetTransform();
            }
        }
        if (!SavePng(canvas, target)) {
            err << L"uctool style: cannot write \"" << target << L"\"\n";
            rc = 1;
        } else {
            out << uc::Format(L"drew %d styles in 5 states (%dx%d faces) to %s\n", layout.rows, layout.faceWidth,
                              layout.faceHeight, target.c_str());
        }
    }
    GdiplusShutdown(token);
    return rc;
}
#endif

int Gallery(Args args, std::wostream& out, std::wostream& err) {
    std::wstring target, size, console;
    TakeOption(args, L"--out", target);
    TakeOption(args, L"--size", size);
    TakeOption(args, L"--console-type", console);
    const bool left = TakeFlag(args, L"--left");
    int fw = 150, fh = 56, consoleType = 0;
    if (args.size() != 1 || target.empty() || (!size.empty() && !ParseSize(size, fw, fh)) ||
        (!console.empty() && !uc::ParseInt(console, consoleType))) {
        err << kUsage << L"\n";
        return 2;
    }
    StyleRepository* repo = LoadOrReport(args[0], err);
    if (!repo) return 1;
    ListProblems(repo->GetLoadReport(), out);
#ifdef _WIN32
    utilsExam::m_consoleType = consoleType;
    utilsExam::SetLayoutLeft(left);
    return RenderGallery(*repo, target, fw, fh, out, err);
#else
    (void)left;
    err << L"uctool style: the gallery is drawn with GDI+; run the Windows build (scripts/gallery.sh does)\n";
    return 1;
#endif
}

int Run(const Args& all, std::wostream& out, std::wostream& err) {
    if (all.empty()) {
        err << kUsage << L"\n";
        return 2;
    }
    Args rest(all.begin() + 1, all.end());
    if (all[0] == L"check") return Check(rest, out, err);
    if (all[0] == L"gallery") return Gallery(rest, out, err);
    if (all[0] == L"normalise" || all[0] == L"normalize") return Normalise(rest, out, err);
    err << L"uctool style: unknown action '" << all[0] << L"'\n" << kUsage << L"\n";
    return 2;
}

const bool registered = Register({L"style", L"check, draw (gallery PNG) or normalise a button style file", kUsage, Run});

}  // namespace
}  // namespace uctool::style
