#include "board.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>

namespace ZR::test {
namespace {

constexpr char knobs[] = "/sys/kernel/debug/zr_terminal/";
constexpr char logFile[] = "/sys/kernel/debug/zr_terminal/log";

std::vector<std::string>& reports() {
    static std::vector<std::string> collected;
    return collected;
}

std::string printedBy(const std::string& command, int& status) {
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
    std::string text;
    for (int character = std::fgetc(pipe.get()); character != EOF;
         character = std::fgetc(pipe.get()))
        text += static_cast<char>(character);
    if (!text.empty() && text.back() == '\n')
        text.pop_back();
    status = ::pclose(pipe.release());
    return text;
}

}  // namespace

void turn(const std::string& knob, const std::string& text) {
    std::ofstream file(knobs + knob);
    file << text << '\n' << std::flush;
    ASSERT_TRUE(file.good()) << "knob " << knob << " refused " << text;
}

std::string seenByCat(const std::string& path) {
    int status = 0;
    std::string text = printedBy("cat '" + path + "' 2>/dev/null", status);
    return status == 0 ? text : "(cat failed)";
}

void run(const std::string& command) {
    ASSERT_EQ(0, std::system(command.c_str())) << command;
}

std::string saidBy(const std::string& command) {
    int status = 0;
    return printedBy(command, status);
}

void clearLog() {
    std::ofstream file(logFile);
    file << '\n' << std::flush;
    ASSERT_TRUE(file.good());
}

std::vector<std::string> logLines() {
    std::vector<std::string> lines;
    std::ifstream log(logFile);
    for (std::string line; std::getline(log, line);)
        lines.push_back(line.substr(line.find(' ') + 1));
    return lines;
}

const std::vector<std::string>& collectReports() {
    ZRDebug::setSink([](int /*level*/, const char* section, const char* message) {
        reports().push_back(std::string(section) + ": " + message);
    });
    return reports();
}

}  // namespace ZR::test
