#include "media_ctl_peer.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>

#include "board.h"
#include "mediactl/mediactl.h"
#include "mediactl/v4l2subdev.h"

namespace ZR::test {
namespace {

constexpr char program[] = "/usr/bin/media-ctl";
constexpr char record[] = "/tmp/ioctl_record";

struct Unref {
    void operator()(media_device* media) const { media_device_unref(media); }
};
using Device = std::unique_ptr<media_device, Unref>;

Device enumerated() {
    Device media(media_device_new("/dev/media0"));
    if (media_device_enumerate(media.get()) != 0)
        throw std::runtime_error("the media device cannot be enumerated");
    return media;
}

/// What media-ctl does with the text of its option -l.
bool setUpLinks(media_device* media, const std::string& text) {
    const char* from = text.c_str();
    char* end = nullptr;
    do {
        if (media_parse_setup_link(media, from, &end) != 0)
            return false;
        from = end + 1;
    } while (*end == ',');
    return *end == '\0';
}

bool applyHere(const std::string& option, const std::string& text) {
    const Device media = enumerated();
    if (option == "-l")
        return setUpLinks(media.get(), text);
    return v4l2_subdev_parse_setup_formats(media.get(), text.c_str()) == 0;
}

bool applyByMediaCtl(const std::string& option, const std::string& text) {
    std::string words[] = {program, option, text};
    char* const arguments[] = {words[0].data(), words[1].data(), words[2].data(), nullptr};
    std::string variables[] = {std::string("LD_PRELOAD=") + ZR_IOCTL_RECORDER,
                               std::string("ZR_IOCTL_RECORD=") + record};
    char* const environment[] = {variables[0].data(), variables[1].data(), nullptr};
    posix_spawn_file_actions_t silence;
    posix_spawn_file_actions_init(&silence);
    posix_spawn_file_actions_addopen(&silence, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&silence, STDOUT_FILENO, STDERR_FILENO);
    pid_t child = 0;
    int status = -1;
    if (posix_spawn(&child, program, &silence, nullptr, arguments, environment) == 0)
        waitpid(child, &status, 0);
    posix_spawn_file_actions_destroy(&silence);
    if (!WIFEXITED(status))
        throw std::runtime_error("media-ctl did not come to its end with " + text);
    return WEXITSTATUS(status) == 0;
}

/// The requests since the last call, and the success behind them.
std::string recorded(bool isGood) {
    std::ifstream file(record);
    std::string all{std::istreambuf_iterator<char>(file), {}};
    std::remove(record);
    return all + (isGood ? "good" : "bad");
}

struct Outcome {
    std::vector<std::string> requests;  ///< by text
    std::string graph;
};

/// Gives each text to @p apply, one after the other.
Outcome outcomeOf(bool (*apply)(const std::string&, const std::string&), const std::string& links,
                  const std::string& option, const std::vector<std::string>& texts) {
    turn("media/present", "0");
    turn("media/present", "1");
    if (!links.empty())
        run("media-ctl -l \"" + links + '"');
    std::remove(record);
    Outcome outcome;
    for (const std::string& text : texts)
        outcome.requests.push_back(recorded(apply(option, text)));
    outcome.graph = saidBy("media-ctl -p");
    return outcome;
}

}  // namespace

void MediaCtlPeer::expectSame(const std::string& option, const std::vector<std::string>& texts) {
    expectSameAfter("", option, texts);
}

void MediaCtlPeer::expectSameAfter(const std::string& links, const std::string& option,
                                   const std::vector<std::string>& texts) {
    ::setenv("ZR_IOCTL_RECORD", record, 1);
    const Outcome ours = outcomeOf(applyHere, links, option, texts);
    ::unsetenv("ZR_IOCTL_RECORD");
    const Outcome theirs = outcomeOf(applyByMediaCtl, links, option, texts);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        ASSERT_NE(theirs.requests[i].find("/dev/media0"), std::string::npos)
            << "no request of media-ctl was recorded";
        EXPECT_EQ(ours.requests[i], theirs.requests[i]) << option << " \"" << texts[i] << '"';
    }
    ASSERT_NE(theirs.graph.find("Device topology"), std::string::npos) << theirs.graph;
    EXPECT_EQ(ours.graph, theirs.graph);
}

bool MediaCtlPeer::isQuad() {
    return seenByCat("/sys/module/zr_terminal/parameters/variant") == "quad";
}

std::string MediaCtlPeer::entityBeginningWith(const std::string& begin) {
    const Device media = enumerated();
    for (unsigned int i = 0; i < media_get_entities_count(media.get()); ++i) {
        std::string name = media_entity_get_info(media_get_entity(media.get(), i))->name;
        if (name.compare(0, begin.size(), begin) == 0)
            return name;
    }
    throw std::runtime_error("no " + begin);
}

}  // namespace ZR::test
