// The configuration store: values, and who is told of a change.

#include <string>
#include <vector>

#include "config_store.h"
#include "seam_test.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char KEY[] = "memory/seam/watched";
constexpr char OTHER_KEY[] = "memory/seam/other";

using Names = std::vector<std::string>;

void hear(keynode_t *node, void *names)
{
    static_cast<Names *>(names)->emplace_back(vconf_keynode_get_name(node));
}

void hear_too(keynode_t *node, void *names)
{
    hear(node, names);
}

class ConfigStoreSeam : public SeamTest {
  protected:
    void TearDown() override
    {
        for (const char *key : {KEY, OTHER_KEY}) {
            vconf_ignore_key_changed(key, hear);
            vconf_ignore_key_changed(key, hear_too);
        }
        SeamTest::TearDown();
    }

    /** Lets all that was written before be told: what is written last is told last. */
    void settle()
    {
        Names last;
        ASSERT_EQ(vconf_notify_key_changed(OTHER_KEY, hear_too, &last), 0);
        ASSERT_EQ(vconf_set_int(OTHER_KEY, 1), 0);
        EXPECT_TRUE(set_under_test::goes_on_until([&] { return !last.empty(); }));
        EXPECT_EQ(vconf_ignore_key_changed(OTHER_KEY, hear_too), 0);
    }

    Names names_;
};

TEST_F(ConfigStoreSeam, AKeyThatDoesNotExistCannotBeReadAndLeavesTheValueAlone)
{
    int value = 42;

    EXPECT_EQ(vconf_get_int("memory/seam/never_written", &value), -1);
    EXPECT_EQ(value, 42);
}

TEST_F(ConfigStoreSeam, WhatIsWrittenIsRead)
{
    for (const int written : {0, 1, -1, 2147483647, -2147483647 - 1}) {
        int value = 42;
        EXPECT_EQ(vconf_set_int("db/seam/kept", written), 0);
        EXPECT_EQ(vconf_get_int("db/seam/kept", &value), 0);
        EXPECT_EQ(value, written);
    }
}

TEST_F(ConfigStoreSeam, AnOwnWriteIsToldButNotFromInsideTheCall)
{
    ASSERT_EQ(vconf_notify_key_changed(KEY, hear, &names_), 0);
    ASSERT_EQ(vconf_set_int(KEY, 1), 0);
    EXPECT_THAT(names_, IsEmpty());

    settle();
    EXPECT_THAT(names_, ElementsAre(KEY));
}

TEST_F(ConfigStoreSeam, AnotherProcessesWriteIsTold)
{
    ASSERT_EQ(vconf_notify_key_changed(KEY, hear, &names_), 0);

    set_under_test::another_process_writes(KEY, 5);

    EXPECT_TRUE(set_under_test::goes_on_until([this] { return !names_.empty(); }));
    EXPECT_THAT(names_, ElementsAre(KEY));
    int value = 0;
    EXPECT_EQ(vconf_get_int(KEY, &value), 0);
    EXPECT_EQ(value, 5);
}

TEST_F(ConfigStoreSeam, TheSameCallbackTwiceIsOneWithTheNewData)
{
    Names former;
    ASSERT_EQ(vconf_notify_key_changed(KEY, hear, &former), 0);
    ASSERT_EQ(vconf_notify_key_changed(KEY, hear, &names_), 0);
    ASSERT_EQ(vconf_set_int(KEY, 1), 0);

    settle();
    EXPECT_THAT(former, IsEmpty());
    EXPECT_THAT(names_, ElementsAre(KEY));
    EXPECT_EQ(vconf_ignore_key_changed(KEY, hear), 0);
    EXPECT_EQ(vconf_ignore_key_changed(KEY, hear), -1);
}

TEST_F(ConfigStoreSeam, TwoCallbacksOfOneKeyAreBothTold)
{
    Names others;
    ASSERT_EQ(vconf_notify_key_changed(KEY, hear, &names_), 0);
    ASSERT_EQ(vconf_notify_key_changed(KEY, hear_too, &others), 0);
    ASSERT_EQ(vconf_set_int(KEY, 1), 0);

    settle();
    EXPECT_THAT(names_, ElementsAre(KEY));
    EXPECT_THAT(others, ElementsAre(KEY));
}

TEST_F(ConfigStoreSeam, WhoEndedTheRegistrationIsToldNothingMore)
{
    ASSERT_EQ(vconf_notify_key_changed(KEY, hear, &names_), 0);
    ASSERT_EQ(vconf_set_int(KEY, 1), 0);
    ASSERT_EQ(vconf_ignore_key_changed(KEY, hear), 0);

    settle();
    EXPECT_THAT(names_, IsEmpty());
}

TEST_F(ConfigStoreSeam, ARegistrationThatNeverWasCannotEnd)
{
    EXPECT_EQ(vconf_ignore_key_changed(KEY, hear), -1);
}

TEST_F(ConfigStoreSeam, AMissingNodeHasNoName)
{
    EXPECT_EQ(vconf_keynode_get_name(nullptr), nullptr);
}

} // namespace
