// Opening a console dialog with 100 round buttons, as a ratio to the same dialog with 100 plain buttons, measured
// interleaved in one run: each open creates the dialog, subclasses and styles its buttons, shows and paints it
// once, and closes it. A plain timing program (Google Benchmark is not built for MinGW). Run under Wine:
//   scripts/wine-run.sh build/win64/benchmarks/win/dialog_open_timing.exe [ROUNDS] [OPENS]
#include <windows.h>

#include <chrono>
#include <cstdio>
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <vector>

#include "../support/run_marker.h"
#include "dialogs/win/custom_dialog.h"
#include "skin/button_style.h"
#include "skin/win/font_repository.h"
#include "platform/win/gdiplus_encoders.h"
#include "skin/win/round_button.h"
#include "ui/win/dialog.h"

namespace {
using Clock = std::chrono::steady_clock;
constexpr int kButtons = 100;
constexpr WORD kFirstId = 2000;
constexpr UINT kPainted = WM_APP + 600;

std::vector<WORD> Template() {
    uc::ui::DialogTemplate t(WS_POPUP | WS_CAPTION | DS_MODALFRAME, 0, 0, 0, 420, 260, L"100 buttons");
    for (int i = 0; i < kButtons; ++i) {
        const short x = static_cast<short>(10 + (i % 10) * 40), y = static_cast<short>(30 + (i / 10) * 22);
        t.Add(L"BUTTON", L"Gain", static_cast<WORD>(kFirstId + i), WS_CHILD | WS_VISIBLE | WS_TABSTOP, x, y, 36, 18);
    }
    return t.Words();
}

tButtonStyle Style() {
    tButtonStyle s;
    s.radius = 8;
    s.brushType = tButtonStyle::BrushLinear;
    s.linearBrush.rotate = 90;
    s.colours[0].facePrimary = 0xFF286EC8;
    s.colours[0].faceSecondary = 0xFFA0CDFA;
    s.colours[0].border = 0xFF14326E;
    return s;
}

// A console dialog that closes itself once it has shown and painted; with `round`, its buttons are round buttons.
class Bench : public CCustomDialog {
public:
    Bench(const std::vector<WORD>& words, const tButtonStyle* round) : m_round(round) {
        SetTemplate(words);
        m_title = L"Dialog with 100 buttons";
    }

protected:
    BOOL OnInitDialog() override {
        CCustomDialog::OnInitDialog();
        if (m_round) {
            for (int i = 0; i < kButtons; ++i) {
                auto b = std::make_unique<CRoundButton2>();
                b->SubclassDlgItem(kFirstId + i, m_hWnd);
                b->LoadStyle(m_round);
                m_buttons.push_back(std::move(b));
            }
        }
        Post(kPainted);
        return TRUE;
    }
    LRESULT WindowProc(UINT msg, WPARAM wp, LPARAM lp) override {
        if (msg != kPainted) return CCustomDialog::WindowProc(msg, wp, lp);
        ::ShowWindow(m_hWnd, SW_SHOW);
        ::UpdateWindow(m_hWnd);  // the dialog and all its buttons paint before it closes
        EndDialog(IDOK);
        return 0;
    }

private:
    const tButtonStyle* m_round;
    std::vector<std::unique_ptr<CRoundButton2>> m_buttons;
};

double Open(const std::vector<WORD>& words, const tButtonStyle* round, int opens) {
    const auto t0 = Clock::now();
    for (int i = 0; i < opens; ++i) {
        Bench d(words, round);
        if (d.DoModal() != IDOK) return -1;
    }
    return std::chrono::duration<double>(Clock::now() - t0).count() / opens;
}
}  // namespace

int main(int argc, char** argv) {
    uc::bench::WriteRunMarker();
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 5;
    const int opens = argc > 2 ? std::atoi(argv[2]) : 20;
    if (rounds < 1 || opens < 1) {
        std::fprintf(stderr, "usage: dialog_open_timing [ROUNDS >= 1] [OPENS >= 1]\n");
        return 2;
    }
    uc::GdiplusSession gdiplus;
    if (!gdiplus.ok()) return 1;
    const std::vector<WORD> words = Template();
    const tButtonStyle style = Style();
    Open(words, &style, 2);  // warm caches: classes, fonts, GDI+
    Open(words, nullptr, 2);
    double plain = 0, round = 0;
    std::vector<double> ratios;  // per round: a round disturbed by other work on the machine moves the median little
    for (int r = 0; r < rounds; ++r) {
        const double p = Open(words, nullptr, opens), q = Open(words, &style, opens);
        if (p < 0 || q < 0) {
            std::fprintf(stderr, "a dialog did not open\n");
            return 1;
        }
        plain += p;
        round += q;
        ratios.push_back(q / p);
        std::printf("round %d: 100 plain buttons %.2f ms, 100 round buttons %.2f ms per open\n", r, p * 1e3, q * 1e3);
    }
    std::sort(ratios.begin(), ratios.end());
    std::printf("opening with 100 round buttons: %.2f ms, %.2f times the plain dialog over all rounds, median round "
                "%.2f (%d rounds of %d opens)\n",
                round / rounds * 1e3, round / plain, ratios[ratios.size() / 2], rounds, opens);
    FontRepository::Destroy();
    return 0;
}
