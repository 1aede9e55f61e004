#include <atomic>
#include <chrono>
#include <thread>

#include "common/zrapi_os_abs/zr_tick.h"
#include "tests/hardware/video_input/video_service.h"

// What the bus thread does with all inputs, one after the other.

namespace ZR::test {
namespace {

/// What the bus takes: end, error, warning, element, completion, quality, start of a stream.
constexpr int watched = 1 << 0 | 1 << 1 | 1 << 2 | 1 << 15 | 1 << 21 | 1 << 24 | 1 << 28;

class BusListener : public VideoServiceTest {
  protected:
    ~BusListener() override { end(); }

    /// A registered input with a pipeline of its own.
    static TestInput& add(const std::string& name, bool hasPipeline = true) {
        auto made = std::make_unique<TestInput>(name);
        TestInput& input = *made;
        if (hasPipeline)
            input.pipeline = GST_ELEMENT(gst_object_ref_sink(gst_pipeline_new(nullptr)));
        Input::instances[name] = std::move(made);
        return input;
    }

    static void post(TestInput& input, GstMessage* message) {
        GstBus* const bus = gst_element_get_bus(input.pipeline);
        gst_bus_post(bus, message);
        gst_object_unref(bus);
    }

    static GstMessage* warning(int number) {
        GError* const error = g_error_new_literal(GST_STREAM_ERROR, number, "w");
        GstMessage* const message = gst_message_new_warning(nullptr, error, nullptr);
        g_error_free(error);
        return message;
    }

    void begin() {
        thread_ = std::thread([] { Input::gstBusListener(nullptr); });
    }

    void end() {
        Input::quit = true;
        if (thread_.joinable())
            thread_.join();
    }

    std::thread thread_;
};

TEST_F(BusListener, returns_when_it_sees_quit) {
    add("a");
    Input::quit = true;
    GstCallSubstitute::isLogging = true;
    Input::gstBusListener(nullptr);
    EXPECT_EQ(takeCalls(), Calls{});
}

TEST_F(BusListener, hands_all_waiting_messages_to_their_input_in_the_order_of_the_names) {
    TestInput& second = add("b");
    TestInput& first = add("a");
    for (const int number : {1, 2})
        post(first, warning(number));
    post(second, warning(3));
    const OutputCapture capture;
    begin();
    EXPECT_TRUE(waitFor([&] { return capture.output().find("(3)") != std::string::npos; }));
    end();
    EXPECT_EQ(capture.output(), "GST Warning : w (1)\nGST Warning : w (2)\nGST Warning : w (3)\n");
}

TEST_F(BusListener, pops_for_100_ms_until_there_is_no_message_then_pauses_25_ms) {
    TestInput& input = add("a");
    post(input, warning(1));
    GstCallSubstitute::isLogging = true;
    const OutputCapture quiet;
    begin();
    EXPECT_TRUE(waitFor([] { return CaptureCallLog::count("pop") >= 3; }));
    end();
    Calls calls = takeCallsOf({"pop", "nanosleep 25000000"});
    ASSERT_GE(calls.size(), 4U);
    const std::string pop = "pop 100000000 " + std::to_string(watched);
    calls.resize(4);
    EXPECT_EQ(calls, (Calls{pop, pop, "nanosleep 25000000", pop}));
}

TEST_F(BusListener, leaves_the_messages_that_wait_when_it_sees_quit) {
    TestInput& input = add("a");
    QObject::connect(
        &input, &ZRGstreamerVideoInput::showVideoItem, &input, [] { Input::quit = true; },
        Qt::DirectConnection);
    GstCallSubstitute::states = {GST_STATE_PLAYING};
    post(input, gst_message_new_async_done(nullptr, 0));
    post(input, warning(6));
    const OutputCapture capture;
    Input::gstBusListener(nullptr);
    EXPECT_EQ(capture.output(), "");
}

TEST_F(BusListener, passes_over_inputs_without_a_pipeline_and_names_without_an_object) {
    add("a", false);
    Input::instances["b"] = nullptr;
    post(add("c"), warning(4));
    const OutputCapture capture;
    begin();
    EXPECT_TRUE(waitFor([&] { return !capture.output().empty(); }));
    end();
    EXPECT_EQ(capture.output(), "GST Warning : w (4)\n");
}

TEST_F(BusListener, takes_what_it_watches_and_leaves_other_messages_out) {
    TestInput& input = add("a");
    post(input, gst_message_new_latency(nullptr));
    post(input, gst_message_new_stream_start(nullptr));
    post(input, warning(5));
    const OutputCapture capture;
    begin();
    EXPECT_TRUE(waitFor([&] { return !capture.output().empty(); }));
    end();
    EXPECT_EQ(capture.output(), "GST Warning : w (5)\n");
    EXPECT_TRUE(input.streaming);
}

TEST_F(BusListener, reaches_the_Qt_thread_by_queued_signals_alone) {
    TestInput& input = add("a");
    const auto parent = makeItem("parent");
    const auto video = makeItem("videoItem");
    input.videoItem = video.get();
    input.setVideoItem(parent.get(), 0);
    input.streaming = true;
    post(input, gst_message_new_eos(nullptr));
    const OutputCapture capture;
    begin();
    EXPECT_TRUE(waitFor([&] { return input.restartPending; }));
    end();
    EXPECT_EQ(capture.output(),
              "STREAM TIMEOUT (EOS)!\nTrigger stream restart in 1000 milliseconds.\n");
    input.videoItem = nullptr;
}

TEST_F(BusListener, knows_whether_an_item_is_visible_from_what_the_Qt_thread_has_seen) {
    TestInput& input = add("a");
    const auto parent = makeItem("parent");
    const auto video = makeItem("videoItem");
    input.videoItem = video.get();
    input.setVideoItem(parent.get(), 0);
    const auto asks = [&input] {
        std::atomic<bool> asked = false;
        const auto noting = QObject::connect(
            &input, &ZRGstreamerVideoInput::errorDetected, &input, [&asked] { asked = true; },
            Qt::DirectConnection);
        input.streaming = true;
        std::thread([&input] {
            const OutputCapture quiet;
            input.handleBusMessage(gst_message_new_eos(nullptr));
        }).join();
        QObject::disconnect(noting);
        return asked.load();
    };
    EXPECT_TRUE(asks());
    parent->setVisible(false);
    EXPECT_FALSE(asks());
    parent->setVisible(true);
    EXPECT_TRUE(asks());
    input.removeVideoItem();
    EXPECT_FALSE(asks());
    input.setVideoItem(parent.get(), 0);
    EXPECT_TRUE(asks());
    const OutputCapture quiet;
    input.videoWidgetDestroyed(parent.get());
    EXPECT_FALSE(asks());
    input.videoItem = nullptr;
}

/// A pipeline that is replaced while the bus thread may be looking at it.
class ReplacedPipeline : public BusListener {
  protected:
    /// Lets the bus thread look at the input's pipeline once at least.
    void beginWalking() {
        post(input_, warning(1));
        const OutputCapture capture;
        begin();
        EXPECT_TRUE(waitFor([&] { return !capture.output().empty(); }));
    }

    /// Replaces the pipeline; who drops it says so.
    void replace() {
        g_object_weak_ref(
            G_OBJECT(input_.pipeline),
            [](gpointer test, GObject* /*object*/) {
                auto* const self = static_cast<ReplacedPipeline*>(test);
                self->droppedBy_ = std::this_thread::get_id();
                self->isDropped_ = true;
            },
            this);
        input_.reset();
    }

    TestInput& input_ = add("a");
    std::thread::id droppedBy_;
    std::atomic<bool> isDropped_ = false;
};

TEST_F(ReplacedPipeline, is_dropped_by_the_bus_thread_between_two_walks) {
    beginWalking();
    replace();
    EXPECT_EQ(input_.pipeline, nullptr);
    EXPECT_TRUE(waitFor([this] { return isDropped_.load(); }));
    EXPECT_NE(droppedBy_, std::this_thread::get_id());
}

TEST_F(ReplacedPipeline, is_dropped_at_once_when_the_bus_thread_is_over) {
    beginWalking();
    end();
    replace();
    EXPECT_TRUE(isDropped_);
    EXPECT_EQ(droppedBy_, std::this_thread::get_id());
}

TEST_F(ReplacedPipeline, is_gone_once_the_bus_thread_is_over) {
    beginWalking();
    replace();
    end();
    EXPECT_TRUE(isDropped_);
}

/// Whoever asks how long ago the server was started.
class SilentServer : public BusListener {
  protected:
    SilentServer() {
        input_.setStreamType(StreamRtsp);
        input_.waitItem = nullptr;
        input_.videoItem = video_.get();
        input_.setVideoItem(parent_.get(), 0);
        QObject::connect(
            &input_, &ZRGstreamerVideoInput::errorDetected, &input_,
            [this](int timeout) {
                asked_ = timeout;
                ++count_;
            },
            Qt::DirectConnection);
    }

    ~SilentServer() override {
        end();
        input_.videoItem = nullptr;
    }

    static std::uint32_t ago(std::uint32_t milliseconds) {
        return static_cast<std::uint32_t>(ZRTick::getTickCount()) - milliseconds;
    }

    /// Lets the bus thread walk for as long as five walks take at most.
    void walk() {
        begin();
        std::this_thread::sleep_for(std::chrono::milliseconds(650));
        end();
    }

    TestInput& input_ = add("a");
    std::unique_ptr<QQuickItem> parent_ = makeItem("parent");
    std::unique_ptr<QQuickItem> video_ = makeItem("videoItem");
    std::atomic<int> asked_ = 0;
    std::atomic<int> count_ = 0;
};

TEST_F(SilentServer, is_asked_again_in_10_s_after_5000_ms_without_data) {
    input_.rtspStartTick = ago(5001);
    begin();
    EXPECT_TRUE(waitFor([this] { return asked_ != 0; }));
    end();
    EXPECT_EQ(asked_, 10000);
}

TEST_F(SilentServer, is_reported_on_each_walk_and_restarted_once) {
    input_.rtspStartTick = ago(60000);
    const OutputCapture capture;
    begin();
    EXPECT_TRUE(waitFor([this] { return count_ >= 3; }));
    end();
    deliverSignals();
    EXPECT_EQ(capture.output(), "Trigger stream restart in 10000 milliseconds.\n");
}

TEST_F(SilentServer, has_its_5000_ms) {
    input_.rtspStartTick = ago(1000);
    walk();
    EXPECT_EQ(count_, 0);
}

TEST_F(SilentServer, owes_nothing_once_data_has_flowed) {
    input_.rtspStartTick = 0;
    walk();
    EXPECT_EQ(count_, 0);
}

TEST_F(SilentServer, of_another_stream_type_is_none) {
    input_.rtspStartTick = ago(60000);
    input_.setStreamType(StreamUdpH264);
    walk();
    EXPECT_EQ(count_, 0);
}

TEST_F(SilentServer, whose_items_are_hidden_is_left_alone) {
    input_.rtspStartTick = ago(60000);
    parent_->setVisible(false);
    walk();
    EXPECT_EQ(count_, 0);
}

}  // namespace
}  // namespace ZR::test
