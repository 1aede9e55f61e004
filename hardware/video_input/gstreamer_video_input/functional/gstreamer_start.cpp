#include <dlfcn.h>
#include <gst/gst.h>
#include <sys/types.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>

#include "hardware/print_line_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/gst_handles_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/gstreamer_start_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"

namespace ZR {
namespace {

constexpr std::chrono::seconds startDelay(1);
constexpr useconds_t readyStep = 100000;  // us
constexpr int readySteps = 10;

/// What the start-up thread shares with whoever ends it. Never destroyed: the thread is detached,
/// and may wake up when the process is about to be gone.
struct StartUp {
    std::mutex mutex;
    std::condition_variable ended;
    pid_t process = 0;  ///< the one that the threads run in, 0 before
    std::thread::id thread;
    bool running = false;
    bool processEnds = false;
    bool busThreadStarted = false;

    static StartUp& get() {
        static auto& startUp = *new StartUp;
        return startUp;
    }
};

/// Its plug-in registers the item type that a "video.qml" imports.
void loadSinkPlugin() {
    (void)takeFloating(gst_element_factory_make("qmlglsink", nullptr));
}

bool beginStartUp() {
    StartUp& startUp = StartUp::get();
    const std::lock_guard<std::mutex> lock(startUp.mutex);
    startUp.thread = std::this_thread::get_id();
    startUp.running = !startUp.processEnds;
    return startUp.running;
}

void startBusThread() {
    StartUp& startUp = StartUp::get();
    const std::lock_guard<std::mutex> lock(startUp.mutex);
    if (!ZRGstreamerVideoInput::quit) {
        (void)ZRGstreamerVideoInput::gstBusThread.setThreadName("ZRGstBus");
        (void)ZRGstreamerVideoInput::gstBusThread.startThread(
            &ZRGstreamerVideoInput::gstBusListener, nullptr);
        startUp.busThreadStarted = true;
    }
    ZRGstreamerVideoInput::gstInitDone = true;
    startUp.running = false;
    startUp.ended.notify_all();
}

void startGstreamer() {
    std::this_thread::sleep_for(startDelay);
    if (!beginStartUp())
        return;
    if (gst_is_initialized() == FALSE)
        gst_init(nullptr, nullptr);
    loadSinkPlugin();
    startBusThread();
}

}  // namespace

void keepLibraryLoaded() {
    Dl_info here{};
    if (dladdr(reinterpret_cast<void*>(&keepLibraryLoaded), &here) != 0)
        (void)dlopen(here.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
}

bool launchGstreamerStart() try {
    keepLibraryLoaded();
    StartUp::get().process = ::getpid();
    std::thread(startGstreamer).detach();
    return true;
} catch (const std::exception&) {
    return false;
}

void endBusThread() {
    {
        StartUp& startUp = StartUp::get();
        const std::lock_guard<std::mutex> lock(startUp.mutex);
        ZRGstreamerVideoInput::quit = true;
        startUp.busThreadStarted = false;
    }
    (void)ZRGstreamerVideoInput::gstBusThread.join();
}

void endGstreamerThreads() {
    StartUp& startUp = StartUp::get();
    // A child that was forked has none of the threads, and perhaps a lock that one of them held.
    if (startUp.process != ::getpid())
        return;
    bool busThreadRuns = false;
    {
        std::unique_lock<std::mutex> lock(startUp.mutex);
        startUp.processEnds = true;
        // A GStreamer that cannot be initialised ends the process itself, on the start-up thread.
        const bool onStartUpThread = startUp.thread == std::this_thread::get_id();
        startUp.ended.wait(lock, [&] { return onStartUpThread || !startUp.running; });
        busThreadRuns = startUp.busThreadStarted;
    }
    // The thread class may be the maker's, which need not bear a join without a thread.
    if (busThreadRuns)
        endBusThread();
}

void ZRGstreamerVideoInput::waitForGstReady() {
    if (gstInitDone)
        return;
    for (int step = 0; step < readySteps; ++step) {
        (void)::usleep(readyStep);
        if (gstInitDone)
            return;
    }
    (void)::usleep(readyStep);
    printLine({"VIDEO: ERROR WHILE WAITING FOR GSTREAMER TO BE INITIALIZED! EXPECT ERRORS!"});
}

void ZRGstreamerVideoInput::doQuit() {
    endBusThread();
    // The inputs 0 and 2 share their descriptors: those are closed twice, kept as it was, and the
    // second close is left to fail.
    for (int input = 0; input < inputCount; ++input) {
        for (const int descriptor : {fileDescriptors[input], fileDescriptorsSub[input]}) {
            if (descriptor != -1)
                (void)::close(descriptor);
        }
    }
}

}  // namespace ZR
