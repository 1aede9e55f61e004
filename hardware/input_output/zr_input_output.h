#pragma once

#include <string>

#include "common/zrapi_export.h"

namespace ZR {

/// Kind of an I/O channel; the values are part of the interface.
enum zrIOType : unsigned int {
    DigitalInput = 0,       ///< channels 1 to 4
    DigitalOutput = 1,      ///< channels 1 to 3
    AnalogInput = 2,        ///< channels 1 to 4
    AnalogOutput = 3,       ///< not supported by this terminal
    PowerSensor = 4,        ///< supply or battery voltage; channel ignored
    LightSensor = 5,        ///< ambient light; channel ignored
    TemperatureSensor = 6,  ///< board temperature; channel ignored
    RadarSensor = 7,        ///< not supported by this terminal
    FrequencyInput = 8,     ///< frequency input; channel ignored
    IgnitionInput = 9,      ///< ignition; channel ignored
    InvalidType = 10,  ///< set by the library for an unknown or unsupported type; never pass it
};

/// One channel of the terminal's digital and analog inputs, outputs and sensors.
///
/// The constructor binds the object to one sysfs attribute; the operations open that attribute by
/// its path for each access, so a driver that comes back is usable again. Failures are reported to
/// the debug section "zr_io" and returned as result codes; nothing throws.
///
/// An object is used by one thread at a time. Objects are created from one thread, because the path
/// of the ignition input is found once and shared by all of them without a lock.
class ZRAPI_EXPORT ZRInputOutput {
  public:
    /// Binds a channel. A failure is reported ("Initializing I/O interface", after the report of
    /// its cause) and leaves an object whose operations fail with their own codes.
    ///
    /// @param type     kind of the channel
    /// @param channel  1-based number of a digital input, digital output or analog input; ignored
    ///                 by the other kinds. A number out of range is no failure, on purpose: the object
    ///                 is bound to "/dev/null", where switching succeeds and reading fails.
    ZRInputOutput(zrIOType type, unsigned short channel);
    ZRInputOutput(const ZRInputOutput&) = delete;
    ZRInputOutput& operator=(const ZRInputOutput&) = delete;
    virtual ~ZRInputOutput();

    /// Binds the object to its attribute; the constructor calls it. Calling it again opens a new
    /// descriptor without closing the one before.
    ///
    /// @param type     as for the constructor
    /// @param channel  as for the constructor
    /// @return 0 success (also for a channel out of range), 2 the attribute cannot be opened,
    ///         3 unknown type, 11 type not supported on this terminal
    unsigned int initialize(zrIOType type, unsigned short channel);

    /// Switches a digital output and prints one line about it to standard output.
    ///
    /// @param value  true switches on
    /// @return 0 success, 6 write failed, 11 not a digital output (nothing is printed then)
    unsigned int on(bool value);

    /// Reads the state of a digital input, a digital output or the ignition input.
    ///
    /// @param state  receives the state; unchanged with 5 and 11; true with 10; must not be null
    /// @return 0 success, 5 read failed, 10 the driver gave neither 0 nor 1, 11 not allowed for
    ///         this type
    unsigned int getState(bool* state);

    /// Reads an analog input or a sensor.
    ///
    /// @param value  receives the low 16 bits of the driver's number (0 to 65535), unscaled;
    ///               unchanged on failure; must not be null
    /// @return 0 success, 5 read failed, 11 not allowed for this type
    unsigned int getValue(int* value);

    /// Configures one analog input of the board, which need not be the object's own channel.
    ///
    /// The hysteresis is recorded in the object whatever follows, and written when the input has
    /// that attribute, also with 11. The mode is checked, recorded and written only when the input
    /// has a measure mode. Failed writes show in no result.
    ///
    /// @param port        1-based number of the analog input
    /// @param mode        0, 1 or 2; 0 and 1 write the same measure mode, 2 another one and
    ///                    switches the input's load on. Their physical meaning is the input circuit's.
    /// @param hysteresis  passed to the driver as it is, in the driver's unit
    /// @return 0 success, 1 a file service raised an exception, 11 mode out of range for an input
    ///         with a measure mode
    unsigned int configureInput(int port, int mode, int hysteresis);

  protected:
    /// Path of the ignition input's attribute, empty until an ignition channel has found it.
    static std::string ignitionInputPath;
    static unsigned int debugSection;

    int lastValue;  ///< last state or value read or written, -1 before the first
    zrIOType type;  ///< kind; InvalidType after an unknown or unsupported one
    unsigned short channel;
    std::string path;    ///< bound attribute, "/dev/null" without one
    int fileDescriptor;  ///< descriptor on the attribute, -1 without one
    int hysteresis;      ///< last one given to configureInput(), -1 before
    int reserved1;       ///< -1; kept for the layout
    int reserved2;       ///< -1; kept for the layout
    int measureMode;     ///< last mode accepted by configureInput(), 0 before

  private:
    unsigned int bind(const std::string& attribute, int flags, const char* text);
    unsigned int bindChannel(zrIOType channelType, unsigned short number);
    unsigned int bindPowerSensor();
    unsigned int bindLightSensor();
    unsigned int bindIgnition();
    unsigned int refuse(unsigned int result, const char* text);
    bool open(const std::string& attribute, int flags);
    unsigned int getDigitalState(bool* state);
    unsigned int getIgnitionState(bool* state);
};

/// Converts a raw analog reading: (raw * 10000) / 8525, truncated, 0 to 76873.
///
/// @param raw  reading as getValue() gives it
/// @return the converted reading; its unit is the input circuit's own
ZRAPI_EXPORT int calculateAnalogValue(unsigned short raw);

}  // namespace ZR
