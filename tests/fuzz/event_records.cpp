// Records as they come out of the event pipe: six words each. The first byte of the input tells
// what the controller has to play.

#include <cstring>

#include <gtest/gtest.h>

#include "fuzz.h"
#include "platform.h"
#include "player/util/EventManager.h"
#include "player_inspector.h"

namespace {

constexpr char FOLDER[] = "/opt/data/demo_movie/";
// A set has handled as many in an hour; more of them say no more.
constexpr int MOST_RECORDS = 64;

std::vector<std::string> files_of(uint8_t kind)
{
    std::vector<std::string> files;
    for (const char *file :
         {"a.mp4", "b.mkv", "c.jpg", "d.jpg", "portrait_e.mp4", "portrait_f.jpg"}) {
        if (kind & 1)
            files.emplace_back(file);
        kind = static_cast<uint8_t>(kind >> 1);
    }
    return files;
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    // What the fake finds wrong about a call is a failure of a test of GoogleTest's.
    testing::GTEST_FLAG(break_on_failure) = true;
    fake::Platform &set = fake::reset();
    set.storage.add_folder(FOLDER, files_of(*data));
    set.rotator.supported = (*data & 0x40) != 0;
    COstrelDemoUtil::SetWindowRotationType(ROTATION_TYPE_LANDSCAPE);
    CPlayerInspector::bStarted() = false;
    {
        COstrelDemoPlayer controller;
        CPlayerInspector player(controller);
        stFolderInfo info;
        info.strFolderPath = FOLDER;
        if (player.Create(info, (*data & 0x80) != 0, true))
            player.StartDemoPlayer();
        stPipeRecord record;
        size_t at = 1;
        for (int i = 0; i < MOST_RECORDS && size - at >= sizeof record; ++i, at += sizeof record) {
            std::memcpy(&record, data + at, sizeof record);
            CPlayerInspector::m_OnHandleEcorePipeCB(&controller, &record, sizeof record);
            if (sizeof(void *) > sizeof record.uiBuffer)
                fuzz::require(CEventManager::GetInstance()->TakeBuffer(record) == nullptr,
                              "a word that nobody gave out stands for no buffer");
            fuzz::require(player.m_vdcPlayList.empty() ||
                              player.m_uiCurPlayIndex < player.m_vdcPlayList.size(),
                          "what plays is an entry of the list");
        }
    }
    CEventManager::ReleaseInstance();
    for (const std::string &left : set.leftovers()) {
        for (const char *temporary : {"text from", "open folder", "iterator", "row-class", "row#"})
            fuzz::require(left.rfind(temporary, 0) != 0, "what was given is given back");
    }
    return 0;
}
