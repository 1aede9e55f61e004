#pragma once

#include <stdexcept>
#include <string>

namespace zrctl {

/// Graphviz did not draw; the text says in one line why and what to do.
class GraphvizError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Has Graphviz's program "dot" draw a graph.
/// @param graph  in its language
/// @return the picture as SVG
/// @throws GraphvizError without the program, or when it fails
std::string drawSvg(const std::string& graph);

}  // namespace zrctl
