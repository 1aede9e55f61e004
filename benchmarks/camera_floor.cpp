#include "benchmarks/camera_floor.h"

#include <fcntl.h>
#include <linux/media-bus-format.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>

namespace ZR::benchmarks {
namespace {

constexpr char compatible[] = "/proc/device-tree/compatible";
constexpr char mediaDevice[] = "/dev/media0";
constexpr char receiver[] = "imx6-mipi-csi2";

// As many as an entity of the paths may have.
constexpr std::size_t mostPads = 8;
constexpr std::size_t mostLinks = 32;

constexpr unsigned int inputSelect = 0x009819C2;
constexpr unsigned int width = 720;
constexpr unsigned int height = 576;
constexpr char size[] = "720x576";

// Where the descriptors of the path of input 0 stand.
enum PathNode { CaptureNode, Decoder, Multiplexer, Interface };

FileDescriptor opened(const char* path, int flags) {
    return FileDescriptor(::open(path, flags | O_CLOEXEC));
}

bool readProcessor() {
    const FileDescriptor file = opened(compatible, O_RDONLY);
    std::array<char, 256> text;  // NOLINT(*-init): filled by the read
    return ::read(file.get(), text.data(), text.size()) > 0 &&
           ::read(file.get(), text.data(), text.size()) == 0;
}

/// Asks for all entities and hands each to @p visit.
template <typename Visit>
void enumerate(int media, Visit visit) {
    media_entity_desc entity{};
    for (entity.id = MEDIA_ENT_ID_FLAG_NEXT; ::ioctl(media, MEDIA_IOC_ENUM_ENTITIES, &entity) == 0;
         entity.id |= MEDIA_ENT_ID_FLAG_NEXT)
        visit(entity);
}

bool askLinks(int media, unsigned int entity) {
    std::array<media_pad_desc, mostPads> pads;     // NOLINT(*-init): filled by the call
    std::array<media_link_desc, mostLinks> links;  // NOLINT(*-init): filled by the call
    media_links_enum wanted{};
    wanted.entity = entity;
    wanted.pads = pads.data();
    wanted.links = links.data();
    return ::ioctl(media, MEDIA_IOC_ENUM_LINKS, &wanted) == 0;
}

std::string numberLink(const media_entity_desc& entity) {
    return "/sys/dev/char/" + std::to_string(entity.dev.major) + ':' +
           std::to_string(entity.dev.minor);
}

std::string nodeOf(const media_entity_desc& entity) {
    std::error_code error;
    const auto target = std::filesystem::read_symlink(numberLink(entity), error);
    return "/dev/" + target.filename().string();
}

}  // namespace

CameraFloor::CameraFloor() {
    findEntities();
    nameLinks();
    usable_ = findLinks() && openPath();
}

void CameraFloor::findEntities() {
    const FileDescriptor media = opened(mediaDevice, O_RDWR);
    enumerate(media.get(),
              [this](const media_entity_desc& entity) { entities_.push_back(entity); });
    for (const media_entity_desc& entity : entities_) {
        const std::string_view name = entity.name;
        if (name.substr(0, 6) == "tw9912")
            twName_ = name;
        if (name.substr(0, 7) == "adv7180")
            advName_ = name;
        isQuad_ = isQuad_ || name == "ipu2_csi1";
    }
}

void CameraFloor::nameLinks() {
    const std::string shared = isQuad_ ? "ipu2_csi1" : "ipu1_csi1";
    const std::uint16_t sharedPad = isQuad_ ? 1 : 4;
    const std::uint16_t muxOutput = isQuad_ ? 2 : 5;
    names_ = {
        {twName_, 0, shared + "_mux", sharedPad}, {shared + "_mux", muxOutput, shared, 0},
        {shared, 2, shared + " capture", 0},      {advName_, 0, receiver, 0},
        {receiver, 1, "ipu1_csi0_mux", 0},        {"ipu1_csi0_mux", muxOutput, "ipu1_csi0", 0},
        {"ipu1_csi0", 2, "ipu1_csi0 capture", 0}};
}

const media_entity_desc* CameraFloor::entityOf(const std::string& name) const {
    const auto found =
        std::find_if(entities_.begin(), entities_.end(),
                     [&name](const media_entity_desc& entity) { return name == entity.name; });
    return found == entities_.end() ? nullptr : &*found;
}

bool CameraFloor::findLinks() {
    for (const LinkNames& names : names_) {
        const media_entity_desc* const source = entityOf(names.source);
        const media_entity_desc* const sink = entityOf(names.sink);
        if (source == nullptr || sink == nullptr)
            return false;
        media_link_desc link{};
        link.source.entity = source->id;
        link.source.index = names.sourcePad;
        link.sink.entity = sink->id;
        link.sink.index = names.sinkPad;
        links_.push_back(link);
    }
    return true;
}

/// The steps are those of media-ctl: what a source pad is given goes to the sink behind it too.
bool CameraFloor::openPath() {
    for (const std::string& name :
         {names_[2].sink, twName_, std::string("ipu1_csi0 capture"), advName_}) {
        numbers_.push_back(numberLink(*entityOf(name)));
        nodes_.push_back(nodeOf(*entityOf(name)));
    }
    for (const std::string& name : {names_[2].sink, twName_, names_[0].sink, names_[1].sink})
        open_.push_back(opened(nodeOf(*entityOf(name)).c_str(), O_RDWR));
    constexpr unsigned int uyvy = MEDIA_BUS_FMT_UYVY8_2X8;
    constexpr unsigned int ayuv = MEDIA_BUS_FMT_AYUV8_1X32;
    steps_ = {{open_[Decoder].get(), 0, uyvy, false},
              {open_[Multiplexer].get(), names_[0].sinkPad, uyvy, false},
              {open_[Multiplexer].get(), names_[1].sourcePad, uyvy, false},
              {open_[Interface].get(), 0, uyvy, false},
              {open_[Interface].get(), 0, uyvy, true},
              {open_[Interface].get(), 2, ayuv, true}};
    return std::all_of(open_.begin(), open_.end(),
                       [](const FileDescriptor& file) { return file.isOpen(); });
}

bool CameraFloor::setLinks(unsigned int flags) const {
    const FileDescriptor media = opened(mediaDevice, O_RDWR);
    bool done = true;
    for (media_link_desc link : links_) {
        link.flags = flags;
        done = ::ioctl(media.get(), MEDIA_IOC_SETUP_LINK, &link) == 0 && done;
    }
    return done;
}

bool CameraFloor::discover() const {
    bool done = readProcessor();
    {
        const FileDescriptor media = opened(mediaDevice, O_RDWR);
        media_device_info information;  // NOLINT(*-init): filled by the call
        done = ::ioctl(media.get(), MEDIA_IOC_DEVICE_INFO, &information) == 0 && done;
        enumerate(media.get(), [](const media_entity_desc& /*entity*/) {});
        for (const media_entity_desc& entity : entities_)
            done = askLinks(media.get(), entity.id) && done;
    }
    std::array<char, 256> target;  // NOLINT(*-init): filled by the call
    for (const std::string& number : numbers_)
        done = ::readlink(number.c_str(), target.data(), target.size()) > 0 && done;
    for (const std::string& node : nodes_)
        done = opened(node.c_str(), O_RDWR).isOpen() && done;
    return setLinks(MEDIA_LNK_FL_ENABLED) && done;
}

bool CameraFloor::readSelection() const {
    v4l2_control control{inputSelect, 0};
    return ::ioctl(open_[CaptureNode].get(), VIDIOC_G_CTRL, &control) == 0;
}

bool CameraFloor::setFormat(const Step& step) const {
    v4l2_subdev_format format{};
    format.which = V4L2_SUBDEV_FORMAT_ACTIVE;
    format.pad = step.pad;
    format.format.width = width;
    format.format.height = height;
    format.format.code = step.code;
    format.format.field = isQuad_ ? V4L2_FIELD_NONE : V4L2_FIELD_ANY;
    if (::ioctl(step.node, VIDIOC_SUBDEV_S_FMT, &format) != 0)
        return false;
    if (!step.hasInterval)
        return true;
    v4l2_subdev_frame_interval interval{};
    interval.pad = step.pad;
    interval.interval = {1, 50};
    return ::ioctl(step.node, VIDIOC_SUBDEV_S_FRAME_INTERVAL, &interval) == 0;
}

bool CameraFloor::start() const {
    v4l2_std_id standard = V4L2_STD_PAL;
    bool done = readSelection() && ::ioctl(open_[Decoder].get(), VIDIOC_S_STD, &standard) == 0;
    for (const Step& step : steps_)
        done = setFormat(step) && done;
    return done;
}

std::string CameraFloor::linkTexts() const {
    std::string texts;
    for (const LinkNames& link : names_)
        texts += (texts.empty() ? "'" : ",'") + link.source +
                 "':" + std::to_string(link.sourcePad) + " -> '" + link.sink +
                 "':" + std::to_string(link.sinkPad) + "[1]";
    return texts;
}

std::string CameraFloor::formatTexts() const {
    const std::string field = isQuad_ ? " field:none]" : "]";
    const std::string end = "/" + std::string(size) + field;
    const std::string timedEnd = "/" + std::string(size) + "@1/50" + field;
    const std::string interface = ",'" + names_[1].sink + "':";
    return "'" + twName_ + "':0 [fmt:UYVY2X8" + end + ",'" + names_[0].sink +
           "':" + std::to_string(names_[1].sourcePad) + " [fmt:UYVY2X8" + end + interface +
           "0 [fmt:UYVY2X8" + timedEnd + interface + "2 [fmt:AYUV32" + timedEnd;
}

}  // namespace ZR::benchmarks
