#pragma once

#include <list>
#include <mutex>
#include <string>

#include "common/zrapi_export.h"
#include "hardware/video_input/zr_video_setting.h"

class QQuickItem;

namespace ZR {

/// Which implementation serves a video input.
enum ZRVideoInputType : int {
    VideoInputGstreamer = 0,  ///< GStreamer pipelines; the only one there is
};

/// What waits in an input's queue.
enum ZRVideoCommand : int {
    CommandStart = 0,            ///< build the stream where it is not built, and play it
    CommandStop = 1,             ///< end it
    CommandChangeInterface = 2,  ///< take another camera or port into use
};

/// One video input as an application sees it: an analog camera or a network stream that is shown in
/// its QML scene.
///
/// start(), stop() and setCurrentInterface() only queue a command, so that they never wait for a
/// pipeline. The commands take effect when the application calls handleQueuedCommands() on its Qt
/// thread, from a timer for instance; nothing in this library calls it. The input's picture is
/// placed in the scene, and its stream chosen, by the operations of ZRGstreamerVideoInput.
///
/// @par Threads
/// All operations belong to the application's Qt thread, the one that made the object. The queue is
/// also written by the thread that watches the streams, which queues a stop after an error. The
/// list is deliberately not locked while it is changed: the mutex is taken and released before. Two
/// threads that change it in the same microsecond spoil it. An application that drains the queue
/// often (every 50 ms, say) has it empty nearly always; but a start that fails at once, because its
/// camera is gone or its port taken, meets the stop that its error queues more often. Start no input
/// that must fail, or guard the list in a derived class: all that writes it is virtual.
///
/// @par Interface numbers
/// `input` is the 1-based number of an interface, 1 to 3 for the cameras, and the key of its stored
/// settings. Each object is one input: start(), stop(), isRunning() and the geometry ignore it.
class ZRAPI_EXPORT ZRVideoInputInterface {
  public:
    /// Returns the video input of this name, and makes it when there is none yet. The first one that
    /// is made discovers the capture devices (about a millisecond) and starts the thread that
    /// prepares GStreamer a second later, for which the call does not wait.
    /// @param type  VideoInputGstreamer
    /// @param name  key of the input, any text
    /// @return the input, owned by the library until the process exits; null for any other type,
    ///         and when there is no memory
    static ZRVideoInputInterface* getInstance(ZRVideoInputType type, const std::string& name);

    /// Names the item that the video items are parked under while no item of the application
    /// carries them: an item that is in the window all the time, its content item for instance.
    /// @param item  the application's, in the window that all videos are shown in; null to park
    ///              them without a parent. When it is destroyed, that is as if null had been set
    static void setMainWindow(QQuickItem* item);

    /// Ends the thread that watches the streams, waits for its end (up to 125 ms and what it is
    /// busy with) and closes the capture devices. To be called once, when every input was stopped
    /// and its queue drained, before the application's object is gone. Nothing watches a stream that
    /// plays on.
    static void doQuit();

    ZRVideoInputInterface() = default;
    ZRVideoInputInterface(const ZRVideoInputInterface&) = delete;
    ZRVideoInputInterface& operator=(const ZRVideoInputInterface&) = delete;
    virtual ~ZRVideoInputInterface();

    /// Builds the pipeline of the chosen stream, without playing it. Does nothing when it is built.
    ///
    /// Prints "UNKNOWN STREAM TYPE OPTION: TYPE" when no stream is chosen, and "SETTING WIDGET
    /// PROPERTY 0FAIL!!!!" for a camera that is built before there is a video item; that one is
    /// given the item by the start, or when the item is placed.
    /// @return 0
    virtual int init() = 0;

    /// @param input  1-based interface; its settings are made, with their defaults, when absent
    /// @return the stored mirroring
    virtual ZRVideoMirrorSetting getMirrorSetting(unsigned short input) = 0;
    /// @param input  1-based interface; its settings are made, with their defaults, when absent
    /// @return the stored rotation, 0 to 359 degrees
    virtual ZRRotation getRotationSetting(unsigned short input) = 0;
    /// @return height of the video item in pixels of the scene, cut to a whole number; 0 without one
    virtual int getHeight(unsigned short input) = 0;
    /// @return width of the video item in pixels of the scene, cut to a whole number; 0 without one
    virtual int getWidth(unsigned short input) = 0;
    /// @return distance of the video item from the left of the application's item, in pixels of the
    ///         scene, cut to a whole number; 0 without a video item
    virtual int getXPosition(unsigned short input) = 0;
    /// @return distance of the video item from the top of the application's item, as above
    virtual int getYPosition(unsigned short input) = 0;

    /// Stores the brightness of an interface, and sets it at once where its camera is the one that
    /// is built. Every start sets the stored value again.
    /// @param input  1-based interface
    /// @param value  in the camera driver's range; not checked
    /// @return 0
    virtual int setBrightness(unsigned short input, int value) = 0;
    /// Stores and sets the contrast, as setBrightness() does.
    /// @param input  1-based interface
    /// @param value  in the camera driver's range; not checked
    /// @return 0
    virtual int setContrast(unsigned short input, int value) = 0;
    /// Stores and sets the hue, as setBrightness() does.
    /// @param input  1-based interface
    /// @param value  in the camera driver's range; not checked
    /// @return 0
    virtual int setHue(unsigned short input, int value) = 0;
    /// Stores the mirroring and hands it, with the rotation, to the function "setTransformation" of
    /// the video item. While the stream is a camera, that of another interface than the current one
    /// is only stored.
    /// @param input    1-based interface
    /// @param setting  handed on unchanged
    /// @return 0, whether it could be shown or not
    virtual int setMirror(unsigned short input, ZRVideoMirrorSetting setting) = 0;
    /// Stores the rotation, hands it to "setTransformation" as setMirror() does, and sizes the item
    /// anew.
    /// @param input     1-based interface
    /// @param rotation  any number of degrees; stored as 0 to 359
    /// @return 0; 1 when it is only stored: without items in the scene, or while the stream is a
    ///         camera, for another interface than the current one
    virtual int setRotation(unsigned short input, ZRRotation rotation) = 0;
    /// Moves the video item.
    /// @param input  ignored
    /// @param x      pixels of the scene from the left of the application's item
    /// @param y      pixels of the scene from its top
    /// @return 0; without items in the scene the position serves the next start
    virtual int setPosition(unsigned short input, int x, int y) = 0;
    /// Stores and sets the saturation, as setBrightness() does, but only while the stream is a
    /// camera.
    /// @param input  1-based interface
    /// @param value  in the camera driver's range; not checked
    /// @return 0; 11 while the stream is none of a camera: nothing is stored then
    virtual int setSaturation(unsigned short input, int value) = 0;
    /// Makes the video item fill the application's item, with width and height exchanged for a
    /// rotation of 90 or 270 degrees. The numbers are only kept until that item is there.
    /// @param input   1-based interface whose rotation counts
    /// @param width   pixels of the scene
    /// @param height  pixels of the scene
    /// @return 0; 1 without items in the scene
    virtual int setSize(unsigned short input, int width, int height) = 0;

    /// Queues a start. An item that the stream is to be shown in must have been through one
    /// rendered frame before the start is carried out: a scene whose first frame is still to come
    /// has no graphics context yet, and the start fails.
    /// @param input  ignored
    /// @return 0
    virtual int start(unsigned short input) = 0;
    /// Empties the queue and queues a stop. A restart that is already scheduled is not called off.
    /// @param input  ignored
    /// @return 0
    virtual int stop(unsigned short input) = 0;
    /// Asks whether the stream plays. Waits up to a second while it is about to.
    /// @param input  ignored
    /// @return false also when no pipeline is built
    virtual bool isRunning(unsigned short input) = 0;
    /// Chooses the camera of a camera stream, or the port of any other. The value in use queues
    /// nothing, another one the change.
    /// @param value  1-based camera, 1 to 3; or a UDP port
    /// @return 0
    virtual int setCurrentInterface(int value) = 0;
    /// @return the 1-based camera of a camera stream (0 before one was chosen), or the UDP port of
    ///         any other
    virtual int getCurrentInterface() const = 0;
    /// @return whether the stream was built since the last teardown; also true after the attempt to
    ///         build a stream of no known type
    virtual bool isInitialized() = 0;
    /// Carries out the queued commands, oldest first. To be called on the Qt thread.
    virtual void handleQueuedCommands() = 0;

    /// Appends a command. One that equals the last waiting one is dropped; a stop empties the queue
    /// first.
    /// @param command  a ZRVideoCommand; any other number is kept and does nothing
    void pushCommandToQueue(int command);

    /// @return whether a stop waits in the queue
    bool isStopRequested();

    /// What setMainWindow() was given; null before.
    static QQuickItem* mainWindow;

  protected:
    std::list<int> commandQueue;  ///< oldest first; changed without the lock
    /// Taken and released before each use of the queue, not during it: kept, a command that is being
    /// carried out may queue another one.
    std::mutex commandMutex;
};

}  // namespace ZR
