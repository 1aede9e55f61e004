#include <algorithm>
#include <array>
#include <filesystem>
#include <limits>

#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"
#include "tools/zrctl/video_play.h"

namespace zrctl {
namespace {

constexpr int defaultPort = 5004;
constexpr int defaultWidth = 800;
constexpr int defaultHeight = 480;
constexpr int largestSide = 8192;
constexpr int highestPort = 65535;
constexpr long long snapshotPatience = 15;  // seconds

struct StreamType {
    const char* name;
    int type;
    Words options;  ///< beside those of all types
};

const std::array<StreamType, 4>& streamTypes() {
    static const std::array<StreamType, 4> types{{
        {"udp-h264", ZR::StreamUdpH264, {"--port"}},
        {"udp-jpeg", ZR::StreamUdpJpeg, {"--port"}},
        {"rtsp", ZR::StreamRtsp, {"--url"}},
        {"camera",
         ZR::StreamCamera,
         {"--input", "--brightness", "--contrast", "--hue", "--saturation"}},
    }};
    return types;
}

const StreamType& parseType(const Arguments& arguments) {
    const auto name = arguments.value("--type");
    if (!name)
        throw UsageError("video play needs --type udp-h264, udp-jpeg, rtsp or camera");
    for (const StreamType& type : streamTypes()) {
        if (*name == type.name)
            return type;
    }
    throw UsageError("no stream type " + quote(*name) +
                     "; give udp-h264, udp-jpeg, rtsp or camera");
}

/// An option of another type would be without effect, which nobody expects who writes it.
void refuseOthersOptions(const Arguments& arguments, const StreamType& type) {
    for (const StreamType& other : streamTypes()) {
        for (const std::string& option : other.options) {
            const bool isOwn =
                std::find(type.options.begin(), type.options.end(), option) != type.options.end();
            if (!isOwn && arguments.value(option))
                throw UsageError("a stream of type " + std::string(type.name) + " has no " +
                                 option);
        }
    }
}

/// The address becomes part of a launch text, where these characters would mean something else.
std::string parseUrl(const Arguments& arguments) {
    std::string url = arguments.value("--url").value_or("");
    const auto isUsable = [](char character) {
        return character > ' ' && character < 0x7F &&
               std::string("!\"'\\").find(character) == std::string::npos;
    };
    if (url.empty())
        throw UsageError("a stream of type rtsp needs --url, as in rtsp://192.168.1.20/stream");
    if (url.rfind("rtsp://", 0) != 0 || !std::all_of(url.begin(), url.end(), isUsable))
        throw UsageError("URL " + quote(url) +
                         ": write rtsp://HOST/PATH or rtsp://HOST:PORT/PATH, without blanks, "
                         "quotes and '!'");
    return url;
}

int parseSide(const std::string& size, const std::string& text) {
    const auto side = wholeNumber(text, 1, largestSide);
    if (!side)
        throw UsageError("size " + quote(size) +
                         ": write WIDTHxHEIGHT, as in 800x480, of at most " +
                         std::to_string(largestSide) + " each");
    return static_cast<int>(*side);
}

std::string parseSnapshot(const std::string& path) {
    const std::filesystem::path file(path);
    if (file.extension() != ".png")
        throw UsageError("snapshot " + quote(path) + ": give a file name that ends in .png");
    return std::filesystem::absolute(file).string();
}

/// A number as the library takes it, without a range of its own.
std::optional<int> parseValue(const Arguments& arguments, const std::string& option) {
    using Limits = std::numeric_limits<int>;
    const auto text = arguments.value(option);
    if (!text)
        return std::nullopt;
    return static_cast<int>(parseNumber(*text, option.substr(2), Limits::min(), Limits::max()));
}

int parsePositive(const Arguments& arguments, const std::string& option, int otherwise,
                  int highest) {
    const auto text = arguments.value(option);
    return text ? static_cast<int>(parseNumber(*text, option.substr(2), 1, highest)) : otherwise;
}

void parsePicture(const Arguments& arguments, PlayRequest& request) {
    request.rotation = parseValue(arguments, "--rotation").value_or(0);
    request.mirror = parseValue(arguments, "--mirror").value_or(0);
    request.brightness = parseValue(arguments, "--brightness");
    request.contrast = parseValue(arguments, "--contrast");
    request.hue = parseValue(arguments, "--hue");
    request.saturation = parseValue(arguments, "--saturation");
}

void parseWindow(const Arguments& arguments, PlayRequest& request) {
    request.width = defaultWidth;
    request.height = defaultHeight;
    if (const auto size = arguments.value("--size")) {
        const std::size_t cross = std::min(size->find('x'), size->size());
        request.width = parseSide(*size, size->substr(0, cross));
        request.height = parseSide(*size, size->substr(std::min(cross + 1, size->size())));
    }
    if (const auto path = arguments.value("--snapshot")) {
        request.snapshot = parseSnapshot(*path);
        request.seconds = snapshotPatience;
    }
    if (arguments.value("--seconds"))
        request.seconds = parsePositive(arguments, "--seconds", 0, std::numeric_limits<int>::max());
}

}  // namespace

PlayRequest parsePlay(const Words& words) {
    const Arguments arguments(
        words, {"--type", "--port", "--url", "--input", "--rotation", "--mirror", "--brightness",
                "--contrast", "--hue", "--saturation", "--size", "--snapshot", "--seconds"});
    if (!arguments.operands().empty())
        throw UsageError("video play takes options only, as in 'video play --type camera'");
    const StreamType& type = parseType(arguments);
    refuseOthersOptions(arguments, type);
    PlayRequest request;
    request.type = type.type;
    request.typeName = type.name;
    request.port = parsePositive(arguments, "--port", defaultPort, highestPort);
    request.camera = parsePositive(arguments, "--input", 1, ZR::ZRGstreamerVideoInput::inputCount);
    if (type.type == ZR::StreamRtsp)
        request.url = parseUrl(arguments);
    parsePicture(arguments, request);
    parseWindow(arguments, request);
    return request;
}

}  // namespace zrctl
