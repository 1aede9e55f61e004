#pragma once

#include <gst/gst.h>

#include <mutex>

namespace ZR {

/// Pipelines that were replaced while the bus thread may still be looking at them.
///
/// The bus thread reads an input's pipeline without a lock. So while it runs it alone drops last
/// references, between two walks: what was retired is by then out of the inputs, and nothing that
/// it has read before is still in its hands. Without a bus thread they are dropped at once.
class RetiredPipelines {
  public:
    /// Never destroyed: inputs are torn down at the very end of the process.
    static RetiredPipelines& get();

    /// To be called by the bus thread, before it first looks at an input and after it last did.
    void beginWatch();
    void endWatch();

    /// Takes the reference of a pipeline that is in no input any more.
    void retire(GstElement* pipeline);
    /// To be called by the bus thread, between two walks.
    void dropAll();

  private:
    std::mutex mutex_;
    bool watched_ = false;
    GSList* pipelines_ = nullptr;
};

/// A pipeline as the bus thread reads it from an input, and as the Qt thread writes it there. The
/// member is a plain pointer; these two make each access one whole access.
inline GstElement* readPipeline(GstElement* const& member) {
    return __atomic_load_n(&member, __ATOMIC_ACQUIRE);
}
inline void writePipeline(GstElement*& member, GstElement* pipeline) {
    __atomic_store_n(&member, pipeline, __ATOMIC_RELEASE);
}

}  // namespace ZR
