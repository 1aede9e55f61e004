#include "common/zrapi_utility/zr_files_and_folders.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>

namespace ZR {
namespace {

bool matches(const std::filesystem::directory_entry& entry, FileFilter filter) {
    if (filter == FilterAll)
        return true;
    // An entry that cannot be examined (a dangling link, one that has just gone) is no folder.
    std::error_code ignored;
    return entry.is_directory(ignored) == (filter == FilterFolders);
}

int listEntries(const std::string& folder, FileFilter filter, std::vector<std::string>& entries) {
    std::error_code error;
    std::filesystem::directory_iterator entry(folder, error);
    const std::filesystem::directory_iterator end;
    while (!error && entry != end) {
        if (matches(*entry, filter))
            entries.push_back(entry->path().filename().string());
        entry.increment(error);
    }
    return error.value();
}

}  // namespace

bool ZRFilesAndFolders::isFile(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

std::string ZRFilesAndFolders::addSlash(const std::string& path) {
    return path.substr(0, path.find_last_not_of('/') + 1) + '/';
}

int ZRFilesAndFolders::getAllFilesOrFoldersInFolder(const std::string& folder,
                                                    std::vector<std::string>& entries,
                                                    unsigned int limit, FileFilter filter) {
    if (filter != FilterAll && filter != FilterFiles && filter != FilterFolders) {
        entries.clear();
        return EINVAL;
    }
    int status = EINTR;
    while (status == EINTR) {
        entries.clear();
        status = listEntries(folder, filter, entries);
    }
    if (status != 0) {
        entries.clear();
        return status;
    }
    // The kernel lists sysfs in hash order; who looks for the first match wants the same one
    // always.
    std::sort(entries.begin(), entries.end());
    if (limit != 0 && entries.size() > limit)
        entries.resize(limit);
    return 0;
}

}  // namespace ZR
