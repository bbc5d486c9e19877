// Calls over the session bus, as any program of the login can make them: their names, and arguments
// of any number and kind. Needs a bus of its own (dbus-run-session).
//
// The input's first byte names the method, then comes one argument after the other: a letter for
// its kind, and what it holds.

#include <algorithm>
#include <memory>
#include <utility>

#include <sys/mman.h>
#include <unistd.h>

#include <Ecore.h>
#include <Ecore_Input.h>
#include <Eldbus.h>

#include "app_framework/single_instance.h"
#include "base/utf8.h"
#include "bus/bus_names.h"
#include "control/control.h"
#include "device_power/power_service.h"
#include "fuzz.h"

namespace {

constexpr const char *METHODS[] = {"Launch", "Key",       "Panel",  "Power", "Language",
                                   "UsbAdd", "UsbRemove", "Status", "Other"};
constexpr double PATIENCE_S = 30.0;

/** The rest of the input. */
class Reader {
  public:
    Reader(const uint8_t *data, size_t size) : left_(fuzz::text_of(data, size)) {}

    bool empty() const { return left_.empty(); }

    uint8_t byte()
    {
        if (left_.empty())
            return 0;
        const auto value = static_cast<uint8_t>(left_.front());
        left_.remove_prefix(1);
        return value;
    }

    /** As many bytes as the next one says, or as there are. */
    std::string bytes()
    {
        const std::string taken(left_.substr(0, byte()));
        left_.remove_prefix(std::min(taken.size(), left_.size()));
        return taken;
    }

    /** Text that the bus would let through. */
    std::string text()
    {
        std::string text;
        for (const char c : bytes()) {
            const auto letter = static_cast<unsigned char>(c);
            if (letter >= 0x80)
                text += {static_cast<char>(0xC0 | letter >> 6),
                         static_cast<char>(0x80 | (letter & 0x3F))};
            else if (letter != 0)
                text += c;
        }
        return text;
    }

  private:
    std::string_view left_;
};

void append_argument(Reader &input, Eldbus_Message *call)
{
    Eldbus_Message_Iter *to = eldbus_message_iter_get(call);
    switch (input.byte()) {
    case 's':
        eldbus_message_iter_basic_append(to, 's', input.text().c_str());
        break;
    case 'y':
        platform::append_bytes(to, input.bytes());
        break;
    case 'e': {
        platform::Extras extras;
        for (int left = input.byte() % 8; left > 0; --left) {
            const std::string name = input.text();
            extras[name] = input.bytes();
        }
        Eldbus_Message_Iter *array = eldbus_message_iter_container_new(to, 'a', "{say}");
        for (const auto &[name, value] : extras) {
            Eldbus_Message_Iter *entry = eldbus_message_iter_container_new(array, 'e', nullptr);
            eldbus_message_iter_basic_append(entry, 's', name.c_str());
            platform::append_bytes(entry, value);
            eldbus_message_iter_container_close(array, entry);
        }
        eldbus_message_iter_container_close(to, array);
        break;
    }
    case 'v': {
        Eldbus_Message_Iter *variant = eldbus_message_iter_container_new(to, 'v', "s");
        eldbus_message_iter_basic_append(variant, 's', input.text().c_str());
        eldbus_message_iter_container_close(to, variant);
        break;
    }
    default:
        eldbus_message_iter_basic_append(to, 'i', static_cast<int32_t>(input.byte()) - 128);
    }
}

/** The services that listen, and a program that calls them. */
class Session {
  public:
    /** The one session; it ends with the process. */
    static Session &get()
    {
        static Session the_one;
        return the_one;
    }

    /** Calls a method and runs the main loop until the answer is there. */
    void call(Reader input)
    {
        const char *method = METHODS[input.byte() % std::size(METHODS)];
        const bool launch = method == METHODS[0];
        Eldbus_Message *call =
            eldbus_proxy_method_call_new((launch ? application_ : control_).get(), method);
        while (!input.empty())
            append_argument(input, call);
        answered_ = false;
        eldbus_proxy_send((launch ? application_ : control_).get(), call, on_answer, this, -1);
        const auto give_up = [](void *) -> Eina_Bool {
            ecore_main_loop_quit();
            return ECORE_CALLBACK_CANCEL;
        };
        Ecore_Timer *patience = ecore_timer_add(PATIENCE_S, give_up, nullptr);
        ecore_main_loop_begin();
        fuzz::require(answered_, "every call is answered");
        ecore_timer_del(patience);
    }

  private:
    Session()
    {
        const int conf = memfd_create("tv.conf", MFD_CLOEXEC);
        constexpr std::string_view TEXT = "[panel]\nrotator = yes\nturning_time_s = 0\n";
        fuzz::require(write(conf, TEXT.data(), TEXT.size()) == static_cast<ssize_t>(TEXT.size()),
                      "there is memory for tv.conf");
        setenv("OSTREL_DEMO_TV_CONF", ("/proc/self/fd/" + std::to_string(conf)).c_str(), 1);
        setenv("ECORE_NO_SYSTEM_MODULES", "1", 1);
        // The toolkit says of each refused call that its program must be wrong.
        setenv("EINA_LOG_LEVEL", "-1", 1);
        ecore_init();
        ecore_event_init();
        platform::SingleInstance::Listener listener;
        listener.launch = [](const platform::Extras &extras) {
            for (const auto &[name, value] : extras)
                fuzz::require(platform::is_utf8(name) && value.find('\0') == std::string::npos,
                              "extras are what the application can be given");
            return true;
        };
        listener.bus = [](Eldbus_Connection *) {};
        listener.superseded = [] {};
        instance_ = std::make_unique<platform::SingleInstance>(std::move(listener));
        fuzz::require(instance_->claim({}) == platform::SingleInstance::Outcome::First,
                      "there is a session bus without a player");
        const platform::ControlledApplication application = {[] { return timespec{}; }, [] {}};
        fuzz::require(platform::control_start(instance_->connection(), application),
                      "the control service is on the bus");
        caller_ = eldbus_private_connection_get(ELDBUS_CONNECTION_TYPE_SESSION);
        fuzz::require(caller_ != nullptr, "the bus takes a second connection");
        const auto proxy = [this](const char *interface) {
            return platform::BusProxy(caller_, platform::BUS_NAME, platform::BUS_OBJECT, interface);
        };
        application_ = proxy(platform::BUS_APPLICATION_INTERFACE);
        control_ = proxy(platform::BUS_CONTROL_INTERFACE);
    }

    ~Session()
    {
        application_ = {};
        control_ = {};
        eldbus_connection_unref(caller_);
        platform::control_stop();
        platform::PowerService::get().stop();
        instance_.reset();
        ecore_event_shutdown();
        ecore_shutdown();
    }

    static void on_answer(void *self, const Eldbus_Message *, Eldbus_Pending *)
    {
        static_cast<Session *>(self)->answered_ = true;
        ecore_main_loop_quit();
    }

    std::unique_ptr<platform::SingleInstance> instance_;
    Eldbus_Connection *caller_ = nullptr;
    platform::BusProxy application_;
    platform::BusProxy control_;
    bool answered_ = false;
};

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size > 0)
        Session::get().call({data, size});
    return 0;
}
