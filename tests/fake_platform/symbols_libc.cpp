// What the player asks of the C library and a set answers differently: folders, the message
// catalogue, and the release of texts that the platform handed out. The linker leads the calls here
// (--wrap); paths outside the fake's folders go on to the C library.

#include <cerrno>
#include <cstring>
#include <memory>
#include <vector>

#include <dirent.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "platform.h"

namespace {

using fake::OpenFolder;

// The newest first: it is nearly always the one.
OpenFolder *find_directory(DIR *stream)
{
    const auto &folders = fake::platform().open_folders;
    for (auto folder = folders.rbegin(); folder != folders.rend(); ++folder) {
        if (reinterpret_cast<DIR *>(folder->get()) == stream)
            return folder->get();
    }
    return nullptr;
}

template <typename Stat> int fake_stat(const char *path, Stat *status)
{
    fake::Platform &fake = fake::platform();
    fake.query("stat", path);
    const bool is_folder = fake.storage.folder(path) != nullptr;
    if (fake.script.failure("stat") || (!is_folder && !fake.storage.is_file(path))) {
        errno = ENOENT;
        return -1;
    }
    *status = {};
    status->st_mode = static_cast<mode_t>(is_folder ? S_IFDIR | 0755 : S_IFREG | 0644);
    return 0;
}

} // namespace

extern "C" {

DIR *__real_opendir(const char *path);
struct dirent *__real_readdir(DIR *stream);
struct dirent64 *__real_readdir64(DIR *stream);
int __real_closedir(DIR *stream);
int __real_stat(const char *path, struct stat *status);
int __real_stat64(const char *path, struct stat64 *status);
void __real_free(void *pointer);

DIR *__wrap_opendir(const char *path)
{
    fake::Platform &fake = fake::platform();
    if (!fake.storage.governs(path))
        return __real_opendir(path);
    fake.query("opendir", path);
    const std::vector<std::string> *entries = fake.storage.folder(path);
    if (fake.script.failure("opendir") || entries == nullptr) {
        errno = fake.storage.is_file(path) ? ENOTDIR : ENOENT;
        return nullptr;
    }
    fake.open_folders.push_back(std::make_unique<OpenFolder>());
    OpenFolder *folder = fake.open_folders.back().get();
    folder->entries = *entries;
    fake.registry.add(folder, "open folder");
    return reinterpret_cast<DIR *>(folder);
}

struct dirent64 *__wrap_readdir64(DIR *stream)
{
    OpenFolder *directory = find_directory(stream);
    if (directory == nullptr)
        return __real_readdir64(stream);
    if (!fake::platform().registry.check("readdir64", stream) ||
        directory->next == directory->entries.size())
        return nullptr;
    std::string name = directory->entries[directory->next++];
    directory->entry = {};
    const char mark = name.back();
    const bool is_dots = name == "." || name == "..";
    directory->entry.d_type = mark == '/' || is_dots ? DT_DIR : mark == '@' ? DT_LNK : DT_REG;
    if (mark == '/' || mark == '@')
        name.pop_back();
    std::strncpy(directory->entry.d_name, name.c_str(), sizeof directory->entry.d_name - 1);
    return &directory->entry;
}

struct dirent *__wrap_readdir(DIR *stream)
{
    if (find_directory(stream) == nullptr)
        return __real_readdir(stream);
    static_assert(sizeof(struct dirent) == sizeof(struct dirent64));
    return reinterpret_cast<struct dirent *>(__wrap_readdir64(stream));
}

int __wrap_closedir(DIR *stream)
{
    if (find_directory(stream) == nullptr)
        return __real_closedir(stream);
    fake::platform().query("closedir");
    fake::platform().registry.kill("closedir", stream);
    return 0;
}

int __wrap_stat(const char *path, struct stat *status)
{
    return fake::platform().storage.governs(path) ? fake_stat(path, status)
                                                  : __real_stat(path, status);
}

int __wrap_stat64(const char *path, struct stat64 *status)
{
    return fake::platform().storage.governs(path) ? fake_stat(path, status)
                                                  : __real_stat64(path, status);
}

char *__wrap_dgettext(const char *domain, const char *id)
{
    fake::Platform &fake = fake::platform();
    fake.query("dgettext", domain, id);
    EXPECT_STREQ(domain, "ostrel-demo-player-tv") << "text of another program: " << id;
    // The catalogue's texts stay where they are, as the real ones do.
    return const_cast<char *>(
        fake.system.texts.insert({id, fake.system.tr(id)}).first->second.c_str());
}

void __wrap_free(void *pointer)
{
    const std::string source = fake::platform().texts.taken_back(pointer);
    if (!source.empty())
        fake::platform().query("free", fake::Raw{"text from " + source});
    __real_free(pointer);
}
}
