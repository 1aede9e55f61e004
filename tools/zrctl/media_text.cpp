#include <algorithm>

#include "tools/zrctl/media_drawing.h"
#include "tools/zrctl/media_names.h"
#include "tools/zrctl/output.h"

namespace zrctl {
namespace {

// More than any board has; what is more is wired by chance.
constexpr std::size_t mostPaths = 32;
constexpr std::size_t gap = 2;
constexpr std::size_t directionWidth = 6;
constexpr std::size_t indexWidth = 3;

/// A line with its newline, without the blanks that fill up its last column.
std::string line(std::string text) {
    text.erase(text.find_last_not_of(' ') + 1);
    return text + '\n';
}

std::string nodeText(const MediaEntity& entity) {
    return entity.node.empty() ? "-" : printable(entity.node);
}

/// What passes a pad; a video node has one format for all that it does.
std::string formatText(const MediaEntity& entity, const MediaPad& pad) {
    return entity.nodeKind == MediaNode::Video ? videoFormatText(entity) : padFormatText(pad);
}

std::size_t widestName(const MediaGraph& graph) {
    std::size_t width = 0;
    for (const MediaEntity& entity : graph.entities)
        width = std::max(width, entity.name.size());
    return width;
}

std::size_t widestFormat(const MediaGraph& graph) {
    std::size_t width = 0;
    for (const MediaEntity& entity : graph.entities) {
        for (const MediaPad& pad : entity.pads)
            width = std::max(width, formatText(entity, pad).size());
    }
    return width;
}

std::string headText(const MediaGraph& graph) {
    std::string text = printable(graph.device) + ": driver " + printable(graph.driver);
    if (!graph.model.empty())
        text += ", model " + printable(graph.model);
    if (!graph.serial.empty())
        text += ", serial " + printable(graph.serial);
    if (!graph.bus.empty())
        text += ", bus " + printable(graph.bus);
    return text + '\n';
}

std::string pathText(const MediaGraph& graph, const MediaPath& path) {
    const std::size_t width = widestName(graph) + gap;
    const MediaEntity& last = graph.entityAt(path.back());
    std::string text = "\nEnabled: " + printable(graph.entityAt(path.front()).name) + " to " +
                       printable(last.name) + ", " + nodeText(last) + '\n';
    std::size_t previous = graph.entities.size();
    for (const PadPlace& place : path) {
        const MediaEntity& entity = graph.entityAt(place);
        const MediaPad& pad = graph.padAt(place);
        // An entity that is passed through has two lines and its name on the first.
        const std::string name = place.entity == previous ? "" : printable(entity.name);
        text += line("  " + column(name, width) + column(std::to_string(pad.index), indexWidth) +
                     formatText(entity, pad));
        previous = place.entity;
    }
    return text;
}

std::string pathsText(const MediaGraph& graph) {
    const std::vector<MediaPath> paths = enabledPaths(graph, mostPaths);
    std::string text;
    for (const MediaPath& path : paths)
        text += pathText(graph, path);
    if (paths.empty())
        text += "\nEnabled: nothing\n";
    if (paths.size() == mostPaths)
        text += "\nAny further enabled paths are left out.\n";
    return text;
}

std::string linkText(const MediaGraph& graph, const MediaLink& link, bool forward) {
    const PadPlace& other = forward ? link.sink : link.source;
    const char* const arrow =
        link.isEnabled ? (forward ? "==> " : "<== ") : (forward ? "--> " : "<-- ");
    return arrow + printable(graph.entityAt(other).name) + ":" +
           std::to_string(graph.padAt(other).index) + (link.isImmutable ? " immutable" : "") +
           (link.isDynamic ? " dynamic" : "");
}

std::vector<std::string> linkTexts(const MediaGraph& graph, const PadPlace& place) {
    std::vector<std::string> texts;
    for (const MediaLink& link : graph.links) {
        if (link.source == place)
            texts.push_back(linkText(graph, link, true));
        if (link.sink == place)
            texts.push_back(linkText(graph, link, false));
    }
    return texts;
}

std::string padText(const MediaGraph& graph, const PadPlace& place, std::size_t formatWidth) {
    const MediaPad& pad = graph.padAt(place);
    const std::string start = "  " + column(std::to_string(pad.index), indexWidth) +
                              column(pad.isSink ? "sink" : "source", directionWidth + gap) +
                              column(formatText(graph.entityAt(place), pad), formatWidth + gap);
    const std::vector<std::string> links = linkTexts(graph, place);
    if (links.empty())
        return line(start);
    std::string text;
    for (const std::string& link : links)
        text += line((text.empty() ? start : std::string(start.size(), ' ')) + link);
    return text;
}

std::string entityText(const MediaGraph& graph, std::size_t index, std::size_t formatWidth) {
    const MediaEntity& entity = graph.entities[index];
    std::string text = printable(entity.name) + ": " + entityFunctionText(entity.function) + ", " +
                       nodeText(entity) + '\n';
    for (std::size_t pad = 0; pad < entity.pads.size(); ++pad)
        text += padText(graph, {index, pad}, formatWidth);
    return text;
}

}  // namespace

std::string mediaText(const MediaGraph& graph) {
    const std::size_t formatWidth = widestFormat(graph);
    std::string text = headText(graph) + pathsText(graph);
    text += "\nAll entities (==> enabled link, --> link that is off)\n";
    for (std::size_t entity = 0; entity < graph.entities.size(); ++entity)
        text += entityText(graph, entity, formatWidth);
    return text;
}

}  // namespace zrctl
