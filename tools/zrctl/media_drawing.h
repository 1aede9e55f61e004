#pragma once

#include <string>

#include "tools/zrctl/json.h"
#include "tools/zrctl/media_graph.h"

namespace zrctl {

/// The graph for people: the enabled paths pad by pad, then every entity with its pads and links.
std::string mediaText(const MediaGraph& graph);

/// The graph in the language of Graphviz's programs, from the left to the right.
std::string mediaDot(const MediaGraph& graph);

/// The graph for scripts.
JsonObject mediaJson(const MediaGraph& graph);

}  // namespace zrctl
