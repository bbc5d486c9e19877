// What is open ahead of its time is let go of when the disk goes away that it may lie on.

#include <cstdlib>
#include <deque>
#include <filesystem>
#include <string>
#include <vector>

#include <Ecore.h>
#include <gmock/gmock.h>
#include <sched.h>
#include <sys/eventfd.h>
#include <sys/mount.h>
#include <unistd.h>

#include "base/descriptor.h"
#include "lookahead/lookahead.h"
#include "store_support/captured_log.h"
#include "store_support/scratch.h"
#include "usb_storage/usb_devices.h"
#include "usb_storage/usb_watch.h"

namespace {

using platform::ContentKind;
using platform::Lookahead;
using platform::PlayedItem;
using testing::ElementsAre;

class LettingGo : public testing::Test {
  protected:
    void SetUp() override
    {
        // Ecore's modules for the machine's own services complain without a system bus.
        setenv("ECORE_NO_SYSTEM_MODULES", "1", 1);
        ecore_init();
        for (const char *name : {"a.mp4", "b.mp4"})
            store_test::write_file(stick_ / name, "");
        Lookahead::get().set_opener(ContentKind::Video,
                                    {[this](const PlayedItem &) { calls_.emplace_back("open"); },
                                     [this] { calls_.emplace_back("drop"); }});
        for (const auto &entry : std::filesystem::directory_iterator(stick_.path())) {
            Lookahead::get().on_begun({entry.path(), {}});
            Lookahead::get().on_nearly_over(entry.path());
            break;
        }
        ASSERT_THAT(calls(), ElementsAre("open"));
    }

    void TearDown() override
    {
        Lookahead::get().set_opener(ContentKind::Video, {});
        Lookahead::get().drop();
        Lookahead::get().wait_until_done();
        ecore_shutdown();
    }

    /** What was asked of the media player. */
    const std::vector<std::string> &calls()
    {
        Lookahead::get().wait_until_done();
        return calls_;
    }

    const store_test::ScratchDir stick_;

  private:
    std::vector<std::string> calls_; ///< the look-ahead's thread's, until it is done
};

TEST_F(LettingGo, AStickThatIsToBeRemovedIsLetGoOf)
{
    ASSERT_TRUE(platform::usb_add(stick_.path()));
    ASSERT_THAT(calls(), ElementsAre("open"));

    ASSERT_TRUE(platform::usb_remove(stick_.path()));

    EXPECT_THAT(calls(), ElementsAre("open", "drop"));
}

TEST_F(LettingGo, ADiskThatIsPulledIsLetGoOf)
{
    const platform::Descriptor news(eventfd(1, EFD_CLOEXEC));
    std::deque<std::string> actions = {"add", "change"};
    platform::UsbWatch watch({{news.number(), [&]() -> std::optional<std::string> {
                                   if (actions.empty())
                                       return std::nullopt;
                                   const std::string action = actions.front();
                                   actions.pop_front();
                                   return action;
                               }}});
    ecore_main_loop_iterate_may_block(1);
    ASSERT_TRUE(actions.empty());
    EXPECT_THAT(calls(), ElementsAre("open"));

    actions = {"change", "remove"};
    ecore_main_loop_iterate_may_block(1);

    EXPECT_THAT(calls(), ElementsAre("open", "drop"));
}

TEST_F(LettingGo, WhoeverListensIsToldOfEachChange)
{
    std::vector<std::string> told;
    platform::usb_set_listener([&] { told.emplace_back("told"); });
    platform::usb_add(stick_.path());
    EXPECT_THAT(told, ElementsAre("told"));
    platform::usb_remove(stick_.path());
    EXPECT_THAT(told, ElementsAre("told", "told"));

    const platform::Descriptor news(eventfd(1, EFD_CLOEXEC));
    std::deque<std::string> actions = {"mount"};
    platform::UsbWatch watch({{news.number(), [&]() -> std::optional<std::string> {
                                   if (actions.empty())
                                       return std::nullopt;
                                   actions.pop_front();
                                   return "mount";
                               }}});
    ecore_main_loop_iterate_may_block(1);
    platform::usb_set_listener({});
    EXPECT_THAT(told, ElementsAre("told", "told", "told"));
}

TEST_F(LettingGo, TheMachinesDisksAndMountsCanBeWatched)
{
    const store_test::CapturedLog log;
    platform::UsbWatch::create();
    EXPECT_EQ(log.text(), "");
}

/** Mounts a file system where nobody else sees it. @return whether the listener was told of it */
bool hears_of_mount(const std::string &place)
{
    if (unshare(getuid() == 0 ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER) != 0)
        return false;
    const auto watch = platform::UsbWatch::create();
    bool told = false;
    platform::usb_set_listener([&] { told = true; });
    return mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("none", place.c_str(), "tmpfs", 0, nullptr) == 0 &&
           store_test::run_loop_until([&] { return told; }, 60.0);
}

TEST_F(LettingGo, WhoeverListensIsToldOfAMount)
{
    EXPECT_EXIT(_exit(hears_of_mount(stick_.path()) ? 0 : 1), testing::ExitedWithCode(0), "");
}

} // namespace
