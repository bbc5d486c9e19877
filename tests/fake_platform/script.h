/**
 * Failures that a test orders in advance, by the name of the platform function.
 */
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace fake {

class Script {
  public:
    /**
     * Lets one call fail.
     *
     * @param result what it returns; functions that return a pointer or a flag return null or false
     * @param nth    which call from now on, counted from 1
     */
    void fail(const std::string &function, int result = -1, int nth = 1);

    /** Lets every call from now on fail. */
    void fail_always(const std::string &function, int result = -1);

    /** Called by the fake at each call: the ordered result, if this call is to fail. */
    std::optional<int> failure(const std::string &function);

    /** `ok`, or the ordered result. */
    int result(const std::string &function, int ok = 0);

    /** Failures that were ordered and never came about. */
    std::vector<std::string> unused() const;

  private:
    struct Order {
        int calls_left;
        int result;
        bool always;
        bool used;
    };

    std::multimap<std::string, Order> orders_;
};

} // namespace fake
