// uctool "display": list the monitors display control reaches, read and set their values, save them.
#include <cstdlib>
#include <ostream>
#include <string>

#include "command.h"
#include "display/ddc_control.h"
#include "display/edid.h"
#include "platform/paths.h"
#include "platform/text.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace uctool::display {
namespace {

const wchar_t* const kUsage =
    L"usage: uctool display list [OPTIONS]\n"
    L"       uctool display get  NAME|all [--device N] [OPTIONS]\n"
    L"       uctool display set  NAME VALUE [--device N] [--save] [OPTIONS]\n"
    L"       uctool display save [--device N] [OPTIONS]\n"
    L"\n"
    L"list: every monitor found (NVIDIA ones first, then AMD; i2c-dev buses on Linux): index, driver, the\n"
    L"      driver's own index and the monitor's name, then whether each vendor library started.\n"
    L"get:  current value and maximum; set: writes a value (0-255); save: the monitor stores its settings.\n"
    L"NAME: brightness, contrast, colortemp, redgain, greengain, bluegain, autoecoview.\n"
    L"\n"
    L"OPTIONS:\n"
    L"  --gamma          when no monitor answers DDC/CI, use the screen's gamma ramp (kept only while the\n"
    L"                   command runs; add --save or run save to keep the values for the console's next start)\n"
    L"  --strict         refuse replies whose checksum is wrong\n"
    L"  --retries N      try a failed exchange N more times, with a growing pause (default 0)\n"
    L"  --keep-ecoview   do not switch the monitors' Auto EcoView off while looking for them\n"
    L"  --sim FILE       talk to the simulated monitors FILE describes (sets UC_DISPLAY_SIM)";

struct Value {
    const wchar_t* name;
    DDCValueType type;
};
const Value kValues[] = {{L"brightness", Brightness}, {L"contrast", Contrast},   {L"colortemp", ColorTemp},
                         {L"redgain", RedGain},       {L"greengain", GreenGain}, {L"bluegain", BlueGain},
                         {L"autoecoview", AutoEcoView}};

bool FindValue(const std::wstring& name, DDCValueType& type) {
    for (const Value& v : kValues)
        if (name == v.name) {
            type = v.type;
            return true;
        }
    return false;
}

std::wstring DriverName(const DDCControl& device) {
    if (device.IsGammaRamp()) return L"gamma";
    if (auto* bus = dynamic_cast<DdcBusDriver*>(device.GetDriver())) return bus->Carriage();
    return L"?";
}

std::wstring DriverStates() {
    std::wstring text;
    for (DdcBusDriver* d : {DDCControl::GetNvidiaDriver(), DDCControl::GetAtiDriver()}) {
        if (!d) continue;
        if (!text.empty()) text += L", ";
        text += std::wstring(d->Carriage()) + (d->IsInitialized() ? L" initialised" : L" not initialised");
    }
    return text.empty() ? L"no driver" : text;
}

void SetSimulation(const std::wstring& file) {
#ifdef _WIN32
    ::SetEnvironmentVariableW(L"UC_DISPLAY_SIM", file.c_str());
#else
    ::setenv("UC_DISPLAY_SIM", uc::ToUtf8(file).c_str(), 1);
#endif
}

// Ends display control when the command ends, whatever path it takes.
struct Session {
    ~Session() { DDCControl::Destroy(); }
};

int Run(const Args& input, std::wostream& out, std::wostream& err) {
    Args args = input;
    if (args.empty()) {
        err << kUsage << L"\n";
        return 2;
    }
    const std::wstring action = args[0];
    args.erase(args.begin());
    const bool gamma = TakeFlag(args, L"--gamma");
    const bool keepEcoView = TakeFlag(args, L"--keep-ecoview");
    const bool saveAfter = TakeFlag(args, L"--save");
    uc::display::StrictMode strict;
    strict.verifyChecksum = TakeFlag(args, L"--strict");
    std::wstring text, sim;
    int retries = 0, device = 0;
    if (TakeOption(args, L"--retries", text) && (!uc::ParseInt(text, retries) || retries < 0 || retries > 10)) {
        err << L"uctool display: --retries takes 0 to 10\n";
        return 2;
    }
    strict.retries = static_cast<unsigned>(retries);
    if (TakeOption(args, L"--device", text) && (!uc::ParseInt(text, device) || device < 0)) {
        err << L"uctool display: --device takes a monitor's index from \"display list\"\n";
        return 2;
    }
    if (TakeOption(args, L"--sim", sim)) SetSimulation(sim);

    const std::size_t operands = action == L"get" ? 1 : action == L"set" ? 2 : 0;
    if ((action != L"list" && action != L"get" && action != L"set" && action != L"save") || args.size() != operands) {
        err << kUsage << L"\n";
        return 2;
    }
    DDCValueType type = Brightness;
    int value = 0;
    const bool all = action == L"get" && args[0] == L"all";
    if (operands > 0 && !all && !FindValue(args[0], type)) {
        err << L"uctool display: unknown value '" << args[0] << L"'\n";
        return 2;
    }
    if (action == L"set" && (!uc::ParseInt(args[1], value) || value < 0 || value > 255)) {
        err << L"uctool display: a value is 0 to 255, not '" << args[1] << L"'\n";
        return 2;
    }

    Session session;
    const bool devMode = utilsExam::DevMode();
    utilsExam::SetDevMode(keepEcoView || devMode);
    DDCControl::SetStrictMode(strict);
    DDCControl::LocateDevices(gamma);
    utilsExam::SetDevMode(devMode);
    const unsigned count = DDCControl::GetNumDevices();
    if (count == 0) {
        err << L"no monitor answers DDC/CI (" << DriverStates() << L")"
            << (gamma ? L"" : L"; --gamma uses the screen's gamma ramp instead") << L"\n";
        return 1;
    }
    if (action == L"list") {
        for (unsigned i = 0; i < count; ++i) {
            DDCControl& d = *DDCControl::GetDevice(i);
            std::string name;
            const bool named = d.GetName(name);
            out << i << L"  " << DriverName(d) << L"  #" << d.GetDeviceIndex() << L"  "
                << (named ? L"\"" + uc::FromUtf8(uc::display::TidyMonitorName(name)) + L"\"" : L"(no name)") << L"\n";
        }
        out << L"drivers: " << DriverStates() << L"\n";
        return 0;
    }
    DDCControl* target = DDCControl::GetDevice(static_cast<unsigned>(device));
    if (!target) {
        err << L"uctool display: no monitor " << device << L" (" << count << L" found)\n";
        return 1;
    }
    if (action == L"get") {
        int failures = 0;
        for (const Value& v : kValues) {
            if (!all && v.type != type) continue;
            std::uint8_t maximum = 0, current = 0;
            if (target->GetValue(v.type, maximum, current)) {
                out << v.name << L": " << static_cast<int>(current) << L" (maximum " << static_cast<int>(maximum) << L")\n";
            } else {
                out << v.name << L": no valid answer\n";
                ++failures;
            }
        }
        return failures == 0 || (all && failures < 7) ? 0 : 1;
    }
    if (action == L"set") {
        if (!target->SetValue(type, static_cast<std::uint8_t>(value))) {
            err << args[0] << L": the monitor did not take the value\n";
            return 1;
        }
        out << args[0] << L" set to " << value << L"\n";
        if (!saveAfter) return 0;
    }
    if (!target->SaveValues()) {
        err << L"the monitor did not take the save command\n";
        return 1;
    }
    out << L"settings saved on monitor " << device << L"\n";
    return 0;
}

const bool registered = Register({L"display", L"list monitors, read and set brightness, contrast and colour", kUsage, Run});

}  // namespace
}  // namespace uctool::display
