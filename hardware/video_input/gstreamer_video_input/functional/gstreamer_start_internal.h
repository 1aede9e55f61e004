#pragma once

namespace ZR {

/// Keeps this library in the process until its end, whoever closes it. To be called before a thread
/// runs in it, or an object of the application calls back into it.
void keepLibraryLoaded();

/// Starts the thread that waits a second, initialises GStreamer and starts the bus thread.
/// @return false when the system has no thread to give
bool launchGstreamerStart();

/// Sets `quit` and waits for the end of the bus thread, which is not started any more if it was not.
void endBusThread();

/// The same at the end of the process, when GStreamer must not be started any more either.
void endGstreamerThreads();

}  // namespace ZR
