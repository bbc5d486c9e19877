#include "control/status_answers.h"

#include <algorithm>
#include <utility>

#include "log/platform_log.h"

namespace platform {

namespace {

// tvctl waits for five seconds; a stick that is slow but sound answers in far less.
constexpr double LONGEST_READING_S = 3.0;

// Staff ask one at a time; each that waits holds a whole status.
constexpr size_t MOST_WAITING = 16;

} // namespace

/** Facts on their way from the thread to the main loop. */
struct StatusAnswers::Delivery {
    std::weak_ptr<StatusAnswers> owner;
    unsigned int number;
    StorageFacts facts;
};

std::shared_ptr<StatusAnswers> StatusAnswers::create(StorageReader read,
                                                     std::function<timespec()> list_made)
{
    std::shared_ptr<StatusAnswers> answers(
        new StatusAnswers(std::move(read), std::move(list_made)));
    answers->self_ = answers;
    return answers;
}

StatusAnswers::StatusAnswers(StorageReader read, std::function<timespec()> list_made)
    : read_(std::move(read)), list_made_(std::move(list_made))
{
}

bool StatusAnswers::ask(Answer answer)
{
    if (waiting_.size() >= MOST_WAITING)
        return false;
    waiting_.push_back({this, ++asked_, collect_status(), std::move(answer), nullptr});
    waiting_.back().deadline.reset(
        ecore_timer_add(LONGEST_READING_S, on_deadline, &waiting_.back()));
    read_next();
    return true;
}

// One at a time: a thread that hangs is joined by no other, and those who ask meanwhile get their
// answers by the deadline.
void StatusAnswers::read_next()
{
    while (!reading_ && !waiting_.empty()) {
        const Waiting &first = waiting_.front();
        reading_ =
            worker_.post([read = read_, question = storage_question(first.status, list_made_()),
                          owner = self_, number = first.number, &stopping = worker_.stopping()] {
                auto delivery = std::make_unique<Delivery>(Delivery{owner, number, read(question)});
                // Once the service has ended, the toolkit may have, too.
                if (!stopping)
                    ecore_main_loop_thread_safe_call_async(deliver, delivery.release());
            });
        if (!reading_)
            give(first.number, {});
    }
}

void StatusAnswers::deliver(void *data)
{
    const std::unique_ptr<Delivery> delivery(static_cast<Delivery *>(data));
    if (const std::shared_ptr<StatusAnswers> owner = delivery->owner.lock())
        owner->take(delivery->number, std::move(delivery->facts));
}

void StatusAnswers::take(unsigned int number, StorageFacts facts)
{
    reading_ = false;
    late_ = false;
    give(number, std::move(facts));
    read_next();
}

Eina_Bool StatusAnswers::on_deadline(void *data)
{
    auto *waiting = static_cast<Waiting *>(data);
    StatusAnswers *self = waiting->owner;
    if (!self->late_)
        PLATFORM_LOGW("control", "the storage does not answer; the status goes without it");
    self->late_ = true;
    static_cast<void>(waiting->deadline.release()); // it goes by itself
    self->give(waiting->number, {});
    return ECORE_CALLBACK_CANCEL;
}

/** Answers the one of this number, unless the deadline has. */
void StatusAnswers::give(unsigned int number, StorageFacts facts)
{
    const auto found =
        std::find_if(waiting_.begin(), waiting_.end(),
                     [number](const Waiting &waiting) { return waiting.number == number; });
    if (found == waiting_.end())
        return;
    found->deadline.reset();
    found->status.list = std::move(facts.list);
    found->status.usb = std::move(facts.usb);
    if (facts.passed_over)
        found->status.passed_over = std::move(*facts.passed_over);
    found->answer(found->status);
    waiting_.erase(found);
}

} // namespace platform
