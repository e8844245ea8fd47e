// Temporary folders for tests.
#include "support/temp_dir.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/paths.h"
#include "platform/text.h"

namespace uc::test {
namespace fs = std::filesystem;

TempDir::TempDir() {
    static std::atomic<int> counter{0};
    const auto stamp = std::chrono::steady_clock::now().time_since_epoch().count();
    fs::path p = fs::temp_directory_path() /
                 ("uc-test-" + std::to_string(stamp) + "-" + std::to_string(counter++));
    fs::create_directories(p);
    m_path = FromFsPath(p);
}

TempDir::~TempDir() {
    std::error_code ec;
    fs::remove_all(ToFsPath(m_path), ec);
}

std::wstring TempDir::file(const std::wstring& name) const { return JoinPath(m_path, name); }

std::wstring TempDir::write(const std::wstring& name, const std::string& bytes) const {
    const std::wstring p = file(name);
    fs::create_directories(ToFsPath(p).parent_path());
    std::ofstream out(ToFsPath(p), std::ios::binary | std::ios::trunc);
    out << bytes;
    return p;
}

std::string TempDir::read(const std::wstring& name) const {
    std::ifstream in(ToFsPath(file(name)), std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

std::wstring SourceDir() {
    const char* p = std::getenv("UC_TEST_SOURCE_DIR");
    return p ? FromUtf8(p) : L".";
}

}  // namespace uc::test
