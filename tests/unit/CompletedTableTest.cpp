/**
 * The end of a video with every list, choice, entry and kind on the screen: which entry follows,
 * and every step on the way to it. The list is empty while a panel turns to the orientation that
 * has content.
 */
#include "event_dispatcher_test.h"
#include "player_lines.h"

namespace {

struct Completion {
    std::vector<std::string> names;
    int chosen;
    unsigned int current;
    int on_screen; /**< 0 video, 1 photo */
    bool repeat;
    bool folder_contents;
};

/** A controller whose video comes to its end. */
class Scene : public EventDispatcherTest {
  public:
    explicit Scene(const Completion &completion) : now_(completion)
    {
        fill_play_list(now_.names);
        for (stPlayListItem &entry : player_.m_vdcPlayList) {
            if (entry.strFileName == "b.mp4")
                entry.strSubtitleName = "b.srt";
        }
        player_.m_iPlayIndex = now_.chosen;
        player_.m_uiCurPlayIndex = now_.current;
        player_.m_bRepeat = now_.repeat;
        player_.m_bFolderContentsPlayer = now_.folder_contents;
        player_.m_strFolderPath = "/demo/show/";
        if (now_.on_screen == 1) {
            make_picture();
            player_.m_iPlayingType = 1;
            player_.m_pSlideShowTimer =
                ecore_timer_add(5.0, CPlayerInspector::m_OnStartSlideShowCB, controller_.get());
        } else {
            fake_.media.state = PLAYER_STATE_PLAYING;
        }
    }

    void TestBody() override {}

    void expect_next()
    {
        const size_t next = next_index();
        const std::string name = now_.names.empty() ? "" : now_.names[next];
        // An empty list has an entry of neither kind, so the kind changes every time.
        const int kind = now_.names.empty()                   ? 1 - now_.on_screen
                         : name == "b.jpg" || name == "c.jpg" ? 1
                                                              : 0;

        dispatch(ENDEMO_EVENT_PLAYER_COMPLETED);

        EXPECT_EQ(rest(), expected(name, kind));
        EXPECT_EQ(player_.m_uiCurPlayIndex, next);
        EXPECT_EQ(player_.m_iPlayingType, kind);
        EXPECT_EQ(player_.m_strPlayPath, folder() + name);
        EXPECT_EQ(player_.m_strSubtitlePath, subtitle_of(name));
        EXPECT_EQ(player_.m_iPlayIndex, now_.chosen);
        EXPECT_EQ(status(), -1);
        EXPECT_EQ(fake_.app.exit_requests, now_.repeat ? 0 : 1);
    }

  private:
    std::string folder() const { return now_.folder_contents ? "/demo/show/" : FOLDER; }

    std::string subtitle_of(const std::string &name) const
    {
        return name == "b.mp4" ? folder() + "b.srt" : "";
    }

    size_t next_index() const
    {
        const size_t size = now_.names.size();
        if (size == 0)
            return 0;
        if (now_.chosen == -1)
            return now_.current < size ? now_.current : 0;
        if (now_.chosen > 0)
            return now_.chosen <= static_cast<int>(size) ? static_cast<size_t>(now_.chosen) - 1 : 0;
        return (now_.current + 1) % size;
    }

    Lines expected(const std::string &name, int kind)
    {
        Lines lines;
        if (!now_.folder_contents)
            lines += folder_lines();
        lines += "I \"m_uiCurPlayIndex: " + std::to_string(now_.current) +
                 ", iPlayIndex: " + std::to_string(now_.chosen) +
                 ", m_vdcPlayList.size: " + std::to_string(now_.names.size()) + "\"";
        if (now_.names.empty())
            lines += "W \"0 0\"";
        player_state_e state = now_.on_screen == 0 ? PLAYER_STATE_PLAYING : PLAYER_STATE_IDLE;
        const bool switched = kind != now_.on_screen;
        if (switched && now_.on_screen == 0) {
            lines += video_stopping_lines(state);
        } else if (switched) {
            lines += {"I \"\"", "ecore_timer_del(timer#1)", "pictrel_destroy(picture#1)",
                      "pictrel_destroy_display(1)", "I \"Destroy end\""};
        }
        if (!now_.repeat) {
            lines += "D \"Repeat Mode is off\"";
            lines += exit_lines();
            return lines;
        }
        lines += "D \"Repeat Mode is on\"";
        if (now_.names.empty())
            return lines += "W \"play list is empty\"";
        const bool photo_before = now_.on_screen == 1;
        if (kind == 1)
            lines += photo_lines(folder() + name, photo_before ? 2 : 1, photo_before, photo_before);
        else
            lines += video_lines(folder() + name, subtitle_of(name), state, now_.names.size() == 1);
        return lines;
    }

    const Completion now_;
};

class CompletedTableTest : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(CompletedTableTest, TheNextEntryFollows)
{
    const auto size = static_cast<unsigned int>(GetParam().size());
    for (int chosen = -2; chosen <= 4; ++chosen) {
        for (unsigned int current = 0; current < size + 2; ++current) {
            for (int bits = 0; bits < 8; ++bits) {
                SCOPED_TRACE(testing::Message() << "chosen " << chosen << ", current " << current
                                                << ", bits " << bits);
                Scene scene(
                    {GetParam(), chosen, current, bits & 1, (bits & 2) != 0, (bits & 4) != 0});
                scene.expect_next();
                if (HasFailure())
                    return;
            }
        }
    }
}

using Names = std::vector<std::string>;
INSTANTIATE_TEST_SUITE_P(Lists, CompletedTableTest,
                         testing::Values(Names{"a.mp4", "b.mp4", "c.mp4"},
                                         Names{"a.mp4", "b.jpg", "c.jpg"},
                                         Names{"b.mp4", "a.mp4", "b.jpg"}, Names{"b.jpg", "c.jpg"},
                                         Names{"b.mp4"}, Names{"b.jpg"}, Names{}));

} // namespace
