#include <QQuickItem>
#include <QTimer>
#include <algorithm>

#include "hardware/decimal_internal.h"
#include "hardware/print_line_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/restart_policy_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"

#include <gst/gst.h>

namespace ZR {

void ZRGstreamerVideoInput::timedRestartStream(int p_timeout) {
    if (restartPending)
        return;
    printLine({"Trigger stream restart in ", Decimal(p_timeout).text(), " milliseconds."});
    restartPending = true;
    Q_EMIT showVideoItem(false);
    // Precise: a coarse timer may come early by a twentieth.
    QTimer::singleShot(std::max(p_timeout, 0), Qt::PreciseTimer, this, SLOT(restartStream()));
}

void ZRGstreamerVideoInput::restartStream() {
    if (isGivenUp(restartCount)) {
        printLine({"Video: Gave up after ", Decimal(restartCount).text(),
                   " automatic restarts. Please restart video manually..."});
        restartPending = false;
        return;
    }
    const bool inScene = parentItem != nullptr && videoItem != nullptr &&
                         videoItem->parentItem() != nullptr && parentItem->isVisible();
    if (inScene) {
        reset();
        init();
        if (pipeline != nullptr) {
            ++restartCount;
            (void)gst_element_set_state(pipeline, GST_STATE_NULL);
            start(0);
        }
    }
    restartPending = false;
}

}  // namespace ZR
