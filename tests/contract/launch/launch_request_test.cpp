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

/** A call that is written and then read, as it would be at the other end of the bus. */
class LaunchCallTest : public testing::Test {
  protected:
    /** What the other end makes of a call. */
    std::optional<Extras> sent(const std::function<void(sd_bus_message *)> &write)
    {
        BusMessagePtr call;
        sd_bus_message_new_method_call(connection_.get(), BusOutput(call), nullptr, "/launch",
                                       "test.Launch", "Launch");
        write(call.get());
        EXPECT_GE(sd_bus_message_seal(call.get(), 1, 0), 0);
        return read_extras(call.get());
    }

    const store_test::ScratchDir folder_;
    const store_test::PrivateBus bus_{folder_ / "bus"};
    const store_test::Environment address_{"DBUS_SESSION_BUS_ADDRESS", bus_.address()};
    const BusPtr connection_ = connect_session_bus();
};

TEST_F(LaunchCallTest, ExtrasArriveByteForByte)
{
    for (const Extras &extras :
         {Extras{}, Extras{{"folder_path", "/a b\n/\xff\xfe/"}, {"mode", ""}, {"größe", "x=y"}}})
        EXPECT_EQ(sent([&](sd_bus_message *call) { append_extras(call, extras); }), extras);
}

TEST_F(LaunchCallTest, AValueWithANullByteIsRefused)
{
    const Extras cut = {{"mode", "factory"}, {"path", std::string("a\0b", 3)}};
    EXPECT_EQ(sent([&](sd_bus_message *call) { append_extras(call, cut); }), std::nullopt);
}

TEST_F(LaunchCallTest, SomethingElseThanExtrasIsRefused)
{
    EXPECT_EQ(sent([](sd_bus_message *call) { sd_bus_message_append(call, "s", "mode"); }),
              std::nullopt);
    EXPECT_EQ(sent([](sd_bus_message *call) {
                  sd_bus_message_append(call, "a{sv}", 1, "mode", "s", "factory");
              }),
              std::nullopt);
}

} // namespace
} // namespace platform
