#pragma once

#include <linux/media.h>
#include <linux/v4l2-subdev.h>
#include <sys/stat.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// A media device that behaves as the kernel's: entities, pads, links, and formats on the pads of
/// sub-devices. It logs each call with what was asked and makes chosen calls fail.

namespace ZR::test {

struct SimulatedPad {
    unsigned int flags = MEDIA_PAD_FL_SINK;
    v4l2_mbus_framefmt format{};
    v4l2_fract interval{1, 30};
    std::map<unsigned int, v4l2_rect> rectangles;  ///< by selection target
};

struct SimulatedEntity {
    unsigned int id;
    std::string name;
    unsigned int type;
    unsigned int minor;  ///< of its node, 0 for none; major is 81
    std::string node;    ///< path below /dev
    std::vector<SimulatedPad> pads;
    bool hasIntervals = true;
    bool hasSelections = true;
    unsigned int widest = 4096;         ///< formats are cut down to this width
    std::vector<unsigned int> codes{};  ///< the first one is taken for any other; empty: all
    v4l2_fract onlyInterval{};          ///< taken for any other; 0/0: all
    std::string linkTarget{};           ///< of its device number; empty: a usual one
};

struct SimulatedLink {
    unsigned int sourceEntity, sourcePad, sinkEntity, sinkPad;
    unsigned int flags;
};

class MediaKernel {
  public:
    std::vector<SimulatedEntity> entities;
    std::vector<SimulatedLink> links;
    /// Each call: "open /dev/media0", "SETUP_LINK /dev/media0 1:0 -> 2:4 1", "close /dev/media0".
    std::vector<std::string> calls;
    /// Flags of each open, in their order.
    std::vector<int> openFlags;
    /// Number of the device that stat() shows for a path, where it is not the one of the entity.
    std::map<std::string, unsigned int> otherMinors;
    bool repeatsEntities = false;  ///< gives the first entity as the next one again and again

    /// Makes a call of the kind that begins its log line fail, the next one or a later one.
    void fail(const std::string& call, int error, unsigned int occurrence = 1);
    bool hasOpenDescriptors() const { return !open_.empty(); }

    bool owns(int descriptor) const { return open_.count(descriptor) != 0; }
    static bool owns(const char* path);
    // As the system's: -1 and errno.
    int open(const char* path, int flags);
    int close(int descriptor);
    int ioctl(int descriptor, unsigned long request, void* argument);
    long readlink(const char* path, char* target, std::size_t size);
    int stat(const char* path, struct stat* status);

  private:
    bool fails(const std::string& line);
    SimulatedEntity* entityOf(unsigned int id);
    SimulatedEntity* entityAt(const std::string& path);
    int media(const std::string& path, unsigned long request, void* argument);
    int enumEntities(const std::string& path, media_entity_desc& description);
    media_pad_desc describePad(unsigned int entity, unsigned int index);
    int enumLinks(const std::string& path, const media_links_enum& wanted);
    int setupLink(const std::string& path, const media_link_desc& wanted);
    int subdevice(const std::string& path, unsigned long request, void* argument);
    int format(const std::string& path, bool sets, v4l2_subdev_format& wanted);
    int selection(const std::string& path, bool sets, v4l2_subdev_selection& wanted);
    int crop(const std::string& path, bool sets, v4l2_subdev_crop& wanted);
    int interval(const std::string& path, bool sets, v4l2_subdev_frame_interval& wanted);

    struct Fault {
        std::string call;
        int error;
        unsigned int occurrence;
    };
    std::vector<Fault> faults_;
    std::map<int, std::string> open_;
    int nextDescriptor_ = 1000;
};

/// The terminal's camera graph; without an adv7180 when @p isWhole is false.
MediaKernel cameraGraph(bool isQuad, bool isWhole = true);

/// What no terminal has: quotes and blanks in names, one name twice, numbers with gaps, entities
/// without a node, several links from one pad, pads that take other formats than asked for.
MediaKernel oddGraph();

/// All links that are on, and all formats, intervals and rectangles: one line each.
std::vector<std::string> describe(const MediaKernel& kernel);

}  // namespace ZR::test
