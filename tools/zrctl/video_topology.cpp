#include <string>

#include "tools/zrctl/graphviz.h"
#include "tools/zrctl/media_drawing.h"
#include "tools/zrctl/media_reader.h"
#include "tools/zrctl/output.h"
#include "tools/zrctl/video.h"

namespace zrctl {
namespace {

constexpr char defaultDevice[] = "/dev/media0";

enum class Form { Text, Json, Dot, Svg };

struct TopologyRequest {
    std::string device;
    Form form;
};

TopologyRequest parseTopology(const Words& words, const CommonOptions& common) {
    const Arguments arguments(words, {"--device"}, {"--dot", "--svg"});
    const bool dot = arguments.has("--dot");
    const bool svg = arguments.has("--svg");
    if (!arguments.operands().empty())
        throw UsageError("video topology takes no arguments; --device PATH names another device");
    if (dot + svg + common.json > 1)
        throw UsageError("video topology takes one of --dot, --svg and --json");
    const std::string device = arguments.value("--device").value_or(defaultDevice);
    if (device.empty())
        throw UsageError("no device ''; give the path of a media controller, as in /dev/media0");
    return {device, common.json ? Form::Json : dot ? Form::Dot : svg ? Form::Svg : Form::Text};
}

std::string draw(const MediaGraph& graph, Form form) {
    switch (form) {
        case Form::Json:
            return mediaJson(graph).text() + '\n';
        case Form::Dot:
            return mediaDot(graph);
        case Form::Svg:
            return drawSvg(mediaDot(graph));
        case Form::Text:
            break;
    }
    return mediaText(graph);
}

int fail(const TopologyRequest& request, const std::string& text) {
    printError(text);
    if (request.form == Form::Json)
        print(JsonObject().addText("device", request.device).addText("error", text).text() + '\n');
    return statusFailure;
}

}  // namespace

int runVideoTopology(const Words& words, const CommonOptions& common) {
    const TopologyRequest request = parseTopology(words, common);
    try {
        print(draw(readMediaGraph(request.device), request.form));
        return statusSuccess;
    } catch (const MediaError& error) {
        return fail(request, error.what());
    } catch (const GraphvizError& error) {
        return fail(request, error.what());
    }
}

}  // namespace zrctl
