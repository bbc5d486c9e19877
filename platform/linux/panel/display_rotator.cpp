#include "display_rotator.h"

#include <algorithm>
#include <vector>

#include "panel/panel_model.h"

namespace platform {

namespace {

/** Whoever follows the rotator's status. */
class RotatorListeners {
  public:
    static RotatorListeners &get()
    {
        static RotatorListeners listeners;
        return listeners;
    }

    void add(display_rotator_cb callback, void *user_data)
    {
        remove(callback);
        entries_.push_back({callback, user_data});
    }

    bool remove(display_rotator_cb callback)
    {
        const auto end = std::remove_if(entries_.begin(), entries_.end(),
                                        [&](const Entry &e) { return e.callback == callback; });
        const bool found = end != entries_.end();
        entries_.erase(end, entries_.end());
        return found;
    }

  private:
    struct Entry {
        display_rotator_cb callback;
        void *user_data;
    };

    void notify(int status)
    {
        display_rotator_status_t report = {status, PanelModel::get().angle()};
        // A callback may remove itself or others; those that are gone are not called any more.
        const std::vector<Entry> present = entries_;
        for (const Entry &entry : present) {
            const bool still_there =
                std::any_of(entries_.begin(), entries_.end(),
                            [&](const Entry &e) { return e.callback == entry.callback; });
            if (still_there)
                entry.callback(&report, entry.user_data);
        }
    }

    std::vector<Entry> entries_;
    const PanelModel::Subscription status_ =
        PanelModel::get().on_status([this](int status) { notify(status); });
};

} // namespace

} // namespace platform

using platform::PanelModel;

int display_rotator_get_status(display_rotator_status_t *status)
{
    if (!status)
        return DISPLAY_ROTATOR_ERROR;
    const PanelModel &panel = PanelModel::get();
    if (!panel.can_turn())
        return DISPLAY_ROTATOR_ERROR_NOT_SUPPORTED;
    *status = {panel.status(), panel.angle()};
    return 0;
}

int display_rotator_add_cb(display_rotator_cb callback, void *user_data)
{
    if (!callback)
        return DISPLAY_ROTATOR_ERROR;
    if (!PanelModel::get().can_turn())
        return DISPLAY_ROTATOR_ERROR_NOT_SUPPORTED;
    platform::RotatorListeners::get().add(callback, user_data);
    return 0;
}

int display_rotator_remove_cb(display_rotator_cb callback)
{
    if (!PanelModel::get().can_turn())
        return DISPLAY_ROTATOR_ERROR_NOT_SUPPORTED;
    return platform::RotatorListeners::get().remove(callback) ? 0 : DISPLAY_ROTATOR_ERROR;
}
