/**
 * Carries events from any thread into the main loop: each is one fixed record through an Ecore
 * pipe, handed in order to one handler. The controller starts it and gives the handler; everything
 * that may be called outside the main loop's flow posts here instead of acting.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>

#include <Ecore.h>

/** An event with more than one parameter, filled by the sender. */
struct CEvent {
    int32_t iReserved; /**< not read by the event manager */
    int32_t iType;
    int32_t iWidth;
    int32_t iHeight;
    int32_t iBufferSize; /**< bytes */
    const void *pBuffer; /**< iBufferSize bytes, owned by the sender */
};

/** What travels through the pipe: six 32-bit words in host byte order, without padding. */
struct stPipeRecord {
    int32_t iEventID;
    int32_t iParam1;
    int32_t iParam2;
    int32_t iParam3;
    uint32_t uiBufferSize; /**< bytes */
    uint32_t uiBuffer;     /**< 0 for none; see CEventManager::TakeBuffer() */
};
static_assert(sizeof(stPipeRecord) == 24, "the record is written and read as 24 bytes");

class CEventManager {
  public:
    using PipeHandler = void (*)(void *data, void *buffer, unsigned int nbyte);

    CEventManager(const CEventManager &) = delete;
    CEventManager &operator=(const CEventManager &) = delete;

    /** The one instance, made at the first call. Main loop only, as is ReleaseInstance(). */
    static CEventManager *GetInstance();

    /** Deletes the pipe and the instance; records still queued are never handled. */
    static void ReleaseInstance();

    /**
     * Makes the pipe. A pipe made by an earlier call is not deleted.
     *
     * @param handler called on the main loop, once per record
     * @param data    first argument of the handler; stays the caller's
     * @return false when there is no pipe; later events are then dropped
     */
    bool InitEventManager(PipeHandler handler, void *data);

    /** Posts an event with one parameter. Any thread. */
    void SendEvent(int iEventID, int iParam1);

    /** Posts an event with a copy of its buffer. Any thread. */
    void SendEvent(int iEventID, CEvent &event);

    /**
     * Hands the copy of a record's buffer to the handler, which owns it from then on. Each copy can
     * be taken once; copies that nobody takes are freed with the instance.
     *
     * @return uiBufferSize bytes, or null when the record has no buffer or it was taken before
     */
    std::unique_ptr<uint8_t[]> TakeBuffer(const stPipeRecord &record);

  private:
    CEventManager() = default;
    ~CEventManager();

    bool m_WriteRecord(const stPipeRecord &stRecord);
    uint32_t m_KeepBuffer(std::unique_ptr<uint8_t[]> pCopy);

    static CEventManager *m_pEventManager;

    Ecore_Pipe *m_pPipe = nullptr;

    // Ecore writes a record's length and its bytes one after the other; two threads that post at
    // once would mix theirs.
    std::mutex m_mutexPipe;

    // A pointer does not fit the record's 32-bit word on a 64-bit set, so the word carries a token
    // and the copies wait here. On a 32-bit set the token is the address itself.
    std::mutex m_mutexBuffers;
    std::unordered_map<uint32_t, std::unique_ptr<uint8_t[]>> m_mapBuffers;
    uint32_t m_uiLastToken = 0;
};
