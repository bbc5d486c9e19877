#include "services.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "platform.h"

struct app_control_s {
    std::map<std::string, std::string> extras;
};

struct _keynode_t {
    std::string name;
};

void usb_device_list_s::refresh(const std::vector<std::string> &mount_paths)
{
    fake::Registry &registry = fake::platform().registry;
    for (size_t i = first_; i < devices_.size(); ++i)
        registry.kill("usb_device_get_device_list", devices_[i].get());
    first_ = next_ = devices_.size();
    for (const std::string &mount_path : mount_paths) {
        devices_.push_back(std::make_unique<usb_device_s>(usb_device_s{mount_path}));
        registry.lend(devices_.back().get(), "usb-device");
    }
}

usb_device_h usb_device_list_s::take()
{
    return next_ == devices_.size() ? nullptr : devices_[next_++].get();
}

const char *vconf_keynode_get_name(keynode_t *node)
{
    return node == nullptr ? nullptr : node->name.c_str();
}

int app_control_get_extra_data(app_control_h app_control, const char *key, char **value)
{
    fake::Platform &fake = fake::platform();
    fake.query("app_control_get_extra_data", key);
    const int failed = fake.script.result("app_control_get_extra_data");
    if (failed != 0)
        return failed;
    if (fake.app.extras_are_null) {
        *value = nullptr;
        return 0;
    }
    const auto found = app_control->extras.find(key);
    if (found == app_control->extras.end())
        return -1;
    *value = fake.texts.give("app_control_get_extra_data", found->second);
    return 0;
}

namespace fake {

bool Application::create()
{
    return callbacks_.create(data_);
}

void Application::launch(const Extras &extras)
{
    app_control_s control = {extras};
    callbacks_.app_control(&control, data_);
}

void Application::launch_without_data(const Extras &extras)
{
    app_control_s control = {extras};
    callbacks_.app_control(&control, nullptr);
}

void Application::pause()
{
    callbacks_.pause(data_);
}

void Application::resume()
{
    callbacks_.resume(data_);
}

void Application::terminate()
{
    callbacks_.terminate(data_);
}

void Application::terminate_without_data()
{
    callbacks_.terminate(nullptr);
}

void Application::change_language()
{
    int count = 0;
    for (const Follower &follower : followers_) {
        if (follower.type != APP_EVENT_LANGUAGE_CHANGED)
            continue;
        follower.callback(nullptr, follower.data);
        ++count;
    }
    EXPECT_EQ(count, 1) << "nobody follows the language";
}

int Application::run(ui_app_lifecycle_callback_s *callbacks, void *data)
{
    callbacks_ = *callbacks;
    data_ = data;
    EXPECT_NE(data, nullptr) << "ui_app_main() without the application's data";
    if (script)
        script();
    data_ = nullptr;
    return exit_status;
}

void Application::follow(app_event_type_e type, app_event_cb callback, void *data)
{
    followers_.push_back({type, callback, data});
}

int Store::get(const std::string &key) const
{
    const auto found = values.find(key);
    return found == values.end() ? -9999 : found->second;
}

void Store::change(const std::string &key, int value)
{
    values[key] = value;
    notify(key, key);
}

void Store::notify(const std::string &key, const std::string &name)
{
    const std::vector<Follower> followers = followers_;
    int count = 0;
    for (const Follower &entry : followers) {
        if (entry.key != key)
            continue;
        _keynode_t node = {name};
        entry.callback(&node, entry.data);
        ++count;
    }
    EXPECT_EQ(count, 1) << "nobody follows " << key;
}

void Store::written(const std::string &key, int value)
{
    values[key] = value;
    for (const Follower &entry : followers_) {
        const auto same = [&](const auto &waiting) {
            return waiting.first == key && waiting.second.callback == entry.callback;
        };
        // Writes that follow each other at once are told as one.
        if (entry.key == key && std::none_of(untold_.begin(), untold_.end(), same))
            untold_.emplace_back(key, entry);
    }
}

bool Store::tell_next()
{
    while (!untold_.empty()) {
        const auto [key, told] = untold_.front();
        untold_.pop_front();
        for (const Follower &entry : followers_) {
            if (entry.key != key || entry.callback != told.callback)
                continue;
            _keynode_t node = {key};
            const Follower follower = entry;
            follower.callback(&node, follower.data);
            return true;
        }
    }
    return false;
}

std::vector<std::string> Store::watched() const
{
    std::vector<std::string> keys;
    for (const Follower &entry : followers_)
        keys.push_back(entry.key);
    return keys;
}

vconf_callback_fn Store::follower(const std::string &key) const
{
    for (const Follower &entry : followers_) {
        if (entry.key == key)
            return entry.callback;
    }
    ADD_FAILURE() << "nobody follows " << key;
    return nullptr;
}

void Store::follow(const std::string &key, vconf_callback_fn callback, void *data)
{
    for (Follower &entry : followers_) {
        if (entry.key == key && entry.callback == callback) {
            entry.data = data;
            return;
        }
    }
    followers_.push_back({key, callback, data});
}

bool Store::unfollow(const std::string &key, vconf_callback_fn callback)
{
    const auto found =
        std::find_if(followers_.begin(), followers_.end(), [&](const Follower &entry) {
            return entry.key == key && entry.callback == callback;
        });
    if (found == followers_.end())
        return false;
    followers_.erase(found);
    return true;
}

std::string System::tr(const std::string &id) const
{
    const auto found = texts.find(id);
    return found == texts.end() ? "tr(" + id + ")" : found->second;
}

void Storage::add_folder(const std::string &path, const std::vector<std::string> &entries)
{
    std::vector<std::string> &names = folders_[normal(path)];
    names = {".", ".."};
    names.insert(names.end(), entries.begin(), entries.end());
}

void Storage::add_file(const std::string &path)
{
    files_.insert(normal(path));
}

bool Storage::governs(const std::string &path) const
{
    for (const char *root : {"/opt/data/", "/media/", "/demo"}) {
        if (normal(path).rfind(root, 0) == 0)
            return true;
    }
    return path.empty();
}

const std::vector<std::string> *Storage::folder(const std::string &path) const
{
    const auto found = folders_.find(normal(path));
    return found == folders_.end() ? nullptr : &found->second;
}

bool Storage::is_file(const std::string &path) const
{
    return files_.count(normal(path)) != 0;
}

// Repeated and trailing slashes make no difference to a file system.
std::string Storage::normal(const std::string &path)
{
    std::string result;
    for (const char character : path) {
        if (character != '/' || result.empty() || result.back() != '/')
            result += character;
    }
    if (result.size() > 1 && result.back() == '/')
        result.pop_back();
    return result;
}

int Rotator::report(int new_status)
{
    status = new_status;
    if (callback == nullptr) {
        ADD_FAILURE() << "nobody follows the rotator";
        return 0;
    }
    display_rotator_status_t report = {new_status, 0};
    return callback(&report, data);
}

void Power::raise(const std::string &event)
{
    const auto found = followers.find(event);
    ASSERT_NE(found, followers.end()) << "nobody follows " << event;
    found->second.callback(found->second.data);
}

void Power::change_state(device_power_state_e state)
{
    ASSERT_NE(state_callback, nullptr) << "nobody follows the power state";
    state_callback(state, state_data);
}

} // namespace fake
