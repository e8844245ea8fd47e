// uc::ui::UiThread and message pumps.
#include "ui/win/ui_thread.h"

#include <algorithm>
#include <exception>

#include "platform/logger.h"
#include "ui/win/dialog.h"

namespace uc::ui {

UiThread::UiThread() : m_initialised(::CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}

UiThread::~UiThread() {
    // A derived object is already gone here, so its overrides cannot run: derived classes should Stop in their
    // own destructor. This is the last guard against a thread outliving its object.
    if (m_thread && ::GetCurrentThreadId() != m_threadId.load()) Stop();
}

bool UiThread::Start() {
    if (m_thread) return false;
    DWORD id = 0;
    m_thread.reset(::CreateThread(nullptr, 0, &ThreadMain, this, 0, &id));
    if (!m_thread) {
        UC_LOG(zelLogger::Failure)(L"user-interface thread could not be started (error %lu)", ::GetLastError());
        return false;
    }
    m_threadId = id;
    HANDLE both[2] = {m_initialised.get(), m_thread.get()};
    ::WaitForMultipleObjects(2, both, FALSE, INFINITE);
    return true;
}

DWORD WINAPI UiThread::ThreadMain(void* self) {
    static_cast<UiThread*>(self)->Run();
    return 0;
}

void UiThread::Run() {
    MSG msg;
    ::PeekMessageW(&msg, nullptr, WM_USER, WM_USER, PM_NOREMOVE);  // creates this thread's queue
    bool started = false;
    try {
        started = InitInstance();
    } catch (...) {
        UC_LOG(zelLogger::Failure)(L"user-interface thread: InitInstance failed with an exception");
    }
    ::SetEvent(m_initialised.get());
    if (started) {
        while (true) {
            const BOOL got = ::GetMessageW(&msg, nullptr, 0, 0);
            if (got == 0) {
                m_quitCode = static_cast<int>(msg.wParam);
                break;
            }
            if (got == -1) break;
            bool swallowed = false;
            try {
                swallowed = PreTranslateMessage(msg);
            } catch (...) {
            }
            if (swallowed) continue;
            ::TranslateMessage(&msg);
            ::DispatchMessageW(&msg);
        }
    }
    int code = -1;
    try {
        code = ExitInstance();
    } catch (...) {
        UC_LOG(zelLogger::Failure)(L"user-interface thread: ExitInstance failed with an exception");
    }
    m_exitCode = code;
}

bool UiThread::PreTranslateMessage(MSG& msg) {
    if (!msg.hwnd) return false;
    HWND root = ::GetAncestor(msg.hwnd, GA_ROOT);
    auto* dialog = dynamic_cast<Dialog*>(Window::FromHandle(root));
    return dialog && !dialog->IsModal() && ::IsDialogMessageW(root, &msg);
}

void UiThread::PostQuit(int exitCode) {
    if (const DWORD id = m_threadId.load()) ::PostThreadMessageW(id, WM_QUIT, static_cast<WPARAM>(exitCode), 0);
}

bool UiThread::Wait(DWORD ms) {
    if (!m_thread) return true;
    return ::WaitForSingleObject(m_thread.get(), ms) == WAIT_OBJECT_0;
}

void UiThread::Stop() {
    PostQuit();
    Wait();
}

bool UiThread::Running() const { return m_thread && ::WaitForSingleObject(m_thread.get(), 0) == WAIT_TIMEOUT; }

void PumpMessagesUntil(const std::atomic<bool>& done, DWORD timeoutMs) {
    const ULONGLONG end = ::GetTickCount64() + timeoutMs;
    while (!done.load()) {
        const ULONGLONG now = ::GetTickCount64();
        if (now >= end) return;
        ::MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(std::min<ULONGLONG>(end - now, 20)), QS_ALLINPUT);
        MSG msg;
        while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
            if (msg.message == WM_QUIT) {
                ::PostQuitMessage(static_cast<int>(msg.wParam));
                return;
            }
            ::TranslateMessage(&msg);
            ::DispatchMessageW(&msg);
        }
    }
}

int PumpPendingMessages() {
    int n = 0;
    MSG msg;
    while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
        if (msg.message == WM_QUIT) {
            ::PostQuitMessage(static_cast<int>(msg.wParam));
            break;
        }
        ::TranslateMessage(&msg);
        ::DispatchMessageW(&msg);
        ++n;
    }
    return n;
}

}  // namespace uc::ui
