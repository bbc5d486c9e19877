// A stand-in for a running player: the real control service on the session bus. It prints what
// reaches it of keys, power events and other news, and what it plays is made up. Ends on SIGTERM
// and on the power event "off". With TEST_STORAGE_GATE set, the storage answers only once somebody
// has opened that pipe for writing.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include <Ecore.h>
#include <Ecore_Input.h>
#include <fcntl.h>
#include <unistd.h>

#include "app_context.h"
#include "bus/bus_loop.h"
#include "bus/bus_names.h"
#include "control/control.h"
#include "device_power.h"
#include "device_power/power_service.h"
#include "launch/launch_request.h"
#include "media_player/player_status.h"
#include "panel/panel_model.h"
#include "still_picture/picture_status.h"
#include "usb_storage/usb_devices.h"
#include "video_plane/video_plane.h"

namespace {

void say(const std::string &line)
{
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

class CountingPlane : public platform::VideoPlane {
  public:
    CountingPlane()
    {
        presented_ = 1234;
        count_dropped();
        count_late();
        count_late();
    }
    int width() const override { return 1920; }
    int height() const override { return 1080; }
    platform::PlaneBufferPtr acquire() override { return nullptr; }
    bool present(const platform::PlaneBufferPtr &) override { return false; }
};

int on_launch(sd_bus_message *call, void *, sd_bus_error *)
{
    std::string line = "launch";
    const auto extras = platform::read_extras(call);
    for (const auto &[name, value] : extras.value())
        line += " " + name + "=" + value;
    say(line);
    return sd_bus_reply_method_return(call, nullptr);
}

const sd_bus_vtable APPLICATION[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Launch", "a{say}", nullptr, on_launch, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

platform::StorageFacts read_behind_the_gate(const platform::StorageQuestion &question)
{
    if (const char *gate = std::getenv("TEST_STORAGE_GATE")) {
        say("reading the storage");
        close(open(gate, O_RDONLY));
    }
    return platform::read_storage(question);
}

Eina_Bool on_key(void *, int, void *event)
{
    say(std::string("key ") + static_cast<Ecore_Event_Key *>(event)->keyname);
    return ECORE_CALLBACK_PASS_ON;
}

Eina_Bool quit(void *, int, void *)
{
    ecore_main_loop_quit();
    return ECORE_CALLBACK_PASS_ON;
}

} // namespace

namespace platform {

PlayerStatus current_player_status()
{
    PlayerStatus status;
    status.state = PLAYER_STATE_PLAYING;
    status.path = "/demo/a \"b\"\n\xFF.mp4";
    status.position_ms = 1500;
    status.duration_ms = 60000;
    status.rate = 2.0;
    status.has_subtitle = true;
    return status;
}

PictureStatus current_picture_status()
{
    return {};
}

std::shared_ptr<VideoPlane> VideoPlane::current()
{
    static const auto plane = std::make_shared<CountingPlane>();
    return plane;
}

} // namespace platform

int main()
{
    using namespace platform;
    ecore_init();
    ecore_event_init();
    int result = 1;
    if (const BusPtr bus = connect_session_bus()) {
        const BusLoop loop(bus.get());
        sd_bus_add_object_vtable(bus.get(), nullptr, BUS_OBJECT, BUS_APPLICATION_INTERFACE,
                                 APPLICATION, nullptr);
        const ControlledApplication controlled = {[] { return timespec{}; },
                                                  [] { say("language changed"); }};
        if (control_start(bus.get(), controlled, read_behind_the_gate) &&
            !control_start(bus.get(), controlled)) {
            app_context_manager_init();
            SettingsAPI::Get()->DisableItemsByList({"broadcasting", "pip"}, "org.example.app");
            const auto angle = PanelModel::get().on_angle(
                [](int degrees) { say("panel " + std::to_string(degrees)); });
            ecore_event_handler_add(ECORE_EVENT_KEY_DOWN, on_key, nullptr);
            device_power_subscribe_poweroff(
                [](void *) {
                    say("power off");
                    ecore_main_loop_quit();
                },
                nullptr);
            device_power_subscribe_standby([](void *) { say("power standby"); }, nullptr);
            ecore_event_handler_add(ECORE_EVENT_SIGNAL_EXIT, quit, nullptr);
            const auto named = [](sd_bus_message *reply, void *, sd_bus_error *) {
                say(sd_bus_message_is_method_error(reply, nullptr) ? "no name" : "ready");
                return 1;
            };
            sd_bus_request_name_async(bus.get(), nullptr, BUS_NAME, 0, named, nullptr);
            ecore_main_loop_begin();
            result = 0;
        }
        control_stop();
        control_stop();
        PowerService::get().stop();
    }
    ecore_event_shutdown();
    ecore_shutdown();
    return result;
}
