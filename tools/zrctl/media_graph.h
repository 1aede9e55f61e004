#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zrctl {

/// A frame format, on a pad with a media-bus code, on a video node with a pixel format.
struct FrameFormat {
    std::uint32_t code;
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t field;
};

/// Seconds from one frame to the next, as a fraction.
struct FrameInterval {
    std::uint32_t numerator;
    std::uint32_t denominator;
};

struct MediaPad {
    std::uint32_t index;
    bool isSink;
    std::optional<FrameFormat> format{};      ///< the active one, where the kernel tells it
    std::optional<FrameInterval> interval{};  ///< where the pad has one
};

enum class MediaNode { None, Subdevice, Video, Other };

struct MediaEntity {
    std::uint32_t id;
    std::string name;
    std::uint32_t function;
    MediaNode nodeKind = MediaNode::None;
    std::string node{};  ///< path of the device node; empty without one
    std::vector<MediaPad> pads{};
    std::optional<FrameFormat> format{};  ///< of a video node
};

/// A pad, by positions in the graph.
struct PadPlace {
    std::size_t entity;
    std::size_t pad;
};

inline bool operator==(const PadPlace& left, const PadPlace& right) {
    return left.entity == right.entity && left.pad == right.pad;
}

struct MediaLink {
    PadPlace source;
    PadPlace sink;
    bool isEnabled;
    bool isImmutable = false;
    bool isDynamic = false;
};

/// What a media controller has, as it is set up at one time.
struct MediaGraph {
    std::string device;  ///< path of the media controller
    std::string driver;
    std::string model;
    std::string serial;
    std::string bus;
    std::vector<MediaEntity> entities{};
    std::vector<MediaLink> links{};

    const MediaEntity& entityAt(const PadPlace& place) const { return entities[place.entity]; }
    const MediaPad& padAt(const PadPlace& place) const {
        return entities[place.entity].pads[place.pad];
    }
};

/// Pads in the order in which a picture passes them.
using MediaPath = std::vector<PadPlace>;

/// The ways that pictures can take over links that are enabled, each from its first source pad to
/// the last sink pad, in the order of the entities that they begin with.
/// @param most  number of ways after which the search ends
std::vector<MediaPath> enabledPaths(const MediaGraph& graph, std::size_t most);

/// True when an enabled link begins or ends at the entity.
bool isOnEnabledLink(const MediaGraph& graph, std::size_t entity);

}  // namespace zrctl
