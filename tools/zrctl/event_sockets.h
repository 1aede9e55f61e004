#pragma once

#include <cstddef>

namespace zrctl {

/// @name The sockets that the dispatcher of events has opened
/// It keeps them to itself; they are the only ones of their kind in this process.
/// @{

/// How many there are.
std::size_t countEventSockets();

/// Gives them room for longer bursts.
void enlargeEventSockets();

/// True while notifications wait in one of them.
bool eventsWait();

/// How often a notification found no room in one of them.
unsigned int lostEvents();
/// @}

}  // namespace zrctl
