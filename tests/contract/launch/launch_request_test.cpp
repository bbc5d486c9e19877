// A launch request as options of a command line and as arguments of a call over the bus.

#include <functional>

#include <gmock/gmock.h>

#include "bus/bus_connection.h"
#include "launch/launch_request.h"
#include "store_support/private_bus.h"

namespace platform {
namespace {

using testing::HasSubstr;
using testing::Pair;
using testing::StartsWith;
using testing::UnorderedElementsAre;

/** The extras of a whole command line; all its options are good. */
Extras read(const std::vector<std::string> &arguments)
{
    Extras extras;
    for (size_t next = 0; next < arguments.size();)
        EXPECT_EQ(read_launch_option(arguments, next, extras), std::nullopt);
    return extras;
}

TEST(LaunchOptionTest, OptionsBecomeExtrasWithTheirValuesAsTheyStand)
{
    EXPECT_THAT(
        read({"--folder_path", "--odd/", "--mode=factory_stop", "--extra", "a=b=c", "--extra=d="}),
        UnorderedElementsAre(Pair("folder_path", "--odd/"), Pair("mode", "factory_stop"),
                             Pair("a", "b=c"), Pair("d", "")));
}

TEST(LaunchOptionTest, TheLastOfTwoCounts)
{
    EXPECT_THAT(read({"--mode", "a", "--mode", "b"}), UnorderedElementsAre(Pair("mode", "b")));
}

TEST(LaunchOptionTest, WhatCannotBeReadIsNamed)
{
    const std::pair<std::vector<std::string>, const char *> cases[] = {
        {{"--speed", "9"}, "unknown option '--speed'"},
        {{"--"}, "unknown option '--'"},
        {{"--=x"}, "unknown option '--=x'"},
        {{"folder"}, "unexpected argument 'folder'"},
        {{"-h"}, "unexpected argument '-h'"},
        {{"--folder_path"}, "--folder_path needs a value"},
        {{"--extra"}, "--extra needs a value"},
        {{"--extra", "name"}, "--extra needs NAME=VALUE, not 'name'"},
        {{"--extra", "=x"}, "--extra needs a name"},
        {{"--extra", "\xff=x"}, "--extra needs a name"},
        {{"--extra", "\xed\xa0\x80=x"}, "--extra needs a name"},
    };
    for (const auto &[arguments, reason] : cases) {
        size_t next = 0;
        Extras extras;
        EXPECT_THAT(read_launch_option(arguments, next, extras),
                    testing::Optional(StartsWith(reason)));
        EXPECT_TRUE(extras.empty()) << reason;
    }
}

TEST(LaunchOptionTest, HelpHasALineForEachOption)
{
    const std::string help = launch_options_help();
    for (const char *name :
         {"folder_path", "path_location", "demo_player_mode", "repeat_mode", "mode"}) {
        EXPECT_TRUE(is_launch_option(name)) << name;
        EXPECT_THAT(help, HasSubstr("  --" + std::string(name) + " "));
    }
    EXPECT_FALSE(is_launch_option("extra"));
    EXPECT_THAT(help, HasSubstr("  --extra NAME=VALUE "));
}

/** This process on a bus, calling itself. */
class LaunchCallTest : public testing::Test {
  protected:
    static constexpr char PATH[] = "/launch";
    static constexpr char INTERFACE[] = "test.Launch";

    LaunchCallTest()
    {
        ecore_init();
        connection_ = connect_session_bus();
        interface_.reset(eldbus_service_interface_register(connection_.get(), PATH, &DESCRIPTION));
    }

    ~LaunchCallTest() override
    {
        interface_.reset();
        connection_.reset();
        ecore_shutdown();
    }

    /** What the other end makes of a call. */
    std::optional<Extras> sent(const char *method,
                               const std::function<void(Eldbus_Message *)> &write)
    {
        bool answered = false;
        Eldbus_Message *call = eldbus_message_method_call_new(
            eldbus_connection_unique_name_get(connection_.get()), PATH, INTERFACE, method);
        write(call);
        eldbus_connection_send(
            connection_.get(), call,
            [](void *data, const Eldbus_Message *reply, Eldbus_Pending *) {
                EXPECT_FALSE(eldbus_message_error_get(reply, nullptr, nullptr));
                *static_cast<bool *>(data) = true;
            },
            &answered, -1);
        EXPECT_TRUE(store_test::run_loop_until([&] { return answered; }, 30.0));
        return received;
    }

    static Eldbus_Message *on_call(const Eldbus_Service_Interface *, const Eldbus_Message *message)
    {
        received = extras_of(message);
        return eldbus_message_method_return_new(message);
    }

    inline static std::optional<Extras> received;
    inline static const Eldbus_Arg_Info EXTRAS[] = {{"a{say}", "extras"}, {nullptr, nullptr}};
    inline static const Eldbus_Arg_Info TEXT[] = {{"s", "text"}, {nullptr, nullptr}};
    inline static const Eldbus_Method METHODS[] = {{"Launch", EXTRAS, nullptr, on_call, 0},
                                                   {"Other", TEXT, nullptr, on_call, 0},
                                                   {nullptr, nullptr, nullptr, nullptr, 0}};
    inline static const Eldbus_Service_Interface_Desc DESCRIPTION = {INTERFACE, METHODS, nullptr,
                                                                     nullptr,   nullptr, nullptr};

    const store_test::ScratchDir folder_;
    const store_test::PrivateBus bus_{folder_ / "bus"};
    const store_test::Environment address_{"DBUS_SESSION_BUS_ADDRESS", bus_.address()};
    const store_test::Environment modules_{"ECORE_NO_SYSTEM_MODULES", "1"};
    BusConnectionPtr connection_;
    ServiceInterfacePtr interface_;
};

TEST_F(LaunchCallTest, ExtrasArriveByteForByte)
{
    for (const Extras &extras :
         {Extras{}, Extras{{"folder_path", "/a b\n/\xff\xfe/"}, {"mode", ""}, {"größe", "x=y"}}})
        EXPECT_EQ(sent("Launch", [&](Eldbus_Message *call) { append_extras(call, extras); }),
                  extras);
}

TEST_F(LaunchCallTest, AValueWithANullByteIsRefused)
{
    const Extras cut = {{"mode", "factory"}, {"path", std::string("a\0b", 3)}};
    EXPECT_EQ(sent("Launch", [&](Eldbus_Message *call) { append_extras(call, cut); }),
              std::nullopt);
}

TEST_F(LaunchCallTest, SomethingElseThanExtrasIsRefused)
{
    EXPECT_EQ(
        sent("Other",
             [](Eldbus_Message *call) { eldbus_message_arguments_append(call, "s", "mode"); }),
        std::nullopt);
}

} // namespace
} // namespace platform
