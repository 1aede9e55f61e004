#pragma once

#include <string>
#include <vector>

#include "common/zrapi_export.h"

namespace ZR {

/// What ZRFilesAndFolders::getAllFilesOrFoldersInFolder lists; the values are part of the
/// interface.
enum FileFilter : int {
    FilterAll = 0,      ///< every entry
    FilterFiles = 1,    ///< everything that is no folder: files, device nodes, dangling links
    FilterFolders = 2,  ///< folders and links to folders
};

/// Questions about paths. All operations are static and callable from any thread.
class ZRAPI_EXPORT ZRFilesAndFolders {
  public:
    /// Tells whether @p path names an existing entry that is no folder (device nodes included).
    /// Links are followed: a dangling link does not exist. One `stat` system call.
    static bool isFile(const std::string& path);

    /// Returns @p path with exactly one "/" at its end; an empty path becomes "/".
    static std::string addSlash(const std::string& path);

    /// Lists the names (not the paths) of the entries of a folder, sorted by byte value; "." and
    /// ".." never appear.
    ///
    /// @param folder   folder to list
    /// @param entries  receives the names, replacing what it held; emptied on failure
    /// @param limit    the most names to return; 0 returns all
    /// @param filter   which entries to list
    /// @return 0, or the `errno` value of the failure (ENOENT, ENOTDIR, EACCES, ...); EINVAL for an
    ///         unknown filter
    static int getAllFilesOrFoldersInFolder(const std::string& folder,
                                            std::vector<std::string>& entries, unsigned int limit,
                                            FileFilter filter);
};

}  // namespace ZR
