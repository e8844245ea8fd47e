// Painting one round button as a ratio to the bare GDI+ fill of its face path with the same brush, measured
// interleaved in one run (a plain timing loop; Google Benchmark is not built for MinGW): a first paint of a
// look (face, border, caption, off-screen copy) and a repaint of a look painted before. Run under Wine:
//   scripts/wine-run.sh build/win64/benchmarks/win/round_button_paint_bench.exe [ROUNDS] [WIDTHxHEIGHT]
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cwchar>

#include "../support/run_marker.h"
#include "platform/win/handles.h"
#include "skin/button_style.h"
#include "skin/win/font_repository.h"
#include "skin/win/round_button_paint.h"

using namespace Gdiplus;

namespace {
using Clock = std::chrono::steady_clock;
double Seconds(Clock::time_point a, Clock::time_point b) { return std::chrono::duration<double>(b - a).count(); }

// The console's common look: a linear gradient on a rounded rectangle with a caption.
tButtonStyle BenchStyle() {
    tButtonStyle s;
    s.shape = 0;
    s.radius = 18;
    s.borderRatio = 0.12;
    s.brushType = tButtonStyle::BrushLinear;
    s.linearBrush.rotate = 90;
    s.linearBrush.focus = 0.5f;
    s.linearBrush.scale = 0.5f;
    s.linearBrush.gamma = 1;
    s.colours[0].facePrimary = 0xFF286EC8;
    s.colours[0].faceSecondary = 0xFFA0CDFA;
    s.colours[0].border = 0xFF14326E;
    s.background = 0xFF3C404C;
    return s;
}
}  // namespace

int main(int argc, char** argv) {
    uc::bench::WriteRunMarker();
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 5;
    int width = 160, height = 60;
    if (argc > 2 && std::sscanf(argv[2], "%dx%d", &width, &height) != 2) width = 0;
    if (rounds < 1 || width < 1 || height < 1) {
        std::fprintf(stderr, "usage: round_button_paint_bench [ROUNDS >= 1] [WIDTHxHEIGHT]\n");
        return 2;
    }
    ULONG_PTR token = 0;
    GdiplusStartupInput input;
    if (GdiplusStartup(&token, &input, nullptr) != Ok) return 1;
    {
        // The parent's back buffer: a 32-bit DIB in a memory DC.
        uc::UniqueHdc dc(::CreateCompatibleDC(nullptr));
        BITMAPINFO info{};
        info.bmiHeader = {sizeof(BITMAPINFOHEADER), width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
        void* bits = nullptr;
        uc::UniqueHBitmap dib(::CreateDIBSection(dc.get(), &info, DIB_RGB_COLORS, &bits, nullptr, 0));
        uc::SelectObjectGuard selected(dc.get(), dib.get());

        const tButtonStyle style = BenchStyle();
        uc::skin::RoundButtonLook look;
        look.style = &style;
        look.caption = L"Freeze";
        look.font = FontRepository::GetFont(style.font)->GetSafeHandle();
        look.type = uc::skin::PushButton;
        uc::skin::RoundButtonPainter painter;

        // The bare fill: the same face path and the same gradient brush, built once.
        GraphicsPath path;
        tButtonStyle::GeneratePath(path, Rect(0, 0, width, height), style.shape, static_cast<int>(style.radius), 1);
        LinearGradientBrush brush(Rect(0, 0, width, height), Color(style.colours[0].facePrimary),
                                  Color(style.colours[0].faceSecondary), style.linearBrush.rotate, TRUE);
        brush.SetWrapMode(WrapModeTile);
        REAL factors[3] = {0, style.linearBrush.focus, 1}, positions[3] = {0, style.linearBrush.scale, 1};
        brush.SetBlend(factors, positions, 3);
        brush.SetGammaCorrection(TRUE);
        auto bareFill = [&] {
            Graphics g(dc.get());
            g.SetSmoothingMode(SmoothingModeAntiAlias);
            g.FillPath(&brush, &path);
        };

        const int paints = 2000;
        for (int i = 0; i < 50; ++i) {  // warm caches on both sides
            bareFill();
            painter.Draw(dc.get(), width, height, look);
        }
        // Three face states in turn: more looks than the painter keeps, so every paint draws.
        const int states[3] = {0, 3, 2};
        double bare = 0, first = 0, again = 0, face = 0;  // face: the style's DrawFace alone (fill and border)
        unsigned long drawn = 0;
        for (int r = 0; r < rounds; ++r) {
            const auto t0 = Clock::now();
            for (int i = 0; i < paints; ++i) bareFill();
            const auto t1 = Clock::now();
            painter.Invalidate();
            const unsigned long before = painter.PaintsDrawn();
            for (int i = 0; i < paints; ++i) {
                look.faceState = states[i % 3];
                painter.Draw(dc.get(), width, height, look);
            }
            drawn += painter.PaintsDrawn() - before;
            const auto t2 = Clock::now();
            look.faceState = 0;
            for (int i = 0; i < paints; ++i) painter.Draw(dc.get(), width, height, look);
            const auto t3 = Clock::now();
            for (int i = 0; i < paints; ++i) {
                Graphics g(dc.get());
                g.SetSmoothingMode(SmoothingModeAntiAlias);
                style.DrawFace(g, Rect(0, 0, width, height), 0);
            }
            const auto t4 = Clock::now();
            face += Seconds(t3, t4);
            bare += Seconds(t0, t1);
            first += Seconds(t1, t2);
            again += Seconds(t2, t3);
            std::printf("round %d: bare fill %.1f us, style's face %.1f us, first paint %.1f us, repaint %.1f us\n", r,
                        Seconds(t0, t1) * 1e6 / paints, Seconds(t3, t4) * 1e6 / paints, Seconds(t1, t2) * 1e6 / paints,
                        Seconds(t2, t3) * 1e6 / paints);
        }
        if (drawn != static_cast<unsigned long>(rounds) * paints) {
            std::fprintf(stderr, "first paints were served from kept images (%lu drawn)\n", drawn);
            return 1;
        }
        std::printf("over the bare fill: first paint %.2f, repaint %.2f, the style's face alone %.2f "
                    "(%dx%d, %d rounds of %d paints)\n",
                    first / bare, again / bare, face / bare, width, height, rounds, paints);
        FontRepository::Destroy();
    }
    GdiplusShutdown(token);
    return 0;
}
