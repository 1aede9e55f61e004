#include "camera_picture.h"

#include <array>
#include <bitset>
#include <cstdlib>

namespace ZR::test {
namespace {

// The picture stands on a grid of so many cells each way.
constexpr unsigned int cells = 24;
constexpr std::size_t bytesOfPixel = 2;

/// A cell in the grid, counted from the left and from the top.
struct Cell {
    unsigned int column;
    unsigned int row;
};

constexpr Cell field{2, 12};     // left of the digit
constexpr Cell standard{2, 22};  // the band at the foot
constexpr unsigned int stripRow = 0;

struct Colour {
    int y;
    int u;
    int v;
};

constexpr Colour white{235, 128, 128};
constexpr Colour black{16, 128, 128};
constexpr Colour yellow{210, 16, 146};
constexpr Colour magenta{106, 202, 222};
constexpr std::array<Colour, 3> inputColours{{{81, 90, 240}, {145, 54, 34}, {41, 240, 110}}};

bool operator==(const Colour& left, const Colour& right) {
    return left.y == right.y && left.u == right.u && left.v == right.v;
}

/// The colour in the middle of a cell.
Colour colourAt(const Frame& frame, Cell cell) {
    const std::size_t column = (2 * cell.column + 1) * frame.width / (2 * cells);
    const std::size_t row = (2 * cell.row + 1) * frame.height / (2 * cells);
    const std::size_t pair = (row * frame.width + column / 2 * 2) * bytesOfPixel;
    return {frame.bytes[pair + 1], frame.bytes[pair], frame.bytes[pair + 2]};
}

// The strip from its left: a white and a black cell, then these bits, the highest first.
constexpr unsigned int inputBits = 2;
constexpr unsigned int numberBits = 16;
constexpr unsigned int sumBits = 3;
constexpr unsigned int standardShift = sumBits + numberBits;
constexpr unsigned int inputShift = standardShift + 1;
constexpr unsigned int referenceShift = inputShift + inputBits;
constexpr unsigned int reference = 2;

constexpr unsigned int bitsAt(unsigned int word, unsigned int shift, unsigned int count) {
    return word >> shift & ((1U << count) - 1);
}

/// Whether the strip's cells are all black or white.
bool readStrip(const Frame& frame, unsigned int& word) {
    word = 0;
    for (unsigned int column = 0; column < cells; ++column) {
        const Colour colour = colourAt(frame, {column, stripRow});
        if (!(colour == white) && !(colour == black))
            return false;
        word = word << 1 | (colour == white ? 1U : 0U);
    }
    return true;
}

bool addsUp(unsigned int word) {
    const std::bitset<cells> counted(bitsAt(word, sumBits, referenceShift - sumBits));
    return bitsAt(word, 0, sumBits) == counted.count() % (1U << sumBits);
}

std::string defectOf(const Frame& frame, const Picture& picture) {
    const auto input = static_cast<std::size_t>(picture.input);
    if (input >= inputColours.size())
        return "a camera that is not there";
    if (!(colourAt(frame, field) == inputColours.at(input)))
        return "the colour of another camera";
    if (!(colourAt(frame, standard) == (picture.ntsc ? magenta : yellow)))
        return "the colour of another standard";
    return {};
}

}  // namespace

Picture pictureOf(const Frame& frame) {
    Picture picture;
    unsigned int word = 0;
    if (frame.width < cells || frame.height < cells ||
        frame.bytes.size() != std::size_t{frame.width} * frame.height * bytesOfPixel) {
        picture.defect = "no frame of its size";
    } else if (!readStrip(frame, word)) {
        picture.defect = "no strip of black and white";
    } else if (bitsAt(word, referenceShift, 2) != reference || !addsUp(word)) {
        picture.defect = "a strip that does not add up";
    } else {
        picture.input = static_cast<int>(bitsAt(word, inputShift, inputBits));
        picture.ntsc = bitsAt(word, standardShift, 1) != 0;
        picture.number = static_cast<int>(bitsAt(word, sumBits, numberBits));
        picture.defect = defectOf(frame, picture);
    }
    return picture;
}

std::string shownBy(const Frame& frame) {
    const Picture picture = pictureOf(frame);
    if (!picture.defect.empty())
        return picture.defect;
    return "input " + std::to_string(picture.input) + (picture.ntsc ? " NTSC " : " PAL ") +
           std::to_string(frame.width) + 'x' + std::to_string(frame.height);
}

}  // namespace ZR::test
