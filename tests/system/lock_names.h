// Mutex names unique to one test run, so concurrent test programs never share a lock by accident.
#pragma once

#include <atomic>
#include <chrono>
#include <string>

namespace uc::test {

inline std::wstring UniqueLockName(const std::wstring& tag) {
    static std::atomic<int> counter{0};
    static const long long run = std::chrono::steady_clock::now().time_since_epoch().count() % 1000000007;
    return L"uc-lock-test-" + std::to_wstring(run) + L"-" + std::to_wstring(counter++) + L"-" + tag;
}

}  // namespace uc::test
