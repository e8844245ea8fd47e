// A fresh temporary folder per test, removed with everything in it at the end.
#pragma once

#include <string>

namespace uc::test {

class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::wstring& path() const { return m_path; }
    // `name` inside the folder.
    std::wstring file(const std::wstring& name) const;
    // Writes raw bytes to `name` and returns its path.
    std::wstring write(const std::wstring& name, const std::string& bytes) const;
    std::string read(const std::wstring& name) const;

private:
    std::wstring m_path;
};

// Root of the source tree (for sample files), from UC_TEST_SOURCE_DIR.
std::wstring SourceDir();

}  // namespace uc::test
