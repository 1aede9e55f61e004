#include "tests/platform/media_controller/media_kernel.h"

#include <fcntl.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace ZR::test {
namespace {

constexpr unsigned int nodeMajor = 81;
constexpr char mediaNode[] = "/dev/media0";
constexpr char linkFolder[] = "/sys/dev/char/";

int failed(int error) {
    errno = error;
    return -1;
}

std::string number(unsigned long value) {
    return std::to_string(value);
}

template <typename Word, std::size_t size>
std::string reserved(const Word (&words)[size]) {
    const bool isClear = std::all_of(words, words + size, [](Word word) { return word == 0; });
    return isClear ? "" : " reserved words are not zero";
}

std::string text(const v4l2_mbus_framefmt& format) {
    return number(format.width) + 'x' + number(format.height) + " code " + number(format.code) +
           " field " + number(format.field) + " colour " + number(format.colorspace) + ' ' +
           number(format.ycbcr_enc) + ' ' + number(format.quantization) + ' ' +
           number(format.xfer_func) + " flags " + number(format.flags) + reserved(format.reserved);
}

std::string text(const v4l2_rect& rectangle) {
    return std::to_string(rectangle.left) + ',' + std::to_string(rectangle.top) + ' ' +
           number(rectangle.width) + 'x' + number(rectangle.height);
}

std::string text(const v4l2_fract& interval) {
    return number(interval.numerator) + '/' + number(interval.denominator);
}

std::string text(const media_pad_desc& pad) {
    return number(pad.entity) + ':' + number(pad.index) + " flags " + number(pad.flags) +
           reserved(pad.reserved);
}

}  // namespace

void MediaKernel::fail(const std::string& call, int error, unsigned int occurrence) {
    faults_.push_back({call, error, occurrence});
}

bool MediaKernel::fails(const std::string& line) {
    calls.push_back(line);
    for (Fault& fault : faults_)
        if (fault.occurrence > 0 && line.compare(0, fault.call.size(), fault.call) == 0 &&
            --fault.occurrence == 0) {
            errno = fault.error;
            return true;
        }
    return false;
}

SimulatedEntity* MediaKernel::entityOf(unsigned int id) {
    for (SimulatedEntity& entity : entities)
        if (entity.id == id)
            return &entity;
    return nullptr;
}

SimulatedEntity* MediaKernel::entityAt(const std::string& path) {
    for (SimulatedEntity& entity : entities)
        if (entity.minor != 0 && "/dev/" + entity.node == path)
            return &entity;
    return nullptr;
}

bool MediaKernel::owns(const char* path) {
    for (const char* const begin : {"/dev/media", "/dev/v4l-subdev", "/dev/video", linkFolder})
        if (std::strncmp(path, begin, std::strlen(begin)) == 0)
            return true;
    return false;
}

int MediaKernel::open(const char* path, int flags) {
    openFlags.push_back(flags);
    if (fails(std::string("open ") + path))
        return -1;
    if (std::strcmp(path, mediaNode) != 0 && entityAt(path) == nullptr)
        return failed(ENOENT);
    open_[++nextDescriptor_] = path;
    return nextDescriptor_;
}

int MediaKernel::close(int descriptor) {
    const std::string path = open_.at(descriptor);
    open_.erase(descriptor);
    return fails("close " + path) ? -1 : 0;
}

long MediaKernel::readlink(const char* path, char* target, std::size_t size) {
    if (fails(std::string("readlink ") + path))
        return -1;
    for (const SimulatedEntity& entity : entities) {
        if (entity.minor == 0 ||
            path != linkFolder + number(nodeMajor) + ':' + number(entity.minor))
            continue;
        const std::string link = entity.linkTarget.empty()
                                     ? "../../devices/platform/camera/" + entity.node
                                     : entity.linkTarget;
        return static_cast<long>(link.copy(target, size));
    }
    return failed(ENOENT);
}

int MediaKernel::stat(const char* path, struct stat* status) {
    if (fails(std::string("stat ") + path))
        return -1;
    const SimulatedEntity* const entity = entityAt(path);
    const auto other = otherMinors.find(path);
    if (entity == nullptr && other == otherMinors.end())
        return failed(ENOENT);
    *status = {};
    status->st_mode = S_IFCHR | 0600;
    status->st_rdev =
        makedev(nodeMajor, other == otherMinors.end() ? entity->minor : other->second);
    return 0;
}

int MediaKernel::ioctl(int descriptor, unsigned long request, void* argument) {
    const std::string path = open_.at(descriptor);
    return path == mediaNode ? media(path, request, argument) : subdevice(path, request, argument);
}

int MediaKernel::media(const std::string& path, unsigned long request, void* argument) {
    switch (request) {
        case MEDIA_IOC_DEVICE_INFO: {
            if (fails("DEVICE_INFO " + path))
                return -1;
            auto& information = *static_cast<media_device_info*>(argument);
            information = {};
            std::strcpy(information.driver, "camera");
            return 0;
        }
        case MEDIA_IOC_ENUM_ENTITIES:
            return enumEntities(path, *static_cast<media_entity_desc*>(argument));
        case MEDIA_IOC_ENUM_LINKS:
            return enumLinks(path, *static_cast<media_links_enum*>(argument));
        case MEDIA_IOC_SETUP_LINK:
            return setupLink(path, *static_cast<media_link_desc*>(argument));
        default:
            return fails("ioctl " + path + ' ' + number(request)) ? -1 : failed(ENOTTY);
    }
}

int MediaKernel::enumEntities(const std::string& path, media_entity_desc& description) {
    const bool isNext = (description.id & MEDIA_ENT_ID_FLAG_NEXT) != 0;
    const unsigned int id = description.id & ~MEDIA_ENT_ID_FLAG_NEXT;
    if (fails("ENUM_ENTITIES " + path + (isNext ? " after " : " ") + number(id) +
              reserved(description.reserved)))
        return -1;
    for (const SimulatedEntity& entity : entities) {
        if (isNext ? entity.id <= id && !repeatsEntities : entity.id != id)
            continue;
        description = {};
        description.id = entity.id;
        std::strncpy(description.name, entity.name.c_str(), sizeof description.name);
        description.type = entity.type;
        description.pads = static_cast<__u16>(entity.pads.size());
        description.links = static_cast<__u16>(std::count_if(
            links.begin(), links.end(),
            [&](const SimulatedLink& link) { return link.sourceEntity == entity.id; }));
        if (entity.minor != 0)
            description.dev = {nodeMajor, entity.minor};
        return 0;
    }
    return failed(EINVAL);
}

media_pad_desc MediaKernel::describePad(unsigned int entity, unsigned int index) {
    media_pad_desc pad{};
    pad.entity = entity;
    pad.index = static_cast<__u16>(index);
    const SimulatedEntity* const owner = entityOf(entity);
    if (owner != nullptr && index < owner->pads.size())
        pad.flags = owner->pads[index].flags;
    return pad;
}

int MediaKernel::enumLinks(const std::string& path, const media_links_enum& wanted) {
    if (fails("ENUM_LINKS " + path + ' ' + number(wanted.entity) +
              (wanted.pads != nullptr ? " pads" : "") + (wanted.links != nullptr ? " links" : "") +
              reserved(wanted.reserved)))
        return -1;
    const SimulatedEntity* const entity = entityOf(wanted.entity);
    if (entity == nullptr)
        return failed(EINVAL);
    if (wanted.pads != nullptr)
        for (unsigned int i = 0; i < entity->pads.size(); ++i)
            wanted.pads[i] = describePad(entity->id, i);
    if (wanted.links == nullptr)
        return 0;
    media_link_desc* to = wanted.links;
    for (const SimulatedLink& link : links) {
        if (link.sourceEntity != entity->id)
            continue;
        *to = {};
        to->source = describePad(link.sourceEntity, link.sourcePad);
        to->sink = describePad(link.sinkEntity, link.sinkPad);
        to->flags = link.flags;
        ++to;
    }
    return 0;
}

int MediaKernel::setupLink(const std::string& path, const media_link_desc& wanted) {
    if (fails("SETUP_LINK " + path + ' ' + text(wanted.source) + " -> " + text(wanted.sink) + ' ' +
              number(wanted.flags) + reserved(wanted.reserved)))
        return -1;
    for (SimulatedLink& link : links) {
        if (link.sourceEntity != wanted.source.entity || link.sourcePad != wanted.source.index ||
            link.sinkEntity != wanted.sink.entity || link.sinkPad != wanted.sink.index)
            continue;
        const unsigned int change = link.flags ^ wanted.flags;
        const bool isFixed = (link.flags & MEDIA_LNK_FL_IMMUTABLE) != 0;
        if ((change & ~(isFixed ? 0U : MEDIA_LNK_FL_ENABLED)) != 0)
            return failed(EINVAL);
        link.flags = wanted.flags;
        return 0;
    }
    return failed(EINVAL);
}

int MediaKernel::subdevice(const std::string& path, unsigned long request, void* argument) {
    switch (request) {
        case VIDIOC_SUBDEV_G_FMT:
        case VIDIOC_SUBDEV_S_FMT:
            return format(path, request == VIDIOC_SUBDEV_S_FMT,
                          *static_cast<v4l2_subdev_format*>(argument));
        case VIDIOC_SUBDEV_G_SELECTION:
        case VIDIOC_SUBDEV_S_SELECTION:
            return selection(path, request == VIDIOC_SUBDEV_S_SELECTION,
                             *static_cast<v4l2_subdev_selection*>(argument));
        case VIDIOC_SUBDEV_G_CROP:
        case VIDIOC_SUBDEV_S_CROP:
            return crop(path, request == VIDIOC_SUBDEV_S_CROP,
                        *static_cast<v4l2_subdev_crop*>(argument));
        case VIDIOC_SUBDEV_G_FRAME_INTERVAL:
        case VIDIOC_SUBDEV_S_FRAME_INTERVAL:
            return interval(path, request == VIDIOC_SUBDEV_S_FRAME_INTERVAL,
                            *static_cast<v4l2_subdev_frame_interval*>(argument));
        default:
            return fails("ioctl " + path + ' ' + number(request)) ? -1 : failed(ENOTTY);
    }
}

int MediaKernel::format(const std::string& path, bool sets, v4l2_subdev_format& wanted) {
    if (fails((sets ? "S_FMT " : "G_FMT ") + path + " pad " + number(wanted.pad) + " which " +
              number(wanted.which) + (sets ? ' ' + text(wanted.format) : "") +
              reserved(wanted.reserved)))
        return -1;
    SimulatedEntity& entity = *entityAt(path);
    if (wanted.pad >= entity.pads.size())
        return failed(EINVAL);
    SimulatedPad& pad = entity.pads[wanted.pad];
    if (sets) {
        const auto& codes = entity.codes;
        pad.format = wanted.format;
        pad.format.width = std::min(pad.format.width, entity.widest);
        if (!codes.empty() && std::find(codes.begin(), codes.end(), pad.format.code) == codes.end())
            pad.format.code = codes.front();
    }
    wanted.format = pad.format;
    return 0;
}

int MediaKernel::selection(const std::string& path, bool sets, v4l2_subdev_selection& wanted) {
    if (fails((sets ? "S_SELECTION " : "G_SELECTION ") + path + " pad " + number(wanted.pad) +
              " which " + number(wanted.which) + " target " + number(wanted.target) + " flags " +
              number(wanted.flags) + (sets ? ' ' + text(wanted.r) : "") +
              reserved(wanted.reserved)))
        return -1;
    SimulatedEntity& entity = *entityAt(path);
    if (!entity.hasSelections)
        return failed(ENOTTY);
    if (wanted.pad >= entity.pads.size())
        return failed(EINVAL);
    SimulatedPad& pad = entity.pads[wanted.pad];
    if (sets) {
        wanted.r.width = std::min(wanted.r.width, entity.widest);
        pad.rectangles[wanted.target] = wanted.r;
    }
    wanted.r = pad.rectangles[wanted.target];
    return 0;
}

int MediaKernel::crop(const std::string& path, bool sets, v4l2_subdev_crop& wanted) {
    if (fails((sets ? "S_CROP " : "G_CROP ") + path + " pad " + number(wanted.pad) + " which " +
              number(wanted.which) + (sets ? ' ' + text(wanted.rect) : "") +
              reserved(wanted.reserved)))
        return -1;
    SimulatedEntity& entity = *entityAt(path);
    if (wanted.pad >= entity.pads.size())
        return failed(EINVAL);
    v4l2_rect& rectangle = entity.pads[wanted.pad].rectangles[V4L2_SEL_TGT_CROP];
    if (sets)
        rectangle = wanted.rect;
    wanted.rect = rectangle;
    return 0;
}

int MediaKernel::interval(const std::string& path, bool sets, v4l2_subdev_frame_interval& wanted) {
    if (fails((sets ? "S_FRAME_INTERVAL " : "G_FRAME_INTERVAL ") + path + " pad " +
              number(wanted.pad) + (sets ? ' ' + text(wanted.interval) : "") +
              reserved(wanted.reserved)))
        return -1;
    SimulatedEntity& entity = *entityAt(path);
    if (!entity.hasIntervals)
        return failed(ENOTTY);
    if (wanted.pad >= entity.pads.size())
        return failed(EINVAL);
    SimulatedPad& pad = entity.pads[wanted.pad];
    if (sets)
        pad.interval = entity.onlyInterval.denominator == 0 ? wanted.interval : entity.onlyInterval;
    if (pad.interval.denominator == 0)
        pad.interval = {1, 30};
    wanted.interval = pad.interval;
    return 0;
}

std::vector<std::string> describe(const MediaKernel& kernel) {
    std::vector<std::string> lines;
    for (const SimulatedLink& link : kernel.links)
        lines.push_back(number(link.sourceEntity) + ':' + number(link.sourcePad) + " -> " +
                        number(link.sinkEntity) + ':' + number(link.sinkPad) + " flags " +
                        number(link.flags));
    for (const SimulatedEntity& entity : kernel.entities)
        for (std::size_t i = 0; i < entity.pads.size(); ++i) {
            const SimulatedPad& pad = entity.pads[i];
            std::string line =
                entity.name + ':' + number(i) + ' ' + text(pad.format) + " @" + text(pad.interval);
            for (const auto& [target, rectangle] : pad.rectangles)
                line += ' ' + number(target) + ' ' + text(rectangle);
            lines.push_back(line);
        }
    return lines;
}

}  // namespace ZR::test
