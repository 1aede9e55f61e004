// Many streams one after the other leave nothing behind.

#include <gst/gst.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#include <QDir>
#include <fstream>
#include <map>
#include <mutex>

#include "tests/scene/support/stream_source.h"
#include "tests/scene/support/video_scene.h"

namespace {

using namespace ZR;
using namespace ZR::test;

constexpr QRect area(100, 60, 600, 360);
#if defined(__SANITIZE_ADDRESS__)  // several times slower, and keeps what was freed
constexpr int cycles = 100;
constexpr long toleratedKilobytes = 256 * 1024;
#else
constexpr int cycles = 1000;
/// What the heap's own fragments may add.
constexpr long toleratedKilobytes = 4L * 1024;
#endif
/// Until then caches, pools and threads that are kept have been made.
constexpr int warmCycles = 50;

int entriesOf(const char* folder) {
    return QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
}

long residentKilobytes() {
    (void)::malloc_trim(0);
    std::ifstream file("/proc/self/statm");
    long pages = 0;
    file >> pages >> pages;
    return pages * (::sysconf(_SC_PAGESIZE) / 1024);
}

struct Usage {
    int descriptors = entriesOf("/proc/self/fd");
    int threads = entriesOf("/proc/self/task");
    long kilobytes = residentKilobytes();
};

std::ostream& operator<<(std::ostream& out, const Usage& usage) {
    return out << usage.descriptors << " descriptors, " << usage.threads << " threads, "
               << usage.kilobytes << " kB";
}

/// Living objects of GStreamer by the name of their class, from the first that is made after this.
class LivingObjects {
  public:
    static void count() {
        const GType type = g_type_register_static_simple(GST_TYPE_TRACER, "ZrObjectCounter",
                                                         sizeof(GstTracerClass), nullptr,
                                                         sizeof(GstTracer), nullptr, GTypeFlags{});
        // As long as the process, since GStreamer calls it as long.
        static auto* const tracer = static_cast<GstTracer*>(g_object_new(type, nullptr));
        gst_tracing_register_hook(tracer, "object-created", G_CALLBACK(objectCreated));
        gst_tracing_register_hook(tracer, "object-destroyed", G_CALLBACK(objectDestroyed));
        gst_tracing_register_hook(tracer, "mini-object-created", G_CALLBACK(miniCreated));
        gst_tracing_register_hook(tracer, "mini-object-destroyed", G_CALLBACK(miniDestroyed));
    }

    /// Without those of which as many were destroyed as made.
    static std::map<std::string, int> now() {
        const std::lock_guard<std::mutex> lock(mutex);
        std::map<std::string, int> living;
        for (const auto& [type, number] : numbers)
            if (number != 0)
                living[g_type_name(type)] = number;
        return living;
    }

    static bool hasCounted() {
        const std::lock_guard<std::mutex> lock(mutex);
        return !numbers.empty();
    }

  private:
    static void add(GType type, int number) {
        const std::lock_guard<std::mutex> lock(mutex);
        numbers[type] += number;
    }

    static void objectCreated(GObject* /*tracer*/, GstClockTime /*time*/, GstObject* object) {
        add(G_OBJECT_TYPE(object), 1);
    }
    static void objectDestroyed(GObject* /*tracer*/, GstClockTime /*time*/, GstObject* object) {
        add(G_OBJECT_TYPE(object), -1);
    }
    static void miniCreated(GObject* /*tracer*/, GstClockTime /*time*/, GstMiniObject* object) {
        add(GST_MINI_OBJECT_TYPE(object), 1);
    }
    static void miniDestroyed(GObject* /*tracer*/, GstClockTime /*time*/, GstMiniObject* object) {
        add(GST_MINI_OBJECT_TYPE(object), -1);
    }

    static inline std::mutex mutex;
    static inline std::map<GType, int> numbers;
};

class Endurance : public testing::Test {
  protected:
    Endurance() {
        // A thread that comes to a heap of its own late would look like growth.
        (void)::mallopt(M_ARENA_MAX, 1);
        scene_.place(input_, area);
    }

    /// Builds the stream, plays it until its first picture and tears it down again.
    void cycle() {
        input_.startSlot();
        ASSERT_TRUE(input_.isRunning(0));
        input_.reset();
        ASSERT_EQ(input_.getPipeline(), nullptr);
        QCoreApplication::processEvents();
    }

    /// What a cycle leaves to the bus thread is dropped by its next walk.
    void settle() { scene_.runFor(0.5); }

    VideoScene scene_;
    ZRGstreamerVideoInput& input_ = scene_.input();
};

TEST_F(Endurance, a_thousand_streams_cost_no_memory_no_descriptors_and_no_threads) {
    const StreamSource source(StreamUdpJpeg);
    source.chooseFor(input_);
    for (int i = 0; i < warmCycles; ++i)
        cycle();
    settle();
    const Usage before;
    for (int i = warmCycles; i < cycles; ++i)
        cycle();
    settle();
    const Usage after;
    std::cout << "before: " << before << "\nafter:  " << after << '\n';
    EXPECT_LE(after.descriptors, before.descriptors);
    EXPECT_LE(after.threads, before.threads);
    EXPECT_LE(after.kilobytes, before.kilobytes + toleratedKilobytes);
}

class ShownStreams : public testing::TestWithParam<ZRVideoStreamType> {};

INSTANTIATE_TEST_SUITE_P(Stream, ShownStreams, testing::ValuesIn(networkStreams), streamName);

TEST_P(ShownStreams, leave_none_of_gstreamers_objects_behind) {
    constexpr int rounds = 12;
    // The video item keeps its last pictures, of up to three planes; what leaks once a round grows by
    // more.
    constexpr int tolerated = 8;
    VideoScene scene;
    ZRGstreamerVideoInput& input = scene.input();
    LivingObjects::count();
    scene.place(input, area);
    const StreamSource source(GetParam());
    source.chooseFor(input);
    std::map<std::string, int> first;
    for (int round = 0; round < rounds; ++round) {
        input.start(0);
        ASSERT_TRUE(scene.waitForQuarters(area, upright));
        input.stop(0);
        ASSERT_TRUE(scene.waitForQuarters(area, waiting));
        input.reset();
        scene.runFor(0.5);
        if (round == 1)
            first = LivingObjects::now();
    }
    EXPECT_TRUE(LivingObjects::hasCounted());
    for (const auto& [type, number] : LivingObjects::now())
        EXPECT_LE(number, first[type] + tolerated) << type;
}

}  // namespace
