// uc::ui::UiThread: a thread with its own message loop, for windows that must stay responsive while the
// thread that asked for them is busy.
#pragma once

#include <windows.h>

#include <atomic>

#include "platform/export.h"
#include "platform/win/handles.h"

namespace uc::ui {

// Life: construct (nothing runs yet), configure, Start → on the new thread InitInstance (false ends the thread at
// once), the message loop until WM_QUIT, ExitInstance → the thread ends. Start, PostQuit, Wait and Stop may be
// called from any thread; the destructor stops the thread and waits for it, so the object outlives its thread.
// Windows created by InitInstance belong to the new thread and must be destroyed there (ExitInstance).
class UC_API UiThread {
public:
    UiThread();
    virtual ~UiThread();
    UiThread(const UiThread&) = delete;
    UiThread& operator=(const UiThread&) = delete;

    // Starts the thread and returns once InitInstance has run there (so what it built can be used at once, and a
    // PostQuit right after is never lost). InitInstance must not wait for the thread that calls Start.
    bool Start();
    // Asks the loop to end; harmless when the thread has ended or never started.
    void PostQuit(int exitCode = 0);
    // Waits up to `ms` for the thread to end (INFINITE for no limit); true when it has ended or never started.
    bool Wait(DWORD ms = INFINITE);
    // PostQuit then Wait (no limit). Must not be called from the thread itself.
    void Stop();

    bool Running() const;
    DWORD ThreadId() const { return m_threadId.load(); }
    // ExitInstance's result once the thread has ended.
    int ExitCode() const { return m_exitCode.load(); }

protected:
    // On the new thread, before the loop. Return false to end the thread without running the loop.
    virtual bool InitInstance() { return true; }
    // On the new thread, after the loop (also after InitInstance returned false); returns the exit code.
    virtual int ExitInstance() { return m_quitCode; }
    // Called for every message the loop takes, before it is dispatched; true swallows it. The default lets
    // modeless dialogs handle their keyboard (IsDialogMessage).
    virtual bool PreTranslateMessage(MSG& msg);

    int m_quitCode = 0;  // wParam of the WM_QUIT that ended the loop

private:
    static DWORD WINAPI ThreadMain(void* self);
    void Run();

    UniqueKernelHandle m_thread;
    UniqueKernelHandle m_initialised;
    std::atomic<DWORD> m_threadId{0};
    std::atomic<int> m_exitCode{0};
};

// Runs a message loop on the calling thread until `done` is set or WM_QUIT arrives (reposted for an outer loop).
// Tests and tools use it to keep windows alive while they wait for something those windows do.
UC_API void PumpMessagesUntil(const std::atomic<bool>& done, DWORD timeoutMs);
// Dispatches every message waiting in the calling thread's queue; returns how many.
UC_API int PumpPendingMessages();

}  // namespace uc::ui
