/**
 * Answers to questions for the status, each given when the storage has told its part, or without it
 * when it takes too long: neither the main loop nor whoever asks waits for a stick that hangs.
 * Main-loop thread only.
 */
#pragma once

#include <functional>
#include <list>
#include <memory>

#include <Ecore.h>

#include "base/toolkit_handles.h"
#include "base/worker_thread.h"
#include "control/status_report.h"
#include "control/storage_facts.h"

namespace platform {

class StatusAnswers {
  public:
    using Answer = std::function<void(const Status &status)>;

    /**
     * @param read      called in a thread, for one question at a time
     * @param list_made tells when the player made its lists; called on the main-loop thread
     */
    static std::shared_ptr<StatusAnswers> create(StorageReader read,
                                                 std::function<timespec()> list_made);

    /** Whoever has no answer yet gets none. */
    ~StatusAnswers() = default;
    StatusAnswers(const StatusAnswers &) = delete;
    StatusAnswers &operator=(const StatusAnswers &) = delete;

    /**
     * Takes the status as of now and hands it over later, from the main loop.
     *
     * @return false when so many wait for one already that somebody must be flooding the player;
     *         then there is no answer
     */
    bool ask(Answer answer);

  private:
    struct Waiting {
        StatusAnswers *owner;
        unsigned int number;
        Status status;
        Answer answer;
        TimerPtr deadline;
    };
    struct Delivery;

    StatusAnswers(StorageReader read, std::function<timespec()> list_made);
    void read_next();
    void take(unsigned int number, StorageFacts facts);
    void give(unsigned int number, StorageFacts facts);
    static void deliver(void *data);
    static Eina_Bool on_deadline(void *data);

    const StorageReader read_;
    const std::function<timespec()> list_made_;
    std::weak_ptr<StatusAnswers> self_;
    std::list<Waiting> waiting_;
    unsigned int asked_ = 0;
    bool reading_ = false;
    bool late_ = false;
    WorkerThread worker_{"status"};
};

} // namespace platform
