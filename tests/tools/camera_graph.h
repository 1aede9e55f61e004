#pragma once

#include "tools/zrctl/media_graph.h"

namespace ZR::test {

/// A graph with what a terminal's has: a decoder, a multiplexer with a second decoder that is
/// switched off, a camera interface, and a capture node; the first decoder's path is enabled.
zrctl::MediaGraph cameraGraph();

/// The same with names that hold what text, Graphviz and JSON have a meaning for.
zrctl::MediaGraph oddlyNamedGraph();

}  // namespace ZR::test
