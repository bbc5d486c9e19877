#include "registry.h"

#include <gtest/gtest.h>

namespace fake {

std::string Registry::add(const void *handle, const std::string &kind, Owner owner)
{
    const std::string name = kind + "#" + std::to_string(++counters_[kind]);
    handles_[handle] = {name, kind, State::Alive, owner};
    ++living_[kind];
    order_.push_back(handle);
    return name;
}

void Registry::lend(const void *handle, const std::string &kind)
{
    if (!alive(handle))
        add(handle, kind, Owner::Platform);
}

void Registry::name(const void *pointer, const std::string &name)
{
    names_[pointer] = name;
}

void Registry::forget(const void *pointer)
{
    names_.erase(pointer);
}

bool Registry::check(const char *function, const void *handle) const
{
    if (handle == nullptr)
        return false;
    const auto found = handles_.find(handle);
    if (found == handles_.end()) {
        ADD_FAILURE() << function << "() was called with a handle that never existed";
        return false;
    }
    if (found->second.state != State::Alive) {
        ADD_FAILURE() << function << "() was called with " << found->second.name
                      << ", which is deleted";
        return false;
    }
    return true;
}

bool Registry::kill(const char *function, const void *handle)
{
    const auto found = handles_.find(handle);
    if (found != handles_.end() && found->second.state == State::GoneWithParent) {
        found->second.state = State::Dead;
        return false;
    }
    if (!check(function, handle))
        return false;
    found->second.state = State::Dead;
    --living_[found->second.kind];
    return true;
}

void Registry::kill_with_parent(const void *handle)
{
    const auto found = handles_.find(handle);
    if (found != handles_.end() && found->second.state == State::Alive) {
        found->second.state = State::GoneWithParent;
        --living_[found->second.kind];
    }
}

bool Registry::alive(const void *handle) const
{
    const auto found = handles_.find(handle);
    return found != handles_.end() && found->second.state == State::Alive;
}

std::string Registry::describe(const void *pointer) const
{
    if (pointer == nullptr)
        return "null";
    const auto handle = handles_.find(pointer);
    if (handle != handles_.end())
        return handle->second.name;
    const auto named = names_.find(pointer);
    return named != names_.end() ? named->second : "data";
}

std::vector<std::string> Registry::living() const
{
    std::vector<std::string> names;
    for (const void *handle : order_) {
        const Handle &entry = handles_.at(handle);
        if (entry.state == State::Alive && entry.owner == Owner::Player)
            names.push_back(entry.name);
    }
    return names;
}

int Registry::living(const std::string &kind) const
{
    const auto found = living_.find(kind);
    return found == living_.end() ? 0 : found->second;
}

} // namespace fake
