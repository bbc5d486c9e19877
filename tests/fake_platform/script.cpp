#include "script.h"

namespace fake {

void Script::fail(const std::string &function, int result, int nth)
{
    orders_.insert({function, {nth, result, false, false}});
}

void Script::fail_always(const std::string &function, int result)
{
    orders_.insert({function, {1, result, true, false}});
}

std::optional<int> Script::failure(const std::string &function)
{
    std::optional<int> result;
    const auto range = orders_.equal_range(function);
    for (auto order = range.first; order != range.second; ++order) {
        Order &entry = order->second;
        const bool now = entry.always || (entry.calls_left > 0 && --entry.calls_left == 0);
        if (now) {
            entry.used = true;
            result = entry.result;
        }
    }
    return result;
}

int Script::result(const std::string &function, int ok)
{
    return failure(function).value_or(ok);
}

std::vector<std::string> Script::unused() const
{
    std::vector<std::string> functions;
    for (const auto &[function, order] : orders_) {
        if (!order.used)
            functions.push_back(function);
    }
    return functions;
}

} // namespace fake
