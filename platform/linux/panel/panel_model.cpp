#include "panel/panel_model.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/orientation.h"
#include "display_rotator.h"
#include "log/platform_log.h"
#include "settings/settings.h"

namespace platform {

namespace {

constexpr char SERVICE[] = "panel";

/** Any number of degrees as one of 0, 90, 180 and 270. */
int quarter_turns(int degrees)
{
    const int turned = degrees % 360;
    return (turned < 0 ? turned + 360 : turned) / 90 * 90;
}

template <typename Function>
std::shared_ptr<const Function> add(std::vector<std::weak_ptr<const Function>> &listeners,
                                    Function listener)
{
    const auto gone = [](const auto &other) { return other.expired(); };
    listeners.erase(std::remove_if(listeners.begin(), listeners.end(), gone), listeners.end());
    auto added = std::make_shared<const Function>(std::move(listener));
    listeners.push_back(added);
    return added;
}

/** Takes a copy, for a listener may add others, and let go of itself or others. */
template <typename Function, typename... Values>
void notify(std::vector<std::weak_ptr<const Function>> listeners, Values... values)
{
    for (const auto &entry : listeners) {
        if (const auto listener = entry.lock())
            (*listener)(values...);
    }
}

} // namespace

PanelModel &PanelModel::get()
{
    static PanelModel panel;
    return panel;
}

int PanelModel::pixel_width() const
{
    return static_cast<int>(std::lround(width_ * scale_));
}

int PanelModel::pixel_height() const
{
    return static_cast<int>(std::lround(height_ * scale_));
}

void PanelModel::set_size(int width, int height, double scale)
{
    if (width == width_ && height == height_ && scale == scale_)
        return;
    width_ = width;
    height_ = height;
    scale_ = scale;
    if (scale == 1.0)
        PLATFORM_LOGI(SERVICE, "the panel is %dx%d", width, height);
    else
        PLATFORM_LOGI(SERVICE, "the panel is %dx%d, windows on it %dx%d", pixel_width(),
                      pixel_height(), width, height);
    notify(size_listeners_);
}

bool PanelModel::can_turn() const
{
    return Settings::get().rotator;
}

int PanelModel::status() const
{
    if (!turning())
        return DISPLAY_ROTATOR_IDLE;
    return is_portrait(target_) ? DISPLAY_ROTATOR_TURNING_TO_PORTRAIT
                                : DISPLAY_ROTATOR_TURNING_TO_LANDSCAPE;
}

bool PanelModel::turn_to(int degrees)
{
    if (!can_turn()) {
        PLATFORM_LOGI(SERVICE, "this set does not turn its panel");
        return false;
    }
    const int wanted = quarter_turns(degrees);
    if (turning()) {
        PLATFORM_LOGI(SERVICE, "turn to %d ignored: the panel is turning to %d", wanted, target_);
        return true;
    }
    if (wanted == angle_) {
        PLATFORM_LOGI(SERVICE, "turn to %d ignored: the panel stands there", wanted);
        return true;
    }
    target_ = wanted;
    timer_.reset(ecore_timer_add(
        Settings::get().turning_time_s,
        [](void *data) -> Eina_Bool {
            static_cast<PanelModel *>(data)->finish_turn();
            return ECORE_CALLBACK_CANCEL;
        },
        this));
    PLATFORM_LOGI(SERVICE, "turning from %d to %d degrees", angle(), target_);
    notify(status_listeners_, status());
    return true;
}

bool PanelModel::toggle()
{
    return turn_to(is_portrait(angle_) ? 0 : 90);
}

void PanelModel::set_first_angle(int degrees)
{
    angle_ = quarter_turns(degrees);
}

void PanelModel::follow(int degrees)
{
    const int former = angle_.exchange(quarter_turns(degrees));
    if (former != angle_)
        notify(angle_listeners_, angle());
}

void PanelModel::stop()
{
    timer_.reset();
    target_ = -1;
}

PanelModel::Subscription PanelModel::on_status(std::function<void(int)> listener)
{
    return add(status_listeners_, std::move(listener));
}

PanelModel::Subscription PanelModel::on_angle(std::function<void(int)> listener)
{
    return add(angle_listeners_, std::move(listener));
}

PanelModel::Subscription PanelModel::on_size(std::function<void()> listener)
{
    return add(size_listeners_, std::move(listener));
}

void PanelModel::finish_turn()
{
    static_cast<void>(timer_.release()); // it goes by itself
    angle_ = target_;
    // The turn counts as under way until the content has followed: whoever is told that it is over
    // finds the window as it is going to stay.
    notify(angle_listeners_, angle());
    target_ = -1;
    PLATFORM_LOGI(SERVICE, "turned to %d degrees", angle());
    notify(status_listeners_, status());
}

} // namespace platform
