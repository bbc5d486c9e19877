/** The desktop with a login manager on its system bus, which says what the test tells it to say. */
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "desktop_support/desktop.h"

namespace desktop_test {

class LoginManagerTest : public DesktopTest {
  protected:
    LoginManagerTest()
    {
        variables_["DBUS_SYSTEM_BUS_ADDRESS"] = system_bus_.address();
        manager_ = std::make_unique<Program>(std::vector<std::string>{LOGIN_MANAGER}, variables_);
        EXPECT_TRUE(manager_->hears("serving")) << manager_->errors();
    }

    /** An application that the login manager has answered. */
    std::unique_ptr<Program> known_app(const Program::Variables &more = {})
    {
        auto app = start_and_show(more);
        EXPECT_TRUE(
            manager_->hears("locked shutdown:sleep delay by Demo player: The demo is being ended"));
        return app;
    }

    bool locks_are(int count)
    {
        return wait_until([&] {
            manager_->say("locks");
            return manager_->hears("locks " + std::to_string(count), 0.2);
        });
    }

    store_test::PrivateBus system_bus_{folder_ / "system"};
    std::unique_ptr<Program> manager_;
};

} // namespace desktop_test
