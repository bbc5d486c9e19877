/** A store of their own for the tests of one program; its places are fixed at the first use. */
#pragma once

#include <filesystem>
#include <map>
#include <string>

#include <Ecore.h>
#include <gtest/gtest.h>

#include "settings/settings.h"
#include "store_support/scratch.h"

class ConfigStoreFixture : public testing::Test {
  protected:
    ConfigStoreFixture()
    {
        // One store for the whole program, left to the last test to remove.
        static store_test::ScratchDir scratch;
        scratch_ = &scratch;
        setenv("OSTREL_DEMO_STATE_DIR", (scratch / "state").c_str(), 1);
        setenv("OSTREL_DEMO_RUNTIME_DIR", (scratch / "run").c_str(), 1);
        store_test::write_file(scratch / "tv.conf", "");
        setenv("OSTREL_DEMO_TV_CONF", (scratch / "tv.conf").c_str(), 1);
        // The modules that follow the machine's batteries and name ask a system bus.
        setenv("ECORE_NO_SYSTEM_MODULES", "1", 1);
        ecore_init();
        EXPECT_EQ(platform::Settings::get().state_dir, scratch / "state");
    }
    ~ConfigStoreFixture() override { ecore_shutdown(); }

    /** A key of this test's own, so that tests do not see each other's. */
    const char *key(const std::string &name) { return named("db/", name); }
    const char *memory_key(const std::string &name) { return named("memory/", name); }

    std::string path(const std::string &key) const
    {
        return *scratch_ / ((key[0] == 'd' ? "state/" : "run/") + key);
    }

  private:
    const char *named(const std::string &kind, const std::string &name)
    {
        std::string &text = names_[kind + name];
        text = kind + testing::UnitTest::GetInstance()->current_test_info()->name() + "/" + name;
        return text.c_str();
    }

    store_test::ScratchDir *scratch_;
    std::map<std::string, std::string> names_;
};
