// Shows streams by the library or by a bare program, and says what that took.
// Usage: zrapi_video_viewer library|bare h264|jpeg PORT...
//
// Reads commands from standard input, one a line, and answers each with a line "figure NUMBER ...":
//   start anew|again   ms to the first picture at the sink, and on the screen; the pipeline has to be
//                      built, or was built before
//   show MS            processor time in ms to start a stream and show it so long; pictures
//   back               ms from the sender's return to its picture at the sink, and on the screen. Asks
//                      for what it needs with the lines "sender off" and "sender on"
//   memory N           anonymous memory in KiB with N streams shown
//   idle WHAT N MS     processor time in us a second with N inputs that are built: of the bus thread
//                      (thread), of a bare loop with its waits (waits), of one that pops bare buses
//                      as it does (pops)
// A figure that could not be had is a line "failed".

#include <sys/prctl.h>

#include <QGuiApplication>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <future>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/video/player.h"
#include "benchmarks/video/stage.h"
#include "benchmarks/video/thread_time.h"
#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"

#include <unistd.h>

namespace ZR::benchmarks {
namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;
using Microseconds = std::chrono::duration<double, std::micro>;

/// For what comes after a stream has ended.
constexpr std::chrono::milliseconds calm(100);
/// Longer than a walk of the bus thread over all inputs takes.
constexpr std::chrono::milliseconds idleWalks(500);
/// A stream's memory has found its size.
constexpr std::chrono::milliseconds settling(2000);

/// Standard output belongs to whoever gives the commands.
void say(const std::string& line) {
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

template <typename... Numbers>
std::string figures(Numbers... numbers) {
    std::ostringstream text;
    text << std::fixed << "figure";
    ((text << ' ' << numbers), ...);
    return text.str();
}

double processMilliseconds() {
    timespec time{};
    (void)::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return Milliseconds(std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec))
        .count();
}

/// Ends every stream that a command has left playing.
class Viewer {
  public:
    Viewer(Side side, int streamType, std::vector<int> ports)
        : side_(std::move(side)), streamType_(streamType), ports_(std::move(ports)) {
        side_.begin();
        stage_ = std::make_unique<Stage>();
    }
    ~Viewer() {
        players_.clear();
        side_.end();
    }
    Viewer(const Viewer&) = delete;
    Viewer& operator=(const Viewer&) = delete;

    std::string answer(const std::string& command);

  private:
    Player& player(int number);
    /// Begins to watch, then plays. False when no picture came.
    bool showFirstPicture(Player& player);
    std::string start(bool anew);
    std::string show(std::chrono::milliseconds time);
    std::string back();
    std::string memory(int streams);
    std::string idle(const std::string& what, int inputs, std::chrono::milliseconds time);

    std::unique_ptr<Stage> stage_;
    Side side_;
    int streamType_;
    std::vector<int> ports_;
    std::map<int, std::unique_ptr<Player>> players_;
};

Player& Viewer::player(int number) {
    std::unique_ptr<Player>& made = players_[number];
    if (made == nullptr) {
        made = side_.makePlayer({streamType_, ports_.at(static_cast<std::size_t>(number)), number,
                                 stage_->place(number)});
        stage_->runUntilDrawn();
    }
    return *made;
}

bool Viewer::showFirstPicture(Player& player) {
    PictureWatch& watch = stage_->watch();
    watch.begin(player.item());
    player.build();
    watch.follow(player.sink());
    player.play();
    return stage_->runUntilPicture();
}

std::string Viewer::start(bool anew) {
    Player& only = player(0);
    if (anew)
        only.tearDown();
    else
        only.build();
    // What was torn down is dropped meanwhile, on the bus thread too.
    Stage::run(calm);
    const bool shown = showFirstPicture(only);
    const Arrival arrival = stage_->watch().arrival();
    only.stop();
    Stage::run(calm);
    return shown ? figures(arrival.atSink, arrival.onScreen) : "failed";
}

std::string Viewer::show(std::chrono::milliseconds time) {
    Player& only = player(0);
    only.tearDown();
    Stage::run(calm);
    PictureWatch& watch = stage_->watch();
    const double before = processMilliseconds();
    watch.begin(only.item());
    only.build();
    watch.follow(only.sink());
    only.play();
    Stage::run(time);
    const double taken = processMilliseconds() - before;
    const long pictures = watch.pictures();
    const bool shown = watch.arrival().onScreen >= 0;
    only.stop();
    Stage::run(calm);
    return shown ? figures(taken, pictures) : "failed";
}

std::string Viewer::back() {
    Player& only = player(0);
    if (!showFirstPicture(only))
        return "failed";
    PictureWatch& watch = stage_->watch();
    only.restartWhenLost(
        [&] {
            watch.begin(only.item());
            say("sender on");
        },
        [&] { watch.follow(only.sink()); });
    // What was seen until now is not what comes back.
    watch.begin(only.item());
    say("sender off");
    const bool shown = stage_->runUntilPicture();
    const Arrival arrival = watch.arrival();
    only.stop();
    Stage::run(calm);
    return shown ? figures(arrival.atSink, arrival.onScreen) : "failed";
}

std::string Viewer::memory(int streams) {
    for (int number = 0; number < streams; ++number) {
        if (!showFirstPicture(player(number)))
            return "failed";
    }
    Stage::run(settling);
    const long kibibytes = anonymousMemory();
    for (auto& [number, player] : players_)
        player->stop();
    Stage::run(calm);
    return figures(kibibytes);
}

std::string Viewer::idle(const std::string& what, int inputs, std::chrono::milliseconds time) {
    for (auto& [number, player] : players_) {
        player->stop();
        if (number >= inputs)
            player->tearDown();
    }
    for (int number = 0; number < inputs; ++number)
        player(number).build();
    // The bus thread drops what was torn down.
    Stage::run(idleWalks);
    Microseconds taken{};
    if (what == "thread") {
        const auto before = threadTime("ZRGstBus");
        Stage::run(time);
        taken = threadTime("ZRGstBus") - before;
    } else {
        auto floor = std::async(std::launch::async, &idleWaits, inputs, time,
                                what == "pops" ? busWait() : bareWait());
        Stage::run(time);
        taken = floor.get();
    }
    return figures(taken.count() * 1000 / Milliseconds(time).count());
}

std::string Viewer::answer(const std::string& command) {
    std::istringstream words(command);
    std::string what;
    std::string how;
    int number = 0;
    int milliseconds = 0;
    words >> what >> how >> number >> milliseconds;
    if (what == "start")
        return start(how == "anew");
    if (what == "show")
        return show(std::chrono::milliseconds(std::stoi(how)));
    if (what == "back")
        return back();
    if (what == "memory")
        return memory(std::stoi(how));
    if (what == "idle")
        return idle(how, number, std::chrono::milliseconds(milliseconds));
    return "failed";
}

}  // namespace
}  // namespace ZR::benchmarks

int main(int count, char** arguments) {
    using namespace ZR;
    using namespace ZR::benchmarks;
    // Nobody else would end a viewer whose commander is gone.
    (void)::prctl(PR_SET_PDEATHSIG, SIGKILL);
    QGuiApplication application(count, arguments);
    const std::vector<std::string> words(arguments + 1, arguments + count);
    if (words.size() < 3 || ::chdir(ZR_VIDEO_SCENE) != 0) {
        std::fprintf(stderr, "Usage: zrapi_video_viewer library|bare h264|jpeg PORT...\n");
        return EXIT_FAILURE;
    }
    std::vector<int> ports;
    for (auto word = words.begin() + 2; word != words.end(); ++word)
        ports.push_back(std::stoi(*word));
    Viewer viewer(words[0] == "library" ? librarySide() : bareSide(),
                  words[1] == "h264" ? StreamUdpH264 : StreamUdpJpeg, ports);
    say(figures());
    for (std::string command; std::getline(std::cin, command);)
        say(viewer.answer(command));
    return EXIT_SUCCESS;
}
