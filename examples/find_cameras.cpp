// Finds the analog cameras and asks which television standard their signals have: find_cameras
//
// Cameras 1 and 3 share a decoder, so both lines show the standard of the one that is selected.

#include <iostream>
#include <string>

#include <hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h>

namespace {

std::string orMissing(const std::string& path) {
    return path.empty() ? "missing" : path;
}

const char* standardText(int standard) {
    switch (standard) {
        case 0:
            return "PAL";
        case 1:
            return "NTSC";
        default:
            return "not known";
    }
}

}  // namespace

int main(int argc, char**) {
    if (argc != 1) {
        std::cerr << "usage: find_cameras\n";
        return 2;
    }
    using Cameras = ZR::ZRGstreamerVideoInput;

    // Once per process; getInstance() would do it too. It enables the links from each decoder to its
    // capture node and touches neither formats nor standards.
    Cameras::doInitialSetup();

    bool allKnown = true;
    for (int input = 0; input < Cameras::inputCount; ++input) {
        std::cout << "camera " << input + 1 << ": capture "
                  << orMissing(Cameras::videoDevices[input]) << ", decoder "
                  << orMissing(Cameras::videoSubDevices[input]) << '\n';

        // When it fails, or the standard is neither of the two, the library says so first; the
        // latter without a line end. A camera without a signal counts as PAL.
        const int standard = Cameras::detectVideoStandard(input);
        std::cout << "  standard " << standardText(standard) << '\n';
        allKnown = allKnown && standard != 2;
    }
    return allKnown ? 0 : 1;
}
