#pragma once

namespace ZR {

/// How a video picture is mirrored. The value is handed to the application's QML code as a number;
/// what the values beyond 0 mean is that code's decision.
enum ZRVideoMirrorSetting : int {
    VideoMirrorNone = 0,  ///< not mirrored
};

/// A rotation in degrees, clockwise as QML turns.
struct ZRRotation {
    /// @param angle  degrees, any number; converts by itself, so that an angle serves as a rotation
    // NOLINTNEXTLINE(google-explicit-constructor)
    ZRRotation(int angle = 0) : degrees(angle) {}

    /// Writes the rotation to a Boost.Serialization archive or reads it from one: the four bytes of
    /// `degrees`, in the machine's own byte order with the binary archives, and nothing else. What
    /// `archive << rotation` puts before the first rotation of an archive (a few bytes about its
    /// class) is Boost's.
    ///
    /// The application includes and links Boost; this header does not need it. A binary archive
    /// throws `boost::archive::archive_exception`: `input_stream_error` when the stream ends early,
    /// `output_stream_error` when it takes no more.
    template <typename Archive>
    void serialize(Archive& archive, unsigned int /*version*/) {
        archive& degrees;
    }

    int degrees;  ///< kept in 0 to 359 where an operation stores it
};

/// What is stored for one video input: seven 32-bit words.
struct VideoSetting {
    ZRVideoMirrorSetting mirror = VideoMirrorNone;  ///< handed to the scene unchanged
    ZRRotation rotation;                            ///< degrees, 0 to 359
    int brightness = 0;                             ///< in the camera driver's range
    int contrast = 127;                             ///< in the camera driver's range
    int hue = 0;                                    ///< in the camera driver's range
    int saturation = 127;                           ///< in the camera driver's range
    int videoStandard = 2;                          ///< 0 PAL, 1 NTSC, 2 not known
};

}  // namespace ZR
