/**
 * Power events, from logind and from whoever raises one by hand. Main-loop thread only.
 */
#pragma once

#include <memory>
#include <vector>

#include "device_power.h"

namespace platform {

class LogindPower;

enum class PowerEvent {
    Off,
    Standby,
    Wakeup,
};

class PowerService {
  public:
    /** The one power service. It listens to the system from the first subscription on. */
    static PowerService &get();

    void subscribe(PowerEvent event, device_power_cb callback, void *user_data);
    void subscribe_state(device_power_state_changed_cb callback, void *user_data);

    /** Ends every subscription of the callback to the event. @return whether there was one. */
    bool unsubscribe(PowerEvent event, device_power_cb callback);

    /** Calls the subscribers of the event, then those of the state that follows from it. */
    void raise(PowerEvent event);

    /** Lets go of the system and of every subscription, before the main loop's library goes. */
    void stop();

  private:
    struct Subscription {
        PowerEvent event;
        device_power_cb callback;
        void *user_data;
    };
    struct StateSubscription {
        device_power_state_changed_cb callback;
        void *user_data;
    };

    PowerService();
    ~PowerService();
    void listen();

    std::unique_ptr<LogindPower> logind_;
    std::vector<Subscription> subscriptions_;
    std::vector<StateSubscription> state_subscriptions_;
};

} // namespace platform
