#pragma once

#include <map>
#include <memory>
#include <string>

#include "common/zrapi_export.h"
#include "hardware/video_input/zr_video_setting.h"

struct media_device;

namespace ZR {

/// One video input of the terminal, and what all inputs share: the analog cameras' capture devices.
///
/// Three analog cameras reach the processor over two decoders and its media controller. Inside this
/// class they are the inputs 0, 1 and 2: the application's interface numbers 1, 2 and 3 less one. A
/// tw9912 decoder serves the inputs 0 and 2, which share one decoder, one capture node and the very
/// same descriptors, so that one of the two is seen at a time; an adv7180 decoder serves input 1.
///
/// What discovery finds is kept in static members for the life of the process. They are plain
/// members without a lock: everything here runs on one thread, the one that makes the objects.
/// Nothing here is reported through a debug section; the lines that an operation names go to
/// standard output.
class ZRAPI_EXPORT ZRGstreamerVideoInput {
  public:
    /// Number of analog camera inputs.
    static constexpr int inputCount = 3;

    /// Returns the object of this name, and makes it, after the discovery of the capture devices,
    /// when there is none yet.
    /// @param name  key of the object, any text
    /// @return the object, which the class owns until the process exits; null when there is no
    ///         memory for one. To be called from one thread, the application's.
    static ZRGstreamerVideoInput* getInstance(const std::string& name);

    /// @param key  the name of the object in `instances`
    explicit ZRGstreamerVideoInput(const std::string& key);
    ZRGstreamerVideoInput(const ZRGstreamerVideoInput&) = delete;
    ZRGstreamerVideoInput& operator=(const ZRGstreamerVideoInput&) = delete;
    virtual ~ZRGstreamerVideoInput();

    /// Finds the capture devices, opens them, and enables the media controller's links from each
    /// decoder to its capture node. Only the first call of a process does anything, whatever it
    /// finds.
    ///
    /// The processor variant comes from `/proc/device-tree/compatible`, the devices from
    /// `/dev/media0`. Silent: what is missing leaves an empty path and a descriptor of -1, and the
    /// rest goes on. Formats and standards are not touched. The media controller's handle and the
    /// descriptors stay open.
    static void doInitialSetup();

    /// Switches the capture path to one camera: selects it on the capture node that the inputs 0
    /// and 2 share, then calls applyDetectedVideoStandard(). To be called before the camera's
    /// stream is built.
    ///
    /// The selection is the node's control 0x009819C2, 0 for input 0 and 1 for input 2. It is read
    /// (VIDIOC_G_CTRL) and written (VIDIOC_S_CTRL) only where it has the other input's value; a
    /// control that cannot be read is left alone.
    ///
    /// Prints "ERROR OPENING VIDEO DEVICE PATH: REASON" when the capture node of input 0 or 2 is
    /// not open (REASON is what `errno` holds), and "INPUT: FAIL: SET INPUT VALUE" when the kernel
    /// refuses the selection; the standard is applied all the same.
    ///
    /// @param input  0-based input, 0 to 2; anything else is undefined
    void setupCameraInput(int input);

    /// Detects the television standard of an input where it is not known, forces it on the decoder
    /// and sets the formats of the whole capture path.
    ///
    /// Input 1 is set up by the call that detects its standard and never again. The inputs 0 and 2
    /// share a decoder: they are set up by the call that detects, and again by each call for as long
    /// as the two are not known to have one standard. A standard that cannot be detected counts as
    /// PAL for this time and is asked for again by the next call. Refused formats are ignored.
    ///
    /// @param input  0-based input, 0 to 2; anything else is undefined
    void applyDetectedVideoStandard(int input);

    /// Asks an input's decoder which standard its signal has (VIDIOC_QUERYSTD).
    ///
    /// No signal counts as PAL, and so does what is neither PAL nor NTSC, which prints
    /// "CAM NUMBER: UNSUPPORTED video standard detected: MASK" without a line end: NUMBER is the
    /// input counted from 1, MASK the decimal `v4l2_std_id`. A decoder that is not open prints
    /// "ERROR OPENING VIDEO SUB DEVICEPATH: REASON", one that fails "ERROR QUERY VIDEO STANDARD FOR
    /// PATH: REASON".
    ///
    /// @param input  0-based input, 0 to 2; anything else is undefined
    /// @return 0 PAL, 1 NTSC, 2 not open or the query failed
    static int detectVideoStandard(int input);

    /// Forces an input's decoder to a standard (VIDIOC_S_STD). Does nothing when the decoder is not
    /// open; a refusal prints "INPUT: FAILED to set STD to STANDARD", INPUT counted from 0. The
    /// kernel refuses it with EBUSY while the camera streams.
    ///
    /// @param input     0-based input, 0 to 2; anything else is undefined
    /// @param standard  1 NTSC, anything else PAL
    static void setVideoStandard(int input, int standard);

    /// The objects by their names; never removed before the process exits.
    static std::map<std::string, std::unique_ptr<ZRGstreamerVideoInput>> instances;

    static std::string videoDevices[inputCount];     ///< path of each input's capture node
    static std::string videoSubDevices[inputCount];  ///< path of each input's decoder
    /// Descriptors of `videoDevices`; below 1 counts as not open. That of input 2 is that of input 0.
    static int fileDescriptors[inputCount];
    /// Descriptors of `videoSubDevices`; below 1 counts as not open. That of input 2 is that of
    /// input 0.
    static int fileDescriptorsSub[inputCount];
    static std::string twName;                ///< entity name of the tw9912, or empty
    static std::string advName;               ///< entity name of the adv7180, or empty
    static bool runningOnQuadCore;            ///< routing: not that of the i.MX6 DualLite
    static struct media_device* mediaDevice;  ///< the media controller, or null
    static bool initialSetupPending;          ///< cleared by the first doInitialSetup()
    static std::string palSize;               ///< frame size of PAL, WIDTHxHEIGHT in pixels
    static std::string ntscSize;              ///< frame size of NTSC, as above
    /// What each input's decoder was last forced to: 0 PAL, 1 NTSC, 2 nothing yet or not known.
    static int lastSetStandard[inputCount];

  protected:
    std::string name;  ///< key in `instances`
    /// By interface number, 1 to 3; asking for one that is not there makes it, with its defaults.
    std::map<unsigned short, VideoSetting> videoSettings;
};

}  // namespace ZR
