// Folder of the running executable, from /proc/self/exe; no screen work area natively.
#include <unistd.h>

#include <climits>

#include "platform/paths.h"
#include "platform/text.h"

namespace uc {
std::wstring ExecutableFolder() {
    char buf[PATH_MAX];
    ssize_t n = ::readlink("/proc/self/exe", buf, sizeof buf - 1);
    if (n <= 0) return L".";
    std::string p(buf, static_cast<std::size_t>(n));
    std::size_t slash = p.find_last_of('/');
    return FromUtf8(slash == std::string::npos ? std::string(".") : p.substr(0, slash == 0 ? 1 : slash));
}

utilsExam::Area PrimaryWorkArea() { return {}; }  // no screen to ask
}  // namespace uc
