#include "player_fixture.h"

#include <algorithm>

#include "player/util/EventManager.h"

std::string writes(const std::string &key, int value)
{
    return "vconf_set_int(\"" + key + "\", " + std::to_string(value) + ")";
}

Lines without(const Lines &lines, const std::vector<std::string> &prefixes)
{
    Lines kept;
    for (const std::string &line : lines) {
        const bool dropped =
            std::any_of(prefixes.begin(), prefixes.end(),
                        [&line](const std::string &prefix) { return line.rfind(prefix, 0) == 0; });
        if (!dropped)
            kept.push_back(line);
    }
    return kept;
}

Lines join(const std::vector<Lines> &pieces)
{
    Lines all;
    for (const Lines &piece : pieces)
        all.insert(all.end(), piece.begin(), piece.end());
    return all;
}

Lines exit_lines()
{
    return {"E \"\"", "ui_app_exit()"};
}

PlayerTest::PlayerTest()
    : fake_(fake::reset()),
      controller_((COstrelDemoUtil::SetWindowRotationType(ROTATION_TYPE_LANDSCAPE),
                   std::make_unique<COstrelDemoPlayer>())),
      player_(*controller_)
{
    CPlayerInspector::bStarted() = false;
    fake_.registry.name(controller_.get(), "controller");
    fake_.store.values = {
        {ConfigKey::DEMO_MODE, 0},          {ConfigKey::FILE_MODE, 1},
        {ConfigKey::ROTATION_AUTO_MODE, 0}, {ConfigKey::PORTRAIT_TIMER, 0},
        {ConfigKey::LANDSCAPE_TIMER, 0},    {ConfigKey::PLAYBACK_STATUS, -1},
    };
    fake_.storage.add_folder(FOLDER);
    fake_.forget();
}

PlayerTest::~PlayerTest()
{
    destroy_controller();
    CEventManager::ReleaseInstance();
    EXPECT_THAT(fake_.script.unused(), testing::IsEmpty()) << "failures that never came about";
    for (const std::string &left : fake_.leftovers()) {
        for (const char *temporary : {"text from", "open folder", "iterator", "row-class", "row#"})
            EXPECT_NE(left.rfind(temporary, 0), 0U) << left << " was never released";
    }
}

void PlayerTest::destroy_controller()
{
    controller_.reset();
}

void PlayerTest::fill_play_list(const std::vector<std::string> &names)
{
    player_.m_vdcPlayList.clear();
    for (const std::string &name : names) {
        stPlayListItem item;
        item.iType = name.find(".jpg") == std::string::npos ? 0 : 1;
        item.strFileName = name;
        player_.m_vdcPlayList.push_back(item);
    }
}

void PlayerTest::set_panel(ENDEMO_ROTATION_TYPE type)
{
    COstrelDemoUtil::SetWindowRotationType(type);
    fake_.forget();
}

void PlayerTest::make_window()
{
    ASSERT_TRUE(player_.m_CreateWindow());
    fake_.forget();
}

void PlayerTest::make_event_pipe()
{
    ASSERT_TRUE(CEventManager::GetInstance()->InitEventManager(
        CPlayerInspector::m_OnHandleEcorePipeCB, controller_.get()));
    fake_.forget();
}

void PlayerTest::make_video_player()
{
    ASSERT_TRUE(player_.m_CreateVideoPlayer());
    fake_.forget();
}

void PlayerTest::make_video_player_in(player_state_e state)
{
    make_video_player();
    fake_.media.state = state;
}

void PlayerTest::make_picture()
{
    ASSERT_TRUE(player_.OnPlayPhoto("/demo/picture.jpg"));
    fake_.forget();
}

void PlayerTest::open_popup()
{
    ASSERT_TRUE(player_.m_CreatePopUp());
    fake_.forget();
}

bool PlayerTest::create(const std::vector<std::string> &files, bool repeat)
{
    fake_.storage.add_folder(FOLDER, files);
    stFolderInfo info;
    info.strFolderPath = FOLDER;
    return player_.Create(info, false, repeat);
}

void PlayerTest::created(const std::vector<std::string> &files)
{
    ASSERT_TRUE(create(files));
    fake_.forget();
}
