#include "platform.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace fake {
namespace {

// Never destroyed: free() comes by here, and it is still called while the process ends.
std::unique_ptr<Platform> &instance()
{
    static auto *the_platform = new std::unique_ptr<Platform>(std::make_unique<Platform>());
    return *the_platform;
}

void append(std::vector<std::string> &to, const std::vector<std::string> &from)
{
    to.insert(to.end(), from.begin(), from.end());
}

} // namespace

Platform &platform()
{
    return *instance();
}

Platform &reset()
{
    instance() = std::make_unique<Platform>();
    return *instance();
}

std::string describe(const void *pointer)
{
    return platform().registry.describe(pointer);
}

char *Texts::give(const std::string &source, const std::string &text)
{
    char *copy = strdup(text.c_str());
    sources_[copy] = source;
    return copy;
}

std::string Texts::taken_back(const void *text)
{
    const auto found = sources_.find(text);
    if (found == sources_.end())
        return "";
    const std::string source = found->second;
    sources_.erase(found);
    return source;
}

std::vector<std::string> Texts::held() const
{
    std::vector<std::string> sources;
    for (const auto &entry : sources_)
        sources.push_back("text from " + entry.second);
    return sources;
}

std::vector<std::string> Platform::leftovers() const
{
    std::vector<std::string> all = registry.living();
    append(all, held);
    for (const std::string &key : store.watched())
        all.push_back("watch on " + key);
    for (const auto &entry : power.followers)
        all.push_back("subscription to " + entry.first);
    if (power.state_callback != nullptr)
        all.push_back("subscription to the power state");
    if (rotator.callback != nullptr)
        all.push_back("rotator callback");
    append(all, texts.held());
    return all;
}

void Platform::hold(const std::string &what)
{
    if (std::find(held.begin(), held.end(), what) == held.end())
        held.push_back(what);
}

void Platform::release(const std::string &what)
{
    held.erase(std::remove(held.begin(), held.end(), what), held.end());
}

} // namespace fake
