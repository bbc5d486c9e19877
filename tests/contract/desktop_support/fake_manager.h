/** A service manager's end of the socket that it names in NOTIFY_SOCKET. */
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include "base/descriptor.h"
#include "desktop_support/program.h"

namespace desktop_test {

class FakeManager {
  public:
    /** @param address a path, or a name without a file behind an '@' */
    explicit FakeManager(const std::string &address)
        : socket_(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un name = {};
        name.sun_family = AF_UNIX;
        std::memcpy(name.sun_path, address.data(), address.size());
        if (address[0] == '@')
            name.sun_path[0] = '\0';
        const auto length =
            static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + address.size());
        EXPECT_EQ(bind(socket_.number(), reinterpret_cast<sockaddr *>(&name), length), 0)
            << std::strerror(errno);
    }

    /** What has been told since the last time. */
    std::vector<std::string> told()
    {
        std::vector<std::string> all;
        char text[4096];
        ssize_t length = 0;
        while ((length = recv(socket_.number(), text, sizeof text, MSG_DONTWAIT)) >= 0)
            all.emplace_back(text, static_cast<size_t>(length));
        return all;
    }

    /** Waits until this has been told so often, and forgets what came before. */
    bool hears(const std::string &state, int times = 1)
    {
        return wait_until([&] {
            const std::vector<std::string> all = told();
            times -= static_cast<int>(std::count(all.begin(), all.end(), state));
            return times <= 0;
        });
    }

  private:
    platform::Descriptor socket_;
};

} // namespace desktop_test
