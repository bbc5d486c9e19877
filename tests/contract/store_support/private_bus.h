/** A message bus of a test's own, which goes with the object. */
#pragma once

#include <string>

#include "store_support/scratch.h"

namespace store_test {

class PrivateBus {
  public:
    /** @param socket where it listens */
    explicit PrivateBus(const std::string &socket)
        : daemon_({"/usr/bin/dbus-daemon", "--session", "--nofork", "--nopidfile",
                   "--print-address=1", "--address=unix:path=" + socket})
    {
        while (daemon_.out_text().find('\n') == std::string::npos && daemon_.read_some(-1)) {
        }
        address_ = daemon_.out_text().substr(0, daemon_.out_text().find('\n'));
    }

    const std::string &address() const { return address_; }
    void signal(int number) const { daemon_.signal(number); }

  private:
    Child daemon_;
    std::string address_;
};

} // namespace store_test
