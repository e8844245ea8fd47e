// The lock classes between threads of one process: creation and names, copies, guards, priority, abandonment, wait-all.
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "lock_support.h"
#include "platform/clock.h"
#include "system/custom_mutex.h"
#include "system/mutex_backend.h"

namespace {
using uc::sync::WaitResult;
using uc::test::UniqueLockName;
using namespace std::chrono_literals;

// Whether another thread could take the mutex right now (it is released again at once).
WaitResult ProbeFromAnotherThread(void* handle) {
    WaitResult r = WaitResult::Failed;
    std::thread([&] {
        r = uc::sync::WaitMutex(handle, 0);
        if (r == WaitResult::Acquired || r == WaitResult::Abandoned) uc::sync::ReleaseMutexObject(handle);
    }).join();
    return r;
}

TEST(CustomMutex, SecondCreateFailsAndKeepsTheFirstHandle) {
    const std::wstring name = UniqueLockName(L"twice");
    CCustomMutex m;
    EXPECT_EQ(m.GetHandle(), nullptr);
    ASSERT_EQ(m.Create(nullptr, 0, name.c_str()), 1);
    void* first = m.GetHandle();
    EXPECT_EQ(m.Create(nullptr, 0, name.c_str()), 0);
    EXPECT_EQ(m.Create(nullptr, 0, nullptr), 0);
    EXPECT_EQ(m.GetHandle(), first);
    // Another object of the same name is the same mutex.
    CCustomMutex other;
    ASSERT_EQ(other.Create(nullptr, 0, name.c_str()), 1);
    CMutexLock held(m);
    ASSERT_TRUE(held.IsValid());
    EXPECT_EQ(ProbeFromAnotherThread(other.GetHandle()), WaitResult::Timeout);
}

TEST(CustomMutex, NamesTheSystemRefusesGiveZeroNotAnException) {
    const std::wstring tooLong(261, L'x');
    const std::wstring longest = UniqueLockName(L"") + std::wstring(200, L'y');
    const std::wstring refused[] = {tooLong, L"Local\\uc\\nested", L"uc\\slash"};
    for (const std::wstring& name : refused) {
        CCustomMutex m;
        EXPECT_EQ(m.Create(nullptr, 0, name.c_str()), 0) << name.size();
        EXPECT_EQ(m.GetHandle(), nullptr);
        CMutexLock lock(m);
        EXPECT_FALSE(lock.IsValid());
    }
    // Names the platform accepts, however they look: long, with spaces, slashes and non-ASCII letters.
    const std::wstring accepted[] = {longest, UniqueLockName(L" sp ace/ü%") , L"Local\\" + UniqueLockName(L"ns")};
    for (const std::wstring& name : accepted) {
        CCustomMutex m;
        EXPECT_EQ(m.Create(nullptr, 0, name.c_str()), 1) << name.size();
        CMutexLock lock(m);
        EXPECT_TRUE(lock.IsValid());
    }
}

TEST(CustomMutex, InitialOwnerOwnsOnlyWhatItCreated) {
    const std::wstring name = UniqueLockName(L"owner");
    CCustomMutex created;
    ASSERT_EQ(created.Create(nullptr, 1, name.c_str()), 1);
    EXPECT_EQ(ProbeFromAnotherThread(created.GetHandle()), WaitResult::Timeout);
    EXPECT_TRUE(uc::sync::ReleaseMutexObject(created.GetHandle()));
    EXPECT_EQ(ProbeFromAnotherThread(created.GetHandle()), WaitResult::Acquired);
    // Opening an existing mutex never takes it, whatever the flag says.
    std::thread([&] {
        CCustomMutex opened;
        ASSERT_EQ(opened.Create(nullptr, 1, name.c_str()), 1);
        EXPECT_FALSE(uc::sync::ReleaseMutexObject(opened.GetHandle()));
    }).join();
}

TEST(CustomMutex, CopiesShareTheHandleAndSnapshotTheCounter) {
    CCustomMutex m;
    ASSERT_EQ(m.Create(nullptr, 0, UniqueLockName(L"copy").c_str()), 1);
    auto held = std::make_unique<CMutexLock>(m);
    std::thread priority([&] { CPriorityLock p(m); });
    while (m.PriorityWaiters() == 0) std::this_thread::yield();
    auto copy = std::make_unique<CCustomMutex>(m);
    EXPECT_EQ(copy->GetHandle(), m.GetHandle());
    EXPECT_EQ(copy->PriorityWaiters(), 1);
    // The priority locker gets in and counts down the original only.
    held.reset();
    priority.join();
    EXPECT_EQ(m.PriorityWaiters(), 0);
    EXPECT_EQ(copy->PriorityWaiters(), 1);
    // Destroying the copy closed the shared handle: the original's guards now fail at once.
    copy.reset();
    CPriorityLock afterClose(m);
    EXPECT_FALSE(afterClose.IsValid());
}

TEST(MutexGuards, RecursiveForTheOwnerAndReleasedWithTheScope) {
    CCustomMutex m;
    ASSERT_EQ(m.Create(nullptr, 0, UniqueLockName(L"rec").c_str()), 1);
    {
        CMutexLock outer(m);
        CPriorityLock inner(m);
        EXPECT_TRUE(outer.IsValid());
        EXPECT_TRUE(inner.IsValid());
        EXPECT_EQ(ProbeFromAnotherThread(m.GetHandle()), WaitResult::Timeout);
    }
    EXPECT_EQ(ProbeFromAnotherThread(m.GetHandle()), WaitResult::Acquired);
}

TEST(MutexGuards, GuardsOnAMutexNeverCreatedFailAtOnce) {
    CCustomMutex none;
    CMutexLock a(none);
    CPriorityLock b(none);
    EXPECT_FALSE(a.IsValid());
    EXPECT_FALSE(b.IsValid());
    CCustomMutex good;
    ASSERT_EQ(good.Create(nullptr, 0, nullptr), 1);
    CCustomMutex* both[] = {&good, &none};
    {
        CMutexLockMultiple multiple(2, both);
        EXPECT_FALSE(multiple.IsValid());
    }
    EXPECT_EQ(ProbeFromAnotherThread(good.GetHandle()), WaitResult::Acquired) << "nothing stays locked";
    CMutexLockMultiple nullList(3, nullptr);
    EXPECT_FALSE(nullList.IsValid());
}

TEST(MutexGuards, MultipleWithNoMutexIsValidAndReleasesNothing) {
    CCustomMutex m;
    ASSERT_EQ(m.Create(nullptr, 0, nullptr), 1);
    CMutexLock held(m);
    { CMutexLockMultiple none(0, nullptr); EXPECT_TRUE(none.IsValid()); }
    EXPECT_EQ(ProbeFromAnotherThread(m.GetHandle()), WaitResult::Timeout) << "still held by this thread";
}

// An ordinary locker that arrives while a priority locker waits polls every 10 ms (on the injected clock)
// and only starts to wait once the priority locker has the mutex.
TEST(MutexGuards, PriorityLockerGoesBeforeAnOrdinaryOneArrivingLater) {
    CCustomMutex m;
    ASSERT_EQ(m.Create(nullptr, 0, UniqueLockName(L"prio").c_str()), 1);
    auto holder = std::make_unique<CMutexLock>(m);
    uc::test::ExpectPriorityLockerFirst(m, [&] { holder.reset(); });
}

TEST(MutexGuards, MutexLeftByAnEndedThreadIsAbandonedOnce) {
    CCustomMutex m;
    ASSERT_EQ(m.Create(nullptr, 0, UniqueLockName(L"aband").c_str()), 1);
    std::thread([&] { ASSERT_EQ(uc::sync::WaitMutex(m.GetHandle()), WaitResult::Acquired); }).join();
    {
        CMutexLock first(m);
        EXPECT_FALSE(first.IsValid()) << "abandoned";
    }
    CMutexLock second(m);
    EXPECT_TRUE(second.IsValid()) << "the abandoned state is reported once";
}

TEST(MutexGuards, MultipleTakesAllAtOnceAndReportsAnAbandonedOne) {
    CCustomMutex a, b, c;
    for (CCustomMutex* m : {&a, &b, &c}) ASSERT_EQ(m->Create(nullptr, 0, UniqueLockName(L"all").c_str()), 1);
    CCustomMutex* all[] = {&a, &b, &c};
    {
        CMutexLockMultiple lock(3, all);
        EXPECT_TRUE(lock.IsValid());
        for (CCustomMutex* m : all) EXPECT_EQ(ProbeFromAnotherThread(m->GetHandle()), WaitResult::Timeout);
        EXPECT_EQ(a.PriorityWaiters(), 0);
    }
    std::thread([&] { ASSERT_EQ(uc::sync::WaitMutex(b.GetHandle()), WaitResult::Acquired); }).join();
    {
        CMutexLockMultiple lock(3, all);
        EXPECT_FALSE(lock.IsValid()) << "b was abandoned";
        for (CCustomMutex* m : all) EXPECT_EQ(ProbeFromAnotherThread(m->GetHandle()), WaitResult::Timeout);
    }
    for (CCustomMutex* m : all) EXPECT_EQ(ProbeFromAnotherThread(m->GetHandle()), WaitResult::Acquired);
}

TEST(MutexBackend, ClosedAndForeignHandlesFailCleanly) {
    void* h = uc::sync::CreateMutexObject(nullptr, false, nullptr);
    ASSERT_NE(h, nullptr);
    EXPECT_FALSE(uc::sync::ReleaseMutexObject(h)) << "not owned";
    EXPECT_TRUE(uc::sync::CloseMutexObject(h));
    EXPECT_EQ(uc::sync::WaitMutex(h, 0), WaitResult::Failed);
    EXPECT_FALSE(uc::sync::CloseMutexObject(h));
    EXPECT_EQ(uc::sync::WaitMutex(nullptr), WaitResult::Failed);
    void* other = uc::sync::CreateMutexObject(nullptr, false, nullptr);
    std::vector<void*> many(65, other);
    EXPECT_EQ(uc::sync::WaitAllMutexes(many.data(), 2), WaitResult::Failed) << "the same handle twice";
    EXPECT_EQ(uc::sync::WaitAllMutexes(many.data(), 65), WaitResult::Failed) << "more than 64";
    EXPECT_EQ(uc::sync::WaitAllMutexes(many.data(), 1), WaitResult::Acquired);
    EXPECT_TRUE(uc::sync::ReleaseMutexObject(other));
    EXPECT_TRUE(uc::sync::CloseMutexObject(other));
}

}  // namespace
