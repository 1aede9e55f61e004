#include "tests/scene/faults/packet_watch.h"

#include <algorithm>
#include <stdexcept>

namespace ZR::test {

PacketWatch::PacketWatch(const ZRGstreamerVideoInput& input) {
    GstElement* const source = gst_bin_get_by_name(GST_BIN(input.getPipeline()), "udp");
    if (source == nullptr)
        throw std::runtime_error("no UDP source");
    GstPad* const pad = gst_element_get_static_pad(source, "src");
    constexpr auto data =
        static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_BUFFER_LIST);
    // The pipeline keeps its part: it may end after this object.
    gst_pad_add_probe(pad, data, packet, new std::shared_ptr<Seen>(seen_), forget);
    gst_object_unref(pad);
    gst_object_unref(source);
    std::unique_lock<std::mutex> lock(seen_->mutex);
    if (!seen_->came.wait_for(lock, std::chrono::seconds(20), [this] { return seen_->any; }))
        throw std::runtime_error("no packet");
    seen_->longestGap = {};
}

Clock::time_point PacketWatch::last() const {
    const std::lock_guard<std::mutex> lock(seen_->mutex);
    return seen_->last;
}

Clock::duration PacketWatch::longestGap() const {
    const std::lock_guard<std::mutex> lock(seen_->mutex);
    return seen_->longestGap;
}

GstPadProbeReturn PacketWatch::packet(GstPad* /*pad*/, GstPadProbeInfo* /*info*/, gpointer data) {
    Seen& seen = **static_cast<std::shared_ptr<Seen>*>(data);
    const std::lock_guard<std::mutex> lock(seen.mutex);
    const Clock::time_point now = Clock::now();
    seen.longestGap = std::max(seen.longestGap, now - seen.last);
    seen.last = now;
    seen.any = true;
    seen.came.notify_all();
    return GST_PAD_PROBE_OK;
}

void PacketWatch::forget(gpointer data) {
    delete static_cast<std::shared_ptr<Seen>*>(data);
}

}  // namespace ZR::test
