// The library and Debian's media-ctl on the same simulated kernel, with the same texts: they make
// the same calls in the same order and leave the same graph.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <memory>
#include <sstream>

#include "mediactl/mediactl.h"
#include "mediactl/v4l2subdev.h"
#include "tests/platform/media_controller/media_kernel_substitute.h"
#include "tests/platform/media_controller/media_texts.h"

namespace ZR::test {
namespace {

constexpr char program[] = "/usr/bin/media-ctl";

/// What a program asked of the kernel and left there, a line each.
using Record = std::string;

MediaKernel graphOf(const std::string& name) {
    return name == "odd" ? oddGraph() : cameraGraph(name == "quad");
}

/// The errors that a text's calls meet: "5 2 S_FMT", errno, occurrence and call.
using Faults = std::vector<std::string>;

void prepareLibrary(const std::string& graph, const Faults& faults) {
    mediaKernel() = graphOf(graph);
    for (const std::string& fault : faults) {
        std::size_t at = 0;
        const int error = std::stoi(fault, &at);
        std::size_t rest = 0;
        const int occurrence = std::stoi(fault.substr(at), &rest);
        mediaKernel().fail(fault.substr(at + rest + 1), error,
                           static_cast<unsigned int>(occurrence));
    }
}

struct Unref {
    void operator()(media_device* media) const { media_device_unref(media); }
};

/// What media-ctl does with its option, by our functions.
bool apply(media_device* media, const std::string& option, const std::string& text) {
    if (media_device_enumerate(media) != 0)
        return false;
    if (option == "-V")
        return v4l2_subdev_parse_setup_formats(media, text.c_str()) == 0;
    const char* from = text.c_str();
    char* end = nullptr;
    do {
        if (media_parse_setup_link(media, from, &end) != 0)
            return false;
        from = end + 1;
    } while (*end == ',');
    return *end == '\0';
}

Record recordOfLibrary(const std::string& graph, const std::string& option, const std::string& text,
                       const Faults& faults) {
    prepareLibrary(graph, faults);
    bool isGood = false;
    {
        const std::unique_ptr<media_device, Unref> media(media_device_new("/dev/media0"));
        isGood = apply(media.get(), option, text);
    }
    std::ostringstream record;
    for (const std::string& line : mediaKernel().calls)
        record << line << '\n';
    record << "graph\n";
    for (const std::string& line : describe(mediaKernel()))
        record << line << '\n';
    record << (isGood ? "good" : "bad");
    return record.str();
}

Record recordOfMediaCtl(const std::string& graph, const std::string& option,
                        const std::string& text, const Faults& faults) {
    const std::string log = testing::TempDir() + "/media_ctl_record." + std::to_string(getpid());
    std::string allFaults = "ZR_FAULTS=";
    for (const std::string& fault : faults)
        allFaults += fault + '\n';
    std::vector<std::string> arguments{program, option, text};
    std::vector<std::string> environment{"LD_PRELOAD=" ZR_MEDIA_CTL_KERNEL, "ZR_GRAPH=" + graph,
                                         "ZR_LOG=" + log, allFaults};
    std::vector<char*> argv;
    for (std::string& argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    std::vector<char*> envp;
    for (std::string& variable : environment)
        envp.push_back(variable.data());
    envp.push_back(nullptr);
    posix_spawn_file_actions_t silence;
    posix_spawn_file_actions_init(&silence);
    posix_spawn_file_actions_addopen(&silence, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&silence, STDOUT_FILENO, STDERR_FILENO);
    pid_t child = 0;
    int status = -1;
    if (posix_spawn(&child, program, &silence, nullptr, argv.data(), envp.data()) == 0)
        waitpid(child, &status, 0);
    posix_spawn_file_actions_destroy(&silence);
    std::ostringstream record;
    record << std::ifstream(log).rdbuf() << (status == 0 ? "good" : "bad");
    unlink(log.c_str());
    return record.str();
}

class MediaCtl : public testing::Test {
  protected:
    void SetUp() override {
        if (access(program, X_OK) != 0)
            GTEST_SKIP() << "media-ctl (package v4l-utils) is not installed";
    }

    static void compare(const std::string& graph, const std::string& option,
                        const std::string& text, const Faults& faults = {}) {
        const Record expected = recordOfMediaCtl(graph, option, text, faults);
        ASSERT_NE(expected.find("graph"), std::string::npos)
            << "media-ctl did not run on the simulated kernel";
        EXPECT_EQ(recordOfLibrary(graph, option, text, faults), expected)
            << graph << ' ' << option << " \"" << text << '"';
    }

    static void compareAll(const std::string& graph, const std::string& option,
                           const std::vector<std::string>& texts) {
        for (const std::string& text : texts)
            compare(graph, option, text);
    }
};

TEST_F(MediaCtl, agrees_on_the_links_of_the_terminals) {
    for (const bool isQuad : {false, true}) {
        const std::string graph = isQuad ? "quad" : "dual";
        const auto texts = terminalLinkTexts(isQuad, "tw9912 1-0044", "adv7180 2-0020");
        compareAll(graph, "-l", texts);
        std::string all;
        for (const std::string& text : texts)
            all += (all.empty() ? "" : ",") + text;
        compare(graph, "-l", all);
    }
}

TEST_F(MediaCtl, agrees_on_the_formats_of_the_terminals) {
    for (const bool isQuad : {false, true})
        compareAll(isQuad ? "quad" : "dual", "-V",
                   terminalFormatTexts(isQuad, "tw9912 1-0044", "adv7180 2-0020"));
}

TEST_F(MediaCtl, agrees_on_odd_links) {
    compareAll("odd", "-l", oddLinkTexts());
}

TEST_F(MediaCtl, agrees_on_odd_formats) {
    compareAll("odd", "-V", oddFormatTexts());
}

TEST_F(MediaCtl, agrees_on_links_cut_off_or_changed_anywhere) {
    const std::string text = "'sensor':0 -> \"scaler\" :0 [1],10:1->'nope':0[0]";
    compareAll("odd", "-l", cutOff(text));
    compareAll("odd", "-l", withOtherCharacters("'sensor':0 ->10:0[1]"));
}

TEST_F(MediaCtl, agrees_on_formats_cut_off_or_changed_anywhere) {
    compareAll("odd", "-V",
               cutOff("1:1 [fmt:UYVY2X8/720x576@1/50 field:none crop:(1,2)/3x4 "
                      "compose:(5,6)/7x8 xfer:709],'scaler':0[AYUV32 1x2]"));
    compareAll("odd", "-V", withOtherCharacters("1:1 [fmt:Y8/72x57@1/50 field:none]"));
    compareAll("odd", "-V", withOtherCharacters("16:0 [(1,2)/3x4]"));
}

TEST_F(MediaCtl, agrees_when_a_call_fails) {
    const std::string link = "'sensor':0 -> 'scaler':0[1]";
    const std::string format =
        "1:1 [fmt:UYVY2X8/720x576@1/50 crop:(1,2)/3x4 compose:(5,6)/7x8],16:0 [fmt:Y8/1x2]";
    for (const std::string error : {"5", "22", "25"})
        for (const std::string call : {"1 open",
                                       "2 open",
                                       "3 open",
                                       "1 DEVICE_INFO",
                                       "1 ENUM_ENTITIES",
                                       "5 ENUM_ENTITIES",
                                       "1 ENUM_LINKS",
                                       "11 ENUM_LINKS",
                                       "1 readlink",
                                       "2 stat",
                                       "1 close",
                                       "1 SETUP_LINK",
                                       "1 S_FMT",
                                       "2 S_FMT",
                                       "4 S_FMT",
                                       "1 S_FRAME_INTERVAL",
                                       "2 S_FRAME_INTERVAL",
                                       "3 S_FRAME_INTERVAL",
                                       "1 S_SELECTION",
                                       "2 S_SELECTION"}) {
            compare("odd", "-l", link, {error + ' ' + call});
            compare("odd", "-V", format, {error + ' ' + call});
        }
    compare("odd", "-V", format, {"25 1 S_SELECTION", "5 1 S_CROP"});
}

}  // namespace
}  // namespace ZR::test
