// The lock classes between threads of one process: creation and names, copies, guards, priority, abandonment, wait-all.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "lock_support.h"
#include "system/mutex_backend.h"

namespace {
using uc::sync::WaitResult;
using uc::test::UniqueLockName;

// Whether another thread could take the mutex right now (it is released again at once).
WaitResult ProbeFromAnotherThread(void* handle) {
    WaitResult r = WaitResult::Failed;
    std::thread([&] {
        r = uc::sync::WaitMutex(handle, 0);
        if (r == WaitResult::Acquired || r == WaitResult::Abandoned) uc::sync::ReleaseMutexObject(handle);
    }).join();
    return r;
}

// A thread that takes the mutex and ends holding it.
void AbandonFromAnotherThread(void* handle) {
    std::thread([&] { ASSERT_EQ(uc::sync::WaitMutex(handle), WaitResult::Acquired); }).join();
}

TEST(CustomMutex, SecondCreateFailsAndInitialOwnerOwnsOnlyWhatItCreated) {
    const std::wstring name = UniqueLockName(L"owner");
    CCustomMutex m;
    EXPECT_EQ(m.GetHandle(), nullptr);
    ASSERT_EQ(m.Create(nullptr, 1, name.c_str()), 1);
    void* first = m.GetHandle();
    EXPECT_EQ(m.Create(nullptr, 0, name.c_str()), 0);
    EXPECT_EQ(m.Create(nullptr, 0, nullptr), 0);
    EXPECT_EQ(m.GetHandle(), first);
    // Another object of the same name is the same mutex; opening it never takes it, whatever the flag says.
    std::thread([&] {
        CCustomMutex opened;
        ASSERT_EQ(opened.Create(nullptr, 1, name.c_str()), 1);
        EXPECT_FALSE(uc::sync::ReleaseMutexObject(opened.GetHandle()));
        EXPECT_EQ(uc::sync::WaitMutex(opened.GetHandle(), 0), WaitResult::Timeout) << "held by its creator";
    }).join();
    EXPECT_TRUE(uc::sync::ReleaseMutexObject(first));
    EXPECT_EQ(ProbeFromAnotherThread(first), WaitResult::Acquired);
}

TEST(CustomMutex, NamesTheSystemRefusesGiveZeroNotAnException) {
    for (const std::wstring& name : {std::wstring(261, L'x'), std::wstring(L"Local\\uc\\nested"), std::wstring(L"uc\\slash")}) {
        CCustomMutex m;
        EXPECT_EQ(m.Create(nullptr, 0, name.c_str()), 0) << name.size();
        EXPECT_EQ(m.GetHandle(), nullptr);
        EXPECT_FALSE(CMutexLock(m).IsValid());
    }
    // Names the platform accepts, however they look: long, with spaces, slashes and non-ASCII letters.
    for (const std::wstring& name : {UniqueLockName(L"") + std::wstring(200, L'y'), UniqueLockName(L" sp ace/\u00FC%"),
                                     L"Local\\" + UniqueLockName(L"ns")}) {
        CCustomMutex m;
        EXPECT_EQ(m.Create(nullptr, 0, name.c_str()), 1) << name.size();
        EXPECT_TRUE(CMutexLock(m).IsValid());
    }
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
    EXPECT_FALSE(CPriorityLock(m).IsValid());
}

TEST(MutexGuards, RecursiveForTheOwnerAndNothingStaysLockedAfterAFailure) {
    CCustomMutex m, none;
    ASSERT_EQ(m.Create(nullptr, 0, nullptr), 1);
    {
        CMutexLock outer(m);
        CPriorityLock inner(m);
        EXPECT_TRUE(outer.IsValid() && inner.IsValid());
        EXPECT_EQ(ProbeFromAnotherThread(m.GetHandle()), WaitResult::Timeout);
        EXPECT_TRUE(CMutexLockMultiple(0, nullptr).IsValid()) << "no mutex: valid, and releases nothing";
        EXPECT_EQ(ProbeFromAnotherThread(m.GetHandle()), WaitResult::Timeout);
    }
    EXPECT_EQ(ProbeFromAnotherThread(m.GetHandle()), WaitResult::Acquired);
    // Guards on a mutex never created fail at once; a multiple one takes none of the others.
    EXPECT_FALSE(CMutexLock(none).IsValid());
    EXPECT_FALSE(CPriorityLock(none).IsValid());
    CCustomMutex* both[] = {&m, &none};
    EXPECT_FALSE(CMutexLockMultiple(2, both).IsValid());
    EXPECT_FALSE(CMutexLockMultiple(3, nullptr).IsValid());
    EXPECT_EQ(ProbeFromAnotherThread(m.GetHandle()), WaitResult::Acquired);
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
    AbandonFromAnotherThread(m.GetHandle());
    EXPECT_FALSE(CMutexLock(m).IsValid()) << "abandoned";
    EXPECT_TRUE(CMutexLock(m).IsValid()) << "the abandoned state is reported once";
}

TEST(MutexGuards, MultipleTakesAllAtOnceAndReportsAnAbandonedOne) {
    CCustomMutex mutexes[3];
    CCustomMutex* all[] = {&mutexes[0], &mutexes[1], &mutexes[2]};
    for (CCustomMutex* m : all) ASSERT_EQ(m->Create(nullptr, 0, UniqueLockName(L"all").c_str()), 1);
    AbandonFromAnotherThread(mutexes[1].GetHandle());
    for (bool valid : {false, true}) {
        {
            CMutexLockMultiple lock(3, all);
            EXPECT_EQ(lock.IsValid(), valid) << "the first time the middle one is abandoned";
            for (CCustomMutex* m : all) EXPECT_EQ(ProbeFromAnotherThread(m->GetHandle()), WaitResult::Timeout);
            EXPECT_EQ(mutexes[0].PriorityWaiters(), 0);
        }
        for (CCustomMutex* m : all) EXPECT_EQ(ProbeFromAnotherThread(m->GetHandle()), WaitResult::Acquired);
    }
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
