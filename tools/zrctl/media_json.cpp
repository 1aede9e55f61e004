#include "tools/zrctl/media_drawing.h"
#include "tools/zrctl/media_names.h"

namespace zrctl {
namespace {

void addTextOrNull(JsonObject& json, const char* key, const std::string& text) {
    if (text.empty())
        json.addNull(key);
    else
        json.addText(key, text);
}

void addFormat(JsonObject& json, const std::optional<FrameFormat>& format,
               std::string (*codeText)(std::uint32_t)) {
    if (!format) {
        json.addNull("format");
        return;
    }
    JsonObject members;
    members.addText("code", codeText(format->code)).addNumber("codeNumber", format->code);
    members.addNumber("width", format->width).addNumber("height", format->height);
    json.addObject("format", members.addText("field", fieldText(format->field)));
}

JsonObject padJson(const MediaPad& pad) {
    JsonObject json;
    json.addNumber("index", pad.index).addText("direction", pad.isSink ? "sink" : "source");
    addFormat(json, pad.format, busCodeText);
    if (pad.interval)
        json.addObject("interval", JsonObject()
                                       .addNumber("numerator", pad.interval->numerator)
                                       .addNumber("denominator", pad.interval->denominator));
    else
        json.addNull("interval");
    return json;
}

JsonObject entityJson(const MediaEntity& entity) {
    JsonObject json;
    json.addNumber("id", entity.id).addText("name", entity.name);
    json.addText("function", entityFunctionText(entity.function));
    json.addNumber("functionNumber", entity.function);
    addTextOrNull(json, "node", entity.node);
    addFormat(json, entity.format, pixelFormatText);
    std::vector<JsonObject> pads;
    for (const MediaPad& pad : entity.pads)
        pads.push_back(padJson(pad));
    return json.addList("pads", pads);
}

/// One end of a link. Names need not be the only ones of their kind, numbers are.
JsonObject endJson(const MediaGraph& graph, const PadPlace& place) {
    const MediaEntity& entity = graph.entityAt(place);
    return JsonObject()
        .addNumber("id", entity.id)
        .addText("name", entity.name)
        .addNumber("pad", graph.padAt(place).index);
}

JsonObject linkJson(const MediaGraph& graph, const MediaLink& link) {
    return JsonObject()
        .addObject("source", endJson(graph, link.source))
        .addObject("sink", endJson(graph, link.sink))
        .addBool("enabled", link.isEnabled)
        .addBool("immutable", link.isImmutable)
        .addBool("dynamic", link.isDynamic);
}

}  // namespace

JsonObject mediaJson(const MediaGraph& graph) {
    std::vector<JsonObject> entities;
    for (const MediaEntity& entity : graph.entities)
        entities.push_back(entityJson(entity));
    std::vector<JsonObject> links;
    for (const MediaLink& link : graph.links)
        links.push_back(linkJson(graph, link));
    JsonObject json;
    json.addText("device", graph.device).addText("driver", graph.driver);
    json.addText("model", graph.model).addText("serial", graph.serial).addText("bus", graph.bus);
    return json.addList("entities", entities).addList("links", links);
}

}  // namespace zrctl
