#include "player/util/EventManager.h"

#include <cstring>
#include <new>
#include <utility>

#include "player/util/Log.h"

CEventManager *CEventManager::m_pEventManager = nullptr;

CEventManager *CEventManager::GetInstance()
{
    if (m_pEventManager == nullptr)
        m_pEventManager = new CEventManager();
    return m_pEventManager;
}

void CEventManager::ReleaseInstance()
{
    LOGI("");
    delete m_pEventManager;
    m_pEventManager = nullptr;
}

CEventManager::~CEventManager()
{
    if (m_pPipe != nullptr)
        ecore_pipe_del(m_pPipe);
}

bool CEventManager::InitEventManager(PipeHandler handler, void *data)
{
    m_pPipe = ecore_pipe_add(handler, data);
    if (m_pPipe == nullptr) {
        // At info level on purpose: the player carries on without a pipe.
        LOGI("Add Ecore Pipe Failed");
        return false;
    }
    return true;
}

void CEventManager::SendEvent(int iEventID, int iParam1)
{
    LOGI("iEventID = %d iParam1 = %d", iEventID, iParam1);
    const stPipeRecord stRecord{iEventID, iParam1, 0, 0, 0, 0};
    if (m_pPipe == nullptr)
        return;
    if (!m_WriteRecord(stRecord))
        LOGE("ecore_pipe_write failed iEventID = %d", iEventID);
}

void CEventManager::SendEvent(int iEventID, CEvent &event)
{
    LOGI("Type:%d Width:%d Height:%d BufferSize:%d", event.iType, event.iWidth, event.iHeight,
         event.iBufferSize);
    if (m_pPipe == nullptr)
        return;

    stPipeRecord stRecord{iEventID, event.iType, event.iWidth, event.iHeight, 0, 0};
    if (event.iBufferSize > 0 && event.pBuffer != nullptr) {
        const auto uiSize = static_cast<uint32_t>(event.iBufferSize);
        std::unique_ptr<uint8_t[]> pCopy(new (std::nothrow) uint8_t[uiSize]);
        if (pCopy == nullptr) {
            LOGE("ecore_pipe_write failed iEventID = %d", iEventID);
            return;
        }
        std::memcpy(pCopy.get(), event.pBuffer, uiSize);
        stRecord.uiBufferSize = uiSize;
        stRecord.uiBuffer = m_bufferWords.Put(std::move(pCopy));
    }

    if (!m_WriteRecord(stRecord)) {
        LOGE("ecore_pipe_write failed iEventID = %d", iEventID);
        TakeBuffer(stRecord);
    }
}

bool CEventManager::m_WriteRecord(const stPipeRecord &stRecord)
{
    std::lock_guard<std::mutex> lock(m_mutexPipe);
    return ecore_pipe_write(m_pPipe, &stRecord, sizeof(stRecord)) == EINA_TRUE;
}

std::unique_ptr<uint8_t[]> CEventManager::TakeBuffer(const stPipeRecord &record)
{
    return m_bufferWords.Take(record.uiBuffer);
}
