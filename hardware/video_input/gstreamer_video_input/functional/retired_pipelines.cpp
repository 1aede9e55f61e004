#include <utility>

#include "hardware/video_input/gstreamer_video_input/functional/retired_pipelines_internal.h"

namespace ZR {
namespace {

// Outside the lock: the end of a pipeline can take its time.
void dropPipelines(GSList* pipelines) {
    g_slist_free_full(pipelines, gst_object_unref);
}

}  // namespace

RetiredPipelines& RetiredPipelines::get() {
    static auto& pipelines = *new RetiredPipelines;
    return pipelines;
}

void RetiredPipelines::beginWatch() {
    const std::lock_guard<std::mutex> lock(mutex_);
    watched_ = true;
}

void RetiredPipelines::endWatch() {
    GSList* last = nullptr;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        watched_ = false;
        last = std::exchange(pipelines_, nullptr);
    }
    dropPipelines(last);
}

void RetiredPipelines::retire(GstElement* pipeline) {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (watched_) {
            pipelines_ = g_slist_prepend(pipelines_, pipeline);
            return;
        }
    }
    gst_object_unref(pipeline);
}

void RetiredPipelines::dropAll() {
    GSList* retired = nullptr;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        retired = std::exchange(pipelines_, nullptr);
    }
    dropPipelines(retired);
}

}  // namespace ZR
