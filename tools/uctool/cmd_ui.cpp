// uctool "ui": the dialog showcase (Windows): a console dialog with round buttons, the calibration prompt, the
// please-wait box, a property sheet and a tabbed dialog, shown to the user or saved as PNG pictures (--screenshot).
#include <ostream>

#include "command.h"

#ifdef _WIN32
#include <windows.h>
#include <commctrl.h>

#include <functional>
#include <memory>
#include <type_traits>
#include <vector>

#include "dialogs/win/custom_dialog.h"
#include "dialogs/win/custom_property_sheet.h"
#include "dialogs/win/message_box.h"
#include "dialogs/win/tabbed_dialog.h"
#include "platform/localisation.h"
#include "platform/logger.h"
#include "platform/paths.h"
#include "platform/win/gdiplus_encoders.h"
#include "skin/win/font_repository.h"
#include "skin/win/round_button.h"
#include "ui/win/capture.h"
#include "ui/win/dialog.h"
#endif

namespace uctool::ui {
namespace {

const wchar_t* const kUsage =
    L"usage: uctool ui [--screenshot DIR]\n"
    L"Opens the console dialog showcase: a console dialog whose round buttons open the calibration prompt, a please-wait\n"
    L"box, a property sheet and a tabbed dialog. With --screenshot, saves each window as drawn by its controls to\n"
    L"DIR (console.png, message_box.png, please_wait.png, property_sheet.png, tabbed_dialog.png) and exits.";

#ifdef _WIN32

enum : WORD { kPromptId = 1100, kWaitId, kSheetId, kTabbedId, kDrivesId, kTextId };
constexpr UINT kSnap = WM_APP + 500;

std::vector<WORD> ConsoleTemplate() {
    uc::ui::DialogTemplate t(WS_POPUP | WS_CAPTION | DS_MODALFRAME, 0, 0, 0, 300, 170, L"utils_controls");
    t.Add(L"STATIC", L"Console dialogs of utils_controls: translated on opening, centred in the dialog area,", kTextId,
          WS_CHILD | WS_VISIBLE, 10, 40, 280, 10)
        .Add(L"STATIC", L"a flat background, a title label; the buttons open the other dialogs.", 0, WS_CHILD | WS_VISIBLE,
             10, 52, 280, 10)
        .Add(L"BUTTON", L"Calibration prompt", kPromptId, WS_CHILD | WS_VISIBLE | WS_TABSTOP, 10, 72, 90, 16)
        .Add(L"BUTTON", L"Please wait", kWaitId, WS_CHILD | WS_VISIBLE | WS_TABSTOP, 105, 72, 90, 16)
        .Add(L"BUTTON", L"Property sheet", kSheetId, WS_CHILD | WS_VISIBLE | WS_TABSTOP, 200, 72, 90, 16)
        .Add(L"BUTTON", L"Tabbed dialog", kTabbedId, WS_CHILD | WS_VISIBLE | WS_TABSTOP, 10, 94, 90, 16)
        .Add(L"ComboBoxEx32", L"", kDrivesId, WS_CHILD | WS_VISIBLE | CBS_DROPDOWNLIST, 105, 94, 185, 80)
        .Add(L"BUTTON", L"Close", IDOK, WS_CHILD | WS_VISIBLE | WS_TABSTOP | BS_DEFPUSHBUTTON, 240, 148, 50, 16);
    return t.Words();
}

std::vector<WORD> PageTemplate(const wchar_t* caption, const wchar_t* text) {
    uc::ui::DialogTemplate t(WS_CHILD | WS_CAPTION | DS_CONTROL, 0, 0, 0, 200, 100, caption);
    t.Add(L"STATIC", text, 1200, WS_CHILD | WS_VISIBLE, 8, 8, 180, 20)
        .Add(L"BUTTON", L"An option", 1201, WS_CHILD | WS_VISIBLE | BS_AUTOCHECKBOX, 8, 32, 100, 12)
        .Add(L"EDIT", L"42", 1202, WS_CHILD | WS_VISIBLE | WS_BORDER, 8, 50, 60, 14);
    return t.Words();
}

class ShowcasePage : public CCustomPropertyPage {
public:
    ShowcasePage(const wchar_t* caption, const wchar_t* text) { SetTemplate(PageTemplate(caption, text)); }
};

class Sheet : public CCustomPropertySheet {
public:
    Sheet() : CCustomPropertySheet(L"Property sheet", nullptr), m_a(L"General", L"A page of a property sheet"),
              m_b(L"Display", L"Pages are resized to fill the sheet") {
        SetResizePages(true);
        SetCascadeBkColor(RGB(214, 219, 228));
        AddPage(&m_a);
        AddPage(&m_b);
    }

private:
    ShowcasePage m_a, m_b;
};

class TabPage : public CCustomTabPageDialog {
public:
    explicit TabPage(const wchar_t* text) : CCustomTabPageDialog(0, nullptr, nullptr) {
        m_showTitle = FALSE;
        uc::ui::DialogTemplate t(WS_CHILD | DS_CONTROL, 0, 0, 0, 180, 80, L"");
        t.Add(L"STATIC", text, 1300, WS_CHILD | WS_VISIBLE, 6, 6, 160, 20);
        SetTemplate(t.Words());
    }
    void ApplyPage() override {}
};

class Tabbed : public CTabbedCustomDialog {
public:
    Tabbed() : CTabbedCustomDialog(0, 1400, nullptr) {
        uc::ui::DialogTemplate t(WS_POPUP | WS_CAPTION | DS_MODALFRAME, 0, 0, 0, 240, 170, L"Tabbed dialog");
        t.Add(L"SysTabControl32", L"", 1400, WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS, 8, 86, 224, 60)
            .Add(L"BUTTON", L"OK", IDOK, WS_CHILD | WS_VISIBLE | BS_DEFPUSHBUTTON, 182, 150, 50, 14);
        SetTemplate(t.Words());
        m_title = L"Tabbed dialog";
        SetBkColor(RGB(60, 64, 72));
    }

protected:
    void CreateTabs() override {
        AddTab("showcase.tab.image", new TabPage(L"Each tab shows a page the dialog owns"));
        AddTab("showcase.tab.sound", new TabPage(L"OK applies every page in tab order"));
    }
};

class Prompt : public CCustomMessageBox {
public:
    Prompt() {
        SetMessage(L"Touch the centre of each cross as it appears. OK is held disabled for a moment.");
        SetOKTimeout(1500);
    }
};

// The console's usual button look: a vertical blue gradient on a rounded rectangle over the dialog's colour.
tButtonStyle ConsoleButtonStyle() {
    tButtonStyle s;
    s.radius = 10;
    s.borderRatio = 0.08;
    s.brushType = tButtonStyle::BrushLinear;
    s.linearBrush.rotate = 90;
    s.linearBrush.focus = 0.5f;
    s.linearBrush.scale = 0.5f;
    s.linearBrush.gamma = 1;
    s.colours[tButtonStyle::Enabled].facePrimary = 0xFF286EC8;
    s.colours[tButtonStyle::Enabled].faceSecondary = 0xFFA0CDFA;
    s.colours[tButtonStyle::Enabled].border = 0xFF14326E;
    s.colours[tButtonStyle::Pressed] = s.colours[tButtonStyle::Clicked] = s.colours[tButtonStyle::Enabled];
    s.colours[tButtonStyle::Pressed].facePrimary = s.colours[tButtonStyle::Clicked].facePrimary = 0xFF14468C;
    s.background = 0xFF3C4048;
    return s;
}

class Console : public CCustomDialog {
public:
    Console() {
        SetTemplate(ConsoleTemplate());
        m_title = L"Console dialog";
        SetBkColor(RGB(60, 64, 72));
    }

protected:
    BOOL OnInitDialog() override {
        CCustomDialog::OnInitDialog();
        // The launchers are round buttons; they report a click with their handle, not their id.
        for (WORD id : {kPromptId, kWaitId, kSheetId, kTabbedId}) {
            auto b = std::make_unique<CRoundButton2>();
            if (b->SubclassDlgItem(id, m_hWnd)) {
                b->LoadStyle(&m_buttonStyle);
                m_buttons.push_back(std::move(b));
            }
        }
        AddRemovableDrives(Item(kDrivesId), "showcase.network");
        ::SendMessageW(Item(kDrivesId), CB_SETCURSEL, 0, 0);
        SetToolTip(m_hWnd, Item(kWaitId), L"Shows the please-wait box for three seconds");
        return TRUE;
    }
    void OnDestroy() override {
        ReleaseDriveItems(Item(kDrivesId));
        CCustomDialog::OnDestroy();
    }
    bool OnCommand(UINT id, UINT code, HWND control) override {
        if (code != BN_CLICKED) return false;
        if (control && id == CRoundButton2::Click) id = static_cast<UINT>(::GetDlgCtrlID(control));
        switch (id) {
        case kPromptId: {
            Prompt p;
            p.SetParent(m_hWnd);
            p.DoModal();
            return true;
        }
        case kWaitId: {
            uc::ui::PleaseWait wait(L"Please wait: this thread is busy for three seconds, the box keeps painting", 500);
            ::Sleep(3000);  // the busy caller the box is for
            return true;
        }
        case kSheetId: {
            Sheet s;
            s.DoModal();
            return true;
        }
        case kTabbedId: {
            Tabbed t;
            t.SetParent(m_hWnd);
            t.DoModal();
            return true;
        }
        default:
            return false;
        }
    }

private:
    const tButtonStyle m_buttonStyle = ConsoleButtonStyle();
    std::vector<std::unique_ptr<CRoundButton2>> m_buttons;
};

// Shows a dialog, saves its picture as soon as it has painted, and closes it.
template <class Base>
class Snapshot : public Base {
public:
    std::wstring file;
    bool saved = false;

protected:
    BOOL OnInitDialog() override {
        const BOOL r = Base::OnInitDialog();
        this->Post(kSnap);
        return r;
    }
    LRESULT WindowProc(UINT msg, WPARAM wp, LPARAM lp) override {
        if (msg != kSnap) return Base::WindowProc(msg, wp, lp);
        HWND hwnd = this->GetHwnd();
        ::ShowWindow(hwnd, SW_SHOW);
        ::UpdateWindow(hwnd);
        auto picture = uc::ui::CaptureWindow(hwnd);
        saved = picture && uc::ui::SavePng(picture.get(), file);
        if constexpr (std::is_base_of_v<uc::ui::Dialog, Base>) {
            this->EndDialog(IDOK);
        } else {
            ::PostMessageW(hwnd, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), reinterpret_cast<LPARAM>(this->Item(IDOK)));
        }
        return 0;
    }
};

template <class D>
bool Snap(const std::wstring& dir, const wchar_t* name, std::wostream& out, std::wostream& err) {
    Snapshot<D> d;
    d.file = uc::JoinPath(dir, name);
    d.DoModal();
    if (!d.saved) {
        err << L"uctool ui: could not save " << d.file << L"\n";
        return false;
    }
    out << d.file << L"\n";
    return true;
}

bool SnapPleaseWait(const std::wstring& dir, std::wostream& out, std::wostream& err) {
    std::unique_ptr<CMessageBoxThread> t(CMessageBoxThread::CreateObject());
    t->SetMessage(L"Copying the selected studies to the removable drive. The box is drawn by its own thread while "
                  L"the caller is busy.");
    t->SetTimeout(0);
    if (!t->Start()) return false;
    // Wait (not pumping: this thread stands for the busy caller) until the box has shown and animated a little.
    for (int i = 0; i < 500 && !(t->Box().WasShown() && t->Box().m_barOffset >= 100); ++i) ::Sleep(10);
    const std::wstring file = uc::JoinPath(dir, L"please_wait.png");
    auto picture = uc::ui::CaptureWindow(t->Box().GetHwnd());
    const bool ok = picture && uc::ui::SavePng(picture.get(), file);
    t->Stop();
    if (!ok) {
        err << L"uctool ui: could not save " << file << L"\n";
        return false;
    }
    out << file << L"\n";
    return true;
}

int Run(const Args& all, std::wostream& out, std::wostream& err) {
    Args args = all;
    std::wstring dir;
    const bool screenshots = TakeOption(args, L"--screenshot", dir);
    if (!args.empty()) {
        err << kUsage << L"\n";
        return 2;
    }
    INITCOMMONCONTROLSEX icc{sizeof icc, ICC_WIN95_CLASSES | ICC_USEREX_CLASSES | ICC_TAB_CLASSES};
    ::InitCommonControlsEx(&icc);
    // Texts of the showcase's own keys (a console loads them from its language file).
    uc::SetLocalisedString("showcase.network", L"Network");
    uc::SetLocalisedString("showcase.tab.image", L"Image");
    uc::SetLocalisedString("showcase.tab.sound", L"Sound");
    uc::GdiplusSession gdiplus;
    if (!gdiplus.ok()) {
        err << L"uctool ui: GDI+ did not start\n";
        return 1;
    }
    if (screenshots && (dir.empty() || !zelLogger::checkPath(dir))) {
        err << L"uctool ui: cannot write to '" << dir << L"'\n";
        return 1;
    }
    bool ok = true;
    if (!screenshots) {
        Console console;
        ok = console.DoModal() != -1;
    } else {
        ok = Snap<Console>(dir, L"console.png", out, err);
        ok = Snap<Prompt>(dir, L"message_box.png", out, err) && ok;
        ok = SnapPleaseWait(dir, out, err) && ok;
        ok = Snap<Sheet>(dir, L"property_sheet.png", out, err) && ok;
        ok = Snap<Tabbed>(dir, L"tabbed_dialog.png", out, err) && ok;
    }
    FontRepository::Destroy();  // the round buttons' fonts, kept by the repository until now
    return ok ? 0 : 1;
}

#else

int Run(const Args&, std::wostream&, std::wostream& err) {
    err << L"uctool ui: the dialogs are Windows windows; run the Windows build (scripts/gallery.sh does)\n";
    return 1;
}

#endif

const bool registered = Register({L"ui", L"show the console dialogs, or save pictures of them (--screenshot DIR)", kUsage, Run});

}  // namespace
}  // namespace uctool::ui
