// Every step through small lists of videos and photos: which entry comes, and what is done for it.

#include "player_lines.h"

using testing::ValuesIn;

namespace {

enum class Step { Contents, Next, Previous };

struct SequenceCase {
    Step step;
    std::string kinds; /**< the list: 'v' for a video, 'V' for one with a subtitle, 'p' a photo */
    unsigned int current; /**< index of the entry before */
    int selection;
    bool photo_shown; /**< what is on the screen, whatever the list says */

    std::string name(size_t index) const
    {
        return std::string(1, static_cast<char>('a' + index)) +
               (kinds[index] == 'p' ? ".jpg" : ".mp4");
    }
};

std::ostream &operator<<(std::ostream &out, const SequenceCase &now)
{
    const char *const steps[] = {"contents", "next", "previous"};
    return out << steps[static_cast<int>(now.step)] << " of " << now.kinds << " at " << now.current
               << ", selection " << now.selection << ", " << (now.photo_shown ? "photo" : "video")
               << " shown";
}

std::vector<SequenceCase> all_cases()
{
    std::vector<SequenceCase> cases;
    for (const char *list : {"v", "V", "p", "vV", "vp", "pV", "pp", "vVv", "Vpv", "pvp", "ppp"}) {
        const std::string kinds = list;
        const auto size = static_cast<int>(kinds.size());
        for (unsigned int current = 0; current < kinds.size(); ++current) {
            for (const bool photo_shown : {false, true}) {
                for (int selection = -1; selection <= size + 2; ++selection) {
                    for (const Step step : {Step::Contents, Step::Next, Step::Previous})
                        cases.push_back({step, kinds, current, selection, photo_shown});
                }
            }
        }
    }
    return cases;
}

class PlaySequenceTranscriptTest : public PlayerTest,
                                   public testing::WithParamInterface<SequenceCase> {
  protected:
    PlaySequenceTranscriptTest()
    {
        const SequenceCase &now = GetParam();
        make_window();
        make_video_player();
        std::vector<std::string> names;
        for (size_t i = 0; i < now.kinds.size(); ++i)
            names.push_back(now.name(i));
        fill_play_list(names);
        for (size_t i = 0; i < now.kinds.size(); ++i) {
            if (now.kinds[i] == 'V')
                player_.m_vdcPlayList[i].strSubtitleName = "sub.srt";
        }
        if (now.photo_shown) {
            make_picture();
            player_.StartSlideShow();
        } else {
            fake_.media.state = PLAYER_STATE_PLAYING;
        }
        player_.m_iPlayingType = now.photo_shown ? 1 : 0;
        player_.m_iPlayIndex = now.selection;
        player_.m_uiCurPlayIndex = now.current;
        player_.m_bRepeat = false;
        fake_.store.values[ConfigKey::DEMO_MODE] = 0x0707;
        fake_.forget();
    }

    // What is done for an entry once it is chosen.
    Lines chosen_lines(size_t index) const
    {
        const SequenceCase &now = GetParam();
        const std::string subtitle =
            now.kinds[index] == 'V' ? FOLDER + std::string("sub.srt") : std::string();
        const OnScreen before = now.photo_shown ? OnScreen{true, 1, PLAYER_STATE_IDLE, "timer#1"}
                                                : OnScreen{false, 0, PLAYER_STATE_PLAYING, ""};
        return entry_lines(FOLDER + now.name(index), subtitle, now.kinds[index] == 'p', before,
                           now.kinds.size() == 1);
    }
};

TEST_P(PlaySequenceTranscriptTest, TheEntryIsChosenAndPlayed)
{
    const SequenceCase &now = GetParam();
    const size_t size = now.kinds.size();
    size_t index = 0;
    Lines expected;
    switch (now.step) {
    case Step::Contents:
        expected += "D \"" + std::to_string(now.selection) + "\"";
        expected += folder_lines();
        if (now.selection > 0 && static_cast<size_t>(now.selection) <= size)
            index = static_cast<size_t>(now.selection) - 1;
        else if (now.selection > 0)
            expected += writes(ConfigKey::DEMO_MODE, 0);
        break;
    case Step::Next:
        expected += folder_lines();
        index = now.current + 1 == size ? 0 : now.current + 1;
        break;
    case Step::Previous:
        expected += folder_lines();
        index = now.current == 0 ? size - 1 : now.current - 1;
        break;
    }
    const bool leaves = now.step == Step::Contents && now.selection == -1;
    if (leaves)
        expected += exit_lines();
    else
        expected += chosen_lines(index);

    const bool played = now.step == Step::Contents ? player_.m_PlayContents()
                        : now.step == Step::Next   ? player_.m_PlayNextFile()
                                                   : player_.m_PlayPreviousFile();

    EXPECT_EQ(fake_.all(), expected);
    EXPECT_EQ(played, !leaves);
    EXPECT_EQ(player_.m_uiCurPlayIndex, index);
    EXPECT_EQ(player_.m_iPlayIndex, now.selection) << "a stale selection is not corrected";
    const bool photo = leaves ? now.photo_shown : now.kinds[index] == 'p';
    EXPECT_EQ(player_.m_iPlayingType, photo ? 1 : 0);
    EXPECT_EQ(player_.m_strPlayPath, leaves ? FOLDER : FOLDER + now.name(index));
    const std::string subtitle = leaves                    ? FOLDER
                                 : now.kinds[index] == 'V' ? std::string(FOLDER) + "sub.srt"
                                                           : std::string();
    EXPECT_EQ(player_.m_strSubtitlePath, subtitle);
}

INSTANTIATE_TEST_SUITE_P(Lists, PlaySequenceTranscriptTest, ValuesIn(all_cases()));

} // namespace
