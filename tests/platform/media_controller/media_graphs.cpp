#include <linux/media-bus-format.h>

#include "tests/platform/media_controller/media_kernel.h"

namespace ZR::test {
namespace {

constexpr unsigned int subdevice = MEDIA_ENT_T_V4L2_SUBDEV;
constexpr unsigned int decoder = MEDIA_ENT_T_V4L2_SUBDEV_DECODER;
constexpr unsigned int capture = MEDIA_ENT_T_DEVNODE_V4L;

/// @p sinks sink pads and then @p sources source pads.
std::vector<SimulatedPad> pads(unsigned int sinks, unsigned int sources) {
    SimulatedPad source;
    source.flags = MEDIA_PAD_FL_SOURCE;
    std::vector<SimulatedPad> all(sinks);
    all.insert(all.end(), sources, source);
    return all;
}

void add(MediaKernel& kernel, const std::string& name, unsigned int type,
         std::vector<SimulatedPad> itsPads) {
    const auto id = static_cast<unsigned int>(kernel.entities.size()) + 1;
    const std::string node = (type == capture ? "video" : "v4l-subdev") + std::to_string(id);
    kernel.entities.push_back({id, name, type, 10 + id, node, std::move(itsPads)});
}

unsigned int idOf(const MediaKernel& kernel, const std::string& name) {
    for (const SimulatedEntity& entity : kernel.entities)
        if (entity.name == name)
            return entity.id;
    return 0;
}

void link(MediaKernel& kernel, const std::string& source, unsigned int sourcePad,
          const std::string& sink, unsigned int sinkPad, unsigned int flags = 0) {
    const unsigned int from = idOf(kernel, source);
    const unsigned int to = idOf(kernel, sink);
    if (from != 0 && to != 0)
        kernel.links.push_back({from, sourcePad, to, sinkPad, flags});
}

}  // namespace

MediaKernel cameraGraph(bool isQuad, bool isWhole) {
    MediaKernel kernel;
    const std::string tw9912 = "tw9912 1-0044";
    const std::string adv7180 = "adv7180 2-0020";
    const std::string csi1 = isQuad ? "ipu2_csi1" : "ipu1_csi1";
    const unsigned int muxSinks = isQuad ? 2 : 5;
    add(kernel, tw9912, decoder, pads(0, 1));
    if (isWhole)
        add(kernel, adv7180, decoder, pads(0, 1));
    add(kernel, "imx6-mipi-csi2", subdevice, pads(1, 4));
    add(kernel, "ipu1_csi0_mux", subdevice, pads(muxSinks, 1));
    add(kernel, csi1 + "_mux", subdevice, pads(muxSinks, 1));
    for (const std::string& csi : {std::string("ipu1_csi0"), csi1}) {
        add(kernel, csi, subdevice, pads(1, 2));
        add(kernel, csi + " capture", capture, pads(1, 0));
    }
    for (SimulatedEntity& entity : kernel.entities) {
        if (entity.type == capture || entity.pads.size() == 3)
            entity.pads[0].flags |= MEDIA_PAD_FL_MUST_CONNECT;
        entity.hasIntervals =
            entity.type == subdevice && entity.name.find("mux") == std::string::npos;
    }
    link(kernel, tw9912, 0, csi1 + "_mux", isQuad ? 1 : 4);
    link(kernel, adv7180, 0, "imx6-mipi-csi2", 0);
    link(kernel, "imx6-mipi-csi2", 1, "ipu1_csi0_mux", 0);
    link(kernel, "imx6-mipi-csi2", 2, csi1 + "_mux", 0);
    link(kernel, "ipu1_csi0_mux", muxSinks, "ipu1_csi0", 0,
         MEDIA_LNK_FL_ENABLED | MEDIA_LNK_FL_IMMUTABLE);
    link(kernel, csi1 + "_mux", muxSinks, csi1, 0);
    for (const std::string& csi : {std::string("ipu1_csi0"), csi1})
        link(kernel, csi, 2, csi + " capture", 0);
    return kernel;
}

MediaKernel oddGraph() {
    MediaKernel kernel;
    constexpr unsigned int enabled = MEDIA_LNK_FL_ENABLED;
    constexpr unsigned int immutable = MEDIA_LNK_FL_ENABLED | MEDIA_LNK_FL_IMMUTABLE;
    kernel.entities = {{1, "sensor", MEDIA_ENT_F_CAM_SENSOR, 1, "v4l-subdev0", pads(0, 2)},
                       {3, "it's a \"mux\"", MEDIA_ENT_F_VID_MUX, 2, "v4l-subdev1", pads(2, 1)},
                       {10, "scaler", subdevice, 3, "v4l-subdev2", pads(1, 1)},
                       {11, "bare", subdevice, 0, "", pads(1, 1)},
                       {12, std::string(32, 'n'), subdevice, 4, "v4l-subdev3", pads(1, 0)},
                       {13, "connector", MEDIA_ENT_F_BASE + 0x10003, 5, "v4l-subdev4", pads(0, 1)},
                       {14, "capture", capture, 6, "video0", pads(1, 0)},
                       {15, "12", subdevice, 7, "v4l-subdev5", pads(1, 0)},
                       {16, "scaler", subdevice, 8, "v4l-subdev6", pads(1, 1)},
                       {17, "", subdevice, 9, "v4l-subdev7", pads(1, 1)},
                       {18, "sound", MEDIA_ENT_T_DEVNODE + 3, 10, "video1", pads(1, 0)}};
    kernel.entities[1].hasIntervals = false;
    kernel.entities[2].hasSelections = false;
    kernel.entities[2].codes = {MEDIA_BUS_FMT_AYUV8_1X32, MEDIA_BUS_FMT_UYVY8_2X8};
    kernel.entities[2].onlyInterval = {1, 60};
    kernel.entities[4].widest = 640;
    kernel.otherMinors = {{"/dev/v4l-subdev4", 99}};
    kernel.links = {
        {1, 0, 3, 0, enabled},    {1, 0, 10, 0, 0},        {1, 1, 10, 0, enabled},
        {1, 1, 3, 1, enabled},    {1, 1, 12, 0, enabled},  {3, 2, 11, 0, enabled},
        {3, 2, 15, 0, immutable}, {10, 1, 14, 0, enabled}, {10, 1, 12, 0, MEDIA_LNK_FL_DYNAMIC},
        {13, 0, 3, 1, 0},         {16, 1, 17, 0, enabled}, {17, 1, 18, 0, enabled}};
    return kernel;
}

}  // namespace ZR::test
