#include <gst/gst.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <thread>

#include "hardware/video_input/gstreamer_video_input/functional/retired_pipelines_internal.h"

namespace ZR {
namespace {

/// Pipelines of GStreamer's own; how many of them are gone counts.
class RetiredPipeline_pure : public testing::Test {
  protected:
    RetiredPipeline_pure() {
        ::setenv("GST_REGISTRY_DISABLE", "yes", 1);
        gst_init(nullptr, nullptr);
    }

    GstElement* make() {
        auto* const pipeline = GST_ELEMENT(gst_object_ref_sink(gst_pipeline_new(nullptr)));
        g_object_weak_ref(
            G_OBJECT(pipeline),
            [](gpointer count, GObject* /*object*/) { ++*static_cast<std::atomic<int>*>(count); },
            &gone_);
        return pipeline;
    }

    int gone() const { return gone_; }

    RetiredPipelines retired_;

  private:
    std::atomic<int> gone_ = 0;
};

TEST_F(RetiredPipeline_pure, is_dropped_at_once_without_a_watcher) {
    retired_.retire(make());
    EXPECT_EQ(gone(), 1);
}

TEST_F(RetiredPipeline_pure, is_kept_for_its_watcher) {
    retired_.beginWatch();
    retired_.retire(make());
    retired_.retire(make());
    EXPECT_EQ(gone(), 0);
    retired_.dropAll();
    EXPECT_EQ(gone(), 2);
}

TEST_F(RetiredPipeline_pure, is_dropped_once) {
    retired_.beginWatch();
    GstElement* const pipeline = make();
    gst_object_ref(pipeline);
    retired_.retire(pipeline);
    retired_.dropAll();
    retired_.dropAll();
    EXPECT_EQ(gone(), 0) << "somebody else's reference was dropped";
    EXPECT_EQ(GST_OBJECT_REFCOUNT_VALUE(pipeline), 1);
    gst_object_unref(pipeline);
    EXPECT_EQ(gone(), 1);
}

TEST_F(RetiredPipeline_pure, is_dropped_by_the_end_of_the_watch) {
    retired_.beginWatch();
    retired_.retire(make());
    retired_.endWatch();
    EXPECT_EQ(gone(), 1);
}

TEST_F(RetiredPipeline_pure, is_dropped_at_once_after_the_watch) {
    retired_.beginWatch();
    retired_.endWatch();
    retired_.retire(make());
    EXPECT_EQ(gone(), 1);
}

TEST_F(RetiredPipeline_pure, is_no_business_of_a_watch_without_one) {
    retired_.beginWatch();
    retired_.dropAll();
    retired_.endWatch();
    EXPECT_EQ(gone(), 0);
}

TEST_F(RetiredPipeline_pure, is_dropped_by_its_watcher_while_others_are_retired) {
    constexpr int count = 2000;
    retired_.beginWatch();
    std::atomic<bool> done = false;
    std::thread watcher([&] {
        while (!done)
            retired_.dropAll();
        retired_.endWatch();
    });
    for (int i = 0; i < count; ++i)
        retired_.retire(make());
    done = true;
    watcher.join();
    EXPECT_EQ(gone(), count);
}

TEST_F(RetiredPipeline_pure, can_be_replaced_while_another_thread_reads_the_member) {
    retired_.beginWatch();
    GstElement* member = make();
    std::atomic<bool> done = false;
    std::thread watcher([&] {
        while (!done) {
            if (GstElement* const seen = readPipeline(member))
                gst_object_unref(gst_element_get_bus(seen));
            retired_.dropAll();
        }
        retired_.endWatch();
    });
    for (int i = 0; i < 2000; ++i) {
        GstElement* const replaced = member;
        writePipeline(member, i % 2 == 0 ? nullptr : make());
        if (replaced != nullptr)
            retired_.retire(replaced);
    }
    done = true;
    watcher.join();
    const int left = member != nullptr ? 1 : 0;
    EXPECT_EQ(gone() + left, 1001);
    if (member != nullptr)
        gst_object_unref(member);
}

TEST_F(RetiredPipeline_pure, collection_is_the_same_object_for_all) {
    EXPECT_EQ(&RetiredPipelines::get(), &RetiredPipelines::get());
}

}  // namespace
}  // namespace ZR
