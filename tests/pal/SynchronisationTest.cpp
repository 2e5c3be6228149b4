#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>
#include <vector>

namespace
{
DWORD WINAPI SetGivenEvent(LPVOID parameter)
{
    SetEvent(parameter);
    return 0;
}

struct Counter
{
    CRITICAL_SECTION section;
    int value = 0;
};

DWORD WINAPI CountTo10000(LPVOID parameter)
{
    auto* const pCounter = static_cast<Counter*>(parameter);
    for (int i = 0; i < 10'000; ++i)
    {
        EnterCriticalSection(&pCounter->section);
        EnterCriticalSection(&pCounter->section); // the lock is recursive
        ++pCounter->value;
        LeaveCriticalSection(&pCounter->section);
        LeaveCriticalSection(&pCounter->section);
    }
    return 0;
}
} // namespace

TEST(AutoResetEvent, IsConsumedByOneWait)
{
    HANDLE const event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    ASSERT_NE(event, nullptr);
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_TIMEOUT);
    EXPECT_EQ(SetEvent(event), TRUE);
    EXPECT_EQ(SetEvent(event), TRUE); // signals do not add up
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_TIMEOUT);
    EXPECT_EQ(CloseHandle(event), TRUE);
}

TEST(ManualResetEvent, StaysSignalledUntilReset)
{
    HANDLE const event = CreateEventW(nullptr, TRUE, TRUE, nullptr);
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(event, INFINITE), WAIT_OBJECT_0);
    ResetEvent(event);
    EXPECT_EQ(WaitForSingleObject(event, 1), WAIT_TIMEOUT);
    CloseHandle(event);
}

TEST(WaitForMultipleObjects, PrefersTheLowestIndexAndLeavesTheOthersSignalled)
{
    HANDLE const events[] = {CreateEventW(nullptr, FALSE, FALSE, nullptr), CreateEventW(nullptr, FALSE, TRUE, nullptr),
                             CreateEventW(nullptr, FALSE, TRUE, nullptr)};
    EXPECT_EQ(WaitForMultipleObjects(3, events, FALSE, INFINITE), WAIT_OBJECT_0 + 1);
    EXPECT_EQ(WaitForMultipleObjects(3, events, FALSE, INFINITE), WAIT_OBJECT_0 + 2);
    EXPECT_EQ(WaitForMultipleObjects(3, events, FALSE, 0), WAIT_TIMEOUT);
    for (HANDLE const event : events)
        CloseHandle(event);
}

TEST(WaitForMultipleObjects, FailsOnWhatCannotBeWaitedFor)
{
    HANDLE const handles[] = {nullptr};
    EXPECT_EQ(WaitForMultipleObjects(1, handles, FALSE, 0), WAIT_FAILED);
    EXPECT_EQ(WaitForMultipleObjects(0, handles, FALSE, 0), WAIT_FAILED);
    EXPECT_EQ(WaitForMultipleObjects(1, nullptr, FALSE, 0), WAIT_FAILED);
    EXPECT_EQ(WaitForSingleObject(INVALID_HANDLE_VALUE, 0), WAIT_FAILED);
    EXPECT_EQ(CloseHandle(nullptr), FALSE);
    EXPECT_EQ(SetEvent(nullptr), FALSE);
    EXPECT_EQ(CreateEventW(nullptr, FALSE, FALSE, L"named"), nullptr);
}

TEST(Thread, WakesAWaiterAndCanItselfBeWaitedFor)
{
    HANDLE const event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    DWORD id = 0;
    HANDLE const thread = CreateThread(nullptr, 0, SetGivenEvent, event, 0, &id);
    ASSERT_NE(thread, nullptr);
    EXPECT_NE(id, 0U);
    EXPECT_EQ(WaitForSingleObject(event, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0); // an ended thread stays signalled
    CloseHandle(thread);
    CloseHandle(event);
    EXPECT_EQ(CreateThread(nullptr, 0, nullptr, nullptr, 0, nullptr), nullptr);
}

TEST(CriticalSection, AdmitsOneThreadAtATime)
{
    Counter counter;
    InitializeCriticalSection(&counter.section);
    std::vector<HANDLE> threads;
    for (int i = 0; i < 4; ++i)
        threads.push_back(CreateThread(nullptr, 0, CountTo10000, &counter, 0, nullptr));
    for (HANDLE const thread : threads)
    {
        WaitForSingleObject(thread, INFINITE);
        CloseHandle(thread);
    }
    EXPECT_EQ(counter.value, 40'000);
    DeleteCriticalSection(&counter.section);
}
