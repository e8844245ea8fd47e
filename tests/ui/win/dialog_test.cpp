// uc::ui::Dialog from memory and resource templates, modal and modeless; the resource module; UiThread.
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <thread>

#include "dialogs/resource_ids.h"
#include "platform/logger.h"
#include "test_resource_ids.h"
#include "ui/win/dialog.h"
#include "ui/win/resources.h"
#include "ui/win/ui_thread.h"
#include "ui_test_support.h"

using namespace uc::ui;

namespace {

std::vector<WORD> TwoButtons() {
    DialogTemplate t(WS_POPUP | WS_CAPTION, 0, 0, 0, 160, 80, L"test");
    t.Add(L"BUTTON", L"OK", IDOK, WS_CHILD | WS_VISIBLE | BS_DEFPUSHBUTTON | WS_TABSTOP, 10, 50, 50, 14)
        .Add(L"BUTTON", L"other", 1000, WS_CHILD | WS_VISIBLE | BS_PUSHBUTTON, 70, 50, 50, 14)
        .Add(L"EDIT", L"text", 1001, WS_CHILD | WS_VISIBLE | WS_BORDER, 10, 10, 140, 14);
    return t.Words();
}

class ScriptedDialog : public Dialog {
public:
    explicit ScriptedDialog(UINT id = 0) : Dialog(id) {}
    std::function<void(ScriptedDialog&)> onInit;
    int inits = 0, oks = 0, cancels = 0;
    std::vector<std::pair<UINT, HWND>> commands;

protected:
    BOOL OnInitDialog() override {
        ++inits;
        if (onInit) onInit(*this);
        return TRUE;
    }
    void OnOK() override {
        ++oks;
        Dialog::OnOK();
    }
    void OnCancel() override {
        ++cancels;
        Dialog::OnCancel();
    }
    bool OnCommand(UINT id, UINT code, HWND control) override {
        commands.emplace_back(id, control);
        return false;
    }
};

TEST(Dialog, ModalFromMemoryEndsWithTheResultOfOk) {
    ScriptedDialog d;
    d.SetTemplate(TwoButtons());
    d.onInit = [](ScriptedDialog& self) {
        EXPECT_TRUE(self.IsModal());
        EXPECT_EQ(uc::test::TextOf(self.Item(1001)), L"text");
        // A control that uses WM_COMMAND's wParam for something else (a click type 1) must not close the dialog;
        // then the OK button is clicked.
        self.Post(WM_COMMAND, 1, reinterpret_cast<LPARAM>(self.Item(1000)));
        self.Post(WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), reinterpret_cast<LPARAM>(self.Item(IDOK)));
    };
    EXPECT_EQ(d.DoModal(), IDOK);
    EXPECT_EQ(d.inits, 1);
    EXPECT_EQ(d.oks, 1);
    ASSERT_FALSE(d.commands.empty());
    EXPECT_EQ(d.commands.front().first, 1u) << "the foreign command reached OnCommand";
    EXPECT_EQ(d.GetHwnd(), nullptr);
}

TEST(Dialog, EscapeAndTheCloseBoxCancel) {
    ScriptedDialog d;
    d.SetTemplate(TwoButtons());
    d.onInit = [](ScriptedDialog& self) { self.Post(WM_SYSCOMMAND, SC_CLOSE, 0); };
    EXPECT_EQ(d.DoModal(), IDCANCEL);
    EXPECT_EQ(d.cancels, 1);
}

TEST(Dialog, ResourceTemplateOfTheLibraryIsReachable) {
    ASSERT_NE(FindDialogTemplate(LibraryModule(), IDD_CUSTOMMESSAGEBOX), nullptr)
        << "the library's resources are linked into programs that use the static library";
    ScriptedDialog d;
    d.SetTemplateId(IDD_CUSTOMMESSAGEBOX);
    bool sawItems = false;
    d.onInit = [&](ScriptedDialog& self) {
        sawItems = self.Item(IDC_TXTMESSAGE) && self.Item(IDOK);
        self.EndDialog(42);
    };
    EXPECT_EQ(d.DoModal(), 42);
    EXPECT_TRUE(sawItems);
}

TEST(Dialog, MissingTemplateFailsClearly) {
    zelLogger::Instance().ClearEntries();
    ScriptedDialog d;
    d.SetTemplateId(4242);
    EXPECT_EQ(d.DoModal(), -1);
    EXPECT_FALSE(d.CreateModeless());
    EXPECT_EQ(d.inits, 0);
    EXPECT_EQ(zelLogger::Instance().Count(L"dialog template 4242 not found"), 2u);
}

TEST(Dialog, ThreadResourceModuleSelectsWhereTemplatesComeFrom) {
    HMODULE program = ::GetModuleHandleW(nullptr);
    EXPECT_EQ(ResourceModule(), LibraryModule());
    {
        ScopedResourceModule use(::GetModuleHandleW(L"kernel32.dll"));
        ScriptedDialog d(IDD_CUSTOMMESSAGEBOX);
        EXPECT_EQ(d.DoModal(), -1) << "kernel32 holds no such template";
    }
    EXPECT_EQ(ResourceModule(), LibraryModule());
    ScopedResourceModule use(program);
    ScriptedDialog d(IDD_TEST_PAGE);
    d.onInit = [](ScriptedDialog& self) { self.EndDialog(7); };
    EXPECT_EQ(d.DoModal(), 7);
}

TEST(Dialog, StringResources) {
    EXPECT_EQ(LoadStringResource(IDS_TEST_HELLO, nullptr), L"Hello from the program");
    EXPECT_EQ(LoadStringResource(IDS_TEST_HELLO + 99, nullptr), L"");
    // A limit of 511 characters includes the terminating null.
    EXPECT_EQ(LoadStringResource(IDS_TEST_LONG, nullptr).size(), 510u);
}

TEST(Dialog, ModelessLivesUntilEndedOrDestroyedWithItsObject) {
    uc::test::ForeignWindow owner;
    HWND hwnd = nullptr;
    {
        ScriptedDialog d;
        d.SetTemplate(TwoButtons());
        ASSERT_TRUE(d.CreateModeless(owner.hwnd));
        hwnd = d.GetHwnd();
        EXPECT_FALSE(d.IsModal());
        EXPECT_EQ(d.inits, 1);
        EXPECT_EQ(::GetParent(hwnd) ? ::GetParent(hwnd) : ::GetWindow(hwnd, GW_OWNER), owner.hwnd);
    }
    EXPECT_FALSE(::IsWindow(hwnd)) << "destroyed with its object";

    ScriptedDialog d;
    d.SetTemplate(TwoButtons());
    ASSERT_TRUE(d.CreateModeless(owner.hwnd));
    ::SendMessageW(d.GetHwnd(), WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), reinterpret_cast<LPARAM>(d.Item(IDOK)));
    EXPECT_EQ(d.GetHwnd(), nullptr) << "OK destroys a modeless dialog";
    EXPECT_TRUE(d.CreateModeless(owner.hwnd)) << "and it can be opened again";
}

struct BoxThread : UiThread {
    std::function<bool(BoxThread&)> init;
    std::atomic<int> exits{0};
    std::atomic<DWORD> initThread{0};
    Window window;
    bool InitInstance() override {
        initThread = ::GetCurrentThreadId();
        return init ? init(*this) : window.Create(0, nullptr, L"", WS_POPUP, {0, 0, 10, 10}, nullptr, 0);
    }
    int ExitInstance() override {
        ++exits;
        window.DestroyWindow();
        return 5;
    }
    ~BoxThread() override { Stop(); }
};

TEST(UiThread, RunsItsOwnLoopAndCleansUpOnItsThread) {
    BoxThread t;
    ASSERT_TRUE(t.Start());
    EXPECT_TRUE(t.Running());
    EXPECT_NE(t.ThreadId(), ::GetCurrentThreadId());
    ASSERT_TRUE(uc::test::WaitFor([&] { return t.window.GetHwnd() != nullptr; }));
    HWND hwnd = t.window.GetHwnd();
    EXPECT_EQ(::GetWindowThreadProcessId(hwnd, nullptr), t.ThreadId());
    // The window answers while this thread is busy elsewhere: its own loop serves it.
    EXPECT_TRUE(::SendMessageTimeoutW(hwnd, WM_NULL, 0, 0, SMTO_BLOCK, 5000, nullptr));
    t.Stop();
    EXPECT_FALSE(t.Running());
    EXPECT_EQ(t.exits, 1);
    EXPECT_EQ(t.ExitCode(), 5);
    EXPECT_FALSE(::IsWindow(hwnd)) << "destroyed by ExitInstance on its own thread";
    t.Stop();  // twice is harmless
}

TEST(UiThread, QuitPostedRightAfterStartIsNeverLost) {
    for (int i = 0; i < 5; ++i) {
        BoxThread t;
        ASSERT_TRUE(t.Start());
        t.PostQuit();
        ASSERT_TRUE(t.Wait(10000)) << "run " << i;
        EXPECT_EQ(t.exits, 1);
    }
}

TEST(UiThread, FailedInitEndsTheThreadAndStillRunsExitInstance) {
    BoxThread t;
    t.init = [](BoxThread&) { return false; };
    ASSERT_TRUE(t.Start());
    EXPECT_TRUE(t.Wait(10000));
    EXPECT_EQ(t.exits, 1);
    BoxThread thrower;
    thrower.init = [](BoxThread&) -> bool { throw std::runtime_error("no window"); };
    ASSERT_TRUE(thrower.Start());
    EXPECT_TRUE(thrower.Wait(10000)) << "an exception in InitInstance ends the thread, not the process";
    EXPECT_FALSE(t.Start()) << "a thread object runs once";
}

TEST(UiThread, StoppedFromAnotherThreadThanTheStarter) {
    BoxThread t;
    ASSERT_TRUE(t.Start());
    std::thread stopper([&] { t.Stop(); });
    stopper.join();
    EXPECT_FALSE(t.Running());
    BoxThread never;
    never.Stop();  // never started: nothing to wait for
    EXPECT_TRUE(never.Wait(0));
}

}  // namespace
