#include "tests/fuzz/media_text_check.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

#include "mediactl/v4l2subdev.h"
#include "platform/media_controller/pad_format_internal.h"
#include "platform/media_controller/pad_text_internal.h"
#include "tests/fuzz/fuzz_check.h"
#include "tests/platform/media_controller/media_kernel.h"

namespace ZR::test {
namespace {

using namespace media_controller;

media_device deviceWith(const MediaKernel& kernel) {
    // Nothing can be opened: texts are read, and no device of this machine is touched.
    media_device media{"/nonexistent/media0"};
    for (const SimulatedEntity& simulated : kernel.entities) {
        media_entity entity;
        entity.info.id = simulated.id;
        entity.info.type = simulated.type;
        entity.name = simulated.name;
        entity.devname = "/nonexistent/node";
        for (const SimulatedPad& pad : simulated.pads)
            entity.pads.push_back({simulated.id, 0, pad.flags, {}});
        media.entities.push_back(std::move(entity));
    }
    for (const SimulatedLink& link : kernel.links) {
        media_link_desc description{};
        description.source.entity = link.sourceEntity;
        description.source.index = static_cast<__u16>(link.sourcePad);
        description.sink.entity = link.sinkEntity;
        description.sink.index = static_cast<__u16>(link.sinkPad);
        description.flags = link.flags;
        for (media_entity& entity : media.entities)
            if (entity.info.id == link.sourceEntity)
                entity.links.push_back(description);
    }
    return media;
}

/// The first byte of an input picks the graph, which no text changes.
media_device& graphOf(std::uint8_t choice) {
    static media_device graphs[] = {deviceWith(oddGraph()), deviceWith(cameraGraph(true)),
                                    deviceWith(cameraGraph(false))};
    return graphs[choice % 3];
}

/// The rest of an input as a C text of exactly its size: under the address sanitizer nothing behind
/// its end can be read.
class ExactText {
  public:
    ExactText(const std::uint8_t* data, std::size_t size)
        : size_(size > 0 ? size - 1 : 0), bytes_(new char[size_ + 1]) {
        if (size_ > 0)
            std::memcpy(bytes_.get(), data + 1, size_);
        bytes_[size_] = '\0';
        size_ = std::strlen(bytes_.get());
    }
    explicit ExactText(const std::string& text)
        : size_(text.size()), bytes_(new char[text.size() + 1]) {
        std::memcpy(bytes_.get(), text.c_str(), size_ + 1);
    }

    const char* begin() const { return bytes_.get(); }
    bool holds(const char* place) const { return place >= begin() && place <= begin() + size_; }

  private:
    std::size_t size_;
    std::unique_ptr<char[]> bytes_;
};

struct ReadLink {
    const media_link_desc* link = nullptr;
    unsigned int flags = 0;
    bool isWhole = false;
    std::string taken;
};

ReadLink readLink(media_device& media, const ExactText& from) {
    ReadLink read;
    Text text(from.begin());
    read.link = takeLink(media, text);
    require(from.holds(text.position()), "a link is read inside the text");
    read.isWhole = read.link != nullptr && takeLinkFlags(text, read.flags);
    require(from.holds(text.position()), "flags are read inside the text");
    read.taken.assign(from.begin(), text.position());
    return read;
}

bool isOfGraph(const media_device& media, const media_link_desc* link) {
    return std::any_of(media.entities.begin(), media.entities.end(), [link](const auto& entity) {
        return std::any_of(entity.links.begin(), entity.links.end(),
                           [link](const media_link_desc& known) { return &known == link; });
    });
}

/// The same link by numbers and without blanks.
std::string plainText(const ReadLink& read) {
    return std::to_string(read.link->source.entity) + ':' +
           std::to_string(read.link->source.index) + "->" + std::to_string(read.link->sink.entity) +
           ':' + std::to_string(read.link->sink.index) + '[' + std::to_string(read.flags) + ']';
}

std::string plainText(const v4l2_rect& rectangle) {
    return '(' + std::to_string(rectangle.left) + ',' + std::to_string(rectangle.top) + ")/" +
           std::to_string(rectangle.width) + 'x' + std::to_string(rectangle.height);
}

/// The same sizes, rectangles and intervals; fields and colours have no number in a text.
std::string plainText(const PadFormat& read, const std::string& name) {
    std::string text = "[";
    if (read.format.code != 0)
        text += "fmt:" + name + '/' + std::to_string(read.format.width) + 'x' +
                std::to_string(read.format.height);
    text += " crop:" + plainText(read.crop) + " compose:" + plainText(read.compose);
    return text + '@' + std::to_string(read.interval.numerator) + '/' +
           std::to_string(read.interval.denominator) + ']';
}

bool isSame(const v4l2_rect& left, const v4l2_rect& right) {
    return left.left == right.left && left.top == right.top && left.width == right.width &&
           left.height == right.height;
}

bool isSame(const PadFormat& left, const PadFormat& right) {
    return left.format.width == right.format.width && left.format.height == right.format.height &&
           isSame(left.crop, right.crop) && isSame(left.compose, right.compose) &&
           left.interval.numerator == right.interval.numerator &&
           left.interval.denominator == right.interval.denominator;
}

struct ReadFormat {
    PadFormat format;
    bool isGood = false;
    std::string taken;
};

ReadFormat readFormat(const ExactText& from) {
    ReadFormat read;
    Text text(from.begin());
    read.isGood = takePadFormat(text, read.format);
    require(from.holds(text.position()), "properties are read inside the text");
    read.taken.assign(from.begin(), text.position());
    return read;
}

void checkProperties(const char* from) {
    const ReadFormat read = readFormat(ExactText(std::string(from)));
    if (!read.isGood)
        return;
    const ReadFormat again = readFormat(ExactText(read.taken));
    require(
        again.isGood && again.taken == read.taken && isSame(again.format, read.format) &&
            std::memcmp(&again.format.format, &read.format.format, sizeof read.format.format) == 0,
        "what follows the properties does not count");
    const ReadFormat plain = readFormat(ExactText(plainText(read.format, "Y8")));
    require(plain.isGood && isSame(plain.format, read.format), "properties written plainly");
}

}  // namespace

void checkLinkText(const std::uint8_t* data, std::size_t size) {
    media_device& media = graphOf(size > 0 ? data[0] : 0);
    const ExactText text(data, size);
    const ReadLink read = readLink(media, text);
    require(read.link == nullptr || isOfGraph(media, read.link), "the link is one of the graph");
    if (read.isWhole) {
        const ReadLink again = readLink(media, ExactText(read.taken));
        require(again.isWhole && again.link == read.link && again.flags == read.flags &&
                    again.taken == read.taken,
                "what follows the bracket does not count");
        const ReadLink plain = readLink(media, ExactText(plainText(read)));
        require(plain.isWhole && plain.link == read.link && plain.flags == read.flags,
                "the link written plainly");
    }
    char* end = nullptr;
    const int result = media_parse_setup_link(&media, text.begin(), &end);
    require(result < 0, "no link of this device can be set up");
    require(end == text.begin() + read.taken.size(), "the end is where reading ended");
}

void checkFormatText(const std::uint8_t* data, std::size_t size) {
    media_device& media = graphOf(size > 0 ? data[0] : 0);
    const ExactText text(data, size);
    Text cursor(text.begin());
    const Pad pad = takePad(media, cursor);
    require(text.holds(cursor.position()), "a pad is read inside the text");
    require(!pad || pad.index < pad.entity->pads.size(), "the pad is one of the entity");
    // From each bracket on, so that properties are met whatever stands before them.
    for (const char* from = std::strchr(text.begin(), '['); from != nullptr;
         from = std::strchr(from + 1, '['))
        checkProperties(from);
    (void)v4l2_subdev_parse_setup_formats(&media, text.begin());
}

}  // namespace ZR::test
