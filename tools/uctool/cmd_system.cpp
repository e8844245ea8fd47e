// uctool "system": the write filter's volumes and boot commands, and what holds a named lock.
#include <chrono>
#include <cwctype>
#include <memory>
#include <ostream>
#include <thread>

#include "command.h"
#include "platform/logger.h"
#include "platform/text.h"
#include "system/custom_mutex.h"
#include "system/ewf_library.h"
#include "system/ewf_manager.h"
#include "system/ewf_text.h"
#include "system/mutex_backend.h"

namespace uctool::system {
namespace {
using namespace uc::ewf;

const wchar_t* const kUsage =
    L"usage: uctool system ewf status [--library PATH]\n"
    L"       uctool system ewf enable|disable|commit|restore|clear VOLUME [--library PATH]\n"
    L"       uctool system ewf restart [--library PATH]\n"
    L"       uctool system ewf write VOLUME SEGMENTS [--library PATH]\n"
    L"       uctool system lock NAME [--priority] [--hold SECONDS] [--timeout SECONDS]\n"
    L"\n"
    L"ewf status:  every protected volume with its overlay type, state and the boot command pending for the next\n"
    L"             restart, and how full the overlay store is.\n"
    L"ewf enable, disable, commit, restore, clear: schedules that boot command for VOLUME (clear withdraws what\n"
    L"             is pending); it takes effect at the next restart. VOLUME is its number in the status list\n"
    L"             (from 0) or its device name.\n"
    L"ewf restart: (simulated write filter) every volume applies its pending command, as at a restart.\n"
    L"ewf write:   (simulated write filter) puts SEGMENTS of data on VOLUME, into the overlay while protected.\n"
    L"  --library PATH   another write-filter library than the system's (e.g. the simulated one); the simulated\n"
    L"                   filter keeps its state in the file UC_EWF_SIM names, else EWFAPI.ini beside it.\n"
    L"lock:        takes the named mutex (as a priority locker with --priority), says how long that took and\n"
    L"             whether its previous holder ended without releasing it, holds it --hold SECONDS (default 0)\n"
    L"             and releases it. --timeout SECONDS gives up after that long: the lock is held elsewhere.\n"
    L"exit codes:  0 done, 1 failed, 2 bad usage, 3 lock acquired but abandoned by its holder, 4 lock held elsewhere";

constexpr int kAbandoned = 3;
constexpr int kHeldElsewhere = 4;

bool ParseSeconds(const std::wstring& text, double& seconds) {
    return uc::ParseDouble(text, seconds) && seconds >= 0.0 && seconds <= 86400.0 * 7;
}

std::wstring Lower(std::wstring s) {
    for (wchar_t& c : s) c = static_cast<wchar_t>(std::towlower(static_cast<wint_t>(c)));
    return s;
}

// The manager, initialised; null (with the reason written) when the write filter cannot be read.
std::unique_ptr<CEWFMgr> OpenFilter(Args& args, std::wostream& err) {
    std::wstring library;
    auto m = TakeOption(args, L"--library", library) ? std::make_unique<CEWFMgr>(library) : std::make_unique<CEWFMgr>();
    const std::size_t logged = zelLogger::Instance().Entries().size();
    if (m->Init()) return m;
    err << L"uctool system: the write filter cannot be read";
    if (!m->IsLibraryLoaded()) err << L" (" << m->Library().Name() << L": " << m->LibraryError() << L")";
    err << L"\n";
    const auto entries = zelLogger::Instance().Entries();
    for (std::size_t i = std::min(logged, entries.size()); i < entries.size(); ++i) err << L"  " << entries[i].text;
    return nullptr;
}

// VOLUME: a number in the list or a device name.
int FindVolume(const CEWFMgr& m, const std::wstring& text, std::wostream& err) {
    int index = -1;
    if (uc::ParseInt(text, index) && index >= 0 && index < m.GetVolumeCount()) return index;
    for (int i = 0; i < m.GetVolumeCount(); ++i)
        if (Lower(m.GetVolumeName(i)) == Lower(text)) return i;
    err << L"uctool system: no protected volume '" << text << L"' (" << m.GetVolumeCount() << L" listed)\n";
    return -1;
}

std::wstring Describe(const wchar_t* text, int value) { return text ? std::wstring(text) : L"? (" + std::to_wstring(value) + L")"; }

int Status(CEWFMgr& m, std::wostream& out) {
    out << L"write filter: " << m.Library().Name();
    if (auto describe = reinterpret_cast<ULong(UC_EWF_CALL*)(WChar*, ULong)>(m.Library().ResolveAddress("EwfSimDescribe"))) {
        WChar text[1024];
        describe(text, 1024);
        out << L" (simulated; " << FromEwfString(text) << L")";
    }
    out << L"\n" << m.GetVolumeCount() << L" protected volume(s)\n";
    for (int i = 0; i < m.GetVolumeCount(); ++i) {
        EWF_VOLUME_CONFIG* c = m.GetVolumeConfig(i);
        out << L"volume " << i << L": ";
        if (!c) {
            out << L"configuration unreadable (error " << LastError() << L")\n";
            continue;
        }
        out << FromEwfString(c->VolumeDesc.DeviceName, MaxDeviceNameLength) << L"\n  type " << Describe(TypeText(c->Type), c->Type)
            << L", state " << Describe(StateText(c->State), c->State) << L", pending "
            << Describe(CommandText(c->BootCommand), c->BootCommand) << L", level " << c->CurrentLevel << L"\n";
        FreeRecord(c);
    }
    EWF_OVERLAY_STORE_CONFIG* store = m.GetStoreOverlay();
    const double freePercent = m.GetFreeSpacePercent();
    if (!store || freePercent < 0) {
        out << L"overlay store: not available\n";
    } else {
        out << L"overlay store: " << uc::FormatFixed(100.0 - freePercent, 1) << L" % used (" << store->FreeSegments << L" of "
            << store->NumSegments << L" segments free)\n";
    }
    FreeRecord(store);
    return 0;
}

int Command(CEWFMgr& m, const std::wstring& verb, const std::wstring& volumeText, std::wostream& out, std::wostream& err) {
    const int index = FindVolume(m, volumeText, err);
    if (index < 0) return 1;
    Handle h = m.GetVolumeHandle(index);
    int ok = 0;
    if (verb == L"enable") ok = m.Enable(h);
    if (verb == L"disable") ok = m.Disable(h);
    if (verb == L"commit") ok = m.Commit(h);
    if (verb == L"restore") ok = m.Restore(h);
    if (verb == L"clear") ok = m.ClearCommand(h);
    if (!ok) {
        err << L"uctool system: the write filter refused " << verb << L" for volume " << index << L" (error " << LastError() << L")\n";
        return 1;
    }
    EWF_VOLUME_CONFIG* c = m.GetVolumeConfig(index);
    const int pending = c ? c->BootCommand : -1;
    FreeRecord(c);
    out << L"volume " << index << L": pending " << Describe(CommandText(pending), pending) << L" (takes effect at the next restart)\n";
    return 0;
}

int Ewf(Args args, std::wostream& out, std::wostream& err) {
    std::unique_ptr<CEWFMgr> m = OpenFilter(args, err);
    if (!m) return 1;
    const std::wstring verb = args.empty() ? L"" : args[0];
    if (verb == L"status" && args.size() == 1) return Status(*m, out);
    if ((verb == L"enable" || verb == L"disable" || verb == L"commit" || verb == L"restore" || verb == L"clear") && args.size() == 2)
        return Command(*m, verb, args[1], out, err);
    if (verb == L"restart" && args.size() == 1) {
        auto restart = reinterpret_cast<Bool(UC_EWF_CALL*)()>(m->Library().ResolveAddress("EwfSimRestart"));
        if (!restart) {
            err << L"uctool system: " << m->Library().Name() << L" is not the simulated write filter\n";
            return 1;
        }
        if (!restart()) {
            err << L"uctool system: the simulated restart failed (error " << LastError() << L")\n";
            return 1;
        }
        out << L"restarted: every pending command applied\n";
        return 0;
    }
    if (verb == L"write" && args.size() == 3) {
        auto write = reinterpret_cast<Bool(UC_EWF_CALL*)(Handle, ULong)>(m->Library().ResolveAddress("EwfSimWrite"));
        int segments = 0;
        if (!uc::ParseInt(args[2], segments) || segments < 0) {
            err << L"uctool system: SEGMENTS must be a whole number, not '" << args[2] << L"'\n";
            return 2;
        }
        if (!write) {
            err << L"uctool system: " << m->Library().Name() << L" is not the simulated write filter\n";
            return 1;
        }
        const int index = FindVolume(*m, args[1], err);
        if (index < 0) return 1;
        if (!write(m->GetVolumeHandle(index), static_cast<ULong>(segments))) {
            err << L"uctool system: the write was refused (error " << LastError() << L")\n";
            return 1;
        }
        out << L"volume " << index << L": " << segments << L" segment(s) written\n";
        return 0;
    }
    err << kUsage << L"\n";
    return 2;
}

int Lock(Args args, std::wostream& out, std::wostream& err) {
    const bool priority = TakeFlag(args, L"--priority");
    double hold = 0, timeout = -1;
    std::wstring text;
    if (TakeOption(args, L"--hold", text) && !ParseSeconds(text, hold)) {
        err << L"uctool system: --hold takes seconds, not '" << text << L"'\n";
        return 2;
    }
    if (TakeOption(args, L"--timeout", text) && !ParseSeconds(text, timeout)) {
        err << L"uctool system: --timeout takes seconds, not '" << text << L"'\n";
        return 2;
    }
    if (args.size() != 1 || args[0].empty()) {
        err << kUsage << L"\n";
        return 2;
    }
    const std::wstring& name = args[0];
    CCustomMutex mutex;
    if (!mutex.Create(nullptr, 0, name.c_str())) {
        err << L"uctool system: the mutex '" << name << L"' cannot be created or opened (error " << uc::sync::LastMutexError()
            << L")\n";
        return 1;
    }
    out << L"waiting for '" << name << L"'" << (priority ? L" as a priority locker" : L"") << L"\n" << std::flush;
    const auto start = std::chrono::steady_clock::now();
    uc::sync::WaitResult result;
    std::unique_ptr<CMutexLock> ordinary;
    std::unique_ptr<CPriorityLock> prioritised;
    if (timeout >= 0) {
        // A wait with a limit goes to the mutex itself; the priority scheme only orders lockers of one process.
        result = uc::sync::WaitMutex(mutex.GetHandle(), static_cast<std::uint32_t>(timeout * 1000));
    } else if (priority) {
        prioritised = std::make_unique<CPriorityLock>(mutex);
        result = prioritised->IsValid() ? uc::sync::WaitResult::Acquired : uc::sync::WaitResult::Abandoned;
    } else {
        ordinary = std::make_unique<CMutexLock>(mutex);
        result = ordinary->IsValid() ? uc::sync::WaitResult::Acquired : uc::sync::WaitResult::Abandoned;
    }
    const auto waited = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count();
    if (result == uc::sync::WaitResult::Timeout) {
        out << L"'" << name << L"' is held elsewhere: not acquired within " << uc::FormatFixed(timeout, 1) << L" s\n";
        return kHeldElsewhere;
    }
    if (result == uc::sync::WaitResult::Failed) {
        err << L"uctool system: waiting for '" << name << L"' failed (error " << uc::sync::LastMutexError() << L")\n";
        return 1;
    }
    out << L"acquired '" << name << L"' after " << waited << L" ms";
    if (result == uc::sync::WaitResult::Abandoned) out << L"; its previous holder ended without releasing it (abandoned)";
    out << L"\n";
    if (hold > 0) {
        out << L"holding it for " << uc::FormatFixed(hold, 1) << L" s\n" << std::flush;
        std::this_thread::sleep_for(std::chrono::duration<double>(hold));
    }
    if (timeout >= 0) uc::sync::ReleaseMutexObject(mutex.GetHandle());
    out << L"released '" << name << L"'\n";
    return result == uc::sync::WaitResult::Abandoned ? kAbandoned : 0;
}

int Run(const Args& args, std::wostream& out, std::wostream& err) {
    if (!args.empty() && args[0] == L"ewf") return Ewf(Args(args.begin() + 1, args.end()), out, err);
    if (!args.empty() && args[0] == L"lock") return Lock(Args(args.begin() + 1, args.end()), out, err);
    err << kUsage << L"\n";
    return 2;
}

const bool registered = Register({L"system", L"the write filter's volumes and boot commands; what holds a named lock", kUsage, Run});

}  // namespace
}  // namespace uctool::system
