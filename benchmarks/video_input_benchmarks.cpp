#include <QObject>
#include <chrono>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include "benchmarks/comparison.h"
#include "benchmarks/fresh_process.h"
#include "benchmarks/operations.h"
#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"

namespace ZR::benchmarks {
namespace {

// Longer than a text keeps inside of itself.
const std::string inputName = "an input with a long name";
constexpr int manyInputs = 3;

/// A stop leaves one command and the start behind it another.
constexpr long queuedCommands = 2;
/// The object, its key in the registry and in itself, its signals' connections.
constexpr long objectParts = 23;

/// What an input's queue is, bare.
struct BareQueue {
    std::list<int> commands;
    std::mutex mutex;

    void lockAndRelease() { const std::lock_guard<std::mutex> lock(mutex); }
};

ZRGstreamerVideoInput& knownInput() {
    static ZRGstreamerVideoInput& made = [&]() -> ZRGstreamerVideoInput& {
        // A process that measures starts no GStreamer beside it.
        ZRGstreamerVideoInput::busThreadLaunched = true;
        for (int number = 1; number < manyInputs; ++number)
            (void)ZRGstreamerVideoInput::getInstance(inputName + std::to_string(number));
        return *ZRGstreamerVideoInput::getInstance(inputName);
    }();
    return made;
}

void compareQueue() {
    const auto bare = std::make_shared<BareQueue>();
    const auto startBare = [bare] {
        bare->lockAndRelease();
        if (bare->commands.empty() || bare->commands.back() != CommandStart)
            bare->commands.push_back(CommandStart);
        return true;
    };
    const auto start = [] { return knownInput().start(0) == 0; };
    compare("video start/waiting", startBare, start);
    compare(
        "video stop and start",
        [bare, startBare] {
            bare->lockAndRelease();
            bare->commands.clear();
            bare->commands.push_back(CommandStop);
            return startBare();
        },
        [start] { return knownInput().stop(0) == 0 && start(); }, queuedCommands);
}

void compareKnownInput() {
    std::map<std::string, int> bare;
    for (int number = 1; number < manyInputs; ++number)
        bare.emplace(inputName + std::to_string(number), number);
    bare.emplace(inputName, 0);
    compare(
        "video getInstance/known", [bare] { return bare.find(inputName) != bare.end(); },
        [known = &knownInput] {
            return ZRGstreamerVideoInput::getInstance(inputName) == &known();
        });
}

/// An object of Qt's with as many connections by name as an input has.
bool connectBareObject() {
    QObject object;
    for (int connection = 0; connection < 3; ++connection)
        QObject::connect(&object, SIGNAL(destroyed(QObject*)), &object, SLOT(deleteLater()),
                         Qt::QueuedConnection);
    return true;
}

void compareFurtherInput() {
    Comparison further;
    further.operation = "video getInstance/further";
    further.longestBatch = 1;
    further.allowedAllocations = objectParts;
    // An input lives until the process ends; here it makes room for the next one.
    further.after = [](long /*operations*/) {
        (void)ZRGstreamerVideoInput::instances.erase("further");
        return true;
    };
    compare(std::move(further), &connectBareObject, [] {
        (void)knownInput();
        return ZRGstreamerVideoInput::getInstance("further") != nullptr;
    });
}

/// The discovery is measured by itself.
double makeFirstInput(long /*operations*/) {
    ZRGstreamerVideoInput::doInitialSetup();
    return batchOf([] { return ZRGstreamerVideoInput::getInstance(inputName) != nullptr; })(1);
}

bool startBareThread() {
    std::thread([] { std::this_thread::sleep_for(std::chrono::seconds(1)); }).detach();
    return connectBareObject();
}

void compareFirstInput() {
    Comparison first;
    first.operation = "video getInstance/first";
    first.longestBatch = 1;
    first.floor = inFreshProcess(batchOf(&startBareThread));
    first.library = inFreshProcess(&makeFirstInput);
    registerComparison(std::move(first));
}

}  // namespace

void compareVideoInputs() {
    // First, in processes that have no input yet.
    compareFirstInput();
    compareQueue();
    compareKnownInput();
    compareFurtherInput();
}

}  // namespace ZR::benchmarks
