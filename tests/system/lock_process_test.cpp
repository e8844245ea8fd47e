// The lock classes between processes: helper processes contend, hold, die while holding and release one by one.
#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "child_process.h"
#include "lock_support.h"
#include "platform/clock.h"
#include "platform/text.h"
#include "support/temp_dir.h"
#include "system/custom_mutex.h"
#include "system/mutex_backend.h"

namespace {
using uc::test::ChildProcess;
using uc::test::UniqueLockName;

std::unique_ptr<ChildProcess> StartChild() {
    auto child = std::make_unique<ChildProcess>();
    EXPECT_TRUE(child->Start(uc::test::LockChildProgram(), {})) << uc::ToUtf8(uc::test::LockChildProgram());
    return child;
}

std::string Utf8(const std::wstring& name) { return uc::ToUtf8(name); }

TEST(LockProcesses, ContendingProcessesNeverOverlap) {
    const std::wstring name = UniqueLockName(L"work");
    uc::test::TempDir dir;
    const std::wstring counter = dir.write(L"counter.txt", "0");
    constexpr int kRounds = 100;
    std::vector<std::unique_ptr<ChildProcess>> children;
    for (int i = 0; i < 3; ++i) children.push_back(StartChild());
    for (auto& c : children) c->Send("work " + Utf8(name) + " " + uc::ToUtf8(counter) + " " + std::to_string(kRounds));
    for (auto& c : children) {
        std::string reply;
        ASSERT_TRUE(c->Receive(reply));
        EXPECT_EQ(reply, "worked valid=" + std::to_string(kRounds));
    }
    long total = 0;
    std::ifstream(uc::ToFsPath(counter)) >> total;
    EXPECT_EQ(total, 3 * kRounds) << "an increment was lost: two processes were inside the lock at once";
}

// The holder is another process; in this one a priority locker waits, and an ordinary locker of the same
// object that comes later polls until the priority locker has been served.
TEST(LockProcesses, PriorityLockerOvertakesAnOrdinaryOneWhenAnotherProcessReleases) {
    const std::wstring name = UniqueLockName(L"prio");
    auto holder = StartChild();
    ASSERT_EQ(holder->Ask("lock " + Utf8(name)), "locked valid=1");
    CCustomMutex m;
    ASSERT_EQ(m.Create(nullptr, 0, name.c_str()), 1);
    uc::test::ExpectPriorityLockerFirst(m, [&] { EXPECT_EQ(holder->Ask("unlock"), "unlocked"); });
}

// A holder that ends without releasing: the next acquisition (any guard) gets the mutex but is not valid;
// the guard still releases it, and the one after that is valid again.
TEST(LockProcesses, HolderThatDiesLeavesTheMutexAbandoned) {
    enum Guard { Ordinary, Priority, Multiple };
    struct Case {
        Guard guard;
        bool kill;  // killed from outside, or ending on its own without releasing
    } cases[] = {{Ordinary, true}, {Priority, true}, {Multiple, true}, {Ordinary, false}};
    for (const Case& c : cases) {
        const std::wstring name = UniqueLockName(L"dead");
        auto holder = StartChild();
        ASSERT_EQ(holder->Ask("lock " + Utf8(name)), "locked valid=1");
        CCustomMutex m, spare;
        ASSERT_EQ(m.Create(nullptr, 0, name.c_str()), 1);
        ASSERT_EQ(spare.Create(nullptr, 0, nullptr), 1);
        if (c.kill) {
            holder->Kill();
        } else {
            holder->Send("die");
        }
        EXPECT_NE(holder->Wait(), 0);
        {
            CCustomMutex* both[] = {&spare, &m};
            std::unique_ptr<CMutexLock> ordinary;
            std::unique_ptr<CPriorityLock> priority;
            std::unique_ptr<CMutexLockMultiple> multiple;
            bool valid = true;
            if (c.guard == Ordinary) valid = (ordinary = std::make_unique<CMutexLock>(m))->IsValid();
            if (c.guard == Priority) valid = (priority = std::make_unique<CPriorityLock>(m))->IsValid();
            if (c.guard == Multiple) valid = (multiple = std::make_unique<CMutexLockMultiple>(2, both))->IsValid();
            EXPECT_FALSE(valid) << "guard " << c.guard;
        }
        auto next = StartChild();
        EXPECT_EQ(next->Ask("lock " + Utf8(name)), "locked valid=1") << "released by the invalid guard, then normal";
        EXPECT_EQ(next->Ask("exit"), "");
    }
}

// Three processes hold one mutex each and let go one at a time. The waiter takes all three only when the last
// is free, and holds none of them meanwhile: a fourth process can take each freed one while it waits.
TEST(LockProcesses, WaitAllOverMutexesReleasedOneByOne) {
    const std::wstring names[] = {UniqueLockName(L"a"), UniqueLockName(L"b"), UniqueLockName(L"c")};
    std::unique_ptr<ChildProcess> holders[3];
    for (int i = 0; i < 3; ++i) {
        holders[i] = StartChild();
        ASSERT_EQ(holders[i]->Ask("lock " + Utf8(names[i])), "locked valid=1");
    }
    CCustomMutex a, b, c;
    ASSERT_EQ(a.Create(nullptr, 0, names[0].c_str()), 1);
    ASSERT_EQ(b.Create(nullptr, 0, names[1].c_str()), 1);
    ASSERT_EQ(c.Create(nullptr, 0, names[2].c_str()), 1);
    CCustomMutex* all[] = {&a, &b, &c};
    std::atomic<bool> acquired{false};
    bool valid = false;
    uc::Event hasAll, release;
    std::thread waiter([&] {
        CMutexLockMultiple lock(3, all);
        valid = lock.IsValid();
        acquired = true;
        hasAll.Set();
        release.Wait();
    });
    while (c.PriorityWaiters() == 0) std::this_thread::yield();
    auto probe = StartChild();
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(holders[i]->Ask("unlock"), "unlocked");
        EXPECT_EQ(probe->Ask("lock " + Utf8(names[i])), "locked valid=1") << "the waiter holds nothing while waiting";
        EXPECT_EQ(probe->Ask("unlock"), "unlocked");
        EXPECT_FALSE(acquired.load());
    }
    ASSERT_EQ(holders[2]->Ask("unlock"), "unlocked");
    ASSERT_TRUE(hasAll.Wait(uc::Millis(30000)));
    EXPECT_TRUE(valid);
    for (const auto& n : names) EXPECT_EQ(probe->Ask("try " + Utf8(n)), "try timeout");
    release.Set();
    waiter.join();
    for (const auto& n : names) EXPECT_EQ(probe->Ask("try " + Utf8(n)), "try acquired");
}

}  // namespace
