// Where the demo content lies, and which menu entry is in force for each orientation.

#include "player/control/OstrelDemoPlayer.h"

#include "player/util/Log.h"
#include "resource_path.h"

namespace {

constexpr unsigned int LANDSCAPE_HALF = 0x00FF;
constexpr unsigned int PORTRAIT_HALF = 0xFF00;
constexpr unsigned int PORTRAIT_SHIFT = 8;

/** Play all and leave stand for both orientations and are never split into halves. */
bool IsWholeWord(int iMenuType)
{
    return iMenuType == 0 || iMenuType == -1;
}

} // namespace

std::string COstrelDemoPlayer::m_GetFolderPath()
{
    if (m_bFolderContentsPlayer)
        return m_GetPlaybackFolderPath();
    return COstrelDemoUtil::GetDefaultPath();
}

std::string COstrelDemoPlayer::m_GetPlaybackFolderPath()
{
    if (!m_bUsbLocation)
        return m_strFolderPath;

    if (usb_device_get_device_list(USB_DEVICE_TYPE_MASS_STORAGE, &m_hUsbDeviceList) != 0) {
        LOGE("failed");
        return "";
    }
    usb_device_h hDevice = nullptr;
    if (usb_device_list_get_first(m_hUsbDeviceList, &hDevice) != 0)
        return "";

    // When no stick holds the folder, the last one's path is returned all the same: opening it
    // fails and is reported there.
    std::string strCandidate;
    do {
        strCandidate = std::string(usb_device_get_mountpath(hDevice)) + "/" + m_strFolderPath + "/";
        if (COstrelDemoUtil::CheckPathExist(strCandidate)) {
            LOGI("path existed:%s", strCandidate.c_str());
            return strCandidate;
        }
    } while (usb_device_list_get_next(m_hUsbDeviceList, &hDevice) == 0);
    return strCandidate;
}

std::string COstrelDemoPlayer::m_GetResourcePath(std::string strName)
{
    std::string strPath;
    char *pPath = getResourcePath("org.tizen.video-player-tv", strName.c_str());
    if (pPath != nullptr) {
        strPath = pPath;
        freeResourcePath(pPath);
    }
    LOGI("%s path[%s]", strName.c_str(), strPath.c_str());
    return strPath;
}

void COstrelDemoPlayer::m_SetFileMode(ENDEMO_FILE_MODE eMode, int iMenuType)
{
    if (IsWholeWord(iMenuType)) {
        COstrelDemoUtil::SetConfigInt(ConfigKey::DEMO_MODE, iMenuType);
        return;
    }

    int iWord = 0;
    COstrelDemoUtil::GetConfigInt(ConfigKey::DEMO_MODE, iWord);
    if (eMode == ENDEMO_FILE_MODE_CURRENT) {
        eMode = COstrelDemoUtil::IsPortraitMode() ? ENDEMO_FILE_MODE_PORTRAIT
                                                  : ENDEMO_FILE_MODE_LANDSCAPE;
    }

    const auto uiWord = static_cast<unsigned int>(iWord);
    const auto uiMenuType = static_cast<unsigned int>(iMenuType);
    unsigned int uiNewWord = 0;
    if (eMode == ENDEMO_FILE_MODE_PORTRAIT)
        uiNewWord = ((uiMenuType << PORTRAIT_SHIFT) & 0xFFFF) | (uiWord & LANDSCAPE_HALF);
    else
        uiNewWord = uiMenuType | (uiWord & PORTRAIT_HALF);

    const int iNewWord = static_cast<int>(uiNewWord);
    // At error level on purpose, as in m_GetFileMode().
    LOGE("eMode=%d iMenuType=%d", eMode, iNewWord);
    COstrelDemoUtil::SetConfigInt(ConfigKey::DEMO_MODE, iNewWord);
}

int COstrelDemoPlayer::m_GetFileMode(ENDEMO_FILE_MODE eMode)
{
    int iWord = 0;
    COstrelDemoUtil::GetConfigInt(ConfigKey::DEMO_MODE, iWord);
    if (IsWholeWord(iWord))
        return iWord;

    const bool bPortrait = eMode == ENDEMO_FILE_MODE_PORTRAIT ||
                           (eMode == ENDEMO_FILE_MODE_CURRENT && COstrelDemoUtil::IsPortraitMode());
    const auto uiWord = static_cast<unsigned int>(iWord);
    const unsigned int uiHalf = bPortrait ? uiWord >> PORTRAIT_SHIFT : uiWord;
    const int iMenuType = static_cast<int>(uiHalf & 0xFF);
    LOGE("eMode=%d iMenuType=%d", eMode, iMenuType);
    return iMenuType;
}
