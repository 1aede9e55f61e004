#include <gst/gst.h>

#include <QQuickItem>
#include <chrono>
#include <thread>

#include "common/zrapi_os_abs/zr_tick.h"
#include "hardware/decimal_internal.h"
#include "hardware/print_line_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/bus_reaction_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/gst_handles_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/input_registry_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/restart_policy_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/retired_pipelines_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/scene_watch_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"

namespace ZR {
namespace {

constexpr GstClockTime messageWait = 100 * GST_MSECOND;
constexpr GstClockTime stateWait = 10 * GST_MSECOND;
constexpr std::chrono::milliseconds walkPause(25);
constexpr int silencedWarning = 13;

constexpr auto watchedMessages = static_cast<GstMessageType>(
    GST_MESSAGE_EOS | GST_MESSAGE_ERROR | GST_MESSAGE_WARNING | GST_MESSAGE_ELEMENT |
    GST_MESSAGE_ASYNC_DONE | GST_MESSAGE_QOS | GST_MESSAGE_STREAM_START);

/// Hands all waiting messages to the input, and at the end the null of a pop that found none.
void takeMessages(GstElement* pipeline, ZRGstreamerVideoInput& input) {
    const GstOwned<GstBus> bus(gst_element_get_bus(pipeline));
    if (bus == nullptr)
        return;
    bool more = true;
    while (more && !ZRGstreamerVideoInput::quit) {
        GstMessage* const message =
            gst_bus_timed_pop_filtered(bus.get(), messageWait, watchedMessages);
        more = message != nullptr;
        input.handleBusMessage(message);
    }
}

BusNews elementNews(GstMessage* message) {
    if (gst_message_has_name(message, "GstUDPSrcTimeout") != FALSE)
        return BusNews::UdpTimeout;
    if (gst_message_has_name(message, "application/x-rtp-source-sdes") != FALSE)
        return BusNews::SourceDescription;
    return BusNews::Ignored;
}

BusNews newsOf(GstMessage* message) {
    switch (GST_MESSAGE_TYPE(message)) {
        case GST_MESSAGE_EOS:
            return BusNews::EndOfStream;
        case GST_MESSAGE_ERROR:
            return BusNews::Error;
        case GST_MESSAGE_WARNING:
            return BusNews::Warning;
        case GST_MESSAGE_ELEMENT:
            return elementNews(message);
        case GST_MESSAGE_ASYNC_DONE:
            return BusNews::AsyncDone;
        case GST_MESSAGE_QOS:
            return BusNews::Quality;
        case GST_MESSAGE_STREAM_START:
            return BusNews::StreamStart;
        default:
            return BusNews::Unexpected;
    }
}

/// A text of GLib's that may be missing.
std::string_view orElse(const char* text, std::string_view substitute) {
    return text != nullptr ? std::string_view(text) : substitute;
}

void reportError(GstMessage* message) {
    GError* error = nullptr;
    char* debug = nullptr;
    gst_message_parse_error(message, &error, &debug);
    const GlibError ownedError(error);
    const GlibText ownedDebug(debug);
    // In one piece: a line of the Qt thread's must not come between the two.
    printLine({"GST Error : ", orElse(error != nullptr ? error->message : nullptr, ""),
               "\n  Debugging information: ", orElse(debug, "none")});
}

void reportWarning(GstMessage* message) {
    GError* warning = nullptr;
    gst_message_parse_warning(message, &warning, nullptr);
    const GlibError owned(warning);
    // Comes with every packet of some senders, and means nothing to anybody.
    if (warning == nullptr || warning->code == silencedWarning)
        return;
    printLine(
        {"GST Warning : ", orElse(warning->message, ""), " (", Decimal(warning->code).text(), ")"});
}

void reportUnexpected(GstMessage* message) {
    printLine({"Received message:\n\t", gst_message_type_get_name(GST_MESSAGE_TYPE(message))});
}

/// What only a message of this kind has to say.
void report(GstMessage* message, BusNews news) {
    if (news == BusNews::Error)
        reportError(message);
    else if (news == BusNews::Warning)
        reportWarning(message);
    else if (news == BusNews::Unexpected)
        reportUnexpected(message);
}

}  // namespace

void ZRGstreamerVideoInput::gstBusListener(void* /*unused*/) {
    RetiredPipelines& retired = RetiredPipelines::get();
    retired.beginWatch();
    while (!quit) {
        for (InputEntry entry = firstInput(); entry != instances.end(); entry = inputAfter(entry)) {
            ZRGstreamerVideoInput* const input = entry->second.get();
            GstElement* const watched = input != nullptr ? readPipeline(input->pipeline) : nullptr;
            if (watched == nullptr)
                continue;
            takeMessages(watched, *input);
            // Read before the clock: a start that came in between would be newer than the time it
            // is compared with, and count as overdue by the clock's whole range.
            const std::uint32_t startTick = input->rtspStartTick;
            const auto now = static_cast<std::uint32_t>(ZRTick::getTickCount());
            if (isDataOverdue(input->streamType, startTick, now) &&
                isOnScreen(*input, input->parentItem, input->waitItem))
                Q_EMIT input->errorDetected(silentServerDelay);
        }
        retired.dropAll();
        std::this_thread::sleep_for(walkPause);
    }
    retired.endWatch();
}

void ZRGstreamerVideoInput::handleBusMessage(GstMessage* msg) {
    if (msg == nullptr)
        return;
    const GstMessageOwned owned(msg);
    const BusNews news = newsOf(msg);
    const BusReaction reaction = reactionTo(news, streaming);
    if (streaming != reaction.streaming)
        streaming = reaction.streaming;
    if (reaction.clearsRtspStart)
        rtspStartTick = 0;
    report(msg, news);
    if (!reaction.line.empty())
        printLine({reaction.line});
    if (news == BusNews::Error)
        stop(0);
    if (news == BusNews::AsyncDone) {
        GstElement* const current = readPipeline(pipeline);
        const GstState state =
            current != nullptr ? stateWithin(current, stateWait) : GST_STATE_NULL;
        if (state == GST_STATE_PAUSED || state == GST_STATE_PLAYING)
            Q_EMIT showVideoItem(true);
        else
            printLine({"ASYNC DONE BUT NOT PLAYING: ", Decimal(static_cast<int>(state)).text()});
    }
    const bool wished =
        reaction.restart == RestartWish::IfOnScreen ||
        (reaction.restart == RestartWish::IfOnScreenUnlessStopped && !isStopRequested());
    if (wished && isOnScreen(*this, parentItem, waitItem))
        Q_EMIT errorDetected(failedStreamDelay);
}

}  // namespace ZR
