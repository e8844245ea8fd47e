// uctool "export": what a selection of patient, study or plain folders holds, a burn of it into a disc image
// through the disc-writing library (the simulated one writes the image), and the writers the library sees.
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <ostream>

#include "command.h"
#include "export/burn_presenter.h"
#include "export/disc_burner.h"
#include "export/export_files.h"
#include "export/export_paths.h"
#include "export/file_queue.h"
#include "export/starburn_loader.h"
#include "platform/localisation.h"
#include "platform/logger.h"
#include "platform/text.h"

namespace uctool::exporting {
namespace {
namespace fs = std::filesystem;
using namespace uc::exporting;

const wchar_t* const kUsage =
    L"usage: uctool export size FOLDER...\n"
    L"       uctool export burn FOLDER... --image OUT.iso [--convert jpg|bmp|gif] [--privacy LAYOUT.xml]\n"
    L"                         [--medium cd-r|cd-rw|dvd-r|dvd+r|dvd-rw-ro|...] [--append [--erase] | --overwrite]\n"
    L"                         [--export-folder NAME] [--screen WIDTHxHEIGHT] [--language FILE] [--library FILE]\n"
    L"       uctool export devices [--library FILE]\n"
    L"\n"
    L"FOLDER is a patient folder (with \"patient.xml\"), a study folder (with \"study.xml\") or any folder.\n"
    L"size:    the files the export would hold and their total.\n"
    L"burn:    the whole burn through the disc-writing library; the simulated library writes the disc as the\n"
    L"         ISO 9660/Joliet image OUT.iso, which any burning program writes to a disc or a system mounts.\n"
    L"         --append adds a session to an existing image (--erase: a rewritable medium is erased first),\n"
    L"         --overwrite starts it anew.\n"
    L"         --convert and --privacy re-encode and black out images with GDI+ (the Windows build).\n"
    L"devices: the writers the library finds.";

// Queues each folder by what it is; false with a message when one cannot be queued.
bool QueueFolders(CFileQueue& queue, const Args& folders, std::wostream& err) {
    for (const std::wstring& folder : folders) {
        std::error_code ec;
        if (!fs::is_directory(uc::ToFsPath(folder), ec)) {
            err << L"uctool export: '" << folder << L"' is not a folder\n";
            return false;
        }
        const std::wstring base = WithTrailingSeparator(uc::FromFsPath(fs::absolute(uc::ToFsPath(folder), ec)));
        if (FileIsPresent(base + CFileQueue::PatientDescriptor))
            queue.AddPatientToQueue(base);
        else if (FileIsPresent(base + CFileQueue::StudyDescriptor))
            queue.AddStudyToQueue(base);
        else
            queue.AddFilesToQueue(base);
    }
    return true;
}

std::wstring Amount(double value, const std::wstring& unit) {
    return (unit == L"Bytes" ? uc::FormatFixed(value, 0) : uc::FormatFixed(value, 2)) + L" " + unit;
}

int Size(Args args, std::wostream& out, std::wostream& err) {
    if (args.empty()) {
        err << kUsage << L"\n";
        return 2;
    }
    CFileQueue queue;
    if (!QueueFolders(queue, args, err)) return 1;
    for (const std::wstring& p : queue.GetPatientsName()) out << L"patient " << FolderOf(p) << L"\n";
    for (const std::wstring& s : queue.GetStudiesName()) out << L"study   " << FolderOf(s) << L"\n";
    for (int i = 0; i < queue.GetSize(); ++i) {
        const std::wstring file = queue.GetAt(i);
        out << L"  " << FileLength(file) << L"  " << file << L"\n";
    }
    std::wstring unit;
    const double total = queue.GetTotalFileSize(unit);
    out << L"total: " << queue.GetSize() << L" files, " << Amount(total, unit) << L"\n";
    return 0;
}

// Shows the burn's steps on the console and answers its questions from the command line.
class ConsolePresenter final : public IBurnPresenter {
public:
    ConsolePresenter(std::wostream& out, Answer notEmpty) : m_out(out), m_notEmpty(notEmpty) {}
    void CreateProgress(const std::wstring&) override {}
    void DestroyProgress() override {}
    void ShowStep(const std::wstring& text) override {
        if (text != m_last) m_out << L"  " << text << L"\n";
        m_last = text;
    }
    void ShowPercent(int) override {}
    void ShowMinimizeButton(bool) override {}
    Answer Ask(const std::wstring& text, const std::wstring&, bool withCancel) override {
        const Answer a = withCancel ? m_notEmpty : (m_notEmpty == Answer::Yes ? Answer::Yes : Answer::No);
        m_out << L"  " << text << L" -> " << (a == Answer::Yes ? L"yes" : a == Answer::No ? L"no" : L"cancel") << L"\n";
        return a;
    }
    void Tell(const std::wstring& text, const std::wstring&, BoxIcon) override { m_out << L"  " << text << L"\n"; }
    void Post(void*, unsigned, std::uintptr_t, std::intptr_t) override {}

private:
    std::wostream& m_out;
    Answer m_notEmpty;
    std::wstring m_last;
};

void SetEnvironment(const char* name, const std::wstring& value) {
#ifdef _WIN32
    _wputenv_s(uc::FromUtf8(name).c_str(), value.c_str());
#else
    setenv(name, uc::ToUtf8(value).c_str(), 1);
#endif
}

int Burn(Args args, std::wostream& out, std::wostream& err) {
    std::wstring image, convert, privacy, medium, exportFolder, screen, language, library;
    const bool hasImage = TakeOption(args, L"--image", image);
    TakeOption(args, L"--convert", convert);
    TakeOption(args, L"--privacy", privacy);
    const bool hasMedium = TakeOption(args, L"--medium", medium);
    TakeOption(args, L"--export-folder", exportFolder);
    TakeOption(args, L"--screen", screen);
    TakeOption(args, L"--language", language);
    TakeOption(args, L"--library", library);
    const bool append = TakeFlag(args, L"--append"), overwrite = TakeFlag(args, L"--overwrite");
    const bool erase = TakeFlag(args, L"--erase");
    if (!hasImage || image.empty() || args.empty() || (append && overwrite) || (erase && !append)) {
        err << kUsage << L"\n";
        return 2;
    }
    for (const std::wstring& a : args)
        if (a.rfind(L"--", 0) == 0) {
            err << L"uctool export: unknown option " << a << L"\n";
            return 2;
        }
    int format = 0;
    if (!convert.empty()) {
        format = convert == L"jpg" ? 1 : convert == L"bmp" ? 2 : convert == L"gif" ? 3 : -1;
        if (format < 0) {
            err << L"uctool export: --convert takes jpg, bmp or gif\n";
            return 2;
        }
    }
#ifndef _WIN32
    if (format || !privacy.empty()) {
        err << L"uctool export: --convert and --privacy need GDI+; run the Windows build (uctool.exe, under Wine)\n";
        return 2;
    }
#endif
    int screenWidth = 0, screenHeight = 0;
    if (!screen.empty()) {
        const std::size_t x = screen.find(L'x');
        if (x == std::wstring::npos || !uc::ParseInt(screen.substr(0, x), screenWidth) ||
            !uc::ParseInt(screen.substr(x + 1), screenHeight) || screenWidth <= 0 || screenHeight <= 0) {
            err << L"uctool export: --screen takes WIDTHxHEIGHT\n";
            return 2;
        }
    }
    if (!language.empty() && !uc::LoadLanguageFile(language)) {
        err << L"uctool export: cannot read the language file '" << language << L"'\n";
        return 1;
    }
    std::error_code ec;
    const fs::path imagePath = fs::absolute(uc::ToFsPath(image), ec);
    if (fs::exists(imagePath, ec) && !append && !overwrite) {
        err << L"uctool export: '" << image << L"' exists; give --append to add a session or --overwrite\n";
        return 1;
    }
    if (overwrite) {
        fs::remove(imagePath, ec);
        fs::remove(imagePath.string() + ".medium", ec);  // the simulated library's record of the medium
    }
    // The simulated library takes its medium from these settings (a real library ignores them). Settings already
    // in the environment (faults, capacity) stay; the image is always the one named here.
    const bool existedBefore = fs::exists(imagePath, ec);
    const std::int64_t sizeBefore = existedBefore ? FileLength(uc::FromFsPath(imagePath)) : -1;
    const char* existing = std::getenv("UC_STARBURN_SET");
    std::wstring settings = hasMedium ? L"" : L"medium=dvd-r;";
    if (existing && *existing) settings += uc::FromUtf8(existing) + L";";
    if (hasMedium) settings += L"medium=" + medium + L";";
    settings += L"image=" + uc::FromFsPath(imagePath);
    const bool stateGiven = existing && std::string(existing).find("state") != std::string::npos;
    if (append && fs::exists(imagePath, ec) && !stateGiven) settings += L";state=appendable";
    SetEnvironment("UC_STARBURN_SET", settings);

    CFileQueue queue;
    if (!QueueFolders(queue, args, err)) return 1;
    if (queue.GetSize() == 0) {
        err << L"uctool export: the folders hold no files to export\n";
        return 1;
    }
    if (!privacy.empty()) queue.SetLayoutFile(uc::FromFsPath(fs::absolute(uc::ToFsPath(privacy), ec)));
    if (screenWidth) queue.SetScreenSize(screenWidth, screenHeight);

    CStarDiscBurn burner(&queue);
    burner.SetDiscOperations(std::make_shared<StarBurnLoader>(library));
    burner.SetPresenter(std::make_shared<ConsolePresenter>(out, erase ? Answer::Yes : append ? Answer::No : Answer::Cancel));
    burner.SetConversion(format);
    burner.SetPrivacy(privacy.empty() ? 0 : 1);
    burner.SetExportFolder(exportFolder);
    burner.SetTempFolder(uc::FromFsPath(imagePath.parent_path() / (imagePath.filename().string() + ".staging")));
    burner.FindDevices();
    if (burner.GetDeviceCount() == 0) {
        err << L"uctool export: no writer found (is the disc-writing library beside uctool?)\n";
        return 1;
    }
    out << L"burning " << queue.GetSize() << L" files to " << uc::FromFsPath(imagePath) << L"\n";
    const int ok = burner.Burn(0, burner.GetPrivacy());
    if (!ok) {
        for (const std::wstring& line : burner.GetLog())
            if (line.find(L"failed") != std::wstring::npos || line.find(L"cannot") != std::wstring::npos ||
                line.find(L"vanished") != std::wstring::npos || line.find(L"EXITing") != std::wstring::npos)
                err << line << L"\n";
        if (!existedBefore) {
            // A fresh image from a failed burn is not a disc anyone should use.
            fs::remove(imagePath, ec);
            fs::remove(imagePath.string() + ".medium", ec);
        } else if (FileLength(uc::FromFsPath(imagePath)) != sizeBefore) {
            err << L"uctool export: '" << uc::FromFsPath(imagePath)
                << L"' now ends in an unfinished session; its earlier sessions are as they were\n";
        }
        err << L"uctool export: the burn failed\n";
        return 1;
    }
    out << L"done: " << uc::FromFsPath(imagePath) << L" (" << FileLength(uc::FromFsPath(imagePath)) << L" bytes)\n";
    return 0;
}

int Devices(Args args, std::wostream& out, std::wostream& err) {
    std::wstring library;
    TakeOption(args, L"--library", library);
    auto loader = std::make_shared<StarBurnLoader>(library);
    if (!loader->Available()) {
        err << L"uctool export: " << loader->Problem() << L"\n";
        return 1;
    }
    CStarDiscBurn burner;
    burner.SetDiscOperations(loader);
    burner.FindDevices();
    for (int i = 0; i < burner.GetDeviceCount(); ++i) out << i << L": " << burner.GetDeviceName(i) << L"\n";
    if (burner.GetDeviceCount() == 0) out << L"no writer found\n";
    return 0;
}

int Run(const Args& all, std::wostream& out, std::wostream& err) {
    if (all.empty()) {
        err << kUsage << L"\n";
        return 2;
    }
    const Args rest(all.begin() + 1, all.end());
    if (all[0] == L"size") return Size(rest, out, err);
    if (all[0] == L"burn") return Burn(rest, out, err);
    if (all[0] == L"devices") return Devices(rest, out, err);
    err << kUsage << L"\n";
    return 2;
}

const bool registered = Register({L"export", L"size, burn to a disc image, writers", kUsage, &Run});
}  // namespace
}  // namespace uctool::exporting
