#pragma once

#include <linux/media.h>
#include <linux/v4l2-subdev.h>

#include <cstdint>
#include <string>
#include <vector>

#include "common/file_descriptor_internal.h"

namespace ZR::benchmarks {

/// The bare system calls that find and set up the cameras' capture paths. All that they carry is made
/// beforehand; what the kernel answers is not looked at.
class CameraFloor {
  public:
    /// Looks at the media controller and opens the nodes of the path of input 0.
    CameraFloor();

    /// False where the media controller is not there or has no such paths.
    bool isUsable() const { return usable_; }

    /// Reads the processor's name, enumerates the graph, enables the seven links, finds the paths of
    /// the four nodes and opens them.
    bool discover() const;

    /// Reads which input is selected, forces PAL and sets the formats of the path of input 0.
    bool start() const;

    /// Reads which input is selected.
    bool readSelection() const;

    /// Disables the links, so that it is work to enable them.
    bool disableLinks() const { return setLinks(0); }

    /// The links of both paths and the formats of that of input 0, as media-ctl takes them.
    std::string linkTexts() const;
    std::string formatTexts() const;

  private:
    /// A pad and what it is given.
    struct Step {
        int node;
        unsigned int pad;
        unsigned int code;
        bool hasInterval;
    };

    struct LinkNames {
        std::string source;
        std::uint16_t sourcePad;
        std::string sink;
        std::uint16_t sinkPad;
    };

    void findEntities();
    void nameLinks();
    bool findLinks();
    bool openPath();
    const media_entity_desc* entityOf(const std::string& name) const;
    bool setLinks(unsigned int flags) const;
    bool setFormat(const Step& step) const;

    bool usable_ = false;
    bool isQuad_ = false;
    std::vector<media_entity_desc> entities_;
    std::string twName_;
    std::string advName_;
    std::vector<LinkNames> names_;
    std::vector<media_link_desc> links_;
    std::vector<std::string> numbers_;  ///< links in sysfs of the four nodes
    std::vector<std::string> nodes_;    ///< their paths
    std::vector<FileDescriptor> open_;  ///< capture node, decoder, multiplexer, interface
    std::vector<Step> steps_;
};

}  // namespace ZR::benchmarks
