// What is asked of the application, and when it is to be started anew.

#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include <Ecore.h>
#include <fcntl.h>
#include <gmock/gmock.h>

#include "base/toolkit_handles.h"
#include "config_store.h"
#include "content_watch/content_watch.h"
#include "lookahead/lookahead.h"
#include "player_rules/config_keys.h"
#include "settings/settings.h"
#include "store_support/captured_log.h"
#include "store_support/scratch.h"
#include "usb_storage/stick_content.h"
#include "usb_storage/usb_devices.h"

namespace {

using namespace std::chrono_literals;
using platform::ContentWatch;
using platform::Extras;
using platform::Lookahead;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;

bool no_watches = false;

} // namespace

extern "C" {
int __real_inotify_add_watch(int descriptor, const char *path, uint32_t mask);
int __wrap_inotify_add_watch(int descriptor, const char *path, uint32_t mask)
{
    if (!no_watches)
        return __real_inotify_add_watch(descriptor, path, mask);
    errno = ENOSPC;
    return -1;
}
}

namespace {

class ContentWatchTest : public testing::Test {
  protected:
    static void SetUpTestSuite()
    {
        // Ecore's modules for the machine's own services complain without a system bus.
        setenv("ECORE_NO_SYSTEM_MODULES", "1", 1);
        ecore_init();
        machine_ = new store_test::ScratchDir;
        const store_test::Environment state("OSTREL_DEMO_STATE_DIR", *machine_ / "state");
        const store_test::Environment runtime("OSTREL_DEMO_RUNTIME_DIR", *machine_ / "");
        const store_test::Environment conf("OSTREL_DEMO_TV_CONF", *machine_ / "tv.conf");
        // No real stick of the machine that the tests run on.
        store_test::write_file(*machine_ / "tv.conf", "[usb]\nmounts = /nowhere\n");
        platform::Settings::get();
    }
    static void TearDownTestSuite()
    {
        delete machine_;
        machine_ = nullptr;
        ecore_shutdown();
    }

    void SetUp() override
    {
        no_watches = false;
        vconf_set_int(platform::DEMO_MODE_KEY, 0);
        store_test::write_file(folder_ / "a.mp4", "a film");
    }

    void TearDown() override
    {
        end();
        set_hanging(false);
        platform::usb_remove(slow_.path());
        platform::usb_remove(stick_.path());
        Lookahead::get().call_at_change({});
    }

    Extras begin(const Extras &asked, bool sticks = true)
    {
        ContentWatch::Environment environment;
        environment.follow_folder = true;
        environment.follow_sticks = sticks;
        environment.restart = [this] { restarted_ = true; };
        environment.nothing_plays = [this] { return nothing_plays_.load(); };
        environment.patience = {50ms, 100ms};
        environment.patience_at_start = patience_at_start_;
        environment.stick_contents = [disk = disk_, slow = slow_.path()](const std::string &mount) {
            if (mount == slow) {
                std::unique_lock<std::mutex> lock(disk->mutex);
                ++disk->looks;
                disk->changed.wait(lock, [&] { return !disk->hangs; });
            }
            return platform::stick_contents({mount});
        };
        watch_ = std::make_unique<ContentWatch>(std::move(environment));
        return watch_->begin(asked);
    }

    Extras begin_folder() { return begin({{"folder_path", folder_ / ""}}); }

    void end() { watch_.reset(); }

    static void change_items()
    {
        Lookahead::get().on_begun({"/next.mp4", {}});
        Lookahead::get().wait_until_done();
    }

    /** Runs the main loop until a thread has made it so, which does not wake it. */
    static bool wait_for(const std::function<bool()> &condition)
    {
        const platform::TimerPtr tick(ecore_timer_add(
            0.01, [](void *) -> Eina_Bool { return ECORE_CALLBACK_RENEW; }, nullptr));
        return store_test::run_loop_until(condition, 60.0);
    }

    bool is_restarted()
    {
        return wait_for([this] { return restarted_.load(); });
    }

    bool says(const std::string &what)
    {
        return wait_for([&] { return log_.text().find(what) != std::string::npos; });
    }

    void bring_content(const std::string &folder)
    {
        store_test::write_file(stick_ / folder + "/film.mp4", "a film");
    }

    /** The slow stick's, which its looks may outlive the test with. */
    struct Disk {
        std::mutex mutex;
        std::condition_variable changed;
        bool hangs = false;
        int looks = 0;
    };

    void plug_in_hanging_stick()
    {
        patience_at_start_ = 0ms;
        set_hanging(true);
        store_test::write_file(slow_ / "demo/film.mp4", "a film");
        platform::usb_add(slow_.path());
    }

    void set_hanging(bool hangs)
    {
        const std::lock_guard<std::mutex> lock(disk_->mutex);
        disk_->hangs = hangs;
        disk_->changed.notify_all();
    }

    int looks_at_slow_stick()
    {
        const std::lock_guard<std::mutex> lock(disk_->mutex);
        return disk_->looks;
    }

    static store_test::ScratchDir *machine_;
    const store_test::ScratchDir slow_;
    const std::shared_ptr<Disk> disk_ = std::make_shared<Disk>();
    std::chrono::milliseconds patience_at_start_{60'000};
    const store_test::ScratchDir folder_;
    const store_test::ScratchDir stick_;
    const store_test::CapturedLog log_;
    std::unique_ptr<ContentWatch> watch_;
    std::atomic<bool> restarted_{false};
    std::atomic<bool> nothing_plays_{false};
};

store_test::ScratchDir *ContentWatchTest::machine_ = nullptr;

TEST_F(ContentWatchTest, AChangedFolderIsTakenUpWhenTheItemHasEnded)
{
    EXPECT_THAT(begin_folder(), ElementsAre(Pair("folder_path", folder_ / "")));
    change_items();
    EXPECT_FALSE(restarted_);

    store_test::write_file(folder_ / "b.mp4", "another film");

    ASSERT_TRUE(says("holds other files"));
    EXPECT_FALSE(restarted_) << "in the middle of an item";
    change_items();
    EXPECT_TRUE(restarted_);
}

TEST_F(ContentWatchTest, WhereNothingCanBePlayedItIsTakenUpAtOnce)
{
    nothing_plays_ = true;
    begin_folder();
    store_test::write_file(folder_ / "b.mp4", "another film");
    EXPECT_TRUE(is_restarted());
}

TEST_F(ContentWatchTest, AFolderThatIsReplacedAsAWholeIsFollowedFurther)
{
    const store_test::ScratchDir other;
    store_test::write_file(other / "b.mp4", "another film");
    begin_folder();
    ASSERT_EQ(renameat2(AT_FDCWD, folder_.path().c_str(), AT_FDCWD, other.path().c_str(),
                        RENAME_EXCHANGE),
              0);
    EXPECT_TRUE(says("holds other files"));
}

TEST_F(ContentWatchTest, AFolderIsFollowedWhereTheKernelHasNoMoreWatches)
{
    no_watches = true;
    begin_folder();
    EXPECT_THAT(log_.text(), HasSubstr("cannot be watched (No space left on device); it is looked "
                                       "at once a minute"));
    store_test::write_file(folder_ / "b.mp4", "another film");
    EXPECT_TRUE(says("holds other files"));
}

TEST_F(ContentWatchTest, AStickGoesBeforeTheBuiltInFolderWhereNothingElseIsAskedFor)
{
    bring_content("Demo");
    platform::usb_add(stick_.path());
    EXPECT_THAT(begin({}), ElementsAre(Pair("demo_player_mode", "folder_contents_player"),
                                       Pair("folder_path", stick_ / "Demo/")));
    end();
    const Extras asked = {{"repeat_mode", "no"}};
    EXPECT_EQ(begin(asked), asked);
}

TEST_F(ContentWatchTest, AStickBringsNoDemoBackThatWasSwitchedOff)
{
    bring_content("demo");
    platform::usb_add(stick_.path());
    vconf_set_int(platform::DEMO_MODE_KEY, -1);
    EXPECT_THAT(begin({}), IsEmpty());
}

TEST_F(ContentWatchTest, AStickThatComesOrGoesIsTakenUpAtOnce)
{
    bring_content("demo");
    ASSERT_THAT(begin({}), IsEmpty());
    platform::usb_add(stick_.path());
    EXPECT_TRUE(is_restarted());
    end();
    restarted_ = false;

    ASSERT_THAT(begin({}), Not(IsEmpty()));
    platform::usb_remove(stick_.path());
    EXPECT_TRUE(is_restarted());
    EXPECT_THAT(log_.text(), HasSubstr(stick_ / "demo/ is gone"));
}

TEST_F(ContentWatchTest, ASticksComingMakesNoDifferenceToWhatWasAskedFor)
{
    bring_content("demo");
    begin_folder();
    platform::usb_add(stick_.path());
    // The same thread would have looked at the stick before.
    store_test::write_file(folder_ / "b.mp4", "another film");
    EXPECT_TRUE(says("holds other files"));
    EXPECT_FALSE(restarted_);
}

TEST_F(ContentWatchTest, AStickThatAnswersTooLateIsTakenUpOnceUntilItIsPulled)
{
    plug_in_hanging_stick();
    ASSERT_THAT(begin({}), IsEmpty());
    EXPECT_FALSE(restarted_);
    set_hanging(false);
    ASSERT_TRUE(is_restarted());
    end();

    restarted_ = false;
    set_hanging(true);
    const int looks = looks_at_slow_stick();
    ASSERT_THAT(begin({}), IsEmpty());
    ASSERT_TRUE(wait_for([&] { return looks_at_slow_stick() == looks + 1; }));
    platform::usb_tell_change();
    set_hanging(false);
    // The looks follow each other, so the first one's result has been taken.
    platform::usb_tell_change();
    ASSERT_TRUE(wait_for([&] { return looks_at_slow_stick() >= looks + 2; }));
    EXPECT_FALSE(restarted_);

    platform::usb_remove(slow_.path());
    ASSERT_TRUE(wait_for([] { return store_test::read_file(*machine_ / "slow_sticks").empty(); }));
    platform::usb_add(slow_.path());
    EXPECT_TRUE(is_restarted());
}

TEST_F(ContentWatchTest, AStickThatHangsHidesNeitherAnotherNorTheFolder)
{
    plug_in_hanging_stick();
    patience_at_start_ = 1s; // which the stick that hangs uses up
    ASSERT_THAT(begin({}), IsEmpty());
    EXPECT_THAT(log_.text(), HasSubstr(slow_.path() + " does not answer in time"));
    EXPECT_THAT(log_.text(), Not(HasSubstr("the folder is not followed")));
    bring_content("demo");
    platform::usb_add(stick_.path());
    EXPECT_TRUE(is_restarted());
    end();

    EXPECT_THAT(begin({}), ElementsAre(Pair("demo_player_mode", "folder_contents_player"),
                                       Pair("folder_path", stick_ / "demo/")));
}

} // namespace
