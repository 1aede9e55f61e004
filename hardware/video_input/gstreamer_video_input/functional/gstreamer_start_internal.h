#pragma once

namespace ZR {

/// Starts the thread that waits a second, initialises GStreamer and starts the bus thread.
/// @return false when the system has no thread to give
bool launchGstreamerStart();

/// Sets `quit` and waits for the end of the bus thread, which is not started any more if it was not.
void endBusThread();

/// The same at the end of the process, when GStreamer must not be started any more either.
void endGstreamerThreads();

}  // namespace ZR
