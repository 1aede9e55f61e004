#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <cerrno>
#include <string>
#include <vector>

#include "common/zrapi_utility/zr_files_and_folders.h"
#include "tests/support/allocation_counter.h"
#include "tests/support/private_root.h"
#include "tests/support/system_call_tracer.h"

namespace ZR::test {
namespace {

using Names = std::vector<std::string>;

constexpr char folder[] = "/sys/class/regulator";

std::string inFolder(const char* name) {
    return std::string(folder) + '/' + name;
}

/// The names that a listing which must succeed gives.
Names list(FileFilter filter, unsigned int limit = 0) {
    Names names{"what was there before"};
    EXPECT_EQ(ZRFilesAndFolders::getAllFilesOrFoldersInFolder(folder, names, limit, filter), 0);
    return names;
}

/// The status of a listing that must fail and empty the names.
int failureOf(const std::string& path, FileFilter filter = FilterFolders) {
    Names names{"what was there before"};
    const int status = ZRFilesAndFolders::getAllFilesOrFoldersInFolder(path, names, 0, filter);
    EXPECT_EQ(names, Names{});
    return status;
}

/// One entry of each kind, named after it.
void makeOneOfEach() {
    makeFolder(inFolder("folder"));
    makeFile(inFolder("file"), "content");
    makeFifo(inFolder("fifo"));
    makeLink(inFolder("link_to_folder"), "/sys/devices/one");
    makeFolder("/sys/devices/one");
    makeLink(inFolder("link_to_file"), inFolder("file"));
    makeLink(inFolder("link_to_nothing"), inFolder("no_such_entry"));
    makeLink(inFolder("link_to_itself"), inFolder("link_to_itself"));
}

}  // namespace

TEST(IsFile, is_true_for_files_and_links_to_files) {
    makeFile("/usr/bin/ts_calibrate", "");
    makeLink("/usr/bin/linked", "/usr/bin/ts_calibrate");
    EXPECT_TRUE(ZRFilesAndFolders::isFile("/usr/bin/ts_calibrate"));
    EXPECT_TRUE(ZRFilesAndFolders::isFile("/usr/bin/linked"));
}

TEST(IsFile, is_true_for_device_nodes_and_links_to_them) {
    makeDeviceNode("/dev/input/event0");
    makeLink("/dev/input/ts0", "event0");
    EXPECT_TRUE(ZRFilesAndFolders::isFile("/dev/input/event0"));
    EXPECT_TRUE(ZRFilesAndFolders::isFile("/dev/input/ts0"));
    EXPECT_TRUE(ZRFilesAndFolders::isFile("/dev/null"));
}

TEST(IsFile, is_true_for_a_fifo) {
    makeFifo("/dev/input/fifo");
    EXPECT_TRUE(ZRFilesAndFolders::isFile("/dev/input/fifo"));
}

TEST(IsFile, is_false_for_folders_and_links_to_them) {
    makeFolder("/dev/input/folder");
    makeLink("/dev/input/linked", "/dev/input/folder");
    EXPECT_FALSE(ZRFilesAndFolders::isFile("/dev/input/folder"));
    EXPECT_FALSE(ZRFilesAndFolders::isFile("/dev/input/folder/"));
    EXPECT_FALSE(ZRFilesAndFolders::isFile("/dev/input/linked"));
}

TEST(IsFile, is_false_for_what_does_not_exist) {
    makeLink("/dev/input/dangling", "no_such_entry");
    makeFile("/dev/input/file", "");
    EXPECT_FALSE(ZRFilesAndFolders::isFile("/dev/input/dangling"));
    EXPECT_FALSE(ZRFilesAndFolders::isFile("/dev/input/no_such_entry"));
    EXPECT_FALSE(ZRFilesAndFolders::isFile("/dev/input/file/below"));
    EXPECT_FALSE(ZRFilesAndFolders::isFile(""));
}

TEST(IsFile, costs_one_system_call_and_no_heap) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    const Trace trace = traceSystemCalls([](TracedRun& run) {
        const std::string path = "/dev/null";
        const AllocationCounter counter;
        run.begin();
        const bool answer = ZRFilesAndFolders::isFile(path);
        run.end();
        run.say(std::to_string(answer) + ' ' + std::to_string(counter.count()));
    });
    EXPECT_EQ(trace.calls.size(), 1U) << trace.names();
    if (canCountAllocations()) {
        EXPECT_EQ(trace.text, "1 0");
    }
}

TEST(AddSlash_pure, puts_exactly_one_slash_at_the_end) {
    EXPECT_EQ(ZRFilesAndFolders::addSlash("/a"), "/a/");
    EXPECT_EQ(ZRFilesAndFolders::addSlash("/a/"), "/a/");
    EXPECT_EQ(ZRFilesAndFolders::addSlash("/a//"), "/a/");
    EXPECT_EQ(ZRFilesAndFolders::addSlash("/a////"), "/a/");
    EXPECT_EQ(ZRFilesAndFolders::addSlash("a"), "a/");
    EXPECT_EQ(ZRFilesAndFolders::addSlash("a b"), "a b/");
}

TEST(AddSlash_pure, makes_the_root_of_an_empty_path_and_of_slashes) {
    EXPECT_EQ(ZRFilesAndFolders::addSlash(""), "/");
    EXPECT_EQ(ZRFilesAndFolders::addSlash("/"), "/");
    EXPECT_EQ(ZRFilesAndFolders::addSlash("///"), "/");
}

TEST(AddSlash_pure, leaves_slashes_inside_alone) {
    EXPECT_EQ(ZRFilesAndFolders::addSlash("/a//b"), "/a//b/");
    EXPECT_EQ(ZRFilesAndFolders::addSlash("//a/"), "//a/");
}

TEST(Listing, folders_are_folders_and_links_to_folders) {
    makeOneOfEach();
    EXPECT_EQ(list(FilterFolders), (Names{"folder", "link_to_folder"}));
}

TEST(Listing, files_are_everything_else) {
    makeOneOfEach();
    EXPECT_EQ(list(FilterFiles),
              (Names{"fifo", "file", "link_to_file", "link_to_itself", "link_to_nothing"}));
}

TEST(Listing, all_is_every_entry_without_the_folder_itself_and_its_parent) {
    makeOneOfEach();
    EXPECT_EQ(list(FilterAll), (Names{"fifo", "file", "folder", "link_to_file", "link_to_folder",
                                      "link_to_itself", "link_to_nothing"}));
}

TEST(Listing, the_filter_for_folders_is_the_value_2) {
    makeOneOfEach();
    EXPECT_EQ(list(static_cast<FileFilter>(2)), (Names{"folder", "link_to_folder"}));
}

TEST(Listing, names_are_sorted_by_byte) {
    for (const char* const name : {"regulator.2", "regulator.10", "regulator.1", "Regulator",
                                   ".hidden", "\xC3\xA4", "with blank"})
        makeFolder(inFolder(name));
    EXPECT_EQ(list(FilterFolders), (Names{".hidden", "Regulator", "regulator.1", "regulator.10",
                                          "regulator.2", "with blank", "\xC3\xA4"}));
}

TEST(Listing, replaces_what_the_names_held) {
    makeFolder(folder);
    EXPECT_EQ(list(FilterFolders), Names{});
}

TEST(Listing, a_slash_behind_the_folder_changes_nothing) {
    makeFolder(inFolder("regulator.0"));
    Names names;
    EXPECT_EQ(ZRFilesAndFolders::getAllFilesOrFoldersInFolder(std::string(folder) + '/', names, 0,
                                                              FilterFolders),
              0);
    EXPECT_EQ(names, Names{"regulator.0"});
}

TEST(Listing, follows_a_link_to_the_folder) {
    makeFolder("/sys/devices/regulators/regulator.0");
    makeLink(folder, "/sys/devices/regulators");
    EXPECT_EQ(list(FilterFolders), Names{"regulator.0"});
}

TEST(Listing, a_limit_keeps_the_first_names) {
    for (const char* const name : {"c", "a", "b"})
        makeFolder(inFolder(name));
    EXPECT_EQ(list(FilterFolders, 2), (Names{"a", "b"}));
    EXPECT_EQ(list(FilterFolders, 3), (Names{"a", "b", "c"}));
    EXPECT_EQ(list(FilterFolders, 4), (Names{"a", "b", "c"}));
    EXPECT_EQ(list(FilterFolders, 0), (Names{"a", "b", "c"}));
}

TEST(Listing, fails_for_a_missing_folder_and_a_file) {
    makeFile("/sys/class/file", "");
    EXPECT_EQ(failureOf("/sys/class/no_such_folder"), ENOENT);
    EXPECT_EQ(failureOf("/sys/class/file"), ENOTDIR);
    EXPECT_EQ(failureOf(""), ENOENT);
}

TEST(Listing, fails_for_an_unknown_filter) {
    makeFolder(inFolder("regulator.0"));
    EXPECT_EQ(failureOf(folder, static_cast<FileFilter>(3)), EINVAL);
    EXPECT_EQ(failureOf(folder, static_cast<FileFilter>(-1)), EINVAL);
}

TEST(Listing, fails_and_empties_the_names_when_reading_the_folder_fails) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    makeFolder(inFolder("regulator.0"));
    for (const long call : {SYS_openat, SYS_getdents64}) {
        const Trace trace = traceSystemCalls(
            [](TracedRun& run) {
                const std::string path = folder;
                Names names{"before"};
                run.begin();
                const int status =
                    ZRFilesAndFolders::getAllFilesOrFoldersInFolder(path, names, 0, FilterFolders);
                run.end();
                run.say(std::to_string(status) + ' ' + std::to_string(names.size()));
            },
            {{}, {{call, 1, EACCES, 0}}});
        EXPECT_EQ(trace.text, std::to_string(EACCES) + " 0") << trace.names();
    }
}

}  // namespace ZR::test
