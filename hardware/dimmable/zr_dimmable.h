#pragma once

#include <atomic>
#include <mutex>
#include <string>

#include "common/zrapi_export.h"
#include "hardware/dimmable/attribute_stream.h"

namespace ZR {

/// A device that can be dimmed, coloured or set in volume; the values are part of the interface.
enum ZRDimmableDevice : unsigned int {
    DisplayBacklight = 0,  ///< display backlight
    KeyBacklight = 1,      ///< key illumination
    EncoderBacklight = 2,  ///< rotary encoder illumination
    RGBLED = 3,            ///< RGB status LED
    Beeper = 4,            ///< beeper; the intensity is its volume
};

/// The one object that dims the display, the key and the encoder illumination, colours the RGB LED
/// and sets the beeper's volume.
///
/// The devices are looked up and opened once, when the object is built; one that is missing then
/// stays unusable until the process ends. Failures are reported to the debug section "zr_dimmable"
/// and returned as result codes.
///
/// Operations may be called from any thread. The display, the beeper and the RGB LED's colour have
/// a lock each; the key and the encoder illumination have none, so two threads that use one of
/// these two at once may replace each other's value, or fail with 1, 5 or 6 because they share the
/// position in the file and the error state. A lock that cannot be taken raises std::system_error,
/// except in getColor(), which answers 5.
class ZRAPI_EXPORT ZRDimmable {
  public:
    /// Returns the object, built on the first call (from any thread) and destroyed at process exit.
    /// The library owns it. Building prints one line to standard output when the display backlight
    /// cannot be opened and one when the RGB LED is found under its second name.
    static ZRDimmable* getInstance();

    ZRDimmable(const ZRDimmable&) = delete;
    ZRDimmable& operator=(const ZRDimmable&) = delete;

    /// Closes the devices; writes nothing back to them.
    virtual ~ZRDimmable();

    /// Reads an intensity. A display below its minimum is raised to it by being read; a raise that
    /// fails shows in no result.
    ///
    /// The beeper is asymmetric on purpose: its volume is written unscaled and read through the
    /// percent scaling, so a volume of 50 reads as 20.
    ///
    /// @param intensity  receives percent, or 0xRRGGBB of a key or encoder illumination with
    ///                   colour; unchanged with 1 and 5; must not be null
    /// @param device     any but RGBLED
    /// @return 0 success, 1 device invalid here or not open, 5 read failed
    virtual unsigned int getIntensity(unsigned int* intensity, ZRDimmableDevice device);

    /// Sets an intensity.
    ///
    /// @param intensity  percent: the minimum to 100 for the display, 0 to 100 for the others;
    ///                   0x000000 to 0xFFFFFF for a key or encoder illumination with colour
    /// @param device     any but RGBLED
    /// @return 0 success, 1 device not open, 6 write failed, 10 device invalid here,
    ///         24 intensity out of range (tested after the device)
    virtual unsigned int setIntensity(unsigned int intensity, ZRDimmableDevice device);

    /// Reads a colour.
    ///
    /// @param color   receives the driver's number, 0xRRGGBB; unchanged on failure; must not be
    ///                null
    /// @param device  RGBLED, or a key or encoder illumination with colour
    /// @return 0 success, 1 device invalid here or not open, 5 read failed (also a value without a
    ///         line end), 11 device has no colour. A key or encoder illumination whose last
    ///         getIntensity(), setIntensity() or setColor() answered 5 or 6 answers 1 until one of
    ///         these succeeds.
    virtual unsigned int getColor(unsigned int* color, ZRDimmableDevice device);

    /// Sets a colour. On a key or encoder illumination without colour the number is a percentage,
    /// as for setIntensity().
    ///
    /// @param color   0xRRGGBB; for RGBLED the upper byte is ignored
    /// @param device  RGBLED, KeyBacklight or EncoderBacklight
    /// @return 0 success, 1 device invalid here or not open, 6 write failed, 24 out of range
    virtual unsigned int setColor(unsigned int color, ZRDimmableDevice device);

    /// Sets the least intensity that the display accepts and raises the display to it.
    ///
    /// @param intensity  percent, stored without a check: above 100 the display accepts nothing
    /// @return 0 success, 1 the display cannot be read or is not open, 6 write failed, 24 the
    ///         minimum is above 100
    virtual unsigned int setMinDisplayBacklightIntensity(unsigned int intensity);

    /// Reads the least intensity that the display accepts and raises the display to it.
    ///
    /// @param intensity  receives percent, in any case; must not be null
    /// @return 0 success, 1 the display cannot be read or is not open, 6 write failed, 24 the
    ///         minimum is above 100
    virtual unsigned int getMinDisplayBacklightIntensity(unsigned int* intensity);

    /// Tells whether a device takes a colour.
    virtual bool isColorSupported(ZRDimmableDevice device) const;

  protected:
    static std::mutex displayMutex;
    static std::mutex beeperMutex;
    static std::mutex LEDMutex;
    static unsigned int debugSection;

    // Full scale of the three illuminations; kept for the layout, the scaling is always to 255.
    unsigned int maxDisplayBrightness = 255;
    unsigned int maxKeyBrightness = 255;
    unsigned int maxEncoderBrightness = 255;
    std::atomic<unsigned int> minDisplayBacklightIntensity{5};  ///< percent
    std::string displayBacklightPath;
    std::string keyBacklightPath;
    std::string encoderBacklightPath;
    std::string beeperVolumePath;
    std::string rgbLedPath;
    AttributeStream displayBacklightFile;
    AttributeStream keyBacklightFile;
    AttributeStream encoderBacklightFile;
    AttributeStream rgbLedFile;
    AttributeStream beeperVolumeFile;
    bool keyColorSupported = false;
    bool encoderColorSupported = false;
    // Last colours given to setColor(); nothing reads them.
    unsigned int keyColor = 0;
    unsigned int encoderColor = 0;

  private:
    ZRDimmable();

    void findDisplayBacklight();
    void findRgbLed();
    void applyBoardMinimum();
    void openDevices();

    AttributeStream* intensityStream(ZRDimmableDevice device);
    static std::mutex* intensityMutex(ZRDimmableDevice device);
    unsigned int readIntensity(AttributeStream& stream, unsigned int* intensity,
                               ZRDimmableDevice device);
    unsigned int writeIntensity(AttributeStream& stream, unsigned int intensity,
                                ZRDimmableDevice device);
    unsigned int readColor(AttributeStream& stream, unsigned int* color, ZRDimmableDevice device);
    unsigned int writeRgbLed(unsigned int color);
    unsigned int enforceMinimum(unsigned int minimum);
};

}  // namespace ZR
