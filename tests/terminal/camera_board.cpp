#include "camera_board.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "tests/support/output_capture.h"

namespace ZR::test {
namespace {

constexpr char videoDevices[] = "/sys/class/video4linux";
constexpr char variantParameter[] = "/sys/module/zr_terminal/parameters/variant";

bool beginsWith(const std::string& text, const std::string& begin) {
    return text.compare(0, begin.size(), begin) == 0;
}

std::string firstLine(const std::filesystem::path& file) {
    std::string line;
    std::getline(std::ifstream(file) >> std::ws, line);
    return line;
}

/// Whether the inputs 0 and 2 share what is asked for.
bool isShared(int input) {
    return input != 1;
}

/// Writes a knob that not every board has.
void turnIfThere(const std::string& knob, const std::string& text) {
    std::ofstream("/sys/kernel/debug/zr_terminal/" + knob) << text << '\n' << std::flush;
}

std::string with(std::string text, const std::string& size) {
    for (std::size_t place = 0; (place = text.find("SIZE", place)) != std::string::npos;)
        text.replace(place, 4, size);
    return text;
}

constexpr char dualSharedFormats[] =
    "':0 [fmt:UYVY2X8/SIZE],"
    "'ipu1_csi1_mux':5 [fmt:UYVY2X8/SIZE],"
    "'ipu1_csi1':0 [fmt:UYVY2X8/SIZE@1/50],"
    "'ipu1_csi1':2 [fmt:AYUV32/SIZE@1/50]";
constexpr char quadSharedFormats[] =
    "':0 [fmt:UYVY2X8/SIZE field:none],"
    "'ipu2_csi1_mux':2 [fmt:UYVY2X8/SIZE field:none],"
    "'ipu2_csi1':0 [fmt:UYVY2X8/SIZE@1/50 field:none],"
    "'ipu2_csi1':2 [fmt:AYUV32/SIZE@1/50 field:none]";
constexpr char secondFormatsToMux[] =
    "':0 [fmt:UYVY2X8/SIZE field:none],"
    "'imx6-mipi-csi2':0 [fmt:UYVY2X8/SIZE field:none],"
    "'imx6-mipi-csi2':1 [fmt:UYVY2X8/SIZE field:none],"
    "'ipu1_csi0_mux':";
constexpr char secondFormatsFromMux[] =
    " [fmt:UYVY2X8/SIZE field:none],"
    "'ipu1_csi0':0 [fmt:UYVY2X8/SIZE@1/50 field:none],"
    "'ipu1_csi0':2 [fmt:AYUV32/SIZE@1/50 field:none],";

}  // namespace

bool isQuadBoard() {
    return firstLine(variantParameter) == "quad";
}

std::string captureEntity(int input) {
    if (!isShared(input))
        return "ipu1_csi0 capture";
    return isQuadBoard() ? "ipu2_csi1 capture" : "ipu1_csi1 capture";
}

std::string decoderEntity(int input) {
    for (const auto& device : std::filesystem::directory_iterator(videoDevices)) {
        std::string name = firstLine(device.path() / "name");
        if (beginsWith(name, decoderKnobs(input)))
            return name;
    }
    return "";
}

std::string nodeOf(const std::string& entity) {
    for (const auto& device : std::filesystem::directory_iterator(videoDevices))
        if (firstLine(device.path() / "name") == entity)
            return "/dev/" + device.path().filename().string();
    return "";
}

std::string captureKnobs(int input) {
    std::string folder = captureEntity(input);
    std::replace(folder.begin(), folder.end(), ' ', '_');
    return folder;
}

std::string decoderKnobs(int input) {
    return isShared(input) ? "tw9912" : "adv7180";
}

std::string muxKnobs(int input) {
    if (!isShared(input))
        return "ipu1_csi0_mux";
    return isQuadBoard() ? "ipu2_csi1_mux" : "ipu1_csi1_mux";
}

Lines pathLinks() {
    const std::string shared = "'" + decoderEntity(0) + "':0 -> ";
    const std::string second = "'" + decoderEntity(1) + "':0 -> 'imx6-mipi-csi2':0[1]";
    const Lines sharedPath =
        isQuadBoard()
            ? Lines{shared + "'ipu2_csi1_mux':1[1]", "'ipu2_csi1_mux':2 -> 'ipu2_csi1':0[1]",
                    "'ipu2_csi1':2 -> 'ipu2_csi1 capture':0[1]"}
            : Lines{shared + "'ipu1_csi1_mux':4[1]", "'ipu1_csi1_mux':5 -> 'ipu1_csi1':0[1]",
                    "'ipu1_csi1':2 -> 'ipu1_csi1 capture':0[1]"};
    Lines links = sharedPath;
    links.push_back(second);
    links.emplace_back("'imx6-mipi-csi2':1 -> 'ipu1_csi0_mux':0[1]");
    links.emplace_back(isQuadBoard() ? "'ipu1_csi0_mux':2 -> 'ipu1_csi0':0[1]"
                                     : "'ipu1_csi0_mux':5 -> 'ipu1_csi0':0[1]");
    links.emplace_back("'ipu1_csi0':2 -> 'ipu1_csi0 capture':0[1]");
    return links;
}

std::string pathFormats(int input, const std::string& size) {
    const std::string begin = "'" + decoderEntity(input);
    if (isShared(input))
        return with(begin + (isQuadBoard() ? quadSharedFormats : dualSharedFormats), size);
    return with(begin + secondFormatsToMux + (isQuadBoard() ? "2" : "5") + secondFormatsFromMux,
                size);
}

std::string joined(const Lines& texts) {
    std::string list;
    for (const std::string& text : texts)
        list += (list.empty() ? "" : ",") + text;
    return list;
}

std::string graphByMediaCtl() {
    return saidBy("media-ctl -p");
}

void plugInCamera(int input, const std::string& standard) {
    turn(decoderKnobs(input) + "/camera." + std::to_string(input) + "/detects", standard);
}

void renewGraph() {
    turn("media/present", "0");
    turn("media/present", "1");
}

void CameraBoard::SetUp() {
    for (const int input : {0, 1, 2}) {
        turnIfThere(decoderKnobs(input) + "/camera." + std::to_string(input) + "/detects", "pal");
        for (const char* knob : {"/fail_open", "/fail_link", "/fail_s_fmt", "/fail_querystd",
                                 "/fail_s_std", "/fail_g_ctrl", "/fail_s_ctrl"})
            for (const std::string& folder :
                 {decoderKnobs(input), captureKnobs(input), muxKnobs(input)})
                turnIfThere(folder + knob, "0");
    }
    turnIfThere("media/fail_entities", "0");
    renewGraph();
    clearLog();
}

int Cameras::standardOf(int input) {
    return videoSettings[static_cast<unsigned short>(input + 1)].videoStandard;
}

std::string Cameras::printedBySetup(int input) {
    const int error = errno;
    OutputCapture capture;
    errno = error;  // the messages show what the caller has there
    setupCameraInput(input);
    std::cout.flush();  // a text without a line end may still wait there
    capture.release();
    return capture.output() + capture.errors();
}

Lines Cameras::loggedBySetup(int input) {
    clearLog();
    setupCameraInput(input);
    return logLines();
}

Lines beginningWith(const std::string& begin, const Lines& lines) {
    Lines those;
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(those),
                 [&begin](const std::string& line) { return beginsWith(line, begin); });
    return those;
}

}  // namespace ZR::test
