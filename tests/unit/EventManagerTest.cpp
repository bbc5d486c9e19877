#include "player/util/EventManager.h"

#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lines.h"
#include "platform.h"

using testing::IsEmpty;

namespace {

bool out_of_memory = false;

} // namespace

// The event manager asks for a copy's memory in this form, and nothing else here does.
void *operator new[](std::size_t size, const std::nothrow_t &) noexcept
{
    return out_of_memory ? nullptr : ::operator new[](size);
}

namespace {

struct Received {
    void *data;
    unsigned int size;
    stPipeRecord record;
};

std::vector<Received> &received()
{
    static std::vector<Received> all;
    return all;
}

void receive(void *data, void *buffer, unsigned int nbyte)
{
    Received entry = {data, nbyte, {}};
    std::memcpy(&entry.record, buffer, sizeof entry.record);
    received().push_back(entry);
}

class EventManagerTest : public testing::Test {
  protected:
    EventManagerTest() : fake_((CEventManager::ReleaseInstance(), fake::reset()))
    {
        received().clear();
        fake_.registry.name(&data_, "data of the handler");
    }
    ~EventManagerTest() override { CEventManager::ReleaseInstance(); }

    CEventManager &manager_with_pipe()
    {
        EXPECT_TRUE(CEventManager::GetInstance()->InitEventManager(receive, &data_));
        fake_.forget();
        return *CEventManager::GetInstance();
    }

    // The event points at the bytes, which stay the caller's.
    static CEvent event_with(const char *bytes)
    {
        return {99, 1, 640, 480, static_cast<int32_t>(std::strlen(bytes)), bytes};
    }

    fake::Platform &fake_;
    int data_ = 0;
};

TEST_F(EventManagerTest, GetInstanceGivesTheSameInstanceEachTime)
{
    CEventManager *first = CEventManager::GetInstance();

    ASSERT_NE(first, nullptr);
    EXPECT_EQ(CEventManager::GetInstance(), first);
    EXPECT_THAT(fake_.all(), IsEmpty());
}

TEST_F(EventManagerTest, InitMakesOnePipeForTheHandler)
{
    EXPECT_TRUE(CEventManager::GetInstance()->InitEventManager(receive, &data_));

    EXPECT_THAT(fake_.all(), LinesAre("ecore_pipe_add(data of the handler)"));
}

TEST_F(EventManagerTest, InitWithoutAPipeLogsAtInfoLevelAndDropsLaterEvents)
{
    fake_.fail("ecore_pipe_add");

    EXPECT_FALSE(CEventManager::GetInstance()->InitEventManager(receive, &data_));
    CEventManager::GetInstance()->SendEvent(2, 0);

    EXPECT_THAT(fake_.all(),
                LinesAre("ecore_pipe_add(data of the handler)", "I \"Add Ecore Pipe Failed\"",
                         "I \"iEventID = 2 iParam1 = 0\""));
}

TEST_F(EventManagerTest, ASecondInitLeavesTheFirstPipe)
{
    CEventManager &manager = manager_with_pipe();

    EXPECT_TRUE(manager.InitEventManager(receive, &data_));

    EXPECT_THAT(fake_.calls(), LinesAre("ecore_pipe_add(data of the handler)"));
    CEventManager::ReleaseInstance();
    EXPECT_THAT(fake_.leftovers(), LinesAre("pipe#1"));
}

TEST_F(EventManagerTest, ReleaseDeletesThePipe)
{
    manager_with_pipe();

    CEventManager::ReleaseInstance();

    EXPECT_THAT(fake_.all(), LinesAre("I \"\"", "ecore_pipe_del(pipe#1)"));
    EXPECT_THAT(fake_.leftovers(), IsEmpty());
}

TEST_F(EventManagerTest, ReleaseWithoutAPipeDeletesNone)
{
    CEventManager::GetInstance();

    CEventManager::ReleaseInstance();

    EXPECT_THAT(fake_.all(), LinesAre("I \"\""));
}

TEST_F(EventManagerTest, ASecondReleaseOnlyLogs)
{
    manager_with_pipe();
    CEventManager::ReleaseInstance();
    fake_.forget();

    CEventManager::ReleaseInstance();

    EXPECT_THAT(fake_.all(), LinesAre("I \"\""));
}

TEST_F(EventManagerTest, AnInstanceMadeAfterReleaseHasNoPipe)
{
    manager_with_pipe();
    CEventManager::ReleaseInstance();
    fake_.forget();

    CEventManager::GetInstance()->SendEvent(8, 1);

    EXPECT_THAT(fake_.all(), LinesAre("I \"iEventID = 8 iParam1 = 1\""));
}

TEST_F(EventManagerTest, SendBeforeInitWritesNothingAndLogsNoError)
{
    CEventManager::GetInstance()->SendEvent(3, 0);

    EXPECT_THAT(fake_.all(), LinesAre("I \"iEventID = 3 iParam1 = 0\""));
}

TEST_F(EventManagerTest, SendLogsAndWritesOneRecord)
{
    manager_with_pipe().SendEvent(8, 17);

    EXPECT_THAT(fake_.all(),
                LinesAre("I \"iEventID = 8 iParam1 = 17\"", "ecore_pipe_write(8, 17)"));
}

TEST_F(EventManagerTest, TheHandlerGetsSixWordsAndItsData)
{
    manager_with_pipe().SendEvent(8, -5);

    fake_.loop.drain_pipe();

    ASSERT_EQ(received().size(), 1U);
    EXPECT_EQ(received()[0].data, &data_);
    EXPECT_EQ(received()[0].size, 24U);
    const stPipeRecord &record = received()[0].record;
    EXPECT_EQ(record.iEventID, 8);
    EXPECT_EQ(record.iParam1, -5);
    EXPECT_EQ(record.iParam2, 0);
    EXPECT_EQ(record.iParam3, 0);
    EXPECT_EQ(record.uiBufferSize, 0U);
    EXPECT_EQ(record.uiBuffer, 0U);
}

TEST_F(EventManagerTest, RecordsArriveInTheOrderOfSending)
{
    CEventManager &manager = manager_with_pipe();
    for (int i = 0; i < 5; ++i)
        manager.SendEvent(i, 10 * i);

    fake_.loop.drain_pipe();

    ASSERT_EQ(received().size(), 5U);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(received()[static_cast<size_t>(i)].record.iEventID, i);
        EXPECT_EQ(received()[static_cast<size_t>(i)].record.iParam1, 10 * i);
    }
}

TEST_F(EventManagerTest, RecordsStillQueuedAreNeverHandledAfterRelease)
{
    manager_with_pipe().SendEvent(2, 0);

    CEventManager::ReleaseInstance();
    fake_.loop.drain_pipe();

    EXPECT_THAT(received(), IsEmpty());
}

TEST_F(EventManagerTest, AFailedWriteIsLoggedWithTheEvent)
{
    CEventManager &manager = manager_with_pipe();
    fake_.fail("ecore_pipe_write");

    manager.SendEvent(5, 3);

    EXPECT_THAT(fake_.all(), LinesAre("I \"iEventID = 5 iParam1 = 3\"", "ecore_pipe_write(5, 3)",
                                      "E \"ecore_pipe_write failed iEventID = 5\""));
    fake_.loop.drain_pipe();
    EXPECT_THAT(received(), IsEmpty());
}

TEST_F(EventManagerTest, AnEventWithABufferTravelsWithItsSizeAndACopy)
{
    char bytes[] = "hello";
    CEvent event = event_with(bytes);
    CEventManager &manager = manager_with_pipe();

    manager.SendEvent(12, event);
    std::memset(bytes, 'X', 5);
    fake_.loop.drain_pipe();

    EXPECT_THAT(fake_.all(), LinesAre("I \"Type:1 Width:640 Height:480 BufferSize:5\"",
                                      "ecore_pipe_write(12, 1, 640, 480, 5 bytes)"));
    ASSERT_EQ(received().size(), 1U);
    const stPipeRecord &record = received()[0].record;
    EXPECT_EQ(record.iEventID, 12);
    EXPECT_EQ(record.iParam1, 1);
    EXPECT_EQ(record.iParam2, 640);
    EXPECT_EQ(record.iParam3, 480);
    EXPECT_EQ(record.uiBufferSize, 5U);
    EXPECT_NE(record.uiBuffer, 0U);
    const std::unique_ptr<uint8_t[]> copy = manager.TakeBuffer(record);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(std::memcmp(copy.get(), "hello", 5), 0);
}

TEST_F(EventManagerTest, ABufferCanBeTakenOnce)
{
    CEventManager &manager = manager_with_pipe();
    CEvent event = event_with("once");
    manager.SendEvent(12, event);
    fake_.loop.drain_pipe();
    ASSERT_EQ(received().size(), 1U);

    EXPECT_NE(manager.TakeBuffer(received()[0].record), nullptr);
    EXPECT_EQ(manager.TakeBuffer(received()[0].record), nullptr);
}

TEST_F(EventManagerTest, ARecordWithoutABufferHasNoneToTake)
{
    CEventManager &manager = manager_with_pipe();
    manager.SendEvent(8, 1);
    fake_.loop.drain_pipe();
    ASSERT_EQ(received().size(), 1U);

    EXPECT_EQ(manager.TakeBuffer(received()[0].record), nullptr);
}

TEST_F(EventManagerTest, EachBufferKeepsItsOwnBytes)
{
    CEventManager &manager = manager_with_pipe();
    CEvent first = event_with("first");
    CEvent second = event_with("second");
    manager.SendEvent(12, first);
    manager.SendEvent(13, second);
    fake_.loop.drain_pipe();
    ASSERT_EQ(received().size(), 2U);

    const std::unique_ptr<uint8_t[]> second_copy = manager.TakeBuffer(received()[1].record);
    const std::unique_ptr<uint8_t[]> first_copy = manager.TakeBuffer(received()[0].record);

    ASSERT_NE(first_copy, nullptr);
    ASSERT_NE(second_copy, nullptr);
    EXPECT_EQ(std::memcmp(first_copy.get(), "first", 5), 0);
    EXPECT_EQ(std::memcmp(second_copy.get(), "second", 6), 0);
}

class EventManagerEmptyBufferTest : public EventManagerTest,
                                    public testing::WithParamInterface<int> {};

TEST_P(EventManagerEmptyBufferTest, TheBufferIsNotRead)
{
    CEvent event = event_with("");
    event.iBufferSize = GetParam();
    event.pBuffer = reinterpret_cast<const void *>(static_cast<uintptr_t>(1));

    manager_with_pipe().SendEvent(12, event);
    fake_.loop.drain_pipe();

    ASSERT_EQ(received().size(), 1U);
    EXPECT_EQ(received()[0].record.iParam2, 640);
    EXPECT_EQ(received()[0].record.uiBufferSize, 0U);
    EXPECT_EQ(received()[0].record.uiBuffer, 0U);
    EXPECT_THAT(fake_.all(), LinesAre("I \"Type:1 Width:640 Height:480 BufferSize:" +
                                          std::to_string(GetParam()) + "\"",
                                      "ecore_pipe_write(12, 1, 640, 480)"));
}

INSTANTIATE_TEST_SUITE_P(SizesNotAboveZero, EventManagerEmptyBufferTest,
                         testing::Values(0, -1, INT32_MIN));

TEST_F(EventManagerTest, AnEventWithABufferIsDroppedWithoutAPipe)
{
    CEvent event = event_with("lost");

    CEventManager::GetInstance()->SendEvent(12, event);

    EXPECT_THAT(fake_.all(), LinesAre("I \"Type:1 Width:640 Height:480 BufferSize:4\""));
}

TEST_F(EventManagerTest, AFailedWriteOfABufferIsLogged)
{
    CEventManager &manager = manager_with_pipe();
    fake_.fail("ecore_pipe_write");
    CEvent event = event_with("lost");

    manager.SendEvent(12, event);

    EXPECT_THAT(fake_.all(), LinesAre("I \"Type:1 Width:640 Height:480 BufferSize:4\"",
                                      "ecore_pipe_write(12, 1, 640, 480, 4 bytes)",
                                      "E \"ecore_pipe_write failed iEventID = 12\""));
    fake_.loop.drain_pipe();
    EXPECT_THAT(received(), IsEmpty());
}

TEST_F(EventManagerTest, TheCopyOfALostEventIsFreed)
{
    CEventManager &manager = manager_with_pipe();
    fake_.fail("ecore_pipe_write");
    CEvent event = event_with("lost");
    manager.SendEvent(12, event);

    // The number that the lost record carried names no copy any more.
    stPipeRecord record = {12, 1, 640, 480, 4, 0};
    for (record.uiBuffer = 0; record.uiBuffer < 1000; ++record.uiBuffer)
        ASSERT_EQ(manager.TakeBuffer(record), nullptr);
}

TEST_F(EventManagerTest, WithoutMemoryForTheCopyTheEventIsLost)
{
    CEventManager &manager = manager_with_pipe();
    CEvent event = event_with("lost");

    out_of_memory = true;
    manager.SendEvent(12, event);
    out_of_memory = false;

    EXPECT_THAT(fake_.all(), LinesAre("I \"Type:1 Width:640 Height:480 BufferSize:4\"",
                                      "E \"ecore_pipe_write failed iEventID = 12\""));
}

TEST_F(EventManagerTest, ASizeWithoutABufferSendsNone)
{
    CEvent event = {99, 1, 640, 480, 5, nullptr};

    manager_with_pipe().SendEvent(12, event);
    fake_.loop.drain_pipe();

    ASSERT_EQ(received().size(), 1U);
    EXPECT_EQ(received()[0].record.uiBufferSize, 0U);
    EXPECT_EQ(received()[0].record.uiBuffer, 0U);
}

// ---- Words for buffers ----

// As wide as a pointer here, as the record's word is on a 32-bit set.
using WideWords = CBufferWords<uintptr_t>;
static_assert(WideWords::POINTER_FITS);
static_assert(CBufferWords<uint32_t>::POINTER_FITS == (sizeof(void *) == 4));

std::unique_ptr<uint8_t[]> buffer_with(uint8_t byte)
{
    auto buffer = std::make_unique<uint8_t[]>(16);
    buffer[0] = byte;
    return buffer;
}

TEST(BufferWordsTest, AWordThatHoldsAPointerIsTheAddressForTheReceiverToFree)
{
    auto words = std::make_unique<WideWords>();
    auto buffer = buffer_with(42);
    const uint8_t *address = buffer.get();

    const uintptr_t word = words->Put(std::move(buffer));

    ASSERT_EQ(word, reinterpret_cast<uintptr_t>(address));
    EXPECT_EQ(address[0], 42);
    delete[] address;
    // The C library notices when the buffer is freed once more.
    words.reset();
}

TEST(BufferWordsTest, AnAddressCanBeTakenInsteadOfFreed)
{
    WideWords words;
    auto buffer = buffer_with(42);
    const uint8_t *address = buffer.get();

    EXPECT_EQ(words.Take(words.Put(std::move(buffer))).get(), address);
    EXPECT_EQ(words.Take(0), nullptr);
}

TEST(BufferWordsTest, ATokenIsNeitherZeroNorThatOfAWaitingBuffer)
{
    CBufferWords<uint8_t> words;
    static_assert(!CBufferWords<uint8_t>::POINTER_FITS);
    const uint8_t waiting = words.Put(buffer_with(42));

    for (int i = 0; i < 1000; ++i) {
        const uint8_t token = words.Put(buffer_with(static_cast<uint8_t>(i)));
        ASSERT_NE(token, 0);
        ASSERT_NE(token, waiting);
        const auto taken = words.Take(token);
        ASSERT_NE(taken, nullptr);
        ASSERT_EQ(taken[0], static_cast<uint8_t>(i));
    }
    const auto taken = words.Take(waiting);
    ASSERT_NE(taken, nullptr);
    EXPECT_EQ(taken[0], 42);
}

} // namespace
