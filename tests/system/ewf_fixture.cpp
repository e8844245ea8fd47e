// The write-filter fixture: environment, library location and the simulation's extra exports.
#include "ewf_fixture.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <cstdlib>
#endif

#include "platform/ini_file.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace uc::test {
using namespace uc::ewf;

std::wstring SimLibrary(const std::wstring& variant) {
#ifdef _WIN32
    return variant + L".dll";
#else
    return JoinPath(ExecutableFolder(), L"lib" + variant + L".so");
#endif
}

void SetSimState(const std::wstring& path) {
#ifdef _WIN32
    ::SetEnvironmentVariableW(L"UC_EWF_SIM", path.empty() ? nullptr : path.c_str());
#else
    if (path.empty())
        ::unsetenv("UC_EWF_SIM");
    else
        ::setenv("UC_EWF_SIM", ToUtf8(path).c_str(), 1);
#endif
}

uc::ewf::sim::WriteFilterSimulator EwfSimTest::SavedState() const {
    IniDocument doc;
    EXPECT_TRUE(doc.Load(m_state));
    uc::ewf::sim::WriteFilterSimulator sim;
    std::wstring error;
    EXPECT_TRUE(sim.Parse(doc.Serialize(), error)) << ToUtf8(error);
    return sim;
}

}  // namespace uc::test
