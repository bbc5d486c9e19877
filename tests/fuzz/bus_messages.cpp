// Calls over the session bus, as any program of the login can make them: their names, and arguments
// of any number and kind. Needs a bus of its own (dbus-run-session).
//
// The input's first byte names the method, then comes one argument after the other: a letter for
// its kind, and what it holds.

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include <sys/mman.h>
#include <unistd.h>

#include <Ecore.h>
#include <Ecore_Input.h>

#include "app_framework/single_instance.h"
#include "base/utf8.h"
#include "bus/bus_loop.h"
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

void append_argument(Reader &input, sd_bus_message *call)
{
    switch (input.byte()) {
    case 's':
        sd_bus_message_append(call, "s", input.text().c_str());
        break;
    case 'y':
        platform::append_bytes(call, input.bytes());
        break;
    case 'e': {
        platform::Extras extras;
        for (int left = input.byte() % 8; left > 0; --left) {
            const std::string name = input.text();
            extras[name] = input.bytes();
        }
        platform::append_extras(call, extras);
        break;
    }
    case 'v':
        sd_bus_message_append(call, "v", "s", input.text().c_str());
        break;
    default:
        sd_bus_message_append(call, "i", static_cast<int32_t>(input.byte()) - 128);
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
        platform::BusMessagePtr call;
        sd_bus_message_new_method_call(caller_.get(), platform::BusOutput(call), platform::BUS_NAME,
                                       platform::BUS_OBJECT,
                                       method == METHODS[0] ? platform::BUS_APPLICATION_INTERFACE
                                                            : platform::BUS_CONTROL_INTERFACE,
                                       method);
        while (!input.empty())
            append_argument(input, call.get());
        answered_ = false;
        platform::BusSlotPtr pending;
        // More arguments than a message may have are no call.
        if (sd_bus_call_async(caller_.get(), platform::BusOutput(pending), call.get(), on_answer,
                              this, UINT64_MAX) < 0)
            return;
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
        ecore_init();
        ecore_event_init();
        platform::SingleInstance::Listener listener;
        listener.launch = [](const platform::Extras &extras) {
            for (const auto &[name, value] : extras)
                fuzz::require(platform::is_utf8(name) && value.find('\0') == std::string::npos,
                              "extras are what the application can be given");
            return true;
        };
        listener.bus = [](sd_bus *) {};
        listener.superseded = [] {};
        instance_ = std::make_unique<platform::SingleInstance>(std::move(listener));
        fuzz::require(instance_->claim({}) == platform::SingleInstance::Outcome::First,
                      "there is a session bus without a player");
        const platform::ControlledApplication application = {[] { return timespec{}; }, [] {}};
        fuzz::require(platform::control_start(instance_->connection(), application),
                      "the control service is on the bus");
        caller_ = platform::connect_session_bus();
        fuzz::require(caller_ != nullptr, "the bus takes a second connection");
        caller_loop_.emplace(caller_.get());
    }

    ~Session()
    {
        caller_loop_.reset();
        platform::control_stop();
        platform::PowerService::get().stop();
        instance_.reset();
        ecore_event_shutdown();
        ecore_shutdown();
    }

    static int on_answer(sd_bus_message *, void *self, sd_bus_error *)
    {
        static_cast<Session *>(self)->answered_ = true;
        ecore_main_loop_quit();
        return 1;
    }

    std::unique_ptr<platform::SingleInstance> instance_;
    platform::BusPtr caller_;
    std::optional<platform::BusLoop> caller_loop_;
    bool answered_ = false;
};

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size > 0)
        Session::get().call({data, size});
    return 0;
}
