// A thread for slow work: order, deadlines, and an end that waits for nobody too long.

#include <thread>

#include <gmock/gmock.h>

#include "base/worker_thread.h"
#include "store_support/thread_shortage.h"

using platform::WorkerThread;
using namespace std::chrono_literals;

namespace {

TEST(WorkerThread, RunsTasksInTheirOrder)
{
    WorkerThread worker("test");
    std::vector<int> ran;
    std::promise<void> done;

    for (int i = 0; i < 100; i++)
        EXPECT_TRUE(worker.post([&ran, i] { ran.push_back(i); }));
    worker.post([&done] { done.set_value(); });
    done.get_future().wait();

    std::vector<int> expected(100);
    for (int i = 0; i < 100; i++)
        expected[static_cast<size_t>(i)] = i;
    EXPECT_EQ(ran, expected);
}

TEST(WorkerThread, TakesNothingAfterItWasClosed)
{
    WorkerThread worker("test");
    worker.close();

    EXPECT_FALSE(worker.post([] { FAIL(); }));
    EXPECT_FALSE(worker.start({}));
    EXPECT_TRUE(worker.wait_for_end({})) << "there is no thread to wait for";
}

TEST(WorkerThread, ClosingDropsWhatWaitsAndTellsTheTaskThatRuns)
{
    WorkerThread worker("test");
    std::promise<void> begun;
    bool slept_to_the_end = true;
    worker.post([&] {
        begun.set_value();
        slept_to_the_end = worker.wait_until(WorkerThread::Clock::now() + 1h);
    });
    worker.post([] { FAIL() << "it was dropped"; });
    begun.get_future().wait();

    worker.close();

    EXPECT_TRUE(worker.wait_for_end({}));
    EXPECT_FALSE(slept_to_the_end);
    EXPECT_TRUE(worker.stopping());
}

TEST(WorkerThread, ATaskThatHangsIsLeftToItself)
{
    std::promise<void> release;
    std::promise<void> begun;
    std::shared_future<void> ended;
    {
        WorkerThread worker("test");
        ended = worker.ended();
        worker.post([&begun, wait = release.get_future().share()] {
            begun.set_value();
            wait.wait();
        });
        begun.get_future().wait();
    }
    EXPECT_EQ(ended.wait_for(0s), std::future_status::timeout);
    EXPECT_EQ(WorkerThread::hanging(0s), 1);
    EXPECT_EQ(WorkerThread::hanging(1h), 0);

    release.set_value();
    ended.wait();
    EXPECT_EQ(WorkerThread::hanging(0s), 0);
}

TEST(WorkerThread, OneThatHasNotBeenClosedHangsNotHoweverLongItsTaskTakes)
{
    WorkerThread worker("test");
    std::promise<void> begun;
    worker.post([&] {
        begun.set_value();
        worker.wait_until(WorkerThread::Clock::now() + 1h);
    });
    begun.get_future().wait();

    EXPECT_EQ(WorkerThread::hanging(0s), 0);
}

TEST(WorkerThread, MayBeEndedByItsOwnTask)
{
    auto worker = std::make_unique<WorkerThread>("test");
    const std::shared_future<void> ended = worker->ended();
    std::promise<bool> was_calling;
    EXPECT_FALSE(worker->is_calling());

    WorkerThread &self = *worker;
    self.post(
        [&was_calling, owned = std::make_shared<std::unique_ptr<WorkerThread>>(std::move(worker))] {
            was_calling.set_value((*owned)->is_calling());
            owned->reset();
        });

    ended.wait();
    EXPECT_TRUE(was_calling.get_future().get());
}

TEST(WorkerThread, WhatATaskHeldMayUseTheWorkerAsItGoes)
{
    WorkerThread worker("test");
    std::promise<void> done;
    std::shared_ptr<void> held(nullptr,
                               [&](void *) { worker.post([&done] { done.set_value(); }); });
    worker.post([held] {});
    held.reset();
    EXPECT_EQ(done.get_future().wait_for(std::chrono::seconds(40)), std::future_status::ready);
}

TEST(WorkerThread, CallsWhenADeadlineHasPassedAndAtItsEnd)
{
    WorkerThread worker("test");
    std::promise<int> enough;
    std::promise<void> at_end;
    int calls = 0;
    WorkerThread::Hooks hooks;
    hooks.next_deadline = [&]() -> std::optional<WorkerThread::Clock::time_point> {
        if (calls == 3)
            return {};
        return WorkerThread::Clock::now();
    };
    hooks.on_deadline = [&] {
        if (++calls == 3)
            enough.set_value(calls);
    };
    hooks.at_end = [&] { at_end.set_value(); };

    ASSERT_TRUE(worker.start(hooks));
    EXPECT_FALSE(worker.start(hooks)) << "it runs already";

    EXPECT_EQ(enough.get_future().get(), 3);
    worker.stop();
    at_end.get_future().wait();
    EXPECT_EQ(calls, 3);
}

TEST(WorkerThread, KeepsAliveWhatItsHooksHold)
{
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> alive = held;
    WorkerThread worker("test");
    WorkerThread::Hooks hooks;
    hooks.at_end = [held] {};
    held.reset();
    worker.start(std::move(hooks));
    EXPECT_FALSE(alive.expired());

    worker.close();
    worker.wait_for_end({});

    EXPECT_TRUE(alive.expired());
}

TEST(WorkerThread, TheTaskThatStartsItBringsTheHooks)
{
    WorkerThread worker("test");
    std::promise<void> called;
    std::optional<WorkerThread::Clock::time_point> deadline = WorkerThread::Clock::now();
    WorkerThread::Hooks hooks;
    hooks.next_deadline = [&] { return deadline; };
    hooks.on_deadline = [&] {
        deadline.reset();
        called.set_value();
    };
    store_test::threads_left = 0;
    EXPECT_FALSE(worker.post([] { FAIL() << "there is no thread"; }, hooks));

    EXPECT_TRUE(worker.post([] {}, hooks));

    EXPECT_EQ(called.get_future().wait_for(40s), std::future_status::ready);
}

TEST(WorkerThread, WhatRunsApartIsWaitedForAndLetsGoOfWhatItHoldsWhereItRan)
{
    std::thread::id ran;
    std::thread::id let_go;
    std::shared_ptr<void> held(nullptr, [&](void *) { let_go = std::this_thread::get_id(); });

    EXPECT_TRUE(WorkerThread::run_apart(
        "test", [&ran, held = std::move(held)] { ran = std::this_thread::get_id(); }, 40s));

    EXPECT_NE(ran, std::thread::id());
    EXPECT_NE(ran, std::this_thread::get_id());
    EXPECT_EQ(let_go, ran);
}

TEST(WorkerThread, WhatHangsApartIsLeftToItself)
{
    std::promise<void> release;
    const auto done = std::make_shared<std::promise<void>>();

    EXPECT_FALSE(WorkerThread::run_apart(
        "test",
        [done, wait = release.get_future().share()] {
            wait.wait();
            done->set_value();
        },
        1ms));

    release.set_value();
    done->get_future().wait();
}

} // namespace
