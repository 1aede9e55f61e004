#pragma once

#include <string>
#include <vector>

/// Takes the place of libmediactl and libv4l2subdev; link `zrapi_substitute_media_controller`.
/// Logs to CaptureCallLog; sets nothing up anywhere.

namespace ZR::test {

/// One entity, with what of it cannot be had.
struct SimulatedEntity {
    std::string name;  ///< of 32 characters: without a NUL behind them
    std::string node;  ///< path of its device node
    bool isNull = false;
    bool hasInfo = true;
    bool hasNode = true;  ///< else the path is a null pointer
};

struct MediaControllerSubstitute {
    static std::vector<SimulatedEntity> entities;
    static bool canBeMade;         ///< else media_device_new gives null
    static int enumerationResult;  ///< of media_device_enumerate
    static int linkResult;         ///< of media_parse_setup_link
    static int formatsResult;      ///< of v4l2_subdev_parse_setup_formats

    /// No entities, and everything succeeds.
    static void reset();
};

}  // namespace ZR::test
