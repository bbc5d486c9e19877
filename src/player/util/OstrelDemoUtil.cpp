// Configuration, system facts, menu blocking and the way out.

#include "player/util/OstrelDemoUtil.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <vector>

#include "app_context.h"
#include "app_framework.h"
#include "config_store.h"
#include "player/util/Log.h"
#include "system_facts.h"

namespace {

constexpr char DEFAULT_FOLDER[] = "/opt/data/demo_movie";
constexpr char SHOW_DISCLAIMER_FEATURE[] =
    "com.norvane/featureconf/ostrel_demo_player.show_disclaimer";

// A slot text may name its own slot, and would then be expanded in turn for ever.
constexpr int MAX_EXPANSIONS_IN_TURN = 256;

// A slot's token: an opening mark, one letter, a closing mark.
constexpr char OPENING_MARK[] = "<<";
constexpr char CLOSING_MARK[] = ">>";
constexpr size_t TOKEN_LENGTH = 5;

/** The slot named by the token behind an opening mark; a large number where there is no token. */
size_t SlotAt(const std::string &strText, size_t uiMark)
{
    if (uiMark + TOKEN_LENGTH > strText.size() || strText.compare(uiMark + 3, 2, CLOSING_MARK) != 0)
        return std::string::npos;
    return static_cast<unsigned int>(strText[uiMark + 2] - 'A');
}

} // namespace

bool COstrelDemoUtil::GetConfigInt(std::string strKey, int &iValue)
{
    int iRead = 0;
    if (vconf_get_int(strKey.c_str(), &iRead) != 0) {
        LOGE("GetConfigInt key [%s] faild", strKey.c_str());
        return false;
    }
    iValue = iRead;
    return true;
}

bool COstrelDemoUtil::SetConfigInt(std::string strKey, int iValue)
{
    if (vconf_set_int(strKey.c_str(), iValue) != 0) {
        LOGE("SetConfigInt key %s,fail", strKey.c_str());
        return false;
    }
    return true;
}

bool COstrelDemoUtil::bShowDisclaimer()
{
    bool bShow = false;
    // The text names another feature; tools that read the logs know it so.
    if (system_info_get_custom_bool(SHOW_DISCLAIMER_FEATURE, &bShow) != 0)
        LOGE("get video_player.controller_ui.auto_show fail");
    LOGI("bShowDisclaimer = %d", bShow);
    return bShow;
}

bool COstrelDemoUtil::isDirectBacklightModel()
{
    int iValue = 0;
    if (system_info_get_value_int(SYSTEM_INFO_KEY_STORE_CONTENT_TYPE, &iValue) != 0)
        return false;
    LOGW("SYSTEM_INFO_KEY_STORE_CONTENT_TYPE [%d]", iValue);
    return iValue == 1;
}

bool COstrelDemoUtil::IsRTLOrientation()
{
    if (ua_UI_orientation_get() != UI_ORIENTATION_RIGHT_TO_LEFT)
        return false;
    LOGI("RTL_UI_ORIENTATION");
    return true;
}

bool COstrelDemoUtil::SetBlockEPOP(bool bBlock)
{
    LOGI("Block E-POP = %d ", bBlock);
    if (bBlock) {
        if (app_context_manager_set_epop_block() != 0) {
            LOGE("app_context_manager_set_epop_block falied");
            return false;
        }
    } else if (app_context_manager_unset_epop_block() != 0) {
        LOGE("app_context_manager_unset_epop_block falied");
        return false;
    }
    return true;
}

void COstrelDemoUtil::DisableMenuItem(bool bDisable)
{
    LOGD("%d", bDisable);
    if (bDisable) {
        const std::vector<std::string> vdcItems = {
            "broadcasting",      "picturesize",       "pip", "game-mode", "delete-contents-list",
            "tools-demo-update", "tools-picture-demo"};
        SettingsAPI::Get()->DisableItemsByList(vdcItems, APP_ID);
    } else {
        SettingsAPI::Get()->RemoveDisabledItemsByAppname(APP_ID);
    }
}

std::string COstrelDemoUtil::CombinateString(std::string strFormat, std::string strFirst,
                                             std::string strSecond)
{
    const std::array<std::string, 2> arrSlots = {strFirst, strSecond};
    std::string strResult = strFormat;
    // Where slot text ends: a token that begins before it came with that text.
    size_t uiSlotTextEnd = 0;
    int iExpansionsInTurn = 0;
    size_t uiPos = strResult.find(OPENING_MARK);
    while (uiPos != std::string::npos) {
        size_t uiNext = uiPos + 1;
        const size_t uiSlot = SlotAt(strResult, uiPos);
        if (uiSlot < arrSlots.size()) {
            iExpansionsInTurn = uiPos < uiSlotTextEnd ? iExpansionsInTurn + 1 : 0;
            if (iExpansionsInTurn > MAX_EXPANSIONS_IN_TURN) {
                uiPos = strResult.find(OPENING_MARK, uiSlotTextEnd);
                continue;
            }
            const std::string &strText = arrSlots[uiSlot];
            strResult.replace(uiPos, TOKEN_LENGTH, strText);
            uiSlotTextEnd =
                std::max(uiSlotTextEnd, uiPos + TOKEN_LENGTH) - TOKEN_LENGTH + strText.size();
            // A slot text that begins with a token is expanded in turn. Behind any other the search
            // goes on one character later, even where that is inside the format's next token.
            if (strText.rfind(OPENING_MARK, 0) == 0)
                uiNext = uiPos;
        }
        uiPos = strResult.find(OPENING_MARK, uiNext);
    }
    LOGI("strResult: %s", strResult.c_str());
    return strResult;
}

std::string COstrelDemoUtil::GetDefaultPath()
{
    std::string strPath = std::string(DEFAULT_FOLDER) + "/";
    DIR *pDirectory = opendir(strPath.c_str());
    if (pDirectory == nullptr)
        return "";
    closedir(pDirectory);
    return strPath;
}

bool COstrelDemoUtil::CheckPathExist(std::string strPath)
{
    LOGI("");
    struct stat stStatus = {};
    if (stat(strPath.c_str(), &stStatus) != 0)
        return false;
    return S_ISDIR(stStatus.st_mode);
}

void COstrelDemoUtil::ExitApplication()
{
    // At error level on purpose, so that the cause of an end stands out in a set's log.
    LOGE("");
    ui_app_exit();
}
