#include "tools/zrctl/media_graph.h"

#include <algorithm>

namespace zrctl {
namespace {

/// Walks all enabled links from one source pad on.
class PathSearch {
  public:
    PathSearch(const MediaGraph& graph, std::size_t most, std::vector<MediaPath>& found)
        : graph_(graph), most_(most), found_(found) {}

    /// Follows each enabled link out of an entity.
    /// @return false when there is none
    bool leave(std::size_t entity) {
        bool hasLeft = false;
        for (const MediaLink& link : graph_.links) {
            if (!link.isEnabled || link.source.entity != entity || isFull() ||
                hasPassed(link.sink.entity))
                continue;
            hasLeft = true;
            path_.push_back(link.source);
            path_.push_back(link.sink);
            if (!leave(link.sink.entity))
                found_.push_back(path_);
            path_.resize(path_.size() - 2);
        }
        return hasLeft;
    }

  private:
    bool isFull() const { return found_.size() >= most_; }

    /// A ring of links has no end.
    bool hasPassed(std::size_t entity) const {
        return std::any_of(path_.begin(), path_.end(),
                           [entity](const PadPlace& place) { return place.entity == entity; });
    }

    const MediaGraph& graph_;
    std::size_t most_;
    std::vector<MediaPath>& found_;
    MediaPath path_;
};

bool isFed(const MediaGraph& graph, std::size_t entity) {
    return std::any_of(graph.links.begin(), graph.links.end(), [entity](const MediaLink& link) {
        return link.isEnabled && link.sink.entity == entity;
    });
}

}  // namespace

std::vector<MediaPath> enabledPaths(const MediaGraph& graph, std::size_t most) {
    std::vector<MediaPath> found;
    for (std::size_t entity = 0; entity < graph.entities.size(); ++entity) {
        if (!isFed(graph, entity))
            PathSearch(graph, most, found).leave(entity);
    }
    return found;
}

bool isOnEnabledLink(const MediaGraph& graph, std::size_t entity) {
    return std::any_of(graph.links.begin(), graph.links.end(), [entity](const MediaLink& link) {
        return link.isEnabled && (link.source.entity == entity || link.sink.entity == entity);
    });
}

}  // namespace zrctl
