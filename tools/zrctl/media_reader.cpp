#include "tools/zrctl/media_reader.h"

#include <linux/media.h>
#include <linux/v4l2-subdev.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sstream>
#include <string_view>
#include <system_error>

#include "common/zrapi_utility/zr_file_access.h"
#include "tools/zrctl/descriptor.h"
#include "tools/zrctl/failure.h"
#include "tools/zrctl/media_names.h"

namespace zrctl {
namespace {

constexpr char deviceNumbersFolder[] = "/sys/dev/char/";
constexpr char devicesFolder[] = "/dev/";
constexpr std::string_view nodeNameKey = "DEVNAME=";
// Drivers that are being loaded add entities one by one.
constexpr int mostReadings = 100;

/// The lists of a media controller as the kernel gives them.
struct Topology {
    std::vector<media_v2_entity> entities;
    std::vector<media_v2_interface> interfaces;
    std::vector<media_v2_pad> pads;
    std::vector<media_v2_link> links;
};

/// @return false with errno set when the driver refuses
template <typename Argument>
bool ask(const Descriptor& device, unsigned long request, Argument& argument) {
    int status = 0;
    do {
        status = ::ioctl(device.number(), request, &argument);
    } while (status < 0 && errno == EINTR);
    return status >= 0;
}

template <typename Record>
__u64 room(std::vector<Record>& records, __u32 count) {
    records.assign(count, Record{});
    return reinterpret_cast<std::uintptr_t>(records.data());
}

MediaError refusal(const std::string& device, int error) {
    return MediaError(printable(device) + " is no media controller that tells its topology: " +
                      std::generic_category().message(error) + "; give another one by --device");
}

Topology readTopology(const Descriptor& media, const std::string& device) {
    Topology topology;
    for (int reading = 0; reading < mostReadings; ++reading) {
        media_v2_topology lists{};
        if (!ask(media, MEDIA_IOC_G_TOPOLOGY, lists))
            throw refusal(device, errno);
        lists.ptr_entities = room(topology.entities, lists.num_entities);
        lists.ptr_interfaces = room(topology.interfaces, lists.num_interfaces);
        lists.ptr_pads = room(topology.pads, lists.num_pads);
        lists.ptr_links = room(topology.links, lists.num_links);
        if (ask(media, MEDIA_IOC_G_TOPOLOGY, lists)) {
            // Less may be there than when it was counted.
            topology.entities.resize(lists.num_entities);
            topology.interfaces.resize(lists.num_interfaces);
            topology.pads.resize(lists.num_pads);
            topology.links.resize(lists.num_links);
            return topology;
        }
        if (errno != ENOSPC)
            throw refusal(device, errno);
    }
    throw MediaError(printable(device) + " grows faster than it can be read; try again");
}

template <std::size_t size>
std::string textOf(const char (&field)[size]) {
    return {field, ::strnlen(field, size)};
}

MediaNode kindOf(__u32 interface) {
    switch (interface) {
        case MEDIA_INTF_T_V4L_SUBDEV:
            return MediaNode::Subdevice;
        case MEDIA_INTF_T_V4L_VIDEO:
            return MediaNode::Video;
        default:
            return MediaNode::Other;
    }
}

/// The path of a device node; empty when the kernel has no name for it.
std::string nodePath(const media_v2_intf_devnode& number) {
    std::string properties;
    const std::string file = deviceNumbersFolder + std::to_string(number.major) + ":" +
                             std::to_string(number.minor) + "/uevent";
    if (ZR::readStringFromFile(file, &properties) != 0)
        return {};
    std::istringstream lines(properties);
    for (std::string line; std::getline(lines, line);) {
        if (line.compare(0, nodeNameKey.size(), nodeNameKey) == 0)
            return devicesFolder + line.substr(nodeNameKey.size());
    }
    return {};
}

/// Puts the kernel's lists together: it names everything by numbers.
class GraphBuilder {
  public:
    GraphBuilder(const Topology& topology, MediaGraph& graph)
        : topology_(topology), graph_(graph) {}

    void build(bool padsHaveIndex) {
        for (const media_v2_entity& entity : topology_.entities)
            graph_.entities.push_back({entity.id, textOf(entity.name), entity.function});
        for (const media_v2_pad& pad : topology_.pads)
            addPad(pad, padsHaveIndex);
        for (const media_v2_link& link : topology_.links)
            addLink(link);
    }

  private:
    struct NumberedPad {
        __u32 id;
        PadPlace place;
    };

    MediaEntity* findEntity(__u32 id) {
        const auto found =
            std::find_if(graph_.entities.begin(), graph_.entities.end(),
                         [id](const MediaEntity& entity) { return entity.id == id; });
        return found == graph_.entities.end() ? nullptr : &*found;
    }

    const NumberedPad* findPad(__u32 id) const {
        const auto found = std::find_if(pads_.begin(), pads_.end(),
                                        [id](const NumberedPad& pad) { return pad.id == id; });
        return found == pads_.end() ? nullptr : &*found;
    }

    void addPad(const media_v2_pad& pad, bool hasIndex) {
        MediaEntity* const entity = findEntity(pad.entity_id);
        if (entity == nullptr)
            return;
        const std::size_t place = entity->pads.size();
        // Kernels before 4.19 only list the pads in their order.
        const __u32 index = hasIndex ? pad.index : static_cast<__u32>(place);
        entity->pads.push_back({index, (pad.flags & MEDIA_PAD_FL_SINK) != 0});
        pads_.push_back(
            {pad.id, {static_cast<std::size_t>(entity - graph_.entities.data()), place}});
    }

    void addLink(const media_v2_link& link) {
        const __u32 type = link.flags & MEDIA_LNK_FL_LINK_TYPE;
        if (type == MEDIA_LNK_FL_INTERFACE_LINK)
            addNode(link.source_id, link.sink_id);
        const NumberedPad* const source = findPad(link.source_id);
        const NumberedPad* const sink = findPad(link.sink_id);
        if (type != MEDIA_LNK_FL_DATA_LINK || source == nullptr || sink == nullptr)
            return;
        graph_.links.push_back(
            {source->place, sink->place, (link.flags & MEDIA_LNK_FL_ENABLED) != 0,
             (link.flags & MEDIA_LNK_FL_IMMUTABLE) != 0, (link.flags & MEDIA_LNK_FL_DYNAMIC) != 0});
    }

    void addNode(__u32 interfaceId, __u32 entityId) {
        MediaEntity* const entity = findEntity(entityId);
        for (const media_v2_interface& interface : topology_.interfaces) {
            if (entity == nullptr || interface.id != interfaceId)
                continue;
            entity->nodeKind = kindOf(interface.intf_type);
            entity->node = nodePath(interface.devnode);
        }
    }

    const Topology& topology_;
    MediaGraph& graph_;
    std::vector<NumberedPad> pads_;
};

void readPad(const Descriptor& node, MediaPad& pad) {
    v4l2_subdev_format format{};
    format.which = V4L2_SUBDEV_FORMAT_ACTIVE;
    format.pad = pad.index;
    if (ask(node, VIDIOC_SUBDEV_G_FMT, format))
        pad.format = {format.format.code, format.format.width, format.format.height,
                      format.format.field};
    v4l2_subdev_frame_interval interval{};
    interval.pad = pad.index;
    // Drivers also answer 0/0 for a pad without one.
    if (ask(node, VIDIOC_SUBDEV_G_FRAME_INTERVAL, interval) && interval.interval.denominator != 0)
        pad.interval = {interval.interval.numerator, interval.interval.denominator};
}

void readVideoNode(const Descriptor& node, MediaEntity& entity) {
    const bool captures = std::any_of(entity.pads.begin(), entity.pads.end(),
                                      [](const MediaPad& pad) { return pad.isSink; });
    v4l2_format format{};
    format.type = captures ? V4L2_BUF_TYPE_VIDEO_CAPTURE : V4L2_BUF_TYPE_VIDEO_OUTPUT;
    if (ask(node, VIDIOC_G_FMT, format))
        entity.format = {format.fmt.pix.pixelformat, format.fmt.pix.width, format.fmt.pix.height,
                         format.fmt.pix.field};
}

void readFormats(MediaEntity& entity) {
    if (entity.nodeKind != MediaNode::Subdevice && entity.nodeKind != MediaNode::Video)
        return;
    const Descriptor node = Descriptor::openDevice(entity.node);
    if (!node.isOpen())
        return;
    if (entity.nodeKind == MediaNode::Video)
        return readVideoNode(node, entity);
    for (MediaPad& pad : entity.pads)
        readPad(node, pad);
}

}  // namespace

MediaGraph readMediaGraph(const std::string& device) {
    const Descriptor media = Descriptor::openDevice(device);
    if (!media.isOpen())
        throw MediaError(printable(adviseOnAttribute(device, R_OK)));
    media_device_info info{};
    if (!ask(media, MEDIA_IOC_DEVICE_INFO, info))
        throw refusal(device, errno);
    const Topology topology = readTopology(media, device);
    MediaGraph graph{device, textOf(info.driver), textOf(info.model), textOf(info.serial),
                     textOf(info.bus_info)};
    GraphBuilder(topology, graph).build(MEDIA_V2_PAD_HAS_INDEX(info.media_version));
    for (MediaEntity& entity : graph.entities)
        readFormats(entity);
    return graph;
}

}  // namespace zrctl
