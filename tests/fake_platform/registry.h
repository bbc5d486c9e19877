/**
 * Every handle that the fake gives out, by name and whether it still lives. A call with a handle
 * that was deleted or never existed fails the running test with a message that names both.
 */
#pragma once

#include <map>
#include <string>
#include <vector>

namespace fake {

class Registry {
  public:
    /** Who has to release a handle. */
    enum class Owner { Player, Platform };

    /** Adds a handle and names it `kind#n`. @return the name. */
    std::string add(const void *handle, const std::string &kind, Owner owner = Owner::Player);

    /** Adds a handle that stays the platform's own, unless it lives already. */
    void lend(const void *handle, const std::string &kind);

    /** Gives a name of its own to a pointer that is no handle of the fake, such as callback data.
     */
    void name(const void *pointer, const std::string &name);

    /** Removes a name that name() gave. */
    void forget(const void *pointer);

    /**
     * Checks a handle that `function` was called with; null passes. Fails the test otherwise.
     *
     * @return whether the handle lives
     */
    bool check(const char *function, const void *handle) const;

    /** As check(), and the handle is dead from then on. @return whether it lived. */
    bool kill(const char *function, const void *handle);

    /**
     * The handle goes together with its parent. Deleting it once more on its own is still fine, as
     * the set's widgets keep their handles until their owner lets go; anything else is not.
     */
    void kill_with_parent(const void *handle);

    bool alive(const void *handle) const;

    /** Name of a handle or pointer; "null" for null, "data" for what is not known. */
    std::string describe(const void *pointer) const;

    /** Names of the player's handles that live, in the order they were made. */
    std::vector<std::string> living() const;

    /** How many handles of a kind live, whoever has to release them. */
    int living(const std::string &kind) const;

  private:
    enum class State { Alive, GoneWithParent, Dead };

    struct Handle {
        std::string name;
        std::string kind;
        State state;
        Owner owner;
    };

    std::map<const void *, Handle> handles_;
    std::map<const void *, std::string> names_;
    std::map<std::string, int> counters_;
    std::map<std::string, int> living_;
    std::vector<const void *> order_;
};

} // namespace fake
