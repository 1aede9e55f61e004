// Writes the seeds of all fuzz targets as files: write_seeds FOLDER.

#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "tests/fuzz/seeds.h"

namespace {

void writeSeeds(const std::filesystem::path& folder) {
    for (const ZR::test::FuzzTarget& target : ZR::test::fuzzTargets()) {
        std::filesystem::create_directories(folder / target.name);
        for (const ZR::test::Seed& seed : target.seeds) {
            std::ofstream file;
            file.exceptions(std::ios::failbit | std::ios::badbit);
            file.open(folder / target.name / seed.name, std::ios::binary);
            file << seed.bytes;
        }
    }
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::cerr << "Usage: write_seeds FOLDER\n";
        return 2;
    }
    try {
        writeSeeds(arguments[1]);
    } catch (const std::exception& error) {
        std::cerr << "write_seeds: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
