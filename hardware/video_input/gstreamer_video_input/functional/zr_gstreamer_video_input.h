#pragma once

#include <QObject>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "common/zrapi_common/zr_color.h"
#include "common/zrapi_export.h"
#include "common/zrapi_os_abs/zr_thread.h"
#include "hardware/video_input/zr_video_input_interface.h"
#include "hardware/video_input/zr_video_setting.h"

class QQuickItem;
struct media_device;
// As gst/gst.h declares them, which an application needs for these two operations alone.
using GstElement = struct _GstElement;  // NOLINT(bugprone-reserved-identifier): their names
using GstMessage = struct _GstMessage;  // NOLINT(bugprone-reserved-identifier)

namespace ZR {

/// The stream that a video input shows.
enum ZRVideoStreamType : int {
    StreamUdpH264 = 0,  ///< H.264 in RTP over UDP, payload type 96, on the input's port
    StreamUdpJpeg = 1,  ///< JPEG in RTP over UDP, payload type 26, on the input's port
    StreamRtsp = 2,     ///< H.264 from an RTSP server, over UDP unicast
    StreamCamera = 3,   ///< one of the terminal's analog cameras
    StreamNone = 4,     ///< not chosen yet
};

/// The video input over GStreamer: one object a named input, and what all inputs share, GStreamer's
/// start, the thread that watches the streams and the analog cameras' capture devices.
///
/// @par One input
/// An application places an input in its scene with setVideoItem(), chooses a stream with
/// setStreamType() and setCurrentInterface() or setRTSPURL(), and calls start(). The picture is
/// drawn by GStreamer's `qmlglsink` into the item "videoItem" of the file "video.qml", which the
/// application brings in the process's working folder; its item "waitItemCamera" is shown instead
/// while there is no picture.
///
/// @par Threads
/// The first object starts a thread that waits a second, so that the application's start is not
/// held up, initialises GStreamer and starts the bus thread, "ZRGstBus". What needs GStreamer before
/// that waits for it for about a second. The bus thread walks all inputs, takes the messages of
/// their pipelines and reaches the Qt thread only by queued signals and by the command queue. The
/// plain flags that it shares with the Qt thread are deliberately not locked: one thread writes what
/// the other reads a moment later, and a decision that comes a poll too late is made again.
///
/// @par Restarts
/// While the application's item or the wait item is visible, a stream that fails is rebuilt: a
/// second after an error, an end, or a UDP time-out while data flowed; ten seconds after an RTSP
/// server has sent nothing for five. After ten restarts the input stays down, until another camera
/// or port is chosen or the items are placed anew.
///
/// @par Cameras
/// Three analog cameras reach the processor over two decoders and its media controller. Inside this
/// class they are the inputs 0, 1 and 2: the application's interface numbers 1, 2 and 3 less one. A
/// tw9912 decoder serves the inputs 0 and 2, which share one decoder, one capture node and the very
/// same descriptors, so that one of the two is seen at a time; an adv7180 decoder serves input 1.
///
/// What is found is kept in static members for the life of the process. They are plain members
/// without a lock: the objects are to be made by one thread, the application's Qt thread. Nothing
/// here is reported through a debug section; the lines that an operation names go to standard
/// output.
///
/// @par The end of a process
/// Stop every input, drain its queue, call doQuit(), close the windows, then let the application's
/// object go: a pipeline that still plays when the process exits crashes in the scene's graphics.
class ZRAPI_EXPORT ZRGstreamerVideoInput : public QObject, public ZRVideoInputInterface {
    Q_OBJECT

  public:
    /// Number of analog camera inputs.
    static constexpr int inputCount = 3;

    /// Returns the object of this name, and makes it, after the discovery of the capture devices,
    /// when there is none yet.
    /// @param name  key of the object, any text
    /// @return the object, which the class owns until the process exits; null when there is no
    ///         memory for one. To be called from one thread, the application's Qt thread.
    static ZRGstreamerVideoInput* getInstance(const std::string& name);

    /// Makes an input that no registry owns; the first one of a process starts the thread that
    /// prepares GStreamer. Applications use getInstance(): the bus thread watches those alone.
    /// @param key  the name of the object in `instances`
    explicit ZRGstreamerVideoInput(const std::string& key);
    ZRGstreamerVideoInput(const ZRGstreamerVideoInput&) = delete;
    ZRGstreamerVideoInput& operator=(const ZRGstreamerVideoInput&) = delete;
    /// Tears the pipeline down; on the Qt thread.
    ~ZRGstreamerVideoInput() override;

    int init() override;
    ZRVideoMirrorSetting getMirrorSetting(unsigned short input) override;
    ZRRotation getRotationSetting(unsigned short input) override;
    int getHeight(unsigned short input) override;
    int getWidth(unsigned short input) override;
    int getXPosition(unsigned short input) override;
    int getYPosition(unsigned short input) override;
    int setBrightness(unsigned short input, int value) override;
    int setContrast(unsigned short input, int value) override;
    int setHue(unsigned short input, int value) override;
    int setMirror(unsigned short input, ZRVideoMirrorSetting setting) override;
    int setRotation(unsigned short input, ZRRotation rotation) override;
    int setPosition(unsigned short input, int x, int y) override;
    int setSaturation(unsigned short input, int value) override;
    int setSize(unsigned short input, int newWidth, int newHeight) override;
    int start(unsigned short input) override;
    int stop(unsigned short input) override;
    bool isRunning(unsigned short input) override;
    int setCurrentInterface(int value) override;
    int getCurrentInterface() const override;
    bool isInitialized() override;
    void handleQueuedCommands() override;

    /// Chooses what the next build shows.
    /// @param type  a ZRVideoStreamType; anything else builds nothing
    void setStreamType(int type);
    /// @return what setStreamType() was given, StreamNone before
    int getStreamType() const;
    /// Names the RTSP stream of the next build.
    /// @param url  as in "rtsp://192.168.1.20:554/stream"; becomes part of a GStreamer launch text as
    ///             it stands, so that it must hold no blank and no "!"
    void setRTSPURL(const std::string& url);
    /// @return what setRTSPURL() was given, empty before
    std::string getRTSPURL() const;

    /// Places the input in the scene: loads "video.qml" when it was not loaded yet, puts the video
    /// item and the wait item into an item of the application, which they fill from its top left,
    /// and lifts those of its children that lie at z 0 or below by 1. Clears the count of restarts.
    ///
    /// The item's size is taken once; setSize() takes it anew. When the item is destroyed, its
    /// stream is stopped ("REMOVE FROM DESTROYED" is printed) and the two items are parked under the
    /// main window. All items that one input is ever given must live in one window: its picture
    /// cannot move to another.
    ///
    /// Prints "NO VIDEO ITEM!" when "video.qml" gives no video item.
    /// @param item   the application's, which keeps it; null, or the item in use, only clears the
    ///               count of restarts
    /// @param color  not used
    void setVideoItem(QQuickItem* item, ZRColor color);
    /// Takes the input out of the scene: empties the queue, stops the stream and parks the two items
    /// under the main window. Clears the count of restarts.
    void removeVideoItem();
    /// Loads "video.qml" from the process's working folder and takes its descendants "videoItem" and
    /// "waitItemCamera"; one that is missing is null, and what would be done to it is left out. The
    /// library never deletes what was loaded.
    ///
    /// Prints "ERROR: video.qml file not found! Expect disaster when trying to use anything video
    /// related!" without the file. A file with an error gives no items, and QML's own report.
    void createVideoAndWaitItem();

    /// @return 0x00010203: fully transparent, and found nowhere else in a scene
    ZRColor getTransparentColor() const;
    /// @return the pipeline, null when none is built. Borrowed: the next teardown drops it, so that
    ///         whoever keeps it takes a reference, on the Qt thread
    GstElement* getPipeline() const;

    /// Waits until GStreamer is initialised, in 11 steps of 100 ms. Prints "VIDEO: ERROR WHILE
    /// WAITING FOR GSTREAMER TO BE INITIALIZED! EXPECT ERRORS!" when that was not enough.
    void waitForGstReady();
    /// Tears the pipeline down, so that the next start builds it anew. Waits up to two seconds, as
    /// long as a part of it does not stop. On the Qt thread.
    void reset();

    /// The bus thread's work: takes the messages of all inputs' pipelines until doQuit().
    static void gstBusListener(void* unused);
    /// Reacts to one message of the input's pipeline. Called by the bus thread.
    ///
    /// Prints what it is told of: "STREAM TIMEOUT (EOS)!", "STREAM TIMED OUT!", "GST Error : TEXT"
    /// with a second line "  Debugging information: TEXT", "GST Warning : TEXT (CODE)",
    /// "application/x-rtp-source-sdes => should be running", "ASYNC DONE BUT NOT PLAYING: STATE",
    /// and "Received message:" with a second line that names a type which is not expected.
    /// @param msg  the message, whose reference is taken over; null does nothing
    void handleBusMessage(GstMessage* msg);

    /// Ends the bus thread and closes the capture devices: the work of
    /// ZRVideoInputInterface::doQuit().
    static void doQuit();

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
    static ZRThread gstBusThread;   ///< the bus thread, "ZRGstBus"
    static bool gstInitDone;        ///< GStreamer is initialised and the bus thread was started
    static bool quit;               ///< set by doQuit(); ends the bus thread
    static bool busThreadLaunched;  ///< an object has started what prepares GStreamer

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

  Q_SIGNALS:
    /// A stream has failed; is carried to timedRestartStream() on the Qt thread.
    /// @param p_timeout  milliseconds until it is rebuilt
    void errorDetected(int p_timeout);
    /// Asks for a restart, as above.
    /// @param p_timeout  milliseconds until the stream is rebuilt
    void triggerTimedRestart(int p_timeout);
    /// Asks for the picture, or for the wait item; is carried to doShowVideoItem() on the Qt thread.
    /// @param p_show  true for the picture
    void showVideoItem(bool p_show);

  public Q_SLOTS:
    /// Rebuilds the stream and queues its start, if the items are in the scene and the application's
    /// is visible. Refuses after ten restarts: "Video: Gave up after 10 automatic restarts. Please
    /// restart video manually..." is printed.
    void restartStream();
    /// Shows the wait item and calls restartStream() after a time. Does nothing while a restart is
    /// already scheduled; else prints "Trigger stream restart in TIME milliseconds.".
    /// @param p_timeout  milliseconds
    void timedRestartStream(int p_timeout);
    /// Shows the video item and hides the wait item, or the other way round. Parked items stay as
    /// they are.
    /// @param p_show  true for the picture
    void doShowVideoItem(bool p_show);
    /// Removes the items from the scene when what was destroyed is the application's item.
    /// @param p_obj  compared and never used: it is on its way out
    void videoWidgetDestroyed(QObject* p_obj);
    /// Builds the stream where it is not built, sets it to playing and applies the stored settings.
    /// @return false when it was set to playing; true when there was nothing to start: no pipeline
    ///         could be built, or it plays already
    bool startSlot();
    /// Ends the stream and shows the wait item. The pipeline is kept for the next start.
    void stopSlot();
    /// Takes another camera or port into use: selects the camera on its capture node, then rebuilds
    /// a stream that plays 100 ms later, and tears down any other. Prints "ERROR OPENING VIDEO
    /// DEVICE NAME: REASON" for a camera whose capture node is not open. Clears the count of
    /// restarts.
    void changeInterfaceSlot();

  protected:
    int currentInput = 0;                   ///< 1-based camera; 4 once a port was chosen
    int udpPort = 5004;                     ///< of the UDP streams
    bool initialized = false;               ///< built, or found to be of no known type
    ZRColor transparentColor = 0x00010203;  ///< see getTransparentColor()
    int xPosition = 0;                      ///< wanted, in pixels of the scene
    int yPosition = 0;                      ///< wanted, in pixels of the scene
    int width = 200;                        ///< wanted, in pixels of the scene
    int height = 100;                       ///< wanted, in pixels of the scene
    int streamType = StreamNone;            ///< a ZRVideoStreamType, not checked
    std::string name;                       ///< key in `instances`
    std::string rtspURL;                    ///< goes into the launch text as it stands
    QQuickItem* videoItem = nullptr;        ///< the sink draws into it
    QQuickItem* waitItem = nullptr;         ///< shown while there is no picture
    QQuickItem* parentItem = nullptr;       ///< the application's, carries the two
    bool restartPending = false;            ///< a restart is scheduled
    bool streaming = false;                 ///< data was seen since the last time-out
    std::uint32_t rtspStartTick = 0;        ///< ms, of a start that has given no data yet
    unsigned int restartCount = 0;          ///< automatic restarts since the last change
    GstElement* pipeline = nullptr;         ///< owned
    GstElement* videoSink = nullptr;        ///< borrowed from the pipeline, as those below
    GstElement* glUpload = nullptr;         ///< of a camera's pipeline
    GstElement* glColorConvert = nullptr;   ///< of a camera's pipeline
    GstElement* videoSource = nullptr;      ///< `v4l2src`, `udpsrc` or `rtspsrc`
    GstElement* capsFilter = nullptr;       ///< of a camera's pipeline
    /// By interface number, 1 to 3; asking for one that is not there makes it, with its defaults.
    std::map<unsigned short, VideoSetting> videoSettings;
};

}  // namespace ZR
