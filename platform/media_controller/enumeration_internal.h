#pragma once

#include "platform/media_controller/media_graph_internal.h"

namespace ZR::media_controller {

/// No board comes near these. They end the work when a kernel's answers do not.
constexpr std::size_t mostEntities = 1024;
constexpr std::size_t mostPadsAndLinks = 1 << 18;

/// Reads the whole graph of a media device's node; 0 or a negative errno: -EOVERFLOW for a graph above
/// the limits, -EINVAL for links that lead to unknown entities. @p entities is only whole after a 0.
int enumerate(const Node& node, std::vector<media_entity>& entities);

}  // namespace ZR::media_controller
