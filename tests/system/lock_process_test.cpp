// The lock classes between processes: helper processes contend, hold, die while holding and release one by one.
#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <memory>
#include <string>
#include <thread>

#include "child_process.h"
#include "lock_support.h"
#include "platform/text.h"
#include "support/temp_dir.h"

namespace {
using uc::test::ChildProcess;
using uc::test::UniqueLockName;

std::unique_ptr<ChildProcess> StartChild() {
    auto child = std::make_unique<ChildProcess>();
    EXPECT_TRUE(child->Started()) << "system_lock_child is not beside the test";
    return child;
}

std::string Utf8(const std::wstring& name) { return uc::ToUtf8(name); }

TEST(LockProcesses, ContendingProcessesNeverOverlap) {
    const std::string name = Utf8(UniqueLockName(L"work"));
    uc::test::TempDir dir;
    const std::wstring counter = dir.write(L"counter.txt", "0");
    std::unique_ptr<ChildProcess> children[3];
    for (auto& c : children) (c = StartChild())->Send("work " + name + " " + Utf8(counter) + " 100");
    for (auto& c : children) EXPECT_EQ(c->Receive(), "worked valid=100");
    long total = 0;
    std::ifstream(uc::ToFsPath(counter)) >> total;
    EXPECT_EQ(total, 300) << "an increment was lost: two processes were inside the lock at once";
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
    for (int guard = 0; guard < 4; ++guard) {  // ordinary, priority, multiple: killed; ordinary: ends by itself
        SCOPED_TRACE(guard);
        const std::wstring name = UniqueLockName(L"dead");
        auto holder = StartChild();
        ASSERT_EQ(holder->Ask("lock " + Utf8(name)), "locked valid=1");
        CCustomMutex m, spare;
        ASSERT_EQ(m.Create(nullptr, 0, name.c_str()), 1);
        ASSERT_EQ(spare.Create(nullptr, 0, nullptr), 1);
        if (guard < 3) {
            holder->Kill();
        } else {
            holder->Send("die");
        }
        EXPECT_NE(holder->Wait(), 0);
        CCustomMutex* both[] = {&spare, &m};
        if (guard == 1) {
            EXPECT_FALSE(CPriorityLock(m).IsValid());
        } else if (guard == 2) {
            EXPECT_FALSE(CMutexLockMultiple(2, both).IsValid());
        } else {
            EXPECT_FALSE(CMutexLock(m).IsValid());
        }
        auto next = StartChild();
        EXPECT_EQ(next->Ask("lock " + Utf8(name)), "locked valid=1") << "released by the invalid guard, then normal";
        EXPECT_EQ(next->Wait(), 0);
    }
}

// Three processes hold one mutex each and let go one at a time. The waiter takes all three only when the last
// is free, and holds none of them meanwhile: a fourth process can take each freed one while it waits.
TEST(LockProcesses, WaitAllOverMutexesReleasedOneByOne) {
    std::string names[3];
    std::unique_ptr<ChildProcess> holders[3];
    CCustomMutex mutexes[3];
    CCustomMutex* all[] = {&mutexes[0], &mutexes[1], &mutexes[2]};
    for (int i = 0; i < 3; ++i) {
        names[i] = Utf8(UniqueLockName(L"all"));
        holders[i] = StartChild();
        ASSERT_EQ(holders[i]->Ask("lock " + names[i]), "locked valid=1");
        ASSERT_EQ(mutexes[i].Create(nullptr, 0, uc::FromUtf8(names[i]).c_str()), 1);
    }
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
    while (mutexes[2].PriorityWaiters() == 0) std::this_thread::yield();
    auto probe = StartChild();
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(holders[i]->Ask("unlock"), "unlocked");
        EXPECT_EQ(probe->Ask("lock " + names[i]), "locked valid=1") << "the waiter holds nothing while waiting";
        EXPECT_EQ(probe->Ask("unlock"), "unlocked");
        EXPECT_FALSE(acquired.load());
    }
    ASSERT_EQ(holders[2]->Ask("unlock"), "unlocked");
    ASSERT_TRUE(hasAll.Wait(uc::Millis(30000)));
    EXPECT_TRUE(valid);
    for (const auto& n : names) EXPECT_EQ(probe->Ask("try " + n), "try timeout");
    release.Set();
    waiter.join();
    for (const auto& n : names) EXPECT_EQ(probe->Ask("try " + n), "try acquired");
}

}  // namespace
