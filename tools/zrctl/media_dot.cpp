#include "tools/zrctl/media_drawing.h"
#include "tools/zrctl/media_names.h"

namespace zrctl {
namespace {

constexpr char enabledColor[] = "#1a7f37";
constexpr char offColor[] = "#a0a0a0";
constexpr char enabledBackground[] = "#d8f3dc";
constexpr char offBackground[] = "#eeeeee";

/// A text inside a label, whose mark-up is that of HTML. Graphviz looks for escapes of its own too,
/// which begin with a backslash, and refuses mark-up around nothing.
std::string labelText(const std::string& text) {
    std::string result = text.empty() ? "-" : "";
    for (const char character : printable(text)) {
        switch (character) {
            case '&':
            case '<':
            case '>':
            case '"':
            case '\'':
            case '\\':
                result += "&#" + std::to_string(static_cast<int>(character)) + ";";
                break;
            default:
                result += character;
        }
    }
    return result;
}

std::string nodeName(std::size_t entity) {
    return "e" + std::to_string(entity);
}

std::string portName(const PadPlace& place) {
    return nodeName(place.entity) + ":p" + std::to_string(place.pad);
}

std::string headCell(const MediaEntity& entity, bool isEnabled) {
    std::string text = std::string(R"(<tr><td bgcolor=")") +
                       (isEnabled ? enabledBackground : offBackground) + R"("><b>)" +
                       labelText(entity.name) + "</b><br/>" +
                       labelText(entityFunctionText(entity.function));
    text += "<br/>" + labelText(entity.node);
    if (entity.nodeKind == MediaNode::Video)
        text += "<br/>" + labelText(videoFormatText(entity));
    return text + "</td></tr>";
}

std::string padCell(const MediaEntity& entity, std::size_t number) {
    const MediaPad& pad = entity.pads[number];
    std::string text = std::string(R"(<tr><td port="p)") + std::to_string(number) + R"(" align=")" +
                       (pad.isSink ? "left" : "right") + R"(">)" + std::to_string(pad.index) +
                       (pad.isSink ? " sink" : " source");
    // The pads of a video node have no format of their own.
    if (entity.nodeKind != MediaNode::Video)
        text += " " + labelText(padFormatText(pad));
    return text + "</td></tr>";
}

std::string entityStatement(const MediaGraph& graph, std::size_t index) {
    const MediaEntity& entity = graph.entities[index];
    std::string text =
        "  " + nodeName(index) +
        R"( [label=<<table border="0" cellborder="1" cellspacing="0" cellpadding="4">)" +
        headCell(entity, isOnEnabledLink(graph, index));
    for (std::size_t pad = 0; pad < entity.pads.size(); ++pad)
        text += padCell(entity, pad);
    return text + "</table>>]\n";
}

std::string linkStatement(const MediaLink& link) {
    std::string text = "  " + portName(link.source) + ":e -> " + portName(link.sink) + ":w [";
    if (link.isEnabled)
        text += std::string(R"(style="bold" color=")") + enabledColor + '"';
    else
        text += std::string(R"(style="dashed" color=")") + offColor + '"';
    if (link.isImmutable)
        text += R"( label="immutable")";
    else if (link.isDynamic)
        text += R"( label="dynamic")";
    return text + "]\n";
}

}  // namespace

std::string mediaDot(const MediaGraph& graph) {
    std::string text = "digraph media {\n  rankdir=LR\n  fontname=\"sans-serif\"\n";
    text += "  node [shape=plain fontname=\"sans-serif\"]\n";
    text += "  edge [fontname=\"sans-serif\" fontsize=10]\n";
    text +=
        "  label=<" + labelText(graph.device + ": " + graph.driver + ", " + graph.model) + ">\n";
    for (std::size_t entity = 0; entity < graph.entities.size(); ++entity)
        text += entityStatement(graph, entity);
    for (const MediaLink& link : graph.links)
        text += linkStatement(link);
    return text + "}\n";
}

}  // namespace zrctl
