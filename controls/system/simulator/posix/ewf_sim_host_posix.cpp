// The simulated write filter's environment and module folder natively (getenv, dladdr).
#include <dlfcn.h>

#include <cstdlib>
#include <string>

#include "platform/text.h"
#include "system/simulator/ewf_sim_host.h"

namespace uc::ewf::sim {

std::wstring StatePathFromEnvironment() {
    const char* v = std::getenv("UC_EWF_SIM");
    return v ? FromUtf8(v) : std::wstring();
}

std::wstring ModuleFolder() {
    Dl_info info{};
    if (!::dladdr(reinterpret_cast<void*>(&ModuleFolder), &info) || !info.dli_fname) return {};
    const std::string path = info.dli_fname;
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::wstring() : FromUtf8(path.substr(0, slash));
}

}  // namespace uc::ewf::sim
