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
#include <utility>

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

/**
 * Buffers as words of a fixed width. A pointer that fits a word is the word, and its buffer belongs
 * to whoever has the word. Else the word is a token, and the buffer waits here until it is taken.
 * Any thread.
 */
template <typename Word> class CBufferWords {
  public:
    static constexpr bool POINTER_FITS = sizeof(void *) <= sizeof(Word);

    /** @return the buffer's word; never 0 */
    Word Put(std::unique_ptr<uint8_t[]> pBuffer)
    {
        if constexpr (POINTER_FITS) {
            return static_cast<Word>(reinterpret_cast<uintptr_t>(pBuffer.release()));
        } else {
            std::lock_guard<std::mutex> lock(m_mutex);
            do {
                ++m_lastToken;
            } while (m_lastToken == 0 || m_mapBuffers.count(m_lastToken) != 0);
            m_mapBuffers[m_lastToken] = std::move(pBuffer);
            return m_lastToken;
        }
    }

    /**
     * Takes a word's buffer back; once for each word.
     *
     * @return null for 0, and for a token that was taken before
     */
    std::unique_ptr<uint8_t[]> Take(Word word)
    {
        if constexpr (POINTER_FITS) {
            return std::unique_ptr<uint8_t[]>(
                reinterpret_cast<uint8_t *>(static_cast<uintptr_t>(word)));
        } else {
            std::lock_guard<std::mutex> lock(m_mutex);
            auto it = m_mapBuffers.find(word);
            if (it == m_mapBuffers.end())
                return nullptr;
            std::unique_ptr<uint8_t[]> pBuffer = std::move(it->second);
            m_mapBuffers.erase(it);
            return pBuffer;
        }
    }

  private:
    std::mutex m_mutex;
    std::unordered_map<Word, std::unique_ptr<uint8_t[]>> m_mapBuffers;
    Word m_lastToken = 0;
};

/** What travels through the pipe: six 32-bit words in host byte order, without padding. */
struct stPipeRecord {
    int32_t iEventID;
    int32_t iParam1;
    int32_t iParam2;
    int32_t iParam3;
    uint32_t uiBufferSize; /**< bytes */
    uint32_t uiBuffer;     /**< 0 for none; on a 32-bit set the address of the copy */
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

    /** Posts an event with a copy of its buffer, which belongs to the handler. Any thread. */
    void SendEvent(int iEventID, CEvent &event);

    /**
     * Hands the copy of a record's buffer to the handler, once. On a 32-bit set, where the record
     * has the address, it only wraps that, and the handler may free the copy with delete[] as well.
     * Copies that nobody takes are freed with the instance on a 64-bit set, and lost on a 32-bit
     * one.
     *
     * @return uiBufferSize bytes, or null when the record has no buffer or, on a 64-bit set, it was
     *         taken before
     */
    std::unique_ptr<uint8_t[]> TakeBuffer(const stPipeRecord &record);

  private:
    CEventManager() = default;
    ~CEventManager();

    bool m_WriteRecord(const stPipeRecord &stRecord);

    static CEventManager *m_pEventManager;

    Ecore_Pipe *m_pPipe = nullptr;

    // Ecore writes a record's length and its bytes one after the other; two threads that post at
    // once would mix theirs.
    std::mutex m_mutexPipe;

    CBufferWords<uint32_t> m_bufferWords;
};
