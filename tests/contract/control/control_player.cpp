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
#include "bus/bus_connection.h"
#include "bus/bus_names.h"
#include "control/control.h"
#include "device_power.h"
#include "device_power/power_service.h"
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

Eldbus_Message *on_launch(const Eldbus_Service_Interface *, const Eldbus_Message *call)
{
    Eldbus_Message_Iter *extras = nullptr;
    if (!eldbus_message_arguments_get(call, "a{say}", &extras))
        return eldbus_message_error_new(call, "org.example.Error", "no extras");
    Eldbus_Message_Iter *entry = nullptr;
    std::string line = "launch";
    while (eldbus_message_iter_get_and_next(extras, 'e', &entry)) {
        const char *name = nullptr;
        Eldbus_Message_Iter *bytes = nullptr;
        const char *value = nullptr;
        int size = 0;
        eldbus_message_iter_arguments_get(entry, "say", &name, &bytes);
        if (eldbus_message_iter_fixed_array_get(bytes, 'y', &value, &size) && size > 0)
            line += std::string(" ") + name + "=" + std::string(value, static_cast<size_t>(size));
        else
            line += std::string(" ") + name + "=";
    }
    say(line);
    return eldbus_message_method_return_new(call);
}

const Eldbus_Arg_Info LAUNCH_ARGUMENTS[] = {{"a{say}", "extras"}, {nullptr, nullptr}};
const Eldbus_Method LAUNCH_METHODS[] = {{"Launch", LAUNCH_ARGUMENTS, nullptr, on_launch, 0},
                                        {nullptr, nullptr, nullptr, nullptr, 0}};
const Eldbus_Service_Interface_Desc APPLICATION = {
    platform::BUS_APPLICATION_INTERFACE, LAUNCH_METHODS, nullptr, nullptr, nullptr, nullptr};

void on_name(void *, const Eldbus_Message *reply, Eldbus_Pending *)
{
    say(eldbus_message_error_get(reply, nullptr, nullptr) ? "no name" : "ready");
}

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
    if (BusConnectionPtr bus = connect_session_bus()) {
        Eldbus_Service_Interface *application =
            eldbus_service_interface_register(bus.get(), BUS_OBJECT, &APPLICATION);
        const ControlledApplication controlled = {[] { return timespec{}; },
                                                  [] { say("language changed"); }};
        if (control_start(bus.get(), controlled, read_behind_the_gate) &&
            !control_start(bus.get(), controlled)) {
            app_context_manager_init();
            SettingsAPI::Get()->DisableItemsByList({"broadcasting", "pip"}, "org.example.app");
            PanelModel::get().on_angle(
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
            eldbus_name_request(bus.get(), BUS_NAME, ELDBUS_NAME_REQUEST_FLAG_DO_NOT_QUEUE, on_name,
                                nullptr);
            ecore_main_loop_begin();
            result = 0;
        }
        control_stop();
        control_stop();
        PowerService::get().stop();
        eldbus_service_interface_unregister(application);
    }
    ecore_event_shutdown();
    ecore_shutdown();
    return result;
}
