#pragma once

#include <stdexcept>
#include <string>

#include "tools/zrctl/media_graph.h"

namespace zrctl {

/// There is no graph to be read; the text says in one line why and what to do.
class MediaError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Asks a media controller, and the nodes of its entities, how they are set up. Changes nothing. A
/// node that cannot be opened, or does not tell, leaves its formats out.
/// @param device  path of the media controller
/// @throws MediaError when the media controller itself does not tell
MediaGraph readMediaGraph(const std::string& device);

}  // namespace zrctl
