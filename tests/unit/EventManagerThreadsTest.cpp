// The event manager on Ecore's real pipe, with real threads behind it.

#include "player/util/EventManager.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <future>
#include <thread>
#include <vector>

#include <Ecore.h>
#include <gtest/gtest.h>

#include "dlog.h"

namespace {

std::atomic<int> errors_logged{0};

constexpr double DEADLINE_SECONDS = 20.0;

} // namespace

// Only counts: what the lines say is tested elsewhere.
int __dlog_print(int, int priority, const char *, const char *, ...)
{
    if (priority == DLOG_ERROR)
        ++errors_logged;
    return 0;
}

namespace {

class EventManagerThreadsTest : public testing::Test {
  protected:
    EventManagerThreadsTest()
    {
        // The pipe needs none of the system's modules, and they need a bus.
        setenv("ECORE_NO_SYSTEM_MODULES", "1", 1);
        ecore_init();
        errors_logged = 0;
        EXPECT_TRUE(CEventManager::GetInstance()->InitEventManager(receive, this));
    }

    ~EventManagerThreadsTest() override
    {
        CEventManager::ReleaseInstance();
        ecore_shutdown();
    }

    static void receive(void *data, void *buffer, unsigned int nbyte)
    {
        auto *self = static_cast<EventManagerThreadsTest *>(data);
        EXPECT_EQ(std::this_thread::get_id(), self->main_thread_);
        if (nbyte != 24) {
            ADD_FAILURE() << "a record of " << nbyte << " bytes";
            ecore_main_loop_quit();
            return;
        }
        stPipeRecord record;
        std::memcpy(&record, buffer, sizeof record);
        self->records_.push_back(record);
        if (self->records_.size() == self->expected_)
            ecore_main_loop_quit();
    }

    // Runs the main loop until that many records have come.
    void run_until(size_t expected)
    {
        expected_ = expected;
        Ecore_Timer *deadline = ecore_timer_add(DEADLINE_SECONDS, give_up, nullptr);
        ecore_main_loop_begin();
        ecore_timer_del(deadline);
        EXPECT_EQ(records_.size(), expected);
    }

    // Ends the senders. They may still be waiting for room in the pipe, if records were lost.
    void join(std::thread &first, std::thread &second)
    {
        const double deadline = ecore_time_get() + DEADLINE_SECONDS;
        while (senders_ > 0 && ecore_time_get() < deadline)
            ecore_main_loop_iterate();
        first.join();
        second.join();
    }

    static Eina_Bool give_up(void *)
    {
        ecore_main_loop_quit();
        return ECORE_CALLBACK_RENEW;
    }

    const std::thread::id main_thread_ = std::this_thread::get_id();
    std::vector<stPipeRecord> records_;
    size_t expected_ = 0;
    std::atomic<int> senders_{0};
};

TEST_F(EventManagerThreadsTest, RecordsOfTwoThreadsArriveWholeAndEachThreadsInOrder)
{
    constexpr int PER_THREAD = 5000;
    std::promise<void> start;
    const std::shared_future<void> started = start.get_future().share();
    const auto post = [this, started](int id) {
        started.wait();
        for (int i = 0; i < PER_THREAD; ++i)
            CEventManager::GetInstance()->SendEvent(id, i);
        --senders_;
    };
    senders_ = 2;
    std::thread first(post, 1);
    std::thread second(post, 2);
    start.set_value();

    run_until(2 * PER_THREAD);
    join(first, second);

    int next[3] = {0, 0, 0};
    for (const stPipeRecord &record : records_) {
        ASSERT_TRUE(record.iEventID == 1 || record.iEventID == 2) << record.iEventID;
        EXPECT_EQ(record.iParam1, next[record.iEventID]++);
        EXPECT_EQ(record.iParam2, 0);
        EXPECT_EQ(record.iParam3, 0);
        EXPECT_EQ(record.uiBufferSize, 0U);
        EXPECT_EQ(record.uiBuffer, 0U);
    }
    EXPECT_EQ(next[1], PER_THREAD);
    EXPECT_EQ(next[2], PER_THREAD);
    EXPECT_EQ(errors_logged, 0);
}

TEST_F(EventManagerThreadsTest, BuffersOfTwoThreadsKeepTheirBytes)
{
    constexpr int PER_THREAD = 200;
    const auto post = [this](int id) {
        for (int i = 0; i < PER_THREAD; ++i) {
            std::vector<uint8_t> bytes(static_cast<size_t>(i % 7 + 1), static_cast<uint8_t>(i));
            CEvent event = {0, i, id, -1, static_cast<int32_t>(bytes.size()), bytes.data()};
            CEventManager::GetInstance()->SendEvent(id, event);
        }
        --senders_;
    };
    senders_ = 2;
    std::thread first(post, 1);
    std::thread second(post, 2);

    run_until(2 * PER_THREAD);
    join(first, second);

    for (const stPipeRecord &record : records_) {
        ASSERT_EQ(record.uiBufferSize, static_cast<uint32_t>(record.iParam1 % 7 + 1));
        const auto copy = CEventManager::GetInstance()->TakeBuffer(record);
        ASSERT_NE(copy, nullptr);
        const auto expected = static_cast<uint8_t>(record.iParam1);
        EXPECT_TRUE(std::all_of(copy.get(), copy.get() + record.uiBufferSize,
                                [expected](uint8_t byte) { return byte == expected; }));
        EXPECT_EQ(CEventManager::GetInstance()->TakeBuffer(record), nullptr) << "taken twice";
    }
}

TEST_F(EventManagerThreadsTest, TheSendersRecordMayVanishAtOnce)
{
    std::thread([] {
        const uint8_t byte = 42;
        CEvent event = {0, 5, 6, 7, 1, &byte};
        CEventManager::GetInstance()->SendEvent(3, event);
        CEventManager::GetInstance()->SendEvent(4, 9);
    }).join();

    run_until(2);

    ASSERT_EQ(records_.size(), 2U);
    EXPECT_EQ(records_[0].iEventID, 3);
    EXPECT_EQ(records_[0].iParam3, 7);
    const auto copy = CEventManager::GetInstance()->TakeBuffer(records_[0]);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy[0], 42);
    EXPECT_EQ(records_[1].iEventID, 4);
    EXPECT_EQ(records_[1].iParam1, 9);
}

// The leak checker sees to it that the copies go as well.
TEST_F(EventManagerThreadsTest, RecordsInTheQueueAreDroppedWithThePipe)
{
    const uint8_t bytes[64] = {};
    CEvent event = {0, 1, 2, 3, sizeof bytes, bytes};
    for (int i = 0; i < 50; ++i) {
        CEventManager::GetInstance()->SendEvent(3, event);
        CEventManager::GetInstance()->SendEvent(4, i);
    }

    CEventManager::ReleaseInstance();
    ecore_main_loop_iterate();

    EXPECT_TRUE(records_.empty());
    EXPECT_TRUE(CEventManager::GetInstance()->InitEventManager(receive, this));
    CEventManager::GetInstance()->SendEvent(8, 1);
    run_until(1);
    ASSERT_EQ(records_.size(), 1U);
    EXPECT_EQ(records_[0].iEventID, 8);
}

} // namespace
